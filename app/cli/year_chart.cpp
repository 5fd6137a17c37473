#include "cli/year_chart.h"

#include <algorithm>

namespace {

// Beyond it some clock was wrong, and lines of nothing would hide the others.
constexpr int mostYears = 60;

QString line(int year, int count, int length, int numberWidth)
{
    const QString bar(length, QLatin1Char('#'));
    const QString text = QStringLiteral("%1  %2").arg(year, 4).arg(count, numberWidth);
    return bar.isEmpty() ? text : text + QStringLiteral("  ") + bar;
}

std::map<int, int> withoutGaps(std::map<int, int> years)
{
    const int first = years.begin()->first;
    const int last = years.rbegin()->first;
    for (int year = first; last - first < mostYears && year < last; ++year)
        years.emplace(year, 0);
    return years;
}

} // namespace

QStringList yearChart(const std::map<int, int> &years, int width)
{
    QStringList lines;
    if (years.empty())
        return lines;
    int most = 1;
    for (const auto &[year, count] : years)
        most = std::max(most, count);
    const int numberWidth = QString::number(most).size();
    for (const auto &[year, count] : withoutGaps(years)) {
        // A year that has any shows it.
        const int length = count == 0 ? 0 : std::max(1, int(qint64(count) * width / most));
        lines.append(line(year, count, length, numberWidth));
    }
    return lines;
}
