#include "sample/canvas.h"

#include "sample/random.h"

#include <algorithm>
#include <cstdlib>

namespace sample {

namespace {

constexpr int enlargement = 2;

/// -1000 to 1000 at the whole waves of an outline.
int knot(quint64 seed, int index)
{
    return static_cast<int>(scramble(seed + static_cast<quint64>(index)) % 2001) - 1000;
}

/// Between two knots, level at both; `part` in thousandths.
int between(int from, int to, int part)
{
    const int smooth = part * part / 1000 * (3000 - 2 * part) / 1000;
    return from + (to - from) * smooth / 1000;
}

int mixed(int from, int to, int part)
{
    return from + (to - from) * part / 1000;
}

/// The mean colour of the pixels [left, right) x [top, bottom).
QRgb mean(const QImage &picture, int left, int right, int top, int bottom)
{
    int red = 0;
    int green = 0;
    int blue = 0;
    for (int y = top; y < bottom; ++y) {
        const QRgb *row = reinterpret_cast<const QRgb *>(picture.constScanLine(y));
        for (int x = left; x < right; ++x) {
            red += qRed(row[x]);
            green += qGreen(row[x]);
            blue += qBlue(row[x]);
        }
    }
    const int count = (right - left) * (bottom - top);
    return qRgb(red / count, green / count, blue / count);
}

QImage reduced(const QImage &picture, int width, int height)
{
    QImage result(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        const int top = y * picture.height() / height;
        const int bottom = (y + 1) * picture.height() / height;
        QRgb *row = reinterpret_cast<QRgb *>(result.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const int left = x * picture.width() / width;
            const int right = (x + 1) * picture.width() / width;
            row[x] = mean(picture, left, right, top, bottom);
        }
    }
    return result;
}

} // namespace

QRgb hsv(int hue, int saturation, int value)
{
    const int sector = hue / 60 % 6;
    const int part = hue % 60;
    const int low = value * (255 - saturation) / 255;
    const int rising = low + (value - low) * part / 60;
    const int falling = low + (value - low) * (60 - part) / 60;
    switch (sector) {
    case 0:
        return qRgb(value, rising, low);
    case 1:
        return qRgb(falling, value, low);
    case 2:
        return qRgb(low, value, rising);
    case 3:
        return qRgb(low, falling, value);
    case 4:
        return qRgb(rising, low, value);
    default:
        return qRgb(value, low, falling);
    }
}

QRgb blend(QRgb from, QRgb to, int part)
{
    return qRgb(mixed(qRed(from), qRed(to), part), mixed(qGreen(from), qGreen(to), part),
                mixed(qBlue(from), qBlue(to), part));
}

int Outline::at(int x) const
{
    int sum = 0;
    int height = 500;
    int wave = m_wave;
    for (int octave = 0; octave <= m_detail && wave > 1; ++octave) {
        const quint64 seed = m_seed + 1000003ULL * static_cast<quint64>(octave);
        const int index = x / wave;
        const int part = x % wave * 1000 / wave;
        sum += between(knot(seed, index), knot(seed, index + 1), part) * height / 1000;
        height /= 2;
        wave /= 2;
    }
    return sum;
}

Canvas::Canvas(int width, int height)
    : m_width(width * enlargement), m_height(height * enlargement), m_span(width * 1000 / height),
      m_pixels(m_width * m_height, qRgb(0, 0, 0))
{
}

void Canvas::gradient(int top, int bottom, QRgb upper, QRgb lower)
{
    const int first = std::max(toPixels(top), 0);
    const int last = std::min(toPixels(bottom), m_height);
    for (int y = first; y < last; ++y) {
        const QRgb color = blend(upper, lower, (y - first) * 1000 / (last - first));
        std::fill_n(row(y), m_width, color);
    }
}

/// The pixels of the canvas around a centre.
struct Canvas::Box {
    int left;
    int right;
    int top;
    int bottom;
};

Canvas::Box Canvas::boxAround(int x, int y, int radius) const
{
    return {std::max(x - radius, 0), std::min(x + radius, m_width), std::max(y - radius, 0),
            std::min(y + radius, m_height)};
}

void Canvas::disc(int x, int y, int radius, QRgb color, int opacity)
{
    const int centerX = toPixels(x);
    const int centerY = toPixels(y);
    const int r = toPixels(radius);
    const Box box = boxAround(centerX, centerY, r);
    for (int py = box.top; py < box.bottom; ++py) {
        QRgb *pixels = row(py);
        const int room = r * r - (py - centerY) * (py - centerY);
        for (int px = box.left; px < box.right; ++px)
            if ((px - centerX) * (px - centerX) < room)
                pixels[px] = blend(pixels[px], color, opacity);
    }
}

void Canvas::glow(int x, int y, int radius, QRgb color, int opacity)
{
    const int centerX = toPixels(x);
    const int centerY = toPixels(y);
    const int r = std::max(toPixels(radius), 1);
    const Box box = boxAround(centerX, centerY, r);
    for (int py = box.top; py < box.bottom; ++py) {
        QRgb *pixels = row(py);
        const int room = r * r - (py - centerY) * (py - centerY);
        for (int px = box.left; px < box.right; ++px) {
            // Thousandths of the square of the radius; divided first so as not to overflow.
            const int rest = (room - (px - centerX) * (px - centerX)) / (r * r / 1000 + 1);
            if (rest > 0)
                pixels[px] = blend(pixels[px], color, opacity * rest / 1000 * rest / 1000);
        }
    }
}

void Canvas::rectangle(int x, int y, int width, int height, QRgb color, int opacity)
{
    const int left = std::max(toPixels(x), 0);
    const int right = std::min(toPixels(x + width), m_width);
    const int bottom = std::min(toPixels(y + height), m_height);
    for (int py = std::max(toPixels(y), 0); py < bottom; ++py) {
        QRgb *pixels = row(py);
        for (int px = left; px < right; ++px)
            pixels[px] = blend(pixels[px], color, opacity);
    }
}

void Canvas::triangle(int tipX, int tipY, int baseX, int baseWidth, int baseY, QRgb color)
{
    const int tipRow = toPixels(tipY);
    const int baseRow = toPixels(baseY);
    const int height = std::max(std::abs(baseRow - tipRow), 1);
    const int tip = toPixels(tipX);
    const int left = toPixels(baseX);
    const int right = toPixels(baseX + baseWidth);
    const int last = std::min(std::max(baseRow, tipRow), m_height);
    for (int y = std::max(std::min(baseRow, tipRow), 0); y < last; ++y) {
        const int away = std::abs(y - tipRow);
        const int from = std::max(tip + (left - tip) * away / height, 0);
        const int to = std::min(tip + (right - tip) * away / height, m_width);
        QRgb *pixels = row(y);
        for (int x = from; x < to; ++x)
            pixels[x] = color;
    }
}

void Canvas::hills(const Outline &outline, int y, int swing, QRgb upper, QRgb lower)
{
    const int highest = std::max(toPixels(y - swing), 0);
    QVector<int> tops(m_width);
    for (int x = 0; x < m_width; ++x)
        tops[x] = toPixels(y + swing * outline.at(x * 1000 / m_height) / 1000);
    for (int py = highest; py < m_height; ++py) {
        const QRgb color = blend(upper, lower, (py - highest) * 1000 / (m_height - highest));
        QRgb *pixels = row(py);
        for (int x = 0; x < m_width; ++x)
            if (py >= tops.at(x))
                pixels[x] = color;
    }
}

QRgb *Canvas::row(int y)
{
    return m_pixels.data() + qptrdiff{y} * m_width;
}

QImage Canvas::picture() const
{
    const QImage large(reinterpret_cast<const uchar *>(m_pixels.constData()), m_width, m_height,
                       m_width * static_cast<int>(sizeof(QRgb)), QImage::Format_RGB32);
    return reduced(large, m_width / enlargement, m_height / enlargement);
}

QSize fittedSize(const QSize &picture, const QSize &frame)
{
    if (picture.width() <= frame.width() && picture.height() <= frame.height())
        return picture;
    // The narrower way decides; multiplied out, since quotients would be rounded.
    const bool wide = picture.width() * frame.height() >= picture.height() * frame.width();
    if (wide)
        return {frame.width(), std::max(picture.height() * frame.width() / picture.width(), 1)};
    return {std::max(picture.width() * frame.height() / picture.height(), 1), frame.height()};
}

QImage fitted(const QImage &picture, const QSize &frame)
{
    const QSize size = fittedSize(picture.size(), frame);
    return size == picture.size() ? picture : reduced(picture, size.width(), size.height());
}

} // namespace sample
