#ifndef PHOTOLIB_HOST_DEVICE_KIND_H
#define PHOTOLIB_HOST_DEVICE_KIND_H

#include <QByteArray>

class DeviceFileSystem;
struct FileError;

/// An iOS device's library database, with its journals "-wal" and "-shm" beside it.
constexpr char databasePath[] = "/PhotoData/Photos.sqlite";

/// What kind of photo library a device holds.
enum class DeviceKind {
    None,    ///< neither of the two
    Ios,     ///< an iOS device: PhotoData/Photos.sqlite
    Classic, ///< a classic iPod: Photos/Photo Database
};

/// The library database of a device of that kind as `files` has it: the path on the device.
/// A classic iPod's disk may write it in other case. None has none.
QByteArray libraryDatabase(DeviceFileSystem &files, DeviceKind kind);

/// Looks which library database `files` holds; the iOS one when it holds both. Returns
/// false when the device does not say, and fills `*error`, and `*kind` with the one that it
/// was asked for.
bool findDeviceKind(DeviceFileSystem &files, DeviceKind *kind, FileError *error);

#endif // PHOTOLIB_HOST_DEVICE_KIND_H
