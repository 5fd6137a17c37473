#include "devices/device_file_system.h"

#include <cerrno>
#include <system_error>

namespace {

FileError::Kind kindOf(int code)
{
    switch (code) {
    case ENOENT:
    case ENOTDIR: // a file stands where the path needs a folder
    case ENAMETOOLONG:
        return FileError::NotFound;
    case EACCES:
    case EPERM:
        return FileError::Denied;
    case EISDIR:
    case ENXIO:
        return FileError::WrongType;
    case EXDEV: // the kernel's word for leaving the folder
    case ELOOP:
        return FileError::Outside;
    case ENODEV:
    case ENOTCONN: // from a mounted device that was pulled out
    case ESHUTDOWN:
        return FileError::Disconnected;
    default:
        return FileError::Failed;
    }
}

} // namespace

FileError FileError::fromErrno(int code)
{
    const Kind kind = kindOf(code);
    if (kind == Outside)
        return {kind, QStringLiteral("a link that leads out of the device")};
    return {kind, QString::fromStdString(std::generic_category().message(code))};
}

FileError FileError::closed()
{
    return {Disconnected, QStringLiteral("closed")};
}
