#include "support/thumbnail_expectation.h"

#include <QDataStream>
#include <QFile>

#include <algorithm>

namespace {

struct Format {
    const char *name;
    int rowPixels;
    int size; // rows and columns of the frame
};

// The files of packed pictures, those that count first.
const Format formats[] = {
    {"332x332", 336, 332}, {"240x240", 240, 240}, {"166x166", 168, 166}, {"158x158", 160, 158},
    {"120x120", 120, 120}, {"3319", 160, 157},    {"4031", 120, 120},    {"3309", 64, 64},
};

// One picture as its file has it, with its pixels from the top left to the bottom right.
class PackedPicture
{
public:
    PackedPicture(const QByteArray &record, const Format &format)
        : m_record(record), m_format(format)
    {
    }

    int width() const { return number(4); }
    int height() const { return number(5); }

    // The odd pixel of an odd margin is above the picture and to the right of it.
    quint16 pixel(int x, int y) const
    {
        const int left = (m_format.size - width()) / 2;
        const int top = (m_format.size - height() + 1) / 2;
        return little<quint16>(((top + y) * m_format.rowPixels + left + x) * 2);
    }

private:
    template <typename Number>
    Number little(int offset) const
    {
        QDataStream stream(m_record.mid(offset, sizeof(Number)));
        stream.setByteOrder(QDataStream::LittleEndian);
        Number value = 0;
        stream >> value;
        return value;
    }

    // Of the seven numbers behind the pixels.
    int number(int index) const
    {
        return little<qint32>(m_format.rowPixels * m_format.size * 2 + index * 4);
    }

    const QByteArray m_record;
    const Format &m_format;
};

// Blue, green and red, with the five bits of each in the upper places.
QByteArray colors(quint16 pixel)
{
    QByteArray bytes;
    for (const int shift : {0, 5, 10})
        bytes.append(static_cast<char>((pixel >> shift) % 32 * 8));
    return bytes;
}

// The rows of a BMP file, from the bottom up, each filled to a multiple of four bytes.
QByteArray bmpRows(const PackedPicture &picture)
{
    QByteArray rows;
    for (int y = picture.height() - 1; y >= 0; --y) {
        for (int x = 0; x < picture.width(); ++x)
            rows += colors(picture.pixel(x, y));
        while (rows.size() % 4 != 0)
            rows += '\0';
    }
    return rows;
}

QByteArray bmpFile(const PackedPicture &picture)
{
    const QByteArray rows = bmpRows(picture);
    QByteArray headers;
    QDataStream stream(&headers, QIODevice::WriteOnly);
    stream.setByteOrder(QDataStream::LittleEndian);
    stream.writeRawData("BM", 2);
    stream << qint32(54 + rows.size()) << qint32(0) << qint32(54);
    stream << qint32(40) << qint32(picture.width()) << qint32(picture.height());
    stream << qint16(1) << qint16(24) << qint32(0) << qint32(rows.size());
    stream << qint32(0) << qint32(0) << qint32(0) << qint32(0);
    return headers + rows;
}

bool readJpeg(const QByteArray &folder, QByteArray *bytes)
{
    for (const char *name : {"/5005.JPG", "/5003.JPG", "/3507.JPG", "/3505.JPG"}) {
        QFile file(QString::fromUtf8(folder + name));
        if (file.open(QIODevice::ReadOnly)) {
            *bytes = file.readAll();
            return true;
        }
    }
    return false;
}

ExpectedThumbnail packedPicture(const QByteArray &folder, int index)
{
    for (const Format &format : formats) {
        QFile file(QString::fromUtf8(folder + '/' + format.name + ".ithmb"));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const int recordSize = format.rowPixels * format.size * 2 + 28;
        file.seek(qint64(index) * recordSize);
        const QByteArray record = file.read(recordSize);
        if (record.size() < recordSize)
            return {};
        return {0, bmpFile(PackedPicture(record, format))};
    }
    return {};
}

} // namespace

ExpectedThumbnail thumbnailInFolder(const QByteArray &device, const QByteArray &path, int index)
{
    const QByteArray folder = device + "/PhotoData/Thumbnails";
    ExpectedThumbnail thumbnail;
    if (readJpeg(folder + "/V2/" + path, &thumbnail.bytes)) {
        thumbnail.result = 0;
        return thumbnail;
    }
    return index < 0 ? thumbnail : packedPicture(folder, index);
}
