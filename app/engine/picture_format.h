#ifndef PHOTOLIB_ENGINE_PICTURE_FORMAT_H
#define PHOTOLIB_ENGINE_PICTURE_FORMAT_H

#include <QByteArray>
#include <QSize>

class QImage;

/// A format of picture files.
struct PictureFormat {
    const char *name;          ///< for people: "JPEG"
    const char *extensions[4]; ///< in lower case and without a dot, the usual one first, then nulls

    const char *extension() const { return extensions[0]; }
};

/// The format of the picture file `bytes`; null unless it is JPEG or BMP, which is what devices
/// have.
const PictureFormat *formatOfContent(const QByteArray &bytes);

/// The format that people expect of a file with `extension`, in any case; null when it is none
/// that is known.
const PictureFormat *formatOfExtension(const QByteArray &extension);

/// Those that pictures are converted to.
const PictureFormat &jpegFormat();
const PictureFormat &pngFormat();

/// `picture`, which is not null, as a PNG file. Throws std::bad_alloc.
QByteArray pngFile(const QImage &picture);

/// The quality of JPEG files, of 100.
constexpr int jpegQuality = 90;

/// The same as a JPEG file of that quality; white shows through a picture that is transparent.
QByteArray jpegFile(const QImage &picture);

/// What comes before the rows of a BMP file as the plug-in and the host make them, and how long a
/// row of such a file is: it has 24 bits a pixel and ends at a multiple of 4 bytes.
constexpr int bmpHeaderBytes = 54;
constexpr qint64 bmpRowBytes(qint64 width)
{
    return (width * 3 + 3) / 4 * 4;
}

/// The length of such a file with a picture of `size`.
qint64 bmpFileBytes(const QSize &size);

#endif // PHOTOLIB_ENGINE_PICTURE_FORMAT_H
