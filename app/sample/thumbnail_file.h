#ifndef PHOTOLIB_SAMPLE_THUMBNAIL_FILE_H
#define PHOTOLIB_SAMPLE_THUMBNAIL_FILE_H

#include "sample/sample_options.h"

#include <QByteArray>
#include <QImage>

namespace sample {

/// The format of a packed thumbnail file. A record is `height` rows of `rowPixels` 16-bit
/// pixels and a trailer of 28 bytes.
struct ThumbnailFormat {
    const char *path; ///< relative to the media root
    int rowPixels;    ///< stored, of which the first `width` are used
    int height;
    int width;
};

/// The format of the file that devices with databases of that generation have.
const ThumbnailFormat &thumbnailFormat(SampleSchema schema);

/// One record with `picture`, which must fit into the frame, in its middle; `uuid` is the
/// asset's, 16 bytes.
QByteArray thumbnailRecord(const QImage &picture, const QByteArray &uuid,
                           const ThumbnailFormat &format);

} // namespace sample

#endif // PHOTOLIB_SAMPLE_THUMBNAIL_FILE_H
