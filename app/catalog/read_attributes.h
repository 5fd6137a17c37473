#ifndef PHOTOLIB_CATALOG_READ_ATTRIBUTES_H
#define PHOTOLIB_CATALOG_READ_ATTRIBUTES_H

#include "catalog/asset_rows.h"
#include "catalog/library_tables.h"

/// Additional attributes of a photo or video.
struct StoredAttributes {
    qint64 id = 0;
    qint64 asset = 0;
    std::optional<qint64> description;
    std::optional<int> utcOffset; ///< whole minutes
    std::optional<qint64> size;
    QByteArray originalName;
    QByteArray title;
};

/// A caption, of the attributes that name it or that it names.
struct DescriptionRow {
    qint64 id = 0;
    std::optional<qint64> attributes;
    QByteArray text;
};

/// There are perhaps `expected` rows.
std::vector<StoredAttributes> readAttributes(LibraryTables &tables, qint64 expected);

std::vector<DescriptionRow> readDescriptions(LibraryTables &tables);

/// Tells the photos and videos in `rows` of their attributes, whose texts are taken, and sets the
/// index of the former by the latter.
void setAttributes(AssetRows &rows, std::vector<StoredAttributes> attributes);

/// Tells the photos and videos in `rows`, which must have been told of their attributes, of their
/// captions.
void setCaptions(AssetRows &rows, const std::vector<DescriptionRow> &descriptions);

#endif // PHOTOLIB_CATALOG_READ_ATTRIBUTES_H
