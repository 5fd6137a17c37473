#ifndef PHOTOLIB_CLASSIC_YUV_IMAGE_H
#define PHOTOLIB_CLASSIC_YUV_IMAGE_H

#include <QImage>

/// The colour of a pixel of television: BT.601 in studio range, where `y` is 16 for black and
/// 235 for white, and `cb` and `cr` are 128 for grey, 16 and 240 at most from there. What lies
/// outside of the range is clamped.
QRgb rgbOfYuv(quint8 y, quint8 cb, quint8 cr);

/// The pictures, as QImage::Format_RGB32, of an even width and height at `bytes`. Those are
/// 2 bytes a pixel: Cb Y Cr Y for two pixels; the rows 0, 2, 4 ... and then 1, 3, 5 ...
QImage imageOfInterlacedUyvy(const uchar *bytes, const QSize &size);

/// Here 3 bytes for two pixels: all Y, then all Cb and all Cr, one for 2 x 2 pixels each.
QImage imageOfPlanarYuv420(const uchar *bytes, const QSize &size);

#endif // PHOTOLIB_CLASSIC_YUV_IMAGE_H
