#include "catalog/read_keywords.h"

#include "catalog/links.h"
#include "catalog/ranked_texts.h"
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

// Of the positions of assets and the ranks of titles.
std::vector<Links::Link> links(LibraryTables &tables, const FoundJoin &join, const AssetRows &rows,
                               const Keywords &keywords, const RankedTexts &titles)
{
    std::vector<Links::Link> links;
    TableScan scan(tables, join.table);
    const int attributes = scan.require(join.owner);
    const int keyword = scan.require(join.item);
    while (scan.next()) {
        const std::optional<IdIndex::Position> asset =
            rows.byAttributes.find(scan.integer(attributes));
        const std::optional<IdIndex::Position> title = keywords.byId.find(scan.integer(keyword));
        if (asset && title)
            links.emplace_back(*asset, titles.rank(*title));
    }
    return links;
}

} // namespace

void readKeywords(LibraryTables &tables, const EntityNumbers &numbers, AssetRows &rows)
{
    const FoundJoin join = keywordJoinTable(tables, numbers);
    const Keywords all = keywords(tables);
    if (join.table.isEmpty())
        return;
    const RankedTexts titles(all.titles);
    Links titlesOfAssets(rows.assets.size(), links(tables, join, rows, all, titles));
    for (std::size_t asset = 0; asset < rows.assets.size(); ++asset) {
        const Links::Numbers ranks = titlesOfAssets.of(asset);
        if (!ranks.isEmpty())
            rows.assets[asset].keywords = titles.texts(ranks);
    }
}
