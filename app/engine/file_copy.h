#ifndef PHOTOLIB_ENGINE_FILE_COPY_H
#define PHOTOLIB_ENGINE_FILE_COPY_H

#include "base/atomic_file.h"
#include "devices/device_file_system.h"

#include <atomic>
#include <memory>
#include <optional>

class CancelToken;
struct ExportSource;

/// A file that is written and has no name yet, or the reason why there is none.
struct FileCopy {
    std::unique_ptr<AtomicFile> file; ///< null when it failed
    qint64 size = 0;                  ///< bytes
    QByteArray sha256;                ///< of what was read
    qint64 modified = 0;              ///< of the source, nanoseconds since 1970-01-01 UTC
    QString failure;                  ///< empty when there is a file
};

/// Copies files of a device into files without a name. Any number of threads may copy at a time.
class FileCopier
{
public:
    /// The files are made in the folder that the descriptor `parts` holds open, and `*doneBytes`
    /// grows with what is read. What is given must outlive the object and the files.
    FileCopier(DeviceFileSystem &files, int parts, const CancelToken &cancel,
               std::atomic<qint64> *doneBytes);

    /// Copies `source`, or writes what it makes, which is the session's thread's to do, and gives
    /// the copy the time `modified`, or else that of the source, if the disk keeps such times. A
    /// file that changes while it is read is read once more. What fails of this file alone is in
    /// the result. Throws Error when the device is gone, and of the kind Cancelled soon after
    /// `cancel` or `end` was called; and std::system_error when the disk takes no file.
    FileCopy copy(const ExportSource &source, std::optional<qint64> modified) const;

    /// Has all copies end soon.
    void end() { m_isEnding = true; }

private:
    FileCopy copyFile(const ExportSource &source, std::optional<qint64> modified) const;
    FileCopy madeFile(const ExportSource &source, std::optional<qint64> modified) const;
    bool readInto(FileCopy *copy, const ExportSource &source) const;
    void readContent(FileCopy *copy, const QByteArray &path, qint64 size) const;
    void requireGoingOn() const;

    DeviceFileSystem &m_files;
    const int m_parts;
    const CancelToken &m_cancel;
    std::atomic<qint64> *const m_doneBytes;
    std::atomic<bool> m_isEnding{false};
};

/// Whether a disk that fails with the error `code` of a system call takes no other file either:
/// it is full, or broken, say.
bool endsExport(int code);

#endif // PHOTOLIB_ENGINE_FILE_COPY_H
