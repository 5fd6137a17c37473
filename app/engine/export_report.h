#ifndef PHOTOLIB_ENGINE_EXPORT_REPORT_H
#define PHOTOLIB_ENGINE_EXPORT_REPORT_H

#include "engine/item_work.h"
#include "engine/reported_file.h"

#include <QList>
#include <QString>
#include <QtGlobal>

#include <vector>

/// How many files an export has dealt with.
struct ExportCounts {
    int copied = 0;
    int unchanged = 0;
    int moved = 0;   ///< by somebody, or deleted, since they were exported
    int inCloud = 0; ///< only in iCloud
    int absent = 0;  ///< in the library and not on the device, for another reason
    int failed = 0;
    qint64 copiedBytes = 0;

    /// "Copied 412 files (3.1 GiB), 9,588 unchanged, 120 only in iCloud, 2 failed": of what there
    /// are none, only the first two are named.
    QString text() const;
};

/// What has become of an export.
struct ExportResult {
    ExportCounts counts;
    std::vector<ReportedFile> files; ///< that were dealt with, photo by photo
};

/// How far an export is.
struct ExportProgress {
    int doneFiles = 0;
    int files = 0;
    qint64 doneBytes = 0;
    qint64 totalBytes = 0; ///< of all files that are copied
};

/// Hears how an export goes, on the thread that it runs on.
class ExportObserver : public ItemObserver
{
public:
    /// Another program exports to the folder, which is waited for.
    virtual void waiting() = 0;

    /// Of `total` photos and videos, `done` are looked for on the device and in the folder; nothing
    /// is copied yet.
    virtual void looked(int done, int total) = 0;

    /// Called often, also in the middle of a file.
    virtual void copied(const ExportProgress &progress) = 0;

    /// A file, which `label` names in messages, is in the library and not on the device; `cause`
    /// tells whether it is in iCloud.
    virtual void absent(const QString &label, const QString &cause) = 0;

    /// Something that a person should know, and that is no failure.
    virtual void noted(const QString &line) = 0;
};

#endif // PHOTOLIB_ENGINE_EXPORT_REPORT_H
