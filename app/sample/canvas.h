#ifndef PHOTOLIB_SAMPLE_CANVAS_H
#define PHOTOLIB_SAMPLE_CANVAS_H

#include <QImage>
#include <QRgb>
#include <QSize>
#include <QVector>

namespace sample {

/// A colour by hue (0 to 359), saturation and value (0 to 255).
QRgb hsv(int hue, int saturation, int value);

/// The colour `part` thousandths of the way from `from` to `to.`
QRgb blend(QRgb from, QRgb to, int part);

/// A smooth random curve along x, the outline of hills.
class Outline
{
public:
    /// `wave` is the length of the longest wave, `detail` the number of finer ones, each
    /// half as long and half as high as the one before.
    Outline(quint64 seed, int wave, int detail) : m_seed(seed), m_wave(wave), m_detail(detail) {}

    /// -1000 to 1000.
    int at(int x) const;

private:
    quint64 m_seed;
    int m_wave;
    int m_detail;
};

/// A picture in the making. Lengths are in thousandths of its height: y runs from 0 at the top
/// to 1000, x from 0 to span(). Painted in whole numbers only, twice as large as the result,
/// so that every machine paints the same pixels and edges come out smooth.
class Canvas
{
public:
    Canvas(int width, int height);

    /// The right edge.
    int span() const { return m_span; }

    /// A gradient over the rows `top` to `bottom.`
    void gradient(int top, int bottom, QRgb upper, QRgb lower);
    /// A disc; `opacity` in thousandths.
    void disc(int x, int y, int radius, QRgb color, int opacity = 1000);
    /// Light that fades to nothing at `radius.`
    void glow(int x, int y, int radius, QRgb color, int opacity);
    void rectangle(int x, int y, int width, int height, QRgb color, int opacity = 1000);
    /// A triangle with a horizontal base, its tip above or below.
    void triangle(int tipX, int tipY, int baseX, int baseWidth, int baseY, QRgb color);
    /// Fills all below an outline of mean height `y` and swing `swing`, from `upper` at the
    /// outline to `lower` at the bottom edge.
    void hills(const Outline &outline, int y, int swing, QRgb upper, QRgb lower);

    /// The finished picture, at the size asked for.
    QImage picture() const;

private:
    int toPixels(int length) const { return length * m_height / 1000; }
    QRgb *row(int y);
    struct Box;
    Box boxAround(int x, int y, int radius) const;

    int m_width; // of the enlarged picture
    int m_height;
    int m_span;
    QVector<QRgb> m_pixels;
};

/// The size that a picture of size `picture` has when it is fitted() into `frame.`
QSize fittedSize(const QSize &picture, const QSize &frame);

/// `picture` reduced to fit into `frame` with its proportions, at least one pixel each way;
/// as it is when it fits already.
QImage fitted(const QImage &picture, const QSize &frame);

} // namespace sample

#endif // PHOTOLIB_SAMPLE_CANVAS_H
