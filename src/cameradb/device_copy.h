#ifndef PHOTOLIB_CAMERADB_DEVICE_COPY_H
#define PHOTOLIB_CAMERADB_DEVICE_COPY_H

#include "photolib_export.h"

class IIPod;
class QString;

/// Copies the device file `sourcePath` (absolute, such as "/PhotoData/Photos.sqlite")
/// to the local file `targetPath`, creating its folder.
///
/// Returns 0 when the copy ran, or when there was nothing to do: no device, a device
/// whose access is blocked, or an empty path. Returns -1 after logging when a device,
/// file or folder does not open; what was opened before stays open then, and is the host's
/// to close. Returns -1 without a log line when memory runs out.
///
/// A read error, a short write and `cancleParse` end the copy early, leave the partial
/// target behind and still return 0. Runs on the calling thread; a cancel takes effect
/// within one block of 4 MiB.
PHOTOLIB_EXPORT int savefiletoLocation(IIPod *device, const QString &sourcePath,
                                       const QString &targetPath);

#endif // PHOTOLIB_CAMERADB_DEVICE_COPY_H
