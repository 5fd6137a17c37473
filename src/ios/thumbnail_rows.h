#ifndef PHOTOLIB_IOS_THUMBNAIL_ROWS_H
#define PHOTOLIB_IOS_THUMBNAIL_ROWS_H

/// Converts `width` pixels of a packed thumbnail, at most 2^30, into the bytes blue, green
/// and red of a BMP row. `pixels` are 16-bit values, the lower byte first, with 5 bits each
/// for blue (the lowest), green and red; each becomes the upper 5 bits of its byte. Reads 2
/// and writes 3 bytes a pixel, no byte more, at any alignment; nothing when `width` is 0 or
/// less. Any thread.
typedef void (*row_converter)(const unsigned char *pixels, unsigned char *out, int width);

/// The quickest of those below on this processor, looked for once.
row_converter fastestRowConverter();

/// For every processor, and what the others are measured by.
void convertRowPlain(const unsigned char *pixels, unsigned char *out, int width);

#if defined(__GNUC__) && defined(__x86_64__)
#define PHOTOLIB_HAS_X86_ROWS 1

void convertRowSse2(const unsigned char *pixels, unsigned char *out, int width);

/// Only where `hasAvx2Rows()`.
void convertRowAvx2(const unsigned char *pixels, unsigned char *out, int width);
bool hasAvx2Rows();

#else
#define PHOTOLIB_HAS_X86_ROWS 0
#endif

#endif // PHOTOLIB_IOS_THUMBNAIL_ROWS_H
