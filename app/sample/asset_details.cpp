#include "sample/asset_details.h"

#include "sample/outing_slots.h"
#include "sample/random.h"
#include "sample/sample_names.h"

#include <algorithm>
#include <iterator>

namespace sample {

namespace {

// Numbers apart from the purposes of the other random numbers.
constexpr quint64 keywordPurpose = 300;
constexpr quint64 facePurpose = 301;
constexpr int unknownPerson = -1;

/// Where an outing goes, and what clocks show there in summer.
struct Region {
    Place place;
    int zoneOffset;
};

const Region regions[] = {
    {{35.6586, 139.7454}, 32400},  {{56.1567, 10.2108}, 7200},     {{50.0614, 19.9366}, 7200},
    {{43.5528, 7.0174}, 7200},     {{40.6892, -74.0445}, -14400},  {{27.7172, 85.3240}, 20700},
    {{-33.8568, 151.2153}, 36000}, {{-22.9519, -43.2105}, -10800}, {{64.1466, -21.9426}, 0}};

const Region &regionOf(const AssetPlan &asset)
{
    constexpr int count = sizeof regions / sizeof regions[0];
    return regions[asset.index / outingSize % count];
}

/// One place in seven is unknown, mostly marked as such, sometimes simply not there.
std::optional<Place> placeOf(const AssetPlan &asset)
{
    constexpr Place nowhere = {-180.0, -180.0};
    if (asset.slot == SyncedPhoto && asset.index / outingSize % 2 == 1)
        return std::nullopt;
    if (asset.slot == Screenshot || asset.slot == ReceivedPhoto)
        return nowhere;
    Place place = regionOf(asset).place;
    place.latitude += asset.slot / 1024.0;
    return place;
}

std::optional<int> zoneOf(const AssetPlan &asset)
{
    constexpr int meanTimeOfTown = 1172; // from before there were zones
    if (asset.slot == ReceivedPhoto)
        return std::nullopt;
    if (asset.slot == UpsideDown && asset.index / outingSize % 2 == 1)
        return meanTimeOfTown;
    return regionOf(asset).zoneOffset;
}

/// Imports were named by another camera; what came by message has lost its name.
QString originalNameOf(const AssetPlan &asset)
{
    switch (asset.slot) {
    case ImportFirst:
    case ImportSecond:
        return QStringLiteral("DSC%1.JPG").arg(asset.index % 100000, 5, 10, QLatin1Char('0'));
    case ImportLast:
        return QStringLiteral("Straßenfest %1.JPG").arg(asset.index);
    case ReceivedPhoto:
        return QString();
    default:
        return asset.fileName;
    }
}

QString titleOf(const AssetPlan &asset)
{
    switch (asset.slot) {
    case FirstView:
    case Panorama:
    case SecondFilm:
    case LivePhoto:
        return photoTitle(asset.index / 4);
    case Portrait:
        return QLatin1String(""); // was taken away again
    default:
        return QString();
    }
}

QString captionOf(const AssetPlan &asset)
{
    switch (asset.slot) {
    case FirstView:
    case ImportSecond:
    case Film:
        return photoCaption(asset.index / outingSize + asset.slot);
    case EditedLater:
        return QLatin1String("");
    default:
        return QString();
    }
}

/// Different numbers below `limit`, ascending; the first of them is `first`.
QVector<int> someBelow(int limit, int first, int count, Random &random)
{
    QVector<int> numbers = {first};
    while (numbers.size() < count) {
        const int next = random.below(limit);
        if (!numbers.contains(next))
            numbers.append(next);
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

/// Two of three assets have keywords. All keywords of a library get their turn.
QVector<int> keywordsOf(const AssetPlan &asset, const SampleOptions &options)
{
    if (options.keywords == 0 || asset.index % 3 == 1 || !asset.hasAttributes)
        return {};
    Random random(options.seed, keywordPurpose, static_cast<quint64>(asset.index));
    const int count = qMin(random.between(1, 3), options.keywords);
    const int turn = asset.index - (asset.index + 1) / 3;
    return someBelow(options.keywords, turn % options.keywords, count, random);
}

constexpr Slot peopledSlots[] = {FirstView,    Portrait,   Film,     BurstFirst,
                                 ImportSecond, SecondFilm, LivePhoto};

/// Which asset with people on it this is, from 0; -1 when nobody is on it. All frames of a burst
/// show the same ones.
int peopledIndex(const AssetPlan &asset)
{
    constexpr int count = sizeof peopledSlots / sizeof peopledSlots[0];
    const int slot = isBurst(asset.slot) ? int(BurstFirst) : asset.slot;
    const auto *const found = std::find(std::begin(peopledSlots), std::end(peopledSlots), slot);
    if (found == std::end(peopledSlots))
        return -1;
    return asset.index / outingSize * count + static_cast<int>(found - peopledSlots);
}

/// All people of a library get their turn.
QVector<int> facesOf(const AssetPlan &asset, const SampleOptions &options)
{
    const int turn = peopledIndex(asset);
    if (turn < 0)
        return {};
    Random random(options.seed, facePurpose, static_cast<quint64>(turn));
    QVector<int> faces;
    if (options.people > 0) {
        const int count = qMin(random.between(1, 2), options.people);
        faces = someBelow(options.people, turn % options.people, count, random);
    }
    if (random.oneIn(4))
        faces.append(unknownPerson);
    return faces;
}

} // namespace

AssetDetails detailsOf(const AssetPlan &asset, const LibraryPlan &library)
{
    AssetDetails details;
    details.originalName = originalNameOf(asset);
    details.title = titleOf(asset);
    details.caption = captionOf(asset);
    details.zoneOffset = zoneOf(asset);
    details.place = placeOf(asset);
    details.keywords = keywordsOf(asset, library.options());
    details.faces = facesOf(asset, library.options());
    details.isFavorite = asset.index % 7 == 1;
    details.isHidden = asset.index % 41 == 33;
    details.isImported = isImport(asset.slot);
    // The camera's last photo came first.
    details.importPosition =
        3 * (asset.index / outingSize) + (details.isImported ? ImportLast - asset.slot : 0);
    return details;
}

} // namespace sample
