#ifndef PHOTOLIB_ENGINE_LIBRARY_DATE_H
#define PHOTOLIB_ENGINE_LIBRARY_DATE_H

#include "catalog/asset.h"

#include <QByteArray>
#include <QString>

#include <optional>

/// A part of the calendar that a person names, the year 2019 or a minute of it, say: from `start`
/// to before `end`, in milliseconds since 2001-01-01 00:00.
struct DateSpan {
    qint64 start = 0;
    qint64 end = 0;
    bool isUtc = false; ///< otherwise the time is that of the place of each photo
};

/// The span that `text` names: "2019", "2019-07", "2019-07-27", or "2019-07-27T09:16" with seconds
/// and milliseconds or without, and with a zone, "Z" or "+02:00", or without. A blank may stand for
/// the T. Nothing for another text and for what is not in the calendar.
std::optional<DateSpan> dateSpan(const QString &text);

/// `date` to the nearest millisecond, half up, since 2001-01-01 00:00 on a clock that is
/// `utcOffset` minutes ahead of UTC. Nothing without a date, and for one outside the years 1 to
/// 9999, on that clock or in UTC.
std::optional<qint64> clockTime(LibraryDate date, int utcOffset = 0);

/// "2019-07-27T09:16:49.250-04:00", the milliseconds only where there are some; with "Z" when the
/// offset is not known. Empty where `clockTime` has nothing.
QByteArray isoDateText(LibraryDate date, std::optional<int> utcOffset);

/// "2019-07-27 09:16:49" on a clock that is `utcOffset` minutes ahead of UTC. Empty where
/// `clockTime` has nothing.
QString clockText(LibraryDate date, int utcOffset = 0);

#endif // PHOTOLIB_ENGINE_LIBRARY_DATE_H
