#include "classic/image_unpacker.h"

#include "engine/thumbnail_image.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <limits>

#include <QImage>
#include <QSize>
#include <QtEndian>

#include <climits>

namespace {

StoredPicture photoOf(int formatId, int bytes, const QSize &size, const QPoint &padding = QPoint())
{
    StoredPicture photo;
    photo.formatId = formatId;
    photo.size = bytes;
    photo.width = size.width();
    photo.height = size.height();
    photo.horizontalPadding = padding.x();
    photo.verticalPadding = padding.y();
    return photo;
}

QByteArray unpacked(const QByteArray &raw, const StoredPicture &photo)
{
    QByteArray image;
    QString error;
    EXPECT_TRUE(unpackImage(raw, photo, &image, &error)) << qPrintable(error);
    EXPECT_EQ(QString(), error);
    return image;
}

QString causeOf(const QByteArray &raw, const StoredPicture &photo)
{
    QByteArray image = "as it was";
    QString error;
    EXPECT_FALSE(unpackImage(raw, photo, &image, &error));
    EXPECT_EQ("as it was", image);
    return error;
}

// A BMP file, read by hand.
class Bmp
{
public:
    explicit Bmp(const QByteArray &bytes) : m_bytes(bytes) {}

    QSize size() const { return m_bytes.size() < 54 ? QSize() : QSize(numberAt(18), numberAt(22)); }

    QRgb pixel(int x, int y) const
    {
        const int row = (size().width() * 3 + 3) / 4 * 4;
        const int at = 54 + (size().height() - 1 - y) * row + x * 3;
        if (x < 0 || y < 0 || at + 3 > m_bytes.size())
            return 0;
        return qRgb(byteAt(at + 2), byteAt(at + 1), byteAt(at));
    }

private:
    int numberAt(int at) const { return qFromLittleEndian<qint32>(m_bytes.constData() + at); }
    int byteAt(int at) const { return static_cast<uchar>(m_bytes[at]); }

    QByteArray m_bytes;
};

// Bytes of a frame, all zero but for what is put in.
class Frame
{
public:
    explicit Frame(int bytes) : m_bytes(bytes, '\0') {}

    Frame &put(int offset, const char *hex)
    {
        const QByteArray bytes = QByteArray::fromHex(hex);
        EXPECT_LE(offset + bytes.size(), m_bytes.size());
        m_bytes.replace(offset, bytes.size(), bytes);
        return *this;
    }

