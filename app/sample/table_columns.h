#ifndef PHOTOLIB_SAMPLE_TABLE_COLUMNS_H
#define PHOTOLIB_SAMPLE_TABLE_COLUMNS_H

#include "sample/album_plan.h"
#include "sample/library_plan.h"
#include "sample/sqlite_handle.h"

#include <QVector>

namespace sample {

/// What the rows of an asset are made from.
struct AssetRow {
    AssetPlan plan;
    Entities entities;
    qint64 fileSize; ///< bytes of the source file, 0 when not recorded
};

/// What the row of an album is made from.
struct AlbumRow {
    AlbumPlan plan;
    QByteArray uuid;  ///< 16 bytes
    qint64 assets;    ///< members in the library
    double createdAt; ///< seconds since 2001-01-01 00:00:00 UTC
};

/// One column: how it is declared, and its value in a row.
template <typename Row>
struct Column {
    const char *name;
    const char *type;
    Value (*value)(const Row &row);
    bool onlyLate = false;
};

QVector<Column<AssetRow>> assetColumns(SampleSchema schema);
QVector<Column<AssetRow>> attributeColumns(SampleSchema schema);
QVector<Column<AlbumRow>> albumColumns(SampleSchema schema);

} // namespace sample

#endif // PHOTOLIB_SAMPLE_TABLE_COLUMNS_H
