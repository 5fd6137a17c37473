#include "ios/thumbnail_fixture.h"
#include "ios/thumbnail_rows.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#endif

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

using thumbnail::Extent;
using thumbnail::Format;
using thumbnail::formats;

namespace {

const char Prefill = '\xaa';

QByteArray twoBytes(int value)
{
    QByteArray bytes;
    thumbnail::append16(bytes, static_cast<quint32>(value));
    return bytes;
}

class ThumbnailPixels : public testing::Test
{
protected:
    // The rows that `convertThmb2BMP` writes, the bytes that it leaves being `Prefill`; the
    // blocks begin so many bytes off their alignment.
    QByteArray convert(const QByteArray &pixels, ThumbType type, Extent extent,
                       std::size_t shiftIn = 0, std::size_t shiftOut = 0)
    {
        TightBlock in(pixels, shiftIn);
        return convertBlock(in, type, extent, shiftOut);
    }

    QByteArray convertBlock(TightBlock &in, ThumbType type, Extent extent, std::size_t shiftOut = 0)
    {
        const qint64 height = std::max(extent.height, 0);
        const auto size = static_cast<std::size_t>(thumbnail::rowBytes(extent.width) * height);
        TightBlock out(size, shiftOut, static_cast<unsigned char>(Prefill));
        PhotoThumb thumb = {in.data(), {}};
        std::memcpy(thumb.info, thumbnail::trailer(extent).constData(), sizeof thumb.info);
        manager.convertThmb2BMP(&thumb, &type, out.data());
        return out.bytes();
    }

    testing::AssertionResult isRight(const ThumbType &type, Extent extent, std::size_t shiftIn = 0,
                                     std::size_t shiftOut = 0)
    {
        const QByteArray pixels = thumbnail::framePixels(type, extent.width * 7 + extent.height);
        return thumbnail::sameBytes(convert(pixels, type, extent, shiftIn, shiftOut),
                                    thumbnail::imageRows(pixels, type, extent, Prefill))
               << " for " << extent.width << " x " << extent.height << " in " << type
               << ", shifted " << shiftIn << " and " << shiftOut;
    }