    const QByteArray &bytes() const { return m_bytes; }

private:
    QByteArray m_bytes;
};

const QRgb red = qRgb(255, 0, 0);
const QRgb green = qRgb(0, 255, 0);
const QRgb blue = qRgb(0, 0, 255);
const QRgb white = qRgb(255, 255, 255);
const QRgb black = qRgb(0, 0, 0);

// A format of 16 bits a pixel. The pixels put in are red, green, blue and the number 0x1234 in
// the places of the corners; red, green and blue are expected there, and `last`.
struct FrameRow {
    const char *name;
    int formatId;
    int bytes;
    int width, height; ///< of the rows that are stored
    const char *pixels[4];
    QRgb last;
};

class FullFrame : public testing::TestWithParam<FrameRow>
{
protected:
    static QByteArray stored(const FrameRow &row)
    {
        Frame frame(row.bytes);
        frame.put(0, row.pixels[0]).put(2 * (row.width - 1), row.pixels[1]);
        frame.put(2 * row.width * (row.height - 1), row.pixels[2]);
        return frame.put(2 * row.width * row.height - 2, row.pixels[3]).bytes();
    }
};

TEST_P(FullFrame, HasItsPixelsAtTheirPlaces)
{
    const FrameRow &row = GetParam();
    const QSize size(row.width, row.height);
    const StoredPicture photo = photoOf(row.formatId, row.bytes, size);
    const Bmp picture(unpacked(stored(row), photo));
    const int right = row.width - 1;
    const int bottom = row.height - 1;
    EXPECT_EQ(size, picture.size());
    EXPECT_EQ(size, unpackedSize(photo));
    EXPECT_EQ(red, picture.pixel(0, 0));
    EXPECT_EQ(black, picture.pixel(1, 0));
    EXPECT_EQ(black, picture.pixel(0, 1));
    EXPECT_EQ(green, picture.pixel(right, 0));
    EXPECT_EQ(blue, picture.pixel(0, bottom));
    EXPECT_EQ(row.last, picture.pixel(right, bottom));
}

FrameRow littleEndian565(const char *name, int id, int bytes, int width, int height)
{
    return {name, id, bytes, width, height, {"00f8", "e007", "1f00", "3412"}, qRgb(16, 69, 165)};
}

FrameRow bigEndian565(const char *name, int id, int bytes, int width, int height)
{
    return {name, id, bytes, width, height, {"f800", "07e0", "001f", "1234"}, qRgb(16, 69, 165)};
}

// The highest bit of the last pixel, which is no colour, is set.
FrameRow littleEndian555(const char *name, int id, int bytes, int width, int height)
{
    return {name, id, bytes, width, height, {"007c", "e003", "1f00", "3492"}, qRgb(33, 140, 165)};
}

INSTANTIATE_TEST_SUITE_P(Formats, FullFrame,
                         testing::Values(littleEndian565("F1005", 1005, 12800, 80, 80),
                                         littleEndian565("F1007", 1007, 829440, 480, 864),
                                         littleEndian565("F1009", 1009, 2520, 42, 30),
                                         littleEndian565("F1015", 1015, 22880, 130, 88),
                                         bigEndian565("F1023", 1023, 46464, 176, 132),
                                         littleEndian565("F1024", 1024, 153600, 320, 240),
                                         littleEndian565("F1032", 1032, 3108, 42, 37),
                                         littleEndian565("F1036", 1036, 4100, 50, 41),
                                         littleEndian565("F1066", 1066, 8192, 64, 64),
                                         littleEndian565("F1079", 1079, 12800, 80, 80),
                                         littleEndian565("F1083", 1083, 153600, 240, 320),
                                         littleEndian565("F1087", 1087, 294912, 384, 384),
                                         littleEndian565("F1092", 1092, 12800, 80, 80),
                                         littleEndian565("F1093", 1093, 524288, 512, 512),
                                         littleEndian555("F3004", 3004, 6160, 56, 55),
                                         littleEndian555("F3004Padded", 3004, 8192, 56, 55),
                                         littleEndian555("F3008", 3008, 614400, 640, 480),
                                         littleEndian555("F3009", 3009, 38400, 160, 120),
                                         littleEndian555("F3011", 3011, 12640, 80, 79)),
                         rowName<FrameRow>);

struct ColorRow {
    const char *name;
    int formatId;
    const char *pixel;
    QRgb expected;
};

class SixteenBits : public testing::TestWithParam<ColorRow>
{
};

TEST_P(SixteenBits, AreExpandedByRepetition)
{
    const bool is565 = GetParam().formatId == 1009;
    Frame frame(is565 ? 2520 : 12640);
    frame.put(0, GetParam().pixel);
    const StoredPicture photo = photoOf(GetParam().formatId, frame.bytes().size(), QSize(1, 1));
    EXPECT_EQ(GetParam().expected, Bmp(unpacked(frame.bytes(), photo)).pixel(0, 0));
}

INSTANTIATE_TEST_SUITE_P(
    Pixels, SixteenBits,
    testing::Values(ColorRow{"White565", 1009, "ffff", white},
                    ColorRow{"Black565", 1009, "0000", black},
                    ColorRow{"Least565", 1009, "2108", qRgb(8, 4, 8)},
                    ColorRow{"Half565", 1009, "1084", qRgb(132, 130, 132)},
                    ColorRow{"BelowWhite565", 1009, "def7", qRgb(247, 251, 247)},
                    ColorRow{"White555", 3011, "ff7f", white},
                    ColorRow{"WhiteWithTheUnusedBit555", 3011, "ffff", white},
                    ColorRow{"OnlyTheUnusedBit555", 3011, "0080", black},
                    ColorRow{"Least555", 3011, "2104", qRgb(8, 8, 8)},
                    ColorRow{"Half555", 3011, "1042", qRgb(132, 132, 132)},
                    ColorRow{"BelowWhite555", 3011, "de7b", qRgb(247, 247, 247)}),
    rowName<ColorRow>);

TEST(UnpackImage, PutsTheRowsOfInterlacedUyvyInOrder)
{
    Frame frame(691200);
    // White, red, black and blue in the rows 0, 1, 478 and 479.
    frame.put(0, "80eb80eb").put(345600, "5a51f051");
    frame.put(239 * 1440 + 1436, "80108010").put(691196, "f0296e29");
    const Bmp picture(unpacked(frame.bytes(), photoOf(1019, 691200, QSize(720, 480))));
    EXPECT_EQ(QSize(720, 480), picture.size());
    EXPECT_EQ(white, picture.pixel(0, 0));
    EXPECT_EQ(white, picture.pixel(1, 0));
    EXPECT_EQ(qRgb(254, 0, 0), picture.pixel(0, 1));
    EXPECT_EQ(black, picture.pixel(719, 478));
    EXPECT_EQ(blue, picture.pixel(718, 479));
    EXPECT_EQ(blue, picture.pixel(719, 479));
}

TEST(UnpackImage, ReadsThePlanesOfYuv420)
{
    constexpr int cb = 345600;
    constexpr int cr = cb + 86400;
    Frame frame(518400);
    // Red in the first four pixels, blue in the last one.
    frame.put(0, "5151").put(720, "5151").put(cb, "5a").put(cr, "f0");
    frame.put(cb - 1, "29").put(cr - 1, "f0").put(518399, "6e");
    QByteArray padded = frame.bytes();
    padded.append(QByteArray(691200 - 518400, '\xff'));
    for (const QByteArray &bytes : {frame.bytes(), padded}) {
        const Bmp picture(unpacked(bytes, photoOf(1067, bytes.size(), QSize(720, 480))));
        EXPECT_EQ(QSize(720, 480), picture.size());
        EXPECT_EQ(qRgb(254, 0, 0), picture.pixel(0, 0));
        EXPECT_EQ(qRgb(254, 0, 0), picture.pixel(1, 1));
        EXPECT_EQ(qRgb(0, 136, 0), picture.pixel(2, 0));
        EXPECT_EQ(blue, picture.pixel(719, 479));
    }
}

struct TurnedRow {
    const char *name;
    int formatId;
    QSize size;
};

class TurnedFrame : public testing::TestWithParam<TurnedRow>
{
};

// Its first row is the right edge of the picture, from the top down.
TEST_P(TurnedFrame, IsTurnedRight)
{
    const TurnedRow &row = GetParam();
    Frame frame(77440);
    frame.put(0, "07e0").put(350, "ffff").put(77088, "f800").put(77438, "001f");
    frame.put(218 * 352, "1234"); // above the red one
    const StoredPicture photo = photoOf(row.formatId, 77440, row.size);
    EXPECT_EQ(QSize(220, 176), unpackedSize(photo));
    const Bmp picture(unpacked(frame.bytes(), photo));
    EXPECT_EQ(QSize(220, 176), picture.size());
    EXPECT_EQ(red, picture.pixel(0, 0));
    EXPECT_EQ(qRgb(16, 69, 165), picture.pixel(1, 0));
    EXPECT_EQ(green, picture.pixel(219, 0));
    EXPECT_EQ(blue, picture.pixel(0, 175));
    EXPECT_EQ(white, picture.pixel(219, 175));
}

INSTANTIATE_TEST_SUITE_P(
    Formats, TurnedFrame,
    testing::Values(TurnedRow{"F1013WithUprightNumbers", 1013, QSize(220, 176)},
                    TurnedRow{"F1013WithTurnedNumbers", 1013, QSize(176, 220)},
                    TurnedRow{"F1020WithUprightNumbers", 1020, QSize(220, 176)},
                    TurnedRow{"F1020WithTurnedNumbers", 1020, QSize(176, 220)}),
    rowName<TurnedRow>);

struct DrawnRow {
    const char *name;
    QRect rectangle; ///< of the picture in the upright frame
    QSize size;      ///< as the database has it
    QPoint padding;
    bool isStoredTurned;
};

// The brightest colour of `bits` bits at a place, from 0 at the left or the top on.
int shade(int at, int length, int bits)
{
    return at * ((1 << bits) - 1) / (length - 1);
}

// A picture of shades in a frame of 220 x 176 pixels, which is black elsewhere.
class DrawnPicture : public testing::TestWithParam<DrawnRow>
{
protected:
    static quint16 pixelAt(const QPoint &at)
    {
        if (!GetParam().rectangle.contains(at))
            return 0;
        return static_cast<quint16>(shade(at.x(), 220, 5) << 11 | shade(at.y(), 176, 6) << 5 |
                                    shade(219 - at.x(), 220, 5));
    }

