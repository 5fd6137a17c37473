#include "engine/sample_device.h"

#include "base/error.h"
#include "base/folders.h"
#include "engine/device_bounds.h"
#include "sample/classic_sample.h"
#include "sample/sample_writer.h"

#include <QFile>
#include <QString>

#include <functional>

namespace {

/// Writes a sample into a folder with a name in Qt's letters, or says why it cannot.
using Writer = std::function<bool(const QString &folder, QString *error)>;

// Qt has no name for the folder, so the writer gets one that leads to it.
void writeByDescriptor(const QByteArray &path, const Writer &write)
{
    EnsuredFolder ensured(path, 0777);
    const UniqueFd folder = openFolder(path);
    const QString name = QStringLiteral("/proc/self/fd/%1").arg(folder.get());
    QString error;
    if (!write(name, &error))
        throw Error(Error::Failed, error.toUtf8().replace(name.toUtf8(), path).toStdString());
    ensured.keep();
}

void write(const QByteArray &path, const Writer &write)
{
    refuseInAnyDevice(path);
    const QString folder = QFile::decodeName(path);
    QString error;
    if (QFile::encodeName(folder) != path)
        writeByDescriptor(path, write);
    else if (!write(folder, &error))
        throw Error(error);
}

} // namespace

void writeSampleDevice(const QByteArray &path, const SampleOptions &options,
                       const SampleWatch &watch)
{
    write(path, [&](const QString &folder, QString *error) {
        return writeSample(folder, options, error, watch);
    });
}

void writeSampleIpod(const QByteArray &path, const ClassicSampleOptions &options,
                     const SampleWatch &watch)
{
    write(path, [&](const QString &folder, QString *error) {
        return writeClassicSample(folder, options, error, watch);
    });
}
