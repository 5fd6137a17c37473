#include "engine/thumbnail_image.h"

#include "base/qt_messages.h"
#include "engine/picture_bytes.h"
#include "engine/picture_format.h"

#include <QImageReader>
#include <QTransform>
#include <QtEndian>

#include <memory>

namespace {

constexpr qint64 mostPixels = 16 << 20;

bool isThumbnailSize(const QSize &size)
{
    return !size.isEmpty() && qint64(size.width()) * size.height() <= mostPixels;
}

qint32 numberAt(const QByteArray &bytes, int offset)
{
    return qFromLittleEndian<qint32>(bytes.constData() + offset);
}

// Whether all rows are there of a BMP file as the plug-in makes them, with 24 bits a pixel:
// the reader leaves rows that are missing as the memory happens to be.
bool isWholeBmp(const QByteArray &bytes)
{
    if (bytes.size() < bmpHeaderBytes)
        return false;
    const qint64 width = numberAt(bytes, 18);
    const qint64 height = numberAt(bytes, 22);
    const qint32 planesAndBits = numberAt(bytes, 26);
    const qint32 compression = numberAt(bytes, 30);
    if (planesAndBits != (24 << 16 | 1) || compression != 0 || width <= 0 || height <= 0)
        return false;
    const qint64 pixels = numberAt(bytes, 10);
    return pixels >= bmpHeaderBytes && bmpRowBytes(width) <= (bytes.size() - pixels) / height;
}

bool hasFewScans(const QByteArray &jpeg)
{
    constexpr int mostScans = 100;
    return mostScansIn(jpeg) <= mostScans;
}

bool isSound(const QByteArray &bytes)
{
    return bytes.startsWith("BM") ? isWholeBmp(bytes) : hasFewScans(bytes);
}

// 1 for a picture that is wider than high, -1 for one that is higher, 0 for a square.
int shapeOf(qint64 width, qint64 height)
{
    return (width > height) - (width < height);
}

} // namespace

QImage decodedThumbnail(const QByteArray &bytes, QString *cause, const CancelToken *cancel)
{
    const PictureFormat *const format = formatOfContent(bytes);
    if (!format) { // whatever readers are installed
        *cause = QStringLiteral("a thumbnail that is neither JPEG nor BMP");
        return QImage();
    }
    const bool takesLong = !bytes.startsWith("BM");
    const std::unique_ptr<QIODevice> device = openedBytes(bytes, takesLong ? cancel : nullptr);
    const QtMessages messages; // of the reader
    QImageReader reader(device.get(), format->name);
    reader.setAutoDetectImageFormat(false);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (!size.isEmpty() && !isThumbnailSize(size)) {
        *cause = QStringLiteral("a thumbnail of %1 x %2 pixels is too large")
                     .arg(size.width())
                     .arg(size.height());
        return QImage();
    }
    const bool isReadable = !size.isEmpty() && isSound(bytes);
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

QImage uprightThumbnail(const QImage &picture, const StoredShape &shape)
{
    const int wanted = shapeOf(shape.width, shape.height);
    const int given = shapeOf(picture.width(), picture.height());
    const bool liesAcross = wanted * given == -1;
    const bool isOnItsSide = shape.orientation >= 5 && shape.orientation <= 8;
    return liesAcross && isOnItsSide ? turnedUpright(picture, int(shape.orientation)) : picture;
}
