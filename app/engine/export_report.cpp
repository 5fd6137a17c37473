#include "engine/export_report.h"

#include "base/byte_count.h"

QString ExportCounts::text() const
{
    const QString files = copied == 1 ? QStringLiteral("file") : QStringLiteral("files");
    QString text = QStringLiteral("copied %1 %2 (%3), %4 already there")
                       .arg(QString::number(copied), files, byteCountText(copiedBytes),
                            QString::number(present));
    if (absent > 0)
        text += QStringLiteral(", %1 not on the device").arg(absent);
    return text + QStringLiteral(", %1 failed").arg(failed);
}
