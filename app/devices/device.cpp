#include "devices/device.h"

namespace {

// False and `*error` filled when the device does not say; a missing file is an answer.
bool look(DeviceFileSystem &files, const QByteArray &path, bool *isThere, FileError *error)
{
    FileInfo info;
    *isThere = files.info(path, &info, error);
    return *isThere || error->kind == FileError::NotFound;
}

} // namespace

bool findDeviceKind(DeviceFileSystem &files, DeviceKind *kind, FileError *error)
{
    bool isIos = false;
    bool isClassic = false;
    if (!look(files, databasePath, &isIos, error))
        return false;
    if (!isIos && !look(files, "/Photos/Photo Database", &isClassic, error))
        return false;
    *kind = isIos ? DeviceKind::Ios : isClassic ? DeviceKind::Classic : DeviceKind::None;
    return true;
}

Device::Device(std::shared_ptr<DeviceFileSystem> files, DeviceKind kind, QString localDataPath)
    : m_files(std::move(files)), m_kind(kind), m_localDataPath(std::move(localDataPath)),
      m_registration(m_files)
{
}
