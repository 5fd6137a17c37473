#include "sample/jpeg.h"

#include "sample/dates.h"
#include "sample/sample_error.h"

#include <QBuffer>
#include <QImageWriter>
#include <QTransform>
#include <QtEndian>

namespace sample {

namespace {

constexpr int dotsPerMeter = 2835; // 72 per inch; the default is the screen's, if there is one

void put16(QByteArray &bytes, int value)
{
    char buffer[2];
    qToBigEndian(static_cast<quint16>(value), buffer);
    bytes.append(buffer, 2);
}

void put32(QByteArray &bytes, quint32 value)
{
    char buffer[4];
    qToBigEndian(value, buffer);
    bytes.append(buffer, 4);
}

enum ExifType { AsciiType = 2, ShortType = 3, LongType = 4 };

void putEntry(QByteArray &bytes, int tag, ExifType type, quint32 count, quint32 value)
{
    put16(bytes, tag);
    put16(bytes, type);
    put32(bytes, count);
    put32(bytes, type == ShortType ? value << 16 : value);
}

/// A big-endian TIFF structure: a directory with the orientation and a link to a second
/// directory, which has the date.
QByteArray exifBlock(int orientation, const QByteArray &date)
{
    const int entrySize = 12;
    const int firstDirectory = 8;
    const int secondDirectory = firstDirectory + 2 + 2 * entrySize + 4;
    const int dateOffset = secondDirectory + 2 + entrySize + 4;
    QByteArray tiff("MM\0*", 4);
    put32(tiff, firstDirectory);
    put16(tiff, 2);
    putEntry(tiff, 0x0112, ShortType, 1, static_cast<quint32>(orientation));
    putEntry(tiff, 0x8769, LongType, 1, static_cast<quint32>(secondDirectory));
    put32(tiff, 0);
    put16(tiff, 1);
    putEntry(tiff, 0x9003, AsciiType, static_cast<quint32>(date.size() + 1),
             static_cast<quint32>(dateOffset));
    put32(tiff, 0);
    return tiff + date + '\0';
}

QByteArray exifSegment(int orientation, qint64 takenAt)
{
    const QString date = dateTime(takenAt).toString(QStringLiteral("yyyy:MM:dd HH:mm:ss"));
    const QByteArray content = QByteArray("Exif\0\0", 6) + exifBlock(orientation, date.toLatin1());
    QByteArray segment("\xff\xe1");
    put16(segment, content.size() + 2);
    return segment + content;
}

/// How far the camera was turned when `orientation` turns its picture upright.
QImage asHeld(const QImage &upright, int orientation)
{
    switch (orientation) {
    case 3:
        return upright.transformed(QTransform().rotate(180));
    case 6:
        return upright.transformed(QTransform().rotate(-90));
    case 8:
        return upright.transformed(QTransform().rotate(90));
    default:
        return upright;
    }
}

} // namespace

QByteArray jpeg(const QImage &picture, int quality)
{
    QImage plain = picture;
    plain.setDotsPerMeterX(dotsPerMeter);
    plain.setDotsPerMeterY(dotsPerMeter);
    QBuffer buffer;
    QImageWriter writer(&buffer, QByteArrayLiteral("jpeg"));
    writer.setQuality(quality);
    if (!writer.write(plain))
        throw SampleError(
            QStringLiteral("cannot make a JPEG picture: %1").arg(writer.errorString()));
    return buffer.data();
}

QByteArray cameraJpeg(const QImage &upright, int orientation, qint64 takenAt)
{
    QByteArray file = jpeg(asHeld(upright, orientation), 82);
    const int startMarkerSize = 2;
    return file.insert(startMarkerSize, exifSegment(orientation, takenAt));
}

} // namespace sample
