#ifndef PHOTOLIB_CATALOG_READ_ATTRIBUTES_H
#define PHOTOLIB_CATALOG_READ_ATTRIBUTES_H

#include "catalog/asset_rows.h"
#include "catalog/library_tables.h"

/// Reads what the additional attributes tell of the photos and videos in `rows`, and sets the index
/// of these by them.
void readAttributes(LibraryTables &tables, AssetRows &rows);

/// Reads the captions. The attributes must have been read.
void readDescriptions(LibraryTables &tables, AssetRows &rows);

#endif // PHOTOLIB_CATALOG_READ_ATTRIBUTES_H
