#include "bench_host.h"

#include "host/device_database.h"
#include "host/device_files.h"
#include "host/host_log.h"

#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

// The thinnest file layer there is: what is measured is the plug-in, not its host.

struct VDev {
    std::string root;
};

struct VFile {
    int fd;
};

namespace {

bool areFailuresTold = true;

// A library's source files are not there, and each counts as present: no bench reads them.
bool isSourceFile(const char *path)
{
    return std::strncmp(path, "DCIM/", 5) == 0;
}

} // namespace

qint64 deviceHandleBytes(IIPod &device)
{
    // Its name is longer than what a string holds in itself.
    return static_cast<qint64>(sizeof(VDev)) + device.devicePath().toUtf8().size() + 1;
}

qint64 fileHandleBytes()
{
    return sizeof(VFile);
}

void tellFailures(bool told)
{
    areFailuresTold = told;
}

VDev *vDevOpen(VDevType, const char *path)
{
    return new VDev{path};
}

void vDevClose(VDev *dev)
{
    delete dev;
}

bool vDevCreateDir(VDev *, const char *path)
{
    return mkdir(path, 0700) == 0;
}

qint64 vDevFileSize(VDev *dev, const char *path)
{
    struct stat info = {};
    if (isSourceFile(path))
        return 1;
    return stat((dev->root + path).c_str(), &info) == 0 ? info.st_size : 0;
}

VFile *vFileOpen(VDev *dev, const char *path, int mode)
{
    const int flags = mode == 0 ? O_RDONLY : O_WRONLY | O_CREAT | O_TRUNC;
    const int fd = open((dev->root + path).c_str(), flags, 0600);
    return fd < 0 ? nullptr : new VFile{fd};
}

int vFileRead(VFile *file, char *buf, int len)
{
    return static_cast<int>(read(file->fd, buf, static_cast<size_t>(len)));
}

int vFileWrite(VFile *file, const char *buf, int len)
{
    return static_cast<int>(write(file->fd, buf, static_cast<size_t>(len)));
}

qint64 vFileSeek(VFile *file, qint64 offset, int whence)
{
    return lseek(file->fd, offset, whence);
}

qint64 vFileTell(VFile *file)
{
    return lseek(file->fd, 0, SEEK_CUR);
}

void vFileClose(VFile *file)
{
    close(file->fd);
    delete file;
}

void Log(const char *, int level, const char *format, ...)
{
    if (level == 2 && areFailuresTold)
        std::fprintf(stderr, "bench: the plug-in reports a failure: %s\n", format);
}

iitdb *getPhotoDBInt(IIPod *)
{
    return nullptr;
}

void releaseITunesDBInt(iitdb **) {}

int unpackiThmb(IIPod *, QByteArray &, const itdb_photo &, QByteArray &)
{
    return -1;
}
