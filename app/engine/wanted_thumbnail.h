#ifndef PHOTOLIB_ENGINE_WANTED_THUMBNAIL_H
#define PHOTOLIB_ENGINE_WANTED_THUMBNAIL_H

#include "engine/thumbnail.h"

/// A thumbnail that is wanted as a file.
struct ThumbnailRequest {
    quint64 id = 0; ///< of a photo or video of the library

    /// The longer edge in pixels, which a smaller picture keeps below. 0 for a thumbnail as large
    /// as the device stores it, or of the usual size where one is made.
    int longestEdge = 0;

    /// The format, JPEG or PNG. Null for a thumbnail as the device stores it, JPEG or BMP; for one
    /// that is scaled or made, JPEG.
    const PictureFormat *format = nullptr;
};

/// The thumbnail that the device stores; where there is none, or a sound one that is smaller than
/// was asked for, one made of the photo's own file. None, with the cause, soon after `cancel` is
/// cancelled. Throws Error when the device is gone.
PictureFile wantedThumbnail(LibrarySession &session, const ThumbnailRequest &request,
                            const CancelToken &cancel);

#endif // PHOTOLIB_ENGINE_WANTED_THUMBNAIL_H
