#ifndef PHOTOLIB_SAMPLE_TABLE_COLUMNS_H
#define PHOTOLIB_SAMPLE_TABLE_COLUMNS_H

#include "sample/album_plan.h"
#include "sample/asset_details.h"
#include "sample/library_plan.h"
#include "sample/sqlite_handle.h"

#include <QVector>

namespace sample {

/// What the rows of an asset are made from.
struct AssetRow {
    const AssetPlan &plan;
    const AssetDetails &details;
    const DatabaseModel &model;
    qint64 fileSize;        ///< bytes of the source file, 0 when not recorded
    qint64 captionPk;       ///< the key of its caption's row, 0 when there is none
    qint64 importSessionPk; ///< the key of the album of its import, 0 when there is none
};

/// What the row of an album is made from.
struct AlbumRow {
    const AlbumPlan &plan;
    const DatabaseModel &model;
    QByteArray uuid;  ///< 16 bytes
    qint64 assets;    ///< members in the library
    double createdAt; ///< seconds since 2001-01-01 00:00:00 UTC
};

/// What the row of a keyword or a person is made from.
struct NameRow {
    QString name;
    const DatabaseModel &model;
    qint64 pk;
    QByteArray uuid; ///< 16 bytes
};

/// What the row of a face is made from.
struct FaceRow {
    const AssetPlan &asset;
    const DatabaseModel &model;
    qint64 pk;
    qint64 personPk; ///< 0 when nobody knows who it is
    int position;    ///< among the asset's faces, from 0
    QByteArray uuid; ///< 16 bytes
};

/// One column: how it is declared, its value in a row, and the models that have it.
template <typename Row>
struct Column {
    const char *name;
    const char *type;
    Value (*value)(const Row &row);
    SampleSchema since = SampleSchema::Early;
    SampleSchema until = SampleSchema::V26;
};

QVector<Column<AssetRow>> assetColumns(SampleSchema schema);
QVector<Column<AssetRow>> attributeColumns(SampleSchema schema);
QVector<Column<AssetRow>> captionColumns(SampleSchema schema);
QVector<Column<AlbumRow>> albumColumns(SampleSchema schema);
QVector<Column<NameRow>> keywordColumns(SampleSchema schema);
QVector<Column<NameRow>> personColumns(SampleSchema schema);
QVector<Column<FaceRow>> faceColumns(SampleSchema schema);

} // namespace sample

#endif // PHOTOLIB_SAMPLE_TABLE_COLUMNS_H
