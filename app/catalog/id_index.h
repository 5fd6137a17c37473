#ifndef PHOTOLIB_CATALOG_ID_INDEX_H
#define PHOTOLIB_CATALOG_ID_INDEX_H

#include <QtGlobal>

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

/// Where the rows are that have certain ids. A plain sorted list: whatever ids a device sends, a
/// look-up takes no more than a binary search, and with ids as libraries number them, from 1 with
/// some gaps, hardly more than one access.
class IdIndex
{
public:
    using Position = quint32;

    IdIndex() = default;

    /// Of these ids and positions in any order. Of several with one id the first one counts.
    explicit IdIndex(std::vector<std::pair<qint64, Position>> entries);

    /// The position that belongs to `id`; nothing where there is none, or `id` is nothing.
    std::optional<Position> find(std::optional<qint64> id) const
    {
        return id && !m_entries.empty() ? positionOf(*id) : std::nullopt;
    }

private:
    std::optional<Position> positionOf(qint64 id) const;
    std::size_t guess(qint64 id) const;

    std::vector<std::pair<qint64, Position>> m_entries; // by id
    double m_entriesPerId = 0;
};

/// The index of `rows` by their member `id`.
template <typename Row>
IdIndex indexOf(const std::vector<Row> &rows)
{
    std::vector<std::pair<qint64, IdIndex::Position>> entries;
    entries.reserve(rows.size());
    for (const Row &row : rows)
        entries.emplace_back(row.id, static_cast<IdIndex::Position>(entries.size()));
    return IdIndex(std::move(entries));
}

#endif // PHOTOLIB_CATALOG_ID_INDEX_H
