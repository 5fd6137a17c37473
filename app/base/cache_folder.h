#ifndef PHOTOLIB_BASE_CACHE_FOLDER_H
#define PHOTOLIB_BASE_CACHE_FOLDER_H

#include <QByteArray>

/// The program's own folder in the user's cache folder; it need not exist. Without a
/// closing "/". Throws Error when the environment does not tell where that is.
QByteArray cacheFolder();

/// Where the database of the device in `deviceFolder` is copied by default: a folder of
/// its own in the cache folder, the same for every name of the device's folder. Throws
/// Error like `cacheFolder`, and when a folder above it in the cache is a link or
/// another user's.
QByteArray defaultWorkFolder(const QByteArray &deviceFolder);

#endif // PHOTOLIB_BASE_CACHE_FOLDER_H
