#include "boundary/photo_records.h"
#include "host/exception_barrier.h"
#include "host/host_log.h"
#include "ios/key_lists.h"
#include "ios/photo_manager.h"
#include "ios/synthetic_albums.h"

#include <QMutexLocker>

#include <memory>

namespace {

const quint64 noKey = 0;                             // of a photo or album that is new
const quint64 failureKey = ~static_cast<quint64>(0); // what a result of -1 looks like

quint64 widened(qint32 key)
{
    return static_cast<quint64>(static_cast<qint64>(key));
}

// The key behind `last`, but none that `isTaken`; behind the largest key the lowest one. A
// device may have any keys.
template <class IsTaken>
qint32 nextKey(qint32 last, const IsTaken &isTaken)
{
    quint32 key = static_cast<quint32>(last);
    do
        ++key;
    while (isTaken(widened(static_cast<qint32>(key))));
    return static_cast<qint32>(key);
}

qint32 secondsBetween(const QDateTime &from, const QDateTime &to)
{
    return static_cast<qint32>(from.secsTo(to));
}

std::unique_ptr<Camera_Data> assetFor(const photoItem &photo, CameraDB *model,
                                      const QDateTime &reference)
{
    std::unique_ptr<Camera_Data> asset(new Camera_Data());
    asset->db = model;
    asset->pk = photo.id;
    // The host's code, not the database's: getPhoto shows every code but 1 as a photo.
    asset->kind = photo.type;
    asset->name = photo.name;
    asset->uuid = photo.uuid;
    asset->createDate = secondsBetween(reference, photo.createDate);
    asset->width = photo.width;
    asset->height = photo.height;
    asset->thumbnailIndex = -1;
    asset->orientation = photo.orientation;
    asset->fileName = photo.path;
    asset->modificationDate = secondsBetween(reference, photo.modifyDate);
    asset->originalFileSize = static_cast<qint64>(photo.fileSize);
    return asset;
}

std::unique_ptr<Camera_Album> recordFor(const albumItem &album)
{
    std::unique_ptr<Camera_Album> record(new Camera_Album());
    record->pk = album.id;
    record->kind = customAlbumKind;
    record->title = album.name;
    record->uuid = album.uuid;
    record->assetKeys = album.photoIDs;
    return record;
}

// The map owns its records, which the other two only point to.
void freeAsset(CameraDB *model, quint64 key)
{
    model->videos.remove(key);
    model->panoramas.remove(key);
    delete model->assets.take(key);
}

} // namespace

int photo_manager::addPhoto2Album(photoItem *photo, albumItem *album)
{
    const QMutexLocker locker(&m_recMutex);
    if (!album || album->id == 0)
        return -1;
    return withoutThrowing(-1, [&] {
        if (addPhoto2Album(photo, album->id) != 0)
            return -1;
        album->photoIDs.append(photo->id);
        return 0;
    });
}

int photo_manager::addPhoto2Album(photoItem *photo, const quint64 &albumKey)
{
    const QMutexLocker locker(&m_recMutex);
    // A copy: the reference may be to the photo's own id, which changes.
    const quint64 key = albumKey;
    if (!m_pCameraDB || !photo) {
        Log("PHOTOLIB", 2, "no photolib or photo");
        return -1;
    }
    return withoutThrowing(-1, [&] {
        if (photo->id == 0)
            addToLibrary(photo);
        if (!m_listAlbumIDs.contains(key))
            return 0;
        if (Camera_Album *record = m_pCameraDB->albums.value(key))
            record->assetKeys.append(photo->id);
        m_mapAlbum2Photos[photoLibraryKey].append(photo->id);
        return 0;
    });
}

