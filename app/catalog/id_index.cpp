#include "catalog/id_index.h"

#include <algorithm>

namespace {

// What the table may take: as much as the list would.
const std::size_t placesPerEntry = sizeof(IdIndex::Entry) / sizeof(IdIndex::Position);

bool isBefore(const IdIndex::Entry &entry, const IdIndex::Entry &other)
{
    return entry.first < other.first;
}

} // namespace

IdIndex::IdIndex(std::vector<Entry> entries)
{
    if (entries.empty())
        return;
    const auto [lowest, highest] = std::minmax_element(entries.begin(), entries.end(), isBefore);
    const quint64 span = static_cast<quint64>(highest->first) - static_cast<quint64>(lowest->first);
    m_first = lowest->first;
    if (span < entries.size() * placesPerEntry) {
        fillTable(entries, span + 1);
        return;
    }
    m_sorted = std::move(entries);
    std::stable_sort(m_sorted.begin(), m_sorted.end(), isBefore);
}

void IdIndex::fillTable(const std::vector<Entry> &entries, std::size_t size)
{
    m_table.assign(size, none);
    for (const Entry &entry : entries) {
        Position &position =
            m_table[static_cast<quint64>(entry.first) - static_cast<quint64>(m_first)];
        if (position == none)
            position = entry.second;
    }
}

std::optional<IdIndex::Position> IdIndex::search(qint64 id) const
{
    const auto found = std::lower_bound(m_sorted.begin(), m_sorted.end(), Entry(id, 0), isBefore);
    const bool isFound = found != m_sorted.end() && found->first == id;
    return isFound ? std::optional<Position>(found->second) : std::nullopt;
}

IdIndex indexOfIds(const std::vector<qint64> &ids)
{
    std::vector<IdIndex::Entry> entries;
    entries.reserve(ids.size());
    for (const qint64 id : ids)
        entries.emplace_back(id, static_cast<IdIndex::Position>(entries.size()));
    return IdIndex(std::move(entries));
}
