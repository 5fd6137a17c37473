#ifndef PHOTOLIB_TESTS_APP_EXPORT_RECORDS_H
#define PHOTOLIB_TESTS_APP_EXPORT_RECORDS_H

#include "base/cancel_token.h"
#include "base/sha256.h"
#include "engine/export_record.h"
#include "engine/export_state.h"

#include <vector>

/// The row of a file with `bytes` at `path`, for the photo of that name.
inline RecordedFile recordedFile(const QByteArray &path, const QByteArray &bytes)
{
    RecordedFile file;
    file.photo = "photo of " + path;
    file.source = "DCIM/" + path;
    file.size = bytes.size();
    file.modified = 1600000000123456789;
    file.path = path;
    file.sha256 = sha256Hex(bytes);
    file.exported = 1700000000;
    return file;
}

/// The record in the folder `exportFolder` with the lock that belongs to it.
struct OpenRecord {
    explicit OpenRecord(const QByteArray &exportFolder)
        : state(exportFolder, cancel, [] {}), record(state)
    {
    }

    CancelToken cancel;
    ExportState state;
    ExportRecord record;
};

/// Records `files` and `albumFiles` in `exportFolder`.
inline void writeRecord(const QByteArray &exportFolder, const std::vector<RecordedFile> &files,
                        const std::vector<RecordedAlbumFile> &albumFiles = {})
{
    OpenRecord open(exportFolder);
    open.record.add(files);
    open.record.setAlbumFiles(albumFiles);
}

#endif // PHOTOLIB_TESTS_APP_EXPORT_RECORDS_H
