#include "classic/frame_crop.h"

#include "support/row_name.h"

#include <gtest/gtest.h>

namespace {

struct CropRow {
    const char *name;
    int formatId;
    QSize size;
    QPoint padding;
    QRect rectangle;
    bool isInRotatedFrame;
};

class FoundCrop : public testing::TestWithParam<CropRow>
{
};

TEST_P(FoundCrop, IsThatOfThePicture)
{
    const CropRow &row = GetParam();
    StoredPicture photo;
    photo.width = row.size.width();
    photo.height = row.size.height();
    photo.horizontalPadding = row.padding.x();
    photo.verticalPadding = row.padding.y();
    FrameCrop crop;
    QString cause;
    EXPECT_TRUE(findFrameCrop(*findPixelFormat(row.formatId), photo, &crop, &cause));
    EXPECT_EQ(row.rectangle, crop.rectangle);
    EXPECT_EQ(row.isInRotatedFrame, crop.isInRotatedFrame);
    EXPECT_EQ(QString(), cause);
}

INSTANTIATE_TEST_SUITE_P(
    Upright, FoundCrop,
    testing::Values(
        CropRow{"Whole", 1024, QSize(320, 240), QPoint(), QRect(0, 0, 320, 240), false},
        CropRow{"Portrait", 1019, QSize(540, 480), QPoint(180, 0), QRect(180, 0, 360, 480), false},
        CropRow{"Panorama", 1019, QSize(720, 360), QPoint(0, 120), QRect(0, 120, 720, 240), false},
        CropRow{"OnePixel", 1009, QSize(42, 30), QPoint(41, 29), QRect(41, 29, 1, 1), false}),
    rowName<CropRow>);

INSTANTIATE_TEST_SUITE_P(
    OfAFormatThatIsRotated, FoundCrop,
    testing::Values(
        CropRow{"Whole", 1013, QSize(220, 176), QPoint(), QRect(0, 0, 220, 176), false},
        CropRow{"Landscape", 1013, QSize(220, 170), QPoint(0, 5), QRect(0, 5, 220, 165), false},
        CropRow{"Portrait", 1013, QSize(176, 176), QPoint(44, 0), QRect(44, 0, 132, 176), false},
        CropRow{"Square", 1013, QSize(198, 176), QPoint(22, 0), QRect(22, 0, 176, 176), false},
        CropRow{"InDoubt", 1013, QSize(176, 176), QPoint(), QRect(0, 0, 176, 176), false},
        CropRow{"WholeRotated", 1013, QSize(176, 220), QPoint(), QRect(0, 0, 176, 220), true},
        CropRow{"LandscapeRotated", 1013, QSize(170, 220), QPoint(5, 0), QRect(5, 0, 165, 220),
                true},
        CropRow{"PortraitRotated", 1013, QSize(176, 176), QPoint(0, 44), QRect(0, 44, 176, 132),
                true},
        CropRow{"WholeRotatedOfTheOtherId", 1020, QSize(176, 220), QPoint(), QRect(0, 0, 176, 220),
                true}),
    rowName<CropRow>);

TEST(FindFrameCrop, TellsOfTheUprightFrameWhenThePictureFitsNone)
{
    StoredPicture photo;
    photo.width = 221;
    photo.height = 177;
    FrameCrop crop;
    QString cause;
    EXPECT_FALSE(findFrameCrop(*findPixelFormat(1013), photo, &crop, &cause));
    EXPECT_EQ("a picture of 221 x 177 pixels in a frame of 220 x 176", cause);
    EXPECT_EQ(QRect(), crop.rectangle);
}

} // namespace
