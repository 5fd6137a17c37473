#include "boundary/photo_records.h"
#include "host/exception_barrier.h"
#include "host/host_log.h"
#include "ios/key_lists.h"
#include "ios/photo_manager.h"
#include "ios/synthetic_albums.h"

#include <QMutexLocker>

namespace {

struct synthetic_album {
    quint64 key;
    const char *name;
    qint32 type;
};

const synthetic_album syntheticAlbums[] = {
    {cameraRollKey, "Camera Roll", 1},
    {videoAlbumKey, "Video", 3},
    {panoramaAlbumKey, "Panorama", 2},
    {photoLibraryKey, "Photo Library", 5},
};

void describeSynthetic(quint64 key, const QByteArray &photoLibraryUuid, albumItem *album)
{
    for (const synthetic_album &known : syntheticAlbums) {
        if (known.key != key)
            continue;
        album->uuid = key == photoLibraryKey ? photoLibraryUuid : QByteArray();
        album->type = known.type;
        album->name = QString::fromLatin1(known.name);
    }
}

// `kind` is null for a kind of album that is not shown; then the name stays that of the
// record when it has one, and the result is false.
bool nameAlbum(const Camera_Album &record, const photo_manager::AlbumKindProp *kind,
               albumItem *album)
{
    if (!record.title.isEmpty())
        album->name = record.title;
    else if (kind)
        album->name = kind->name;
    if (kind)
        return true;

    if (record.title.isEmpty()) {
        Log("PHOTOLIB", 2, "Meet a album, kind: %d, title is null", record.kind);
        return false;
    }
    Log("PHOTOLIB", 2, "Got a unknown album type. title: %s, kind: %lld",
        record.title.toLocal8Bit().constData(), static_cast<long long>(record.kind));
    Log("PHOTOLIB", 2, "Can not get album");
    return false;
}

typedef QMap<quint64, Camera_Data *> asset_map;

// Looking up a key in a list of all keys is several times as quick as in the map, but making
// that list takes a walk through the library, which pays for large albums only.
QList<quint64> presentMembers(const QList<quint64> &members, const asset_map &assets)
{
    if (members.size() > assets.size() / 8)
        return keysAmong(members, key_set(assets.keys()));

    // Members mostly follow each other, and the way through the map of a large library is long:
    // so the key behind the last one found is tried first.
    QList<quint64> present;
    asset_map::const_iterator last = assets.constEnd();
    for (const quint64 key : members) {
        if (last == assets.constEnd() || ++last == assets.constEnd() || last.key() != key)
            last = assets.constFind(key);
        if (last != assets.constEnd())
            present.append(key);
    }
    return present;
}

} // namespace

// Both without a lock, deliberately: an edit that takes long does not hold up the host.
int photo_manager::albumCnt()
{
    return m_listAlbumIDs.size();
}

QList<quint64> photo_manager::albumIDs()
{
    return m_listAlbumIDs;
}

bool photo_manager::getAlbum(const quint64 &id, albumItem *album)
{
    const QMutexLocker locker(&m_recMutex);
    const bool isListed = album && m_listAlbumIDs.contains(id);
    if (isListed && m_mapAlbum2Photos.contains(id))
        return withoutThrowing(false, [&] { return getSyntheticAlbum(id, album); });

    // A parse that failed leaves the list of an earlier one without its records.
    Camera_Album *record = isListed && m_pCameraDB ? m_pCameraDB->albums.value(id) : nullptr;
    if (record)
        return withoutThrowing(false, [&] { return getDeviceAlbum(id, record, album); });

    Log("PHOTOLIB", 2, "Can not get album");
    return false;
}

bool photo_manager::getSyntheticAlbum(quint64 id, albumItem *album)
{
    album->id = id;
    describeSynthetic(id, m_photoLibUUID, album);
    album->photoIDs = m_mapAlbum2Photos.value(id);
    return true;
}

bool photo_manager::getDeviceAlbum(quint64 id, Camera_Album *record, albumItem *album)
{
    album->id = id;
    album->uuid = record->uuid;
    const QMap<int, AlbumKindProp>::const_iterator kind =
        m_mapAlbumKind2Type.constFind(record->kind);
    const bool isShown = kind != m_mapAlbumKind2Type.constEnd();
    if (!nameAlbum(*record, isShown ? &kind.value() : nullptr, album))
        return false;
    album->type = kind->type;
    // Appended, where a synthetic album's replace what was there: deliberately so, for hosts
    // that rely on either.
    const QList<quint64> present = presentMembers(record->assetKeys, m_pCameraDB->assets);
    album->photoIDs += present;
    // The others leave the album for good, on this read: who takes a photo out of the library
    // does not look through the albums.
    if (present.size() != record->assetKeys.size())
        record->assetKeys = present;
    return true;
}
