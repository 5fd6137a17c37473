#ifndef PHOTOLIB_ENGINE_ORIGINAL_PICTURE_H
#define PHOTOLIB_ENGINE_ORIGINAL_PICTURE_H

#include "devices/device_file_system.h"

#include <QByteArray>
#include <QImage>
#include <QString>

class CancelToken;
struct OriginalFiles;

/// The longer edge of a thumbnail that is made where nobody says how large, in pixels: about that
/// of the ones that devices make.
constexpr int usualThumbnailEdge = 512;

/// A picture that is made of a photo's own file, or the reason why there is none.
struct OriginalPicture {
    QImage image;    ///< upright, in the usual colours (sRGB) and of the wanted size
    FileError cause; ///< in words that a message can end with; of no kind where there is no
                     ///< picture file that could be read here, Damaged where there is one that
                     ///< is of no use
};

/// Makes a picture of the first of `originals` that is a JPEG, PNG, GIF or HEIF file, which the
/// content tells: scaled down so that the longer edge has `longestEdge` pixels, never up. The
/// device may have made up each file: those that are far larger than any photo are not read. None
/// soon after `cancel` is cancelled. Any thread. Throws std::bad_alloc.
OriginalPicture originalPicture(DeviceFileSystem &files, const OriginalFiles &originals,
                                int longestEdge, const CancelToken &cancel);

/// `picture`, scaled smoothly down so that its longer edge has at most `longestEdge` pixels.
QImage scaledDown(const QImage &picture, int longestEdge);

#endif // PHOTOLIB_ENGINE_ORIGINAL_PICTURE_H
