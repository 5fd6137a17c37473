#include "catalog/links.h"

#include <algorithm>

Links::Links(std::size_t owners, const std::vector<Link> &links)
    : m_starts(owners + 1), m_numbers(links.size())
{
    for (const Link &link : links)
        ++m_starts[link.first + std::size_t(1)];
    for (std::size_t owner = 0; owner < owners; ++owner)
        m_starts[owner + 1] += m_starts[owner];
    // Filled from the ends: each start moves on by its list's length, and so to the next one's.
    std::vector<std::size_t> ends(m_starts.begin(), m_starts.end() - 1);
    for (const Link &link : links)
        m_numbers[ends[link.first]++] = link.second;
}

const std::vector<quint32> &Links::of(std::size_t owner)
{
    const auto start = m_numbers.begin();
    m_list.assign(start + static_cast<std::ptrdiff_t>(m_starts[owner]),
                  start + static_cast<std::ptrdiff_t>(m_starts[owner + 1]));
    if (m_list.size() > 1) {
        std::sort(m_list.begin(), m_list.end());
        m_list.erase(std::unique(m_list.begin(), m_list.end()), m_list.end());
    }
    return m_list;
}
