#include "host/device_kind.h"

#include "classic/case_blind_paths.h"
#include "classic/photo_database.h"

namespace {

// False and `*error` filled when the device does not say; a missing file is an answer.
bool look(DeviceFileSystem &files, const QByteArray &path, bool *isThere, FileError *error)
{
    FileInfo info;
    *isThere = files.info(path, &info, error);
    return *isThere || error->kind == FileError::NotFound;
}

} // namespace

QByteArray libraryDatabase(DeviceFileSystem &files, DeviceKind kind)
{
    if (kind == DeviceKind::Classic)
        return CaseBlindPaths(files).resolved(photoDatabasePath);
    return kind == DeviceKind::Ios ? QByteArray(databasePath) : QByteArray();
}

bool findDeviceKind(DeviceFileSystem &files, DeviceKind *kind, FileError *error)
{
    for (const DeviceKind each : {DeviceKind::Ios, DeviceKind::Classic}) {
        bool isThere = false;
        *kind = each;
        if (!look(files, libraryDatabase(files, each), &isThere, error))
            return false;
        if (isThere)
            return true;
    }
    *kind = DeviceKind::None;
    return true;
}
