#ifndef PHOTOLIB_ENGINE_ALBUMS_AHEAD_H
#define PHOTOLIB_ENGINE_ALBUMS_AHEAD_H

#include "engine/album_file_plan.h"
#include "engine/export_plan.h"

/// What the folders of albums are going to hold after an export.
struct AlbumsAhead {
    std::vector<PlannedAlbum> albums;
    qint64 bytes = 0; ///< of the copies in them that are not there yet, at most
};

/// What they hold when `plan` is done, after which `folder` has what it tells of; nothing when
/// `request` wants none. `before` is what the record has now.
AlbumsAhead albumsAhead(const Catalog &catalog, const ExportRequest &request,
                        const ExportPlan &plan, const ExportContents &before, ExportFolder &folder);

/// The sum of `a` and `b`, or the largest number where it is larger.
qint64 boundedSum(qint64 a, qint64 b);

#endif // PHOTOLIB_ENGINE_ALBUMS_AHEAD_H
