#include "boundary/photo_records.h"
#include "host/device_files.h"
#include "host/exception_barrier.h"
#include "host/host_log.h"
#include "ios/photo_manager.h"

#include <QFile>
#include <QMutexLocker>

namespace {

const qint32 videoType = 2;
const qint32 photoType = 3;

QString devicePath(const Camera_Data &asset)
{
    if (asset.directory.isEmpty())
        return asset.fileName;
    return asset.directory + QLatin1Char('/') + asset.fileName;
}

// The still that stands for a video. Relative, unlike other thumbnail paths: hosts join
// it to the device's media root like `photoItem::path`.
QString posterPath(const QString &path)
{
    QString poster = QString::fromLatin1("PhotoData/Metadata/%1").arg(path);
    return poster.replace(QLatin1String("MOV"), QLatin1String("JPG"));
}

void describe(const Camera_Data &asset, quint64 id, photoItem *item)
{
    item->name = asset.name;
    item->id = id;
    item->uuid = asset.uuid;
    item->height = asset.height;
    item->width = asset.width;
    item->orientation = asset.orientation;
    item->duration = asset.duration;
    item->type = asset.kind == 1 ? videoType : photoType;
    item->path = devicePath(asset);
}

// Photos added in memory have a path of the host computer. Without a device there is
// nothing to ask, and the file counts as present.
bool isPresent(VDev *device, const QString &path)
{
    return !device || vDevFileSize(device, path.toUtf8().constData()) > 0 || QFile::exists(path);
}

// Measured once: the size is kept in the record, unless the device says 0.
quint64 fileSize(VDev *device, const QString &path, Camera_Data *asset)
{
    if (asset->originalFileSize == 0 && device)
        asset->originalFileSize = vDevFileSize(device, path.toUtf8().constData());
    return static_cast<quint64>(asset->originalFileSize);
}

} // namespace

QString photo_manager::getUUID()
{
    if (!m_pCameraDB)
        return QString();
    const QByteArray &uuid = m_libraryUUID.isEmpty() ? m_pCameraDB->uuid : m_libraryUUID;
    return withoutThrowing(QString(), [&] { return QString::fromLatin1(uuid.constData()); });
}

int photo_manager::photoCnt()
{
    return m_pCameraDB ? m_pCameraDB->assets.size() : 0;
}

QList<quint64> photo_manager::photoIDs()
{
    if (!m_pCameraDB)
        return QList<quint64>();
    return withoutThrowing(QList<quint64>(), [&] { return m_pCameraDB->assets.keys(); });
}

bool photo_manager::getPhoto(const quint64 &id, photoItem *item)
{
    const QMutexLocker locker(&m_recMutex);
    Camera_Data *asset = m_pCameraDB && item ? m_pCameraDB->assets.value(id) : nullptr;
    if (!asset) {
        Log("PHOTOLIB", 2, "Can not get photo");
        return false;
    }
    return withoutThrowing(false, [&] {
        describe(*asset, id, item);
        if (!isPresent(m_pVDev, item->path))
            return false;
        item->thumbPath =
            item->type == videoType ? posterPath(item->path) : QString::fromLatin1("");
        item->fileSize = fileSize(m_pVDev, item->path, asset);
        item->createDate = m_refDate.addSecs(asset->createDate);
        item->modifyDate = m_refDate.addSecs(asset->modificationDate);
        item->trashedDate = asset->trashedDate;
        item->avalancheUUID = asset->avalancheUUID;
        item->sortToken = asset->sortToken;
        return true;
    });
}
