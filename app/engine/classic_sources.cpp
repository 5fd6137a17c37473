#include "engine/classic_sources.h"

#include "base/file_names.h"
#include "classic/device_paths.h"
#include "classic/image_unpacker.h"
#include "classic/pixel_formats.h"
#include "devices/encoded_names.h"
#include "engine/classic_photos.h"
#include "engine/library_session.h"
#include "engine/picture_format.h"

#include <QSize>

namespace {

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

// Told of the photo, so it says what it is that fails.
MadeFile noPicture(const QString &cause)
{
    return {QByteArray(), {FileError::Failed, QStringLiteral("no picture (%1)").arg(cause)}};
}

// The stored bytes of the picture; null when they cannot be read.
QByteArray storedBytes(LibrarySession &session, const StoredPicture &variant)
{
    FileError error;
    const QByteArray path = DevicePaths(session.files()).path(variant.fileName);
    const std::unique_ptr<DeviceFile> file = session.files().open(path, &error);
    QByteArray bytes(qMax(variant.size, 0), '\0');
    if (!file || file->read(variant.offset, bytes.data(), bytes.size(), &error) != bytes.size())
        return QByteArray();
    return bytes;
}

MadeFile imageFile(LibrarySession &session, const StoredPicture &variant)
{
    const QByteArray stored = storedBytes(session, variant);
    if (stored.isNull()) {
        session.requireDevice();
        return noPicture(variantFailure(session, variant).text);
    }
    MadeFile file;
    QString cause;
    if (!unpackImage(stored, variant, &file.bytes, &cause))
        return noPicture(cause);
    return file;
}

ExportSource originalSource(LibrarySession &session, const ClassicPhoto &photo, const Asset &asset)
{
    ExportSource source;
    source.source = asset.path();
    source.extension = asset.fileName.mid(nameStem(asset.fileName).size());
    source.label = classicFileText(photo.originalName);
    QByteArray path;
    if (!findOriginal(session, photo, &path, &source.info, &source.failure)) {
        session.requireConnected(source.failure);
        return source;
    }
    source.source = path;
    return source;
}

// "_720x480": two pictures of one photo differ in their sizes, or else in their formats.
QByteArray sizeTail(const StoredPicture &variant)
{
    const QSize size = unpackedSize(variant);
    if (size.isEmpty())
        return "_F" + QByteArray::number(variant.formatId);
    return '_' + QByteArray::number(size.width()) + 'x' + QByteArray::number(size.height());
}

// When the file of the picture was changed last: then all of its pictures may be others. 0 where
// the device does not tell.
qint64 changeOf(LibrarySession &session, const StoredPicture &variant)
{
    FileInfo info;
    FileError error;
    const QByteArray path = DevicePaths(session.files()).path(variant.fileName);
    return session.files().info(path, &info, &error) ? info.modified : 0;
}

ExportSource storedSource(LibrarySession &session, const StoredPicture &variant, const Asset &asset,
                          bool needsTail)
{
    ExportSource source;
    source.role = ExportRole::Stored;
    source.source = variant.fileName.toUtf8() + '@' + QByteArray::number(variant.offset) + '+' +
                    QByteArray::number(variant.size);
    source.tail = needsTail ? sizeTail(variant) : QByteArray();
    source.extension = isStoredAsJpeg(variant) ? ".jpg" : ".bmp";
    source.label = QString::number(asset.id);
    source.info.type = FileInfo::File;
    source.info.size = imageFileSize(variant);
    source.info.modified = changeOf(session, variant);
    source.make = [&session, variant] { return imageFile(session, variant); };
    return source;
}

// A photo of which the iPod has nothing.
ExportSource nothingStored(const Asset &asset)
{
    ExportSource source;
    source.role = ExportRole::Stored;
    source.label = QString::number(asset.id);
    source.failure = {FileError::Failed, QStringLiteral("no picture")};
    return source;
}

// An original that the iPod only names is none.
bool isThere(const std::vector<ExportSource> &originals)
{
    return !originals.empty() && originals.front().failure.kind != FileError::NotFound;
}

QVector<StoredPicture> chosenPictures(const ClassicPhoto &photo, StoredChoice choice,
                                      bool isOriginalThere)
{
    const StoredPicture *const largest = largestVariant(photo);
    const bool isLeftOut = choice == StoredChoice::None ||
                           (choice == StoredChoice::WithoutOriginal && isOriginalThere);
    if (isLeftOut || !largest)
        return {};
    if (choice != StoredChoice::All)
        return {*largest};
    QVector<StoredPicture> pictures = {*largest};
    for (const StoredPicture &variant : photo.variants) {
        if (&variant != largest)
            pictures.append(variant);
    }
    return pictures;
}

} // namespace

std::vector<ExportSource> classicSources(LibrarySession &session, StoredChoice choice,
                                         const Asset &asset)
{
    std::vector<ExportSource> sources;
    const ClassicPhoto *const photo = classicPhoto(session, static_cast<quint64>(asset.id));
    if (!photo)
        return {nothingStored(asset)};
    if (hasOriginal(*photo))
        sources.push_back(originalSource(session, *photo, asset));
    const bool hasNamesake = hasOriginal(*photo);
    for (const StoredPicture &variant : chosenPictures(*photo, choice, isThere(sources)))
        sources.push_back(storedSource(session, variant, asset, hasNamesake || !sources.empty()));
    if (sources.empty() && choice != StoredChoice::None)
        sources.push_back(nothingStored(asset));
    return sources;
}
