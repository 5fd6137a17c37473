#include "base/atomic_file.h"

#include "base/error.h"
#include "base/folders.h"

#include <QList>
#include <QPair>
#include <QRandomGenerator>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <linux/magic.h>
#include <mutex>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <system_error>

namespace {

constexpr mode_t usualMode = 0666; // less what the umask takes

[[noreturn]] void fail(int code)
{
    throw std::system_error(code, std::generic_category());
}

void check(int result)
{
    if (result < 0)
        fail(errno);
}

QByteArray temporaryName()
{
    return ".photolib-" + QByteArray::number(QRandomGenerator::system()->generate64(), 16) +
           ".part";
}

// The temporary names that there are, or are about to be, each with its folder.
struct TemporaryNames {
    std::mutex mutex;
    QList<QPair<int, QByteArray>> names;
};

TemporaryNames &temporaryNames()
{
    static auto *const instance = new TemporaryNames; // outlives every thread
    return *instance;
}

// What the link `name` says; empty when there is no such link.
QByteArray linkTarget(int folder, const QByteArray &name)
{
    char target[PATH_MAX];
    const ssize_t length = ::readlinkat(folder, name.constData(), target, sizeof target);
    return QByteArray(target, static_cast<int>(qMax<ssize_t>(length, 0)));
}

// Such a link may lead to a regular file: to where standard output goes, say.
bool leadsToAnOpenFile(int folder, const QByteArray &name)
{
    const QByteArray target = linkTarget(folder, name);
    if (target.isEmpty())
        return false;
    const UniqueFd parent(
        ::openat(folder, parentFolder(target).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    struct statfs status = {};
    return parent.isOpen() && ::fstatfs(parent.get(), &status) == 0 &&
           status.f_type == PROC_SUPER_MAGIC;
}

bool isReplaceable(int folder, const QByteArray &name)
{
    struct stat status = {};
    if (leadsToAnOpenFile(folder, name))
        return false;
    return ::fstatat(folder, name.constData(), &status, 0) != 0 || S_ISREG(status.st_mode);
}

timespec timeOf(qint64 nanoseconds)
{
    constexpr qint64 second = 1000000000;
    timespec time = {};
    time.tv_sec = nanoseconds / second;
    time.tv_nsec = nanoseconds % second;
    if (time.tv_nsec < 0) { // before 1970
        time.tv_nsec += second;
        --time.tv_sec;
    }
    return time;
}

} // namespace

AtomicFile::AtomicFile(int folder, Hiding hiding) : m_folder(folder)
{
    if (hiding == Hiding::BestAvailable)
        m_fd = UniqueFd(::openat(m_folder, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, usualMode));
    if (m_fd.isOpen())
        return;
    takeTemporaryName();
    const int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    m_fd = UniqueFd(::openat(m_folder, m_temporaryName.constData(), flags, usualMode));
    if (m_fd.isOpen())
        return;
    const int code = errno;
    dropTemporaryName();
    fail(code);
}

AtomicFile::~AtomicFile()
{
    if (m_temporaryName.isEmpty())
        return;
    ::unlinkat(m_folder, m_temporaryName.constData(), 0);
    dropTemporaryName();
}

void AtomicFile::takeTemporaryName()
{
    const QByteArray name = temporaryName();
    const std::lock_guard<std::mutex> lock(temporaryNames().mutex);
    temporaryNames().names.append({m_folder, name});
    m_temporaryName = name;
}

void AtomicFile::dropTemporaryName()
{
    const std::lock_guard<std::mutex> lock(temporaryNames().mutex);
    temporaryNames().names.removeOne({m_folder, m_temporaryName});
    m_temporaryName.clear();
}

void AtomicFile::takePermissionsOf(const QByteArray &name)
{
    struct stat status = {};
    if (::fstatat(m_folder, name.constData(), &status, 0) == 0 && S_ISREG(status.st_mode))
        check(::fchmod(m_fd.get(), status.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO)));
}

void AtomicFile::write(const char *bytes, qint64 length)
{
    while (length > 0) {
        const ssize_t count = ::write(m_fd.get(), bytes, static_cast<size_t>(length));
        if (count < 0 && errno == EINTR)
            continue;
        check(static_cast<int>(count));
        bytes += count;
        length -= count;
    }
}

void AtomicFile::setModified(qint64 nanoseconds)
{
    const timespec times[] = {{0, UTIME_NOW}, timeOf(nanoseconds)};
    check(::futimens(m_fd.get(), times));
}

void AtomicFile::startStoring()
{
    // What goes wrong here shows when the file is stored.
    ::sync_file_range(m_fd.get(), 0, 0, SYNC_FILE_RANGE_WRITE);
}

void AtomicFile::waitUntilWritten()
{
    // What goes wrong here shows when the file is stored.
    ::sync_file_range(m_fd.get(), 0, 0,
                      SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE |
                          SYNC_FILE_RANGE_WAIT_AFTER);
}

void AtomicFile::store()
{
    while (::fdatasync(m_fd.get()) != 0) {
        if (errno == EINVAL) // a disk that cannot be told to
            return;
        if (errno != EINTR)
            fail(errno);
    }
}

bool AtomicFile::giveName(int folder, const QByteArray &name)
{
    if (m_temporaryName.isEmpty())
        return linkTo(folder, name);
    return renameTo(folder, name);
}

void AtomicFile::replace(int folder, const QByteArray &name)
{
    if (m_temporaryName.isEmpty()) {
        takeTemporaryName();
        if (!linkTo(m_folder, m_temporaryName)) {
            dropTemporaryName(); // it is somebody else's
            fail(EEXIST);
        }
    }
    close();
    check(::renameat(m_folder, m_temporaryName.constData(), folder, name.constData()));
    dropTemporaryName();
}

bool AtomicFile::linkTo(int folder, const QByteArray &name)
{
    const QByteArray self = "/proc/self/fd/" + QByteArray::number(m_fd.get());
    if (::linkat(AT_FDCWD, self.constData(), folder, name.constData(), AT_SYMLINK_FOLLOW) == 0)
        return true;
    if (errno != EEXIST)
        fail(errno);
    return false;
}

// Disks that lack files without a name may be far away, and notice only now that they are
// full.
void AtomicFile::close()
{
    if (m_fd.isOpen())
        check(::close(m_fd.release()));
}

bool AtomicFile::renameTo(int folder, const QByteArray &name)
{
    close();
    const int result = ::renameat2(m_folder, m_temporaryName.constData(), folder, name.constData(),
                                   RENAME_NOREPLACE);
    if (result == 0) {
        dropTemporaryName();
        return true;
    }
    if (errno == EEXIST)
        return false;
    if (errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP)
        fail(errno);
    return linkAndRemove(folder, name);
}

// For disks and systems that cannot rename without replacing.
bool AtomicFile::linkAndRemove(int folder, const QByteArray &name)
{
    if (::linkat(m_folder, m_temporaryName.constData(), folder, name.constData(), 0) == 0)
        return true; // the end of the object removes the temporary name
    if (errno == EEXIST)
        return false;
    return replacePlaceholder(folder, name); // memory cards, and servers that look like one
}

// What is replaced is an empty file that was made a moment before, where there was none. Only a
// program that takes that one for its own and writes to it would lose something. To write the whole
// file under its name would lose nothing, but show half a photo to everybody meanwhile, and leave
// it behind if the program is killed.
bool AtomicFile::replacePlaceholder(int folder, const QByteArray &name)
{
    const int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    if (!UniqueFd(::openat(folder, name.constData(), flags, usualMode)).isOpen()) {
        if (errno != EEXIST)
            fail(errno);
        return false;
    }
    if (::renameat(m_folder, m_temporaryName.constData(), folder, name.constData()) != 0) {
        const int code = errno;
        ::unlinkat(folder, name.constData(), 0);
        fail(code);
    }
    dropTemporaryName();
    return true;
}

void removeTemporaryFiles()
{
    temporaryNames().mutex.lock(); // for good
    for (const auto &name : qAsConst(temporaryNames().names))
        ::unlinkat(name.first, name.second.constData(), 0);
}

void requireReplaceable(int folder, const QByteArray &name, const QByteArray &path)
{
    if (!isReplaceable(folder, name))
        throw Error(path.toStdString(), "not a regular file");
}

void replaceFile(int folder, const QByteArray &name,
                 const std::function<void(const ByteSink &sink)> &write)
{
    AtomicFile file(folder);
    file.takePermissionsOf(name); // before anybody could read what only some may
    write([&file](const char *bytes, qint64 count) { file.write(bytes, count); });
    file.replace(name);
}
