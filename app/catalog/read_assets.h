#ifndef PHOTOLIB_CATALOG_READ_ASSETS_H
#define PHOTOLIB_CATALOG_READ_ASSETS_H

#include "catalog/asset_rows.h"
#include "catalog/library_tables.h"

/// The table of photos and videos: until 2019 one, since 2020 the other. Throws Error of the kind
/// Damaged when there is neither.
QByteArray assetTable(const LibraryTables &tables);

/// Reads what the rows of `table`, the asset table, say of the photos and videos themselves; of
/// these there are perhaps `expected`. Throws Error of the kind Damaged when it has no ids or
/// kinds.
AssetRows readAssets(LibraryTables &tables, const QByteArray &table, qint64 expected);

#endif // PHOTOLIB_CATALOG_READ_ASSETS_H
