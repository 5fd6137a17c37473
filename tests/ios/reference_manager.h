#ifndef PHOTOLIB_TESTS_IOS_REFERENCE_MANAGER_H
#define PHOTOLIB_TESTS_IOS_REFERENCE_MANAGER_H

#include "boundary/photo_records.h"
#include "cameradb/camera_db_parse.h"
#include "host/device_files.h"
#include "host/host_log.h"
#include "host/iipod.h"
#include "ios/photo_manager.h"
#include "ios/thumbnail_fixture.h"
#include "support/live_heap.h"

#include <QDir>
#include <QFile>

#include <plist/plist.h>

#include <memory>

/// The operations that ask the host for something, told call by call and as plainly as they
/// can be, to see what a manager has to make of a host whose calls fail. What happens
/// between the calls (the reading of the copy, the merge, the albums and their edits) is the
/// manager's own.
class ReferenceManager : public photo_manager
{
public:
    explicit ReferenceManager(IIPod *iPod) : photo_manager(iPod), m_device(*iPod) {}

    ~ReferenceManager()
    {
        if (m_pVDev != nullptr)
            vDevClose(m_pVDev);
        m_pVDev = nullptr;
        m_pThmbFile = nullptr; // stays open
    }

    /// Bytes of the records that failed parses had read; they belong to nobody.
    std::size_t recordBytes = 0;

    bool parseLib()
    {
        m_pCameraDB = readModel();
        if (m_pCameraDB == nullptr || m_device.isAccessBlocked()) {
            Log("PHOTOLIB", 2, "Can not parse photo lib");
            return false;
        }
        mergeLibrary();
        if (m_pVDev == nullptr)
            m_pVDev = vDevOpen(VDevDevice, m_device.devicePath().toLocal8Bit().constData());
        if (m_pVDev != nullptr)
            readUuid();
        return true;
    }

    bool getPhoto(const quint64 &id, photoItem *item)
    {
        if (item == nullptr || m_pCameraDB == nullptr || !m_pCameraDB->assets.contains(id)) {
            Log("PHOTOLIB", 2, "Can not get photo");
            return false;
        }
        Camera_Data &asset = *m_pCameraDB->assets[id];
        describe(asset, id, item);
        const QByteArray path = item->path.toUtf8();
        if (m_pVDev != nullptr && vDevFileSize(m_pVDev, path.constData()) <= 0 &&
            !QFile::exists(item->path))
            return false;
        item->thumbPath = QStringLiteral("");
        if (item->type == 2)
            item->thumbPath = QString("PhotoData/Metadata/" + item->path).replace("MOV", "JPG");
        if (asset.originalFileSize == 0 && m_pVDev != nullptr)
            asset.originalFileSize = vDevFileSize(m_pVDev, path.constData());
        item->fileSize = static_cast<quint64>(asset.originalFileSize);
        const QDateTime start(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);
        item->createDate = start.addSecs(asset.createDate);
        item->modifyDate = start.addSecs(asset.modificationDate);
        item->trashedDate = asset.trashedDate;
        item->avalancheUUID = asset.avalancheUUID;
        item->sortToken = asset.sortToken;
        return true;
    }

    int getPhotoThumbnail(const quint64 &id, QByteArray &out)
    {
        if (m_pCameraDB == nullptr || !m_pCameraDB->assets.contains(id))
            return 0;
        const Camera_Data &asset = *m_pCameraDB->assets[id];
        if (readReady(asset, out))
            return 0;
        if (asset.thumbnailIndex < 0) {
            Log("PHOTOLIB", 1, "This is a newly added photo?");
            return -1;
        }
        return readPacked(asset.thumbnailIndex, out);
    }

private:
    // Reads what the work folder holds, as if no device were there to copy from.
    class NoDevice : public IIPod
    {
    public:
        explicit NoDevice(const QString &folder) : m_folder(folder) {}
        bool isAccessBlocked() override { return true; }
        QString devicePath() override { return {}; }
        QString driveName() override { return {}; }
        bool isIOSDevice() override { return true; }
        QString localDataPath() override { return m_folder; }

    private:
        QString m_folder;
    };

    CameraDB *readModel()
    {
        Log("PHOTOLIB", 1, "load ATHCameraDB");
        QString folder = m_device.localDataPath();
        if (folder.isEmpty())
            folder = QDir::tempPath() + "/";
        CameraDB *model = nullptr;
        if (copy("", folder) == 0) {
            copy("-wal", folder);
            copy("-shm", folder);
            model = readCopy(folder);
        }
        Log("PHOTOLIB", model != nullptr ? 1 : 2,
            model != nullptr ? "load ATHCameraDB end" : "Can not load lib");
        return model;
    }

    CameraDB *readCopy(const QString &folder)
    {
        NoDevice nothing(folder);
        auto *model = new CameraDB();
        if (parseCameraDB(&nothing, model) == 1) {
            model->device = m_pIPod;
            return model;
        }
        const std::size_t before = liveHeapBytes();
        qDeleteAll(model->albums);
        qDeleteAll(model->assets);
        recordBytes += before - liveHeapBytes();
        delete model;
        return nullptr;
    }

