#include "catalog/read_assets.h"

#include "base/error.h"
#include "catalog/table_scan.h"

#include <algorithm>
#include <functional>
#include <numeric>

namespace {

// Of memory, in proportion to what a row takes of the files.
const qint64 bytesPerAsset = 64;

// The numbers of the columns that are read.
struct AssetColumns {
    explicit AssetColumns(TableScan &scan);

    int id, kind, subtype, customRendered, savedType;
    int uuid, directory, fileName;
    int taken, modified, added, trashed;
    int width, height, orientation, duration;
    int favorite, hidden, trashedState, hasAdjustments, adjustmentsState, cloudState;
    int burst, visibility, latitude, longitude;
    int attributes, importSession, importPlace;
};

AssetColumns::AssetColumns(TableScan &scan)
    : id(scan.require("Z_PK")), kind(scan.require("ZKIND")), subtype(scan.want("ZKINDSUBTYPE")),
      customRendered(scan.wantQuietly("ZCUSTOMRENDEREDVALUE")),
      savedType(scan.want("ZSAVEDASSETTYPE")), uuid(scan.want("ZUUID")),
      directory(scan.want("ZDIRECTORY")), fileName(scan.want("ZFILENAME")),
      taken(scan.want("ZDATECREATED")), modified(scan.want("ZMODIFICATIONDATE")),
      added(scan.want("ZADDEDDATE")), trashed(scan.want("ZTRASHEDDATE")),
      width(scan.want("ZWIDTH")), height(scan.want("ZHEIGHT")),
      orientation(scan.want("ZORIENTATION")), duration(scan.want("ZDURATION")),
      favorite(scan.want("ZFAVORITE")), hidden(scan.want("ZHIDDEN")),
      trashedState(scan.want("ZTRASHEDSTATE")), hasAdjustments(scan.wantQuietly("ZHASADJUSTMENTS")),
      adjustmentsState(scan.wantQuietly("ZADJUSTMENTSSTATE")),
      cloudState(scan.want("ZCLOUDLOCALSTATE")), burst(scan.want("ZAVALANCHEUUID")),
      visibility(scan.want("ZVISIBILITYSTATE")), latitude(scan.want("ZLATITUDE")),
      longitude(scan.want("ZLONGITUDE")), attributes(scan.want("ZADDITIONALATTRIBUTES")),
      importSession(scan.want("ZIMPORTSESSION")),
      importPlace(scan.wantQuietly("Z_FOK_IMPORTSESSION"))
{
}

// Those that have another name in other versions of the system.
void tellRenamedColumns(LibraryTables &tables, const QByteArray &table, const AssetColumns &columns)
{
    const int none = TableScan::none;
    if (columns.hasAdjustments == none && columns.adjustmentsState == none)
        tables.tellMissing(table + ".ZADJUSTMENTSSTATE");
    if (columns.customRendered == none && !tables.hasColumn(table, "ZHDRTYPE"))
        tables.tellMissing(table + ".ZCUSTOMRENDEREDVALUE");
}

AssetSource sourceOf(int savedType)
{
    switch (savedType) {
    case 3:
        return AssetSource::Local;
    case 4:
        return AssetSource::Shared;
    case 6:
        return AssetSource::Cloud;
    case 10:
        return AssetSource::Referenced;
    case 12:
        return AssetSource::Messages;
    default:
        return AssetSource::Other;
    }
}

AssetTypes typesOf(AssetKind kind, int subtype, int customRendered)
{
    const bool isVideo = kind == AssetKind::Video;
    AssetTypes types;
    types.setFlag(AssetType::Live, !isVideo && subtype == 2);
    types.setFlag(AssetType::Panorama, subtype == 1 || customRendered == 6);
    types.setFlag(AssetType::Screenshot, subtype == 10);
    types.setFlag(AssetType::SlowMotion, isVideo && subtype == 101);
    types.setFlag(AssetType::TimeLapse, isVideo && subtype == 102);
    types.setFlag(AssetType::ScreenRecording, isVideo && subtype == 103);
    return types;
}

std::optional<Location> locationOf(double latitude, std::optional<double> longitude)
{
    const double unknown = -180;
    if (!longitude || (latitude == unknown && *longitude == unknown))
        return std::nullopt;
    return Location{latitude, *longitude};
}

class AssetReader
{
public:
    AssetReader(LibraryTables &tables, const QByteArray &table)
        : m_scan(tables, table), m_columns(m_scan)
    {
        tellRenamedColumns(tables, table, m_columns);
        m_scan.setRowBytes(bytesPerAsset);
    }

    bool isReadable() { return m_scan.isReadable(); }
    void read(AssetRows &rows, std::size_t expected);

private:
    std::optional<AssetKind> kind() const;
    void append(AssetRows &rows, qint64 id, AssetKind kind);
    void readNames(Asset &asset);
    void readDates(Asset &asset) const;
    void readPicture(Asset &asset) const;
    void readStates(Asset &asset) const;
    void readTypes(Asset &asset);
    AssetReferences references() const;
    std::optional<bool> flag(int column) const;

