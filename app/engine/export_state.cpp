#include "engine/export_state.h"

#include "base/cancel_token.h"
#include "base/error.h"
#include "base/folders.h"

#include <cerrno>
#include <chrono>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <utility>

namespace {

constexpr std::chrono::milliseconds lockInterval(100);
constexpr int mostTries = 100;

[[noreturn]] void fail(const QByteArray &path, int code)
{
    struct stat status = {};
    const bool isLink = ::lstat(path.constData(), &status) == 0 && S_ISLNK(status.st_mode);
    if (isLink)
        throw Error(path.toStdString(), "a link, where a folder itself is needed");
    throw Error(path.toStdString(), code == ENOTDIR ? std::string("not a folder")
                                                    : std::generic_category().message(code));
}

// Not open when it is not there.
UniqueFd opened(const QByteArray &path)
{
    UniqueFd fd(::open(path.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!fd.isOpen() && errno != ENOENT)
        fail(path, errno);
    return fd;
}

// False when it is there.
bool make(const QByteArray &path)
{
    if (::mkdir(path.constData(), 0777) == 0)
        return true;
    if (errno != EEXIST)
        fail(path, errno);
    return false;
}

bool isTaken(int fd)
{
    int result = 0;
    do {
        result = ::flock(fd, LOCK_EX | LOCK_NB);
    } while (result != 0 && errno == EINTR);
    return result != 0 && errno == EWOULDBLOCK;
}

// Nothing of the system's waits for a lock and a cancel at a time.
void lock(int fd, const CancelToken &cancel, const std::function<void()> &beforeWait)
{
    while (isTaken(fd)) {
        beforeWait();
        if (cancel.isCancelled())
            throw Error(Error::Cancelled, "interrupted: nothing was copied");
        std::this_thread::sleep_for(lockInterval);
    }
}

bool isLocked(int fd)
{
    return ::flock(fd, LOCK_EX | LOCK_NB) == 0; // once more changes nothing
}

struct CloseFolder {
    void operator()(DIR *folder) const { ::closedir(folder); }
};

bool isPart(int folder, const QByteArray &name)
{
    struct stat status = {};
    return name.startsWith(".photolib-") && name.endsWith(".part") &&
           ::fstatat(folder, name.constData(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISREG(status.st_mode);
}

void removeParts(int folder)
{
    UniqueFd fd(::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const std::unique_ptr<DIR, CloseFolder> entries(::fdopendir(fd.get()));
    if (!entries)
        return;
    fd.release();
    while (const dirent *const entry = ::readdir(entries.get())) {
        if (isPart(folder, entry->d_name))
            ::unlinkat(folder, entry->d_name, 0);
    }
}

} // namespace

QByteArray exportStatePath(const QByteArray &exportFolder)
{
    return exportFolder + (exportFolder.endsWith('/') ? "" : "/") + exportStateName;
}

ExportState::ExportState(const QByteArray &exportFolder, const CancelToken &cancel,
                         const std::function<void()> &beforeWait)
    : m_path(exportStatePath(exportFolder))
{
    bool hasWaited = false;
    const auto beforeFirstWait = [&] {
        if (!std::exchange(hasWaited, true))
            beforeWait();
    };
    for (int tries = 0; !m_fd.isOpen(); ++tries) {
        if (tries == mostTries)
            throw Error(m_path.toStdString(), "is removed again and again");
        m_isNew = make(m_path);
        UniqueFd fd = opened(m_path);
        if (fd.isOpen())
            lock(fd.get(), cancel, beforeFirstWait);
        if (isStillAt(fd.get(), m_path)) // the exporter that had it may have removed it
            m_fd = std::move(fd);
    }
    // Where there are no locks, nothing tells them from those of a living exporter.
    if (isLocked(m_fd.get()))
        removeParts(m_fd.get());
}

ExportState::~ExportState()
{
    if (m_isNew && isStillAt(m_fd.get(), m_path))
        ::rmdir(m_path.constData());
}
