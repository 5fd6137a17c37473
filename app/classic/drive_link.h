#ifndef PHOTOLIB_CLASSIC_DRIVE_LINK_H
#define PHOTOLIB_CLASSIC_DRIVE_LINK_H

#include <QByteArray>
#include <QString>

/// A drive name for a folder. The plug-in finds the files of a classic iPod under
/// "DRIVE:/Photos", as on systems where a drive has a letter; here a link of that name, in a
/// new folder that only the user can enter, leads to the iPod's own folder of photos and to
/// nothing else.
///
/// The link is gone at the end of the object, and when a signal ends the program that it did
/// not handle when a link was made. Any number may exist, on any threads.
class DriveLink
{
public:
    /// Links to the existing folder `photosFolder` of the host computer, an absolute path.
    /// Throws std::system_error, with nothing left behind, when that fails.
    explicit DriveLink(const QByteArray &photosFolder);
    ~DriveLink();

    DriveLink(const DriveLink &) = delete;
    DriveLink &operator=(const DriveLink &) = delete;

    /// The DRIVE of "DRIVE:/Photos", usable whatever the locale's encoding is.
    QString driveName() const;

private:
    struct Place;

    static Place *newPlace();
    static void removeAllAndDie(int signal);
    static void handleSignals();

    Place *const m_place;
};

#endif // PHOTOLIB_CLASSIC_DRIVE_LINK_H
