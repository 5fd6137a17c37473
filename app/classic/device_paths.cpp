#include "classic/device_paths.h"

#include "classic/photo_database.h"
#include "host/host_log.h"

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

void logRefusal(const QString &name, const QString &cause)
{
    Log("PHOTOLIB-HOST", 2, "The picture file \"%s\" is left out: %s", name.toUtf8().constData(),
        cause.toUtf8().constData());
}

} // namespace

QByteArray DevicePaths::path(const QString &name)
{
    const QList<QByteArray> parts = partsOf(name);
    if (!std::all_of(parts.begin(), parts.end(), isOneName))
        return photosFolderPath + QByteArray("/.."); // which every file system refuses
    return m_paths.resolved(photosFolderPath + ('/' + parts.join('/')));
}

QString DevicePaths::checkedName(const QString &name)
{
    const auto known = m_checked.constFind(name);
    return known != m_checked.constEnd() ? *known : *m_checked.insert(name, check(name));
}

QString DevicePaths::check(const QString &name)
{
    const QByteArray found = path(name);
    FileInfo info;
    FileError error;
    const bool isThere = m_files.info(found, &info, &error);
    if (isThere && info.type != FileInfo::File)
        error = {FileError::WrongType, QStringLiteral("not a regular file")};
    if (error.kind != FileError::None && error.kind != FileError::NotFound) {
        logRefusal(name, error.text);
        return QString();
    }
    const QByteArray below = found.mid(found.indexOf('/', 1));
    return QString::fromUtf8(below).replace(QLatin1Char('/'), QLatin1Char(':'));
}
