#include "engine/default_device.h"

#include "base/cache_folder.h"
#include "base/error.h"
#include "base/folders.h"
#include "sample/sample_writer.h"

#include <QFile>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace {

bool exists(const QByteArray &path)
{
    return QFile::exists(QFile::decodeName(path));
}

// A link is removed itself, and what it leads to stays.
void removeAll(const QByteArray &path)
{
    std::error_code error;
    std::filesystem::remove_all(path.toStdString(), error);
    if (error)
        throw Error(path.toStdString(), error.message());
}

void makeSample(const QByteArray &folder, const CancelToken &cancel)
{
    // Beside its place first, so that a run that is cut short leaves no half of a sample
    // there. What such a run did leave is removed.
    const QByteArray partial = folder + ".partial";
    const QString partialName = QFile::decodeName(partial);
    removeAll(partial);
    QString error;
    const bool isWritten =
        writeSample(partialName, SampleOptions(), &error, {cancel.flag(), nullptr});
    if (!isWritten && cancel.isCancelled())
        throw Error(Error::Cancelled, "interrupted: no sample was written");
    if (!isWritten)
        throw Error(error);
    if (std::rename(partial.constData(), folder.constData()) != 0)
        throw Error(folder.toStdString(), std::generic_category().message(errno));
}

} // namespace

DefaultDevice defaultDevice(const CancelToken &cancel)
{
    DefaultDevice device;
    device.folder = cacheFolder() + "/sample";
    requireOwnFolder(cacheFolder());
    requireOwnFolder(device.folder);
    if (exists(device.folder))
        return device;
    LockedFolder parent(cacheFolder());
    device.isNew = !exists(device.folder); // or another program has made it meanwhile
    if (device.isNew)
        makeSample(device.folder, cancel);
    parent.keep();
    return device;
}
