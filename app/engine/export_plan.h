#ifndef PHOTOLIB_ENGINE_EXPORT_PLAN_H
#define PHOTOLIB_ENGINE_EXPORT_PLAN_H

#include "engine/export_folder.h"
#include "engine/export_record.h"
#include "engine/export_request.h"
#include "engine/export_sources.h"
#include "engine/item_work.h"

#include <QStringList>

#include <optional>
#include <vector>

class CancelToken;
class ExportObserver;
class LibrarySession;

/// What an export does with one file.
struct PlannedFile {
    enum Action {
        Copy,
        Keep,    ///< the folder has it
        Skip,    ///< somebody has moved or deleted it in the folder, and wants it so
        Missing, ///< the device does not have it
        Fail,    ///< the device does not give it, or the folder has no place for it
    };

    const Asset *asset = nullptr;
    ExportSource source;
    Action action = Copy;
    QByteArray path;              ///< below the folder; null where there is none
    bool replaces = false;        ///< the file that has the path
    ExportFolder::Entry replaced; ///< that file as it was found
    qint64 size = 0;              ///< bytes: of a file to copy as foretold
    QByteArray sha256;            ///< of a file that is kept
    QString cause; ///< why it is missing or fails; empty when there is nothing to say
};

/// All that an export is going to do, before it has done any of it.
struct ExportPlan {
    std::vector<PlannedFile> files; ///< photo by photo

    /// Files that are in the folder already, which the record does not have like that: those that
    /// another program has put there, say.
    std::vector<RecordedFile> found;

    /// Folders of the device that cannot be listed: edits and films in them are not found.
    std::vector<ItemFailure> unlisted;

    QStringList cutNames; ///< of photos whose names the disk cannot hold, safe to show
    qint64 bytes = 0;     ///< of the files to copy, as foretold
};

/// Plans the export of `photos` to `folder`, which `record` tells of. Asks the device about the
/// files; reads one only where the record cannot tell whether it has changed, or where the folder
/// has a file of its name and size that the record does not know. Changes nothing.
///
/// Throws Error when the device is gone, for what `request` names and the library does not have,
/// and of the kind Cancelled soon after `cancel` is. On the session's thread; what is given by
/// reference must outlive the plan.
ExportPlan plannedExport(LibrarySession &session, const ExportRequest &request,
                         const std::vector<const Asset *> &photos, ExportFolder &folder,
                         const ExportContents &record, ExportObserver &observer,
                         const CancelToken &cancel);

/// What records know `asset` by: its uuid, or "#ID" where the library has none.
QByteArray recordKey(const Asset &asset);

#endif // PHOTOLIB_ENGINE_EXPORT_PLAN_H
