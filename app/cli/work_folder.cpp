#include "cli/work_folder.h"

#include "cli/cache_folder.h"
#include "cli/command_error.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <system_error>

namespace {

// SQLite would apply a left-over journal of either kind to the new copy.
const char *const copyNames[] = {"Photos.sqlite", "Photos.sqlite-wal", "Photos.sqlite-shm",
                                 "Photos.sqlite-journal"};

QByteArray checkedPath(const QByteArray &path)
{
    if (QString::fromUtf8(path).toUtf8() != path)
        throw CommandError(path.toStdString(), "the name of a work folder must be UTF-8");
    QByteArray result = path;
    while (result.size() > 1 && result.endsWith('/'))
        result.chop(1);
    return result;
}

void refuseInside(const QByteArray &path, const QByteArray &deviceFolder)
{
    if (liesIn(path, deviceFolder))
        throw CommandError(path.toStdString(), "the work folder must not lie in the device");
}

void removeCopies(const UniqueFd &folder, const QByteArray &path)
{
    for (const char *name : copyNames) {
        if (::unlinkat(folder.get(), name, 0) != 0 && errno != ENOENT)
            throw CommandError(path.toStdString() + '/' + name,
                               std::generic_category().message(errno));
    }
}

} // namespace

WorkFolder::WorkFolder(const QByteArray &path, const QByteArray &deviceFolder)
    : m_path(checkedPath(path)), m_folder(m_path)
{
    refuseInside(m_path, deviceFolder);
    m_lock = lockFolder(m_path);
    removeCopies(m_lock, m_path);
}

WorkFolder::~WorkFolder()
{
    if (m_isKept)
        return;
    m_lock = UniqueFd(::open(m_path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!m_lock.isOpen())
        return;
    // Another program that holds the lock has removed these copies and made its own.
    if (::flock(m_lock.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        return;
    for (const char *name : copyNames)
        ::unlinkat(m_lock.get(), name, 0);
}

void WorkFolder::keep()
{
    m_isKept = true;
    m_folder.keep();
}
