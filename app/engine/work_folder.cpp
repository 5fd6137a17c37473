#include "engine/work_folder.h"

#include "base/byte_count.h"
#include "base/error.h"
#include "engine/device_bounds.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <system_error>
#include <unistd.h>

namespace {

// SQLite would apply a left-over journal of either kind to the new copy.
const char *const copyNames[] = {"Photos.sqlite", "Photos.sqlite-wal", "Photos.sqlite-shm",
                                 "Photos.sqlite-journal"};

// Stands beside the copies: without it they are somebody else's.
const char markName[] = ".photolib-work-folder";

QByteArray checkedPath(const QByteArray &path)
{
    if (QString::fromUtf8(path).toUtf8() != path)
        throw Error(path.toStdString(), "the name of a work folder must be UTF-8");
    QByteArray result = path;
    while (result.size() > 1 && result.endsWith('/'))
        result.chop(1);
    return result;
}

EnsuredFolder::Check outside(const QByteArray &deviceFolder, const QByteArray &path)
{
    return [=](const QByteArray &written) {
        if (liesIn(written, deviceFolder))
            throw Error(path.toStdString(), "the work folder must not lie in the device");
    };
}

bool isThere(int folder, const char *name)
{
    struct stat ignored = {};
    return ::fstatat(folder, name, &ignored, AT_SYMLINK_NOFOLLOW) == 0;
}

bool isMarked(int folder)
{
    struct stat status = {};
    return ::fstatat(folder, markName, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISREG(status.st_mode) && status.st_uid == ::geteuid();
}

void requireOwnCopies(int folder, const QByteArray &path)
{
    const auto found = std::find_if(std::begin(copyNames), std::end(copyNames),
                                    [folder](const char *name) { return isThere(folder, name); });
    if (found != std::end(copyNames) && !isMarked(folder))
        throw Error(path.toStdString() + '/' + *found,
                    "not a copy that photolib made; name another work folder");
}

void mark(int folder, const QByteArray &path)
{
    constexpr int flags = O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    const UniqueFd file(::openat(folder, markName, flags, 0600));
    if (!file.isOpen() || !isMarked(folder))
        throw Error(path.toStdString() + '/' + markName,
                    file.isOpen() ? "not a regular file of the user's own"
                                  : std::generic_category().message(errno));
}

void removeCopies(int folder, const QByteArray &path)
{
    for (const char *name : copyNames) {
        if (::unlinkat(folder, name, 0) != 0 && errno != ENOENT)
            throw Error(path.toStdString() + '/' + name, std::generic_category().message(errno));
    }
}

void clear(int folder)
{
    for (const char *name : copyNames)
        ::unlinkat(folder, name, 0);
    ::unlinkat(folder, markName, 0);
}

// Bytes that a user may still write. Some disks, of other computers for instance, do not tell:
// they say that they have no blocks at all.
qint64 roomIn(int folder)
{
    struct statvfs status = {};
    qint64 room = 0;
    if (::fstatvfs(folder, &status) != 0 || status.f_blocks == 0 ||
        __builtin_mul_overflow(status.f_bavail, status.f_frsize, &room))
        return std::numeric_limits<qint64>::max();
    return room;
}

} // namespace

WorkFolder::WorkFolder(const QByteArray &path, const QByteArray &deviceFolder, Origin origin,
                       const std::function<void()> &beforeWait)
    : m_path(checkedPath(path)), m_folder(m_path, outside(deviceFolder, m_path), beforeWait)
{
    if (origin == Origin::Named)
        requireOwnCopies(m_folder.fd(), m_path);
    removeCopies(m_folder.fd(), m_path);
    mark(m_folder.fd(), m_path);
}

WorkFolder::~WorkFolder()
{
    clear(m_folder.fd());
}

void WorkFolder::removeDead(const QByteArray &workFolders)
{
    removeDeadFolders(workFolders, QByteArray(), clear);
}

void WorkFolder::requireRoom(qint64 bytes) const
{
    const qint64 room = roomIn(m_folder.fd());
    if (bytes <= room)
        return;
    const QString amounts = QStringLiteral(" (the database takes %1, and %2 are free)")
                                .arg(byteCountText(bytes), byteCountText(room));
    throw Error(m_path.toStdString(),
                std::generic_category().message(ENOSPC) + amounts.toStdString());
}
