#include "engine/photo_order.h"

#include <QString>

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

namespace {

using Photos = std::vector<const Asset *>;

// By what `key` gives for each photo, an optional that is asked for once.
template <typename Key>
void sortBy(Photos *photos, Key key)
{
    std::vector<std::tuple<bool, decltype(key(Asset())), qint64, const Asset *>> keyed;
    keyed.reserve(photos->size());
    for (const Asset *photo : *photos) {
        auto value = key(*photo);
        const bool isLast = !value;
        keyed.emplace_back(isLast, std::move(value), photo->id, photo);
    }
    std::sort(keyed.begin(), keyed.end());
    std::transform(keyed.begin(), keyed.end(), photos->begin(),
                   [](const auto &each) { return std::get<const Asset *>(each); });
}

// What is no number has no place among numbers.
LibraryDate sortable(LibraryDate date)
{
    return date && std::isnan(*date) ? LibraryDate() : date;
}

std::optional<std::pair<QString, QByteArray>> nameKey(const Asset &photo)
{
    if (photo.fileName.isNull())
        return std::nullopt;
    return std::make_pair(
        QString::fromUtf8(photo.fileName.constData(), photo.fileName.size()).toCaseFolded(),
        photo.fileName);
}

bool isKnown(const Asset &photo, PhotoOrder order)
{
    switch (order) {
    case PhotoOrder::Taken:
        return sortable(photo.taken).has_value();
    case PhotoOrder::Modified:
        return sortable(photo.modified).has_value();
    case PhotoOrder::Size:
        return photo.size.has_value();
    case PhotoOrder::Name:
        return !photo.fileName.isNull();
    case PhotoOrder::Id:
        return true;
    }
    return true;
}

} // namespace

void reversePhotos(Photos *photos, std::optional<PhotoOrder> order)
{
    const auto unknown = std::find_if(photos->begin(), photos->end(), [order](const Asset *photo) {
        return order && !isKnown(*photo, *order);
    });
    std::reverse(photos->begin(), unknown);
    std::reverse(unknown, photos->end());
}

void sortPhotos(Photos *photos, PhotoOrder order)
{
    switch (order) {
    case PhotoOrder::Taken:
        return sortBy(photos, [](const Asset &photo) { return sortable(photo.taken); });
    case PhotoOrder::Modified:
        return sortBy(photos, [](const Asset &photo) { return sortable(photo.modified); });
    case PhotoOrder::Size:
        return sortBy(photos, [](const Asset &photo) { return photo.size; });
    case PhotoOrder::Name:
        return sortBy(photos, nameKey);
    case PhotoOrder::Id:
        return sortBy(photos, [](const Asset &photo) { return std::optional(photo.id); });
    }
}
