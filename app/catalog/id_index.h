#ifndef PHOTOLIB_CATALOG_ID_INDEX_H
#define PHOTOLIB_CATALOG_ID_INDEX_H

#include <QtGlobal>

#include <optional>
#include <utility>
#include <vector>

/// Where the rows are that have certain ids. With ids as libraries number them, from 1 with some
/// gaps, a look-up is one access to a table; whatever else a device sends is searched in a sorted
/// list.
class IdIndex
{
public:
    using Position = quint32;
    using Entry = std::pair<qint64, Position>;

    IdIndex() = default;

    /// Of ids and positions in any order. Of several with one id the first one counts.
    explicit IdIndex(std::vector<Entry> entries);

    /// The position that belongs to `id`; nothing where there is none, or `id` is nothing.
    std::optional<Position> find(std::optional<qint64> id) const
    {
        if (!id)
            return std::nullopt;
        const quint64 place = static_cast<quint64>(*id) - static_cast<quint64>(m_first);
        if (place < m_table.size())
            return m_table[place] == none ? std::nullopt : std::optional<Position>(m_table[place]);
        return m_sorted.empty() ? std::nullopt : search(*id);
    }

private:
    static constexpr Position none = 0xffffffff;

    void fillTable(const std::vector<Entry> &entries, std::size_t size);
    std::optional<Position> search(qint64 id) const;

    qint64 m_first = 0;
    std::vector<Position> m_table; // from the first id on
    std::vector<Entry> m_sorted;   // where the ids are too far apart for a table
};

/// The index of rows that have these ids.
IdIndex indexOfIds(const std::vector<qint64> &ids);

/// The index of `rows` by their member `id`.
template <typename Row>
IdIndex indexOf(const std::vector<Row> &rows)
{
    std::vector<IdIndex::Entry> entries;
    entries.reserve(rows.size());
    for (const Row &row : rows)
        entries.emplace_back(row.id, static_cast<IdIndex::Position>(entries.size()));
    return IdIndex(std::move(entries));
}

#endif // PHOTOLIB_CATALOG_ID_INDEX_H
