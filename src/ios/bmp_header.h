#ifndef PHOTOLIB_IOS_BMP_HEADER_H
#define PHOTOLIB_IOS_BMP_HEADER_H

#include <QByteArray>
#include <QtGlobal>

/// A BMP file image with 24 bits a pixel, blue first, its rows from the bottom up.
namespace bmp {

const int headerBytes = 54; ///< of the file header and the information header

/// From one row to the next in bytes: the pixels' three each, filled up to a multiple of 4.
/// `width` is not negative.
inline qint64 rowBytes(qint64 width)
{
    return (width * 3 + 3) / 4 * 4;
}

/// Writes both headers of an image to the `headerBytes` bytes at `out`. `width` is not
/// negative; `height` may be anything. The sizes are written modulo 2^32.
void writeHeaders(qint32 width, qint32 height, unsigned char *out);

} // namespace bmp

#endif // PHOTOLIB_IOS_BMP_HEADER_H
