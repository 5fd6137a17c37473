#ifndef PHOTOLIB_ENGINE_DEVICE_HASH_H
#define PHOTOLIB_ENGINE_DEVICE_HASH_H

#include "devices/device_file_system.h"

#include <QByteArray>

class CancelToken;

/// The SHA-256 of a file of a device, as 64 lower-case hexadecimal digits; null, with `*error`
/// filled, when it cannot be read or grows meanwhile. Throws Error of the kind Cancelled soon after
/// `cancel` is.
QByteArray sha256OfDeviceFile(DeviceFileSystem &files, const QByteArray &path, FileError *error,
                              const CancelToken &cancel);

/// Whether the file `path` of a device has the content of what is left to read of the local file
/// `file`; false, with `*error` filled, when it cannot be read or grows meanwhile. Reads no further
/// than to the first difference. Throws Error of the kind Cancelled soon after `cancel` is.
bool hasContentOf(DeviceFileSystem &files, const QByteArray &path, int file, FileError *error,
                  const CancelToken &cancel);

#endif // PHOTOLIB_ENGINE_DEVICE_HASH_H
