#include "engine/photo_ids.h"

#include "base/error.h"
#include "engine/id_list.h"
#include "engine/library_session.h"

bool isNumber(const std::string &text)
{
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

quint64 knownPhotoId(const std::string &text, LibrarySession &session)
{
    return knownPhotoIds({text}, session).first();
}

QList<quint64> knownPhotoIds(const std::vector<std::string> &texts, LibrarySession &session)
{
    return knownIds(texts, session.library().photoIDs(),
                    "no photo with this id in " + session.deviceName());
}

quint64 knownAlbumId(const std::string &text, LibrarySession &session)
{
    return knownIds({text}, session.library().albumIDs(),
                    "no album with this id in " + session.deviceName())
        .first();
}

QSet<quint64> allPhotoIds(photo_manager_int &library)
{
    const QList<quint64> ids = library.photoIDs();
    return QSet<quint64>(ids.begin(), ids.end());
}

QList<quint64> listedPhotoIds(const albumItem &album, const QSet<quint64> &all)
{
    QList<quint64> listed;
    for (const quint64 id : album.photoIDs) {
        if (all.contains(id))
            listed.append(id);
    }
    return listed;
}

QList<quint64> chosenPhotoIds(LibrarySession &session, const std::optional<std::string> &album)
{
    if (!album)
        return session.library().photoIDs();
    albumItem item;
    if (!session.library().getAlbum(knownAlbumId(*album, session), &item))
        throw Error(*album, "an album of a kind that is not shown");
    return listedPhotoIds(item, allPhotoIds(session.library()));
}
