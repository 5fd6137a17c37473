#include "classic/image_unpacker.h"

#include "classic/frame_crop.h"
#include "classic/new_image.h"
#include "classic/pixel_formats.h"
#include "classic/stride_guess.h"
#include "classic/yuv_image.h"

#include <QBuffer>
#include <QTransform>
#include <QtEndian>

namespace {

constexpr int dotsPerMeter = 2834; // 72 an inch

// Fills `*cause` with what is wrong where the format's pictures do not have `bytes`.
bool isSizeOf(const PixelFormat &format, qint64 bytes, QString *cause)
{
    const qint32 pixelBytes = format.pixelBytes();
    if (format.layout == PixelLayout::Jpeg || bytes == pixelBytes)
        return true;
    if (format.slotBytes != 0 && bytes == format.slotBytes)
        return true;
    QString sizes = QString::number(pixelBytes);
    if (format.slotBytes != 0)
        sizes += QStringLiteral(" or %1").arg(format.slotBytes);
    *cause = QStringLiteral("%1 bytes where the format has %2").arg(bytes).arg(sizes);
    return false;
}

using ReadPixels = void (*)(const void *bytes, qsizetype count, void *pixels);

QImage imageOfPixels(const uchar *bytes, const QSize &size, QImage::Format format, ReadPixels read)
{
    QImage image = newImage(size, format);
    const int rowBytes = size.width() * 2;
    for (int row = 0; row < size.height(); ++row, bytes += rowBytes)
        read(bytes, size.width(), image.scanLine(row));
    return image;
}

// The whole frame of a format with pixels, in rows of that size; `bytes` are as many as the
// format has.
QImage frameOf(PixelLayout layout, const uchar *bytes, const QSize &size)
{
    switch (layout) {
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

QImage rotatedClockwise(const QImage &image)
{
    return image.transformed(QTransform().rotate(90));
}

// Of a format that is rotated. Numbers of the rotated frame tell of a writer that has rotated it;
// numbers of the upright frame do not tell, but the pixels do.
QImage rotatedPicture(const PixelFormat &format, const uchar *bytes, const FrameCrop &crop)
{
    const QImage rotated = frameOf(format.layout, bytes, format.frame().transposed());
    if (crop.isInRotatedFrame)
        return rotatedClockwise(rotated.copy(crop.rectangle));
    if (hasStride(format.width, rotated))
        return frameOf(format.layout, bytes, format.frame()).copy(crop.rectangle);
    return rotatedClockwise(rotated).copy(crop.rectangle);
}

QImage pictureOf(const PixelFormat &format, const QByteArray &raw, const FrameCrop &crop)
{
    const auto *bytes = reinterpret_cast<const uchar *>(raw.constData());
    if (format.rotation != PixelRotation::None)
        return rotatedPicture(format, bytes, crop);
    return frameOf(format.layout, bytes, format.frame()).copy(crop.rectangle);
}

QByteArray bmpOf(QImage picture)
{
    picture = picture.convertToFormat(QImage::Format_RGB32);
    // An image has the resolution of the screen by itself, if there is one.
    picture.setDotsPerMeterX(dotsPerMeter);
    picture.setDotsPerMeterY(dotsPerMeter);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    // Nothing but a want of memory keeps it from being written.
    if (!picture.save(&buffer, "BMP"))
        throw std::bad_alloc();
    return buffer.data();
}

bool unpackJpeg(const QByteArray &raw, QByteArray *image, QString *cause)
{
    if (!raw.startsWith("\xff\xd8")) {
        *cause = QStringLiteral("not a JPEG file");
        return false;
    }
    *image = raw;
    return true;
}

bool unpackPixels(const PixelFormat &format, const QByteArray &raw, const StoredPicture &photo,
                  QByteArray *image, QString *cause)
{
    FrameCrop crop;
    if (!isSizeOf(format, raw.size(), cause) || !findFrameCrop(format, photo, &crop, cause))
        return false;
    *image = bmpOf(pictureOf(format, raw, crop));
    return true;
}

// A JPEG file has no frame to lie in.
QSize sizeInDatabase(const StoredPicture &photo)
{
    const int left = photo.horizontalPadding;
    const int top = photo.verticalPadding;
    const bool hasPixels = left >= 0 && top >= 0 && left < photo.width && top < photo.height;
    return hasPixels ? QSize(photo.width - left, photo.height - top) : QSize();
}

} // namespace

QSize unpackedSize(const StoredPicture &photo)
{
    const PixelFormat *format = findPixelFormat(photo.formatId);
    if (format && format->layout == PixelLayout::Jpeg)
        return sizeInDatabase(photo);
    QString cause;
    FrameCrop crop;
    if (!format || !isSizeOf(*format, photo.size, &cause) ||
        !findFrameCrop(*format, photo, &crop, &cause))
        return QSize();
    const QSize size = crop.rectangle.size();
    return crop.isInRotatedFrame ? size.transposed() : size;
}

bool unpackImage(const QByteArray &raw, const StoredPicture &photo, QByteArray *image,
                 QString *error)
{
    const PixelFormat *format = findPixelFormat(photo.formatId);
    if (!format) {
        *error = QStringLiteral("unknown format %1").arg(photo.formatId);
        return false;
    }
    QString cause;
    const bool isUnpacked = format->layout == PixelLayout::Jpeg
                                ? unpackJpeg(raw, image, &cause)
                                : unpackPixels(*format, raw, photo, image, &cause);
    if (!isUnpacked)
        *error = QStringLiteral("%1: %2").arg(format->id).arg(cause);
    return isUnpacked;
}
