#include "classic/stride_guess.h"

#include <gtest/gtest.h>

#include <QRandomGenerator>

namespace {

constexpr int pixelCount = 220 * 176;

// A picture of shades and two edges with rows of `rowLength` pixels, in an image with rows of
// 176.
QImage picture(int rowLength)
{
    QImage image(176, 220, QImage::Format_RGB16);
    auto *pixels = reinterpret_cast<quint16 *>(image.bits());
    for (int i = 0; i < pixelCount; ++i) {
        const int x = i % rowLength;
        const int y = i / rowLength;
        const int red = x > 60 && y > 40 ? 31 : 0;
        pixels[i] = static_cast<quint16>(red << 11 | (y / 6) << 5 | x * 31 / rowLength);
    }
    return image;
}

TEST(HasRowsOf, FindsThatAPictureHasLongerRows)
{
    EXPECT_TRUE(hasRowsOf(220, picture(220)));
}

TEST(HasRowsOf, LeavesAPictureItsOwnRows)
{
    EXPECT_FALSE(hasRowsOf(220, picture(176)));
}

TEST(HasRowsOf, LeavesAPictureOfOneColorItsOwnRows)
{
    QImage image(176, 220, QImage::Format_RGB16);
    image.fill(Qt::red);
    EXPECT_FALSE(hasRowsOf(220, image));
}

TEST(HasRowsOf, LeavesNoiseItsOwnRows)
{
    QRandomGenerator random(1);
    QImage image(176, 220, QImage::Format_RGB16);
    auto *pixels = reinterpret_cast<quint16 *>(image.bits());
    for (int round = 0; round < 20; ++round) {
        for (int i = 0; i < pixelCount; ++i)
            pixels[i] = static_cast<quint16>(random.bounded(65536));
        EXPECT_FALSE(hasRowsOf(220, image)) << round;
    }
}

TEST(HasRowsOf, KnowsShadesThatOnlyGoDown)
{
    for (const int rowLength : {220, 176}) {
        QImage image(176, 220, QImage::Format_RGB16);
        auto *pixels = reinterpret_cast<quint16 *>(image.bits());
        for (int i = 0; i < pixelCount; ++i)
            pixels[i] = static_cast<quint16>(i / rowLength / 6 << 5);
        EXPECT_EQ(rowLength == 220, hasRowsOf(220, image));
    }
}

TEST(HasRowsOf, KnowsSinglePixelsInTheCorners)
{
    for (const int rowLength : {220, 176}) {
        QImage image(176, 220, QImage::Format_RGB16);
        image.fill(Qt::black);
        auto *pixels = reinterpret_cast<quint16 *>(image.bits());
        for (int corner : {0, rowLength - 1, pixelCount - rowLength, pixelCount - 1})
            pixels[corner] = 0xffff;
        EXPECT_EQ(rowLength == 220, hasRowsOf(220, image));
    }
}

// So the ends of rows are all alike, and those of the longer rows lie where colours change.
TEST(HasRowsOf, LeavesAPictureBetweenBlackEdgesItsOwnRows)
{
    QImage image(176, 220, QImage::Format_RGB16);
    auto *pixels = reinterpret_cast<quint16 *>(image.bits());
    for (int i = 0; i < pixelCount; ++i) {
        const int x = i % 176;
        const bool isBlack = x < 44 || x >= 132;
        const int color = (x < 88 ? 0xf800 : 0x001f) | i / 176 / 4 << 5;
        pixels[i] = static_cast<quint16>(isBlack ? 0 : color);
    }
    EXPECT_FALSE(hasRowsOf(220, image));
}

// Where only the red or the blue differs, that counts as well.
TEST(HasRowsOf, SeesEveryColor)
{
    for (const quint16 mask : {quint16(0xf800), quint16(0x07e0), quint16(0x001f)}) {
        QImage image = picture(220);
        auto *pixels = reinterpret_cast<quint16 *>(image.bits());
        for (int i = 0; i < pixelCount; ++i)
            pixels[i] &= mask;
        EXPECT_TRUE(hasRowsOf(220, image)) << mask;
    }
}

} // namespace
