#ifndef PHOTOLIB_BASE_FOLDERS_H
#define PHOTOLIB_BASE_FOLDERS_H

#include "base/unique_fd.h"

#include <QByteArray>
#include <QList>

#include <functional>
#include <optional>
#include <sys/types.h>

/// A folder that exists as long as the object lives, and after it when it was there before
/// or is kept: what the object had to create, parents included, it removes at its end as
/// far as it is empty.
class EnsuredFolder
{
public:
    using Check = std::function<void(const QByteArray &)>;

    /// Creates `path` and its missing parents, for the user alone unless `mode` says
    /// otherwise. Each folder that is about to be written is first given to `check`, which
    /// may throw. Throws Error.
    explicit EnsuredFolder(
        const QByteArray &path, mode_t mode = 0700, const Check &check = [](const QByteArray &) {});
    ~EnsuredFolder();

    EnsuredFolder(const EnsuredFolder &) = delete;
    EnsuredFolder &operator=(const EnsuredFolder &) = delete;

    void keep() { m_created.clear(); }

    /// Has the disk store, as far as it does such things, that the folders are there which the
    /// object had to create.
    void store() const;

private:
    void createAll(const QByteArray &path, mode_t mode, const Check &check);
    bool createEach(const QByteArray &path, mode_t mode, const Check &check);
    bool create(const QByteArray &path, mode_t mode, const Check &check);
    void removeCreated();

    QList<QByteArray> m_created; // parents first
};

bool isFolder(const QByteArray &path);

/// The folder that `path`, which does not end with "/", lies in: "." for a bare name.
QByteArray parentFolder(const QByteArray &path);

/// Opens the folder `path`. Throws Error.
UniqueFd openFolder(const QByteArray &path);

/// Whether `path` still names the folder that the descriptor `fd` holds open, which another process
/// may have removed, moved or replaced.
bool isStillAt(int fd, const QByteArray &path);

/// Throws Error when `path` is there but is a link, no folder, or a folder of another
/// user.
void requireOwnFolder(const QByteArray &path);

/// A folder of the user's own that exists like an EnsuredFolder and is locked against other objects
/// of this kind, in any process, which wait for it. A file system without locks is used without
/// one.
class LockedFolder
{
public:
    /// Throws Error, also when `path` is a link or a folder of another user. `check` is
    /// that of EnsuredFolder; `beforeWait` is called once, when
    /// another object has the folder.
    explicit LockedFolder(
        const QByteArray &path, const EnsuredFolder::Check &check = [](const QByteArray &) {},
        const std::function<void()> &beforeWait = [] {});

    /// A descriptor of the folder, as long as it is locked.
    int fd() const { return m_lock.get(); }

    void keep() { m_folder->keep(); }

private:
    const QByteArray m_path;
    UniqueFd m_lock; // goes last: nobody is to have the folder when it is removed
    std::optional<EnsuredFolder> m_folder;
};

/// Opens the folder `name` in the open folder `parent`; not open when it is a link, no folder, or
/// not there.
UniqueFd openFolderIn(int parent, const char *name);

/// Removes the folders in `parent` that LockedFolders of processes which were killed have left: the
/// user's own, with a name that begins with `prefix`, and not locked. `clear` is given a descriptor
/// of each and removes what is the program's; a folder that holds anything else stays. Does what it
/// can, whatever other users and processes do in `parent`.
void removeDeadFolders(const QByteArray &parent, const QByteArray &prefix,
                       const std::function<void(int)> &clear);

#endif // PHOTOLIB_BASE_FOLDERS_H
