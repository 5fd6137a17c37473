#include "sample/raw_file.h"

#include <QVector>
#include <QtEndian>

namespace sample {

namespace {

enum Tag : quint16 {
    NewSubfileType = 254,
    ImageWidth = 256,
    ImageLength = 257,
    BitsPerSample = 258,
    Compression = 259,
    PhotometricInterpretation = 262,
    StripOffsets = 273,
    Orientation = 274,
    SamplesPerPixel = 277,
    RowsPerStrip = 278,
    StripByteCounts = 279,
    DngVersion = 50706,
};

enum Type : quint16 { Byte = 1, Short = 3, Long = 4 };

constexpr quint32 headerSize = 8;
constexpr quint32 countSize = 2; // of the entries of a directory
constexpr quint32 entrySize = 12;
constexpr quint32 offsetSize = 4; // of the next directory
constexpr quint32 linearRaw = 34892;

struct Entry {
    Tag tag;
    Type type;
    quint32 count;
    quint32 value; // as far as it goes into four bytes, which is all that these need
};

template <typename Number>
void append(QByteArray &bytes, Number number)
{
    char encoded[sizeof(Number)];
    qToLittleEndian(number, encoded);
    bytes.append(encoded, sizeof(Number));
}

void append(QByteArray &bytes, const Entry &entry)
{
    append(bytes, quint16(entry.tag));
    append(bytes, quint16(entry.type));
    append(bytes, entry.count);
    append(bytes, entry.value);
}

QByteArray pixelsOf(const QImage &gray)
{
    QByteArray pixels;
    pixels.reserve(gray.width() * gray.height());
    for (int y = 0; y < gray.height(); ++y)
        pixels.append(reinterpret_cast<const char *>(gray.constScanLine(y)), gray.width());
    return pixels;
}

QVector<Entry> entriesOf(quint32 width, quint32 height)
{
    return {
        {NewSubfileType, Long, 1, 0},
        {ImageWidth, Long, 1, width},
        {ImageLength, Long, 1, height},
        {BitsPerSample, Short, 1, 8},
        {Compression, Short, 1, 1}, // none
        {PhotometricInterpretation, Short, 1, linearRaw},
        {StripOffsets, Long, 1, 0}, // known once there are all entries
        {Orientation, Short, 1, 1},
        {SamplesPerPixel, Short, 1, 1},
        {RowsPerStrip, Long, 1, height},
        {StripByteCounts, Long, 1, width * height},
        {DngVersion, Byte, 4, 0x00000401}, // 1.4.0.0
    };
}

} // namespace

QByteArray rawFile(const QImage &picture)
{
    const QImage gray = picture.convertToFormat(QImage::Format_Grayscale8);
    QVector<Entry> entries = entriesOf(quint32(gray.width()), quint32(gray.height()));
    const auto count = static_cast<quint32>(entries.size());
    const quint32 pixelsAt = headerSize + countSize + count * entrySize + offsetSize;
    QByteArray file("II*\0", 4);
    append(file, headerSize);
    append(file, quint16(count));
    for (Entry &entry : entries) {
        if (entry.tag == StripOffsets)
            entry.value = pixelsAt;
        append(file, entry);
    }
    append(file, quint32(0)); // no further directory
    return file + pixelsOf(gray);
}

} // namespace sample
