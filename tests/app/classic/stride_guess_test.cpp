#include "classic/stride_guess.h"

#include <gtest/gtest.h>

#include <QRandomGenerator>

namespace {

constexpr int pixelCount = 220 * 176;

// A picture of shades and two edges with rows of `stride` pixels, in an image with rows of
// 176.
QImage picture(int stride)
{
    QImage image(176, 220, QImage::Format_RGB16);
    auto *pixels = reinterpret_cast<quint16 *>(image.bits());
    for (int i = 0; i < pixelCount; ++i) {
        const int x = i % stride;
        const int y = i / stride;
        const int red = x > 60 && y > 40 ? 31 : 0;
        pixels[i] = static_cast<quint16>(red << 11 | (y / 6) << 5 | x * 31 / stride);
    }
    return image;
}

TEST(HasStride, FindsThatAPictureHasLongerRows)
{
    EXPECT_TRUE(hasStride(220, picture(220)));
}

TEST(HasStride, LeavesAPictureItsOwnRows)
{
    EXPECT_FALSE(hasStride(220, picture(176)));
}

TEST(HasStride, LeavesAPictureOfOneColorItsOwnRows)
{
    QImage image(176, 220, QImage::Format_RGB16);
    image.fill(Qt::red);
    EXPECT_FALSE(hasStride(220, image));
}

TEST(HasStride, LeavesNoiseItsOwnRows)
{
    QRandomGenerator random(1);
    QImage image(176, 220, QImage::Format_RGB16);
    auto *pixels = reinterpret_cast<quint16 *>(image.bits());
    for (int round = 0; round < 20; ++round) {
        for (int i = 0; i < pixelCount; ++i)
            pixels[i] = static_cast<quint16>(random.bounded(65536));
        EXPECT_FALSE(hasStride(220, image)) << round;
    }
}

TEST(HasStride, KnowsShadesThatOnlyGoDown)
{
    for (const int stride : {220, 176}) {
        QImage image(176, 220, QImage::Format_RGB16);
        auto *pixels = reinterpret_cast<quint16 *>(image.bits());
        for (int i = 0; i < pixelCount; ++i)
            pixels[i] = static_cast<quint16>(i / stride / 6 << 5);
        EXPECT_EQ(stride == 220, hasStride(220, image));
    }
}

TEST(HasStride, KnowsSinglePixelsInTheCorners)
{
    for (const int stride : {220, 176}) {
        QImage image(176, 220, QImage::Format_RGB16);
        image.fill(Qt::black);
        auto *pixels = reinterpret_cast<quint16 *>(image.bits());
        for (int corner : {0, stride - 1, pixelCount - stride, pixelCount - 1})
            pixels[corner] = 0xffff;
        EXPECT_EQ(stride == 220, hasStride(220, image));
    }
}

// So the ends of rows are all alike, and those of the longer rows lie where colours change.
TEST(HasStride, LeavesAPictureBetweenBlackEdgesItsOwnRows)
{
    QImage image(176, 220, QImage::Format_RGB16);
    auto *pixels = reinterpret_cast<quint16 *>(image.bits());
    for (int i = 0; i < pixelCount; ++i) {
        const int x = i % 176;
        const bool isBlack = x < 44 || x >= 132;
        const int color = (x < 88 ? 0xf800 : 0x001f) | i / 176 / 4 << 5;
        pixels[i] = static_cast<quint16>(isBlack ? 0 : color);
    }
    EXPECT_FALSE(hasStride(220, image));
}

// Where only the red or the blue differs, that counts as well.
TEST(HasStride, SeesEveryColor)
{
    for (const quint16 mask : {quint16(0xf800), quint16(0x07e0), quint16(0x001f)}) {
        QImage image = picture(220);
        auto *pixels = reinterpret_cast<quint16 *>(image.bits());
        for (int i = 0; i < pixelCount; ++i)
            pixels[i] &= mask;
        EXPECT_TRUE(hasStride(220, image)) << mask;
    }
}

} // namespace
