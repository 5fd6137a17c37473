#include "engine/thumbnail_image.h"

#include "base/cancel_token.h"
#include "support/picture_files.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QtEndian>

namespace {

QByteArray encoded(const QImage &image, const char *format)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, format));
    return buffer.data();
}

// Not of one colour, so that a JPEG of it has some length.
QImage gradient(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, qRgb(x * 255 / width, y * 255 / height, (x * y) % 256));
    }
    return image;
}

QString causeOf(const QByteArray &bytes)
{
    QString cause;
    EXPECT_TRUE(decodedThumbnail(bytes, &cause).isNull());
    return cause;
}

TEST(DecodedThumbnail, IsThePictureOfAJpegOrBmp)
{
    QString cause;
    const QImage image = gradient(60, 40);
    EXPECT_EQ(QSize(60, 40), decodedThumbnail(encoded(image, "JPEG"), &cause).size());
    const QImage fromBmp = decodedThumbnail(encoded(image, "BMP"), &cause);
    EXPECT_EQ(image, fromBmp.convertToFormat(QImage::Format_RGB32));
    EXPECT_EQ(QString(), cause);
}

TEST(DecodedThumbnail, RefusesOtherFormats)
{
    const QString cause = "a thumbnail that is neither JPEG nor BMP";
    EXPECT_EQ(cause, causeOf(encoded(gradient(8, 8), "PNG")));
    EXPECT_EQ(cause, causeOf("text"));
    EXPECT_EQ(cause, causeOf(""));
}

TEST(DecodedThumbnail, RefusesADamagedOne)
{
    const QByteArray jpeg = encoded(gradient(200, 200), "JPEG");
    EXPECT_EQ("a damaged thumbnail", causeOf(jpeg.left(jpeg.size() / 2)));
    EXPECT_EQ("a damaged thumbnail", causeOf(jpeg.left(4)));
    const QByteArray bmp = encoded(gradient(20, 20), "BMP");
    EXPECT_EQ("a damaged thumbnail", causeOf(bmp.left(40)));
    EXPECT_EQ("a damaged thumbnail", causeOf(bmp.left(bmp.size() - 1)));
}

TEST(DecodedThumbnail, IsTheSameWhenItCanBeCancelled)
{
    const CancelToken cancel;
    for (const char *format : {"JPEG", "BMP"}) {
        const QByteArray bytes = encoded(gradient(200, 150), format);
        QString cause;
        const QImage picture = decodedThumbnail(bytes, &cause, &cancel);
        EXPECT_EQ("", cause);
        EXPECT_FALSE(picture.isNull());
        EXPECT_EQ(decodedThumbnail(bytes, &cause), picture) << format;
        EXPECT_TRUE(decodedThumbnail(bytes.left(bytes.size() / 2), &cause, &cancel).isNull());
    }
}

TEST(DecodedThumbnail, IsNotReadFurtherOnceItIsCancelled)
{
    CancelToken cancel;
    cancel.cancel();
    QString cause;
    EXPECT_TRUE(decodedThumbnail(encoded(gradient(200, 150), "JPEG"), &cause, &cancel).isNull());
    EXPECT_NE("", cause);
}

TEST(DecodedThumbnail, RefusesTheHeadersOfABmpWithoutRows)
{
    QByteArray bmp = encoded(gradient(20, 20), "BMP").left(54);
    qToLittleEndian<qint32>(0, bmp.data() + 22); // the height
    EXPECT_EQ("a damaged thumbnail", causeOf(bmp));
}

TEST(DecodedThumbnail, RefusesOneThatClaimsToBeHuge)
{
    QByteArray bmp = encoded(gradient(20, 20), "BMP");
    qToLittleEndian<qint32>(9000, bmp.data() + 18);
    qToLittleEndian<qint32>(8000, bmp.data() + 22);
    EXPECT_EQ("a thumbnail of 9000 x 8000 pixels is too large", causeOf(bmp));
}

struct ScansRow {
    const char *name;
    int scans;
    const char *cause; ///< empty when the picture is read
};

class DecodedThumbnailOfScans : public testing::TestWithParam<ScansRow>
{
};

TEST_P(DecodedThumbnailOfScans, IsReadWhenTheyAreFew)
{
    QString cause;
    const QImage picture = decodedThumbnail(progressiveJpeg(GetParam().scans), &cause);
    EXPECT_EQ(GetParam().cause, cause.toStdString());
    EXPECT_EQ(*GetParam().cause == 0 ? QSize(16, 16) : QSize(0, 0), picture.size());
}

