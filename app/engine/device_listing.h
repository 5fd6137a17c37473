#ifndef PHOTOLIB_ENGINE_DEVICE_LISTING_H
#define PHOTOLIB_ENGINE_DEVICE_LISTING_H

#include "devices/device_file_system.h"

#include <QByteArray>
#include <QList>
#include <QMap>

/// Which files a device has, learnt by listing each folder once: over a cable, a question about
/// each of 100,000 files would take minutes. Names only: what is no regular file counts as one.
///
/// For one thread at a time.
class DeviceListing
{
public:
    /// `files` must outlive the object.
    explicit DeviceListing(DeviceFileSystem &files) : m_files(files) {}

    /// What one folder holds.
    struct Folder {
        QList<QByteArray> names; ///< in byte order; none where it cannot be listed
        FileError error;         ///< why it cannot; the kind is None where it can
    };

    /// The folder `path`, below the device's root. Valid as long as the object.
    const Folder &folder(const QByteArray &path);

    /// Whether the device has the file `path`. False, with `*error` filled, when its folder
    /// cannot be listed, and with the kind NotFound when it is not in it.
    bool has(const QByteArray &path, FileError *error);

private:
    DeviceFileSystem &m_files;
    QMap<QByteArray, Folder> m_folders; // sorted: names from a device can make hashes slow
};

#endif // PHOTOLIB_ENGINE_DEVICE_LISTING_H
