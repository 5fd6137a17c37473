#ifndef PHOTOLIB_DEVICES_LOCAL_FILE_H
#define PHOTOLIB_DEVICES_LOCAL_FILE_H

#include "base/unique_fd.h"
#include "devices/device_file_system.h"

#include <atomic>

/// Takes over `fd`, freshly opened without waiting (O_NONBLOCK), and gives it back when it is
/// a regular file. Otherwise, and when it is -1 (the cause being in `errno`), closes it and
/// fills `*error`.
UniqueFd regularFile(UniqueFd fd, FileError *error);

/// A regular file of the host computer. Its size is limited by the disk alone.
class LocalFile : public DeviceFile
{
public:
    /// Takes over `fd` like `regularFile`; null when that refuses it. Once `*isClosed` is set,
    /// which may be null, reading fails with `FileError::Disconnected`.
    static std::unique_ptr<LocalFile> fromFd(UniqueFd fd, FileError *error,
                                             const std::atomic<bool> *isClosed = nullptr);

    /// Opens the file at `path` for reading; null on failure.
    static std::unique_ptr<LocalFile> openForReading(const QByteArray &path, FileError *error);

    /// Opens the file at `path` for writing, created or emptied; null on failure. A link is
    /// not followed: it could have been put there to have another file emptied.
    static std::unique_ptr<LocalFile> openForWriting(const QByteArray &path, FileError *error);

    qint64 read(qint64 offset, char *buffer, qint64 length, FileError *error) override;
    qint64 size(FileError *error) override;

    /// Writes `length` bytes at `offset`, both not negative. Returns the bytes written; fewer than
    /// `length` after an error, which is in `*error`.
    qint64 write(qint64 offset, const char *buffer, qint64 length, FileError *error);

private:
    LocalFile(UniqueFd fd, const std::atomic<bool> *isClosed)
        : m_fd(std::move(fd)), m_isClosed(isClosed)
    {
    }

    bool isClosed(FileError *error) const;

    UniqueFd m_fd;
    const std::atomic<bool> *const m_isClosed; // may be null
};

#endif // PHOTOLIB_DEVICES_LOCAL_FILE_H
