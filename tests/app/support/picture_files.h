#ifndef PHOTOLIB_TESTS_APP_PICTURE_FILES_H
#define PHOTOLIB_TESTS_APP_PICTURE_FILES_H

#include <QByteArray>
#include <QImage>

// Picture files as cameras and people make them.

/// `picture` as a file of a format that Qt writes: "JPEG", "PNG", "BMP".
QByteArray pictureFile(const QImage &picture, const char *format);

/// `upright` as a camera stores it that is held in the way that EXIF's orientation `code` tells.
QImage storedWith(const QImage &upright, int code);

/// The same as a JPEG file whose EXIF block has the code.
QByteArray jpegHeld(const QImage &upright, int code);

/// `picture` as a HEIC file that tells to turn it with EXIF's orientation `code`. Where there is
/// `other`, the file has it as a thumbnail of the picture, a third as long. Empty where the library
/// has no encoder.
QByteArray heicFile(const QImage &picture, int code = 1, const QImage &other = QImage());

/// A PNG file that begins well, claims that size and has no pixels.
QByteArray hollowPng(quint32 width, quint32 height);

/// The greys of `picture` as a PNG file that is stored in seven passes, each finer than the others.
QByteArray interlacedPng(const QImage &picture);

/// A grey progressive JPEG picture of 16 x 16 pixels, four blocks, in `scans` scans: first all the
/// means, then again and again all other coefficients, none of which is there.
QByteArray progressiveJpeg(int scans);

/// A segment of a JPEG file with that content.
QByteArray jpegSegment(char marker, const QByteArray &content);

#endif // PHOTOLIB_TESTS_APP_PICTURE_FILES_H
