#ifndef PHOTOLIB_DEVICES_LOCAL_FILE_H
#define PHOTOLIB_DEVICES_LOCAL_FILE_H

#include "devices/device_file_system.h"
#include "base/unique_fd.h"

/// Takes over `fd`, freshly opened without waiting (O_NONBLOCK), and gives it back when it is
/// a regular file. Otherwise, and when it is -1 (the cause being in `errno`), closes it and
/// fills `*error`.
UniqueFd regularFile(UniqueFd fd, FileError *error);

/// A regular file of the host computer, read or written at the position that the object
/// keeps. Its size is limited by the disk alone.
class LocalFile : public DeviceFile
{
public:
    /// Takes over `fd` like `regularFile`; null when that refuses it.
    static std::unique_ptr<LocalFile> fromFd(UniqueFd fd, FileError *error);

    /// Opens the file at `path` for reading; null on failure.
    static std::unique_ptr<LocalFile> openForReading(const QByteArray &path, FileError *error);

    /// Opens the file at `path` for writing, created or emptied; null on failure. A link is
    /// not followed: it could have been put there to have another file emptied.
    static std::unique_ptr<LocalFile> openForWriting(const QByteArray &path, FileError *error);

    qint64 read(char *buffer, qint64 length, FileError *error) override;
    bool seek(qint64 offset, FileError *error) override;
    qint64 tell() const override { return m_position; }
    qint64 size(FileError *error) override;

    /// Writes `length` bytes at the position and moves it past what was written. Returns
    /// the bytes written; fewer than `length` after an error, which is in `*error`.
    qint64 write(const char *buffer, qint64 length, FileError *error);

private:
    explicit LocalFile(UniqueFd fd) : m_fd(std::move(fd)) {}

    UniqueFd m_fd;
    qint64 m_position = 0;
};

#endif // PHOTOLIB_DEVICES_LOCAL_FILE_H
