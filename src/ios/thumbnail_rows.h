#ifndef PHOTOLIB_IOS_THUMBNAIL_ROWS_H
#define PHOTOLIB_IOS_THUMBNAIL_ROWS_H

#include <cstddef>

/// A picture in a record of a packed thumbnail file, and the rows of a BMP image that it
/// becomes. Nothing has to be aligned.
struct picture_rows {
    const unsigned char *bottomRow; ///< the first pixel of the lowest stored row
    std::ptrdiff_t rowBytes;        ///< from a stored row to the one below it
    int width;                      ///< pixels of a row, at most 2^29; none are converted below 1
    int height;                     ///< rows; none are converted below 1
    unsigned char *out;             ///< the first row of the image, its lowest one
    std::ptrdiff_t outRowBytes;     ///< from a row of the image to the next, the one above it
};

/// Converts the pixels of a picture: 16-bit values, the lower byte first, with 5 bits each
/// for blue (the lowest), green and red, become the bytes blue, green and red with these
/// bits at the upper end. Reads 2 and writes 3 bytes a pixel and no byte beside them. Any
/// thread.
typedef void (*rows_converter)(const picture_rows &picture);

/// The quickest of those below on this processor, looked for once.
rows_converter fastestRowsConverter();

/// For every processor, and what the others are measured by.
void convertRowsPlain(const picture_rows &picture);

/// The same for pixels of 4 bytes, blue, green, red and alpha, of which the first three are
/// taken as they are.
void convertBgraRows(const picture_rows &picture);

#if defined(__GNUC__) && defined(__x86_64__)
#define PHOTOLIB_HAS_X86_ROWS 1

void convertRowsSse2(const picture_rows &picture);

/// Only where `hasAvx2Rows()`.
void convertRowsAvx2(const picture_rows &picture);
bool hasAvx2Rows();

#else
#define PHOTOLIB_HAS_X86_ROWS 0
#endif

#endif // PHOTOLIB_IOS_THUMBNAIL_ROWS_H
