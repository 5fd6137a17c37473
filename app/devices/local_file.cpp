#include "devices/local_file.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

static_assert(sizeof(off_t) == 8, "files over 2 GiB need 64-bit offsets");

namespace {

// Neither a terminal nor a pipe must catch the program or keep it waiting.
constexpr int openFlags = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;

// What one system call moves at most is a little less than 2 GiB.
size_t portion(qint64 length)
{
    constexpr qint64 most = 1 << 30;
    return static_cast<size_t>(length < most ? length : most);
}

} // namespace

UniqueFd regularFile(UniqueFd fd, FileError *error)
{
    struct stat status = {};
    if (!fd.isOpen() || ::fstat(fd.get(), &status) != 0) {
        *error = FileError::fromErrno(errno);
        return UniqueFd();
    }
    if (!S_ISREG(status.st_mode)) {
        *error = {FileError::WrongType, QStringLiteral("not a regular file")};
        return UniqueFd();
    }
    return fd;
}

std::unique_ptr<LocalFile> LocalFile::fromFd(UniqueFd fd, FileError *error,
                                             const std::atomic<bool> *isClosed)
{
    UniqueFd file = regularFile(std::move(fd), error);
    if (!file.isOpen())
        return nullptr;
    return std::unique_ptr<LocalFile>(new LocalFile(std::move(file), isClosed));
}

std::unique_ptr<LocalFile> LocalFile::openForReading(const QByteArray &path, FileError *error)
{
    return fromFd(UniqueFd(::open(path.constData(), O_RDONLY | openFlags)), error);
}

std::unique_ptr<LocalFile> LocalFile::openForWriting(const QByteArray &path, FileError *error)
{
    const int flags = O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | openFlags;
    UniqueFd fd(::open(path.constData(), flags, 0666));
    if (!fd.isOpen() && errno == ELOOP) {
        *error = {FileError::WrongType, QStringLiteral("a link, not a file")};
        return nullptr;
    }
    return fromFd(std::move(fd), error);
}

// Between two system calls; a local disk answers each soon.
bool LocalFile::isClosed(FileError *error) const
{
    const bool isClosed = m_isClosed && *m_isClosed;
    if (isClosed)
        *error = FileError::closed();
    return isClosed;
}

qint64 LocalFile::read(qint64 offset, char *buffer, qint64 length, FileError *error)
{
    qint64 done = 0;
    while (done < length) {
        if (isClosed(error))
            return -1;
        const ssize_t count =
            ::pread(m_fd.get(), buffer + done, portion(length - done), offset + done);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 && done == 0) {
            *error = FileError::fromErrno(errno);
            return -1;
        }
        if (count <= 0)
            break;
        done += count;
    }
    return done;
}

qint64 LocalFile::write(qint64 offset, const char *buffer, qint64 length, FileError *error)
{
    qint64 done = 0;
    while (done < length) {
        const ssize_t count =
            ::pwrite(m_fd.get(), buffer + done, portion(length - done), offset + done);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0) {
            *error = FileError::fromErrno(count < 0 ? errno : ENOSPC);
            break;
        }
        done += count;
    }
    return done;
}

qint64 LocalFile::size(FileError *error)
{
    struct stat status = {};
    if (::fstat(m_fd.get(), &status) == 0)
        return status.st_size;
    *error = FileError::fromErrno(errno);
    return -1;
}
