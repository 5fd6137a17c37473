#include "support/picture_comparison.h"

#include <QColor>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <random>

namespace {

std::array<int, 3> channelsOf(QRgb pixel)
{
    return {qRed(pixel), qGreen(pixel), qBlue(pixel)};
}

int mixed(int from, int to, double share)
{
    return int(from + (to - from) * share + 0.5);
}

QRgb mixed(QRgb from, QRgb to, double share)
{
    return qRgb(mixed(qRed(from), qRed(to), share), mixed(qGreen(from), qGreen(to), share),
                mixed(qBlue(from), qBlue(to), share));
}

} // namespace

PictureLoss lossBetween(const QImage &expected, const QImage &actual)
{
    EXPECT_EQ(expected.size(), actual.size());
    if (expected.isNull() || expected.size() != actual.size())
        return {255, 255};
    std::array<double, 3> sums = {};
    int most = 0;
    for (int y = 0; y < expected.height(); ++y) {
        for (int x = 0; x < expected.width(); ++x) {
            const std::array<int, 3> wanted = channelsOf(expected.pixel(x, y));
            const std::array<int, 3> found = channelsOf(actual.pixel(x, y));
            for (size_t channel = 0; channel < 3; ++channel) {
                const int loss = std::abs(wanted[channel] - found[channel]);
                sums[channel] += loss;
                most = std::max(most, loss);
            }
        }
    }
    const double pixels = double(expected.width()) * expected.height();
    return {*std::max_element(sums.begin(), sums.end()) / pixels, most};
}

QImage smoothPicture(const QSize &size, int turns)
{
    // Clockwise from the top left.
    std::array<QRgb, 4> corners = {qRgb(230, 30, 20), qRgb(20, 200, 60), qRgb(250, 240, 220),
                                   qRgb(10, 40, 220)};
    std::rotate(corners.begin(), corners.begin() + turns % 4, corners.end());
    QImage picture(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        const double down = double(y) / (size.height() - 1);
        const QRgb left = mixed(corners[0], corners[3], down);
        const QRgb right = mixed(corners[1], corners[2], down);
        for (int x = 0; x < size.width(); ++x)
            picture.setPixel(x, y, mixed(left, right, double(x) / (size.width() - 1)));
    }
    return picture;
}

QImage noisyPicture(const QSize &size)
{
    constexpr int noise = 56;
    std::minstd_rand random;
    QImage picture(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const int grey = 200 * x / size.width() + int(random() % noise);
            picture.setPixel(x, y, qRgb(grey, grey, grey));
        }
    }
    return picture;
}
