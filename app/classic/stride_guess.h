#ifndef PHOTOLIB_CLASSIC_STRIDE_GUESS_H
#define PHOTOLIB_CLASSIC_STRIDE_GUESS_H

#include <QImage>

/// Whether the pixels of `image`, which has rows of 16 bits a pixel without gaps between them,
/// are clearly those of a picture with rows of `length` pixels, both at least 2, rather than
/// with its own. A pixel looks like the one below it, which in rows of a wrong length is one
/// from elsewhere; and where that says little, the colours change where a row ends.
bool hasRowsOf(int length, const QImage &image);

#endif // PHOTOLIB_CLASSIC_STRIDE_GUESS_H
