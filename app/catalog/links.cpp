#include "catalog/links.h"

#include <algorithm>

Links::Links(std::size_t owners, const std::vector<Link> &links)
    : m_ends(owners), m_numbers(links.size())
{
    for (const Link &link : links)
        ++m_ends[link.first];
    std::size_t start = 0;
    for (std::size_t &end : m_ends) {
        const std::size_t count = end;
        end = start;
        start += count;
    }
    // Filled from where it begins, each list ends at its end.
    for (const Link &link : links)
        m_numbers[m_ends[link.first]++] = link.second;
}

Links::Numbers Links::of(std::size_t owner)
{
    quint32 *const begin = m_numbers.data() + (owner > 0 ? m_ends[owner - 1] : 0);
    quint32 *end = m_numbers.data() + m_ends[owner];
    if (end - begin > 1) {
        std::sort(begin, end);
        end = std::unique(begin, end);
    }
    return {begin, end};
}
