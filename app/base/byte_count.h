#ifndef PHOTOLIB_BASE_BYTE_COUNT_H
#define PHOTOLIB_BASE_BYTE_COUNT_H

#include <QString>
#include <QtGlobal>

/// "3.0 MiB" for a number of bytes.
QString byteCountText(qint64 bytes);

/// "3.0 MiB of 12.3 MiB"; a total that is smaller than `bytes` counts as equal.
QString byteCountsText(qint64 bytes, qint64 total);

#endif // PHOTOLIB_BASE_BYTE_COUNT_H
