#ifndef PHOTOLIB_CLASSIC_PICTURE_FILES_H
#define PHOTOLIB_CLASSIC_PICTURE_FILES_H

#include "base/unique_fd.h"
#include "classic/device_paths.h"
#include "classic/drive_links.h"

#include <QMap>

#include <vector>

/// The files of stored pictures that one photo database names, each opened once and held open,
/// with a link on a drive that leads to it. For one thread at a time, and for as long as the
/// disk stays as it is.
class PictureFiles
{
public:
    /// `files` and `drive` must outlive the object.
    PictureFiles(DeviceFileSystem &files, DriveLinks &drive)
        : m_files(files), m_drive(drive), m_paths(files)
    {
    }
    ~PictureFiles();

    PictureFiles(const PictureFiles &) = delete;
    PictureFiles &operator=(const PictureFiles &) = delete;

    /// Opens the file ":Thumbs:F1019_1.ithmb" and returns its name as the disk has it. Null,
    /// after a line in the log, for what is no regular file of the device, be it reached by
    /// ".." or by a link. Null also for more files than may be held open, of which
    /// `logLeftOut` tells. A file that does not open keeps its name: nothing is reached by it.
    QString open(const QString &name);

    /// Logs how many files were left out because there are too many, if any were.
    void logLeftOut() const;

    /// The name on the drive for the file that `open` gave the name `name`; that of no file
    /// when it did not open.
    QString nameOnDrive(const QString &name) const;

    DevicePaths &paths() { return m_paths; }

private:
    struct OpenFile {
        UniqueFd file;
        int link;
    };

    QString openNew(const QString &name);
    bool hold(UniqueFd file, const QString &nameOnDisk);

    DeviceFileSystem &m_files;
    DriveLinks &m_drive;
    DevicePaths m_paths;
    // Sorted: names can be chosen so that hashes are slow.
    QMap<QString, QString> m_namesOnDisk; // by the database's names; null for what is left out
    QMap<QString, int> m_links;           // by the names on the disk; -1 for too many
    std::vector<OpenFile> m_open;
};

#endif // PHOTOLIB_CLASSIC_PICTURE_FILES_H
