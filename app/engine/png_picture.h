#ifndef PHOTOLIB_ENGINE_PNG_PICTURE_H
#define PHOTOLIB_ENGINE_PNG_PICTURE_H

#include <QByteArray>
#include <QImage>
#include <QSize>

class CancelToken;

/// The size that the PNG file `bytes` claims; empty when its head is damaged. Nothing is decoded.
QSize claimedPngSize(const QByteArray &bytes);

/// The picture in the PNG file `bytes`, which a device may have made up, with the colours that the
/// file means. Null when it is damaged or not whole, and soon after `cancel` is cancelled. Says
/// nothing on stderr, as Qt's reader does. Any thread. Throws std::bad_alloc.
QImage decodedPng(const QByteArray &bytes, const CancelToken &cancel);

#endif // PHOTOLIB_ENGINE_PNG_PICTURE_H
