#include "devices/folder_file_system.h"

#include "devices/local_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>

namespace {

// Neither a terminal nor a pipe must catch the program or keep it waiting; with O_PATH
// nothing is opened, and openat2 refuses flags that are for opening.
int completeFlags(int flags)
{
    return flags | O_CLOEXEC | (flags & O_PATH ? 0 : O_NOCTTY | O_NONBLOCK);
}

struct FolderCloser {
    void operator()(DIR *folder) const { ::closedir(folder); }
};
using FolderStream = std::unique_ptr<DIR, FolderCloser>;

// The names of `path`, without the empty ones and ".": none for the root itself.
QList<QByteArray> namesOf(const QByteArray &path)
{
    QList<QByteArray> names;
    for (const QByteArray &name : path.split('/')) {
        if (!name.isEmpty() && name != ".")
            names.append(name);
    }
    return names;
}

int openConfined(int folder, const QByteArray &path, int flags)
{
    struct open_how how = {};
    how.flags = static_cast<quint64>(completeFlags(flags));
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
    // EAGAIN: something was renamed meanwhile, so that the kernel could not be sure.
    constexpr int mostTries = 100;
    int fd = -1;
    for (int i = 0; i < mostTries; ++i) {
        fd = static_cast<int>(::syscall(SYS_openat2, folder, path.constData(), &how, sizeof(how)));
        if (fd >= 0 || (errno != EAGAIN && errno != EINTR))
            break;
    }
    return fd;
}

bool kernelConfines(int folder)
{
    // Older kernels lack the call, and sandboxes forbid it.
    return UniqueFd(openConfined(folder, ".", O_PATH)).isOpen();
}

bool isOpenLink(const UniqueFd &fd)
{
    struct stat status = {};
    return fd.isOpen() && ::fstat(fd.get(), &status) == 0 && S_ISLNK(status.st_mode);
}

bool isLink(int folder, const QByteArray &name)
{
    return isOpenLink(
        UniqueFd(::openat(folder, name.constData(), O_PATH | O_NOFOLLOW | O_CLOEXEC)));
}

// A link is ELOOP: the system opens one with O_PATH, and where a folder is asked for it takes
// one for a file.
UniqueFd openUnlessLink(int folder, const QByteArray &name, int flags)
{
    UniqueFd fd(::openat(folder, name.constData(), flags | O_NOFOLLOW));
    const int code = errno;
    const bool isRefused =
        isOpenLink(fd) || (!fd.isOpen() && code == ENOTDIR && isLink(folder, name));
    if (isRefused)
        fd = UniqueFd();
    errno = isRefused ? ELOOP : code;
    return fd;
}

// Refuses every link, for what a link names cannot be confined between two calls.
UniqueFd openNameByName(int root, const QList<QByteArray> &names, int flags)
{
    UniqueFd folder(::openat(root, ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
    for (int i = 0; folder.isOpen() && i + 1 < names.size(); ++i)
        folder = openUnlessLink(folder.get(), names[i], O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (!folder.isOpen())
        return UniqueFd();
    return openUnlessLink(folder.get(), names.isEmpty() ? "." : names.last(), completeFlags(flags));
}

FileInfo::Type typeOf(mode_t mode)
{
    if (S_ISREG(mode))
        return FileInfo::File;
    return S_ISDIR(mode) ? FileInfo::Folder : FileInfo::Other;
}

// 0 for a time beyond the years that nanoseconds can count.
qint64 nanoseconds(const timespec &time)
{
    qint64 result = 0;
    if (__builtin_mul_overflow(qint64(time.tv_sec), qint64(1000000000), &result) ||
        __builtin_add_overflow(result, qint64(time.tv_nsec), &result))
        return 0;
    return result;
}

bool readNames(DIR *folder, QList<QByteArray> *names)
{
    errno = 0;
    while (const dirent *entry = ::readdir(folder)) {
        const QByteArray name = entry->d_name;
        if (name != "." && name != "..")
            names->append(name);
        errno = 0;
    }
    return errno == 0;
}

} // namespace

std::unique_ptr<FolderFileSystem>
FolderFileSystem::openFolder(const QByteArray &root, FileError *error, Confinement confinement)
{
    UniqueFd fd(::open(root.constData(), O_PATH | O_CLOEXEC));
    // Looking up even "." takes the permission to enter the folder.
    const UniqueFd inside(fd.isOpen() ? ::openat(fd.get(), ".", O_PATH | O_CLOEXEC) : -1);
    if (!inside.isOpen()) {
        const int code = errno;
        *error = FileError::fromErrno(code);
        if (fd.isOpen() && code == ENOTDIR)
            error->kind = FileError::WrongType;
        return nullptr;
    }
    return std::unique_ptr<FolderFileSystem>(
        new FolderFileSystem(root, std::move(fd), confinement));
}

FolderFileSystem::FolderFileSystem(QByteArray root, UniqueFd fd, Confinement confinement)
    : m_root(std::move(root)), m_fd(std::move(fd)),
      m_kernelConfines(confinement == Confinement::BestAvailable && kernelConfines(m_fd.get()))
{
}

UniqueFd FolderFileSystem::openBelow(const QByteArray &path, int flags, FileError *error) const
{
    const QList<QByteArray> names = namesOf(path);
    if (m_isClosed) {
        *error = FileError::closed();
        return UniqueFd();
    }
    if (names.contains("..")) {
        *error = {FileError::Outside, QStringLiteral("a path with \"..\" in it")};
        return UniqueFd();
    }
    UniqueFd fd;
    if (names.isEmpty() && isRemoved())
        errno = ENOENT; // the folder itself would still open
    else if (m_kernelConfines)
        fd = UniqueFd(openConfined(m_fd.get(), names.isEmpty() ? "." : names.join('/'), flags));
    else
        fd = openNameByName(m_fd.get(), names, flags);
    if (!fd.isOpen())
        *error = failure(errno);
    return fd;
}

// A folder that was removed looks empty, and each of its files missing.
FileError FolderFileSystem::failure(int code) const
{
    if (code == ENOENT && isRemoved())
        return {FileError::Disconnected, QStringLiteral("its folder was removed")};
    return FileError::fromErrno(code);
}

DeviceState FolderFileSystem::state()
{
    return m_isClosed || isRemoved() ? DeviceState::Gone : DeviceState::Ready;
}

bool FolderFileSystem::isRemoved() const
{
    struct stat status = {};
    return ::fstat(m_fd.get(), &status) == 0 && status.st_nlink == 0;
}

std::unique_ptr<DeviceFile> FolderFileSystem::open(const QByteArray &path, FileError *error)
{
    UniqueFd fd = openBelow(path, O_RDONLY, error);
    return fd.isOpen() ? LocalFile::fromFd(std::move(fd), error, &m_isClosed) : nullptr;
}

UniqueFd FolderFileSystem::openLocal(const QByteArray &path, FileError *error)
{
    UniqueFd fd = openBelow(path, O_RDONLY, error);
    return fd.isOpen() ? regularFile(std::move(fd), error) : UniqueFd();
}

bool FolderFileSystem::info(const QByteArray &path, FileInfo *info, FileError *error)
{
    const UniqueFd fd = openBelow(path, O_PATH, error);
    if (!fd.isOpen())
        return false;
    struct stat status = {};
    if (::fstat(fd.get(), &status) != 0) {
        *error = FileError::fromErrno(errno);
        return false;
    }
    info->type = typeOf(status.st_mode);
    info->size = info->type == FileInfo::File ? status.st_size : 0;
    info->modified = nanoseconds(status.st_mtim);
    info->changed = nanoseconds(status.st_ctim);
    return true;
}

// The system has one word for a file in the middle of a path and one at its end.
void FolderFileSystem::nameWrongType(const QByteArray &path, FileError *error)
{
    FileInfo found;
    FileError ignored;
    if (error->kind == FileError::NotFound && info(path, &found, &ignored))
        error->kind = FileError::WrongType;
}

bool FolderFileSystem::list(const QByteArray &path, QList<QByteArray> *names, FileError *error)
{
    UniqueFd fd = openBelow(path, O_RDONLY | O_DIRECTORY, error);
    if (!fd.isOpen()) {
        nameWrongType(path, error);
        return false;
    }
    const FolderStream folder(::fdopendir(fd.get()));
    if (folder)
        fd.release(); // the stream owns it now
    QList<QByteArray> found;
    if (!folder || !readNames(folder.get(), &found)) {
        *error = FileError::fromErrno(errno);
        return false;
    }
    std::sort(found.begin(), found.end());
    *names = found;
    return true;
}

QByteArray FolderFileSystem::id() const
{
    const std::unique_ptr<char, decltype(&std::free)> resolved(
        ::realpath(m_root.constData(), nullptr), &std::free);
    return resolved ? QByteArray(resolved.get()) : m_root;
}

QByteArray FolderFileSystem::displayName(const QByteArray &path) const
{
    const QByteArray root = m_root.endsWith('/') ? m_root.left(m_root.size() - 1) : m_root;
    return root + '/' + namesOf(path).join('/');
}
