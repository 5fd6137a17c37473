#ifndef PHOTOLIB_CLASSIC_DEVICE_PATHS_H
#define PHOTOLIB_CLASSIC_DEVICE_PATHS_H

#include "devices/case_blind_paths.h"

#include <QMap>

/// Where the files are that a photo database names, ":Thumbs:F1019_1.ithmb". For one thread at
/// a time, and for as long as the disk stays as it is.
class DevicePaths
{
public:
    /// `files` must outlive the object.
    explicit DevicePaths(DeviceFileSystem &files) : m_files(files), m_paths(files) {}

    /// The path on the device, with the names as the disk has them. Of a name that leads out of
    /// the device, or holds what no file's name does, it is a path that file systems refuse.
    QByteArray path(const QString &name);

    /// `name` with the names as the disk has them; null, after a line in the log, for what
    /// is no regular file of the device, be it reached by ".." or by a link. A file that is
    /// not there keeps its name: nothing is reached by it.
    QString checkedName(const QString &name);

private:
    QString check(const QString &name);

    DeviceFileSystem &m_files;
    CaseBlindPaths m_paths;
    QMap<QString, QString> m_checked; // sorted: names can be chosen so that hashes are slow
};

#endif // PHOTOLIB_CLASSIC_DEVICE_PATHS_H
