#ifndef PHOTOLIB_CLASSIC_ROW_LENGTH_H
#define PHOTOLIB_CLASSIC_ROW_LENGTH_H

#include <QImage>

/// Whether the pixels of `image`, which has rows of 16 bits a pixel without gaps between them,
/// are clearly those of a picture with rows of `length` pixels rather than its own. A pixel
/// looks like the one above it; in rows of a wrong length that is one from elsewhere.
bool hasRowsOf(int length, const QImage &image);

#endif // PHOTOLIB_CLASSIC_ROW_LENGTH_H
