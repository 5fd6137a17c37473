#ifndef PHOTOLIB_ENGINE_TYPE_CODES_H
#define PHOTOLIB_ENGINE_TYPE_CODES_H

#include <QtGlobal>

/// What `photoItem::type` says.
enum PhotoType : qint32 {
    videoType = 2,
    photoType = 3,
};

/// What `albumItem::type` says.
enum AlbumType : qint32 {
    cameraRollAlbum = 1,
    panoramaAlbum = 2,     ///< made up by the plug-in
    videoAlbum = 3,        ///< likewise
    deviceAlbum = 4,       ///< a person's own, on the device
    photoLibraryAlbum = 5, ///< all that came from a computer, or by an edit
    userAlbum = 6,         ///< one that came so, and any of a classic iPod
};

#endif // PHOTOLIB_ENGINE_TYPE_CODES_H
