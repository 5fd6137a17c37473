#include "catalog/read_attributes.h"

#include "catalog/table_scan.h"

#include <utility>

namespace {

// Of memory, in proportion to what a row takes of the files.
const qint64 bytesPerRow = 64;

// Offsets are stored in seconds.
std::optional<int> minutesOf(std::optional<qint64> seconds)
{
    const qint64 minute = 60;
    const qint64 day = 86400;
    if (!seconds || *seconds <= -day || *seconds >= day || *seconds % minute != 0)
        return std::nullopt;
    return static_cast<int>(*seconds / minute);
}

// Mostly one row names an asset. Of several, it is the one that the asset names itself, or the
// first.
bool replaces(qint64 attributes, const AssetReferences &references)
{
    if (!references.attributes || attributes == references.namedAttributes)
        return true;
    return references.attributes != references.namedAttributes &&
           attributes < *references.attributes;
}

IdIndex indexByAttributes(const std::vector<AssetReferences> &references)
{
    std::vector<std::pair<qint64, IdIndex::Position>> entries;
    entries.reserve(references.size());
    IdIndex::Position position = 0;
    for (const AssetReferences &one : references) {
        if (one.attributes)
            entries.emplace_back(*one.attributes, position);
        ++position;
    }
    return IdIndex(std::move(entries));
}

// Where several name the same attributes, the first one by id.
IdIndex descriptionsByAttributes(const std::vector<DescriptionRow> &rows)
{
    std::vector<std::pair<qint64, IdIndex::Position>> entries;
    entries.reserve(rows.size());
    IdIndex::Position position = 0;
    for (const DescriptionRow &row : rows) {
        if (row.attributes)
            entries.emplace_back(*row.attributes, position);
        ++position;
    }
    return IdIndex(std::move(entries));
}

} // namespace

std::vector<StoredAttributes> readAttributes(LibraryTables &tables, qint64 expected)
{
    std::vector<StoredAttributes> rows;
    rows.reserve(tables.roomFor(expected));
    TableScan scan(tables, "ZADDITIONALASSETATTRIBUTES");
    const int id = scan.require("Z_PK");
    const int asset = scan.require("ZASSET");
    const int offset = scan.want("ZTIMEZONEOFFSET");
    const int originalName = scan.want("ZORIGINALFILENAME");
    const int title = scan.want("ZTITLE");
    const int size = scan.want("ZORIGINALFILESIZE");
    const int description = scan.want("ZASSETDESCRIPTION");
    scan.setRowBytes(bytesPerRow);
    while (scan.next()) {
        const std::optional<qint64> attributes = scan.integer(id);
        const std::optional<qint64> owner = scan.integer(asset);
        if (attributes && owner)
            rows.push_back({*attributes, *owner, scan.integer(description),
                            minutesOf(scan.integer(offset)), scan.integer(size),
                            scan.text(originalName), scan.text(title)});
    }
    return rows;
}

std::vector<DescriptionRow> readDescriptions(LibraryTables &tables)
{
    std::vector<DescriptionRow> rows;
    TableScan scan(tables, "ZASSETDESCRIPTION");
    const int id = scan.require("Z_PK");
    const int text = scan.require("ZLONGDESCRIPTION");
    const int attributes = scan.want("ZASSETATTRIBUTES");
    while (scan.next()) {
        if (const std::optional<qint64> rowId = scan.integer(id))
            rows.push_back({*rowId, scan.integer(attributes), scan.text(text)});
    }
    return rows;
}

void setAttributes(AssetRows &rows, std::vector<StoredAttributes> attributes)
{
    for (StoredAttributes &row : attributes) {
        const std::optional<IdIndex::Position> position = rows.byId.find(row.asset);
        if (!position || !replaces(row.id, rows.references[*position]))
            continue;
        rows.references[*position].attributes = row.id;
        rows.references[*position].description = row.description;
        Asset &named = rows.assets[*position];
        named.utcOffset = row.utcOffset;
        named.originalName =
            row.originalName == named.fileName ? named.fileName : std::move(row.originalName);
        named.title = std::move(row.title);
        named.size = row.size;
    }
    rows.byAttributes = indexByAttributes(rows.references);
}

void setCaptions(AssetRows &rows, const std::vector<DescriptionRow> &descriptions)
{
    const IdIndex byId = indexOf(descriptions);
    const IdIndex byAttributes = descriptionsByAttributes(descriptions);
    for (std::size_t position = 0; position < rows.assets.size(); ++position) {
        const AssetReferences &references = rows.references[position];
        std::optional<IdIndex::Position> found = byId.find(references.description);
        if (!found)
            found = byAttributes.find(references.attributes);
        if (found)
            rows.assets[position].caption = descriptions[*found].text;
    }
}
