#ifndef PHOTOLIB_CATALOG_READ_MEMBERS_H
#define PHOTOLIB_CATALOG_READ_MEMBERS_H

#include "catalog/album_rows.h"
#include "catalog/asset_rows.h"
#include "catalog/join_table.h"

/// Reads which albums hold which photos and videos, and tells both of each other. The titles must
/// have been read.
void readMembers(LibraryTables &tables, const EntityNumbers &numbers, AssetRows &rows,
                 AlbumRows &albums);

#endif // PHOTOLIB_CATALOG_READ_MEMBERS_H
