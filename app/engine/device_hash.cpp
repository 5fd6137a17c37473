#include "engine/device_hash.h"

#include "base/cancel_token.h"
#include "base/error.h"
#include "base/sha256.h"
#include "devices/encoded_names.h"

QByteArray sha256OfDeviceFile(DeviceFileSystem &files, const QByteArray &path, FileError *error,
                              const CancelToken &cancel)
{
    constexpr int blockSize = 1 << 20;
    const std::unique_ptr<DeviceFile> file = openDeviceFile(files, path, error);
    if (!file)
        return QByteArray();
    QByteArray block(blockSize, Qt::Uninitialized);
    Sha256 hash;
    for (qint64 position = 0;;) {
        if (cancel.isCancelled())
            throw Error(Error::Cancelled, "interrupted");
        const qint64 count = file->read(position, block.data(), block.size(), error);
        if (count < 0)
            return QByteArray();
        if (count == 0)
            return hash.takeHex();
        hash.add(block.constData(), count);
        position += count;
    }
}
