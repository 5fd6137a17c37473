#include "catalog/read_attributes.h"

#include "catalog/table_scan.h"

#include <utility>

namespace {

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

struct Description {
    qint64 id = 0;
    std::optional<qint64> attributes;
    QByteArray text;
};

std::vector<Description> descriptions(LibraryTables &tables)
{
    std::vector<Description> rows;
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

// Where several name the same attributes, the first one by id.
IdIndex descriptionsByAttributes(const std::vector<Description> &rows)
{
    std::vector<std::pair<qint64, IdIndex::Position>> entries;
    entries.reserve(rows.size());
    IdIndex::Position position = 0;
    for (const Description &row : rows) {
        if (row.attributes)
            entries.emplace_back(*row.attributes, position);
        ++position;
    }
    return IdIndex(std::move(entries));
}

} // namespace

void readAttributes(LibraryTables &tables, AssetRows &rows)
{
    TableScan scan(tables, "ZADDITIONALASSETATTRIBUTES");
    const int id = scan.require("Z_PK");
    const int asset = scan.require("ZASSET");
    const int offset = scan.want("ZTIMEZONEOFFSET");
    const int originalName = scan.want("ZORIGINALFILENAME");
    const int title = scan.want("ZTITLE");
    const int size = scan.want("ZORIGINALFILESIZE");
    const int description = scan.want("ZASSETDESCRIPTION");
    while (scan.next()) {
        const std::optional<qint64> attributes = scan.integer(id);
        const std::optional<IdIndex::Position> position = rows.byId.find(scan.integer(asset));
        if (!attributes || !position || !replaces(*attributes, rows.references[*position]))
            continue;
        rows.references[*position].attributes = attributes;
        rows.references[*position].description = scan.integer(description);
        Asset &named = rows.assets[*position];
        named.utcOffset = minutesOf(scan.integer(offset));
        named.originalName = scan.sharedText(originalName, named.fileName);
        named.title = scan.text(title);
        named.size = scan.integer(size);
    }
    rows.byAttributes = indexByAttributes(rows.references);
}

void readDescriptions(LibraryTables &tables, AssetRows &rows)
{
    const std::vector<Description> all = descriptions(tables);
    const IdIndex byId = indexOf(all);
    const IdIndex byAttributes = descriptionsByAttributes(all);
    for (std::size_t position = 0; position < rows.assets.size(); ++position) {
        const AssetReferences &references = rows.references[position];
        std::optional<IdIndex::Position> found = byId.find(references.description);
        if (!found)
            found = byAttributes.find(references.attributes);
        if (found)
            rows.assets[position].caption = all[*found].text;
    }
}
