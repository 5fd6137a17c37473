#include "ios/thumbnail_rows.h"

#include "cameradb/prefetch.h"

#include <cstring>

#if PHOTOLIB_HAS_X86_ROWS
#include <immintrin.h>
#endif

namespace {

const std::ptrdiff_t bytesIn = 2; // of a stored pixel
const std::ptrdiff_t bgraBytes = 4;
const std::ptrdiff_t bytesOut = 3; // of a BMP pixel

rows_converter chooseRowsConverter()
{
#if PHOTOLIB_HAS_X86_ROWS
    return hasAvx2Rows() ? convertRowsAvx2 : convertRowsSse2;
#else
    return convertRowsPlain;
#endif
}

// Goes through the rows of a picture from the bottom up. No processor expects to be asked
// for memory in that direction, so the rows to come are fetched while others are converted.
class row_walk
{
public:
    explicit row_walk(const picture_rows &picture)
        : m_pixels(picture.bottomRow), m_out(picture.out), m_rowBytes(picture.rowBytes),
          m_outRowBytes(picture.outRowBytes), m_width(picture.width),
          m_left(picture.width > 0 ? picture.height : 0)
    {
        m_ahead = m_left > 0 ? bytesAhead / (bytesIn * m_width) + 1 : 0;
        prefetchAhead();
    }

    bool hasRow() const { return m_left > 0; }
    const unsigned char *pixels() const { return m_pixels; }
    unsigned char *out() const { return m_out; }
    int width() const { return m_width; }

    void next()
    {
        // No further than the last row: a pointer must not leave the record.
        if (--m_left == 0)
            return;
        m_pixels -= m_rowBytes;
        m_out += m_outRowBytes;
        prefetchAhead();
    }

private:
    static const int bytesAhead = 2048;
    static const int cacheLine = 64;

    void prefetchAhead() const
    {
        if (m_left <= m_ahead)
            return;
        const unsigned char *const row = m_pixels - m_ahead * m_rowBytes;
        for (std::ptrdiff_t i = 0; i < bytesIn * m_width; i += cacheLine)
            prefetch(row + i);
    }

    const unsigned char *m_pixels;
    unsigned char *m_out;
    const std::ptrdiff_t m_rowBytes;
    const std::ptrdiff_t m_outRowBytes;
    const int m_width;
    int m_left;
    std::ptrdiff_t m_ahead; // rows
};

// The lower 3 bits of each byte stay 0, deliberately: the upper ones are not repeated there.
inline void convertRowPlain(const unsigned char *pixels, unsigned char *out, int width)
{
    for (int x = 0; x < width; ++x) {
        const unsigned int pixel = pixels[0] | static_cast<unsigned int>(pixels[1]) << 8;
        out[0] = static_cast<unsigned char>((pixel & 0x1f) << 3);
        out[1] = static_cast<unsigned char>(((pixel >> 5) & 0x1f) << 3);
        out[2] = static_cast<unsigned char>(((pixel >> 10) & 0x1f) << 3);
        pixels += bytesIn;
        out += bytesOut;
    }
}

} // namespace

rows_converter fastestRowsConverter()
{
    static const rows_converter fastest = chooseRowsConverter();
    return fastest;
}

void convertRowsPlain(const picture_rows &picture)
{
    for (row_walk row(picture); row.hasRow(); row.next())
        convertRowPlain(row.pixels(), row.out(), row.width());
}

void convertBgraRows(const picture_rows &picture)
{
    for (int y = 0; y < picture.height; ++y) {
        const unsigned char *pixels = picture.bottomRow - y * picture.rowBytes;
        unsigned char *out = picture.out + y * picture.outRowBytes;
        for (int x = 0; x < picture.width; ++x, pixels += bgraBytes, out += bytesOut)
            std::memcpy(out, pixels, bytesOut);
    }
}

#if PHOTOLIB_HAS_X86_ROWS

namespace {

// 4 pixels as blue, green, red and 0 to the 12 bytes without the zeros at the low end.
inline __m128i packed(__m128i pixels)
{
    // Within 8 bytes the second pixel moves down to the first, then the upper 6 bytes to the
    // lower 6.
    const __m128i first = _mm_and_si128(pixels, _mm_set1_epi64x(0x0000000000ffffff));
    const __m128i second =
        _mm_and_si128(_mm_srli_epi64(pixels, 8), _mm_set1_epi64x(0x0000ffffff000000));
    const __m128i pairs = _mm_or_si128(first, second);
    const __m128i lower = _mm_move_epi64(pairs);
    const __m128i upper = _mm_srli_si128(_mm_xor_si128(pairs, lower), 2);
    return _mm_or_si128(lower, upper);
}

// 8 pixels, 24 bytes.
inline void convertBlockSse2(const unsigned char *pixels, unsigned char *out)
{
    const __m128i values = _mm_loadu_si128(reinterpret_cast<const __m128i *>(pixels));
    const __m128i blue = _mm_and_si128(_mm_slli_epi16(values, 3), _mm_set1_epi16(0x00f8));
    const __m128i green = _mm_and_si128(_mm_slli_epi16(values, 6), _mm_set1_epi16(short(0xf800)));
    const __m128i red = _mm_and_si128(_mm_srli_epi16(values, 7), _mm_set1_epi16(0x00f8));
    const __m128i blueGreen = _mm_or_si128(blue, green);
    const __m128i first = packed(_mm_unpacklo_epi16(blueGreen, red));
    const __m128i second = packed(_mm_unpackhi_epi16(blueGreen, red));
    const __m128i low16 = _mm_or_si128(first, _mm_slli_si128(second, 12));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(out), low16);
    _mm_storel_epi64(reinterpret_cast<__m128i *>(out + 16), _mm_srli_si128(second, 4));
}

