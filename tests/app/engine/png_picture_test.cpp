#include "engine/png_picture.h"

#include "base/cancel_token.h"
#include "support/picture_comparison.h"
#include "support/picture_files.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

namespace {

struct PixelRow {
    const char *name;
    QImage::Format format;
    bool isOpaque;
};

class DecodedPng : public testing::TestWithParam<PixelRow>
{
};

TEST_P(DecodedPng, IsThePictureWhateverItsPixels)
{
    const QImage source = smoothPicture({37, 21}).convertToFormat(GetParam().format);
    const QByteArray file = pictureFile(source, "PNG");
    const QImage picture = decodedPng(file, CancelToken());
    EXPECT_LE(lossBetween(source, picture).most, 1);
    EXPECT_EQ(GetParam().isOpaque, !picture.hasAlphaChannel());
    EXPECT_EQ(QSize(37, 21), claimedPngSize(file));
}

INSTANTIATE_TEST_SUITE_P(Pixels, DecodedPng,
                         testing::Values(PixelRow{"Usual", QImage::Format_RGB32, true},
                                         PixelRow{"Transparent", QImage::Format_ARGB32, false},
                                         PixelRow{"Grey", QImage::Format_Grayscale8, true},
                                         PixelRow{"Grey16", QImage::Format_Grayscale16, true},
                                         PixelRow{"Wide", QImage::Format_RGBX64, true},
                                         PixelRow{"WideTransparent", QImage::Format_RGBA64, false},
                                         PixelRow{"Palette", QImage::Format_Indexed8, true},
                                         PixelRow{"TwoColors", QImage::Format_Mono, true}),
                         rowName<PixelRow>);

TEST(InterlacedPng, IsDecoded)
{
    const QImage source = smoothPicture({20, 13}).convertToFormat(QImage::Format_Grayscale8);
    const QImage picture = decodedPng(interlacedPng(source), CancelToken());
    EXPECT_EQ(0, lossBetween(source, picture).most);
}

TEST(DamagedPng, IsNotDecoded)
{
    const QByteArray file = pictureFile(noisyPicture({40, 30}), "PNG");
    for (int length = 0; length < file.size(); length += 7)
        EXPECT_TRUE(decodedPng(file.left(length), CancelToken()).isNull()) << length;
    for (int i = 8; i < file.size() - 12; i += 11) {
        QByteArray damaged = file;
        damaged[i] = char(damaged[i] ^ 0x10);
        const QImage picture = decodedPng(damaged, CancelToken());
        EXPECT_TRUE(picture.isNull() || picture.size() == QSize(40, 30)) << i;
    }
    EXPECT_TRUE(claimedPngSize(file.left(20)).isEmpty());
}

} // namespace
