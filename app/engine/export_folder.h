#ifndef PHOTOLIB_ENGINE_EXPORT_FOLDER_H
#define PHOTOLIB_ENGINE_EXPORT_FOLDER_H

#include "base/unique_fd.h"

#include <QByteArray>
#include <QtGlobal>

#include <sys/types.h>

class CancelToken;

/// The folder that photos are exported to. Paths are below it, with "/" between names; no link in
/// one is followed, so that nothing outside the folder is read or written.
///
/// For one thread at a time. Operations that write throw std::system_error when the disk refuses.
class ExportFolder
{
public:
    /// Opens the folder `path`, which may be named by a link. Throws Error unless it is there.
    explicit ExportFolder(const QByteArray &path);

    /// Stands for a folder that is not there yet: nothing is in it, and nothing may be written.
    ExportFolder() = default;

    const QByteArray &path() const { return m_path; }

    /// A descriptor of the folder, for as long as the object lives.
    int fd() const { return m_fd.get(); }

    /// What a path leads to.
    enum class Kind {
        Nothing, ///< and a file may be written there
        File,
        Other,   ///< a folder or a link, say
        Blocked, ///< no file may have the path: a link stands in place of one of its folders, say
    };

    struct Entry {
        Kind kind = Kind::Nothing;
        qint64 size = 0; ///< bytes of a file

        // What tells a file from one that was written to or put in its place since:
        dev_t disk = 0;
        ino_t number = 0;    ///< on the disk
        qint64 modified = 0; ///< nanoseconds since 1970-01-01 UTC
        qint64 changed = 0;  ///< likewise, and nobody can set it

        /// Whether all is as it was when `other` was asked for.
        bool isSameAs(const Entry &other) const;
    };

    Entry entry(const QByteArray &path);

    /// Opens the file `path` for reading; not open when it is none.
    UniqueFd open(const QByteArray &path);

    /// A descriptor of the folder that `path` is in, with the folders made, and stored on the disk,
    /// that are missing. Valid until the next call of any operation.
    int folderFor(const QByteArray &path);

    /// Has the disk store that the folder of `path` has the names that it has: for an empty path
    /// the folder itself.
    void storeNames(const QByteArray &path);

    /// Removes the file `path`, if it is there.
    void remove(const QByteArray &path);

    /// The length in bytes of the longest name that the disk takes.
    int longestName() const;

    /// Bytes that may still be written; the largest number where the disk does not tell.
    qint64 room() const;

private:
    bool enter(const QByteArray &folder, bool isMade);

    QByteArray m_path;
    UniqueFd m_fd;
    QByteArray m_enteredPath; // below the folder
    UniqueFd m_entered;       // not open for the folder itself
};

/// The SHA-256 of what is left to read of `file`, as 64 lower-case hexadecimal digits; null when it
/// cannot be read. Throws Error of the kind Cancelled soon after `cancel` is.
QByteArray sha256OfFile(int file, const CancelToken &cancel);

#endif // PHOTOLIB_ENGINE_EXPORT_FOLDER_H