    int copy(const char *suffix, const QString &folder)
    {
        if (m_device.isAccessBlocked())
            return 0;
        const QByteArray source = QByteArray("/PhotoData/Photos.sqlite") + suffix;
        const QByteArray target = folder.toUtf8() + "Photos.sqlite" + suffix;
        VDev *const device = vDevOpen(VDevDevice, m_device.devicePath().toUtf8().constData());
        if (device == nullptr)
            return fail("Can not open device");
        VFile *const from = vFileOpen(device, source.constData(), 0);
        if (from == nullptr)
            return fail("Can not open file: " + source);
        VDev *const disk = vDevOpen(VDevHost, "");
        if (disk == nullptr)
            return fail("Can not open folder: " + target);
        vDevCreateDir(disk, target.left(target.lastIndexOf('/')).constData());
        VFile *const to = vFileOpen(disk, target.constData(), 1);
        if (to == nullptr)
            return fail("Can not open file: " + target);
        copyBlocks(from, to);
        vFileClose(from);
        vDevClose(device);
        vFileClose(to);
        vDevClose(disk);
        return 0;
    }

    static int fail(const QByteArray &line)
    {
        Log("PHOTOLIB", 2, "%s", line.constData());
        return -1;
    }

    static void copyBlocks(VFile *from, VFile *to)
    {
        const int size = 4194304;
        static const std::unique_ptr<char[]> block(new char[size]);
        int count = 0;
        int written = 0;
        do {
            count = vFileRead(from, block.get(), size);
            if (count <= 0 || count > size) // more than fits is no count
                return;
            written = vFileWrite(to, block.get(), count);
        } while (written == count);
    }

    void readUuid()
    {
        VFile *const file = vFileOpen(m_pVDev, "/Photos/Sync/CurrentLibraryUUID.plist", 0);
        if (file == nullptr)
            return;
        QByteArray xml;
        QByteArray piece(1024, '\0');
        int count = 0;
        while ((count = vFileRead(file, piece.data(), 1024)) >= 1 && count <= 1024)
            xml.append(piece.constData(), count);
        vFileClose(file);
        plist_t list = nullptr;
        plist_from_xml(xml.constData(), static_cast<uint32_t>(xml.size()), &list);
        const plist_t item = list != nullptr ? plist_dict_get_item(list, "libraryUUID") : nullptr;
        char *value = nullptr;
        if (item != nullptr)
            plist_get_string_val(item, &value);
        if (value != nullptr)
            m_libraryUUID = value; // and the text stays with nobody
        plist_free(list);
    }

    static void describe(const Camera_Data &asset, quint64 id, photoItem *item)
    {
        item->name = asset.name;
        item->id = id;
        item->uuid = asset.uuid;
        item->height = asset.height;
        item->width = asset.width;
        item->orientation = asset.orientation;
        item->duration = asset.duration;
        item->type = asset.kind == 1 ? 2 : 3;
        item->path = asset.fileName;
        if (!asset.directory.isEmpty())
            item->path = asset.directory + "/" + asset.fileName;
    }

    bool readReady(const Camera_Data &asset, QByteArray &out)
    {
        const QString folder = "/PhotoData/Thumbnails/V2/" + asset.directory + "/" + asset.fileName;
        for (const char *name : {"/5005.JPG", "/5003.JPG", "/3507.JPG", "/3505.JPG"}) {
            const QByteArray path = folder.toUtf8() + name;
            VFile *const file = m_pVDev ? vFileOpen(m_pVDev, path.constData(), 0) : nullptr;
            if (file == nullptr)
                continue;
            const bool isWhole = readWhole(file, out);
            vFileClose(file);
            if (isWhole)
                return true;
        }
        return false;
    }

    static bool readWhole(VFile *file, QByteArray &out)
    {
        vFileSeek(file, 0, 2);
        const qint64 size = vFileTell(file);
        // No byte array holds as many, so they are not even asked for.
        if (size < 0 || size > 0x7fffffff - 1024)
            return false;
        QByteArray content(static_cast<int>(size), '\0');
        vFileSeek(file, 0, 0);
        if (vFileRead(file, content.data(), content.size()) != size)
            return false;
        out = content;
        return true;
    }

    int readPacked(int index, QByteArray &out)
    {
        for (const thumbnail::Format &format : thumbnail::formats()) {
            if (m_pThmbFile != nullptr || m_pVDev == nullptr)
                break;
            m_pThmbFile = vFileOpen(m_pVDev, format.path.constData(), 0);
            m_thmbType = format.type;
        }
        if (m_pThmbFile == nullptr)
            return fail("Can not decide teh iThmb file");
        const qint64 offset = qint64(m_thmbType.dataSize + 28) * index;
        if (vFileSeek(m_pThmbFile, offset, 0) != offset)
            return fail("Can seek to offset " + QByteArray::number(offset) +
                        " while getting ithmb");
        QByteArray pixels(m_thmbType.dataSize, '\0');
        if (vFileRead(m_pThmbFile, pixels.data(), pixels.size()) != pixels.size())
            return fail("Can not read ithmb data");
        QByteArray info(28, '\0');
        if (vFileRead(m_pThmbFile, info.data(), 28) != 28)
            return fail("Can not read ithmb info");
        return appendPicture(pixels, info, out);
    }

    int appendPicture(const QByteArray &pixels, const QByteArray &info, QByteArray &out)
    {
        const thumbnail::Extent extent = {number(info, 16), number(info, 20)};
        if (extent.width < 0 || extent.width > m_thmbType.width ||
            extent.height > m_thmbType.height)
            return fail("Can not read ithmb info"); // lies outside its frame
        out += thumbnail::imageHeaders(extent);
        out += thumbnail::imageRows(pixels, m_thmbType, extent);
        return 0;
    }

    static qint32 number(const QByteArray &info, int at)
    {
        quint32 value = 0;
        for (int i = 3; i >= 0; --i)
            value = value * 256 + static_cast<unsigned char>(info.at(at + i));
        return static_cast<qint32>(value);
    }

    IIPod &m_device;
};

#endif // PHOTOLIB_TESTS_IOS_REFERENCE_MANAGER_H
