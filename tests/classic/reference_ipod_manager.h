#ifndef PHOTOLIB_TESTS_CLASSIC_REFERENCE_IPOD_MANAGER_H
#define PHOTOLIB_TESTS_CLASSIC_REFERENCE_IPOD_MANAGER_H

#include "boundary/photo_manager_int.h"
#include "boundary/photo_records.h"
#include "host/device_database.h"
#include "host/host_log.h"
#include "host/iipod.h"

#include <QFile>

/// What a manager of a classic iPod has to make of its host, told as plainly as it can be.
class ReferenceIPodManager : public photo_manager_int
{
public:
    explicit ReferenceIPodManager(IIPod *iPod) : m_device(iPod) {}

    bool parseLib() override
    {
        if (m_database != nullptr)
            releaseITunesDBInt(&m_database);
        m_library = nullptr;
        m_database = getPhotoDBInt(m_device);
        if (m_database != nullptr && m_database->parse() == 0) {
            m_library = m_database->photoLib();
            return true;
        }
        Log("PHOTOLIB", 2, "can not parse photo db in ipod");
        releaseITunesDBInt(&m_database);
        m_database = nullptr;
        return false;
    }

    void cancleParse() override {}
    QString getUUID() override { return {}; }
    int photoCnt() override { return m_library != nullptr ? m_library->photoIDs().size() : 0; }
    QList<quint64> photoIDs() override
    {
        return m_library != nullptr ? wide(m_library->photoIDs()) : QList<quint64>();
    }
    int albumCnt() override { return m_library != nullptr ? m_library->albumIDs().size() : 0; }
    QList<quint64> albumIDs() override
    {
        return m_library != nullptr ? wide(m_library->albumIDs()) : QList<quint64>();
    }

    bool getPhoto(const quint64 &id, photoItem *item) override
    {
        itdb_trk track;
        if (!find(id, &track))
            return false;
        item->id = id;
        item->type = 3;
        item->path = QStringLiteral("thmb");
        item->thumbPath = QStringLiteral("thmb");
        item->orientation = 3;
        item->height = item->width = item->duration = 0;
        item->createDate = QDateTime::fromSecsSinceEpoch(track.timeStamp);
        item->modifyDate = QDateTime();
        return true;
    }

    int getPhotoThumbnail(const quint64 &id, QByteArray &data) override
    {
        itdb_trk track;
        if (!find(id, &track) || track.thumbs.isEmpty())
            return 0;
        itdb_photo best = track.thumbs.first();
        for (const itdb_photo &variant : track.thumbs) {
            if (variant.size < best.size)
                best = variant;
        }
        return unpack(best, data);
    }

    int getSourcePhoto(const quint64 &id, QByteArray &data) override
    {
        itdb_trk track;
        if (!find(id, &track) || track.thumbs.isEmpty())
            return 0;
        itdb_photo best = track.thumbs.first();
        for (const itdb_photo &variant : track.thumbs) {
            if (variant.size > best.size)
                best = variant;
        }
        return unpack(best, data);
    }

    bool getAlbum(const quint64 &id, albumItem *item) override
    {
        itdb_pl album;
        const auto key = static_cast<quint32>(id);
        if (m_library == nullptr || m_library->getAlbum(&key, &album) != 0)
            return false;
        item->id = id;
        item->name = album.name;
        item->type = 6;
        item->photoIDs += wide(album.photoIDs);
        return true;
    }

    int addPhoto2Album(photoItem *, const quint64 &) override { return 0; }
    int addPhoto2Album(photoItem *, albumItem *) override { return 0; }
    int addAlbum(albumItem *) override { return 0; }
    int rmAlbum(const quint64 &) override { return 0; }
    int updateAlbum(albumItem *) override { return 0; }

private:
    static QList<quint64> wide(const QList<quint32> &keys)
    {
        QList<quint64> all;
        for (const quint32 key : keys)
            all.append(key);
        return all;
    }

    bool find(quint64 id, itdb_trk *track)
    {
        const auto key = static_cast<quint32>(id);
        return m_library != nullptr && m_library->getPhoto(&key, track) == 0;
    }

    int unpack(const itdb_photo &variant, QByteArray &data)
    {
        const QString path =
            m_device->driveName() + ":/Photos" + QString(variant.fileName).replace(":", "/");
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly) || !file.seek(variant.offset))
            return 0;
        QByteArray raw = file.read(variant.size);
        if (raw.size() == variant.size)
            unpackiThmb(m_device, raw, variant, data);
        return 0;
    }

    IIPod *m_device;
    iitdb *m_database = nullptr;
    iphotolib *m_library = nullptr;
};

#endif // PHOTOLIB_TESTS_CLASSIC_REFERENCE_IPOD_MANAGER_H
