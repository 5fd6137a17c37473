#ifndef PHOTOLIB_ENGINE_THUMBNAIL_IMAGE_H
#define PHOTOLIB_ENGINE_THUMBNAIL_IMAGE_H

#include <QByteArray>
#include <QImage>
#include <QString>

class CancelToken;

/// The picture in the image file `bytes`, which a device may have made up. Returns a null
/// image and fills `*cause` for one that is damaged, of an unknown format, or far larger
/// than any thumbnail; so it does soon after `cancel`, if there is one, is cancelled: what is made
/// up may take minutes. Any thread.
QImage decodedThumbnail(const QByteArray &bytes, QString *cause,
                        const CancelToken *cancel = nullptr);

/// `picture`, stored in the way that the EXIF orientation code `orientation` tells, as it
/// looks upright. A code that is none of 1 to 8 turns nothing.
QImage turnedUpright(const QImage &picture, int orientation);

/// What a library tells of the shape of a photo or video; 0 for what it does not.
struct StoredShape {
    qint64 width = 0; ///< pixels, upright
    qint64 height = 0;
    qint64 orientation = 0; ///< EXIF's code
};

/// The thumbnail `picture` of a photo or video of that shape as it looks upright. Devices turn
/// their thumbnails when they make them; only one that lies across the dimensions is still to be
/// turned.
QImage uprightThumbnail(const QImage &picture, const StoredShape &shape);

#endif // PHOTOLIB_ENGINE_THUMBNAIL_IMAGE_H
