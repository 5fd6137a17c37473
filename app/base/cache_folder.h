#ifndef PHOTOLIB_BASE_CACHE_FOLDER_H
#define PHOTOLIB_BASE_CACHE_FOLDER_H

#include <QByteArray>

/// The program's own folder in the user's cache folder; it need not exist. Without a
/// closing "/". Throws Error when the environment does not tell where that is.
QByteArray cacheFolder();

/// Where the database of the device with the id `deviceId` is copied by default: a folder of
/// its own in the cache folder. Throws
/// Error like `cacheFolder`, and when a folder above it in the cache is a link or
/// another user's.
QByteArray defaultWorkFolder(const QByteArray &deviceId);

#endif // PHOTOLIB_BASE_CACHE_FOLDER_H
