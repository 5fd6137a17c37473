#include "catalog/read_keywords.h"

#include "catalog/table_scan.h"

namespace {

struct Keywords {
    IdIndex byId;
    std::vector<QByteArray> titles;
};

Keywords keywords(LibraryTables &tables)
{
    Keywords keywords;
    std::vector<std::pair<qint64, IdIndex::Position>> entries;
    TableScan scan(tables, "ZKEYWORD");
    const int id = scan.require("Z_PK");
    const int title = scan.require("ZTITLE");
    while (scan.next()) {
        const std::optional<qint64> keyword = scan.integer(id);
        const QByteArray text = scan.text(title);
        if (!keyword || text.isNull())
            continue;
        entries.emplace_back(*keyword, static_cast<IdIndex::Position>(keywords.titles.size()));
        keywords.titles.push_back(text);
    }
    keywords.byId = IdIndex(std::move(entries));
    return keywords;
}

// Of attributes and the ranks of titles.
std::vector<LinkRow> links(LibraryTables &tables, const FoundJoin &join, const Keywords &keywords,
                           const RankedTexts &titles)
{
    std::vector<LinkRow> links;
    TableScan scan(tables, join.table);
    const int attributes = scan.require(join.owner);
    const int keyword = scan.require(join.item);
    while (scan.next()) {
        const std::optional<qint64> owner = scan.integer(attributes);
        const std::optional<IdIndex::Position> title = keywords.byId.find(scan.integer(keyword));
        if (owner && title)
            links.push_back({*owner, titles.rank(*title)});
    }
    return links;
}

} // namespace

KeywordRows readKeywords(LibraryTables &tables, const EntityNumbers &numbers)
{
    const FoundJoin join = keywordJoinTable(tables, numbers);
    const Keywords all = keywords(tables);
    KeywordRows rows = {RankedTexts(all.titles), {}};
    if (!join.table.isEmpty())
        rows.links = links(tables, join, all, rows.titles);
    return rows;
}

void setKeywords(AssetRows &rows, const KeywordRows &keywords)
{
    Links titlesOfAssets(rows.assets.size(), joined(keywords.links, rows.byAttributes));
    for (std::size_t asset = 0; asset < rows.assets.size(); ++asset) {
        const Links::Numbers ranks = titlesOfAssets.of(asset);
        if (!ranks.isEmpty())
            rows.assets[asset].keywords = keywords.titles.texts(ranks);
    }
}
