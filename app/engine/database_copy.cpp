#include "engine/database_copy.h"

#include "base/error.h"
#include "host/device.h"

namespace {

const char fileName[] = "Photos.sqlite";

FileError changed()
{
    return {FileError::Failed, QStringLiteral("changed while it was copied")};
}

// What has become of the file `path` since it was as `was` says. Journals may grow.
FileError changeOf(DeviceFileSystem &files, const QByteArray &path, const FileInfo &was)
{
    FileInfo info;
    FileError error;
    if (!files.info(path, &info, &error))
        return error;
    const bool isSame = path == databasePath ? info.isSameAs(was) : info.size >= was.size;
    return isSame ? FileError() : changed();
}

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
    FileInfo info;
    const bool isThere = size >= 0 && files.info(path, &info, &error);
    if (isThere && !__builtin_add_overflow(m_total, info.size, &total)) {
        m_total = total;
        m_found[path] = info;
        m_foundNames.append(files.displayName(path));
    } else if (error.kind == FileError::NotFound && path != databasePath) {
        m_missing.append(path);
    } else {
        throw Error(files.displayName(path).toStdString(), error.text.toStdString());
    }
}

void DatabaseCopy::requireUnchanged(DeviceFileSystem &files)
{
    for (auto found = m_found.cbegin(); found != m_found.cend(); ++found) {
        const FileError change = changeOf(files, found.key(), found.value());
        if (change.kind != FileError::None)
            fail(files.displayName(found.key()), change);
    }
    // Neither did the files change, nor did reading or writing fail: it was not even tried.
    if (m_done < m_total)
        fail(m_deviceDatabase, {FileError::Failed, QStringLiteral("not copied: out of memory")});
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

void DatabaseCopy::failed(const QByteArray &name, const FileError &error)
{
    if (!concerns(name))
        return;
    if (error.kind != FileError::NotFound)
        fail(name, error);
    else if (m_foundNames.contains(name))
        fail(name, changed());
}

// The first failure is the cause of the others.
void DatabaseCopy::fail(const QByteArray &name, const FileError &error)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_failure.isEmpty())
        m_failure = described(name, error);
}

// The plug-in also reads the sync property list, which may be missing or broken.
bool DatabaseCopy::concerns(const QByteArray &name) const
{
    return name.startsWith(m_deviceDatabase) || name.startsWith(localDatabase());
}
