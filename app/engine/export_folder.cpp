#include "engine/export_folder.h"

#include "base/cancel_token.h"
#include "base/error.h"
#include "base/folders.h"
#include "base/sha256.h"

#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <system_error>
#include <unistd.h>

namespace {

constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
constexpr mode_t usualMode = 0777; // less what the umask takes

[[noreturn]] void fail(int code)
{
    throw std::system_error(code, std::generic_category());
}

// Empty for a file of the folder itself.
QByteArray folderOf(const QByteArray &path)
{
    return path.left(qMax(path.lastIndexOf('/'), 0));
}

QByteArray nameOf(const QByteArray &path)
{
    return path.mid(path.lastIndexOf('/') + 1);
}

bool storeFolder(int folder)
{
    return ::fsync(folder) == 0 || errno == EINVAL; // of a disk that cannot be told to
}

// A new folder must outlast a loss of power like the files that it is for.
UniqueFd openFolderAt(int parent, const QByteArray &name, bool isMade)
{
    UniqueFd folder(::openat(parent, name.constData(), folderFlags));
    if (folder.isOpen() || errno != ENOENT || !isMade)
        return folder;
    const bool isNew = ::mkdirat(parent, name.constData(), usualMode) == 0;
    if (isNew ? !storeFolder(parent) : errno != EEXIST)
        return UniqueFd();
    return UniqueFd(::openat(parent, name.constData(), folderFlags));
}

ExportFolder::Entry entryOf(ExportFolder::Kind kind)
{
    ExportFolder::Entry entry;
    entry.kind = kind;
    return entry;
}

qint64 nanoseconds(const timespec &time)
{
    constexpr qint64 second = 1000000000;
    qint64 whole = 0; // times that no clock shows overflow
    if (__builtin_mul_overflow(time.tv_sec, second, &whole) ||
        __builtin_add_overflow(whole, time.tv_nsec, &whole))
        return std::numeric_limits<qint64>::max();
    return whole;
}

} // namespace

bool ExportFolder::Entry::isSameAs(const Entry &other) const
{
    return kind == other.kind && size == other.size && disk == other.disk &&
           number == other.number && modified == other.modified && changed == other.changed;
}

ExportFolder::ExportFolder(const QByteArray &path) : m_path(path), m_fd(openFolder(path)) {}

// Leaves errno set when it returns false.
bool ExportFolder::enter(const QByteArray &folder, bool isMade)
{
    if (folder == m_enteredPath && (m_entered.isOpen() || folder.isEmpty()))
        return true;
    m_enteredPath.clear();
    m_entered = UniqueFd();
    UniqueFd current;
    if (!folder.isEmpty()) {
        for (const QByteArray &name : folder.split('/')) {
            current = openFolderAt(current.isOpen() ? current.get() : fd(), name, isMade);
            if (!current.isOpen())
                return false;
        }
    }
    m_enteredPath = folder;
    m_entered = std::move(current);
    return true;
}

ExportFolder::Entry ExportFolder::entry(const QByteArray &path)
{
    if (!m_fd.isOpen())
        return {};
    if (!enter(folderOf(path), false))
        return entryOf(errno == ENOENT ? Kind::Nothing : Kind::Blocked);
    struct stat status = {};
    const int folder = m_entered.isOpen() ? m_entered.get() : fd();
    if (::fstatat(folder, nameOf(path).constData(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return entryOf(errno == ENOENT ? Kind::Nothing : Kind::Blocked);
    if (!S_ISREG(status.st_mode))
        return entryOf(Kind::Other);
    return {Kind::File,
            status.st_size,
            status.st_dev,
            status.st_ino,
            nanoseconds(status.st_mtim),
            nanoseconds(status.st_ctim)};
}

UniqueFd ExportFolder::open(const QByteArray &path)
{
    if (!m_fd.isOpen() || !enter(folderOf(path), false))
        return UniqueFd();
    const int folder = m_entered.isOpen() ? m_entered.get() : fd();
    UniqueFd file(
        ::openat(folder, nameOf(path).constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status = {};
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return UniqueFd();
    return file;
}

int ExportFolder::folderFor(const QByteArray &path)
{
    if (!enter(folderOf(path), true))
        fail(errno);
    return m_entered.isOpen() ? m_entered.get() : fd();
}

void ExportFolder::storeNames(const QByteArray &path)
{
    if (!storeFolder(folderFor(path)))
        fail(errno);
}

void ExportFolder::remove(const QByteArray &path)
{
    if (!enter(folderOf(path), false))
        return;
    const int folder = m_entered.isOpen() ? m_entered.get() : fd();
    if (::unlinkat(folder, nameOf(path).constData(), 0) != 0 && errno != ENOENT)
        fail(errno);
}

int ExportFolder::longestName() const
{
    constexpr int usual = 255;
    struct statvfs status = {};
    if (!m_fd.isOpen() || ::fstatvfs(fd(), &status) != 0 || status.f_namemax == 0)
        return usual;
    return static_cast<int>(qMin<unsigned long>(status.f_namemax, usual));
}

// Some disks, of other computers for instance, do not tell: they say that they have no blocks.
qint64 ExportFolder::room() const
{
    struct statvfs status = {};
    qint64 room = 0;
    if (!m_fd.isOpen() || ::fstatvfs(fd(), &status) != 0 || status.f_blocks == 0 ||
        __builtin_mul_overflow(status.f_bavail, status.f_frsize, &room))
        return std::numeric_limits<qint64>::max();
    return room;
}

QByteArray sha256OfFile(int file, const CancelToken &cancel)
{
    constexpr int blockSize = 256 << 10;
    QByteArray block(blockSize, Qt::Uninitialized);
    Sha256 hash;
    for (;;) {
        if (cancel.isCancelled())
            throw Error(Error::Cancelled, "interrupted");
        const ssize_t count = ::read(file, block.data(), static_cast<size_t>(block.size()));
        if (count == 0)
            return hash.takeHex();
        if (count < 0 && errno != EINTR)
            return QByteArray();
        if (count > 0)
            hash.add(block.constData(), count);
    }
}
