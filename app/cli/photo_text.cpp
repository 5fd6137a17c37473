#include "cli/photo_text.h"

#include "boundary/photo_records.h"
#include "services/device_names.h"
#include "services/printable.h"

QString nameText(const QString &name)
{
    const QByteArray stored = undoneEncoding(name.toUtf8());
    const QString text = QString::fromUtf8(stored);
    const bool isUtf8 = !stored.isEmpty() && text.toUtf8() == stored;
    return printable(isUtf8 ? text : name);
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

QString dateText(const QDateTime &date)
{
    return date.toUTC().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

bool isInBurst(const photoItem &item)
{
    // "0" is the plug-in's text for none.
    return !item.avalancheUUID.isEmpty() && item.avalancheUUID != QLatin1String("0");
}
