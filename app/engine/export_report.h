#ifndef PHOTOLIB_ENGINE_EXPORT_REPORT_H
#define PHOTOLIB_ENGINE_EXPORT_REPORT_H

#include "engine/item_work.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QtGlobal>

/// How many files an export has dealt with.
struct ExportCounts {
    int copied = 0;
    int present = 0; ///< were there already
    int absent = 0;  ///< are in the library and not on the device
    int failed = 0;
    qint64 copiedBytes = 0;

    int all() const { return copied + present + absent + failed; }

    /// "copied 40 files (12.3 MiB), 3 already there, 18 not on the device, 2 failed", the third
    /// only where there are any.
    QString text() const;
};

/// What has become of an export.
struct ExportResult {
    ExportCounts counts;
    QList<ItemFailure> failures;
    QStringList absent; ///< what names those that are not on the device in messages
};

/// How far an export is.
struct ExportProgress {
    int doneFiles = 0;
    int files = 0;
    qint64 doneBytes = 0;  ///< of the files that are dealt with, and of a part of the current one
    qint64 totalBytes = 0; ///< of all files, as they were measured before
    qint64 readBytes = 0;  ///< which took time: what is known to be there is not read
};

/// Hears how an export goes, on the thread that it runs on.
class ExportObserver : public ItemObserver
{
public:
    /// Of `total` photos and videos, `done` are looked for on the device; nothing is copied yet.
    virtual void looked(int done, int total) = 0;

    /// Called often, also in the middle of a file.
    virtual void copied(const ExportProgress &progress) = 0;

    /// A file, which `label` names in messages, is in the library and not on the device, since it
    /// is in iCloud, say.
    virtual void absent(const QString &label) = 0;
};

#endif // PHOTOLIB_ENGINE_EXPORT_REPORT_H
