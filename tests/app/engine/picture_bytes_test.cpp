#include "engine/picture_bytes.h"

#include "support/picture_comparison.h"
#include "support/picture_files.h"

#include <gtest/gtest.h>

namespace {

QByteArray usualJpeg()
{
    return pictureFile(smoothPicture({32, 32}), "JPEG");
}

TEST(JpegInOnePass, IsTheUsualOne)
{
    EXPECT_TRUE(isReadInOnePass(usualJpeg()));
    EXPECT_TRUE(isReadInOnePass(jpegHeld(smoothPicture({32, 32}), 6)));
}

TEST(JpegInOnePass, IsNoProgressiveOne)
{
    EXPECT_FALSE(isReadInOnePass(progressiveJpeg(2)));
}

TEST(JpegInOnePass, HasAllComponentsInItsFirstScan)
{
    QByteArray jpeg = usualJpeg();
    const int scan = jpeg.indexOf("\xff\xda");
    ASSERT_EQ(3, jpeg[scan + 4]);
    jpeg[scan + 4] = 1;
    EXPECT_FALSE(isReadInOnePass(jpeg));
}

TEST(JpegInOnePass, IsNoneWhoseStartCannotBeRead)
{
    const QByteArray jpeg = usualJpeg();
    const int scan = jpeg.indexOf("\xff\xda");
    for (int length = 0; length < scan; ++length)
        EXPECT_FALSE(isReadInOnePass(jpeg.left(length))) << length;
    EXPECT_FALSE(isReadInOnePass("\xff\xd8" + jpegSegment('\xc0', "") + jpegSegment('\xda', "")));
    EXPECT_FALSE(isReadInOnePass(QByteArray("\xff\xd8\xff\xe0\0\0\xff\xe0\0\0", 10)));
}

} // namespace
