#include "engine/device_hash.h"

#include "base/cancel_token.h"
#include "base/error.h"
#include "base/sha256.h"
#include "devices/encoded_names.h"

#include <cerrno>
#include <cstring>
#include <functional>
#include <unistd.h>

namespace {

constexpr int blockSize = 1 << 20;

// Gives `take` the file block by block until that returns false. False when the file cannot be
// read, or has more than the device says: some files never end.
bool readBlocks(DeviceFileSystem &files, const QByteArray &path, FileError *error,
                const CancelToken &cancel,
                const std::function<bool(const char *bytes, qint64 count)> &take)
{
    const std::unique_ptr<DeviceFile> file = openDeviceFile(files, path, error);
    const qint64 size = file ? file->size(error) : -1;
    if (size < 0)
        return false;
    QByteArray block(blockSize, Qt::Uninitialized);
    for (qint64 position = 0; position <= size;) {
        if (cancel.isCancelled())
            throw Error(Error::Cancelled, "interrupted");
        const qint64 count = file->read(position, block.data(), block.size(), error);
        if (count < 0)
            return false;
        if (count == 0 || !take(block.constData(), count))
            return true;
        position += count;
    }
    *error = {FileError::Failed, QStringLiteral("changed while it was read")};
    return false;
}

// As many bytes as `file` has, up to `count`; fewer when it ends or fails.
qint64 readLocal(int file, char *bytes, qint64 count)
{
    qint64 done = 0;
    while (done < count) {
        const ssize_t length = ::read(file, bytes + done, static_cast<size_t>(count - done));
        if (length < 0 && errno == EINTR)
            continue;
        if (length <= 0)
            break;
        done += length;
    }
    return done;
}

} // namespace

QByteArray sha256OfDeviceFile(DeviceFileSystem &files, const QByteArray &path, FileError *error,
                              const CancelToken &cancel)
{
    Sha256 hash;
    const auto add = [&hash](const char *bytes, qint64 count) {
        hash.add(bytes, count);
        return true;
    };
    return readBlocks(files, path, error, cancel, add) ? hash.takeHex() : QByteArray();
}

bool hasContentOf(DeviceFileSystem &files, const QByteArray &path, int file, FileError *error,
                  const CancelToken &cancel)
{
    QByteArray local(blockSize, Qt::Uninitialized);
    bool isSame = true;
    const auto compare = [&](const char *bytes, qint64 count) {
        isSame = readLocal(file, local.data(), count) == count &&
                 std::memcmp(bytes, local.constData(), static_cast<size_t>(count)) == 0;
        return isSame;
    };
    if (!readBlocks(files, path, error, cancel, compare))
        return false;
    char more = 0;
    return isSame && readLocal(file, &more, 1) == 0;
}
