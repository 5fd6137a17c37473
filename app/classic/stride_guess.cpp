#include "classic/stride_guess.h"

namespace {

int difference(quint16 a, quint16 b)
{
    const int red = qAbs((a >> 11) - (b >> 11));
    const int green = qAbs((a >> 5 & 0x3f) - (b >> 5 & 0x3f));
    const int blue = qAbs((a & 0x1f) - (b & 0x1f));
    return 2 * red + green + 2 * blue;
}

class Differences
{
public:
    explicit Differences(const QImage &image)
        : m_pixels(reinterpret_cast<const quint16 *>(image.constBits())),
          m_count(image.width() * image.height())
    {
    }

    // Between a pixel and the one below it, in proportion to the rows: where nothing but shades
    // goes down the picture, they differ the more the longer the stride is.
    double betweenRows(int stride) const { return mean(0, 1, stride) / stride; }

    // Between the last pixel of a row and the first of the next.
    double atRowEnds(int stride) const { return mean(stride - 1, stride, 1); }

private:
    double mean(int first, int step, int distance) const
    {
        qint64 sum = 0;
        int pairs = 0;
        for (int i = first; i + distance < m_count; i += step, ++pairs)
            sum += difference(m_pixels[i], m_pixels[i + distance]);
        return static_cast<double>(sum) / pairs;
    }

    const quint16 *m_pixels;
    int m_count;
};

} // namespace

bool hasStride(int stride, const QImage &image)
{
    const Differences differences(image);
    const double below = differences.betweenRows(stride);
    const double belowInOwn = differences.betweenRows(image.width());
    if (below < 0.7 * belowInOwn)
        return true;
    if (below > 1.2 * belowInOwn)
        return false;
    return differences.atRowEnds(stride) > 2 * differences.atRowEnds(image.width());
}
