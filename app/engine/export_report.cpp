#include "engine/export_report.h"

#include "base/byte_count.h"

#include <QLocale>

namespace {

// "9,588", whatever the language of the computer: the texts around it are English.
QString countText(int count)
{
    return QLocale(QLocale::English).toString(count);
}

} // namespace

QString ExportCounts::text() const
{
    const QString files = copied == 1 ? QStringLiteral("file") : QStringLiteral("files");
    QString text =
        QStringLiteral("Copied %1 %2 (%3), %4 unchanged")
            .arg(countText(copied), files, byteCountText(copiedBytes), countText(unchanged));
    const auto add = [&text](int count, const char *what) {
        if (count > 0)
            text += QStringLiteral(", %1 %2").arg(countText(count), QLatin1String(what));
    };
    add(moved, "moved or deleted since");
    add(inCloud, "only in iCloud");
    add(absent, "not on the device");
    add(failed, "failed");
    return text;
}
