#include "cameradb/device_copy.h"

#include "cameradb/cancel_flag.h"
#include "host/device_files.h"
#include "host/exception_barrier.h"
#include "host/host_log.h"
#include "host/iipod.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <new>

namespace {

// Large enough that a phone's file service streams at its full rate, small enough that
// a cancel is felt at once.
const int blockSize = 4 * 1024 * 1024;

// The four handles of one copy. They are closed together after the copy and only then:
// after a failed open the earlier ones are left to the host.
struct copy_handles {
    VDev *device = nullptr;
    VFile *source = nullptr;
    VDev *host = nullptr;
    VFile *target = nullptr;

    bool openSource(IIPod *iPod, const QByteArray &path);
    bool openTarget(const QString &path);
    void close();
};

bool copy_handles::openSource(IIPod *iPod, const QByteArray &path)
{
    device = vDevOpen(VDevDevice, iPod->devicePath().toUtf8().constData());
    if (!device) {
        Log("PHOTOLIB", 2, "Can not open device");
        return false;
    }
    source = vFileOpen(device, path.constData(), 0);
    if (!source) {
        Log("PHOTOLIB", 2, "Can not open file: %s", path.constData());
        return false;
    }
    return true;
}

bool copy_handles::openTarget(const QString &path)
{
    const QByteArray name = path.toUtf8();
    host = vDevOpen(VDevHost, "");
    if (!host) {
        Log("PHOTOLIB", 2, "Can not open folder: %s", name.constData());
        return false;
    }
    const int separator =
        qMax(path.lastIndexOf(QLatin1Char('/')), path.lastIndexOf(QLatin1Char('\\')));
    vDevCreateDir(host, path.left(separator).toUtf8().constData());
    target = vFileOpen(host, name.constData(), 1);
    if (!target) {
        Log("PHOTOLIB", 2, "Can not open file: %s", name.constData());
        return false;
    }
    return true;
}

void copy_handles::close()
{
    vFileClose(source);
    vDevClose(device);
    vFileClose(target);
    vDevClose(host);
}

// Until the source or the target gives up, or a cancel; false only without memory.
bool copyBlocks(VFile *source, VFile *target)
{
    const std::unique_ptr<char[]> buffer(new (std::nothrow) char[blockSize]);
    if (!buffer)
        return false;
    for (;;) {
        const int count = vFileRead(source, buffer.get(), blockSize);
        // A count beyond the buffer is a file service's error; the bytes are not ours.
        if (count <= 0 || count > blockSize)
            return true;
        if (gbShouldQuit.load(std::memory_order_relaxed))
            return true;
        if (vFileWrite(target, buffer.get(), count) != count)
            return true;
    }
}

int copyFile(IIPod *device, const QString &sourcePath, const QString &targetPath)
{
    copy_handles handles;
    if (!handles.openSource(device, sourcePath.toUtf8()))
        return -1;
    if (!handles.openTarget(targetPath))
        return -1;
    const bool hasMemory = copyBlocks(handles.source, handles.target);
    handles.close();
    return hasMemory ? 0 : -1;
}

} // namespace

int savefiletoLocation(IIPod *device, const QString &sourcePath, const QString &targetPath)
{
    if (!device || device->isAccessBlocked())
        return 0;
    if (sourcePath.isEmpty() || targetPath.isEmpty())
        return 0;
    return withoutThrowing(-1, [&] { return copyFile(device, sourcePath, targetPath); });
}
