#ifndef PHOTOLIB_SAMPLE_CLASSIC_FORMAT_H
#define PHOTOLIB_SAMPLE_CLASSIC_FORMAT_H

#include <QByteArray>
#include <QImage>
#include <QRect>
#include <QString>

#include <array>

namespace sample {

/// How the pixels of a frame are stored; all take 16 bits a pixel.
enum class PixelPacking {
    Rgb565,     ///< little-endian words, red highest, top row first
    Interlaced, ///< Cb Y Cr Y for two pixels, studio range; rows 0, 2, 4 ... before 1, 3, 5 ...
};

/// A format in which a classic iPod keeps a picture of every photo, for one of its displays:
/// frames of one size, the picture in the middle and black around it.
struct ClassicFormat {
    int id;
    int width; ///< of a frame, pixels; even for interlaced pixels
    int height;
    PixelPacking packing;

    int frameBytes() const { return width * height * 2; }
    /// Where a picture of the size `original` lies in its frame, made smaller if necessary.
    QRect pictureArea(const QSize &original) const;
    /// `picture` as a frame with the pixels packed. It is made smaller if necessary.
    QByteArray frame(const QImage &picture) const;
};

/// The formats of an iPod that plays video, the largest first: the television, the screen, half
/// of the screen and the list of photos.
constexpr std::array<ClassicFormat, 4> classicFormats = {{
    {1019, 720, 480, PixelPacking::Interlaced},
    {1024, 320, 240, PixelPacking::Rgb565},
    {1015, 130, 88, PixelPacking::Rgb565},
    {1036, 50, 41, PixelPacking::Rgb565},
}};

/// Where the frame of a photo is stored.
struct FrameLocation {
    QString path; ///< relative to the folder of photos
    quint32 offset;
};

/// The location of the frame of photo `index`, counted from 0. A file ends before offsets need
/// more than 31 bits; the next one has the next number in its name.
FrameLocation frameLocation(const ClassicFormat &format, int index);

} // namespace sample

#endif // PHOTOLIB_SAMPLE_CLASSIC_FORMAT_H
