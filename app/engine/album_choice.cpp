#include "engine/album_choice.h"

#include "base/error.h"
#include "base/suggestion.h"
#include "engine/album_tree.h"
#include "engine/name_choice.h"
#include "engine/photo_ids.h"

#include <functional>

namespace {

using Albums = std::vector<const Album *>;
using NameTest = std::function<bool(const Album &)>;

// Whether `name` is `path`, or its end from a title on.
bool isEndOfPath(const QByteArray &path, const QByteArray &name)
{
    return path == name || path.endsWith('/' + name);
}

// Finds albums by their titles and those of their folders.
class AlbumNames
{
public:
    explicit AlbumNames(const Catalog &catalog) : m_catalog(catalog), m_tree(catalog) {}

    // The albums of the first of several meanings of `name` that has any.
    Albums named(const QByteArray &name) const
    {
        const QByteArray blind = caseBlind(name);
        const NameTest meanings[] = {
            [&](const Album &album) { return album.title == name; },
            [&](const Album &album) { return m_tree.pathOf(album) == name; },
            [&](const Album &album) { return isEndOfPath(m_tree.pathOf(album), name); },
            [&](const Album &album) { return caseBlind(album.title) == blind; },
            [&](const Album &album) { return isEndOfPath(caseBlind(m_tree.pathOf(album)), blind); },
        };
        for (const NameTest &isMeant : meanings) {
            Albums found = matching(isMeant);
            if (!found.empty())
                return found;
        }
        return Albums();
    }

    // "5 (Trips/Summer), 9 (Summer)"
    std::string listText(const Albums &albums) const
    {
        QByteArray text;
        for (const Album *album : albums) {
            text.append(text.isEmpty() ? "" : ", ").append(QByteArray::number(album->id));
            text.append(" (").append(m_tree.pathOf(*album)).append(')');
        }
        return text.toStdString();
    }

    std::string suggestedTitle(const std::string &name) const
    {
        std::vector<std::string> titles;
        titles.reserve(m_catalog.albums.size());
        for (const Album &album : m_catalog.albums)
            titles.push_back(album.title.toStdString());
        return suggestion(name, titles);
    }

private:
    Albums matching(const NameTest &isMeant) const
    {
        Albums found;
        for (const Album &album : m_catalog.albums) {
            if (!album.title.isEmpty() && isMeant(album))
                found.push_back(&album);
        }
        return found;
    }

    const Catalog &m_catalog;
    const AlbumTree m_tree;
};

} // namespace

const Album &chosenAlbum(const Catalog &catalog, const std::string &text, const std::string &device)
{
    bool isId = false;
    const qint64 id = QByteArray::fromStdString(text).toLongLong(&isId);
    if (const Album *const album = isId ? catalog.album(id) : nullptr)
        return *album;
    const AlbumNames names(catalog);
    const Albums found = names.named(QByteArray::fromStdString(text));
    if (found.size() > 1)
        throw Error(text, "several albums have this name: " + names.listText(found) +
                              "; name one by its id");
    if (!found.empty())
        return *found.front();
    if (isNumber(text))
        throw Error(text, "no album with this id in " + device);
    throw Error(text, "no album of this name in " + device + names.suggestedTitle(text));
}
