#include "sample/thumbnail_file.h"

#include <QtEndian>

namespace sample {

namespace {

constexpr int trailerSize = 28;
constexpr int uuidSize = 16;

constexpr ThumbnailFormat earlyFormat = {"PhotoData/Thumbnails/158x158.ithmb", 160, 158, 158};
constexpr ThumbnailFormat genericFormat = {"PhotoData/Thumbnails/120x120.ithmb", 120, 120, 120};
constexpr ThumbnailFormat assetFormat = {"PhotoData/Thumbnails/4031.ithmb", 120, 120, 120};

/// Five bits of each colour, blue lowest.
quint16 packed(QRgb color)
{
    return static_cast<quint16>((qRed(color) >> 3) << 10 | (qGreen(color) >> 3) << 5 |
                                qBlue(color) >> 3);
}

} // namespace

const ThumbnailFormat &thumbnailFormat(SampleSchema schema)
{
    if (schema == SampleSchema::Early)
        return earlyFormat;
    return schema == SampleSchema::V13 ? genericFormat : assetFormat;
}

QByteArray thumbnailRecord(const QImage &picture, const QByteArray &uuid,
                           const ThumbnailFormat &format)
{
    const int dataSize = format.rowPixels * format.height * 2;
    QByteArray record(dataSize + trailerSize, '\0');
    const int left = (format.width - picture.width()) / 2;
    // Of an odd rest, the smaller part goes below the picture.
    const int below = (format.height - picture.height()) / 2;
    const int top = format.height - below - picture.height();
    for (int y = 0; y < picture.height(); ++y) {
        const QRgb *from = reinterpret_cast<const QRgb *>(picture.constScanLine(y));
        char *to = record.data() + qptrdiff{2} * ((top + y) * format.rowPixels + left);
        for (int x = 0; x < picture.width(); ++x)
            qToLittleEndian(packed(from[x]), to + qptrdiff{2} * x);
    }
    record.replace(dataSize, uuidSize, uuid);
    char *trailer = record.data() + dataSize;
    qToLittleEndian(picture.width(), trailer + uuidSize);
    qToLittleEndian(picture.height(), trailer + uuidSize + 4);
    return record;
}

} // namespace sample