// Either all of it or, when memory runs out, nothing but a key and a uuid that stay unused.
void photo_manager::addToLibrary(photoItem *photo)
{
    const QMap<quint64, Camera_Data *> &assets = m_pCameraDB->assets;
    m_pCameraDB->maxAssetPk = nextKey(m_pCameraDB->maxAssetPk, [&assets](quint64 key) {
        return key == noKey || assets.contains(key);
    });
    photoItem added = *photo;
    added.id = widened(m_pCameraDB->maxAssetPk);
    added.uuid = makeNewUID();
    std::unique_ptr<Camera_Data> asset = assetFor(added, m_pCameraDB, m_refDate);
    m_pCameraDB->assets.insert(added.id, asset.get());
    static_cast<void>(asset.release()); // the model's now
    photo->id = added.id;
    photo->uuid = added.uuid;
}

int photo_manager::addAlbum(albumItem *album)
{
    const QMutexLocker locker(&m_recMutex);
    if (!m_pCameraDB || !album) {
        Log("PHOTOLIB", 2, "no photolib or album");
        return -1;
    }
    return withoutThrowing(-1, [&] {
        m_pCameraDB->maxAlbumPk = nextAlbumKey();
        albumItem added = *album;
        added.id = widened(m_pCameraDB->maxAlbumPk);
        added.uuid = makeNewUID();
        std::unique_ptr<Camera_Album> record = recordFor(added);
        m_pCameraDB->albums.insert(added.id, record.get());
        static_cast<void>(record.release()); // the model's now
        m_listAlbumIDs.append(added.id);
        album->id = added.id;
        album->uuid = added.uuid;
        album->type = 6;
        return static_cast<int>(m_pCameraDB->maxAlbumPk);
    });
}

// Not the key of a synthetic album, which would be shown in its place, and not the one that
// callers take for a failure.
qint32 photo_manager::nextAlbumKey() const
{
    const QMap<quint64, Camera_Album *> &albums = m_pCameraDB->albums;
    const QMap<quint64, QList<quint64>> &synthetic = m_mapAlbum2Photos;
    return nextKey(m_pCameraDB->maxAlbumPk, [&albums, &synthetic](quint64 key) {
        return key == noKey || key == failureKey || albums.contains(key) || synthetic.contains(key);
    });
}

int photo_manager::updateAlbum(albumItem *album)
{
    const QMutexLocker locker(&m_recMutex);
    if (!album || !m_pCameraDB) {
        // The low half of the key: the line's number has 32 bits.
        Log("PHOTOLIB", 2, "can not get the album: %d", album ? static_cast<int>(album->id) : 0);
        return -1;
    }
    return withoutThrowing(-1, [&] {
        if (album->id == photoLibraryKey)
            keepInLibrary(album->photoIDs);
        else if (m_listAlbumIDs.contains(album->id))
            updateDeviceAlbum(*album);
        return 0;
    });
}

// The albums go on listing the photos that leave: device albums drop them when they are
// next fetched.
void photo_manager::keepInLibrary(const QList<quint64> &photos)
{
    const QMap<quint64, QList<quint64>>::iterator members = m_mapAlbum2Photos.find(photoLibraryKey);
    if (members == m_mapAlbum2Photos.end())
        return;
    const key_set wanted(photos);
    const QList<quint64> before = members.value();
    members.value() = keysAmong(before, wanted);
    for (const quint64 key : before) {
        if (!wanted.contains(key))
            freeAsset(m_pCameraDB, key);
    }
}

void photo_manager::updateDeviceAlbum(const albumItem &album)
{
    // The synthetic albums have no record to update.
    Camera_Album *record = m_pCameraDB->albums.value(album.id);
    if (!record)
        return;
    record->title = album.name;
    record->assetKeys = keysAmong(record->assetKeys, key_set(album.photoIDs));
}

int photo_manager::rmAlbum(const quint64 &albumKey)
{
    const QMutexLocker locker(&m_recMutex);
    if (!m_pCameraDB)
        return -1;
    if (albumKey == photoLibraryKey) {
        Log("PHOTOLIB", 2, "You can not remove the photo library");
        return -1;
    }
    // Hidden only: the record stays, and with it the key and the uuid, which are not given
    // out again.
    return withoutThrowing(-1, [&] {
        m_listAlbumIDs.removeAll(albumKey);
        return 0;
    });
}
