#include "classic/device_clock.h"

#include <QDateTime>

#include <limits>

quint32 unixTime(quint32 deviceSeconds)
{
    if (deviceSeconds == 0)
        return 0;
    const QDateTime epoch(QDate(1904, 1, 1), QTime(0, 0), Qt::UTC);
    const QDateTime shown = epoch.addSecs(deviceSeconds);
    const qint64 instant = QDateTime(shown.date(), shown.time(), Qt::LocalTime).toSecsSinceEpoch();
    return static_cast<quint32>(
        qBound(qint64(0), instant, qint64(std::numeric_limits<quint32>::max())));
}
