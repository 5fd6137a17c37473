#include "engine/photo_filter.h"

#include "base/error.h"
#include "engine/album_choice.h"
#include "engine/album_tree.h"
#include "engine/library_session.h"
#include "engine/name_choice.h"

#include <algorithm>
#include <set>

namespace {

using Photos = std::vector<const Asset *>;
using Names = std::set<QByteArray>;

Names allKeywords(const Catalog &catalog)
{
    Names names;
    for (const Asset &asset : catalog.assets)
        names.insert(asset.keywords.begin(), asset.keywords.end());
    return names;
}

Names allPeople(const Catalog &catalog)
{
    Names names;
    for (const Person &person : catalog.people)
        names.insert(person.name);
    for (const Asset &asset : catalog.assets)
        names.insert(asset.people.begin(), asset.people.end());
    return names;
}

// The spellings of each of `texts`.
std::vector<Names> spellings(const Names &known, const std::vector<std::string> &texts,
                             const std::string &unknown)
{
    std::vector<Names> result;
    result.reserve(texts.size());
    for (const std::string &text : texts)
        result.push_back(chosenNames(known, text, unknown));
    return result;
}

// Whether `names` has one spelling at least of each of `wanted`.
bool hasAll(const std::vector<QByteArray> &names, const std::vector<Names> &wanted)
{
    return std::all_of(wanted.begin(), wanted.end(), [&names](const Names &one) {
        return std::any_of(names.begin(), names.end(),
                           [&one](const QByteArray &name) { return one.count(name) != 0; });
    });
}

bool isTakenWithin(const Asset &asset, const PhotoFilter &filter)
{
    if (!filter.from && !filter.to)
        return true;
    const int offset = asset.utcOffset.value_or(0);
    const std::optional<qint64> local = clockTime(asset.taken, offset);
    if (!local)
        return false;
    const auto in = [&](const DateSpan &span) {
        constexpr qint64 minute = 60000;
        return span.isUtc ? *local - offset * minute : *local;
    };
    return (!filter.from || in(*filter.from) >= filter.from->start) &&
           (!filter.to || in(*filter.to) < filter.to->end);
}

bool isHiddenAsAsked(const Asset &asset, PhotoFilter::Hidden hidden)
{
    if (hidden == PhotoFilter::Hidden::Included)
        return true;
    return asset.hidden.value_or(false) == (hidden == PhotoFilter::Hidden::Only);
}

// What `filter` asks for, with all names looked up.
class Question
{
public:
    Question(const Catalog &catalog, const PhotoFilter &filter, const std::string &device)
        : m_filter(filter), m_ids(filter.ids.value_or(std::vector<IdRange>()))
    {
        if (!filter.keywords.empty())
            m_keywords = spellings(allKeywords(catalog), filter.keywords,
                                   "no photo with this keyword in " + device);
        if (!filter.people.empty())
            m_people =
                spellings(allPeople(catalog), filter.people, "no person of this name in " + device);
    }

    bool asksFor(const Asset &asset) const
    {
        return isOfIds(asset) && isOfState(asset) && isOfKind(asset) &&
               isTakenWithin(asset, m_filter) && hasAll(asset.keywords, m_keywords) &&
               hasAll(asset.people, m_people);
    }

private:
    bool isOfIds(const Asset &asset) const
    {
        const auto id = static_cast<quint64>(asset.id);
        if (asset.id >= 0 && m_ids.names(id))
            return true;
        return (!m_filter.ids || (asset.id >= 0 && m_ids.covers(id))) &&
               (!asset.isTrashed() || m_filter.trash != PhotoFilter::Trash::LeftOut) &&
               (!asset.isShared() || m_filter.shared);
    }

    bool isOfState(const Asset &asset) const
    {
        return (m_filter.trash != PhotoFilter::Trash::Only || asset.isTrashed()) &&
               isHiddenAsAsked(asset, m_filter.hidden) &&
               (!m_filter.favorite || asset.favorite.value_or(false)) &&
               (!m_filter.edited || asset.edited.value_or(false));
    }

    bool isOfKind(const Asset &asset) const
    {
        return (!m_filter.kind || asset.kind == *m_filter.kind) &&
               (!m_filter.types || (asset.types & m_filter.types)) &&
               (!m_filter.largerThan || (asset.size && *asset.size > *m_filter.largerThan));
    }

    const PhotoFilter &m_filter;
    const IdSelection m_ids;
    std::vector<Names> m_keywords;
    std::vector<Names> m_people;
};

void requireIds(const Catalog &catalog, const PhotoFilter &filter, const std::string &device)
{
    for (const IdRange &range : filter.ids.value_or(std::vector<IdRange>())) {
        const auto id = static_cast<qint64>(range.first);
        if (!range.isRange && (id < 0 || !catalog.asset(id)))
            throw Error(range.text, "no photo with this id in " + device);
    }
}

Photos allPhotos(const Catalog &catalog)
{
    Photos photos;
    photos.reserve(catalog.assets.size());
    for (const Asset &asset : catalog.assets)
        photos.push_back(&asset);
    return photos;
}

Photos photosOfAlbum(const Catalog &catalog, const std::string &text, const std::string &device)
{
    const Album &album = chosenAlbum(catalog, text, device);
    if (album.kind == AlbumKind::Smart && album.assets.empty())
        throw Error(text, "a smart album: its photos are not stored in the library");
    Photos photos;
    for (const qint64 id : AlbumTree(catalog).assetsOf(album)) {
        if (const Asset *const asset = catalog.asset(id))
            photos.push_back(asset);
    }
    return photos;
}

template <typename Test>
void keepOnly(Photos *photos, Test isWanted)
{
    photos->erase(std::remove_if(photos->begin(), photos->end(),
                                 [&](const Asset *photo) { return !isWanted(*photo); }),
                  photos->end());
}

void arrange(Photos *photos, const PhotoFilter &filter)
{
    if (filter.order)
        sortPhotos(photos, *filter.order);
    if (filter.isReversed)
        reversePhotos(photos, filter.order);
    if (filter.limit && *filter.limit < photos->size())
        photos->resize(*filter.limit);
}

} // namespace

Photos chosenPhotos(const Catalog &catalog, const PhotoFilter &filter, const std::string &device,
                    const std::function<bool(const Asset &)> &isMissing)
{
    requireIds(catalog, filter, device);
    Photos photos =
        filter.album ? photosOfAlbum(catalog, *filter.album, device) : allPhotos(catalog);
    const Question question(catalog, filter, device);
    keepOnly(&photos, [&question](const Asset &photo) { return question.asksFor(photo); });
    if (filter.missing)
        keepOnly(&photos, isMissing);
    arrange(&photos, filter);
    return photos;
}

Photos chosenPhotos(LibrarySession &session, const PhotoFilter &filter)
{
    return chosenPhotos(session.catalog(), filter, session.deviceName(), [&](const Asset &photo) {
        return session.fileState(photo) == FileState::Missing;
    });
}
