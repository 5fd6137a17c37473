#ifndef PHOTOLIB_CLASSIC_CASE_BLIND_PATHS_H
#define PHOTOLIB_CLASSIC_CASE_BLIND_PATHS_H

#include "devices/device_file_system.h"

#include <QMap>

/// Finds the files of a disk whose names do not differ by case, mounted or copied where they
/// do: its database may well name "Thumbs" what is called "THUMBS" there.
///
/// Each folder is listed once, so the object is to be made anew when the disk may have
/// changed. For one thread at a time.
class CaseBlindPaths
{
public:
    /// `files` must outlive the object.
    explicit CaseBlindPaths(DeviceFileSystem &files) : m_files(files) {}

    /// `path` with each name as the disk has it: the name itself where it is there, else the
    /// first one in byte order that differs from it in case or composition only. From the
    /// first name on that is not there, or whose folder cannot be listed, the path stays as
    /// it is. ".." and what is no folder are left for the file system to refuse.
    QByteArray resolved(const QByteArray &path);

private:
    QByteArray nameIn(const QByteArray &folder, const QByteArray &name);

    // Sorted: names that come from a device can be chosen so that a hash holds them for one.
    using NamesByKey = QMap<QByteArray, QList<QByteArray>>;

    const NamesByKey &namesIn(const QByteArray &folder);

    DeviceFileSystem &m_files;
    QMap<QByteArray, NamesByKey> m_folders;
};

#endif // PHOTOLIB_CLASSIC_CASE_BLIND_PATHS_H
