#include "catalog/link_rows.h"

std::vector<Links::Link> joined(const std::vector<LinkRow> &rows, const IdIndex &owners)
{
    std::vector<Links::Link> links;
    links.reserve(rows.size());
    for (const LinkRow &row : rows) {
        if (const std::optional<IdIndex::Position> owner = owners.find(row.owner))
            links.emplace_back(*owner, row.number);
    }
    return links;
}
