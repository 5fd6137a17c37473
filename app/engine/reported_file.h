#ifndef PHOTOLIB_ENGINE_REPORTED_FILE_H
#define PHOTOLIB_ENGINE_REPORTED_FILE_H

#include "engine/export_role.h"

#include <QByteArray>
#include <QString>

#include <optional>

/// What became of a file in an export.
struct ReportedFile {
    enum Status {
        Copied,
        Unchanged,   ///< it was there from an earlier export
        NotOnDevice, ///< only in iCloud, say
        Failed,
    };

    qint64 id = 0;   ///< of the photo or video that it belongs to
    QByteArray uuid; ///< of that, too; null on devices without
    ExportRole role = ExportRole::Original;
    QByteArray path; ///< below the folder; null when it has none there
    Status status = Copied;
    std::optional<qint64> bytes;
    QByteArray sha256; ///< 64 lower-case hexadecimal digits; null when not known
    QString cause;     ///< why it failed or is not there; empty when there is nothing to say
};

/// The file as a line of a report, which docs/json.md describes: an object of JSON, and a line end.
QByteArray reportLine(const ReportedFile &file);

#endif // PHOTOLIB_ENGINE_REPORTED_FILE_H
