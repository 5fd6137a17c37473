#include "engine/picture_format.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QImage>

namespace {

QImage picture(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB888);
    image.fill(Qt::red);
    return image;
}

QByteArray encoded(const QImage &image, const char *format)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, format));
    return buffer.data();
}

TEST(PictureFormat, FollowsTheContent)
{
    EXPECT_STREQ("jpg", formatOfContent(encoded(picture(8, 8), "JPEG"))->extension());
    EXPECT_STREQ("bmp", formatOfContent(encoded(picture(8, 8), "BMP"))->extension());
    EXPECT_EQ(nullptr, formatOfContent(encoded(picture(8, 8), "PNG")));
    EXPECT_EQ(nullptr, formatOfContent(QByteArray()));
}

TEST(PictureFormat, IsWhatAnExtensionPromisesInAnyCase)
{
    EXPECT_STREQ("JPEG", formatOfExtension("JPE")->name);
    EXPECT_STREQ("BMP", formatOfExtension("dib")->name);
    EXPECT_EQ(&pngFormat(), formatOfExtension("Png"));
    EXPECT_STREQ("HEIF", formatOfExtension("avif")->name);
    EXPECT_EQ(nullptr, formatOfExtension("txt"));
    EXPECT_EQ(nullptr, formatOfExtension(QByteArray()));
}

TEST(PictureFormat, OfAContentIsTheOneOfItsExtension)
{
    for (const char *name : {"JPEG", "BMP"}) {
        const PictureFormat *const format = formatOfContent(encoded(picture(8, 8), name));
        EXPECT_EQ(format, formatOfExtension(format->extension())) << name;
    }
}

TEST(PngFile, HoldsThePicture)
{
    const QImage image = picture(5, 3);
    QImage read;
    ASSERT_TRUE(read.loadFromData(pngFile(image), "PNG"));
    EXPECT_EQ(image, read.convertToFormat(image.format()));
}

TEST(BmpFileBytes, AreThoseOfAFileWith24BitsAPixel)
{
    for (const int width : {1, 2, 3, 4, 5, 41})
        EXPECT_EQ(encoded(picture(width, 7), "BMP").size(), bmpFileBytes({width, 7})) << width;
}

} // namespace
