#ifndef PHOTOLIB_ENGINE_EXPORTED_FILES_H
#define PHOTOLIB_ENGINE_EXPORTED_FILES_H

#include "engine/album_file_plan.h"
#include "engine/export_plan.h"

/// Which of `files` show a photo or video and are there in `folder`, with older versions and
/// sidecars left out: what the folders of albums may hold. In no particular order.
std::vector<RecordedFile> shownFiles(const std::vector<RecordedFile> &files, ExportFolder &folder);

/// The same as it will be when `plan` is done, after which `folder` has what it tells of. `before`
/// is what the record has now.
std::vector<RecordedFile> shownFilesAfter(const ExportPlan &plan,
                                          const std::vector<RecordedFile> &before,
                                          ExportFolder &folder);

/// Whether `file`, which is of those above, is not in the folder yet.
bool isToBeCopied(const RecordedFile &file);

/// The paths of `files` by the photos of `catalog` that they show; those of a photo by their role.
ExportedFiles filesByPhoto(const Catalog &catalog, const std::vector<RecordedFile> &files);

#endif // PHOTOLIB_ENGINE_EXPORTED_FILES_H
