#ifndef PHOTOLIB_CLASSIC_PIXEL_FORMATS_H
#define PHOTOLIB_CLASSIC_PIXEL_FORMATS_H

#include <QSize>
#include <QtGlobal>

/// How a picture's pixels lie in its bytes.
enum class PixelLayout {
    Rgb565,          ///< 16 bits a pixel, red highest, the low byte first
    Rgb565BigEndian, ///< likewise, the high byte first
    Rgb555,          ///< 16 bits a pixel, the highest unused, the low byte first
    InterlacedUyvy,  ///< Cb Y Cr Y for two pixels; the rows 0, 2, 4 ... and then 1, 3, 5 ...
    PlanarYuv420,    ///< all Y, then all Cb and all Cr, one of each for 2 x 2 pixels
    Jpeg,            ///< a JPEG file, as long as it happens to be
};

/// How a frame is rotated in its bytes.
enum class PixelRotation {
    None,
    /// A quarter to the left, as the panel of the device's display is: its first row holds the
    /// right edge, from the top down. Some writers leave it upright all the same.
    CounterClockwise,
};

/// The form that the pictures of one format id have in the device's thumbnail files. Each
/// fills a frame of the format's size: one that is smaller has padding around it.
///
/// Where the frame leaves a part of its place in the file unused, a database may give either
/// size, that of the pixels or that of the place.
struct PixelFormat {
    qint32 id;
    int width; ///< of the frame, upright, in pixels
    int height;
    PixelLayout layout;
    PixelRotation rotation = PixelRotation::None;
    qint32 slotBytes = 0; ///< the place in the file, where the pixels do not fill it

    QSize frame() const { return QSize(width, height); }

    /// The bytes of the pixels; 0 for a JPEG file, which has no certain size.
    qint32 pixelBytes() const;
};

/// The format `id` of a device's photos; null for one that is not known, such as those of
/// covers of music. Some devices have other formats under ids of this table: the size of
/// their pictures differs.
const PixelFormat *findPixelFormat(qint32 id);

#endif // PHOTOLIB_CLASSIC_PIXEL_FORMATS_H
