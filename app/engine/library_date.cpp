#include "engine/library_date.h"

#include <QDate>
#include <QRegularExpression>

#include <array>
#include <cmath>

namespace {

constexpr qint64 minuteLength = 60000;
constexpr qint64 dayLength = 1440 * minuteLength;
constexpr qint64 firstDay = 1721426;     // the Julian day of 0001-01-01
constexpr qint64 epochDay = 2451911;     // that of 2001-01-01
constexpr qint64 dayAfterLast = 5373485; // and of the day after 9999-12-31
constexpr qint64 firstTime = (firstDay - epochDay) * dayLength;
constexpr qint64 timeAfterLast = (dayAfterLast - epochDay) * dayLength;

bool isInCalendar(qint64 time)
{
    return time >= firstTime && time < timeAfterLast;
}

qint64 startOf(const QDate &day)
{
    return (day.toJulianDay() - epochDay) * dayLength;
}

// The parts of a date as they are written one after the other: a large list has a million of them.
class DateText
{
public:
    DateText &append(char letter)
    {
        m_letters[m_length++] = letter;
        return *this;
    }

    DateText &append(qint64 number, int digits)
    {
        for (int place = digits - 1; place >= 0; --place) {
            m_letters[m_length + std::size_t(place)] = static_cast<char>('0' + number % 10);
            number /= 10;
        }
        m_length += std::size_t(digits);
        return *this;
    }

    QByteArray text() const { return QByteArray(m_letters.data(), static_cast<int>(m_length)); }

private:
    std::array<char, 40> m_letters; // "2019-07-27T09:16:49.250-04:00" takes 29
    std::size_t m_length = 0;
};

// "2019-07-27T09:16:49", with any separator.
void appendSecond(DateText &text, qint64 time, char separator)
{
    const qint64 sinceFirst = time - firstTime;
    int year = 0;
    int month = 0;
    int day = 0;
    QDate::fromJulianDay(firstDay + sinceFirst / dayLength).getDate(&year, &month, &day);
    const qint64 seconds = sinceFirst % dayLength / 1000;
    text.append(year, 4).append('-').append(month, 2).append('-').append(day, 2);
    text.append(separator).append(seconds / 3600, 2);
    text.append(':').append(seconds / 60 % 60, 2).append(':').append(seconds % 60, 2);
}

void appendZone(DateText &text, std::optional<int> utcOffset)
{
    if (!utcOffset) {
        text.append('Z');
        return;
    }
    const int minutes = std::abs(*utcOffset) % 6000; // of two digits of hours
    text.append(*utcOffset < 0 ? '-' : '+').append(minutes / 60, 2);
    text.append(':').append(minutes % 60, 2);
}

// The minutes of "Z" or "+02:00"; nothing for an offset that no clock has.
std::optional<int> zoneOffset(const QString &text)
{
    if (text == QLatin1String("Z"))
        return 0;
    const int hours = text.midRef(1, 2).toInt();
    const int minutes = text.midRef(4, 2).toInt();
    if (hours > 23 || minutes > 59)
        return std::nullopt;
    return (text[0] == QLatin1Char('-') ? -1 : 1) * (hours * 60 + minutes);
}

// The day, month or year that begins with `first`.
DateSpan daySpan(const QDate &first, const QRegularExpressionMatch &match)
{
    const bool isDay = !match.captured(QStringLiteral("day")).isEmpty();
    const bool isMonth = !match.captured(QStringLiteral("month")).isEmpty();
    const QDate next = isDay ? first.addDays(1) : isMonth ? first.addMonths(1) : first.addYears(1);
    return {startOf(first), startOf(next), false};
}

// The minute, second or millisecond of `day`.
std::optional<DateSpan> timeSpan(const QDate &day, const QRegularExpressionMatch &match)
{
    const QString second = match.captured(QStringLiteral("second"));
    const QString fraction = match.captured(QStringLiteral("fraction"));
    const QTime time(match.captured(QStringLiteral("hour")).toInt(),
                     match.captured(QStringLiteral("minute")).toInt(), second.toInt(),
                     fraction.leftJustified(3, QLatin1Char('0')).toInt());
    const QString zone = match.captured(QStringLiteral("zone"));
    const std::optional<int> offset = zone.isEmpty() ? 0 : zoneOffset(zone);
    if (!time.isValid() || !offset)
        return std::nullopt;
    const qint64 start = startOf(day) + time.msecsSinceStartOfDay() - *offset * minuteLength;
    const qint64 length = !fraction.isEmpty() ? 1 : !second.isEmpty() ? 1000 : minuteLength;
    return DateSpan{start, start + length, !zone.isEmpty()};
}

} // namespace

std::optional<DateSpan> dateSpan(const QString &text)
{
    static const QRegularExpression form(
        QStringLiteral("\\A(?<year>[0-9]{4})(-(?<month>[0-9]{2})(-(?<day>[0-9]{2})"
                       "([T ](?<hour>[0-9]{2}):(?<minute>[0-9]{2})"
                       "(:(?<second>[0-9]{2})([.](?<fraction>[0-9]{1,3}))?)?"
                       "(?<zone>Z|[+-][0-9]{2}:[0-9]{2})?)?)?)?\\z"));
    const QRegularExpressionMatch match = form.match(text);
    const auto number = [&match](const char *name) {
        const QString digits = match.captured(QLatin1String(name));
        return digits.isEmpty() ? 1 : digits.toInt();
    };
    const QDate day(number("year"), number("month"), number("day"));
    if (!match.hasMatch() || !day.isValid() || day.year() < 1)
        return std::nullopt;
    if (match.captured(QStringLiteral("hour")).isEmpty())
        return daySpan(day, match);
    return timeSpan(day, match);
}

std::optional<qint64> clockTime(LibraryDate date, int utcOffset)
{
    constexpr double farther = 1e12; // seconds, than any year of four digits
    if (!date || !(std::abs(*date) < farther))
        return std::nullopt;
    const auto utc = static_cast<qint64>(std::floor(*date * 1000 + 0.5));
    const qint64 time = utc + utcOffset * minuteLength;
    if (!isInCalendar(utc) || !isInCalendar(time))
        return std::nullopt;
    return time;
}

QByteArray isoDateText(LibraryDate date, std::optional<int> utcOffset)
{
    const std::optional<qint64> time = clockTime(date, utcOffset.value_or(0));
    if (!time)
        return QByteArray();
    DateText text;
    appendSecond(text, *time, 'T');
    const qint64 milliseconds = (*time - firstTime) % 1000;
    if (milliseconds != 0)
        text.append('.').append(milliseconds, 3);
    appendZone(text, utcOffset);
    return text.text();
}

QString clockText(LibraryDate date, int utcOffset)
{
    const std::optional<qint64> time = clockTime(date, utcOffset);
    if (!time)
        return QString();
    DateText text;
    appendSecond(text, *time, ' ');
    return QString::fromLatin1(text.text());
}
