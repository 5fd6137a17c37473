#include "classic/device_paths.h"

#include "classic/photo_database.h"

#include <algorithm>

namespace {

// A name with a "/" in it would be two names by the time a file is opened.
bool isOneName(const QByteArray &name)
{
    return name != ".." && !name.contains('/') && !name.contains('\0');
}

QList<QByteArray> partsOf(const QString &name)
{
    QList<QByteArray> parts;
    for (const QByteArray &part : name.toUtf8().split(':')) {
        if (!part.isEmpty())
            parts.append(part);
    }
    return parts;
}

} // namespace

QByteArray DevicePaths::path(const QString &name)
{
    const QList<QByteArray> parts = partsOf(name);
    if (!std::all_of(parts.begin(), parts.end(), isOneName))
        return photosFolderPath + QByteArray("/.."); // which every file system refuses
    return m_paths.resolved(photosFolderPath + ('/' + parts.join('/')));
}
