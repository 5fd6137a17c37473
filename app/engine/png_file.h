#ifndef PHOTOLIB_ENGINE_PNG_FILE_H
#define PHOTOLIB_ENGINE_PNG_FILE_H

#include "base/byte_sink.h"

class CancelToken;
class QImage;

/// Writes `picture`, which is not null, as a PNG file to `sink`, on the calling thread and piece by
/// piece. Throws Error of the kind Cancelled soon after `cancel` is, std::bad_alloc, and what
/// `sink` throws.
void writePng(const QImage &picture, const CancelToken &cancel, const ByteSink &sink);

#endif // PHOTOLIB_ENGINE_PNG_FILE_H
