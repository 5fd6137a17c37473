#include "host/classic_ipod.h"

#include "classic/device_clock.h"
#include "classic/picture_files.h"
#include "host/device_kind.h"
#include "host/exception_barrier.h"
#include "host/host_log.h"

#include <QHash>

#include <algorithm>
#include <limits>

namespace {

// Some ten times what the largest iPod's photos take; a file that is no database may be as
// large as the disk.
constexpr qint64 largestDatabase = 256 << 20;

quint32 databaseKey(quint64 id)
{
    return static_cast<quint32>(id & 0xffffffffu);
}

// Why a database cannot be read, in words.
struct Unreadable {
    QString cause;
};

// Throws Unreadable when the file is not there, not readable, or too large.
QByteArray readWhole(DeviceFileSystem &files, const QByteArray &path)
{
    FileError error;
    const std::unique_ptr<DeviceFile> file = files.open(path, &error);
    const qint64 size = file ? file->size(&error) : -1;
    if (size < 0)
        throw Unreadable{error.text};
    if (size > largestDatabase)
        throw Unreadable{QStringLiteral("a file of %1 bytes is no photo database").arg(size)};
    QByteArray bytes(static_cast<int>(size), Qt::Uninitialized);
    for (qint64 done = 0; done < size;) {
        const qint64 count = file->read(done, bytes.data() + done, size - done, &error);
        if (count < 0)
            throw Unreadable{error.text};
        if (count == 0)
            throw Unreadable{QStringLiteral("the file became shorter while it was read")};
        done += count;
    }
    return bytes;
}

ClassicLibrary readLibrary(DeviceFileSystem &files)
{
    const QByteArray bytes = readWhole(files, libraryDatabase(files, DeviceKind::Classic));
    ClassicLibrary library;
    QString error;
    if (!readPhotoDatabase(bytes, &library, &error))
        throw Unreadable{error};
    return library;
}

// The position of each record by its id.
template <class Record>
QHash<quint32, int> positionsOf(const QVector<Record> &records)
{
    QHash<quint32, int> positions;
    positions.reserve(records.size());
    for (int i = 0; i < records.size(); ++i)
        positions.insert(records[i].id, i);
    return positions;
}

template <class Record>
QList<quint32> idsOf(const QVector<Record> &records)
{
    QList<quint32> ids;
    ids.reserve(records.size());
    for (const Record &record : records)
        ids.append(record.id);
    return ids;
}

// Opens the files of the library's pictures, and takes out those that are left out.
void openPictures(PictureFiles &pictures, ClassicLibrary *library)
{
    for (ClassicPhoto &photo : library->photos) {
        QList<StoredPicture> reachable;
        for (const StoredPicture &variant : qAsConst(photo.variants)) {
            const QString name = pictures.open(variant.fileName);
            if (name.isNull())
                continue;
            reachable.append(variant);
            reachable.last().fileName = name;
        }
        photo.variants = reachable;
    }
    pictures.logLeftOut();
}

itdb_photo recordOf(const StoredPicture &picture)
{
    itdb_photo record;
    record.offset = picture.offset;
    record.size = picture.size;
    record.fileName = picture.fileName;
    record.formatId = picture.formatId;
    record.width = picture.width;
    record.height = picture.height;
    record.horizontalPadding = picture.horizontalPadding;
    record.verticalPadding = picture.verticalPadding;
    return record;
}

} // namespace

/// A photo database for the plug-in, which may call each operation and expects no exception.
class ClassicIpod::Database : public iitdb, public iphotolib
{
public:
    explicit Database(ClassicIpod &iPod) : m_iPod(iPod), m_pictures(newPictures()) {}

    int parse() override;
    iphotolib *photoLib() override { return this; }

    QList<quint32> photoIDs() override;
    QList<quint32> albumIDs() override;
    int getAlbum(const quint32 *id, itdb_pl *album) override;
    int getPhoto(const quint32 *id, itdb_trk *item) override;

    ClassicIpod &iPod() const { return m_iPod; }
    DevicePaths &paths() { return m_pictures->paths(); }

    const ClassicPhoto *find(quint32 id) const
    {
        const int position = m_photos.value(id, -1);
        return position < 0 ? nullptr : &m_library.photos[position];
    }

private:
    std::unique_ptr<PictureFiles> newPictures() const
    {
        return std::make_unique<PictureFiles>(m_iPod.m_files, m_iPod.m_drive);
    }

    ClassicIpod &m_iPod;
    std::unique_ptr<PictureFiles> m_pictures;
    ClassicLibrary m_library;
    QHash<quint32, int> m_photos;
    QHash<quint32, int> m_albums;
};

int ClassicIpod::Database::parse()
{
    constexpr int failed = -1;
    return withoutThrowing(failed, [this] {
        try {
            ClassicLibrary library = readLibrary(m_iPod.m_files);
            std::unique_ptr<PictureFiles> pictures = newPictures();
            openPictures(*pictures, &library);
            m_photos = positionsOf(library.photos);
            m_albums = positionsOf(library.albums);
            m_library = std::move(library);
            m_pictures = std::move(pictures);
            return 0;
        } catch (const Unreadable &failure) {
            Log("PHOTOLIB-HOST", 2, "%s", failure.cause.toUtf8().constData());
            return failed;
        }
    });
}

QList<quint32> ClassicIpod::Database::photoIDs()
{
    return withoutThrowing(QList<quint32>(), [this] { return idsOf(m_library.photos); });
}

QList<quint32> ClassicIpod::Database::albumIDs()
{
    return withoutThrowing(QList<quint32>(), [this] { return idsOf(m_library.albums); });
}

int ClassicIpod::Database::getAlbum(const quint32 *id, itdb_pl *album)
{
    const int position = m_albums.value(*id, -1);
    if (position < 0)
        return -1;
    const ClassicAlbum &found = m_library.albums[position];
    album->name = found.name;
    album->photoIDs = found.photoIDs;
    return 0;
}

int ClassicIpod::Database::getPhoto(const quint32 *id, itdb_trk *item)
{
    const ClassicPhoto *const found = find(*id);
    if (!found)
        return -1;
    return withoutThrowing(-1, [&] {
        item->timeStamp = clockSecondsSince1970(found->taken);
        item->thumbs.clear();
        for (const StoredPicture &variant : found->variants) {
            item->thumbs.append(recordOf(variant));
            item->thumbs.last().fileName = m_pictures->nameOnDrive(variant.fileName);
        }
        return 0;
    });
}

ClassicIpod::ClassicIpod(DeviceFileSystem &files) : m_files(files) {}

ClassicIpod::~ClassicIpod() {}

iitdb *ClassicIpod::newDatabase()
{
    m_databases.push_back(std::make_unique<Database>(*this));
    return m_databases.back().get();
}

void ClassicIpod::release(iitdb *database)
{
    if (!database)
        return;
    auto &databases = static_cast<Database *>(database)->iPod().m_databases;
    const auto isReleased = [database](const auto &each) { return each.get() == database; };
    databases.erase(std::remove_if(databases.begin(), databases.end(), isReleased),
                    databases.end());
}

const ClassicPhoto *ClassicIpod::photo(quint64 id) const
{
    return m_databases.empty() ? nullptr : m_databases.back()->find(databaseKey(id));
}

QByteArray ClassicIpod::originalPath(const ClassicPhoto &photo) const
{
    if (photo.originalName.isEmpty() || m_databases.empty())
        return QByteArray();
    return m_databases.back()->paths().path(photo.originalName);
}
