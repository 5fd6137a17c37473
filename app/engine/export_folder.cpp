#include "engine/export_folder.h"

#include "base/error.h"
#include "base/file_names.h"
#include "base/folders.h"

#include <fcntl.h>
#include <sys/stat.h>

ExportFolder::ExportFolder(const QByteArray &path) : m_path(path), m_fd(openFolder(path))
{
    FileError error;
    QList<QByteArray> names;
    // Name by name, since a link in the folder is nobody's photo.
    m_files = FolderFileSystem::openFolder(path, &error, FolderFileSystem::Confinement::NameByName);
    if (!m_files || !m_files->list("", &names, &error))
        throw Error(path.toStdString(), error.text.toStdString());
    for (const QByteArray &name : names)
        m_holding.insert(comparedName(name), name);
}

int ExportFolder::firstUnclaimed(const QByteArray &name)
{
    int &number = m_firstUnclaimed[comparedName(name)];
    number = qMax(number, 1);
    while (isClaimed(numberedName(name, number)))
        ++number;
    return number;
}

bool ExportFolder::isClaimed(const QByteArray &name) const
{
    return m_claimed.count(comparedName(name)) != 0;
}

void ExportFolder::claim(const QByteArray &name)
{
    m_claimed.insert(comparedName(name));
}

QList<QByteArray> ExportFolder::holding(const QByteArray &name) const
{
    QList<QByteArray> names = m_holding.values(comparedName(name));
    struct stat ignored = {};
    const bool isThere =
        ::fstatat(m_fd.get(), name.constData(), &ignored, AT_SYMLINK_NOFOLLOW) == 0;
    if (isThere && !names.contains(name))
        names.append(name);
    return names;
}

bool ExportFolder::info(const QByteArray &name, FileInfo *info)
{
    FileError ignored;
    return m_files->info(name, info, &ignored) && info->type == FileInfo::File;
}

std::unique_ptr<DeviceFile> ExportFolder::open(const QByteArray &name)
{
    FileError ignored;
    return m_files->open(name, &ignored);
}
