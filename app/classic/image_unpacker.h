#ifndef PHOTOLIB_CLASSIC_IMAGE_UNPACKER_H
#define PHOTOLIB_CLASSIC_IMAGE_UNPACKER_H

#include "classic/stored_picture.h"

class QSize;

/// The size in pixels of the picture that `photo` describes, as it looks upright and without
/// its padding, judged from the database alone; the empty size when the format is unknown or
/// the numbers contradict each other. A JPEG picture has the size that the database tells.
QSize unpackedSize(const StoredPicture &photo);

/// Decodes `raw`, the stored bytes of the picture that `photo` describes, and cuts its
/// padding: into a BMP file with 24 bits a pixel, or, when they are a JPEG file, as they are.
///
/// The numbers of the database and the pixels tell whether a picture of a format that is rotated
/// is rotated indeed: some writers leave it upright.
///
/// Returns false, fills `*error` with the cause and leaves `*image` alone for a format that
/// is not known, for bytes that are not as many as the format has, and for a picture that
/// does not lie within its frame. Neither pointer may be null. May be called on any thread;
/// throws std::bad_alloc only.
bool unpackImage(const QByteArray &raw, const StoredPicture &photo, QByteArray *image,
                 QString *error);

#endif // PHOTOLIB_CLASSIC_IMAGE_UNPACKER_H
