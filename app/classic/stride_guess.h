#ifndef PHOTOLIB_CLASSIC_STRIDE_GUESS_H
#define PHOTOLIB_CLASSIC_STRIDE_GUESS_H

#include <QImage>

/// Whether the pixels of `image`, which has rows of 16 bits a pixel without gaps between them,
/// are clearly those of a picture with a stride of `stride` pixels, both at least 2, rather than
/// with its own. A pixel looks like the one below it, which with a wrong stride is one from
/// elsewhere; and where that says little, the colours change where a row ends.
bool hasStride(int stride, const QImage &image);

#endif // PHOTOLIB_CLASSIC_STRIDE_GUESS_H
