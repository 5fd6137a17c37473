#include "sample/output_folder.h"

#include "sample/dates.h"
#include "sample/sample_error.h"

#include <QDir>
#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <system_error>
#include <unistd.h>

namespace sample {

namespace {

namespace fs = std::filesystem;

fs::path nativePath(const QString &path)
{
    return {QFile::encodeName(path).toStdString()};
}

[[noreturn]] void failFor(const QString &action, const QString &path, const QString &cause)
{
    throw SampleError(QStringLiteral("cannot %1 %2: %3").arg(action, path, cause));
}

/// The folders from the root to `path`, itself included, that do not exist; outermost first.
QStringList missingFolders(const QString &path)
{
    QStringList missing;
    QString folder = path;
    while (!QFileInfo::exists(folder) && !QFileInfo(folder).isSymLink()) {
        missing.prepend(folder);
        folder = QFileInfo(folder).path();
    }
    return missing;
}

void checkEmptyFolder(const QString &path)
{
    const QFileInfo info(path);
    if (!info.isDir())
        failFor(QStringLiteral("write the sample to"), path,
                QStringLiteral("it exists and is not a folder"));
    std::error_code error;
    const fs::directory_iterator entries(nativePath(path), error);
    if (error)
        failFor(QStringLiteral("read"), path, QString::fromStdString(error.message()));
    if (entries != fs::directory_iterator())
        failFor(QStringLiteral("write the sample to"), path,
                QStringLiteral("the folder is not empty"));
}

} // namespace

OutputFile::OutputFile(const QString &path) : m_file(path)
{
    // Unbuffered: no write may come after the date has been set.
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered))
        fail();
}

void OutputFile::write(const QByteArray &bytes)
{
    // A short count comes without its cause; writing the rest brings it out.
    for (int done = 0; done < bytes.size();) {
        const qint64 count = m_file.write(bytes.constData() + done, bytes.size() - done);
        if (count <= 0)
            fail();
        done += static_cast<int>(count);
    }
}

void OutputFile::close(qint64 seconds)
{
    if (!m_file.setFileTime(dateTime(seconds), QFileDevice::FileModificationTime))
        fail();
    m_file.close();
    if (m_file.error() != QFileDevice::NoError)
        fail();
}

void OutputFile::fail() const
{
    failFor(QStringLiteral("write"), m_file.fileName(), m_file.errorString());
}

void setFileDate(const QString &path, qint64 seconds)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly) ||
        !file.setFileTime(dateTime(seconds), QFileDevice::FileModificationTime))
        failFor(QStringLiteral("set the date of"), path, file.errorString());
}

OutputFolder::OutputFolder(const QString &path)
    : m_path(QDir::cleanPath(QDir::current().absoluteFilePath(path)))
{
    if (path.isEmpty())
        throw SampleError(QStringLiteral("cannot write the sample: the folder has no name"));
    const QStringList missing = missingFolders(m_path);
    if (missing.isEmpty())
        checkEmptyFolder(m_path);
    try {
        for (const QString &folder : missing) {
            makeFolder(folder);
            m_madeFolders.append(folder);
        }
        holdOpen();
    } catch (const SampleError &) {
        removeMade();
        throw;
    }
}

OutputFolder::~OutputFolder()
{
    if (!m_kept)
        removeMade();
    if (m_fd >= 0)
        ::close(m_fd);
}

void OutputFolder::holdOpen()
{
    m_fd = ::open(nativePath(m_path).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (m_fd < 0)
        failFor(QStringLiteral("write the sample to"), m_path,
                QString::fromStdString(std::generic_category().message(errno)));
}

void OutputFolder::removeMade()
{
    std::error_code ignored; // the failure that led here is the one to report
    const fs::path opened = "/proc/self/fd/" + std::to_string(m_fd);
    for (const QString &entry : qAsConst(m_entries))
        fs::remove_all(opened / nativePath(entry), ignored);
    while (!m_madeFolders.isEmpty())
        fs::remove(nativePath(m_madeFolders.takeLast()), ignored);
}

void OutputFolder::makeFolder(const QString &path)
{
    std::error_code error;
    fs::create_directory(nativePath(path), error);
    if (error)
        failFor(QStringLiteral("make the folder"), path, QString::fromStdString(error.message()));
}

QString OutputFolder::prepare(const QString &relative)
{
    QString path = m_path + QLatin1Char('/') + relative;
    const QString folder = QFileInfo(path).path();
    if (folder != m_lastFolder) {
        m_entries.insert(relative.section(QLatin1Char('/'), 0, 0));
        for (const QString &missing : missingFolders(folder))
            makeFolder(missing);
        m_lastFolder = folder;
    }
    return path;
}

void OutputFolder::writeFile(const QString &relative, const QByteArray &bytes, qint64 seconds)
{
    OutputFile file(prepare(relative));
    file.write(bytes);
    file.close(seconds);
}

} // namespace sample
