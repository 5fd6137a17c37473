#ifndef PHOTOLIB_CATALOG_ASSET_ROWS_H
#define PHOTOLIB_CATALOG_ASSET_ROWS_H

#include "catalog/asset.h"
#include "catalog/id_index.h"

#include <QByteArray>

#include <optional>
#include <vector>

/// What an asset's row, and that of its attributes, says of other tables' rows.
struct AssetReferences {
    std::optional<qint64> namedAttributes; ///< by the asset
    std::optional<qint64> attributes;      ///< those that name the asset, and count
    std::optional<qint64> description;     ///< by the attributes
    std::optional<qint64> importSession;
    std::optional<qint64> importPlace; ///< its place among those of the import
};

/// The photos and videos while they are read.
struct AssetRows {
    std::vector<Asset> assets;               ///< by id
    std::vector<AssetReferences> references; ///< of the asset at the same position
    std::vector<qint64> ids;                 ///< the same as the assets', which lie further apart
    IdIndex byId;
    IdIndex byAttributes; ///< by the id of the row of attributes
};

#endif // PHOTOLIB_CATALOG_ASSET_ROWS_H