INSTANTIATE_TEST_SUITE_P(Numbers, DecodedThumbnailOfScans,
                         testing::Values(ScansRow{"Two", 2, ""}, ScansRow{"Most", 100, ""},
                                         ScansRow{"OneTooMany", 101, "a damaged thumbnail"},
                                         ScansRow{"Thousands", 4000, "a damaged thumbnail"}),
                         rowName<ScansRow>);

// Where the corners of an upright picture, called A B in its upper row and C D in its lower
// one, lie in a stored picture with that orientation code, by the definition of the codes.
struct OrientationRow {
    const char *name;
    int code;
    const char *stored[2]; ///< the corners of both rows
};

class TurnedUpright : public testing::TestWithParam<OrientationRow>
{
};

QRgb colorOf(char corner)
{
    switch (corner) {
    case 'A':
        return qRgb(255, 0, 0);
    case 'B':
        return qRgb(0, 255, 0);
    case 'C':
        return qRgb(0, 0, 255);
    default:
        return qRgb(255, 255, 255);
    }
}

QString cornersOf(const QImage &image)
{
    const int right = image.width() - 1;
    const int bottom = image.height() - 1;
    QString result;
    for (const QPoint &point :
         {QPoint(0, 0), QPoint(right, 0), QPoint(0, bottom), QPoint(right, bottom)}) {
        for (const char corner : {'A', 'B', 'C', 'D'}) {
            if (image.pixel(point) == colorOf(corner))
                result += QLatin1Char(corner);
        }
    }
    return result;
}

TEST_P(TurnedUpright, PutsEachCornerInItsPlace)
{
    const bool isOnItsSide = GetParam().code > 4;
    const QSize upright(7, 3);
    const QSize stored = isOnItsSide ? upright.transposed() : upright;
    QImage image(stored, QImage::Format_RGB32);
    image.fill(Qt::black);
    image.setPixel(0, 0, colorOf(GetParam().stored[0][0]));
    image.setPixel(stored.width() - 1, 0, colorOf(GetParam().stored[0][1]));
    image.setPixel(0, stored.height() - 1, colorOf(GetParam().stored[1][0]));
    image.setPixel(stored.width() - 1, stored.height() - 1, colorOf(GetParam().stored[1][1]));
    const QImage turned = turnedUpright(image, GetParam().code);
    EXPECT_EQ(upright, turned.size());
    EXPECT_EQ("ABCD", cornersOf(turned));
}

INSTANTIATE_TEST_SUITE_P(Codes, TurnedUpright,
                         testing::Values(OrientationRow{"AsItIs", 1, {"AB", "CD"}},
                                         OrientationRow{"MirroredSideways", 2, {"BA", "DC"}},
                                         OrientationRow{"UpsideDown", 3, {"DC", "BA"}},
                                         OrientationRow{"MirroredUpsideDown", 4, {"CD", "AB"}},
                                         OrientationRow{"RowsAreColumns", 5, {"AC", "BD"}},
                                         OrientationRow{"TopIsOnTheLeft", 6, {"BD", "AC"}},
                                         OrientationRow{
                                             "RowsAreColumnsFromTheEnd", 7, {"DB", "CA"}},
                                         OrientationRow{"TopIsOnTheRight", 8, {"CA", "DB"}},
                                         OrientationRow{"NoSuchCode", 0, {"AB", "CD"}},
                                         OrientationRow{"NegativeCode", -1, {"AB", "CD"}}),
                         rowName<OrientationRow>);

TEST(UprightThumbnail, IsTurnedOnlyWhereItLiesAcrossTheDimensions)
{
    const StoredShape standingUp = {300, 400, 6};
    const QImage lying = gradient(40, 30);
    EXPECT_EQ(turnedUpright(lying, 6), uprightThumbnail(lying, standingUp));
    const QImage standing = gradient(30, 40);
    EXPECT_EQ(standing, uprightThumbnail(standing, standingUp));
    const QImage square = gradient(30, 30);
    EXPECT_EQ(square, uprightThumbnail(square, standingUp));
    const StoredShape upsideDown = {300, 400, 3}; // no code for a turn to the side
    EXPECT_EQ(lying, uprightThumbnail(lying, upsideDown));
    EXPECT_EQ(lying, uprightThumbnail(lying, StoredShape())); // of which nothing is known
}

} // namespace
