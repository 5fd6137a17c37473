#ifndef PHOTOLIB_SAMPLE_JPEG_H
#define PHOTOLIB_SAMPLE_JPEG_H

#include <QByteArray>
#include <QImage>

namespace sample {

/// `picture` as a JPEG file. Throws SampleError when it cannot be encoded.
QByteArray jpeg(const QImage &picture, int quality);

/// The JPEG file of a photo as a camera writes it: `upright` turned the way the camera was
/// held, with an EXIF block that says how to turn it back (`orientation` 1, 3, 6 or 8) and
/// when it was taken, in seconds since 2001-01-01 00:00:00 UTC. Throws SampleError.
QByteArray cameraJpeg(const QImage &upright, int orientation, qint64 takenAt);

} // namespace sample

#endif // PHOTOLIB_SAMPLE_JPEG_H
