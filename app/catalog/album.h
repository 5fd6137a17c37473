#ifndef PHOTOLIB_CATALOG_ALBUM_H
#define PHOTOLIB_CATALOG_ALBUM_H

#include "catalog/asset.h"

/// The kinds of album that a person knows of.
enum class AlbumKind { Album, Shared, Import, Smart, Project, Folder };

/// An album, or a folder of albums, as the library describes it.
struct Album {
    qint64 id = 0; ///< the library's own number
    AlbumKind kind = AlbumKind::Album;
    QByteArray uuid;              ///< as text, in upper case; null where there is none
    QByteArray title;             ///< UTF-8; null where there is none
    std::optional<qint64> parent; ///< id of the listed folder that it lies in
    LibraryDate created;

    /// Ids of its photos and videos in the album's own order, each once: also of those in the trash
    /// and of shared copies. Of a smart album mostly none are stored.
    std::vector<qint64> assets;
};

#endif // PHOTOLIB_CATALOG_ALBUM_H
