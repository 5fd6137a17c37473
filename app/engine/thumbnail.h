#ifndef PHOTOLIB_ENGINE_THUMBNAIL_H
#define PHOTOLIB_ENGINE_THUMBNAIL_H

#include "devices/device_file_system.h"

#include <QByteArray>
#include <QImage>
#include <QString>

class LibrarySession;
class photoItem;

/// A thumbnail as the plug-in gives it.
struct Thumbnail {
    QByteArray bytes;          ///< an image file; empty when there is no thumbnail
    FileError failure;         ///< why there is none, in words that a message can end with
    bool isUnreadable = false; ///< the device has a file for it that can not be read
};

/// Throws Error when the device is gone.
Thumbnail thumbnailOf(LibrarySession &session, quint64 id);

/// The largest picture that a classic iPod stores of the photo, likewise.
Thumbnail sourcePhotoOf(LibrarySession &session, quint64 id);

/// The extension that belongs to the content of an image file: "jpg" or "bmp", or null for
/// anything else.
const char *imageExtension(const QByteArray &bytes);

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

#endif // PHOTOLIB_ENGINE_THUMBNAIL_H