    TableScan m_scan;
    const AssetColumns m_columns;
    QByteArray m_directory; // of the last one: many follow each other in one
};

void AssetReader::read(AssetRows &rows, std::size_t expected)
{
    rows.assets.reserve(expected);
    rows.references.reserve(expected);
    rows.ids.reserve(expected);
    while (m_scan.next()) {
        const std::optional<qint64> id = m_scan.integer(m_columns.id);
        const std::optional<AssetKind> rowKind = kind();
        if (id && rowKind)
            append(rows, *id, *rowKind);
    }
}

std::optional<AssetKind> AssetReader::kind() const
{
    const std::optional<qint64> stored = m_scan.integer(m_columns.kind);
    if (stored == 0)
        return AssetKind::Photo;
    return stored == 1 ? std::optional<AssetKind>(AssetKind::Video) : std::nullopt;
}

void AssetReader::append(AssetRows &rows, qint64 id, AssetKind kind)
{
    Asset &asset = rows.assets.emplace_back();
    asset.id = id;
    asset.kind = kind;
    readNames(asset);
    readStates(asset);
    readDates(asset);
    readPicture(asset);
    readTypes(asset);
    rows.references.push_back(references());
    rows.ids.push_back(id);
}

void AssetReader::readNames(Asset &asset)
{
    asset.uuid = m_scan.uuid(m_columns.uuid);
    toUpperCase(asset.uuid);
    asset.directory = m_scan.sharedText(m_columns.directory, m_directory);
    if (m_directory.constData() != asset.directory.constData())
        m_directory = asset.directory;
    asset.fileName = m_scan.text(m_columns.fileName);
}

void AssetReader::readDates(Asset &asset) const
{
    asset.taken = m_scan.number(m_columns.taken);
    asset.modified = m_scan.number(m_columns.modified);
    asset.added = m_scan.number(m_columns.added);
    if (asset.isTrashed())
        asset.trashed = m_scan.number(m_columns.trashed);
}

void AssetReader::readPicture(Asset &asset) const
{
    asset.width = m_scan.integer(m_columns.width);
    asset.height = m_scan.integer(m_columns.height);
    asset.orientation = m_scan.integer(m_columns.orientation);
    if (asset.kind == AssetKind::Video)
        asset.duration = m_scan.number(m_columns.duration);
    if (const std::optional<double> latitude = m_scan.number(m_columns.latitude))
        asset.location = locationOf(*latitude, m_scan.number(m_columns.longitude));
}

void AssetReader::readStates(Asset &asset) const
{
    asset.favorite = flag(m_columns.favorite);
    asset.hidden = flag(m_columns.hidden);
    asset.inTrash = flag(m_columns.trashedState);
    const std::optional<bool> hasAdjustments = flag(m_columns.hasAdjustments);
    const std::optional<bool> adjustmentsState = flag(m_columns.adjustmentsState);
    if (hasAdjustments || adjustmentsState)
        asset.edited = hasAdjustments.value_or(false) || adjustmentsState.value_or(false);
    if (m_columns.cloudState != TableScan::none)
        asset.isInCloud = m_scan.code(m_columns.cloudState) == 1;
    if (m_columns.savedType != TableScan::none)
        asset.source = sourceOf(m_scan.code(m_columns.savedType));
}

void AssetReader::readTypes(Asset &asset)
{
    asset.types =
        typesOf(asset.kind, m_scan.code(m_columns.subtype), m_scan.code(m_columns.customRendered));
    asset.burst = m_scan.uuid(m_columns.burst);
    if (asset.burst.isNull())
        return;
    asset.types |= AssetType::Burst;
    if (m_columns.visibility != TableScan::none)
        asset.burstPicked = m_scan.integer(m_columns.visibility) == 0;
}

AssetReferences AssetReader::references() const
{
    AssetReferences references;
    references.namedAttributes = m_scan.integer(m_columns.attributes);
    references.importSession = m_scan.integer(m_columns.importSession);
    references.importPlace = m_scan.integer(m_columns.importPlace);
    return references;
}

// NULL counts as false, and is not told from it.
std::optional<bool> AssetReader::flag(int column) const
{
    return column == TableScan::none ? std::nullopt : std::optional<bool>(m_scan.code(column) != 0);
}

bool isAscending(const std::vector<qint64> &ids)
{
    return std::adjacent_find(ids.begin(), ids.end(), std::greater_equal<>()) == ids.end();
}

// Of a sound table the rows come by id, and each id once.
void putInOrder(AssetRows &rows)
{
    if (isAscending(rows.ids))
        return;
    std::vector<std::size_t> order(rows.ids.size());
    std::iota(order.begin(), order.end(), std::size_t(0));
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return rows.ids[a] < rows.ids[b]; });
    AssetRows ordered;
    for (const std::size_t position : order) {
        if (!ordered.ids.empty() && ordered.ids.back() == rows.ids[position])
            continue;
        ordered.ids.push_back(rows.ids[position]);
        ordered.assets.push_back(std::move(rows.assets[position]));
        ordered.references.push_back(rows.references[position]);
    }
    rows = std::move(ordered);
}

} // namespace

QByteArray assetTable(const LibraryTables &tables)
{
    for (const char *name : {"ZGENERICASSET", "ZASSET"}) {
        if (tables.has(name))
            return name;
    }
    throw Error(Error::Damaged, "no table of photos");
}

AssetRows readAssets(LibraryTables &tables, const QByteArray &table, qint64 expected)
{
    AssetReader reader(tables, table);
    if (!reader.isReadable())
        throw Error(Error::Damaged, table.toStdString() + ": not readable as a table of photos");
    AssetRows rows;
    reader.read(rows, tables.roomFor(expected));
    putInOrder(rows);
    rows.byId = indexOfIds(rows.ids);
    return rows;
}
