#include "engine/photo_ids.h"

#include "engine/id_list.h"
#include "engine/library_session.h"

bool isNumber(const std::string &text)
{
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

quint64 knownPhotoId(const std::string &text, LibrarySession &session)
{
    QList<quint64> ids;
    for (const Asset &asset : session.catalog().assets)
        ids.append(static_cast<quint64>(asset.id));
    return knownIds({text}, ids, "no photo with this id in " + session.deviceName()).first();
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
