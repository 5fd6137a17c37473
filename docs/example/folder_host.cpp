// Lists the photos and albums of a folder that is laid out like an iOS device's media root, and
// saves a thumbnail: the least that a host has to do, in one file.
#include <boundary/photo_manager_int.h>
#include <boundary/photo_records.h>
#include <host/device_database.h>
#include <host/device_files.h>
#include <host/host_log.h>
#include <host/iipod.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLibrary>
#include <QTemporaryDir>

#include <cctype>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <map>
#include <memory>

// --- The device file layer

struct VFile {
    QFile file;
    VDev *dev;
};

// There are two file systems for the whole run, so one that the plug-in does not close is no
// leak. The files that it leaves open are closed with them.
struct VDev {
    QString root; // canonical; empty for the host computer
    std::map<VFile *, std::unique_ptr<VFile>> openFiles;
};

static VDev hostDisk;
static VDev deviceFolder;
static const char deviceName[] = "folder-1";

// The file that `path` names, or an empty text. A path may come from the device's database, so it
// must not lead out of the folder, by ".." or by a link.
static QString findFile(const VDev *dev, const char *path)
{
    const QString name = QString::fromUtf8(path);
    if (dev == &hostDisk)
        return name;
    // The second form is for names beyond ASCII, which the plug-in reads as Latin-1 up to iOS 13.
    for (const QString &form : {name, QString::fromUtf8(name.toLatin1())}) {
        const QString file = QFileInfo(dev->root + '/' + form).canonicalFilePath();
        if (file.startsWith(dev->root + '/') && QFileInfo(file).isFile())
            return file;
    }
    return QString();
}

VDev *vDevOpen(VDevType type, const char *path)
{
    if (type == VDevHost)
        return &hostDisk;
    return qstrcmp(path, deviceName) == 0 ? &deviceFolder : nullptr;
}

void vDevClose(VDev *) {}

bool vDevCreateDir(VDev *dev, const char *path)
{
    return dev == &hostDisk && QDir().mkpath(QString::fromUtf8(path));
}

qint64 vDevFileSize(VDev *dev, const char *path)
{
    const QString name = findFile(dev, path);
    return name.isEmpty() ? 0 : QFileInfo(name).size();
}

VFile *vFileOpen(VDev *dev, const char *path, int mode)
{
    const QString name = findFile(dev, path);
    if (name.isEmpty() || (mode == 1 && dev != &hostDisk)) // the device is only read
        return nullptr;
    const QIODevice::OpenMode open =
        mode == 0 ? QIODevice::ReadOnly : QIODevice::WriteOnly | QIODevice::Truncate;
    std::unique_ptr<VFile> file(new VFile);
    file->dev = dev;
    file->file.setFileName(name);
    if (!file->file.open(open | QIODevice::Unbuffered))
        return nullptr;
    VFile *const handle = file.get();
    dev->openFiles[handle] = std::move(file);
    return handle;
}

int vFileRead(VFile *file, char *buf, int len)
{
    return static_cast<int>(file->file.read(buf, len));
}

int vFileWrite(VFile *file, const char *buf, int len)
{
    return static_cast<int>(file->file.write(buf, len));
}

qint64 vFileSeek(VFile *file, qint64 offset, int whence)
{
    const qint64 position = whence == 2 ? file->file.size() + offset : offset;
    return file->file.seek(position) ? position : -1;
}

qint64 vFileTell(VFile *file)
{
    return file->file.pos();
}

void vFileClose(VFile *file)
{
    file->dev->openFiles.erase(file);
}

// --- The log: failures only

// A text of the device without what a terminal might obey.
static QByteArray harmless(QByteArray text)
{
    for (char &c : text) {
        if (std::iscntrl(static_cast<unsigned char>(c)))
            c = '?';
    }
    return text;
}

void Log(const char *tag, int level, const char *format, ...)
{
    if (level < 2)
        return;
    char text[1024];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    std::fprintf(stderr, "%s: %s\n", tag, harmless(text).constData());
}

// --- Classic iPods: this host has none

iitdb *getPhotoDBInt(IIPod *)
{
    return nullptr;
}

void releaseITunesDBInt(iitdb **) {}

int unpackiThmb(IIPod *, QByteArray &, const itdb_photo &, QByteArray &)
{
    return -1;
}

// --- The device

