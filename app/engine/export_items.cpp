#include "engine/export_items.h"

#include "base/file_names.h"
#include "base/printable.h"
#include "boundary/photo_records.h"
#include "classic/image_unpacker.h"
#include "classic/pixel_formats.h"
#include "devices/encoded_names.h"
#include "engine/classic_photos.h"
#include "engine/library_session.h"
#include "engine/photo_text.h"
#include "engine/thumbnail.h"

#include <QSize>

namespace {

ExportItem fileItem(LibrarySession &session, const Asset &photo)
{
    ExportItem item;
    item.path = photo.path();
    item.label =
        item.path.isEmpty() ? QString::number(photo.id) : QString::fromUtf8(printable(item.path));
    item.name = safeFileName(writtenName(QString::fromLatin1(photo.fileName)));
    item.failure = {FileError::NotFound, QStringLiteral("its file has no name")};
    if (item.path.isEmpty() ||
        !deviceFileInfo(session.files(), item.path, &item.info, &item.failure))
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

bool isStoredAsJpeg(const StoredPicture &variant)
{
    const PixelFormat *const format = findPixelFormat(variant.formatId);
    return format && format->layout == PixelLayout::Jpeg;
}

// Bytes of the image file that is made of `variant`.
qint64 imageFileSize(const StoredPicture &variant)
{
    const QSize size = unpackedSize(variant);
    if (size.isEmpty() || isStoredAsJpeg(variant))
        return qMax(variant.size, 0);
    return bmpFileBytes(size);
}

// The name of the image file that is made for `photo`.
QByteArray pictureName(const LibrarySession &session, const photoItem &photo, const char *extension)
{
    const QString name = fileName(session, photo);
    const QByteArray stem =
        name.isEmpty() ? QByteArray::number(photo.id) : nameStem(safeFileName(name));
    return stem + '.' + extension;
}

MadeFile pictureFile(LibrarySession &session, const photoItem &photo)
{
    const PictureFile picture = requestedPicture(session, {photo.id, PictureChoice::Largest});
    if (!picture.format)
        return {QByteArray(), QByteArray(), std::nullopt, picture.failure};
    return {pictureName(session, photo, picture.format->extension()), picture.bytes,
            fileTimeOf(takenDate(photo)), FileError()};
}

// A file that is to be made of `variant`, of which the database tells all but the content. A
// picture without a date is of the time when it was written, which is not known.
ExportItem pictureItem(LibrarySession &session, const photoItem &photo,
                       const StoredPicture &variant)
{
    ExportItem item;
    const std::optional<qint64> taken = fileTimeOf(takenDate(photo));
    item.info.size = imageFileSize(variant);
    item.isForetold = taken && !unpackedSize(variant).isEmpty();
    if (item.isForetold) {
        item.name = pictureName(session, photo, isStoredAsJpeg(variant) ? "jpg" : "bmp");
        item.info.modified = *taken;
    }
    return item;
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
    ExportItem item = largest ? pictureItem(session, record, *largest) : ExportItem();
    item.label = labelText(session, record);
    item.make = [&session, record] { return pictureFile(session, record); };
    items.append(item);
    return items;
}

} // namespace

QVector<ExportItem> exportItems(LibrarySession &session, const Asset &photo)
{
    const auto id = static_cast<quint64>(photo.id);
    const ClassicPhoto *const classic = classicPhoto(session, id);
    return classic ? classicItems(session, id, *classic)
                   : QVector<ExportItem>{fileItem(session, photo)};
}
