#ifndef PHOTOLIB_TESTS_IOS_REFERENCE_MERGE_H
#define PHOTOLIB_TESTS_IOS_REFERENCE_MERGE_H

#include "cameradb/camera_db.h"

#include <QByteArray>
#include <QList>
#include <QMap>

/// What a library parse has to make of a model, told as plainly as it can be: every
/// membership is a scan of the list itself. Slow, so only for small models.
class ReferenceMerge
{
public:
    explicit ReferenceMerge(const QByteArray &photoLibraryUuid)
        : m_photoLibraryUuid(photoLibraryUuid)
    {
    }

    /// Adds one more parse, which read `model`.
    void parse(const CameraDB &model)
    {
        const bool hasCameraRoll = reserveUuids(model);
        startLists(model, hasCameraRoll);
        QMap<quint64, Camera_Data *> remaining = model.assets;
        for (const Camera_Album *album : model.albums) {
            if (album->trashedState != 1)
                addAlbum(*album, cameraRollOf(model), remaining);
        }
        for (const Camera_Data *asset : remaining)
            addRemaining(*asset);
    }

    QMap<QByteArray, bool> usedUuids;
    QMap<quint64, QList<quint64>> albumPhotos;
    QList<quint64> albumIds;
    QList<QByteArray> lines; ///< the log, every line at level 1

private:
    static constexpr quint64 CameraRoll = 1000;
    static constexpr quint64 Library = 0xffffff;
    static constexpr quint64 Panorama = 0xfffffe;
    static constexpr quint64 Video = 0xfffffd;

    bool reserveUuids(const CameraDB &model)
    {
        bool hasCameraRoll = false;
        for (const Camera_Album *album : model.albums) {
            usedUuids[album->uuid] = true;
            hasCameraRoll = hasCameraRoll || album->kind == 1000;
        }
        for (const Camera_Data *asset : model.assets)
            usedUuids[asset->uuid] = true;
        for (const Camera_Data *video : model.videos)
            usedUuids[video->uuid] = true;
        usedUuids[m_photoLibraryUuid] = true;
        return hasCameraRoll;
    }

    void startLists(const CameraDB &model, bool hasCameraRoll)
    {
        if (!hasCameraRoll) {
            albumIds.append(CameraRoll);
            albumPhotos[CameraRoll] = QList<quint64>();
        }
        albumIds << Library << Panorama << Video;
        albumPhotos[Library] = QList<quint64>();
        albumPhotos[Panorama] = model.panoramas.keys();
        albumPhotos[Video] = model.videos.keys();
    }

    static const Camera_Album *cameraRollOf(const CameraDB &model)
    {
        for (const Camera_Album *album : model.albums) {
            if (album->kind == 1000)
                return album;
        }
        return nullptr;
    }

    void addAlbum(const Camera_Album &album, const Camera_Album *cameraRoll,
                  QMap<quint64, Camera_Data *> &remaining)
    {
        for (quint64 key : album.assetKeys)
            remaining.remove(key);
        if (album.kind == 1000) {
            albumIds.append(album.pk);
            return;
        }
        for (quint64 key : album.assetKeys)
            addMember(key, cameraRoll);
        if (album.kind == 1550 || album.kind == 2)
            albumIds.append(album.pk);
    }

    void addMember(quint64 key, const Camera_Album *cameraRoll)
    {
        if (cameraRoll != nullptr && cameraRoll->assetKeys.contains(key))
            return;
        if (albumPhotos[Library].contains(key))
            return;
        lines.append("To add a photo: " + decimal(key));
        albumPhotos[Library].append(key);
    }

    void addRemaining(const Camera_Data &asset)
    {
        const bool cameraPhoto = asset.directory.indexOf(QLatin1String("DCIM")) >= 0 &&
                                 albumPhotos.contains(CameraRoll) &&
                                 !albumPhotos[CameraRoll].contains(asset.pk);
        if (cameraPhoto) {
            lines.append("Add some photo not in album but as Camera roll: " + described(asset));
            albumPhotos[CameraRoll].append(asset.pk);
        } else if (!albumPhotos[Library].contains(asset.pk)) {
            lines.append("Add some photo not in album: " + described(asset));
            albumPhotos[Library].append(asset.pk);
        }
    }

    static QByteArray decimal(quint64 key) { return QByteArray::number(static_cast<qint64>(key)); }

    // The uuid's own bytes, as far as a C text reaches.
    static QByteArray described(const Camera_Data &asset)
    {
        return decimal(asset.pk) + ", uuid: " + QByteArray(asset.uuid.constData());
    }

    QByteArray m_photoLibraryUuid;
};

#endif // PHOTOLIB_TESTS_IOS_REFERENCE_MERGE_H
