#ifndef PHOTOLIB_BASE_BYTE_COUNT_H
#define PHOTOLIB_BASE_BYTE_COUNT_H

#include <QString>
#include <QtGlobal>

#include <optional>

/// "3.0 MiB" for a number of bytes.
QString byteCountText(qint64 bytes);

/// "3.0 MiB of 12.3 MiB"; a total that is smaller than `bytes` counts as equal.
QString byteCountsText(qint64 bytes, qint64 total);

/// The number of bytes that a person writes as "500k", "1.5G", "10MiB" or "2000": k, M, G and T, in
/// either case and also as KiB and so on, are powers of 1024, and KB, MB, GB and TB of 1000.
/// Nothing for another text and for more than `qint64` holds.
std::optional<qint64> byteCount(const QString &text);

#endif // PHOTOLIB_BASE_BYTE_COUNT_H
