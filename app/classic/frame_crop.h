#ifndef PHOTOLIB_CLASSIC_FRAME_CROP_H
#define PHOTOLIB_CLASSIC_FRAME_CROP_H

#include "classic/pixel_formats.h"
#include "classic/stored_picture.h"

#include <QRect>

/// The part of a frame that its picture fills.
struct FrameCrop {
    QRect rectangle;
    bool isInRotatedFrame = false; ///< rather than in the upright one
};

/// Finds the crop of the picture that `photo` describes. The padding on its left and above it
/// counts as a part of its width and height.
///
/// The numbers of a format that is rotated may be those of the upright frame or of the rotated
/// one: they are taken for those of the frame that holds the picture, and when both do, of
/// that in whose middle it is, in doubt of the upright one.
///
/// Returns false and fills `*cause` for a picture that is empty or not within its frame.
bool findFrameCrop(const PixelFormat &format, const StoredPicture &photo, FrameCrop *crop,
                   QString *cause);

#endif // PHOTOLIB_CLASSIC_FRAME_CROP_H
