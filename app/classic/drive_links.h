#ifndef PHOTOLIB_CLASSIC_DRIVE_LINKS_H
#define PHOTOLIB_CLASSIC_DRIVE_LINKS_H

#include "base/folders.h"

#include <QByteArray>
#include <QString>

#include <array>
#include <optional>

/// A drive name, and links to open files on that drive. The plug-in finds the files of a classic
/// iPod under "DRIVE:/Photos", as on systems where a drive has a letter; here that is a new
/// folder that only the user can enter, with links to files that the process has open. So the
/// plug-in reads what was opened, whatever the iPod's disk has under the file's name by then.
///
/// All is gone at the end of the object. What a process leaves that a signal ends leads nowhere,
/// and `removeDead` removes it. Any number may exist, on any threads; each belongs to one thread
/// at a time.
class DriveLinks
{
public:
    /// As many links as there may be at a time.
    static constexpr int most = 256;

    /// Throws Error or std::system_error, with nothing left behind, when the folder cannot be
    /// made.
    DriveLinks();
    ~DriveLinks();

    DriveLinks(const DriveLinks &) = delete;
    DriveLinks &operator=(const DriveLinks &) = delete;

    /// Removes what the user's processes that have ended left in the folder for temporary files,
    /// as far as it goes. On any thread, whatever other processes do meanwhile.
    static void removeDead();

    /// The DRIVE of "DRIVE:/Photos", usable whatever the locale's encoding is.
    QString driveName() const;

    /// Has "DRIVE:/Photos/NUMBER" lead to the file that is open as `fd`, and returns NUMBER;
    /// -1 when there are as many as there may be. The file stays the caller's. Throws
    /// std::system_error.
    int add(int fd);

    /// Removes the link NUMBER: to be called before the file is closed.
    void remove(int number);

private:
    QByteArray link(size_t number) const;
    void clear();

    const QByteArray m_folder;            // the private one
    std::optional<LockedFolder> m_locked; // the same, and a sign that its process lives
    std::array<bool, most> m_isLinked = {};
};

#endif // PHOTOLIB_CLASSIC_DRIVE_LINKS_H