class FolderDevice : public IIPod
{
public:
    explicit FolderDevice(const QString &workFolder) : m_workFolder(workFolder) {}

    bool isAccessBlocked() override { return false; }
    QString devicePath() override { return deviceName; }
    QString driveName() override { return QString(); }
    bool isIOSDevice() override { return true; }
    QString localDataPath() override { return m_workFolder + '/'; }

private:
    const QString m_workFolder;
};

// --- What the program does with the library

static void (*cancelParse)() = nullptr;

static int fail(const QString &cause)
{
    std::fprintf(stderr, "folder_host: %s\n", qPrintable(cause));
    return 1;
}

// The bytes of the device's own name. They are UTF-8, which the plug-in reads as Latin-1 up to
// iOS 13.
static QByteArray nameOnDevice(const QString &path)
{
    const QByteArray bytes = path.toLatin1();
    const bool isMisread =
        QString::fromLatin1(bytes) == path && QString::fromUtf8(bytes).toUtf8() == bytes;
    return isMisread ? bytes : path.toUtf8();
}

static void listPhotos(photo_manager_int &library)
{
    for (quint64 id : library.photoIDs()) {
        photoItem item;
        const bool isThere = library.getPhoto(id, &item);
        const QByteArray size = isThere ? QByteArray::number(item.fileSize) : "missing";
        std::printf("photo %llu: %s, %d x %d, %s\n", id,
                    harmless(nameOnDevice(item.path)).constData(), item.width, item.height,
                    size.constData());
    }
}

static void listAlbums(photo_manager_int &library)
{
    for (quint64 id : library.albumIDs()) {
        albumItem album; // a fresh one each time: some albums append to its list
        if (!library.getAlbum(id, &album))
            continue;
        QByteArray photos;
        for (quint64 photo : album.photoIDs)
            photos += ' ' + QByteArray::number(photo);
        std::printf("album %llu: %s:%s\n", id, harmless(album.name.toUtf8()).constData(),
                    photos.constData());
    }
}

// The name tells what the image is; a thumbnail is a JPEG or a BMP file.
static int saveThumbnail(photo_manager_int &library, quint64 id, QString name)
{
    QByteArray image; // empty, for a packed thumbnail is appended
    if (library.getPhotoThumbnail(id, image) != 0 || image.isEmpty())
        return fail("there is no thumbnail of " + QString::number(id));
    name += image.startsWith("\xFF\xD8") ? ".jpg" : ".bmp";
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly) || file.write(image) != image.size() || !file.flush())
        return fail(name + ": " + file.errorString());
    std::printf("%s\n", QFile::encodeName(name).constData());
    return 0;
}

static int show(photo_manager_int &library, const QStringList &arguments)
{
    std::signal(SIGINT, [](int) { cancelParse(); });
    const bool isParsed = library.parseLib();
    std::signal(SIGINT, SIG_DFL);
    if (!isParsed)
        return fail("no library was read");
    if (arguments.size() == 5)
        return saveThumbnail(library, arguments[3].toULongLong(), arguments[4]);
    listPhotos(library);
    listAlbums(library);
    return 0;
}

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv); // sets the locale, for Qt's file names
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3 && arguments.size() != 5)
        return fail("usage: folder_host LIBPHOTOLIB FOLDER [ID THUMBNAIL]");
    const QTemporaryDir workFolder; // fresh, and gone at the end
    deviceFolder.root = QFileInfo(arguments[2]).canonicalFilePath();
    if (deviceFolder.root.isEmpty() || !workFolder.isValid())
        return fail("there is no such folder, or none for the copies");

    QLibrary plugin(QFileInfo(arguments[1]).absoluteFilePath());
    plugin.setLoadHints(QLibrary::ResolveAllSymbolsHint); // a missing service shows here
    using MakeLibrary = photo_manager_int *(*)(IIPod *);
    const auto makeLibrary = reinterpret_cast<MakeLibrary>(plugin.resolve("getPhotolib"));
    cancelParse = plugin.resolve("_Z11cancleParsev");
    if (!makeLibrary || !cancelParse)
        return fail(plugin.errorString());

    FolderDevice device(workFolder.path());
    const std::unique_ptr<photo_manager_int> library(makeLibrary(&device));
    return library ? show(*library, arguments) : fail("out of memory");
}
