#ifndef PHOTOLIB_TESTS_APP_THUMBNAIL_EXPECTATION_H
#define PHOTOLIB_TESTS_APP_THUMBNAIL_EXPECTATION_H

#include <QByteArray>

/// What a device folder holds for the thumbnail of one photo.
struct ExpectedThumbnail {
    int result = -1;  ///< 0 when there is one
    QByteArray bytes; ///< the JPEG, or the packed picture as a BMP file
};

/// The thumbnail of the photo `path`, whose packed picture has the number `index`, in the
/// folder `device`, found and converted by means of the test's own.
ExpectedThumbnail thumbnailInFolder(const QByteArray &device, const QByteArray &path, int index);

#endif // PHOTOLIB_TESTS_APP_THUMBNAIL_EXPECTATION_H
