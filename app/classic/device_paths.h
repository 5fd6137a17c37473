#ifndef PHOTOLIB_CLASSIC_DEVICE_PATHS_H
#define PHOTOLIB_CLASSIC_DEVICE_PATHS_H

#include "classic/case_blind_paths.h"

#include <QString>

/// Where the files are that a photo database names, ":Thumbs:F1019_1.ithmb". For one thread at
/// a time, and for as long as the disk stays as it is.
class DevicePaths
{
public:
    /// `files` must outlive the object.
    explicit DevicePaths(DeviceFileSystem &files) : m_paths(files) {}

    /// The path on the device, with the names as the disk has them. Of a name that leads out of
    /// the device, or holds what no file's name does, it is a path that file systems refuse.
    QByteArray path(const QString &name);

private:
    CaseBlindPaths m_paths;
};

#endif // PHOTOLIB_CLASSIC_DEVICE_PATHS_H
