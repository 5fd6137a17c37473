#include "base/folders.h"

#include "base/error.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace {

constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
constexpr int ownFolderFlags = folderFlags | O_NOFOLLOW;

[[noreturn]] void fail(const QByteArray &path)
{
    if (errno == EEXIST)
        throw Error(path.toStdString(), "not a folder");
    throw Error(path.toStdString(), std::generic_category().message(errno));
}

// The type bits of what `path` names itself; 0 when it names nothing.
mode_t typeOf(const QByteArray &path)
{
    struct stat status = {};
    return ::lstat(path.constData(), &status) == 0 ? status.st_mode & S_IFMT : 0;
}

// A folder that a link leads to, or that somebody else made, is not the one that is meant:
// what is removed from it could be anything. Not open when it is not there.
UniqueFd openOwnFolder(const QByteArray &path)
{
    UniqueFd fd(::open(path.constData(), ownFolderFlags));
    const int code = errno;
    if (!fd.isOpen() && code == ENOENT) // even if another process has made it by now
        return fd;
    const mode_t type = fd.isOpen() ? S_IFDIR : typeOf(path);
    if (type == 0 && code == ENOTDIR) // a file may stand above it
        return fd;
    if (type == S_IFLNK)
        throw Error(path.toStdString(), "a link, where a folder itself is needed");
    errno = code == ENOTDIR ? EEXIST : code;
    struct stat status = {};
    if (!fd.isOpen() || ::fstat(fd.get(), &status) != 0)
        fail(path);
    if (status.st_uid != ::geteuid())
        throw Error(path.toStdString(), "a folder of another user");
    return fd;
}

// Waits for the lock; a file system without locks is used without one.
void lock(const UniqueFd &fd, const std::function<void()> &beforeWait)
{
    if (::flock(fd.get(), LOCK_EX | LOCK_NB) == 0)
        return;
    if (errno == EWOULDBLOCK)
        beforeWait();
    while (::flock(fd.get(), LOCK_EX) != 0 && errno == EINTR) {
    }
}

// None when the folder is not there, or not any more when its lock is free: the process that had
// the lock may have removed it.
UniqueFd lockedFolder(const QByteArray &path, const std::function<void()> &beforeWait)
{
    UniqueFd fd = openOwnFolder(path);
    if (fd.isOpen())
        lock(fd, beforeWait);
    return isStillAt(fd.get(), path) ? std::move(fd) : UniqueFd();
}

struct CloseFolder {
    void operator()(DIR *folder) const { ::closedir(folder); }
};

// What lives is locked. Where there are no locks nothing can be told from what lives.
bool isDead(int folder)
{
    struct stat status = {};
    return ::fstat(folder, &status) == 0 && status.st_uid == ::geteuid() &&
           ::flock(folder, LOCK_EX | LOCK_NB) == 0;
}

} // namespace

bool isFolder(const QByteArray &path)
{
    struct stat status = {};
    return ::stat(path.constData(), &status) == 0 && S_ISDIR(status.st_mode);
}

QByteArray parentFolder(const QByteArray &path)
{
    const int slash = path.lastIndexOf('/');
    if (slash < 0)
        return ".";
    return slash == 0 ? QByteArray("/") : path.left(slash);
}

UniqueFd openFolder(const QByteArray &path)
{
    UniqueFd fd(::open(path.constData(), folderFlags));
    if (!fd.isOpen())
        fail(path);
    return fd;
}

bool isStillAt(int fd, const QByteArray &path)
{
    struct stat opened = {};
    struct stat named = {};
    return ::fstat(fd, &opened) == 0 && ::lstat(path.constData(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

void requireOwnFolder(const QByteArray &path)
{
    openOwnFolder(path);
}

EnsuredFolder::EnsuredFolder(const QByteArray &path, mode_t mode, const Check &check)
{
    try {
        createAll(path, mode, check);
    } catch (...) {
        removeCreated();
        throw;
    }
}

EnsuredFolder::~EnsuredFolder()
{
    removeCreated();
}

void EnsuredFolder::createAll(const QByteArray &path, mode_t mode, const Check &check)
{
    // Another program may remove a parent that it has created, and so may do again.
    constexpr int mostTries = 100;
    for (int tries = 1; !createEach(path, mode, check); ++tries) {
        if (tries == mostTries)
            fail(path);
    }
    check(path);
}

bool EnsuredFolder::createEach(const QByteArray &path, mode_t mode, const Check &check)
{
    for (int end = path.indexOf('/', 1); end >= 0; end = path.indexOf('/', end + 1)) {
        if (!create(path.left(end), mode, check))
            return false;
    }
    return create(path, mode, check);
}

// False when the parent is gone, or the folder itself that another program had made: `errno` says
// so, too.
bool EnsuredFolder::create(const QByteArray &path, mode_t mode, const Check &check)
{
    if (isFolder(path))
        return true;
    check(parentFolder(path));
    if (::mkdir(path.constData(), mode) == 0) {
        m_created.append(path);
        return true;
    }
    if (errno == EEXIST && isFolder(path))
        return true;
    if (errno != ENOENT)
        fail(path);
    return false;
}

void EnsuredFolder::store() const
{
    for (const QByteArray &path : m_created) {
        const UniqueFd parent(::open(parentFolder(path).constData(), folderFlags));
        ::fsync(parent.get()); // nothing else can be done where it cannot be opened or stored
    }
}

void EnsuredFolder::removeCreated()
{
    while (!m_created.isEmpty())
        ::rmdir(m_created.takeLast().constData());
}

LockedFolder::LockedFolder(const QByteArray &path, const EnsuredFolder::Check &check,
                           const std::function<void()> &beforeWait)
    : m_path(path)
{
    bool hasWaited = false;
    const auto beforeFirstWait = [&] {
        if (!std::exchange(hasWaited, true))
            beforeWait();
    };
    while (!m_lock.isOpen()) {
        m_folder.emplace(path, 0700, check);
        m_lock = lockedFolder(path, beforeFirstWait);
    }
}

UniqueFd openFolderIn(int parent, const char *name)
{
    return UniqueFd(::openat(parent, name, ownFolderFlags));
}

void removeDeadFolders(const QByteArray &parent, const QByteArray &prefix,
                       const std::function<void(int)> &clear)
{
    const std::unique_ptr<DIR, CloseFolder> entries(::opendir(parent.constData()));
    if (!entries)
        return;
    const int parentFd = ::dirfd(entries.get());
    while (const dirent *const entry = ::readdir(entries.get())) {
        const QByteArray name = entry->d_name;
        if (!name.startsWith(prefix) || name == "." || name == "..")
            continue;
        const UniqueFd folder = openFolderIn(parentFd, name.constData());
        if (!folder.isOpen() || !isDead(folder.get()))
            continue;
        clear(folder.get());
        ::unlinkat(parentFd, name.constData(), AT_REMOVEDIR);
    }
}
