#ifndef PHOTOLIB_ENGINE_PNG_FILE_H
#define PHOTOLIB_ENGINE_PNG_FILE_H

#include "base/byte_sink.h"

class CancelToken;
class QImage;
class WorkerPool;

/// Writes `picture`, which is not null, as a PNG file without transparency to `sink`, on the
/// calling thread, while all threads of `pool` compress: the same bytes whatever their number.
/// Throws Error of the kind Cancelled soon after `cancel` is, std::bad_alloc, and what `sink`
/// throws.
void writePng(const QImage &picture, WorkerPool &pool, const CancelToken &cancel,
              const ByteSink &sink);

#endif // PHOTOLIB_ENGINE_PNG_FILE_H
