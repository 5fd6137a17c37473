#ifndef PHOTOLIB_CATALOG_LINK_ROWS_H
#define PHOTOLIB_CATALOG_LINK_ROWS_H

#include "catalog/id_index.h"
#include "catalog/links.h"

#include <vector>

/// A link whose owner is known by its id only.
struct LinkRow {
    qint64 owner;
    quint32 number;
};

/// The links of those owners that `owners` has.
std::vector<Links::Link> joined(const std::vector<LinkRow> &rows, const IdIndex &owners);

#endif // PHOTOLIB_CATALOG_LINK_ROWS_H
