#include "base/byte_count.h"

#include <QLocale>
#include <QRegularExpression>

#include <cmath>

QString byteCountText(qint64 bytes)
{
    return QLocale::c().formattedDataSize(bytes, bytes < 1024 ? 0 : 1);
}

QString byteCountsText(qint64 bytes, qint64 total)
{
    // Files may have grown since they were measured.
    return QStringLiteral("%1 of %2").arg(byteCountText(bytes), byteCountText(qMax(bytes, total)));
}

std::optional<qint64> byteCount(const QString &text)
{
    static const QRegularExpression form(
        QStringLiteral("\\A([0-9]+(?:[.][0-9]+)?) ?(?:([kmgt])(i?b)?|b)?\\z"),
        QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    const QString unit = match.captured(2).toLower();
    const bool isDecimal = match.captured(3).size() == 1;
    const int power = unit.isEmpty() ? 0 : 1 + QStringLiteral("kmgt").indexOf(unit);
    const double bytes = match.captured(1).toDouble() * std::pow(isDecimal ? 1000 : 1024, power);
    constexpr double most = 9e18;
    return bytes < most ? std::optional(static_cast<qint64>(bytes)) : std::nullopt;
}
