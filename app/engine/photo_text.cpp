#include "engine/photo_text.h"

#include "base/printable.h"
#include "boundary/photo_records.h"
#include "devices/encoded_names.h"
#include "engine/type_codes.h"

QString writtenName(const QString &name)
{
    const QByteArray stored = undoneEncoding(name.toUtf8());
    const QString text = QString::fromUtf8(stored);
    const bool isUtf8 = !stored.isEmpty() && text.toUtf8() == stored;
    return isUtf8 ? text : name;
}

QString nameText(const QString &name)
{
    return printable(writtenName(name));
}

QString kindText(const photoItem &item)
{
    return item.type == videoType ? QStringLiteral("video") : QStringLiteral("photo");
}

QString dimensionsText(const photoItem &item)
{
    if (item.width <= 0 || item.height <= 0)
        return QString();
    return QStringLiteral("%1 x %2").arg(item.width).arg(item.height);
}

QString isoText(const QDateTime &date)
{
    return date.toUTC().toString(Qt::ISODate);
}

QString isoTextWithoutZone(const QDateTime &date)
{
    return date.toUTC().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"));
}

QString dateText(const QDateTime &date)
{
    return date.toUTC().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

QString durationText(qint64 seconds)
{
    const QString rest = QStringLiteral("%1:%2");
    const auto twoDigits = [](qint64 number) {
        return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
    };
    const qint64 minutes = seconds / 60;
    if (minutes < 60)
        return rest.arg(minutes).arg(twoDigits(seconds % 60));
    return rest.arg(minutes / 60).arg(twoDigits(minutes % 60)) + QLatin1Char(':') +
           twoDigits(seconds % 60);
}

QString failureText(const FileError &error)
{
    return error.kind == FileError::NotFound ? QStringLiteral("missing on the device") : error.text;
}

QString labelText(const photoItem &item)
{
    return item.path.isEmpty() ? QString::number(item.id) : nameText(item.path);
}

bool isInBurst(const photoItem &item)
{
    // "0" is the plug-in's text for none.
    return !item.avalancheUUID.isEmpty() && item.avalancheUUID != QLatin1String("0");
}
