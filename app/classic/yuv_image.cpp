#include "classic/yuv_image.h"

#include "classic/new_image.h"

namespace {

// The share of red and blue in the brightness of a colour.
constexpr double redShare = 0.299;
constexpr double blueShare = 0.114;
constexpr double greenShare = 1 - redShare - blueShare;

// From the steps of studio range to those of a byte.
constexpr double yScale = 255.0 / 219;
constexpr double chromaScale = 255.0 / 112;

constexpr int fractionBits = 16;

constexpr int fixedPoint(double value)
{
    return static_cast<int>(value * (1 << fractionBits) + (value < 0 ? -0.5 : 0.5));
}

constexpr int yFactor = fixedPoint(yScale);
constexpr int redOfCr = fixedPoint(chromaScale * (1 - redShare));
constexpr int greenOfCr = fixedPoint(-chromaScale * (1 - redShare) * redShare / greenShare);
constexpr int greenOfCb = fixedPoint(-chromaScale * (1 - blueShare) * blueShare / greenShare);
constexpr int blueOfCb = fixedPoint(chromaScale * (1 - blueShare));

int byteOf(int fixed)
{
    return fixed < 0 ? 0 : qMin(fixed >> fractionBits, 255);
}

// What two pixels or more have in common: the part of Cb and Cr in each of their colours.
class Chroma
{
public:
    Chroma(quint8 cb, quint8 cr)
        : m_red(redOfCr * (cr - 128)), m_green(greenOfCr * (cr - 128) + greenOfCb * (cb - 128)),
          m_blue(blueOfCb * (cb - 128))
    {
    }

    QRgb colorOf(quint8 y) const
    {
        constexpr int half = 1 << (fractionBits - 1);
        const int grey = yFactor * (y - 16) + half;
        return qRgb(byteOf(grey + m_red), byteOf(grey + m_green), byteOf(grey + m_blue));
    }

private:
    int m_red;
    int m_green;
    int m_blue;
};

} // namespace

QRgb rgbOfYuv(quint8 y, quint8 cb, quint8 cr)
{
    return Chroma(cb, cr).colorOf(y);
}

QImage imageOfInterlacedUyvy(const uchar *bytes, const QSize &size)
{
    QImage image = newImage(size, QImage::Format_RGB32);
    const qptrdiff rowBytes = qptrdiff(2) * size.width();
    for (int row = 0; row < size.height(); ++row) {
        const int storedRow = row / 2 + row % 2 * (size.height() / 2);
        const uchar *in = bytes + storedRow * rowBytes;
        auto *out = reinterpret_cast<QRgb *>(image.scanLine(row));
        for (int x = 0; x < size.width(); x += 2, in += 4) {
            const Chroma chroma(in[0], in[2]);
            out[x] = chroma.colorOf(in[1]);
            out[x + 1] = chroma.colorOf(in[3]);
        }
    }
    return image;
}

QImage imageOfPlanarYuv420(const uchar *bytes, const QSize &size)
{
    QImage image = newImage(size, QImage::Format_RGB32);
    const int width = size.width();
    const qptrdiff chromaRowBytes = width / 2;
    const qptrdiff chromaBytes = chromaRowBytes * (size.height() / 2);
    const uchar *y = bytes;
    const uchar *chromaStart = bytes + chromaBytes * 4;
    for (int row = 0; row < size.height(); ++row, y += width) {
        const uchar *cb = chromaStart + row / 2 * chromaRowBytes;
        const uchar *cr = cb + chromaBytes;
        auto *out = reinterpret_cast<QRgb *>(image.scanLine(row));
        for (int x = 0; x < width; x += 2) {
            const Chroma chroma(cb[x / 2], cr[x / 2]);
            out[x] = chroma.colorOf(y[x]);
            out[x + 1] = chroma.colorOf(y[x + 1]);
        }
    }
    return image;
}
