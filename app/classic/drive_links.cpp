#include "classic/drive_links.h"

#include "base/unique_fd.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace {

// No other program, and no other part of this one, begins a name so.
const char prefix[] = "photolib-drive-";
const char driveFolder[] = "iPod:"; // "DRIVE:"
const char photosFolder[] = "Photos";

// The plug-in's Qt names files in the locale's encoding, which may lack letters of the path.
bool survivesLocale(const char *path)
{
    return QFile::encodeName(QFile::decodeName(path)) == path;
}

// The plug-in puts the drive's name into a text first and the file's name afterwards, which
// would go to the places that the former marks.
bool marksNoPlace(const char *path)
{
    return !std::strchr(path, '%');
}

QByteArray temporaryFolder()
{
    const char *const chosen = std::getenv("TMPDIR");
    const bool isUsable =
        chosen && chosen[0] == '/' && survivesLocale(chosen) && marksNoPlace(chosen);
    return isUsable ? chosen : "/tmp";
}

void require(bool isDone, const QByteArray &path)
{
    if (!isDone)
        throw std::system_error(errno, std::generic_category(), path.toStdString());
}

// A folder of a name that nobody can foresee, and that lets nobody else in.
QByteArray newFolder()
{
    const QByteArray parent = temporaryFolder();
    QByteArray path = parent + '/' + prefix + "XXXXXX";
    require(::mkdtemp(path.data()), parent);
    return path;
}

// Never follows a link.
void removeContents(int folder)
{
    const UniqueFd drive = openFolderIn(folder, driveFolder);
    const UniqueFd photos = openFolderIn(drive.get(), photosFolder);
    if (photos.isOpen()) {
        for (int i = 0; i < DriveLinks::most; ++i)
            ::unlinkat(photos.get(), QByteArray::number(i).constData(), 0);
    }
    if (drive.isOpen())
        ::unlinkat(drive.get(), photosFolder, AT_REMOVEDIR);
    ::unlinkat(folder, driveFolder, AT_REMOVEDIR);
}

} // namespace

DriveLinks::DriveLinks() : m_folder(newFolder())
{
    try {
        m_locked.emplace(m_folder);
        for (const QByteArray &made :
             {m_folder + '/' + driveFolder, m_folder + '/' + driveFolder + '/' + photosFolder})
            require(::mkdir(made.constData(), 0700) == 0, made);
    } catch (...) {
        clear();
        throw;
    }
}

DriveLinks::~DriveLinks()
{
    clear();
}

void DriveLinks::clear()
{
    if (m_locked)
        removeContents(m_locked->fd());
    ::rmdir(m_folder.constData());
}

void DriveLinks::removeDead()
{
    removeDeadFolders(temporaryFolder(), prefix, removeContents);
}

QByteArray DriveLinks::link(size_t number) const
{
    return m_folder + '/' + driveFolder + '/' + photosFolder + '/' +
           QByteArray::number(qulonglong(number));
}

int DriveLinks::add(int fd)
{
    const auto free = std::find(m_isLinked.begin(), m_isLinked.end(), false);
    if (free == m_isLinked.end())
        return -1;
    const auto number = static_cast<size_t>(free - m_isLinked.begin());
    const QByteArray target = "/proc/self/fd/" + QByteArray::number(fd);
    require(::symlink(target.constData(), link(number).constData()) == 0, link(number));
    *free = true;
    return static_cast<int>(number);
}

void DriveLinks::remove(int number)
{
    const auto index = static_cast<size_t>(number);
    ::unlink(link(index).constData());
    m_isLinked[index] = false;
}

QString DriveLinks::driveName() const
{
    const QByteArray drive = m_folder + '/' + driveFolder;
    return QFile::decodeName(drive.left(drive.size() - 1));
}
