#ifndef PHOTOLIB_CLI_FOLDER_TOOLS_H
#define PHOTOLIB_CLI_FOLDER_TOOLS_H

#include "devices/unique_fd.h"

#include <QByteArray>
#include <QList>

#include <functional>
#include <sys/types.h>

/// A folder that exists as long as the object lives, and after it when it was there before
/// or is kept: what the object had to create, parents included, it removes at its end as
/// far as it is empty.
class EnsuredFolder
{
public:
    /// Creates `path` and its missing parents, for the user alone unless `mode` says
    /// otherwise. Each folder that is about to be written is first given to `check`, which
    /// may throw. Throws CommandError.
    explicit EnsuredFolder(
        const QByteArray &path, mode_t mode = 0700,
        const std::function<void(const QByteArray &)> &check = [](const QByteArray &) {});
    ~EnsuredFolder();

    EnsuredFolder(const EnsuredFolder &) = delete;
    EnsuredFolder &operator=(const EnsuredFolder &) = delete;

    void keep() { m_created.clear(); }

private:
    using Check = std::function<void(const QByteArray &)>;

    void createAll(const QByteArray &path, mode_t mode, const Check &check);
    void create(const QByteArray &path, mode_t mode, const Check &check);
    void removeCreated();

    QList<QByteArray> m_created; // parents first
};

bool isFolder(const QByteArray &path);

/// The folder that `path`, which does not end with "/", lies in: "." for a bare name.
QByteArray parentFolder(const QByteArray &path);

/// Opens the folder `path`. Throws CommandError.
UniqueFd openFolder(const QByteArray &path);

/// Opens the folder `path` and locks it against other processes that do the same, waiting
/// for them; a file system without locks is used without one. Closing unlocks. Throws
/// CommandError.
UniqueFd lockFolder(const QByteArray &path);

#endif // PHOTOLIB_CLI_FOLDER_TOOLS_H
