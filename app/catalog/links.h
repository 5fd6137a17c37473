#ifndef PHOTOLIB_CATALOG_LINKS_H
#define PHOTOLIB_CATALOG_LINKS_H

#include <QtGlobal>

#include <cstddef>
#include <utility>
#include <vector>

/// Lists of numbers, one for each of a count of owners, made in linear time of pairs that come in
/// any order.
class Links
{
public:
    /// An owner below the count, and one of its numbers.
    using Link = std::pair<quint32, quint32>;

    Links(std::size_t owners, const std::vector<Link> &links);

    /// The numbers of `owner` ascending, each once.
    const std::vector<quint32> &of(std::size_t owner);

private:
    std::vector<std::size_t> m_starts; // one more than owners
    std::vector<quint32> m_numbers;
    std::vector<quint32> m_list; // the one that was asked for
};

#endif // PHOTOLIB_CATALOG_LINKS_H