    photo_manager manager{nullptr};
};

// --- Pixels.

struct PixelRow {
    std::string name;
    int value;
    int blue;
    int green;
    int red;
};

std::ostream &operator<<(std::ostream &out, const PixelRow &row)
{
    return out << row.name;
}

const std::vector<PixelRow> pixelRows = {
    {"Black", 0x0000, 0, 0, 0},          {"White", 0x7fff, 0xf8, 0xf8, 0xf8},
    {"TopBitAlone", 0x8000, 0, 0, 0},    {"AllBits", 0xffff, 0xf8, 0xf8, 0xf8},
    {"Blue", 0x001f, 0xf8, 0, 0},        {"Green", 0x03e0, 0, 0xf8, 0},
    {"Red", 0x7c00, 0, 0, 0xf8},         {"LeastBlue", 0x0001, 8, 0, 0},
    {"LeastGreen", 0x0020, 0, 8, 0},     {"LeastRed", 0x0400, 0, 0, 8},
    {"Mixed", 0x1234, 0xa0, 0x88, 0x20},
};

class ThumbnailPixel : public ThumbnailPixels, public testing::WithParamInterface<PixelRow>
{
};

INSTANTIATE_TEST_SUITE_P(Values, ThumbnailPixel, testing::ValuesIn(pixelRows), rowName<PixelRow>);

TEST_P(ThumbnailPixel, BecomesThreeBytes)
{
    const PixelRow &row = GetParam();
    QByteArray expected;
    for (const int part : {row.blue, row.green, row.red})
        expected.append(static_cast<char>(part));
    expected.append(Prefill);
    EXPECT_EQ(convert(twoBytes(row.value), {2, 1, 1, 1}, {1, 1}), expected);
}

TEST_F(ThumbnailPixels, AreRightForEveryValueInEveryColumn)
{
    const ThumbType type = {131072, 256, 256, 256};
    QByteArray all;
    for (int value = 0; value < 65536; ++value)
        all += twoBytes(value);
    for (int shift = 0; shift < 32; ++shift) {
        const QByteArray pixels = all.mid(2 * shift) + all.left(2 * shift);
        EXPECT_TRUE(thumbnail::sameBytes(convert(pixels, type, {256, 256}),
                                         thumbnail::imageRows(pixels, type, {256, 256})))
            << shift;
    }
}

// --- Where the picture lies in the frame.

// Pixels whose value is the number of their row, times 32, plus that of their column.
QByteArray numberedPixels(const ThumbType &type)
{
    QByteArray bytes;
    for (int row = 0; row < type.height; ++row) {
        for (int column = 0; column < type.rowPixels; ++column)
            bytes += twoBytes(row * 32 + column);
    }
    return bytes;
}

QByteArray numberedPixel(int row, int column)
{
    QByteArray bytes;
    for (const int part : {column % 32, (row + column / 32) % 32, (row + column / 32) / 32})
        bytes.append(static_cast<char>(part * 8));
    return bytes;
}

TEST_F(ThumbnailPixels, OfALowPictureComeFromTheMiddleRows)
{
    const ThumbType type = thumbnail::middle().type;
    const QByteArray rows = convert(numberedPixels(type), type, {120, 90});
    ASSERT_EQ(rows.size(), 32400);
    EXPECT_EQ(rows.left(3), numberedPixel(104, 0));
    EXPECT_EQ(rows.mid(357, 3), numberedPixel(104, 119));
    EXPECT_EQ(rows.mid(360, 3), numberedPixel(103, 0));
    EXPECT_EQ(rows.mid(360 * 89, 3), numberedPixel(15, 0));
    EXPECT_EQ(rows.right(3), numberedPixel(15, 119));
}

TEST_F(ThumbnailPixels, OfAFullPictureLeaveTheEndOfStoredRowsOut)
{
    const ThumbType type = thumbnail::largest().type;
    const QByteArray rows = convert(numberedPixels(type), type, {332, 332});
    ASSERT_EQ(rows.size(), 330672);
    EXPECT_EQ(rows.left(3), numberedPixel(331, 0));
    EXPECT_EQ(rows.mid(993, 3), numberedPixel(331, 331));
    EXPECT_EQ(rows.mid(996, 3), numberedPixel(330, 0));
    EXPECT_EQ(rows.right(3), numberedPixel(0, 331));
}

struct PlaceRow {
    std::string name;
    ThumbType type;
    Extent extent;
    int bottom; ///< the stored row that becomes the first one
    int left;   ///< its first pixel, counted from the start of the row
};

std::ostream &operator<<(std::ostream &out, const PlaceRow &row)
{
    return out << row.name;
}

const std::vector<PlaceRow> placeRows = {
    {"Same", {48, 4, 6, 4}, {4, 6}, 5, 0},
    {"EvenDifferences", {48, 4, 6, 4}, {2, 2}, 3, 1},
    {"OddDifferencesBelowAndLeftLess", {48, 4, 6, 4}, {3, 5}, 5, 0},
    {"OddDifferencesOfThree", {48, 4, 6, 4}, {1, 3}, 4, 1},
    {"OddFrame", {70, 5, 7, 5}, {2, 4}, 5, 1},
    {"WiderRows", {96, 8, 6, 4}, {2, 2}, 3, 1},
    {"OneWider", {96, 8, 6, 4}, {5, 4}, 4, 0},
    {"TwoWiderBegunInTheRowBefore", {96, 8, 6, 4}, {6, 4}, 4, -1},
    {"ThreeWider", {96, 8, 6, 4}, {7, 5}, 5, -1},
    {"FourWider", {96, 8, 6, 4}, {8, 5}, 5, -2},
};

class ThumbnailPlace : public ThumbnailPixels, public testing::WithParamInterface<PlaceRow>
{
};

INSTANTIATE_TEST_SUITE_P(Pictures, ThumbnailPlace, testing::ValuesIn(placeRows), rowName<PlaceRow>);

TEST_P(ThumbnailPlace, IsTheMiddleOfTheFrame)
{
    const PlaceRow &row = GetParam();
    const QByteArray pixels = thumbnail::framePixels(row.type);
    const QByteArray padding(
        static_cast<int>(thumbnail::rowBytes(row.extent.width)) - 3 * row.extent.width, Prefill);
    QByteArray expected;
    for (int y = 0; y < row.extent.height; ++y) {
        const int first = (row.bottom - y) * row.type.rowPixels + row.left;
        expected += thumbnail::imageRow(pixels, first, row.extent.width) + padding;
    }
    EXPECT_TRUE(thumbnail::sameBytes(convert(pixels, row.type, row.extent), expected));
}

// --- Every format and every width.

class ThumbnailFormatPixels : public ThumbnailPixels, public testing::WithParamInterface<Format>
{
};

INSTANTIATE_TEST_SUITE_P(Formats, ThumbnailFormatPixels, testing::ValuesIn(formats()),
                         rowName<Format>);

TEST_P(ThumbnailFormatPixels, AreRightForEveryWidthOfItsFrame)
{
    const ThumbType &type = GetParam().type;
    const QByteArray pixels = thumbnail::framePixels(type);
    TightBlock in(pixels, 1);
    for (int width = 1; width <= type.width; ++width) {
        const Extent extent = {width, 2 + width % 2};
        EXPECT_TRUE(thumbnail::sameBytes(convertBlock(in, type, extent),
                                         thumbnail::imageRows(pixels, type, extent, Prefill)))
            << width;
    }
}

TEST_P(ThumbnailFormatPixels, AreRightForEveryHeightOfItsFrame)
{
    const ThumbType &type = GetParam().type;
    const QByteArray pixels = thumbnail::framePixels(type);
    TightBlock in(pixels, 1);
    for (int height = 1; height <= type.height; ++height) {
        const Extent extent = {5, height};
        EXPECT_TRUE(thumbnail::sameBytes(convertBlock(in, type, extent),
                                         thumbnail::imageRows(pixels, type, extent, Prefill)))
            << height;
    }
}

TEST_P(ThumbnailFormatPixels, AreRightUpToTheLastByteOfTheRecord)
{
    const ThumbType &type = GetParam().type;
    // So wide that the row that comes last in the record is used up to its end.
    const int widest = std::max(type.width, 2 * type.rowPixels - type.width - 1);
    for (std::size_t shift = 0; shift < 4; ++shift) {
        const int less = static_cast<int>(shift);
        EXPECT_TRUE(isRight(type, {type.width - less, type.height}, shift, shift + 1));
        EXPECT_TRUE(isRight(type, {type.width, type.height - less}, shift, shift + 2));
        EXPECT_TRUE(isRight(type, {widest, type.height - 1}, shift, shift + 3));
    }
}

TEST_P(ThumbnailFormatPixels, MayBeWiderThanTheFrameInsideTheRecord)
{
    const ThumbType &type = GetParam().type;
    EXPECT_TRUE(isRight(type, {type.width + 1, type.height - 2}, 1, 1));
    EXPECT_TRUE(isRight(type, {type.width + 9, type.height - 20}, 1, 1));
}

TEST_F(ThumbnailPixels, AreRightForEveryWidthUpTo340)
{
    for (int width = 1; width <= 340; ++width) {
        const ThumbType type = {width * 4, width, 2, width};
        const auto shift = static_cast<std::size_t>(width % 32);
        EXPECT_TRUE(isRight(type, {width, 2}, 0, 0));
        EXPECT_TRUE(isRight(type, {width, 2}, shift, 0));
        EXPECT_TRUE(isRight(type, {width, 1}, 1, shift));
    }
}

#if defined(__SANITIZE_ADDRESS__)
// Makes the ends of the rows of a block unreadable, in units of 8 bytes.
class PoisonedRowEnds
{
public:
    PoisonedRowEnds(TightBlock &block, const ThumbType &type) : m_block(block), m_type(type)
    {
        for (int row = 0; row < type.height; ++row)
            __asan_poison_memory_region(end(row), size());
    }
    ~PoisonedRowEnds()
    {
        for (int row = 0; row < m_type.height; ++row)
            __asan_unpoison_memory_region(end(row), size());
    }
    PoisonedRowEnds(const PoisonedRowEnds &) = delete;
    PoisonedRowEnds &operator=(const PoisonedRowEnds &) = delete;

private:
    unsigned char *end(int row)
    {
        return m_block.data() + 2 * (row * m_type.rowPixels + m_type.width);
    }
    std::size_t size() const
    {
        return static_cast<std::size_t>(2 * (m_type.rowPixels - m_type.width));
    }

