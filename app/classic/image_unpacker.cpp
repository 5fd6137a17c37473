#include "classic/image_unpacker.h"

#include "classic/new_image.h"
#include "classic/pixel_formats.h"
#include "classic/yuv_image.h"

#include <QBuffer>
#include <QTransform>
#include <QtEndian>

namespace {

QString withFormat(const PixelFormat &format, const QString &cause)
{
    return QStringLiteral("%1: %2").arg(format.id).arg(cause);
}

QString sizeText(int width, int height)
{
    return QStringLiteral("%1 x %2").arg(width).arg(height);
}

// Empty for bytes of the format. Databases give the place in the file as the size or what the
// pixels fill of it.
QString causeOfSize(const PixelFormat &format, qint64 bytes)
{
    if (format.layout == PixelLayout::Jpeg || bytes == format.pixelBytes())
        return QString();
    QString sizes = QString::number(format.pixelBytes());
    if (format.slotBytes != 0) {
        if (bytes == format.slotBytes)
            return QString();
        sizes += QStringLiteral(" or %1").arg(format.slotBytes);
    }
    return withFormat(format,
                      QStringLiteral("%1 bytes where the format has %2").arg(bytes).arg(sizes));
}

// Empty for a picture with at least a pixel, inside of the frame.
QString causeOfPlace(const PixelFormat &format, const itdb_photo &photo)
{
    const QString size = sizeText(photo.width, photo.height);
    if (photo.width <= 0 || photo.height <= 0)
        return withFormat(format, QStringLiteral("a picture of %1 pixels").arg(size));
    if (photo.width > format.width || photo.height > format.height) {
        return withFormat(format, QStringLiteral("a picture of %1 pixels in a frame of %2")
                                      .arg(size, sizeText(format.width, format.height)));
    }
    const int left = photo.horizontalPadding;
    const int top = photo.verticalPadding;
    if (left < 0 || top < 0 || left >= photo.width || top >= photo.height) {
        return withFormat(format, QStringLiteral("a padding of %1 pixels in a picture of %2")
                                      .arg(sizeText(left, top), size));
    }
    return QString();
}

// For a picture that `causeOfPlace` finds nothing wrong with: the padding on the left and at
// the top counts as a part of its width and height.
QRect placeOf(const itdb_photo &photo)
{
    return QRect(QPoint(photo.horizontalPadding, photo.verticalPadding),
                 QPoint(photo.width - 1, photo.height - 1));
}

using ReadPixels = void (*)(const void *bytes, qsizetype count, void *pixels);

QImage imageOfPixels(const uchar *bytes, const QSize &size, QImage::Format format, ReadPixels read)
{
    QImage image = newImage(size, format);
    for (int row = 0; row < size.height(); ++row)
        read(bytes + row * size.width() * 2, size.width(), image.scanLine(row));
    return image;
}

// The whole frame as it is stored; `bytes` are as many as the format has.
QImage storedFrame(const PixelFormat &format, const uchar *bytes)
{
    const QSize size =
        format.turn == PixelTurn::None ? format.frame() : format.frame().transposed();
    switch (format.layout) {
    case PixelLayout::Rgb565:
        return imageOfPixels(bytes, size, QImage::Format_RGB16, qFromLittleEndian<quint16>);
    case PixelLayout::Rgb565BigEndian:
        return imageOfPixels(bytes, size, QImage::Format_RGB16, qFromBigEndian<quint16>);
    case PixelLayout::Rgb555:
        return imageOfPixels(bytes, size, QImage::Format_RGB555, qFromLittleEndian<quint16>);
    case PixelLayout::InterlacedUyvy:
        return imageOfInterlacedUyvy(bytes, size);
    case PixelLayout::PlanarYuv420:
        return imageOfPlanarYuv420(bytes, size);
    case PixelLayout::Jpeg:
        break;
    }
    return QImage();
}

QImage uprightFrame(const PixelFormat &format, const QByteArray &raw)
{
    const QImage stored = storedFrame(format, reinterpret_cast<const uchar *>(raw.constData()));
    return format.turn == PixelTurn::None ? stored : stored.transformed(QTransform().rotate(90));
}

QByteArray bmpOf(const QImage &picture)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    // Nothing but a want of memory keeps it from being written.
    if (!picture.convertToFormat(QImage::Format_RGB32).save(&buffer, "BMP"))
        throw std::bad_alloc();
    return buffer.data();
}

bool unpackJpeg(const PixelFormat &format, const QByteArray &raw, QByteArray *image, QString *error)
{
    if (!raw.startsWith("\xff\xd8")) {
        *error = withFormat(format, QStringLiteral("not a JPEG file"));
        return false;
    }
    *image = raw;
    return true;
}

} // namespace

QSize unpackedSize(const itdb_photo &photo)
{
    const PixelFormat *format = findPixelFormat(photo.formatId);
    if (!format || !causeOfSize(*format, photo.size).isEmpty() ||
        !causeOfPlace(*format, photo).isEmpty())
        return QSize();
    return placeOf(photo).size();
}

bool unpackImage(const QByteArray &raw, const itdb_photo &photo, QByteArray *image, QString *error)
{
    const PixelFormat *format = findPixelFormat(photo.formatId);
    if (!format) {
        *error = QStringLiteral("unknown format %1").arg(photo.formatId);
        return false;
    }
    if (format->layout == PixelLayout::Jpeg)
        return unpackJpeg(*format, raw, image, error);
    QString cause = causeOfSize(*format, raw.size());
    if (cause.isEmpty())
        cause = causeOfPlace(*format, photo);
    if (!cause.isEmpty()) {
        *error = cause;
        return false;
    }
    *image = bmpOf(uprightFrame(*format, raw).copy(placeOf(photo)));
    return true;
}
