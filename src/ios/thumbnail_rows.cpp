#include "ios/thumbnail_rows.h"

#if PHOTOLIB_HAS_X86_ROWS
#include <immintrin.h>
#endif

namespace {

const int bytesIn = 2;  // of a stored pixel
const int bytesOut = 3; // of a BMP pixel

row_converter chooseRowConverter()
{
#if PHOTOLIB_HAS_X86_ROWS
    return hasAvx2Rows() ? convertRowAvx2 : convertRowSse2;
#else
    return convertRowPlain;
#endif
}

} // namespace

row_converter fastestRowConverter()
{
    static const row_converter fastest = chooseRowConverter();
    return fastest;
}

// The lower 3 bits of each byte stay 0, as hosts know these pictures: they keep them by
// checksum.
void convertRowPlain(const unsigned char *pixels, unsigned char *out, int width)
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
    const __m128i high5 = _mm_set1_epi16(0x00f8);
    const __m128i values = _mm_loadu_si128(reinterpret_cast<const __m128i *>(pixels));
    const __m128i blue = _mm_and_si128(_mm_slli_epi16(values, 3), high5);
    const __m128i green = _mm_slli_epi16(_mm_and_si128(_mm_srli_epi16(values, 2), high5), 8);
    const __m128i red = _mm_and_si128(_mm_srli_epi16(values, 7), high5);
    const __m128i blueGreen = _mm_or_si128(blue, green);
    const __m128i first = packed(_mm_unpacklo_epi16(blueGreen, red));
    const __m128i second = packed(_mm_unpackhi_epi16(blueGreen, red));
    const __m128i low16 = _mm_or_si128(first, _mm_slli_si128(second, 12));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(out), low16);
    _mm_storel_epi64(reinterpret_cast<__m128i *>(out + 16), _mm_srli_si128(second, 4));
}

// 8 pixels as blue, green, red and 0 to the 24 bytes without the zeros at the low end.
__attribute__((target("avx2"))) inline __m256i packed(__m256i pixels)
{
    const __m256i withoutZeros = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
    const __m256i withoutGap = _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7);
    return _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(pixels, withoutZeros), withoutGap);
}

// 16 pixels, 48 bytes.
__attribute__((target("avx2"))) inline void convertBlockAvx2(const unsigned char *pixels,
                                                             unsigned char *out)
{
    const __m256i high5 = _mm256_set1_epi16(0x00f8);
    const __m256i stored = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(pixels));
    // The quarters in the order 0 2 1 3: each unpacking takes one quarter of either half.
    const __m256i values = _mm256_permute4x64_epi64(stored, 0xd8);
    const __m256i blue = _mm256_and_si256(_mm256_slli_epi16(values, 3), high5);
    const __m256i green =
        _mm256_slli_epi16(_mm256_and_si256(_mm256_srli_epi16(values, 2), high5), 8);
    const __m256i red = _mm256_and_si256(_mm256_srli_epi16(values, 7), high5);
    const __m256i blueGreen = _mm256_or_si256(blue, green);
    const __m256i first = packed(_mm256_unpacklo_epi16(blueGreen, red));
    const __m256i second = packed(_mm256_unpackhi_epi16(blueGreen, red));
    // The upper 8 of these 32 bytes are overwritten at once.
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(out), first);
    _mm_storeu_si128(reinterpret_cast<__m128i *>(out + 24), _mm256_castsi256_si128(second));
    _mm_storel_epi64(reinterpret_cast<__m128i *>(out + 40), _mm256_extracti128_si256(second, 1));
}

} // namespace

// In both, the last block ends with the row and may overlap the one before it, so that none
// reads or writes beyond the row.

void convertRowSse2(const unsigned char *pixels, unsigned char *out, int width)
{
    const int step = 8;
    if (width < step) {
        convertRowPlain(pixels, out, width);
        return;
    }
    for (; width > step; width -= step, pixels += bytesIn * step, out += bytesOut * step)
        convertBlockSse2(pixels, out);
    const int overlap = step - width;
    convertBlockSse2(pixels - bytesIn * overlap, out - bytesOut * overlap);
}

__attribute__((target("avx2"))) void convertRowAvx2(const unsigned char *pixels, unsigned char *out,
                                                    int width)
{
    const int step = 16;
    if (width < step) {
        convertRowSse2(pixels, out, width);
        return;
    }
    for (; width > step; width -= step, pixels += bytesIn * step, out += bytesOut * step)
        convertBlockAvx2(pixels, out);
    const int overlap = step - width;
    convertBlockAvx2(pixels - bytesIn * overlap, out - bytesOut * overlap);
}

bool hasAvx2Rows()
{
    return __builtin_cpu_supports("avx2");
}

#endif
