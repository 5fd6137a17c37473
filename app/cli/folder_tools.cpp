#include "cli/folder_tools.h"

#include "cli/command_error.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>

namespace {

[[noreturn]] void fail(const QByteArray &path)
{
    if (errno == EEXIST)
        throw CommandError(path.toStdString(), "not a folder");
    throw CommandError(path.toStdString(), std::generic_category().message(errno));
}

// Whether `path` still names the folder that `fd` holds open: the process that had the
// lock may have removed it.
bool isStillAt(const UniqueFd &fd, const QByteArray &path)
{
    struct stat opened = {};
    struct stat named = {};
    return ::fstat(fd.get(), &opened) == 0 && ::stat(path.constData(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

void lock(const UniqueFd &fd)
{
    while (::flock(fd.get(), LOCK_EX) != 0 && errno == EINTR) {
    }
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
    UniqueFd fd(::open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!fd.isOpen())
        fail(path);
    return fd;
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
    for (int end = path.indexOf('/', 1); end >= 0; end = path.indexOf('/', end + 1))
        create(path.left(end), mode, check);
    create(path, mode, check);
    check(path);
}

void EnsuredFolder::create(const QByteArray &path, mode_t mode, const Check &check)
{
    if (isFolder(path))
        return;
    check(parentFolder(path));
    if (::mkdir(path.constData(), mode) == 0)
        m_created.append(path);
    else if (errno != EEXIST || !isFolder(path))
        fail(path);
}

void EnsuredFolder::removeCreated()
{
    while (!m_created.isEmpty())
        ::rmdir(m_created.takeLast().constData());
}

UniqueFd lockFolder(const QByteArray &path)
{
    for (;;) {
        UniqueFd fd = openFolder(path);
        lock(fd);
        if (isStillAt(fd, path))
            return fd;
    }
}
