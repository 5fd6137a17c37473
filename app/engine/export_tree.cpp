#include "engine/export_tree.h"

#include "base/folders.h"
#include "engine/export_state.h"

#include <cerrno>
#include <climits>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <utility>
#include <vector>

namespace {

struct CloseFolder {
    void operator()(DIR *folder) const { ::closedir(folder); }
};

// The folder that `path` lies in; empty for that of the export.
QByteArray folderOf(const QByteArray &path)
{
    return path.left(qMax(path.lastIndexOf('/'), 0));
}

QByteArray nameOf(const QByteArray &path)
{
    return path.mid(path.lastIndexOf('/') + 1);
}

// Something that is no folder on the way, or a name that no disk can have, means that there is
// nothing at the end of it.
int withoutWay(int code)
{
    return code == ENOTDIR || code == ELOOP || code == ENAMETOOLONG ? ENOENT : code;
}

bool isFolderEntry(int folder, const dirent &entry)
{
    if (entry.d_type != DT_UNKNOWN)
        return entry.d_type == DT_DIR;
    struct stat status = {};
    return ::fstatat(folder, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISDIR(status.st_mode);
}

// Calls `visit` for each entry. Returns 0 or an error number.
int listFolder(UniqueFd fd, const std::function<void(const QByteArray &name, bool isFolder)> &visit)
{
    const std::unique_ptr<DIR, CloseFolder> entries(::fdopendir(fd.get()));
    if (!entries)
        return errno;
    const int folder = fd.release();
    errno = 0;
    while (const dirent *const entry = ::readdir(entries.get())) {
        const QByteArray name = entry->d_name;
        if (name != "." && name != "..")
            visit(name, isFolderEntry(folder, *entry));
        errno = 0;
    }
    return errno;
}

} // namespace

ExportTree::ExportTree(const QByteArray &path) : m_root(::openFolder(path)) {}

// Name by name, since a path that is opened as a whole follows links.
UniqueFd ExportTree::openFolder(const QByteArray &path) const
{
    UniqueFd folder = openFolderIn(m_root.get(), ".");
    for (int start = 0; folder.isOpen() && start < path.size();) {
        const int slash = path.indexOf('/', start);
        const int end = slash < 0 ? path.size() : slash;
        folder = openFolderIn(folder.get(), path.mid(start, end - start).constData());
        start = end + 1;
    }
    return folder;
}

// Makes `m_parent` the folder that `path` lies in. Returns 0 or an error number.
int ExportTree::enterFolderOf(const QByteArray &path)
{
    const QByteArray parent = folderOf(path);
    if (parent == m_parentPath && (m_parent.isOpen() || m_parentError != 0))
        return m_parentError;
    m_parent = openFolder(parent);
    m_parentError = m_parent.isOpen() ? 0 : withoutWay(errno);
    m_parentPath = parent;
    return m_parentError;
}

int ExportTree::look(const QByteArray &path, struct stat *status)
{
    if (const int code = enterFolderOf(path))
        return code;
    const int result =
        ::fstatat(m_parent.get(), nameOf(path).constData(), status, AT_SYMLINK_NOFOLLOW);
    return result == 0 ? 0 : withoutWay(errno);
}

UniqueFd ExportTree::open(const QByteArray &path)
{
    constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    errno = enterFolderOf(path);
    if (errno != 0)
        return UniqueFd();
    UniqueFd fd(::openat(m_parent.get(), nameOf(path).constData(), flags));
    errno = fd.isOpen() ? 0 : withoutWay(errno);
    return fd;
}

QByteArray ExportTree::linkText(const QByteArray &path)
{
    char text[PATH_MAX];
    if (enterFolderOf(path) != 0)
        return QByteArray();
    const ssize_t length =
        ::readlinkat(m_parent.get(), nameOf(path).constData(), text, sizeof text);
    return QByteArray(text, static_cast<int>(qMax<ssize_t>(length, 0)));
}

void ExportTree::walk(const std::function<void(const QByteArray &)> &visit,
                      const std::function<void(const QByteArray &, int)> &failed)
{
    std::vector<QByteArray> folders = {QByteArray()};
    while (!folders.empty()) {
        const QByteArray folder = std::exchange(folders.back(), QByteArray());
        folders.pop_back();
        const auto visitEntry = [&](const QByteArray &name, bool isFolder) {
            const QByteArray path = folder.isEmpty() ? name : folder + '/' + name;
            if (path == exportStateName)
                return;
            if (isFolder)
                folders.push_back(path);
            else
                visit(path);
        };
        UniqueFd fd = openFolder(folder);
        const int code = fd.isOpen() ? listFolder(std::move(fd), visitEntry) : errno;
        if (code != 0)
            failed(folder, code);
    }
}
