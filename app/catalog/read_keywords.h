#ifndef PHOTOLIB_CATALOG_READ_KEYWORDS_H
#define PHOTOLIB_CATALOG_READ_KEYWORDS_H

#include "catalog/asset_rows.h"
#include "catalog/join_table.h"

/// Reads the keywords of the photos and videos in `rows`, whose attributes must have been read.
void readKeywords(LibraryTables &tables, const EntityNumbers &numbers, AssetRows &rows);

#endif // PHOTOLIB_CATALOG_READ_KEYWORDS_H
