#include "base/byte_count.h"

#include <QLocale>

QString byteCountText(qint64 bytes)
{
    return QLocale::c().formattedDataSize(bytes, bytes < 1024 ? 0 : 1);
}

QString byteCountsText(qint64 bytes, qint64 total)
{
    // Files may have grown since they were measured.
    return QStringLiteral("%1 of %2").arg(byteCountText(bytes), byteCountText(qMax(bytes, total)));
}
