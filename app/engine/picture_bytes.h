#ifndef PHOTOLIB_ENGINE_PICTURE_BYTES_H
#define PHOTOLIB_ENGINE_PICTURE_BYTES_H

#include <QByteArray>
#include <QIODevice>

#include <memory>

class CancelToken;

/// `bytes` open for a reader of pictures. Once `cancel`, if there is one, is cancelled, they end
/// where they are: what a device made up may take a reader minutes. The token outlives the result.
std::unique_ptr<QIODevice> openedBytes(const QByteArray &bytes, const CancelToken *cancel);

/// How many scans the JPEG file `jpeg` has at most. Each scan of a progressive one goes over all of
/// its pixels again, and may have a few bytes only: some thousands of them take minutes. The usual
/// ones are some ten.
int mostScansIn(const QByteArray &jpeg);

/// Whether the first scan of the JPEG file `jpeg` has all of the picture, so that a reader keeps
/// but a few rows of it at a time; false when that cannot be told.
bool isReadInOnePass(const QByteArray &jpeg);

#endif // PHOTOLIB_ENGINE_PICTURE_BYTES_H
