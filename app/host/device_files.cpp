// The plug-in finds these functions in the process, where all else of the program is
// hidden.
#pragma GCC visibility push(default)
#include "host/device_files.h"
#pragma GCC visibility pop

#include "devices/encoded_names.h"
#include "host/device_handles.h"
#include "host/exception_barrier.h"
#include "host/transfer_monitor.h"

#include <cerrno>
#include <sys/stat.h>

namespace {

constexpr int readMode = 0;
constexpr int writeMode = 1;
constexpr int fromStart = 0;
constexpr int fromEnd = 2;

QByteArray displayName(const VDev &dev, const QByteArray &path)
{
    return dev.files ? dev.files->displayName(path) : path;
}

std::unique_ptr<DeviceFile> openForReading(const VDev &dev, const QByteArray &path,
                                           FileError *error)
{
    if (dev.files)
        return openDeviceFile(*dev.files, path, error);
    return LocalFile::openForReading(path, error);
}

// Fills `*file`; false when the file does not open.
bool openFile(const VDev &dev, const QByteArray &path, int mode, VFile *file, FileError *error)
{
    if (mode == readMode) {
        file->file = openForReading(dev, path, error);
    } else if (mode == writeMode && !dev.files) {
        std::unique_ptr<LocalFile> local = LocalFile::openForWriting(path, error);
        file->writable = local.get();
        file->file = std::move(local);
    } else {
        *error = FileError::fromErrno(EROFS); // devices are only read
    }
    return file->file != nullptr;
}

VFile *openHandle(VDev &dev, const QByteArray &path, int mode)
{
    FileError error;
    auto file = std::make_unique<VFile>();
    file->name = displayName(dev, path);
    if (openFile(dev, path, mode, file.get(), &error))
        return dev.add(std::move(file));
    transferObserver().failed(file->name, error);
    return nullptr;
}

qint64 hostFileSize(const QByteArray &path)
{
    struct stat status = {};
    const bool isFile = ::stat(path.constData(), &status) == 0 && S_ISREG(status.st_mode);
    return isFile ? status.st_size : 0;
}

qint64 deviceFileSize(DeviceFileSystem &files, const QByteArray &path)
{
    FileInfo info;
    FileError error;
    const bool isFile = deviceFileInfo(files, path, &info, &error) && info.type == FileInfo::File;
    return isFile ? info.size : 0;
}

bool isFolder(const QByteArray &path)
{
    struct stat status = {};
    return ::stat(path.constData(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool createFolders(const QByteArray &path)
{
    // Each name's end in turn, the last one included; a folder that is there is fine.
    for (int end = path.indexOf('/', 1);; end = path.indexOf('/', end + 1)) {
        const QByteArray folder = path.left(end < 0 ? path.size() : end);
        if (::mkdir(folder.constData(), 0777) != 0 && !isFolder(folder))
            return false;
        if (end < 0)
            return true;
    }
}

int readFile(VFile &file, char *buffer, int length)
{
    FileError error;
    const qint64 count = file.file->read(file.position, buffer, length, &error);
    if (count < 0)
        transferObserver().failed(file.name, error);
    else
        file.position += count;
    return static_cast<int>(count);
}

int writeFile(VFile &file, const char *buffer, int length)
{
    FileError error;
    const qint64 count = file.writable->write(file.position, buffer, length, &error);
    file.position += count;
    transferObserver().bytesWritten(count);
    if (count < length)
        transferObserver().failed(file.name, error);
    return static_cast<int>(count);
}

// The position from the start that a seek asks for; -1 when there is none.
qint64 seekTarget(DeviceFile &file, qint64 offset, int whence, FileError *error)
{
    if (whence == fromStart)
        return offset;
    if (whence != fromEnd)
        return -1;
    const qint64 size = file.size(error);
    qint64 target = -1;
    if (size < 0 || __builtin_add_overflow(size, offset, &target))
        return -1;
    return target;
}

qint64 seekFile(VFile &file, qint64 offset, int whence)
{
    FileError error = FileError::fromErrno(EINVAL);
    const qint64 target = seekTarget(*file.file, offset, whence, &error);
    if (target < 0) {
        transferObserver().failed(file.name, error);
        return -1;
    }
    file.position = target;
    return target;
}

} // namespace

VDev *vDevOpen(VDevType type, const char *path)
{
    return withoutThrowing<VDev *>(nullptr, [&]() -> VDev * {
        if (type == VDevDevice)
            return registeredDevice(path);
        return type == VDevHost ? hostFileSystem() : nullptr;
    });
}

void vDevClose(VDev *)
{
    // A file system lasts as long as its device is registered.
}

bool vDevCreateDir(VDev *dev, const char *path)
{
    if (!dev || dev->files || !path || !*path)
        return false;
    return withoutThrowing(false, [&] { return createFolders(path); });
}

qint64 vDevFileSize(VDev *dev, const char *path)
{
    if (!dev || !path)
        return 0;
    return withoutThrowing<qint64>(
        0, [&] { return dev->files ? deviceFileSize(*dev->files, path) : hostFileSize(path); });
}

VFile *vFileOpen(VDev *dev, const char *path, int mode)
{
    if (!dev || !path)
        return nullptr;
    return withoutThrowing<VFile *>(nullptr, [&] { return openHandle(*dev, path, mode); });
}

int vFileRead(VFile *file, char *buf, int len)
{
    if (!file || !buf || len < 0)
        return -1;
    return withoutThrowing(-1, [&] { return readFile(*file, buf, len); });
}

int vFileWrite(VFile *file, const char *buf, int len)
{
    if (!file || !file->writable || !buf || len < 0)
        return 0;
    return withoutThrowing(0, [&] { return writeFile(*file, buf, len); });
}

qint64 vFileSeek(VFile *file, qint64 offset, int whence)
{
    if (!file)
        return -1;
    return withoutThrowing<qint64>(-1, [&] { return seekFile(*file, offset, whence); });
}

qint64 vFileTell(VFile *file)
{
    return file ? file->position : -1;
}

void vFileClose(VFile *file)
{
    if (file)
        file->dev->close(file);
}
