#include "engine/taken_text.h"

#include "catalog/asset.h"

#include <QDateTime>

#include <cmath>

namespace {

// Invalid outside the years 1 to 9999.
QDateTime dateAt(double secondsSince2001)
{
    constexpr qint64 from1970To2001 = 978307200;
    constexpr double mostSeconds = 1e12; // far outside
    if (!(std::abs(secondsSince2001) < mostSeconds))
        return QDateTime();
    const auto milliseconds = qint64(std::floor(secondsSince2001 * 1000 + 0.5));
    const QDateTime date =
        QDateTime::fromMSecsSinceEpoch(milliseconds + from1970To2001 * 1000, Qt::UTC);
    const int year = date.date().year();
    return year >= 1 && year <= 9999 ? date : QDateTime();
}

} // namespace

QString takenText(const Asset &asset)
{
    if (!asset.taken)
        return QString();
    constexpr double minute = 60;
    const QDateTime date = dateAt(*asset.taken + asset.utcOffset.value_or(0) * minute);
    const QString text = date.toString(QStringLiteral("yyyy-MM-dd HH:mm"));
    return asset.utcOffset || text.isEmpty() ? text : text + QLatin1Char('Z');
}
