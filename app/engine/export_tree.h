#ifndef PHOTOLIB_ENGINE_EXPORT_TREE_H
#define PHOTOLIB_ENGINE_EXPORT_TREE_H

#include "base/unique_fd.h"

#include <QByteArray>

#include <functional>
#include <sys/stat.h>

/// What lies in a folder that photos were exported to, and in the folders below it. No link on the
/// way to anything is followed, so that nothing outside is ever looked at. Paths are relative to
/// the folder. Fast when paths that lie in the same folder come one after the other.
class ExportTree
{
public:
    /// Opens the folder `path`. Throws Error.
    explicit ExportTree(const QByteArray &path);

    /// Fills `*status` for what has this path itself, a link for example. Returns 0 or an error
    /// number of the system: ENOENT also where something else than a folder is on the way.
    int look(const QByteArray &path, struct stat *status);

    /// Opens a file for reading, and waits for no pipe or device. Not open on failure, with `errno`
    /// set as `look` returns it.
    UniqueFd open(const QByteArray &path);

    /// What the link at this path says; empty when there is none.
    QByteArray linkText(const QByteArray &path);

    /// Calls `visit` for all there is but folders, and `failed`, with an error number, for each
    /// folder that cannot be listed, in no particular order. The folder of the export's record is
    /// left out. What they throw ends the walk and is thrown to the caller.
    void walk(const std::function<void(const QByteArray &path)> &visit,
              const std::function<void(const QByteArray &path, int code)> &failed);

private:
    UniqueFd openFolder(const QByteArray &path) const;
    int enterFolderOf(const QByteArray &path);

    const UniqueFd m_root;
    QByteArray m_parentPath; // of `m_parent`
    UniqueFd m_parent;
    int m_parentError = 0; // why that is not open
};

#endif // PHOTOLIB_ENGINE_EXPORT_TREE_H