    static QByteArray stored()
    {
        QByteArray bytes(77440, '\0');
        for (int i = 0; i < 220 * 176; ++i) {
            const QPoint upright(i % 220, i / 220);
            const QPoint turned(219 - i / 176, i % 176);
            qToBigEndian(pixelAt(GetParam().isStoredTurned ? turned : upright),
                         bytes.data() + i * 2);
        }
        return bytes;
    }

    static QRgb expected(const QPoint &at)
    {
        const int red = shade(at.x(), 220, 5);
        const int green = shade(at.y(), 176, 6);
        const int blue = shade(219 - at.x(), 220, 5);
        return qRgb(red << 3 | red >> 2, green << 2 | green >> 4, blue << 3 | blue >> 2);
    }
};

TEST_P(DrawnPicture, IsFoundTurnedOrNot)
{
    const DrawnRow &row = GetParam();
    const StoredPicture photo = photoOf(1013, 77440, row.size, row.padding);
    const Bmp picture(unpacked(stored(), photo));
    ASSERT_EQ(row.rectangle.size(), picture.size());
    EXPECT_EQ(row.rectangle.size(), unpackedSize(photo));
    int wrong = 0;
    for (int y = 0; y < picture.size().height(); ++y) {
        for (int x = 0; x < picture.size().width(); ++x)
            wrong += picture.pixel(x, y) != expected(row.rectangle.topLeft() + QPoint(x, y));
    }
    EXPECT_EQ(0, wrong);
}

const QRect whole(0, 0, 220, 176);
const QRect portrait(44, 0, 132, 176);
const QRect panorama(0, 51, 220, 74);

INSTANTIATE_TEST_SUITE_P(
    Upright, DrawnPicture,
    testing::Values(DrawnRow{"Whole", whole, QSize(220, 176), QPoint(), false},
                    DrawnRow{"Portrait", portrait, QSize(176, 176), QPoint(44, 0), false},
                    DrawnRow{"Panorama", panorama, QSize(220, 125), QPoint(0, 51), false}),
    rowName<DrawnRow>);

INSTANTIATE_TEST_SUITE_P(
    TurnedWithUprightNumbers, DrawnPicture,
    testing::Values(DrawnRow{"Whole", whole, QSize(220, 176), QPoint(), true},
                    DrawnRow{"Portrait", portrait, QSize(176, 176), QPoint(44, 0), true},
                    DrawnRow{"Panorama", panorama, QSize(220, 125), QPoint(0, 51), true}),
    rowName<DrawnRow>);

INSTANTIATE_TEST_SUITE_P(
    TurnedWithTurnedNumbers, DrawnPicture,
    testing::Values(DrawnRow{"Whole", whole, QSize(176, 220), QPoint(), true},
                    DrawnRow{"Portrait", portrait, QSize(176, 176), QPoint(0, 44), true},
                    DrawnRow{"Panorama", panorama, QSize(125, 220), QPoint(51, 0), true}),
    rowName<DrawnRow>);

TEST(UnpackImage, HandsAJpegOnAsItIs)
{
    const QByteArray jpeg = QByteArray::fromHex("ffd8ffe000104a464946");
    EXPECT_EQ(jpeg, unpacked(jpeg, photoOf(1081, jpeg.size(), QSize(640, 480))));
    // Its size is none of the database's business.
    EXPECT_EQ(jpeg, unpacked(jpeg, photoOf(1081, jpeg.size(), QSize(0, -1))));
}

TEST(UnpackedSize, IsThatOfTheDatabaseForAJpegOfAnyShape)
{
    EXPECT_EQ(QSize(480, 640), unpackedSize(photoOf(1081, 5000, QSize(480, 640))));
    EXPECT_EQ(QSize(1600, 1200), unpackedSize(photoOf(1081, 5000, QSize(1600, 1200))));
    StoredPicture padded = photoOf(1081, 5000, QSize(640, 480));
    padded.horizontalPadding = 40;
    padded.verticalPadding = 30;
    EXPECT_EQ(QSize(600, 450), unpackedSize(padded));
    padded.horizontalPadding = 640;
    EXPECT_EQ(QSize(), unpackedSize(padded));
    padded.horizontalPadding = std::numeric_limits<qint32>::min();
    EXPECT_EQ(QSize(), unpackedSize(padded));
    EXPECT_EQ(QSize(), unpackedSize(photoOf(1081, 5000, QSize(0, 480))));
}

TEST(UnpackImage, TakesNoJpegForPixelsThatLookLikeOne)
{
    Frame frame(2520);
    frame.put(0, "ffd8ffe0");
    const Bmp picture(unpacked(frame.bytes(), photoOf(1009, 2520, QSize(42, 30))));
    EXPECT_EQ(QSize(42, 30), picture.size());
}

TEST(UnpackImage, CutsThePadding)
{
    // Of the frame of 42 x 30 pixels the picture has the columns 10 to 31 and rows 4 to 25.
    Frame frame(2520);
    frame.put(84 * 4 + 2 * 10, "00f8").put(84 * 4 + 2 * 31, "e007");
    frame.put(84 * 25 + 2 * 10, "1f00").put(84 * 25 + 2 * 31, "ffff");
    const StoredPicture photo = photoOf(1009, 2520, QSize(32, 26), QPoint(10, 4));
    EXPECT_EQ(QSize(22, 22), unpackedSize(photo));
    const Bmp picture(unpacked(frame.bytes(), photo));
    EXPECT_EQ(QSize(22, 22), picture.size());
    EXPECT_EQ(red, picture.pixel(0, 0));
    EXPECT_EQ(green, picture.pixel(21, 0));
    EXPECT_EQ(blue, picture.pixel(0, 21));
    EXPECT_EQ(white, picture.pixel(21, 21));
}

TEST(UnpackImage, CutsOddPaddingsOfPixelsThatShareColors)
{
    Frame frame(691200);
    frame.put(345600 + 4, "5a51f051"); // red in the columns 2 and 3 of row 1
    const StoredPicture photo = photoOf(1019, 691200, QSize(6, 2), QPoint(3, 1));
    const Bmp picture(unpacked(frame.bytes(), photo));
    EXPECT_EQ(QSize(3, 1), picture.size());
    EXPECT_EQ(qRgb(254, 0, 0), picture.pixel(0, 0));
    EXPECT_EQ(qRgb(0, 136, 0), picture.pixel(1, 0));
}

TEST(UnpackImage, WritesABmpOf24Bits)
{
    Frame frame(2520);
    frame.put(0, "00f8e007").put(84, "1f00ffff");
    const QByteArray bmp = unpacked(frame.bytes(), photoOf(1009, 2520, QSize(3, 2)));
    EXPECT_EQ("424d4e0000000000000036000000" // the file's 78 bytes, the pixels from 54 on
              "28000000"                     // a header of 40 bytes
              "0300000002000000"             // width and height
              "0100180000000000"             // a plane, 24 bits, not compressed
              "18000000"                     // 24 bytes of pixels
              "120b0000120b0000"             // 2834 pixels a metre
              "0000000000000000"             // no palette
              "ff0000ffffff000000000000"     // the lower row: blue, white, black and the filling
              "0000ff00ff00000000000000",
              bmp.toHex().toStdString());
    QString cause;
    EXPECT_EQ(QSize(3, 2), decodedThumbnail(bmp, &cause).size()) << qPrintable(cause);
}

struct RefusedRow {
    const char *name;
    int formatId;
    int bytes;
    QSize size;
    QPoint padding;
    const char *cause;
};

class RefusedPicture : public testing::TestWithParam<RefusedRow>
{
};

TEST_P(RefusedPicture, IsRefusedWithTheCause)
{
    const RefusedRow &row = GetParam();
    const StoredPicture photo = photoOf(row.formatId, row.bytes, row.size, row.padding);
    EXPECT_EQ(row.cause, causeOf(QByteArray(row.bytes, '\0'), photo));
    EXPECT_EQ(QSize(), unpackedSize(photo));
}

INSTANTIATE_TEST_SUITE_P(
    Formats, RefusedPicture,
    testing::Values(RefusedRow{"Cover", 1061, 6160, QSize(56, 55), QPoint(), "unknown format 1061"},
                    RefusedRow{"FullResolution", 1, 100, QSize(8, 8), QPoint(), "unknown format 1"},
                    RefusedRow{"Negative", -1, 0, QSize(8, 8), QPoint(), "unknown format -1"}),
    rowName<RefusedRow>);

INSTANTIATE_TEST_SUITE_P(
    Sizes, RefusedPicture,
    testing::Values(RefusedRow{"OfAnotherDevice", 1013, 5000, QSize(50, 50), QPoint(),
                               "1013: 5000 bytes where the format has 77440"},
                    RefusedRow{"Short", 1009, 2519, QSize(42, 30), QPoint(),
                               "1009: 2519 bytes where the format has 2520"},
                    RefusedRow{"Long", 1009, 2548, QSize(42, 30), QPoint(),
                               "1009: 2548 bytes where the format has 2520"},
                    RefusedRow{"Empty", 1019, 0, QSize(720, 480), QPoint(),
                               "1019: 0 bytes where the format has 691200"},
                    RefusedRow{"BetweenPixelsAndSlot", 3004, 6162, QSize(56, 55), QPoint(),
                               "3004: 6162 bytes where the format has 6160 or 8192"},
                    RefusedRow{"BeyondTheSlot", 1067, 691201, QSize(720, 480), QPoint(),
                               "1067: 691201 bytes where the format has 518400 or 691200"}),
    rowName<RefusedRow>);

INSTANTIATE_TEST_SUITE_P(
    Places, RefusedPicture,
    testing::Values(RefusedRow{"NoWidth", 1009, 2520, QSize(0, 30), QPoint(),
                               "1009: a picture of 0 x 30 pixels"},
                    RefusedRow{"NegativeHeight", 1009, 2520, QSize(42, -30), QPoint(),
                               "1009: a picture of 42 x -30 pixels"},
                    RefusedRow{"TooWide", 1009, 2520, QSize(43, 30), QPoint(),
                               "1009: a picture of 43 x 30 pixels in a frame of 42 x 30"},
                    RefusedRow{"TooHigh", 1009, 2520, QSize(42, 31), QPoint(),
                               "1009: a picture of 42 x 31 pixels in a frame of 42 x 30"},
                    RefusedRow{"OnlyPadding", 1009, 2520, QSize(42, 30), QPoint(42, 0),
                               "1009: a padding of 42 x 0 pixels in a picture of 42 x 30"},
                    RefusedRow{"OnlyPaddingAbove", 1009, 2520, QSize(42, 30), QPoint(0, 31),
                               "1009: a padding of 0 x 31 pixels in a picture of 42 x 30"},
                    RefusedRow{"NegativePadding", 1009, 2520, QSize(42, 30), QPoint(-1, 0),
                               "1009: a padding of -1 x 0 pixels in a picture of 42 x 30"},
                    RefusedRow{"NegativePaddingAbove", 1009, 2520, QSize(42, 30), QPoint(0, -1),
                               "1009: a padding of 0 x -1 pixels in a picture of 42 x 30"}),
    rowName<RefusedRow>);

TEST(UnpackImage, RefusesWhatIsNoJpeg)
{
    const StoredPicture photo = photoOf(1081, 614400, QSize(640, 480));
    EXPECT_EQ("1081: not a JPEG file", causeOf(QByteArray(614400, '\0'), photo));
    EXPECT_EQ("1081: not a JPEG file", causeOf(QByteArray(), photo));
    EXPECT_EQ("1081: not a JPEG file", causeOf("\xff", photo));
}

const int formatIds[] = {1005, 1007, 1009, 1013, 1015, 1019, 1020, 1023, 1024, 1032, 1036, 1066,
                         1067, 1079, 1081, 1083, 1087, 1092, 1093, 3004, 3008, 3009, 3011};

// The bytes of a picture of `formatId`: the least that are not refused as too few.
QByteArray bytesOf(int formatId)
{
    if (formatId == 1081)
        return QByteArray::fromHex("ffd8ffe0");
    QByteArray image;
    QString cause;
    EXPECT_FALSE(unpackImage(QByteArray(), photoOf(formatId, 0, QSize(1, 1)), &image, &cause));
    return QByteArray(cause.section(QStringLiteral("has "), 1).section(' ', 0, 0).toInt(), '\x5a');
}

// That a refusal leaves `image` alone and tells its cause in a line, and that what is unpacked
// has the size that was told before.
bool isUnpackedSoundly(const QByteArray &raw, const StoredPicture &photo)
{
    QByteArray image = "as it was";
    QString cause;
    const bool isUnpacked = unpackImage(raw, photo, &image, &cause);
    EXPECT_NE(isUnpacked, image == "as it was");
    EXPECT_NE(isUnpacked, !cause.isEmpty());
    EXPECT_FALSE(cause.contains('\n'));
    if (photo.formatId != 1081 && photo.size == raw.size()) {
        EXPECT_EQ(isUnpacked, unpackedSize(photo).isValid());
        EXPECT_EQ(unpackedSize(photo), isUnpacked ? Bmp(image).size() : QSize());
    }
    return isUnpacked;
}

bool isWithin(int padding, int length)
{
    return length > 0 && length <= 3 && padding >= 0 && padding < length;
}

TEST(UnpackImage, StandsAnyNumbers)
{
    const int numbers[] = {INT_MIN, -32768, -1, 0, 1, 3, 32767, INT_MAX};
    constexpr int count = 8;
    for (int id : formatIds) {
        const QByteArray raw = bytesOf(id);
        for (int i = 0; i < count * count * count * count; ++i) {
            const QSize size(numbers[i % count], numbers[i / count % count]);
            const QPoint padding(numbers[i / 64 % count], numbers[i / 512]);
            // Every frame holds 3 pixels, and none 32767.
            const bool isSound =
                isWithin(padding.x(), size.width()) && isWithin(padding.y(), size.height());
            const bool isUnpacked = isUnpackedSoundly(raw, photoOf(id, raw.size(), size, padding));
            ASSERT_EQ(isSound || id == 1081, isUnpacked) << id << " " << i;
        }
    }
}

TEST(UnpackImage, StandsAnyNumberOfBytes)
{
    for (int id : formatIds) {
        const int right = bytesOf(id).size();
        for (int size : {0, 1, 2, 3, 27, 28, 5000, right - 2, right - 1, right + 1, right * 2}) {
            const QByteArray raw(size, '\x5a');
            EXPECT_FALSE(isUnpackedSoundly(raw, photoOf(id, size, QSize(1, 1)))) << id << size;
            EXPECT_FALSE(isUnpackedSoundly(raw, photoOf(id, INT_MIN, QSize(1, 1)))) << id << size;
        }
    }
}

TEST(UnpackImage, StandsAnyFormat)
{
    const QByteArray raw(2520, '\x5a');
    int unpackedCount = 0;
    for (int id = -10; id < 4000; ++id)
        unpackedCount += isUnpackedSoundly(raw, photoOf(id, 2520, QSize(1, 1)));
    EXPECT_EQ(1, unpackedCount); // 1009
    for (int id : {INT_MIN, INT_MAX, 65536 + 1009})
        EXPECT_FALSE(isUnpackedSoundly(raw, photoOf(id, 2520, QSize(1, 1))));
}

} // namespace