    TightBlock &m_block;
    ThumbType m_type;
};

TEST_F(ThumbnailPixels, AreNotReadBehindThePicturesRows)
{
    const ThumbType type = thumbnail::largest().type;
    const QByteArray pixels = thumbnail::framePixels(type);
    TightBlock in(pixels);
    QByteArray rows;
    {
        const PoisonedRowEnds poisoned(in, type);
        rows = convertBlock(in, type, {332, 332});
    }
    EXPECT_TRUE(
        thumbnail::sameBytes(rows, thumbnail::imageRows(pixels, type, {332, 332}, Prefill)));
}
#endif

// --- Pictures without pixels.

struct EmptyRow {
    std::string name;
    Extent extent;
};

std::ostream &operator<<(std::ostream &out, const EmptyRow &row)
{
    return out << row.name;
}

const qint32 Most = std::numeric_limits<qint32>::max();
const qint32 Least = std::numeric_limits<qint32>::min();

const std::vector<EmptyRow> emptyRows = {
    {"NoHeight", {64, 0}},    {"NegativeHeight", {64, -1}}, {"LeastHeight", {64, Least}},
    {"NothingAtAll", {0, 0}}, {"NoWidth", {0, 64}},         {"NoWidthOfGreatestHeight", {0, Most}},
};

class EmptyThumbnailPixels : public ThumbnailPixels, public testing::WithParamInterface<EmptyRow>
{
};

INSTANTIATE_TEST_SUITE_P(Pictures, EmptyThumbnailPixels, testing::ValuesIn(emptyRows),
                         rowName<EmptyRow>);

TEST_P(EmptyThumbnailPixels, AreNeitherReadNorWritten)
{
    ThumbType type = thumbnail::smallest().type;
    PhotoThumb thumb = {nullptr, {}};
    std::memcpy(thumb.info, thumbnail::trailer(GetParam().extent).constData(), sizeof thumb.info);
    unsigned char out[192];
    std::fill(std::begin(out), std::end(out), static_cast<unsigned char>(Prefill));
    manager.convertThmb2BMP(&thumb, &type, out);
    EXPECT_EQ(std::count(std::begin(out), std::end(out), static_cast<unsigned char>(Prefill)), 192);
}

// --- The converters of rows.

struct Converter {
    std::string name;
    rows_converter convert;
};

std::ostream &operator<<(std::ostream &out, const Converter &converter)
{
    return out << converter.name;
}

// Those that this processor has.
std::vector<Converter> converters()
{
    std::vector<Converter> all = {{"Plain", convertRowsPlain}, {"Fastest", fastestRowsConverter()}};
#if PHOTOLIB_HAS_X86_ROWS
    all.push_back({"Sse2", convertRowsSse2});
    if (hasAvx2Rows())
        all.push_back({"Avx2", convertRowsAvx2});
#endif
    return all;
}

// Rows of stored pixels and the rows that they become, with gaps that must stay.
struct RowsCase {
    QByteArray pixels;
    Extent extent;
    int storedGap = 0; ///< pixels
    int outGap = 0;    ///< bytes
    std::size_t shiftIn = 0;
    std::size_t shiftOut = 0;

