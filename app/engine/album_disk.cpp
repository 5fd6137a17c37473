#include "engine/album_disk.h"

#include "base/atomic_file.h"
#include "base/cancel_token.h"
#include "base/error.h"
#include "base/folders.h"
#include "engine/export_folder.h"

#include <QList>
#include <QRandomGenerator>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <system_error>
#include <vector>

namespace {

constexpr std::size_t blockSize = 1 << 18;
constexpr qint64 second = 1000000000; // nanoseconds

[[noreturn]] void fail(int code)
{
    throw std::system_error(code, std::generic_category());
}

void check(int result)
{
    if (result < 0)
        fail(errno);
}

QByteArray folderOf(const QByteArray &path)
{
    return path.left(qMax(path.lastIndexOf('/'), 0));
}

QByteArray nameOf(const QByteArray &path)
{
    return path.mid(path.lastIndexOf('/') + 1);
}

// What a link at `path` says to lead to `target`.
QByteArray linkText(const QByteArray &path, const QByteArray &target)
{
    return QByteArray("../").repeated(path.count('/')) + target;
}

// Name by name; not open, with the cause in errno, where one is a link or no folder. A record may
// have come with a disk of somebody else's, and name anything.
UniqueFd openBelow(int root, const QByteArray &path)
{
    UniqueFd folder = openFolderIn(root, ".");
    if (path.isEmpty())
        return folder;
    for (const QByteArray &name : path.split('/')) {
        if (!folder.isOpen())
            break;
        const bool leadsOut = name == ".." || name.isEmpty();
        folder = leadsOut ? UniqueFd() : openFolderIn(folder.get(), name.constData());
        errno = leadsOut ? ENOENT : errno;
    }
    return folder;
}

// Whether a name is not there, or not below the folder: a link leads to it.
bool isAbsence(int code)
{
    return code == ENOENT || code == ENOTDIR || code == ELOOP;
}

qint64 modified(const struct stat &status)
{
    return status.st_mtim.tv_sec * second + status.st_mtim.tv_nsec;
}

// When its content, times or names last changed: nobody can set that.
qint64 touched(const struct stat &status)
{
    return status.st_ctim.tv_sec * second + status.st_ctim.tv_nsec;
}

bool isSameFile(const struct stat &one, const struct stat &other)
{
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

// Memory cards know every other second.
bool haveSameTime(const struct stat &one, const struct stat &other)
{
    return qAbs(modified(one) - modified(other)) <= 2 * second;
}

// Fewer bytes than there is room for only at the end of the file.
std::size_t readBlock(int file, std::vector<char> &block)
{
    std::size_t length = 0;
    while (length < block.size()) {
        const ssize_t count = ::read(file, block.data() + length, block.size() - length);
        if (count < 0 && errno == EINTR)
            continue;
        check(static_cast<int>(count));
        if (count == 0)
            break;
        length += std::size_t(count);
    }
    return length;
}

struct CloseFolder {
    void operator()(DIR *folder) const { ::closedir(folder); }
};

QByteArray scrapName()
{
    return ".photolib-" + QByteArray::number(QRandomGenerator::system()->generate64(), 16) +
           ".part";
}

bool isScrap(const QByteArray &name)
{
    return name.startsWith(".photolib-") && name.endsWith(".part");
}

// The folder in which the program may leave what is not a photo.
UniqueFd openForTrials(int root)
{
    UniqueFd folder = openFolderIn(root, ".photolib");
    return folder.isOpen() ? std::move(folder) : openFolderIn(root, ".");
}

// An error of the system, or 0. Always of one name: what a program that was killed has left is
// removed with it.
int tryLink(int folder)
{
    constexpr char name[] = ".photolib-trial.part";
    ::unlinkat(folder, name, 0);
    if (::symlinkat("x", folder, name) != 0)
        return errno;
    ::unlinkat(folder, name, 0);
    return 0;
}

// An error of the system, or 0.
int tryHardLink(int folder)
{
    constexpr mode_t mode = S_IRUSR | S_IWUSR;
    const QByteArray name = scrapName();
    const QByteArray otherName = scrapName();
    const int flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
    const UniqueFd file(::openat(folder, name.constData(), flags, mode));
    if (!file.isOpen())
        return errno;
    int code = 0;
    if (::linkat(folder, name.constData(), folder, otherName.constData(), 0) == 0)
        ::unlinkat(folder, otherName.constData(), 0);
    else
        code = errno;
    ::unlinkat(folder, name.constData(), 0);
    return code;
}

} // namespace

void requireLinks(RecordedAlbumFile::Kind kind, int exportFolder)
{
    if (kind == RecordedAlbumFile::Copy)
        return;
    const UniqueFd folder = openForTrials(exportFolder);
    const bool isHard = kind == RecordedAlbumFile::HardLink;
    const int code = isHard ? tryHardLink(folder.get()) : tryLink(folder.get());
    if (code == EPERM || code == EOPNOTSUPP || code == ENOSYS)
        throw Error("Albums", "this disk takes no links; use --albums copy");
}

AlbumDisk::AlbumDisk(int exportFolder, const CancelToken &cancel,
                     std::function<void(qint64)> copied)
    : m_root(exportFolder), m_cancel(cancel), m_copied(std::move(copied))
{
}

// Nothing where there is nothing.
std::optional<struct stat> AlbumDisk::status(const QByteArray &path) const
{
    struct stat result = {};
    const UniqueFd folder = openBelow(m_root, folderOf(path));
    const int flags = AT_SYMLINK_NOFOLLOW;
    if (folder.isOpen() && ::fstatat(folder.get(), nameOf(path).constData(), &result, flags) == 0)
        return result;
    if (!isAbsence(errno))
        fail(errno);
    return std::nullopt;
}

bool AlbumDisk::isThere(const QByteArray &path) const
{
    return status(path).has_value();
}

bool AlbumDisk::isLinkTo(const QByteArray &path, const QByteArray &target) const
{
    std::array<char, PATH_MAX> text;
    const UniqueFd folder = openBelow(m_root, folderOf(path));
    const ssize_t length = folder.isOpen() ? ::readlinkat(folder.get(), nameOf(path).constData(),
                                                          text.data(), text.size())
                                           : -1;
    return length >= 0 &&
           QByteArray(text.data(), static_cast<int>(length)) == linkText(path, target);
}

UniqueFd AlbumDisk::openFile(const QByteArray &path) const
{
    const UniqueFd folder = openBelow(m_root, folderOf(path));
    check(folder.get());
    // A pipe of that name would keep it waiting.
    UniqueFd file(::openat(folder.get(), nameOf(path).constData(),
                           O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    check(file.get());
    return file;
}

bool AlbumDisk::haveSameContent(const QByteArray &path, const QByteArray &other) const
{
    const UniqueFd file = openFile(path);
    const UniqueFd otherFile = openFile(other);
    std::vector<char> block(blockSize);
    std::vector<char> otherBlock(blockSize);
    std::size_t length = 0;
    do {
        requireGoingOn();
        length = readBlock(file.get(), block);
        if (length != readBlock(otherFile.get(), otherBlock) ||
            !std::equal(block.begin(), block.begin() + std::ptrdiff_t(length), otherBlock.begin()))
            return false;
    } while (length == blockSize);
    return true;
}

bool AlbumDisk::isCopy(const QByteArray &path, const QByteArray &target, qint64 rightAt) const
{
    const std::optional<struct stat> copy = status(path);
    const std::optional<struct stat> source = status(target);
    if (!copy || !source || !S_ISREG(copy->st_mode) || !S_ISREG(source->st_mode))
        return false;
    if (copy->st_size != source->st_size)
        return false;
    // The time of the last change says little: it is that of the photo, whatever its version.
    const bool isUntouched = touched(*copy) < rightAt && touched(*source) < rightAt;
    return (isUntouched && haveSameTime(*copy, *source)) || haveSameContent(path, target);
}

bool AlbumDisk::holds(const RecordedAlbumFile &file, qint64 rightAt) const
{
    if (file.kind == RecordedAlbumFile::Link)
        return isLinkTo(file.path, file.target);
    const std::optional<struct stat> entry = status(file.path);
    const std::optional<struct stat> source = status(file.target);
    const bool isOneFile = entry && source && isSameFile(*entry, *source);
    if (file.kind == RecordedAlbumFile::HardLink)
        return isOneFile && S_ISREG(entry->st_mode);
    // Some programs make one file of files with the same content.
    return (rightAt != 0 || !isOneFile) && isCopy(file.path, file.target, rightAt);
}

bool AlbumDisk::isRemovable(const RecordedAlbumFile &file, qint64 rightAt) const
{
    if (file.kind == RecordedAlbumFile::Link)
        return isLinkTo(file.path, file.target);
    const std::optional<struct stat> entry = status(file.path);
    if (!entry || !S_ISREG(entry->st_mode))
        return false;
    if (file.kind == RecordedAlbumFile::HardLink)
        return entry->st_nlink > 1; // the last name may be the only copy that a person has kept
    return isCopy(file.path, file.target, rightAt);
}

bool AlbumDisk::hasContent(const QByteArray &path, const QByteArray &sha256) const
{
    const std::optional<struct stat> entry = status(path);
    return entry && S_ISREG(entry->st_mode) &&
           sha256OfFile(openFile(path).get(), m_cancel) == sha256;
}

void AlbumDisk::makeFolder(const QByteArray &path) const
{
    UniqueFd folder = openFolderIn(m_root, ".");
    check(folder.get());
    for (const QByteArray &name : path.split('/')) {
        UniqueFd next = openFolderIn(folder.get(), name.constData());
        if (!next.isOpen() && errno == ENOENT) {
            if (::mkdirat(folder.get(), name.constData(), S_IRWXU | S_IRWXG | S_IRWXO) != 0 &&
                errno != EEXIST)
                fail(errno);
            next = openFolderIn(folder.get(), name.constData());
        }
        check(next.get());
        folder = std::move(next);
    }
}

bool AlbumDisk::make(const RecordedAlbumFile &file) const
{
    if (file.kind == RecordedAlbumFile::Copy)
        return copy(file);
    const UniqueFd folder = openBelow(m_root, folderOf(file.path));
    check(folder.get());
    const QByteArray name = nameOf(file.path);
    int result = 0;
    if (file.kind == RecordedAlbumFile::Link) {
        result = ::symlinkat(linkText(file.path, file.target).constData(), folder.get(),
                             name.constData());
    } else {
        const UniqueFd source = openBelow(m_root, folderOf(file.target));
        check(source.get());
        result = ::linkat(source.get(), nameOf(file.target).constData(), folder.get(),
                          name.constData(), 0);
    }
    if (result != 0 && errno != EEXIST)
        fail(errno);
    return result == 0;
}

bool AlbumDisk::copy(const RecordedAlbumFile &file) const
{
    const UniqueFd source = openFile(file.target);
    struct stat status = {};
    check(::fstat(source.get(), &status));
    if (!S_ISREG(status.st_mode))
        fail(EINVAL);
    const UniqueFd folder = openBelow(m_root, folderOf(file.path));
    check(folder.get());
    AtomicFile copy(folder.get());
    std::vector<char> block(blockSize);
    std::size_t length = 0;
    do {
        requireGoingOn();
        length = readBlock(source.get(), block);
        copy.write(block.data(), qint64(length));
        m_copied(qint64(length));
    } while (length == blockSize);
    copy.setModified(modified(status));
    return copy.giveName(nameOf(file.path));
}

void AlbumDisk::removeFile(const QByteArray &path) const
{
    const UniqueFd folder = openBelow(m_root, folderOf(path));
    check(folder.get());
    check(::unlinkat(folder.get(), nameOf(path).constData(), 0));
}

QByteArray AlbumDisk::setAside(const QByteArray &path) const
{
    const UniqueFd folder = openBelow(m_root, folderOf(path));
    check(folder.get());
    const QByteArray name = scrapName();
    check(::renameat(folder.get(), nameOf(path).constData(), folder.get(), name.constData()));
    return folderOf(path) + '/' + name;
}

bool AlbumDisk::takeBack(const QByteArray &aside, const QByteArray &path) const
{
    const UniqueFd from = openBelow(m_root, folderOf(aside));
    const UniqueFd to = openBelow(m_root, folderOf(path));
    return from.isOpen() && to.isOpen() &&
           ::renameat2(from.get(), nameOf(aside).constData(), to.get(), nameOf(path).constData(),
                       RENAME_NOREPLACE) == 0;
}

void AlbumDisk::removeScraps(const QByteArray &path) const
{
    UniqueFd folder = openBelow(m_root, path);
    const std::unique_ptr<DIR, CloseFolder> entries(folder.isOpen() ? ::fdopendir(folder.get())
                                                                    : nullptr);
    if (!entries)
        return;
    const int fd = folder.release(); // which `entries` closes
    while (const dirent *const entry = ::readdir(entries.get())) {
        if (isScrap(entry->d_name))
            ::unlinkat(fd, entry->d_name, 0);
    }
}

void AlbumDisk::removeEmptyFolders(const QByteArray &path) const
{
    for (QByteArray folder = path; !folder.isEmpty(); folder = folderOf(folder)) {
        const UniqueFd parent = openBelow(m_root, folderOf(folder));
        const QByteArray name = nameOf(folder);
        if (!parent.isOpen() || ::unlinkat(parent.get(), name.constData(), AT_REMOVEDIR) != 0)
            return;
    }
}

void AlbumDisk::requireGoingOn() const
{
    if (m_cancel.isCancelled())
        throw Error(Error::Cancelled, "cancelled");
}
