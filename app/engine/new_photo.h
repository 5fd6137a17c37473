#ifndef PHOTOLIB_ENGINE_NEW_PHOTO_H
#define PHOTOLIB_ENGINE_NEW_PHOTO_H

#include "boundary/photo_records.h"

/// Describes the picture or video in `file`, a file of the host computer, as a photo that is
/// new to a library: one without an id. Throws Error when there is no such file.
photoItem newPhoto(const QString &file);

#endif // PHOTOLIB_ENGINE_NEW_PHOTO_H