    int storedPixels() const { return extent.width + storedGap; }
    int outBytes() const { return 3 * extent.width + outGap; }

    QByteArray expected() const
    {
        QByteArray rows;
        for (int y = extent.height - 1; y >= 0; --y) {
            rows += thumbnail::imageRow(pixels, y * storedPixels(), extent.width);
            if (y > 0)
                rows += QByteArray(outGap, Prefill);
        }
        return rows;
    }

    // From and to blocks that end where the last row ends.
    QByteArray converted(rows_converter convert) const
    {
        const int before = extent.height - 1; // rows above the last one
        TightBlock in(pixels.left(2 * (before * storedPixels() + extent.width)), shiftIn);
        TightBlock out(static_cast<std::size_t>(before * outBytes() + 3 * extent.width), shiftOut,
                       static_cast<unsigned char>(Prefill));
        convert({in.data() + 2 * before * storedPixels(), 2 * storedPixels(), extent.width,
                 extent.height, out.data(), outBytes()});
        return out.bytes();
    }
};

class ThumbnailRows : public testing::TestWithParam<Converter>
{
protected:
    static testing::AssertionResult isRight(const RowsCase &rows)
    {
        return thumbnail::sameBytes(rows.converted(GetParam().convert), rows.expected())
               << " for " << rows.extent.width << " x " << rows.extent.height << ", gaps "
               << rows.storedGap << " and " << rows.outGap << ", shifted " << rows.shiftIn
               << " and " << rows.shiftOut;
    }
};

INSTANTIATE_TEST_SUITE_P(Converters, ThumbnailRows, testing::ValuesIn(converters()),
                         rowName<Converter>);

TEST_P(ThumbnailRows, AreRightForEveryValue)
{
    QByteArray all;
    for (int value = 0; value < 65536; ++value)
        all += twoBytes(value);
    EXPECT_TRUE(isRight({all, {65536, 1}}));
    EXPECT_TRUE(isRight({all, {257, 255}}));
}

TEST_P(ThumbnailRows, AreRightForEveryWidthUpTo340)
{
    const QByteArray pixels = thumbnail::framePixels({6 * 345, 345, 3, 340});
    for (int width = 1; width <= 340; ++width) {
        const int gap = width % 5;
        const auto shift = static_cast<std::size_t>(width % 3);
        EXPECT_TRUE(isRight({pixels, {width, 1}, 0, 0, 0, 0}));
        EXPECT_TRUE(isRight({pixels, {width, 1}, 0, 0, 1, shift}));
        EXPECT_TRUE(isRight({pixels, {width, 3}, gap, 0, shift, 0}));
        EXPECT_TRUE(isRight({pixels, {width, 3}, 0, gap, shift, 1}));
    }
}

TEST_P(ThumbnailRows, AreRightForEveryHeightOfAFrame)
{
    const QByteArray pixels = thumbnail::framePixels({2 * 332 * 23, 23, 332, 23});
    for (int height = 1; height <= 332; ++height)
        EXPECT_TRUE(isRight({pixels, {19, height}, 4, 3, 0, 0}));
}

TEST_P(ThumbnailRows, AreRightAtEveryAlignment)
{
    const QByteArray pixels = thumbnail::framePixels({4 * 68, 68, 2, 68});
    for (std::size_t in = 0; in < 32; ++in) {
        for (std::size_t out = 0; out < 32; ++out)
            EXPECT_TRUE(isRight({pixels, {67, 2}, 1, 3, in, out}));
    }
}

TEST_P(ThumbnailRows, AreLeftAloneWithoutPixels)
{
    unsigned char out = 0xaa;
    for (const qint32 none : {0, -1, -16, Least}) {
        GetParam().convert({nullptr, 0, none, 1, &out, 0});
        GetParam().convert({nullptr, 0, 64, none, &out, 0});
        GetParam().convert({nullptr, 0, none, Most, &out, 0});
    }
    EXPECT_EQ(out, 0xaa);
}

#if PHOTOLIB_HAS_X86_ROWS
TEST(ThumbnailRowsChoice, IsThatOfTheWidestVectorsThatTheProcessorHas)
{
    EXPECT_EQ(hasAvx2Rows(), __builtin_cpu_supports("avx2") != 0);
    EXPECT_EQ(fastestRowsConverter(), hasAvx2Rows() ? convertRowsAvx2 : convertRowsSse2);
}
#else
TEST(ThumbnailRowsChoice, IsThePlainOneOnOtherProcessors)
{
    EXPECT_EQ(fastestRowsConverter(), convertRowsPlain);
}
#endif

} // namespace
