#ifndef PHOTOLIB_BASE_BYTE_SINK_H
#define PHOTOLIB_BASE_BYTE_SINK_H

#include <QtGlobal>

#include <functional>

/// Takes the next `count` bytes of a file. What it throws ends the writing.
using ByteSink = std::function<void(const char *bytes, qint64 count)>;

#endif // PHOTOLIB_BASE_BYTE_SINK_H
