#ifndef PHOTOLIB_ENGINE_JPEG_FILE_H
#define PHOTOLIB_ENGINE_JPEG_FILE_H

#include "base/byte_sink.h"

class CancelToken;
class QImage;

/// Writes `picture`, which is opaque, not null and has no side of more than 65,500 pixels, as a
/// JPEG file of the usual quality to `sink`, on the calling thread and piece by piece. Throws Error
/// of the kind Cancelled soon after `cancel` is, std::bad_alloc, and what `sink` throws.
void writeJpeg(const QImage &picture, const CancelToken &cancel, const ByteSink &sink);

#endif // PHOTOLIB_ENGINE_JPEG_FILE_H
