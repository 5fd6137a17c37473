#ifndef PHOTOLIB_ENGINE_WORK_FOLDER_H
#define PHOTOLIB_ENGINE_WORK_FOLDER_H

#include "base/folders.h"

#include <QString>

#include <functional>

/// The folder that the plug-in copies a device's database to, as long as the object lives.
///
/// What a program that was killed left is removed first: a journal that the device no longer has
/// would be applied to its new database. A mark beside the copies, which goes with them, tells
/// them from what is not the program's. The folder is locked, so that two programs do not copy
/// over each other. The copies and what the object had to create are removed at its end.
class WorkFolder
{
public:
    /// Who chose the folder.
    enum class Origin {
        Named,   ///< a person: what looks like a copy may be a photo database of their own
        Default, ///< the program, in its cache folder: all copies in it are the program's,
                 ///< also those of versions that made no mark
    };

    /// Prepares the folder `path`, created with its parents if necessary. Throws Error
    /// when that fails, when `path` is not UTF-8, which the plug-in needs, is a link or
    /// another user's folder, when it lies in `deviceFolder`, whose own database would be
    /// overwritten, and when a named one holds a photo database without the mark. Calls
    /// `beforeWait` once when another program has the folder.
    WorkFolder(
        const QByteArray &path, const QByteArray &deviceFolder, Origin origin,
        const std::function<void()> &beforeWait = [] {});
    ~WorkFolder();

    WorkFolder(const WorkFolder &) = delete;
    WorkFolder &operator=(const WorkFolder &) = delete;

    /// Removes what programs that were killed left in the folder `workFolders`, which holds work
    /// folders of the program's choice, for whichever devices. What lives is left alone.
    static void removeDead(const QByteArray &workFolders);

    /// The folder with a closing "/".
    QString localDataPath() const { return QString::fromUtf8(m_path) + QLatin1Char('/'); }

    /// Throws Error when a database of `bytes` does not fit on the folder's disk, which
    /// would be full by the time that shows.
    void requireRoom(qint64 bytes) const;

private:
    const QByteArray m_path;
    LockedFolder m_folder;
};

#endif // PHOTOLIB_ENGINE_WORK_FOLDER_H
