#include "sample/classic_format.h"

#include "sample/canvas.h"

#include <QtEndian>

#include <algorithm>

namespace sample {

namespace {

// Devices begin another file at about this size.
constexpr int largestFile = 500000000;

QByteArray rgb565(const QImage &frame)
{
    QByteArray bytes(frame.width() * frame.height() * 2, Qt::Uninitialized);
    char *to = bytes.data();
    for (int y = 0; y < frame.height(); ++y) {
        const QRgb *row = reinterpret_cast<const QRgb *>(frame.constScanLine(y));
        for (int x = 0; x < frame.width(); ++x, to += 2)
            qToLittleEndian(static_cast<quint16>((qRed(row[x]) >> 3) << 11 |
                                                 (qGreen(row[x]) >> 2) << 5 | qBlue(row[x]) >> 3),
                            to);
    }
    return bytes;
}

/// BT.601 in studio range: luma 16 to 235, chroma 16 to 240 around 128. The weights are
/// 65536ths; what is added to them rounds.
struct Yuv {
    int y;
    int cb;
    int cr;

    explicit Yuv(QRgb color)
        : y(parts(16829 * qRed(color) + 33039 * qGreen(color) + 6416 * qBlue(color), 16)),
          cb(parts(28784 * qBlue(color) - 9714 * qRed(color) - 19070 * qGreen(color), 128)),
          cr(parts(28784 * qRed(color) - 24103 * qGreen(color) - 4681 * qBlue(color), 128))
    {
    }

private:
    static int parts(int weighted, int base) { return (weighted + (base << 16) + 32768) >> 16; }
};

void putRow(const QRgb *row, int width, char *to)
{
    for (int x = 0; x < width; x += 2) {
        const Yuv left(row[x]);
        const Yuv right(row[x + 1]);
        *to++ = static_cast<char>((left.cb + right.cb + 1) / 2);
        *to++ = static_cast<char>(left.y);
        *to++ = static_cast<char>((left.cr + right.cr + 1) / 2);
        *to++ = static_cast<char>(right.y);
    }
}

QByteArray interlaced(const QImage &frame)
{
    const int rowBytes = frame.width() * 2;
    QByteArray bytes(rowBytes * frame.height(), Qt::Uninitialized);
    const int evenRows = (frame.height() + 1) / 2;
    for (int y = 0; y < frame.height(); ++y) {
        const int storedRow = y / 2 + (y % 2 == 0 ? 0 : evenRows);
        putRow(reinterpret_cast<const QRgb *>(frame.constScanLine(y)), frame.width(),
               bytes.data() + qptrdiff{storedRow} * rowBytes);
    }
    return bytes;
}

} // namespace

QRect ClassicFormat::pictureArea(const QSize &original) const
{
    const QSize size = fittedSize(original, {width, height});
    int left = (width - size.width()) / 2;
    // Pairs of pixels share their colour: none is to share it with the black beside it.
    if (packing == PixelPacking::Interlaced)
        left -= left % 2;
    return {QPoint(left, (height - size.height()) / 2), size};
}

QByteArray ClassicFormat::frame(const QImage &picture) const
{
    const QRect area = pictureArea(picture.size());
    const QImage small = fitted(picture, {width, height});
    QImage frame(width, height, QImage::Format_RGB32);
    frame.fill(Qt::black);
    for (int y = 0; y < area.height(); ++y) {
        const QRgb *from = reinterpret_cast<const QRgb *>(small.constScanLine(y));
        QRgb *to = reinterpret_cast<QRgb *>(frame.scanLine(area.top() + y)) + area.left();
        std::copy_n(from, area.width(), to);
    }
    return packing == PixelPacking::Interlaced ? interlaced(frame) : rgb565(frame);
}

FrameLocation frameLocation(const ClassicFormat &format, int index)
{
    const int framesPerFile = largestFile / format.frameBytes();
    const int inFile = index % framesPerFile;
    return {QStringLiteral("Thumbs/F%1_%2.ithmb").arg(format.id).arg(index / framesPerFile + 1),
            static_cast<quint32>(inFile) * static_cast<quint32>(format.frameBytes())};
}

} // namespace sample
