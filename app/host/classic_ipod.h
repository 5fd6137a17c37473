#ifndef PHOTOLIB_HOST_CLASSIC_IPOD_H
#define PHOTOLIB_HOST_CLASSIC_IPOD_H

#include "classic/drive_links.h"
#include "classic/photo_database.h"
#include "devices/device_file_system.h"
#include "host/device_database.h"

#include <memory>
#include <vector>

/// What a device has when it is a classic iPod: the name of its drive, and its photo
/// databases. For one thread at a time, as the plug-in's photo library is.
class ClassicIpod
{
public:
    /// The files must be those of a folder of the host computer; `files` must outlive the
    /// object. Throws std::system_error when the drive cannot be given a name.
    explicit ClassicIpod(DeviceFileSystem &files);
    ~ClassicIpod();

    ClassicIpod(const ClassicIpod &) = delete;
    ClassicIpod &operator=(const ClassicIpod &) = delete;

    QString driveName() const { return m_drive.driveName(); }

    /// A new database that is not parsed yet. What is not given to `release` is freed with
    /// the object: the plug-in never gives its last one back.
    iitdb *newDatabase();

    /// Frees a database from `newDatabase` of whichever iPod that is still there.
    static void release(iitdb *database);

    /// The photo `id` in the newest database, when that is parsed; null when there is none.
    /// Of `id` the low 32 bits count, as for the plug-in. Valid until a database is made or
    /// released.
    const ClassicPhoto *photo(quint64 id) const;

    /// The full-resolution file of `photo` on the device; empty when the database names none.
    /// What leads out of the device and what is not there is a path that does not open.
    QByteArray originalPath(const ClassicPhoto &photo) const;

private:
    class Database;

    DeviceFileSystem &m_files;
    DriveLinks m_drive;
    std::vector<std::unique_ptr<Database>> m_databases; // the newest last
};

#endif // PHOTOLIB_HOST_CLASSIC_IPOD_H
