#ifndef PHOTOLIB_ENGINE_HEIF_PICTURE_H
#define PHOTOLIB_ENGINE_HEIF_PICTURE_H

#include <QByteArray>
#include <QImage>
#include <QSize>

class CancelToken;

/// Whether the file that begins with `start` is of the HEIF family: HEIC, HEIF or AVIF.
bool isHeif(const QByteArray &start);

/// The largest size that the HEIF file `bytes` claims for a picture in it; 0 x 0 when it claims
/// none. Nothing is decoded.
QSize claimedHeifSize(const QByteArray &bytes);

/// The picture of the HEIF file `bytes`, which a device may have made up: upright, its longer edge
/// less than twice `longestEdge` pixels or as it is, with the colours that the file means. Null
/// when it cannot be decoded, which another process tries, within limits that suit the claimed
/// size; and soon after `cancel` is cancelled. Any thread. Throws std::bad_alloc.
QImage decodedHeif(const QByteArray &bytes, int longestEdge, const CancelToken &cancel);

#endif // PHOTOLIB_ENGINE_HEIF_PICTURE_H
