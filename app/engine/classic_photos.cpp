#include "engine/classic_photos.h"

#include "base/printable.h"
#include "boundary/photo_records.h"
#include "classic/device_paths.h"
#include "classic/image_unpacker.h"
#include "engine/library_session.h"
#include "engine/photo_text.h"
#include "host/classic_ipod.h"

#include <QSize>
#include <QStringList>

namespace {

bool requireFile(DeviceFileSystem &files, const QByteArray &path, FileInfo *info, FileError *error)
{
    if (!files.info(path, info, error))
        return false;
    if (info->type == FileInfo::File)
        return true;
    *error = {FileError::WrongType, QStringLiteral("not a regular file")};
    return false;
}

} // namespace

const ClassicPhoto *classicPhoto(const LibrarySession &session, quint64 id)
{
    const ClassicIpod *const iPod = session.classicIpod();
    return iPod ? iPod->photo(id) : nullptr;
}

QString variantDimensionsText(const StoredPicture &variant)
{
    const QSize size = unpackedSize(variant);
    if (size.isEmpty())
        return QString();
    return QStringLiteral("%1 x %2").arg(size.width()).arg(size.height());
}

QString classicFileText(const QString &name)
{
    QStringList parts = name.split(QLatin1Char(':'), Qt::SkipEmptyParts);
    if (parts.isEmpty())
        return QString();
    parts.prepend(QStringLiteral("Photos"));
    return printable(parts.join(QLatin1Char('/')));
}

QString fileName(const LibrarySession &session, const photoItem &item)
{
    const ClassicPhoto *const photo = classicPhoto(session, item.id);
    if (!photo)
        return writtenName(item.name);
    return photo->originalName.section(QLatin1Char(':'), -1, -1, QString::SectionSkipEmpty);
}

bool hasOriginal(const ClassicPhoto &photo)
{
    return !classicFileText(photo.originalName).isEmpty();
}

bool findOriginal(LibrarySession &session, const ClassicPhoto &photo, QByteArray *path,
                  FileInfo *info, FileError *error)
{
    *path = session.classicIpod()->originalPath(photo);
    return requireFile(session.files(), *path, info, error);
}

FileError variantFailure(LibrarySession &session, const StoredPicture &variant)
{
    FileError error;
    const QByteArray path = DevicePaths(session.files()).path(variant.fileName);
    // Opened rather than asked about, for only that tells whether it can be read.
    const std::unique_ptr<DeviceFile> file = session.files().open(path, &error);
    const qint64 size = file ? file->size(&error) : -1;
    if (size >= 0 && qint64(variant.offset) + variant.size > size)
        error = {FileError::Failed, QStringLiteral("the file is too short")};
    else if (size >= 0)
        error = {FileError::Failed, QStringLiteral("not readable")};
    return {error.kind,
            QStringLiteral("%1: %2").arg(classicFileText(variant.fileName), failureText(error))};
}

// The host gives the plug-in no other date for a photo without one.
QDateTime takenDate(const photoItem &item)
{
    return item.createDate.toSecsSinceEpoch() == 0 ? QDateTime() : item.createDate;
}

std::optional<qint64> fileTimeOf(const QDateTime &taken)
{
    constexpr qint64 nanoseconds = 1000000000;
    if (!taken.isValid())
        return std::nullopt;
    const QDateTime shown = taken.toUTC();
    return QDateTime(shown.date(), shown.time(), Qt::LocalTime).toSecsSinceEpoch() * nanoseconds;
}

// The plug-in gives all photos of a classic iPod the same path, which leads nowhere.
QString labelText(const LibrarySession &session, const photoItem &item)
{
    return session.classicIpod() ? QString::number(item.id) : labelText(item);
}
