#include "classic/row_length.h"

namespace {

int difference(quint16 a, quint16 b)
{
    const int red = qAbs((a >> 11) - (b >> 11));
    const int green = qAbs((a >> 5 & 0x3f) - (b >> 5 & 0x3f));
    const int blue = qAbs((a & 0x1f) - (b & 0x1f));
    return 2 * red + green + 2 * blue;
}

// Between pixels and those below them, on an average.
double meanDifference(const quint16 *pixels, int count, int rowLength)
{
    const int pairs = count - rowLength;
    qint64 sum = 0;
    for (int i = 0; i < pairs; ++i)
        sum += difference(pixels[i], pixels[i + rowLength]);
    return static_cast<double>(sum) / pairs;
}

} // namespace

bool hasRowsOf(int length, const QImage &image)
{
    // Noise, which fits no length, must not count.
    constexpr double clearly = 0.875;
    const auto *pixels = reinterpret_cast<const quint16 *>(image.constBits());
    const int count = image.width() * image.height();
    return meanDifference(pixels, count, length) <
           clearly * meanDifference(pixels, count, image.width());
}
