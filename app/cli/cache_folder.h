#ifndef PHOTOLIB_CLI_CACHE_FOLDER_H
#define PHOTOLIB_CLI_CACHE_FOLDER_H

#include <QByteArray>

/// The program's own folder in the user's cache folder; it need not exist. Without a
/// closing "/".
QByteArray cacheFolder();

/// Where the database of the device in `deviceFolder` is copied by default: a folder of
/// its own in the cache folder, the same for every name of the device's folder.
QByteArray defaultWorkFolder(const QByteArray &deviceFolder);

/// `path` with links and ".." resolved; `path` itself when it does not exist.
QByteArray canonicalPath(const QByteArray &path);

/// Whether `path` is the existing folder `folder` or lies in it, links resolved.
bool liesIn(const QByteArray &path, const QByteArray &folder);

#endif // PHOTOLIB_CLI_CACHE_FOLDER_H
