#include "engine/thumbnail.h"

#include "base/log_output.h"
#include "base/qt_messages.h"
#include "boundary/photo_records.h"
#include "engine/classic_photos.h"
#include "engine/library_session.h"
#include "host/transfer_monitor.h"

#include <QBuffer>
#include <QImageReader>
#include <QTransform>
#include <QtEndian>

namespace {

constexpr qint64 mostPixels = 16 << 20;

bool isThumbnailSize(const QSize &size)
{
    return !size.isEmpty() && qint64(size.width()) * size.height() <= mostPixels;
}

// Null where the content is that of another format, whatever readers are installed.
const char *readerFormat(const QByteArray &bytes)
{
    if (bytes.startsWith("\xff\xd8\xff"))
        return "jpeg";
    return bytes.startsWith("BM") ? "bmp" : nullptr;
}

qint32 numberAt(const QByteArray &bytes, int offset)
{
    return qFromLittleEndian<qint32>(bytes.constData() + offset);
}

// Whether all rows are there of a BMP file as the plug-in makes them, with 24 bits a pixel:
// the reader leaves rows that are missing as the memory happens to be.
bool isWholeBmp(const QByteArray &bytes)
{
    constexpr int headers = 54;
    if (bytes.size() < headers)
        return false;
    const qint64 width = numberAt(bytes, 18);
    const qint64 height = numberAt(bytes, 22);
    const qint32 planesAndBits = numberAt(bytes, 26);
    const qint32 compression = numberAt(bytes, 30);
    if (planesAndBits != (24 << 16 | 1) || compression != 0 || width <= 0 || height <= 0)
        return false;
    const qint64 row = (width * 3 + 3) / 4 * 4;
    const qint64 pixels = numberAt(bytes, 10);
    return pixels >= headers && row <= (bytes.size() - pixels) / height;
}

// Each scan of a progressive JPEG goes over all of its pixels again, and may have a few bytes
// only: some thousands of them take minutes. The usual ones are some ten.
bool hasFewScans(const QByteArray &jpeg)
{
    constexpr int mostScans = 100;
    return jpeg.count("\xff\xda") <= mostScans;
}

bool isSound(const QByteArray &bytes, const QByteArray &format)
{
    return format == "bmp" ? isWholeBmp(bytes) : hasFewScans(bytes);
}

// 1 for a picture that is wider than high, -1 for one that is higher, 0 for a square.
int shapeOf(int width, int height)
{
    return (width > height) - (width < height);
}

// Which of a classic iPod's pictures is asked for, and how.
struct PictureRequest {
    int (photo_manager_int::*operation)(const quint64 &id, QByteArray &data);
    const StoredPicture *(*variant)(const ClassicPhoto &photo);
    const char *absence;
};

// Hears why a file that is there could not be read.
class ReadFailure : public TransferObserver
{
public:
    const FileError &error() const { return m_error; }

    void bytesWritten(qint64) override {}

    void failed(const QByteArray &, const FileError &error) override
    {
        if (m_error.kind == FileError::None && !error.isMissing())
            m_error = error;
    }

private:
    FileError m_error;
};

// Why there is no picture; of no kind when nobody tells.
FileError causeOf(const PictureRequest &request, LibrarySession &session, quint64 id,
                  const QList<QByteArray> &logged)
{
    const ClassicPhoto *const photo = classicPhoto(session, id);
    const StoredPicture *const variant = photo ? request.variant(*photo) : nullptr;
    if (!logged.isEmpty())
        return {FileError::Failed, QString::fromUtf8(logged.first())};
    return variant ? variantFailure(session, *variant) : FileError();
}

Thumbnail withoutPicture(const PictureRequest &request, const FileError &cause, bool isUnreadable)
{
    const QString absence = QLatin1String(request.absence);
    if (cause.kind == FileError::None)
        return {QByteArray(), {FileError::Failed, absence}, false};
    const bool isGone = cause.kind == FileError::Disconnected;
    return {QByteArray(),
            {isGone ? FileError::Disconnected : FileError::Failed,
             QStringLiteral("%1 (%2)").arg(absence, cause.text)},
            isUnreadable};
}

Thumbnail pictureOf(LibrarySession &session, quint64 id, const PictureRequest &request)
{
    QByteArray bytes;
    ReadFailure failure;
    const LogCapture log;
    {
        const TransferWatch watch(&failure);
        const int result = (session.library().*request.operation)(id, bytes);
        if (result == 0 && !bytes.isEmpty())
            return {bytes, FileError(), false};
    }
    session.requireDevice();
    if (failure.error().kind != FileError::None)
        return withoutPicture(request, failure.error(), true);
    const FileError cause = causeOf(request, session, id, log.failures());
    return withoutPicture(request, cause, cause.kind == FileError::Denied);
}

} // namespace

Thumbnail thumbnailOf(LibrarySession &session, quint64 id)
{
    return pictureOf(session, id,
                     {&photo_manager_int::getPhotoThumbnail, smallestVariant, "no thumbnail"});
}

Thumbnail sourcePhotoOf(LibrarySession &session, quint64 id)
{
    return pictureOf(session, id,
                     {&photo_manager_int::getSourcePhoto, largestVariant, "no picture"});
}

const char *imageExtension(const QByteArray &bytes)
{
    const QByteArray format = readerFormat(bytes);
    if (format == "jpeg")
        return "jpg";
    return format == "bmp" ? "bmp" : nullptr;
}

QImage decodedThumbnail(const QByteArray &bytes, QString *cause)
{
    const QByteArray format = readerFormat(bytes);
    if (format.isEmpty()) {
        *cause = QStringLiteral("a thumbnail that is neither JPEG nor BMP");
        return QImage();
    }
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    const QtMessages messages; // of the reader
    QImageReader reader(&buffer, format);
    reader.setAutoDetectImageFormat(false);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (!size.isEmpty() && !isThumbnailSize(size)) {
        *cause = QStringLiteral("a thumbnail of %1 x %2 pixels is too large")
                     .arg(size.width())
                     .arg(size.height());
        return QImage();
    }
    const bool isReadable = !size.isEmpty() && isSound(bytes, format);
    QImage picture = isReadable ? reader.read() : QImage();
    // The reader makes a picture of half a JPEG file as well, and only says so.
    if (!picture.isNull() && messages.first().isEmpty())
        return picture;
    *cause = QStringLiteral("a damaged thumbnail");
    return QImage();
}

QImage turnedUpright(const QImage &picture, int orientation)
{
    const bool isOnItsSide = orientation >= 5 && orientation <= 8;
    QImage standing = isOnItsSide ? picture.transformed(QTransform().rotate(90)) : picture;
    switch (orientation) {
    case 2:
    case 5:
        return standing.mirrored(true, false);
    case 3:
    case 8:
        return standing.mirrored(true, true);
    case 4:
    case 7:
        return standing.mirrored(false, true);
    default:
        return standing;
    }
}

QImage uprightThumbnail(const QImage &picture, const photoItem &item)
{
    const int wanted = shapeOf(item.width, item.height);
    const int given = shapeOf(picture.width(), picture.height());
    const bool liesAcross = wanted * given == -1;
    const bool isOnItsSide = item.orientation >= 5 && item.orientation <= 8;
    return liesAcross && isOnItsSide ? turnedUpright(picture, item.orientation) : picture;
}
