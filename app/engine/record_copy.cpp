#include "engine/record_copy.h"

#include "base/byte_sink.h"
#include "base/cancel_token.h"
#include "base/error.h"
#include "base/sha256.h"
#include "base/unique_fd.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace {

constexpr char databaseName[] = "export.sqlite";
constexpr char logName[] = "export.sqlite-wal";
constexpr char prefix[] = "photolib-record-"; // no other program begins a name so
constexpr qint64 blockSize = 1 << 20;
constexpr int mostTries = 100;
constexpr std::chrono::milliseconds interval(10);

[[noreturn]] void fail(const QByteArray &name, int code)
{
    throw Error(name.toStdString(), std::generic_category().message(code));
}

// The files of a database in the folder of an export.
class RecordFiles
{
public:
    RecordFiles(int folder, const QByteArray &name, const CancelToken &cancel)
        : m_folder(folder), m_name(name), m_cancel(cancel)
    {
    }

    // The SHA-256 of a file, each part of which `sink` is given; empty when there is no such file.
    QByteArray read(const char *file, const ByteSink &sink) const
    {
        const UniqueFd fd = open(file);
        if (!fd.isOpen())
            return QByteArray();
        Sha256 sum;
        QByteArray block(blockSize, Qt::Uninitialized);
        while (const qint64 count = readBlock(fd.get(), block)) {
            sum.add(block.constData(), count);
            sink(block.constData(), count);
        }
        return sum.takeHex();
    }

    QByteArray sumOf(const char *file) const
    {
        return read(file, [](const char *, qint64) {});
    }

    [[noreturn]] void failWith(int code) const { fail(m_name, code); }

private:
    // Not open when it is not there.
    UniqueFd open(const char *file) const
    {
        constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
        UniqueFd fd(::openat(m_folder, file, flags));
        struct stat status = {};
        if (!fd.isOpen() && errno == ENOENT)
            return fd;
        if (!fd.isOpen() && errno != ELOOP)
            failWith(errno);
        if (!fd.isOpen() || ::fstat(fd.get(), &status) != 0 || !S_ISREG(status.st_mode))
            throw Error(m_name.toStdString(), "not a regular file");
        return fd;
    }

    qint64 readBlock(int fd, QByteArray &block) const
    {
        if (m_cancel.isCancelled())
            throw Error(Error::Cancelled, "interrupted");
        ssize_t count = 0;
        do {
            count = ::read(fd, block.data(), static_cast<size_t>(block.size()));
        } while (count < 0 && errno == EINTR);
        if (count < 0)
            failWith(errno);
        return count;
    }

    const int m_folder;
    const QByteArray m_name;
    const CancelToken &m_cancel;
};

// Throws Error when the folder for copies cannot be written.
QByteArray copied(const RecordFiles &files, const char *name, const QString &path)
{
    QFile copy(path);
    QFile::remove(path);
    const auto check = [&copy](bool isDone) {
        if (!isDone)
            throw Error(copy.fileName() + QStringLiteral(": ") + copy.errorString());
    };
    const auto write = [&](const char *bytes, qint64 count) {
        check(copy.isOpen() || copy.open(QIODevice::WriteOnly));
        check(copy.write(bytes, count) == count);
    };
    QByteArray sum = files.read(name, write);
    check(!copy.isOpen() || copy.flush());
    return sum;
}

// The exporter takes what is in the log into the database now and then, and begins the log anew:
// only files that are the same when they have been copied are of one moment.
bool copyBoth(const RecordFiles &files, const QString &path, bool *exists)
{
    const QByteArray database = copied(files, databaseName, path);
    const QByteArray log = copied(files, logName, path + QStringLiteral("-wal"));
    *exists = !database.isEmpty();
    return files.sumOf(databaseName) == database && files.sumOf(logName) == log;
}

// Without links, for nobody follows one to the database.
QByteArray newPath()
{
    const QString parent = QFileInfo(QDir::tempPath()).canonicalFilePath();
    const QByteArray number = QByteArray::number(QRandomGenerator::system()->generate64(), 16);
    return QFile::encodeName(parent) + '/' + prefix + number;
}

void removeCopy(int folder)
{
    for (const char *const name : {databaseName, logName, "export.sqlite-shm"})
        ::unlinkat(folder, name, 0);
}

} // namespace

RecordCopy::RecordCopy(int folder, const QByteArray &name, const CancelToken &cancel)
    : m_path(newPath()), m_folder(m_path)
{
    removeDeadFolders(QFile::encodeName(QDir::tempPath()), prefix, removeCopy);
    try {
        copy(folder, name, cancel);
    } catch (...) {
        removeCopy(m_folder.fd());
        throw;
    }
}

RecordCopy::~RecordCopy()
{
    removeCopy(m_folder.fd());
}

void RecordCopy::copy(int folder, const QByteArray &name, const CancelToken &cancel)
{
    const RecordFiles files(folder, name, cancel);
    int tries = 1;
    while (!copyBoth(files, QFile::decodeName(path()), &m_exists)) {
        if (++tries > mostTries)
            throw Error(name.toStdString(), "changes all the time");
        std::this_thread::sleep_for(interval);
    }
}
