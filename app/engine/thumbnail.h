#ifndef PHOTOLIB_ENGINE_THUMBNAIL_H
#define PHOTOLIB_ENGINE_THUMBNAIL_H

#include "devices/device_file_system.h"
#include "engine/original_files.h"
#include "engine/original_picture.h"
#include "engine/picture_format.h"
#include "engine/thumbnail_image.h"

#include <QByteArray>
#include <QImage>
#include <QString>
#include <QStringList>

class CancelToken;
class LibrarySession;
struct Asset;

/// Which of the pictures of a photo or video is wanted.
enum class PictureChoice {
    Thumbnail, ///< of a classic iPod the smallest that it stores
    Largest,   ///< the largest that a classic iPod stores; an iOS device has none
};

/// A picture that is wanted as a file.
struct PictureRequest {
    quint64 id = 0; ///< of a photo or video of the library
    PictureChoice choice = PictureChoice::Thumbnail;
    bool isPng = false; ///< converted to PNG; else as the plug-in gives it, JPEG or BMP
};

/// A file that is ready to be written, or the reason why there is none.
struct PictureFile {
    QString label;                         ///< what tells the photo from others in a message
    QString name;                          ///< its own file's, not safe to show; may be empty
    QByteArray bytes;                      ///< empty when there is none
    const PictureFormat *format = nullptr; ///< of `bytes`; null when there are none
    FileError failure;                     ///< in words that a message can end with
};

/// Has the plug-in give the picture. Throws Error when the device is gone.
PictureFile requestedPicture(LibrarySession &session, const PictureRequest &request);

/// A thumbnail as the device stores it: a value, with all that decoding it takes.
struct StoredThumbnail {
    QString label;                     ///< what tells the photo from others in a message
    QByteArray bytes;                  ///< empty when there is none
    StoredShape shape;                 ///< of the photo, whose thumbnail may have to be turned
    QImage decoded;                    ///< what is shown when there are no bytes, or damaged ones
    QStringList faults;                ///< of a picture that was decoded when it was read
    OriginalFiles originals;           ///< of which one is made where the device has none
    DeviceFileSystem *files = nullptr; ///< theirs, which must outlive the value
};

/// Reads the thumbnail of `asset`, a photo or video of the library, or the largest picture where
/// that is but an icon, as the smallest of a classic iPod often is; the originals are only named. A
/// file that cannot be read is noted in `session`. There is none in a library that the plug-in
/// cannot read. Throws Error when
/// the device is gone.
StoredThumbnail storedThumbnail(LibrarySession &session, const Asset &asset);

/// A picture to look at.
struct ShownPicture {
    QImage image;                ///< upright; null when there is none
    QString absence;             ///< why, in two words
    QStringList faults;          ///< of each picture that is damaged: what is wrong, for a message
    bool isVideoWithout = false; ///< there is none since it is a video
    FileError unreadable;        ///< why an original cannot be read, if one is there
};

/// Decodes `stored`, or makes a picture of an original, whose longer edge has at most `madeEdge`
/// pixels; without a picture soon after `cancel`, if there is one, is cancelled. Any thread.
ShownPicture shownPicture(const StoredThumbnail &stored, const CancelToken *cancel = nullptr,
                          int madeEdge = usualThumbnailEdge);

#endif // PHOTOLIB_ENGINE_THUMBNAIL_H
