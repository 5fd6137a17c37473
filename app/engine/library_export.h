#ifndef PHOTOLIB_ENGINE_LIBRARY_EXPORT_H
#define PHOTOLIB_ENGINE_LIBRARY_EXPORT_H

#include "engine/export_plan.h"
#include "engine/export_report.h"
#include "engine/export_request.h"

class CancelToken;
class LibrarySession;

/// Exports the files of photos and videos to a folder, and fills `*result`, also when it throws.
///
/// A file that the folder's record knows, and that is there in the recorded size, is not read
/// again. Every other one is copied to a file without a name, stored on the disk, and given its
/// name and its place in the record then, so that a copy with a name is whole whatever happens. A
/// name that is taken gets a number; nothing of a person's is replaced. What has been copied stays,
/// and the next export goes on from there.
///
/// Throws Error for what the request names and the library does not have, for a folder that is a
/// device or lies in one, whose disk is too small or takes no links where they are wanted, and for
/// a record that cannot be read, with nothing copied; when the device is gone or the disk refuses
/// to be written, and of the kind Cancelled soon after `cancel` is. What fails of one file is in
/// the result. On the calling thread, which is that of `session`.
void exportPhotos(LibrarySession &session, const ExportRequest &request, ExportObserver &observer,
                  const CancelToken &cancel, ExportResult *result);

/// What `exportPhotos` would do now. Writes nothing, and makes no folder; throws the same.
ExportPlan exportPreview(LibrarySession &session, const ExportRequest &request,
                         ExportObserver &observer, const CancelToken &cancel);

#endif // PHOTOLIB_ENGINE_LIBRARY_EXPORT_H
