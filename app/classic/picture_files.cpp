#include "classic/picture_files.h"

#include "base/log_output.h"

#include <algorithm>
#include <sys/resource.h>

namespace {

constexpr int noLink = -1;

// Others need descriptors, too.
size_t mostOpenFiles()
{
    struct rlimit limit = {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return DriveLinks::most;
    return std::min<rlim_t>(limit.rlim_cur / 2, DriveLinks::most);
}

void logRefusal(const QString &name, const QString &cause)
{
    logLine("PHOTOLIB-HOST", failureLevel,
            "The picture file \"" + name.toUtf8() + "\" is left out: " + cause.toUtf8());
}

// "/Photos/Thumbs/a" as the database would write it.
QString nameOf(const QByteArray &path)
{
    const QByteArray below = path.mid(path.indexOf('/', 1));
    return QString::fromUtf8(below).replace(QLatin1Char('/'), QLatin1Char(':'));
}

} // namespace

PictureFiles::~PictureFiles()
{
    for (const OpenFile &each : m_open)
        m_drive.remove(each.link);
}

QString PictureFiles::open(const QString &name)
{
    const auto known = m_namesOnDisk.constFind(name);
    return known != m_namesOnDisk.constEnd() ? *known : *m_namesOnDisk.insert(name, openNew(name));
}

QString PictureFiles::openNew(const QString &name)
{
    const QByteArray path = m_paths.path(name);
    QString nameOnDisk = nameOf(path);
    const auto known = m_links.constFind(nameOnDisk);
    if (known != m_links.constEnd())
        return *known == noLink ? QString() : nameOnDisk;
    FileError error;
    UniqueFd file = m_files.openLocal(path, &error);
    if (file.isOpen())
        return hold(std::move(file), nameOnDisk) ? nameOnDisk : QString();
    if (error.kind != FileError::WrongType && error.kind != FileError::Outside)
        return nameOnDisk;
    logRefusal(name, error.text);
    return QString();
}

// False when there are too many.
bool PictureFiles::hold(UniqueFd file, const QString &nameOnDisk)
{
    int &link = *m_links.insert(nameOnDisk, noLink);
    if (m_open.size() < mostOpenFiles())
        link = m_drive.add(file.get());
    if (link != noLink)
        m_open.push_back({std::move(file), link});
    return link != noLink;
}

void PictureFiles::logLeftOut() const
{
    const auto leftOut = static_cast<int>(std::count(m_links.begin(), m_links.end(), noLink));
    if (leftOut > 0)
        logLine("PHOTOLIB-HOST", failureLevel,
                QByteArray::number(leftOut) + " picture files are left out: more than " +
                    QByteArray::number(static_cast<int>(m_open.size())) + " cannot be held open");
}

QString PictureFiles::nameOnDrive(const QString &name) const
{
    const int link = m_links.value(name, noLink);
    return link == noLink ? QStringLiteral(":none") : QLatin1Char(':') + QString::number(link);
}
