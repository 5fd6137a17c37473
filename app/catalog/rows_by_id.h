#ifndef PHOTOLIB_CATALOG_ROWS_BY_ID_H
#define PHOTOLIB_CATALOG_ROWS_BY_ID_H

#include <algorithm>
#include <vector>

/// Puts rows with a member `id` in the order of their ids, and keeps the first one of each. Those
/// of a sound table are so already.
template <typename Row>
void putInOrderOfIds(std::vector<Row> &rows)
{
    const auto isBefore = [](const Row &row, const Row &other) { return row.id < other.id; };
    const auto isSame = [](const Row &row, const Row &other) { return row.id == other.id; };
    if (!std::is_sorted(rows.begin(), rows.end(), isBefore))
        std::stable_sort(rows.begin(), rows.end(), isBefore);
    rows.erase(std::unique(rows.begin(), rows.end(), isSame), rows.end());
}

#endif // PHOTOLIB_CATALOG_ROWS_BY_ID_H
