#include "catalog/catalog.h"

#include <algorithm>

namespace {

template <typename Item>
const Item *withId(const std::vector<Item> &items, qint64 id)
{
    const auto found =
        std::lower_bound(items.begin(), items.end(), id,
                         [](const Item &item, qint64 wanted) { return item.id < wanted; });
    return found != items.end() && found->id == id ? &*found : nullptr;
}

} // namespace

const Asset *Catalog::asset(qint64 id) const
{
    return withId(assets, id);
}

const Album *Catalog::album(qint64 id) const
{
    return withId(albums, id);
}
