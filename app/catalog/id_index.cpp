#include "catalog/id_index.h"

#include <algorithm>

namespace {

using Entry = std::pair<qint64, IdIndex::Position>;

bool isBefore(const Entry &entry, const Entry &other)
{
    return entry.first < other.first;
}

bool hasSameId(const Entry &entry, const Entry &other)
{
    return entry.first == other.first;
}

} // namespace

IdIndex::IdIndex(std::vector<Entry> entries) : m_entries(std::move(entries))
{
    if (!std::is_sorted(m_entries.begin(), m_entries.end(), isBefore))
        std::stable_sort(m_entries.begin(), m_entries.end(), isBefore);
    m_entries.erase(std::unique(m_entries.begin(), m_entries.end(), hasSameId), m_entries.end());
    if (m_entries.size() < 2)
        return;
    const double span =
        static_cast<double>(m_entries.back().first) - static_cast<double>(m_entries.front().first);
    // Very large ids may all be one number here.
    m_entriesPerId = span > 0 ? static_cast<double>(m_entries.size() - 1) / span : 0;
}

// Where it would be if the ids were spread evenly.
std::size_t IdIndex::guess(qint64 id) const
{
    if (id <= m_entries.front().first)
        return 0;
    if (id >= m_entries.back().first)
        return m_entries.size() - 1;
    const double distance = static_cast<double>(id) - static_cast<double>(m_entries.front().first);
    return std::min(static_cast<std::size_t>(distance * m_entriesPerId), m_entries.size() - 1);
}

// From the guess the steps grow until the id lies between two of them.
std::optional<IdIndex::Position> IdIndex::positionOf(qint64 id) const
{
    const std::size_t size = m_entries.size();
    std::size_t low = guess(id);
    std::size_t high = low + 1;
    for (std::size_t step = 1; low > 0 && m_entries[low].first > id; step *= 2) {
        high = low;
        low -= std::min(step, low);
    }
    for (std::size_t step = 1; high < size && m_entries[high].first <= id; step *= 2) {
        low = high;
        high = std::min(high + step, size);
    }
    const auto begin = m_entries.begin();
    const auto found =
        std::lower_bound(begin + static_cast<std::ptrdiff_t>(low),
                         begin + static_cast<std::ptrdiff_t>(high), Entry(id, 0), isBefore);
    const bool isFound = found != m_entries.end() && found->first == id;
    return isFound ? std::optional<Position>(found->second) : std::nullopt;
}
