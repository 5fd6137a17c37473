#ifndef PHOTOLIB_CATALOG_READ_MEMBERS_H
#define PHOTOLIB_CATALOG_READ_MEMBERS_H

#include "catalog/album_rows.h"
#include "catalog/asset_rows.h"
#include "catalog/join_table.h"

/// A photo or video in an album.
struct MemberRow {
    quint32 album; ///< its position
    bool hasPlace;
    qint64 asset; ///< its id
    qint64 place; ///< in the album's own order
};

/// Reads what the albums hold, but for imports.
std::vector<MemberRow> readMembers(LibraryTables &tables, const EntityNumbers &numbers,
                                   const std::vector<Album> &albums);

/// Tells the photos and videos in `rows`, which must have been told of their titles, and the
/// albums, which it returns, of each other.
std::vector<Album> setMembers(AssetRows &rows, AlbumRows albums,
                              const std::vector<MemberRow> &members);

#endif // PHOTOLIB_CATALOG_READ_MEMBERS_H
