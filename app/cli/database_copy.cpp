#include "cli/database_copy.h"

#include "cli/command_error.h"
#include "devices/device.h"

namespace {

const char fileName[] = "Photos.sqlite";

QByteArray described(const QByteArray &name, const FileError &error)
{
    return name + ": " + error.text.toUtf8();
}

} // namespace

DatabaseCopy::DatabaseCopy(DeviceFileSystem &files, const QByteArray &workFolder)
    : m_workFolder(workFolder), m_deviceDatabase(files.displayName(databasePath))
{
    for (const char *suffix : {"", "-wal", "-shm"})
        look(files, QByteArray(databasePath) + suffix);
}

void DatabaseCopy::look(DeviceFileSystem &files, const QByteArray &path)
{
    // Opened rather than asked about, for only that tells whether it can be read.
    FileError error;
    const std::unique_ptr<DeviceFile> file = files.open(path, &error);
    const qint64 size = file ? file->size(&error) : -1;
    qint64 total = 0;
    if (size >= 0 && !__builtin_add_overflow(m_total, size, &total))
        m_total = total;
    else if (error.kind == FileError::NotFound && path != databasePath)
        m_missing.append(path);
    else
        throw CommandError(files.displayName(path).toStdString(), error.text.toStdString());
}

QByteArray DatabaseCopy::localDatabase() const
{
    return m_workFolder + fileName;
}

QByteArray DatabaseCopy::failure() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_failure;
}

bool DatabaseCopy::isHarmless(const QByteArray &line) const
{
    for (const QByteArray &path : m_missing) {
        if (line == "Can not open file: " + path)
            return true;
    }
    return false;
}

void DatabaseCopy::failed(const QByteArray &name, const FileError &error)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_failure.isEmpty() && concerns(name) && error.kind != FileError::NotFound)
        m_failure = described(name, error);
}

// The plug-in also reads the sync property list, which may be missing or broken.
bool DatabaseCopy::concerns(const QByteArray &name) const
{
    return name.startsWith(m_deviceDatabase) || name.startsWith(localDatabase());
}
