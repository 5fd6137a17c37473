#include "cli/cache_folder.h"

#include <QCryptographicHash>
#include <QFile>
#include <QStandardPaths>

#include <cstdlib>
#include <memory>

QByteArray cacheFolder()
{
    const QString caches = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    return QFile::encodeName(caches) + "/photolib";
}

QByteArray canonicalPath(const QByteArray &path)
{
    const std::unique_ptr<char, decltype(&std::free)> resolved(
        ::realpath(path.constData(), nullptr), &std::free);
    return resolved ? QByteArray(resolved.get()) : path;
}

QByteArray defaultWorkFolder(const QByteArray &deviceFolder)
{
    const QByteArray hash =
        QCryptographicHash::hash(canonicalPath(deviceFolder), QCryptographicHash::Sha256);
    constexpr int digits = 16; // plenty to tell one user's devices apart
    return cacheFolder() + "/work/" + hash.toHex().left(digits);
}

bool liesIn(const QByteArray &path, const QByteArray &folder)
{
    return (canonicalPath(path) + '/').startsWith(canonicalPath(folder) + '/');
}
