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

    /// Some numbers of a list; valid as long as the lists.
    class Numbers
    {
    public:
        Numbers(const quint32 *begin, const quint32 *end) : m_begin(begin), m_end(end) {}

        const quint32 *begin() const { return m_begin; }
        const quint32 *end() const { return m_end; }
        std::size_t size() const { return static_cast<std::size_t>(m_end - m_begin); }
        bool isEmpty() const { return m_begin == m_end; }

    private:
        const quint32 *m_begin;
        const quint32 *m_end;
    };

    Links(std::size_t owners, const std::vector<Link> &links);

    /// The numbers of `owner` ascending, each once.
    Numbers of(std::size_t owner);

private:
    std::vector<std::size_t> m_ends; // where each owner's list ends, and the next one's begins
    std::vector<quint32> m_numbers;
};

#endif // PHOTOLIB_CATALOG_LINKS_H
