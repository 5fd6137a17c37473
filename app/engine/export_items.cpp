#include "engine/export_items.h"

#include "base/file_names.h"
#include "boundary/photo_records.h"
#include "classic/image_unpacker.h"
#include "devices/encoded_names.h"
#include "engine/classic_photos.h"
#include "engine/library_session.h"
#include "engine/photo_text.h"
#include "engine/thumbnail.h"

#include <QSize>

namespace {

ExportItem fileItem(LibrarySession &session, quint64 id)
{
    photoItem photo;
    session.library().getPhoto(id, &photo); // false only when there is no file
    ExportItem item;
    item.label = labelText(photo);
    item.name = safeFileName(writtenName(photo.name));
    item.path = photo.path.toUtf8();
    if (!deviceFileInfo(session.files(), item.path, &item.info, &item.failure))
        return item;
    if (item.info.type == FileInfo::File)
        item.failure = FileError();
    else
        item.failure = {FileError::WrongType, QStringLiteral("not a regular file")};
    return item;
}

ExportItem originalItem(LibrarySession &session, const ClassicPhoto &photo, const QString &name)
{
    ExportItem item;
    item.label = classicFileText(photo.originalName);
    item.name = safeFileName(name);
    findOriginal(session, photo, &item.path, &item.info, &item.failure);
    return item;
}

// Bytes of the image file that is made of `variant`; more than a JPEG file will have.
qint64 imageFileSize(const StoredPicture &variant)
{
    constexpr qint64 headers = 54;
    const QSize size = unpackedSize(variant);
    if (size.isEmpty())
        return qMax(variant.size, 0);
    return headers + (qint64(size.width()) * 3 + 3) / 4 * 4 * size.height();
}

MadeFile pictureFile(LibrarySession &session, const photoItem &photo)
{
    const Thumbnail picture = sourcePhotoOf(session, photo.id);
    const char *const extension = imageExtension(picture.bytes);
    if (picture.failure.kind != FileError::None)
        return {QByteArray(), QByteArray(), std::nullopt, picture.failure};
    if (!extension)
        return {QByteArray(),
                QByteArray(),
                std::nullopt,
                {FileError::Failed, QStringLiteral("a picture that is neither JPEG nor BMP")}};
    const QString name = fileName(session, photo);
    const QByteArray stem =
        name.isEmpty() ? QByteArray::number(photo.id) : nameStem(safeFileName(name));
    return {stem + '.' + extension, picture.bytes, fileTimeOf(takenDate(photo)), FileError()};
}

QVector<ExportItem> classicItems(LibrarySession &session, quint64 id, const ClassicPhoto &photo)
{
    QVector<ExportItem> items;
    photoItem record;
    session.library().getPhoto(id, &record);
    if (hasOriginal(photo))
        items.append(originalItem(session, photo, fileName(session, record)));
    const StoredPicture *const largest = largestVariant(photo);
    if (!largest && !items.isEmpty())
        return items;
    ExportItem item;
    item.label = labelText(session, record);
    item.info.size = largest ? imageFileSize(*largest) : 0;
    item.make = [&session, record] { return pictureFile(session, record); };
    items.append(item);
    return items;
}

} // namespace

QVector<ExportItem> exportItems(LibrarySession &session, quint64 id)
{
    const ClassicPhoto *const photo = classicPhoto(session, id);
    return photo ? classicItems(session, id, *photo) : QVector<ExportItem>{fileItem(session, id)};
}
