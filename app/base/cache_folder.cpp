#include "base/cache_folder.h"

#include "base/error.h"
#include "base/folders.h"

#include <QCryptographicHash>

#include <cstdlib>
#include <memory>

namespace {

// Of a path that is not absolute it would depend on the current folder what is meant.
bool isAbsolute(const QByteArray &path)
{
    return path.startsWith('/');
}

QByteArray homeFolder()
{
    QByteArray home = qgetenv("HOME");
    if (home.isEmpty())
        throw Error("HOME", "is not set, which tells where the user's cache folder is");
    if (!isAbsolute(home))
        throw Error("HOME", "is not an absolute path, but " + home.toStdString());
    while (home.endsWith('/'))
        home.chop(1);
    return home;
}

} // namespace

QByteArray cacheFolder()
{
    const QByteArray chosen = qgetenv("XDG_CACHE_HOME");
    const QByteArray caches = isAbsolute(chosen) ? chosen : homeFolder() + "/.cache";
    return caches + "/photolib";
}

QByteArray defaultWorkFolder(const QByteArray &deviceId)
{
    const QByteArray cache = cacheFolder();
    const QByteArray workFolders = cache + "/work";
    requireOwnFolder(cache);
    requireOwnFolder(workFolders);
    const QByteArray hash = QCryptographicHash::hash(deviceId, QCryptographicHash::Sha256);
    constexpr int digits = 16; // plenty to tell one user's devices apart
    return workFolders + '/' + hash.toHex().left(digits);
}
