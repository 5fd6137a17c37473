#ifndef PHOTOLIB_ENGINE_DEVICE_BOUNDS_H
#define PHOTOLIB_ENGINE_DEVICE_BOUNDS_H

#include <QByteArray>

// A device is only read. Whether a folder belongs to one does not show in its path: a mount or
// a link gives the device another name. It is looked for on the way up from the folder itself.

/// Whether `path`, or the nearest folder above it that is there, is the folder `device` or
/// lies in it, whatever their names are. Throws Error when that cannot be told.
bool liesIn(const QByteArray &path, const QByteArray &device);

/// Throws Error, which names `named`, when something written to the folder `path` would
/// be written into the device in the folder `device`.
void refuseInDevice(const QByteArray &path, const QByteArray &device, const QByteArray &named);

/// Throws Error when the folder `path`, which need not be there, lies or would lie in any
/// device.
void refuseInAnyDevice(const QByteArray &path);

/// Throws Error when the existing folder `path` is a device itself: somebody has named that one
/// where a folder to write to is meant.
void refuseDeviceAsTarget(const QByteArray &path);

#endif // PHOTOLIB_ENGINE_DEVICE_BOUNDS_H
