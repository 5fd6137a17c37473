#ifndef PHOTOLIB_SAMPLE_DATES_H
#define PHOTOLIB_SAMPLE_DATES_H

#include <QDateTime>

namespace sample {

/// The date-time `seconds` after 2001-01-01 00:00:00 UTC.
inline QDateTime dateTime(qint64 seconds)
{
    return QDateTime(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC).addSecs(seconds);
}

} // namespace sample

#endif // PHOTOLIB_SAMPLE_DATES_H
