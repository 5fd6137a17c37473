#ifndef PHOTOLIB_SAMPLE_ASSET_DETAILS_H
#define PHOTOLIB_SAMPLE_ASSET_DETAILS_H

#include "sample/library_plan.h"

#include <QString>
#include <QVector>

#include <optional>

namespace sample {

struct Place {
    double latitude; ///< degrees; both are -180 where no place is known
    double longitude;
};

/// What people and their devices note about an asset, beyond the file itself.
struct AssetDetails {
    QString originalName; ///< null when it is not recorded
    QString title;        ///< null when there is none, as the caption; either may be empty
    QString caption;
    std::optional<int> zoneOffset; ///< seconds east of UTC
    std::optional<Place> place;
    QVector<int> keywords; ///< numbers from 0, ascending
    QVector<int> faces;    ///< of which people, from 0, each once; -1 for one that nobody knows
    bool isFavorite = false;
    bool isHidden = false;
    bool isImported = false;
    int importPosition = 0; ///< in its import, from 0
};

/// The details of an asset of `library`.
AssetDetails detailsOf(const AssetPlan &asset, const LibraryPlan &library);

} // namespace sample

#endif // PHOTOLIB_SAMPLE_ASSET_DETAILS_H
