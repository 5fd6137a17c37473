#include "support/device_folder.h"

#include <gtest/gtest.h>

#include <QDir>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <dirent.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sys/stat.h>
#include <unistd.h>

namespace {

void addNames(const QByteArray &folder, QList<QByteArray> *names)
{
    DIR *const stream = ::opendir(folder.constData());
    if (!stream)
        return;
    while (const dirent *entry = ::readdir(stream)) {
        const QByteArray name = entry->d_name;
        if (name == "." || name == "..")
            continue;
        names->append(folder + '/' + name);
        if (entry->d_type == DT_DIR)
            addNames(folder + '/' + name, names);
    }
    ::closedir(stream);
}

} // namespace

ScratchFolder::ScratchFolder() : m_root(QDir::tempPath().toUtf8() + "/photolib-test-XXXXXX")
{
    EXPECT_TRUE(::mkdtemp(m_root.data())) << m_root.constData();
}

ScratchFolder::~ScratchFolder()
{
    // Not by Qt, which knows no names that are not in the locale's encoding.
    std::error_code ignored;
    std::filesystem::remove_all(m_root.toStdString(), ignored);
}

void ScratchFolder::makeFolder(const QByteArray &relative) const
{
    for (int end = relative.indexOf('/');; end = relative.indexOf('/', end + 1)) {
        const QByteArray folder = path(relative.left(end < 0 ? relative.size() : end));
        const bool isMade = ::mkdir(folder.constData(), 0777) == 0 || errno == EEXIST;
        ASSERT_TRUE(isMade) << folder.constData();
        if (end < 0)
            return;
    }
}

void ScratchFolder::write(const QByteArray &relative, const QByteArray &bytes) const
{
    const int slash = relative.lastIndexOf('/');
    if (slash > 0)
        makeFolder(relative.left(slash));
    std::ofstream file(path(relative).constData(), std::ios::binary);
    file.write(bytes.constData(), bytes.size());
    ASSERT_TRUE(file.flush()) << path(relative).constData();
}

void ScratchFolder::writeSparse(const QByteArray &relative, qint64 size) const
{
    write(relative, QByteArray());
    ASSERT_EQ(0, ::truncate(path(relative).constData(), size));
}

qint64 ScratchFolder::writeEndless(const QByteArray &relative) const
{
    const std::filesystem::space_info disk = std::filesystem::space(m_root.toStdString());
    const auto size = static_cast<qint64>(disk.available / 2);
    writeSparse(relative, size);
    return size;
}

void ScratchFolder::lengthen(const QByteArray &relative, qint64 count) const
{
    ASSERT_EQ(0, ::truncate(path(relative).constData(), size(relative) + count));
}

void ScratchFolder::makeLink(const QByteArray &relative, const QByteArray &target) const
{
    ASSERT_EQ(0, ::symlink(target.constData(), path(relative).constData()));
}

void ScratchFolder::makePipe(const QByteArray &relative) const
{
    ASSERT_EQ(0, ::mkfifo(path(relative).constData(), 0666));
}

bool ScratchFolder::exists(const QByteArray &relative) const
{
    struct stat status = {};
    return ::lstat(path(relative).constData(), &status) == 0;
}

QByteArray ScratchFolder::read(const QByteArray &relative) const
{
    std::ifstream file(path(relative).constData(), std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(file)),
                            std::istreambuf_iterator<char>());
    return QByteArray::fromStdString(bytes);
}

qint64 ScratchFolder::size(const QByteArray &relative) const
{
    struct stat status = {};
    return ::stat(path(relative).constData(), &status) == 0 ? status.st_size : -1;
}

QList<QByteArray> ScratchFolder::everythingIn(const QByteArray &relative) const
{
    QList<QByteArray> names;
    addNames(relative.isEmpty() ? root() : path(relative), &names);
    std::sort(names.begin(), names.end());
    return names;
}

void writeDatabase(const ScratchFolder &scratch, const QByteArray &device,
                   const PhotosDatabase &database)
{
    scratch.write(device + "/PhotoData/Photos.sqlite", database.bytes());
}