const int sse2Step = 8;

// A row of a block or more. Here and below, the last block ends with the row and may overlap
// the one before it, so that none reads or writes beyond the row.
inline void convertRowSse2(const unsigned char *pixels, unsigned char *out, int width)
{
    const int step = sse2Step;
    for (; width > step; width -= step, pixels += bytesIn * step, out += bytesOut * step)
        convertBlockSse2(pixels, out);
    const int overlap = step - width;
    convertBlockSse2(pixels - bytesIn * overlap, out - bytesOut * overlap);
}

// From each 16 bytes of either source those that its mask names, or 0 for -1.
__attribute__((target("avx2"))) inline __m256i picked(__m256i blueGreen, __m128i fromBlueGreen,
                                                      __m256i red, __m128i fromRed)
{
    return _mm256_or_si256(
        _mm256_shuffle_epi8(blueGreen, _mm256_broadcastsi128_si256(fromBlueGreen)),
        _mm256_shuffle_epi8(red, _mm256_broadcastsi128_si256(fromRed)));
}

// 16 pixels, 48 bytes.
__attribute__((target("avx2"))) inline void convertBlockAvx2(const unsigned char *pixels,
                                                             unsigned char *out)
{
    const __m256i values = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(pixels));
    const __m256i blue = _mm256_and_si256(_mm256_slli_epi16(values, 3), _mm256_set1_epi16(0x00f8));
    const __m256i green =
        _mm256_and_si256(_mm256_slli_epi16(values, 6), _mm256_set1_epi16(short(0xf800)));
    const __m256i red = _mm256_and_si256(_mm256_srli_epi16(values, 7), _mm256_set1_epi16(0x00f8));
    const __m256i blueGreen = _mm256_or_si256(blue, green);
    // Each half holds 8 pixels, which become 24 bytes: 16 in one vector and 8 in the other.
    const __m256i first16 =
        picked(blueGreen, _mm_setr_epi8(0, 1, -1, 2, 3, -1, 4, 5, -1, 6, 7, -1, 8, 9, -1, 10), red,
               _mm_setr_epi8(-1, -1, 0, -1, -1, 2, -1, -1, 4, -1, -1, 6, -1, -1, 8, -1));
    const __m256i last8 = picked(
        blueGreen, _mm_setr_epi8(11, -1, 12, 13, -1, 14, 15, -1, -1, -1, -1, -1, -1, -1, -1, -1),
        red, _mm_setr_epi8(-1, 10, -1, -1, 12, -1, -1, 14, -1, -1, -1, -1, -1, -1, -1, -1));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(out), _mm256_castsi256_si128(first16));
    _mm_storel_epi64(reinterpret_cast<__m128i *>(out + 16), _mm256_castsi256_si128(last8));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(out + 24), _mm256_extracti128_si256(first16, 1));
    _mm_storel_epi64(reinterpret_cast<__m128i *>(out + 40), _mm256_extracti128_si256(last8, 1));
}

const int avx2Step = 16;

// A row of a block or more.
__attribute__((target("avx2"))) inline void convertRowAvx2(const unsigned char *pixels,
                                                           unsigned char *out, int width)
{
    const int step = avx2Step;
    for (; width > step; width -= step, pixels += bytesIn * step, out += bytesOut * step)
        convertBlockAvx2(pixels, out);
    const int overlap = step - width;
    convertBlockAvx2(pixels - bytesIn * overlap, out - bytesOut * overlap);
}

} // namespace

void convertRowsSse2(const picture_rows &picture)
{
    if (picture.width < sse2Step) {
        convertRowsPlain(picture);
        return;
    }
    for (row_walk row(picture); row.hasRow(); row.next())
        convertRowSse2(row.pixels(), row.out(), row.width());
}

__attribute__((target("avx2"))) void convertRowsAvx2(const picture_rows &picture)
{
    // Once, not for each row: the rows then share the constants in the registers.
    if (picture.width < avx2Step) {
        convertRowsSse2(picture);
        return;
    }
    for (row_walk row(picture); row.hasRow(); row.next())
        convertRowAvx2(row.pixels(), row.out(), row.width());
}

bool hasAvx2Rows()
{
    return __builtin_cpu_supports("avx2");
}

#endif
