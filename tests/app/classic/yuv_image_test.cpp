#include "classic/yuv_image.h"

#include "support/row_name.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

namespace {

struct BarRow {
    const char *name;
    quint8 y, cb, cr;
    int red, green, blue;
};

class ColorBar : public testing::TestWithParam<BarRow>
{
};

// The bars are rounded to whole steps of Y, Cb and Cr, so they come back with a step's loss.
TEST_P(ColorBar, HasItsColor)
{
    const BarRow &row = GetParam();
    const QRgb color = rgbOfYuv(row.y, row.cb, row.cr);
    EXPECT_LE(std::abs(row.red - qRed(color)), 1) << qRed(color);
    EXPECT_LE(std::abs(row.green - qGreen(color)), 1) << qGreen(color);
    EXPECT_LE(std::abs(row.blue - qBlue(color)), 1) << qBlue(color);
    EXPECT_EQ(255, qAlpha(color));
}

INSTANTIATE_TEST_SUITE_P(Full, ColorBar,
                         testing::Values(BarRow{"Yellow", 210, 16, 146, 255, 255, 0},
                                         BarRow{"Cyan", 170, 166, 16, 0, 255, 255},
                                         BarRow{"Green", 145, 54, 34, 0, 255, 0},
                                         BarRow{"Magenta", 106, 202, 222, 255, 0, 255},
                                         BarRow{"Red", 81, 90, 240, 255, 0, 0},
                                         BarRow{"Blue", 41, 240, 110, 0, 0, 255}),
                         rowName<BarRow>);

INSTANTIATE_TEST_SUITE_P(ThreeQuarters, ColorBar,
                         testing::Values(BarRow{"White", 180, 128, 128, 191, 191, 191},
                                         BarRow{"Yellow", 162, 44, 142, 191, 191, 0},
                                         BarRow{"Cyan", 131, 156, 44, 0, 191, 191},
                                         BarRow{"Green", 112, 72, 58, 0, 191, 0},
                                         BarRow{"Magenta", 84, 184, 198, 191, 0, 191},
                                         BarRow{"Red", 65, 100, 212, 191, 0, 0},
                                         BarRow{"Blue", 35, 212, 114, 0, 0, 191}),
                         rowName<BarRow>);

TEST(RgbOfYuv, IsExactForGreys)
{
    EXPECT_EQ(qRgb(255, 255, 255), rgbOfYuv(235, 128, 128));
    EXPECT_EQ(qRgb(128, 128, 128), rgbOfYuv(126, 128, 128));
    EXPECT_EQ(qRgb(1, 1, 1), rgbOfYuv(17, 128, 128));
    EXPECT_EQ(qRgb(0, 0, 0), rgbOfYuv(16, 128, 128));
}

TEST(RgbOfYuv, ClampsWhatIsOutOfRange)
{
    EXPECT_EQ(qRgb(0, 0, 0), rgbOfYuv(0, 128, 128));
    EXPECT_EQ(qRgb(255, 255, 255), rgbOfYuv(255, 128, 128));
    EXPECT_EQ(qRgb(0, 136, 0), rgbOfYuv(0, 0, 0));
    EXPECT_EQ(qRgb(255, 125, 255), rgbOfYuv(255, 255, 255));
    EXPECT_EQ(qRgb(184, 0, 238), rgbOfYuv(0, 255, 255));
}

// How far `value` is from what a byte can be, rounded: at most a half for a right one.
double errorOf(int byte, double value)
{
    return std::abs(byte - qBound(0.0, value, 255.0));
}

TEST(RgbOfYuv, IsTheRoundedColorEverywhere)
{
    // A little more than the half, for the steps of the fixed point.
    const double most = 0.502;
    double worst = 0;
    for (int i = 0; i < 256 * 52 * 52; ++i) {
        const auto y = static_cast<quint8>(i % 256);
        const auto cb = static_cast<quint8>(i / 256 % 52 * 5);
        const auto cr = static_cast<quint8>(i / 256 / 52 * 5);
        const double grey = 255.0 / 219 * (y - 16);
        const double pb = 255.0 / 224 * (cb - 128);
        const double pr = 255.0 / 224 * (cr - 128);
        const QRgb color = rgbOfYuv(y, cb, cr);
        worst = std::max({worst, errorOf(qRed(color), grey + 1.402 * pr),
                          errorOf(qGreen(color), grey - 0.344136 * pb - 0.714136 * pr),
                          errorOf(qBlue(color), grey + 1.772 * pb)});
    }
    EXPECT_LE(worst, most);
}

const QRgb red = rgbOfYuv(81, 90, 240);
const QRgb blue = rgbOfYuv(41, 240, 110);
const QRgb white = qRgb(255, 255, 255);
const QRgb black = qRgb(0, 0, 0);

TEST(ImageOfInterlacedUyvy, HasTheEvenRowsBeforeTheOddOnes)
{
    // Rows of two pixels: 0, 2, 1 and 3.
    const QByteArray bytes = QByteArray::fromHex("80108010"
                                                 "5a51f051"
                                                 "80eb8010"
                                                 "f0296e29");
    const QImage image =
        imageOfInterlacedUyvy(reinterpret_cast<const uchar *>(bytes.constData()), QSize(2, 4));
    const QVector<QRgb> expected = {black, black, white, black, red, red, blue, blue};
    for (int i = 0; i < expected.size(); ++i)
        EXPECT_EQ(expected[i], image.pixel(i % 2, i / 2)) << i;
}

TEST(ImageOfPlanarYuv420, SharesOneColorAmongFourPixels)
{
    // 4 x 2 pixels: four rows of Y in twos, Cb and Cr of the left and the right half.
    const QByteArray bytes = QByteArray::fromHex("51512929"
                                                 "51512910"
                                                 "5af0"
                                                 "f06e");
    const QImage image =
        imageOfPlanarYuv420(reinterpret_cast<const uchar *>(bytes.constData()), QSize(4, 2));
    const QVector<QRgb> expected = {red, red, blue, blue, red, red, blue, rgbOfYuv(16, 240, 110)};
    for (int i = 0; i < expected.size(); ++i)
        EXPECT_EQ(expected[i], image.pixel(i % 4, i / 4)) << i;
}

TEST(ImageOfPlanarYuv420, HasARowOfColorsForTwoRows)
{
    const QByteArray bytes = QByteArray::fromHex("5151"
                                                 "5151"
                                                 "2929"
                                                 "2929"
                                                 "5a"
                                                 "f0"
                                                 "f0"
                                                 "6e");
    const QImage image =
        imageOfPlanarYuv420(reinterpret_cast<const uchar *>(bytes.constData()), QSize(2, 4));
    EXPECT_EQ(red, image.pixel(0, 1));
    EXPECT_EQ(blue, image.pixel(1, 2));
}

} // namespace
