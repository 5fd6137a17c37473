#include "engine/default_device.h"

#include "base/cache_folder.h"
#include "base/error.h"
#include "base/folders.h"
#include "cli/sample_run.h"
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

void makeSample(const QByteArray &folder)
{
    // Beside its place first, so that a run that is cut short leaves no half of a sample
    // there. What such a run did leave is removed.
    const QByteArray partial = folder + ".partial";
    const QString partialName = QFile::decodeName(partial);
    removeAll(partial);
    runSampleWriter([&](QString *error, const std::atomic<bool> *isCancelled) {
        return writeSample(partialName, SampleOptions(), error, isCancelled);
    });
    if (std::rename(partial.constData(), folder.constData()) != 0)
        throw Error(folder.toStdString(), std::generic_category().message(errno));
}

} // namespace

DefaultDevice defaultDevice()
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
        makeSample(device.folder);
    parent.keep();
    return device;
}
