#ifndef PHOTOLIB_ENGINE_EXPORT_ALBUMS_H
#define PHOTOLIB_ENGINE_EXPORT_ALBUMS_H

#include "engine/album_file_plan.h"
#include "engine/export_record.h"
#include "engine/item_work.h"

#include <functional>
#include <map>
#include <set>
#include <vector>

class CancelToken;

/// What the albums' folders of an export are to hold.
struct AlbumsToExport {
    const Catalog *catalog = nullptr;

    /// All files that belong to albums, also those of earlier runs: what is not among them is taken
    /// out of the albums' folders.
    ExportedFiles files;

    RecordedAlbumFile::Kind kind = RecordedAlbumFile::Link;
    std::vector<RecordedAlbumFile> recorded; ///< by the last run

    /// When all that is recorded was right: nanoseconds since 1970-01-01 UTC by the disk's clock,
    /// and 1 when that is not known.
    qint64 rightAt = 1;

    std::set<QByteArray> newFiles; ///< paths of exported files that were written since

    /// The SHA-256 that exported files had before they were replaced, by path: copies of that are
    /// the program's, too.
    std::map<QByteArray, QByteArray> replaced;
};

struct AlbumsResult {
    std::vector<RecordedAlbumFile> files; ///< what there is now, by path: to be recorded
    std::vector<ItemFailure> failures;
    qint64 made = 0;
    qint64 unchanged = 0;
    qint64 removed = 0;
    qint64 cut = 0;         ///< albums and files with a name that was cut to what disks take
    bool isComplete = true; ///< not after a cancellation, nor when the disk is full
};

/// Puts the albums into the export in the folder that `exportFolder` holds open:
/// "Albums/Folder/Title/001 IMG_0001.JPG" for each file, a relative link, another name of the file,
/// or a copy with its time of change. What is right already stays as it is. What the last run has
/// made and no album wants any more is removed, and so are folders that are empty then; whatever
/// has been put or changed there by somebody else stays, and a name that it has gets a number.
/// Links in paths are never followed.
///
/// Copies may not have reached the disk when it returns: they should before they are recorded.
/// `copied` hears between the blocks of copies how many bytes came since it heard last. Ends soon
/// after `cancel` is cancelled. Throws Error, with nothing changed, when the disk takes no links.
AlbumsResult exportAlbums(
    const AlbumsToExport &albums, int exportFolder, const CancelToken &cancel,
    const std::function<void(qint64)> &copied = [](qint64) {});

#endif // PHOTOLIB_ENGINE_EXPORT_ALBUMS_H
