#ifndef PHOTOLIB_CATALOG_ALBUM_ROWS_H
#define PHOTOLIB_CATALOG_ALBUM_ROWS_H

#include "catalog/album.h"

/// By what an album's photos are sorted.
enum class AlbumSortKey { Manual, Date, Title };

/// How an album's photos are sorted.
struct AlbumSort {
    AlbumSortKey key = AlbumSortKey::Manual;
    bool isDescending = false;
};

/// The albums while they are read.
struct AlbumRows {
    std::vector<Album> albums;    ///< by id
    std::vector<AlbumSort> sorts; ///< of the album at the same position
};

#endif // PHOTOLIB_CATALOG_ALBUM_ROWS_H
