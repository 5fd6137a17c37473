#ifndef PHOTOLIB_ENGINE_EXPORT_RECORD_H
#define PHOTOLIB_ENGINE_EXPORT_RECORD_H

#include "engine/export_role.h"

#include <QByteArray>
#include <QtGlobal>

#include <memory>
#include <vector>

class CancelToken;
class ExportState;

/// A file as it was exported.
struct RecordedFile {
    QByteArray photo; ///< uuid of the photo or video; "#ID" where the device has no uuids
    ExportRole role = ExportRole::Original;
    QByteArray source;   ///< what it was copied from: a path on the device, "json", "xmp"
    qint64 size = 0;     ///< bytes
    qint64 modified = 0; ///< of the source when it was copied, nanoseconds since 1970-01-01 UTC
    QByteArray path;     ///< below the folder
    QByteArray sha256;   ///< 64 lower-case hexadecimal digits
    qint64 exported = 0; ///< when, seconds since 1970-01-01 UTC

    /// Whether it is the last copy of its source. Older ones, of a photo that was edited on the
    /// device since, are kept beside it.
    bool isCurrent = true;
};

/// A file or link in the folder of an album.
struct RecordedAlbumFile {
    enum Kind { Link, HardLink, Copy };

    Kind kind = Link;
    QByteArray path;   ///< below the folder
    QByteArray target; ///< the path of the exported file that it stands for
};

/// All that a record holds.
struct ExportContents {
    std::vector<RecordedFile> files;           ///< by path
    std::vector<RecordedAlbumFile> albumFiles; ///< by path
};

/// What was exported to a folder: the SQLite database "export.sqlite" in its ".photolib", with a
/// write-ahead log. What an operation has written outlasts a crash and a loss of power.
///
/// For one thread at a time. Each operation throws Error when the database cannot be read or
/// written, is damaged, or was made by a newer version of the program; it is left as it was then.
class ExportRecord
{
public:
    /// Opens the record in `state`, which must outlive the object, and makes an empty one where
    /// there is none.
    explicit ExportRecord(const ExportState &state);
    ~ExportRecord();

    ExportRecord(const ExportRecord &) = delete;
    ExportRecord &operator=(const ExportRecord &) = delete;

    /// What it holds now.
    ExportContents contents() const;

    /// Adds `files`, all or none. A current one takes the place of that of the same photo, role
    /// and source, which stays as an older one; whatever had the path of a new one is forgotten.
    void add(const std::vector<RecordedFile> &files);

    /// Forgets the files with these paths, all or none.
    void forget(const std::vector<QByteArray> &paths);

    /// Forgets what lies in the albums' folders, and records `files` in its place, all or none.
    void setAlbumFiles(const std::vector<RecordedAlbumFile> &files);

private:
    class Database;
    std::unique_ptr<Database> m_database;
};

/// The contents of the record of the export in `exportFolder`, empty where there is none. Changes
/// nothing in the folder, which may be on a disk that cannot be written, and may be read while an
/// exporter is at work. Throws Error like ExportRecord.
ExportContents readExportRecord(const QByteArray &exportFolder);

/// The same, which ends with an Error of the kind Cancelled soon after `cancel` is.
ExportContents readExportRecord(const QByteArray &exportFolder, const CancelToken &cancel);

/// Whether `exportFolder` has a record.
bool hasExportRecord(const QByteArray &exportFolder);

#endif // PHOTOLIB_ENGINE_EXPORT_RECORD_H
