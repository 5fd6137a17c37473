// A classic iPod through the photo library that the plug-in makes of it, over the program's own
// reader and unpacker.
//
// An input is a photo database; or, behind "pictures", the length of one in 32 bits, the database,
// and the bytes of a file that it may name; or else a stored picture: its format, width, height
// and paddings (16 bits each) and its bytes.

#include "base/log_output.h"
#include "boundary/photo_records.h"
#include "classic/ipod_photo_manager.h"
#include "classic/pixel_formats.h"
#include "devices/local_file.h"
#include "devices/memory_file.h"
#include "fuzz/fuzz_input.h"
#include "host/classic_ipod.h"
#include "host/device.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <fcntl.h>

namespace {

// What the device's file of pictures holds that is always there.
constexpr int pictureBytes = 1 << 20;

constexpr const char *picturesMark = "pictures";

// A device whose photo database is in memory, and whose pictures are in a folder.
class BytesDevice : public DeviceFileSystem
{
public:
    explicit BytesDevice(QByteArray database) : m_database(std::move(database)) {}

    std::unique_ptr<DeviceFile> open(const QByteArray &, FileError *) override
    {
        return std::make_unique<MemoryFile>(m_database);
    }

    bool info(const QByteArray &, FileInfo *info, FileError *) override
    {
        info->type = FileInfo::File;
        return true;
    }

    bool list(const QByteArray &, QList<QByteArray> *names, FileError *) override
    {
        names->clear();
        return true;
    }

    DeviceState state() override { return DeviceState::Ready; }
    void close() override {}
    QByteArray id() const override { return "fuzz"; }
    QByteArray name() const override { return "fuzz"; }

    UniqueFd openLocal(const QByteArray &path, FileError *error) override
    {
        const QByteArray below = path.mid(path.indexOf('/', 1));
        const QByteArray file = QFile::encodeName(photosFolder()) + below;
        return regularFile(UniqueFd(::open(file.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)),
                           error);
    }

    QByteArray displayName(const QByteArray &path) const override { return path; }

    static void setPictures(const QByteArray &pictures)
    {
        QFile file(photosFolder() + QStringLiteral("/Thumbs/F1019_2.ithmb"));
        if (!file.open(QIODevice::WriteOnly) || file.write(pictures) != pictures.size())
            std::abort();
    }

private:
    static QString photosFolder()
    {
        static const QTemporaryDir folder;
        static const bool isFilled = [] {
            QDir(folder.path()).mkdir(QStringLiteral("Thumbs"));
            QFile file(folder.path() + QStringLiteral("/Thumbs/F1019_1.ithmb"));
            return file.open(QIODevice::WriteOnly) &&
                   file.write(QByteArray(pictureBytes, '\x55')) == pictureBytes;
        }();
        if (!isFilled)
            std::abort();
        return folder.path();
    }

    const QByteArray m_database;
};

void useLibrary(photo_manager_int &library)
{
    constexpr int most = 50; // more of the same kind shows nothing new
    QByteArray bytes;
    for (const quint64 id : library.photoIDs().mid(0, most)) {
        photoItem photo;
        library.getPhoto(id, &photo);
        library.getPhotoThumbnail(id, bytes);
        library.getSourcePhoto(id, bytes);
    }
    for (const quint64 id : library.albumIDs().mid(0, most)) {
        albumItem album;
        library.getAlbum(id, &album);
    }
}

void readDatabase(const QByteArray &database)
{
    Device device(std::make_shared<BytesDevice>(database), DeviceKind::Classic, QString());
    iPodPhotoManager library(&device);
    if (!library.parseLib())
        return;
    useLibrary(library);
    for (const quint64 id : library.photoIDs())
        device.classicIpod()->originalPath(*device.classicIpod()->photo(id));
}

void readDatabaseAndPictures(FuzzInput input)
{
    const quint32 length = input.u32();
    const QByteArray files = input.rest();
    const QByteArray database = files.left(static_cast<int>(qMin<quint32>(length, 1U << 30)));
    BytesDevice::setPictures(files.mid(database.size()));
    readDatabase(database);
}

void unpack(FuzzInput &input)
{
    itdb_photo photo;
    photo.formatId = input.u16();
    photo.width = static_cast<qint16>(input.u16());
    photo.height = static_cast<qint16>(input.u16());
    photo.horizontalPadding = static_cast<qint16>(input.u16());
    photo.verticalPadding = static_cast<qint16>(input.u16());
    QByteArray raw = input.rest();
    photo.size = raw.size();
    QByteArray out;
    unpackiThmb(nullptr, raw, photo, out);
    // Few inputs have as many bytes as their format.
    const PixelFormat *const format = findPixelFormat(photo.formatId);
    if (!format)
        return;
    QByteArray filled = raw.leftJustified(format->pixelBytes(), '\x2a', true);
    photo.size = filled.size();
    unpackiThmb(nullptr, filled, photo, out);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    setLogDetail(LogDetail::Nothing);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    FuzzInput whole(data, size);
    const QByteArray bytes = whole.rest();
    if (bytes.startsWith("mhfd") || bytes.startsWith("dfhm"))
        readDatabase(bytes);
    else if (bytes.startsWith(picturesMark))
        readDatabaseAndPictures(
            FuzzInput(data + qstrlen(picturesMark), size - qstrlen(picturesMark)));
    else
        unpack(input);
    return 0;
}
