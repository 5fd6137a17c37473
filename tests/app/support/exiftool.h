#ifndef PHOTOLIB_TESTS_APP_SUPPORT_EXIFTOOL_H
#define PHOTOLIB_TESTS_APP_SUPPORT_EXIFTOOL_H

#include "support/json.h"

#include <QProcess>
#include <QStandardPaths>

/// Whether exiftool is installed; tests that need it skip where it is not.
inline bool hasExiftool()
{
    return !QStandardPaths::findExecutable(QStringLiteral("exiftool")).isEmpty();
}

/// What exiftool reads of `file`: an object with keys such as "XMP-dc:Title". Numbers are not
/// made easier to read.
inline Json exiftoolTags(const QString &file)
{
    QProcess exiftool;
    exiftool.start(QStringLiteral("exiftool"), {QStringLiteral("-json"), QStringLiteral("-struct"),
                                                QStringLiteral("-G1"), QStringLiteral("-n"), file});
    exiftool.waitForFinished(-1);
    return Json::parse(exiftool.readAllStandardOutput())[0];
}

#endif // PHOTOLIB_TESTS_APP_SUPPORT_EXIFTOOL_H
