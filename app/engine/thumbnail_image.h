#ifndef PHOTOLIB_ENGINE_THUMBNAIL_IMAGE_H
#define PHOTOLIB_ENGINE_THUMBNAIL_IMAGE_H

#include <QByteArray>
#include <QImage>
#include <QString>

class photoItem;

/// The picture in the image file `bytes`, which a device may have made up. Returns a null
/// image and fills `*cause` for one that is damaged, of an unknown format, or far larger
/// than any thumbnail.
QImage decodedThumbnail(const QByteArray &bytes, QString *cause);

/// `picture`, stored in the way that the EXIF orientation code `orientation` tells, as it
/// looks upright. A code that is none of 1 to 8 turns nothing.
QImage turnedUpright(const QImage &picture, int orientation);

/// The thumbnail `picture` of `item` as it looks upright. Devices turn their thumbnails
/// when they make them; only one that lies across the item's dimensions is still to be
/// turned.
QImage uprightThumbnail(const QImage &picture, const photoItem &item);

#endif // PHOTOLIB_ENGINE_THUMBNAIL_IMAGE_H
