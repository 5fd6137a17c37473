#ifndef PHOTOLIB_CATALOG_READ_ALBUMS_H
#define PHOTOLIB_CATALOG_READ_ALBUMS_H

#include "catalog/album_rows.h"
#include "catalog/library_tables.h"

/// Reads the albums that a person knows of, but for what they hold.
AlbumRows readAlbums(LibraryTables &tables);

#endif // PHOTOLIB_CATALOG_READ_ALBUMS_H
