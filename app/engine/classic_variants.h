#ifndef PHOTOLIB_ENGINE_CLASSIC_VARIANTS_H
#define PHOTOLIB_ENGINE_CLASSIC_VARIANTS_H

#include "classic/photo_database.h"

/// The stored picture that the plug-in gives for the thumbnail, and the one for the source
/// photo; null when there is none.
const StoredPicture *smallestVariant(const ClassicPhoto &photo);
const StoredPicture *largestVariant(const ClassicPhoto &photo);

/// Bytes of all stored pictures, without the full-resolution file.
qint64 storedBytes(const ClassicPhoto &photo);

#endif // PHOTOLIB_ENGINE_CLASSIC_VARIANTS_H
