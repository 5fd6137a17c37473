#include "classic/ipod_photo_manager.h"

#include "boundary/photo_records.h"
#include "host/device_database.h"
#include "host/exception_barrier.h"
#include "host/host_log.h"
#include "host/iipod.h"

#include <QFile>
#include <QFileInfo>

#include <limits>

namespace {

// What hosts show for every classic photo: the database tells no more of it.
const qint32 photoType = 3;
const qint32 uprightOrientation = 3;
const qint32 userAlbumType = 6;

// The database's keys are 32 bits wide; the upper half of a key passed in is ignored.
quint32 databaseKey(quint64 id)
{
    return static_cast<quint32>(id & 0xffffffffu);
}

void appendWidened(QList<quint64> &to, const QList<quint32> &keys)
{
    for (quint32 key : keys)
        to.append(key);
}

QList<quint64> widened(const QList<quint32> &keys)
{
    QList<quint64> wide;
    appendWidened(wide, keys);
    return wide;
}

// On a tie the first one wins.
const itdb_photo *smallestVariant(const QList<itdb_photo> &variants)
{
    const itdb_photo *best = nullptr;
    qint32 bestSize = std::numeric_limits<qint32>::max();
    for (const itdb_photo &variant : variants) {
        if (variant.size < bestSize) {
            best = &variant;
            bestSize = variant.size;
        }
    }
    return best;
}

const itdb_photo *largestVariant(const QList<itdb_photo> &variants)
{
    const itdb_photo *best = nullptr;
    qint32 bestSize = 0;
    for (const itdb_photo &variant : variants) {
        if (variant.size > bestSize) {
            best = &variant;
            bestSize = variant.size;
        }
    }
    return best;
}

} // namespace

iPodPhotoManager::iPodPhotoManager(IIPod *iPod)
    : m_pIPod(iPod), m_pPhotoDB(nullptr), m_pPhotoLib(nullptr)
{
}

iPodPhotoManager::~iPodPhotoManager() {}

bool iPodPhotoManager::parseLib()
{
    if (m_pPhotoDB) {
        releaseITunesDBInt(&m_pPhotoDB);
        m_pPhotoDB = nullptr;
    }
    m_pPhotoDB = getPhotoDBInt(m_pIPod);
    if (!m_pPhotoDB || m_pPhotoDB->parse() != 0) {
        Log("PHOTOLIB", 2, "can not parse photo db in ipod");
        releaseITunesDBInt(&m_pPhotoDB);
        m_pPhotoDB = nullptr;
        m_pPhotoLib = nullptr;
        return false;
    }
    m_pPhotoLib = m_pPhotoDB->photoLib();
    return true;
}

void iPodPhotoManager::cancleParse() {}

QString iPodPhotoManager::getUUID()
{
    return QString();
}

int iPodPhotoManager::photoCnt()
{
    return withoutThrowing(0, [&] { return m_pPhotoLib ? m_pPhotoLib->photoIDs().size() : 0; });
}

QList<quint64> iPodPhotoManager::photoIDs()
{
    if (!m_pPhotoLib)
        return QList<quint64>();
    return withoutThrowing(QList<quint64>(), [&] { return widened(m_pPhotoLib->photoIDs()); });
}

bool iPodPhotoManager::getPhoto(const quint64 &id, photoItem *item)
{
    if (!m_pPhotoLib || !item)
        return false;
    return withoutThrowing(false, [&] {
        itdb_trk track;
        const quint32 key = databaseKey(id);
        if (m_pPhotoLib->getPhoto(&key, &track) != 0)
            return false;
        item->id = id;
        item->type = photoType;
        item->path = QString::fromLatin1("thmb");
        item->thumbPath = item->path;
        item->orientation = uprightOrientation;
        item->height = 0;
        item->width = 0;
        item->duration = 0;
        item->createDate = QDateTime::fromMSecsSinceEpoch(qint64(track.timeStamp) * 1000);
        item->modifyDate = QDateTime();
        return true;
    });
}

int iPodPhotoManager::getPhotoThumbnail(const quint64 &id, QByteArray &data)
{
    return getVariant(id, smallestVariant, data);
}

int iPodPhotoManager::getSourcePhoto(const quint64 &id, QByteArray &data)
{
    return getVariant(id, largestVariant, data);
}

int iPodPhotoManager::getVariant(const quint64 &id, variant_choice choose, QByteArray &data)
{
    if (!m_pPhotoLib)
        return 0;
    return withoutThrowing(0, [&] {
        itdb_trk track;
        const quint32 key = databaseKey(id);
        if (m_pPhotoLib->getPhoto(&key, &track) != 0)
            return 0;
        if (const itdb_photo *variant = choose(track.thumbs))
            getThumb(*variant, data);
        return 0;
    });
}

void iPodPhotoManager::getThumb(const itdb_photo &entry, QByteArray &out)
{
    QString name = entry.fileName;
    name.replace(QLatin1Char(':'), QLatin1Char('/'));
    const QString path = QString::fromLatin1("%1:/Photos%2")
                             .arg(m_pIPod->driveName(), 0, QLatin1Char(' '))
                             .arg(name, 0, QLatin1Char(' '));
    // To open a pipe waits for whoever writes to it.
    if (!QFileInfo(path).isFile())
        return;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    // The entry is not to be trusted: memory is spent only on bytes that are there.
    if (entry.size < 0 || entry.size > file.size())
        return;
    QByteArray raw;
    if (entry.offset >= 0 && file.seek(entry.offset))
        raw = file.read(entry.size);
    if (raw.size() == entry.size)
        unpackiThmb(m_pIPod, raw, entry, out);
}

int iPodPhotoManager::albumCnt()
{
    return withoutThrowing(0, [&] { return m_pPhotoLib ? m_pPhotoLib->albumIDs().size() : 0; });
}

QList<quint64> iPodPhotoManager::albumIDs()
{
    if (!m_pPhotoLib)
        return QList<quint64>();
    return withoutThrowing(QList<quint64>(), [&] { return widened(m_pPhotoLib->albumIDs()); });
}

bool iPodPhotoManager::getAlbum(const quint64 &id, albumItem *item)
{
    if (!m_pPhotoLib || !item)
        return false;
    return withoutThrowing(false, [&] {
        itdb_pl album;
        const quint32 key = databaseKey(id);
        if (m_pPhotoLib->getAlbum(&key, &album) != 0)
            return false;
        item->id = id;
        item->name = album.name;
        item->type = userAlbumType;
        appendWidened(item->photoIDs, album.photoIDs);
        return true;
    });
}

// Classic iPods are read-only: edits succeed and change nothing.

int iPodPhotoManager::addPhoto2Album(photoItem *, const quint64 &)
{
    return 0;
}

int iPodPhotoManager::addPhoto2Album(photoItem *, albumItem *)
{
    return 0;
}

int iPodPhotoManager::addAlbum(albumItem *)
{
    return 0;
}

int iPodPhotoManager::rmAlbum(const quint64 &)
{
    return 0;
}

int iPodPhotoManager::updateAlbum(albumItem *)
{
    return 0;
}
