#include "cli/default_device.h"

#include "cli/cache_folder.h"
#include "cli/command_error.h"
#include "cli/folder_tools.h"
#include "cli/sample_run.h"
#include "sample/sample_writer.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace {

bool exists(const QByteArray &path)
{
    return QFile::exists(QFile::decodeName(path));
}

void makeSample(const QByteArray &folder)
{
    // Beside its place first, so that a run that is cut short leaves no half of a sample
    // there. What such a run did leave is removed.
    const QByteArray partial = folder + ".partial";
    const QString partialName = QFile::decodeName(partial);
    QDir(partialName).removeRecursively();
    runSampleWriter([&](QString *error, const std::atomic<bool> *isCancelled) {
        return writeSample(partialName, SampleOptions(), error, isCancelled);
    });
    if (std::rename(partial.constData(), folder.constData()) != 0)
        throw CommandError(folder.toStdString(), std::generic_category().message(errno));
}

} // namespace

DefaultDevice defaultDevice()
{
    DefaultDevice device;
    device.folder = cacheFolder() + "/sample";
    if (exists(device.folder))
        return device;
    LockedFolder parent(cacheFolder());
    device.isNew = !exists(device.folder); // or another program has made it meanwhile
    if (device.isNew)
        makeSample(device.folder);
    parent.keep();
    return device;
}
