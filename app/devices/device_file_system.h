#ifndef PHOTOLIB_DEVICES_DEVICE_FILE_SYSTEM_H
#define PHOTOLIB_DEVICES_DEVICE_FILE_SYSTEM_H

#include "base/unique_fd.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QtGlobal>

#include <memory>

/// Why an operation on files failed.
struct FileError {
    enum Kind {
        None,
        NotFound,      ///< no such file or folder
        Denied,        ///< the caller may not read it
        WrongType,     ///< a folder where a file is needed, or the other way round, or neither
        Outside,       ///< the path leads out of the device
        Disconnected,  ///< the device is gone or was closed: every later operation fails as well
        Locked,        ///< until a person unlocks the device
        NotTrusted,    ///< until a person tells the device to trust this computer
        NeedsPassword, ///< an encrypted backup, say
        Damaged,       ///< what is stored is not what the device says of it
        Cancelled,     ///< by the caller's own wish
        Failed,        ///< anything else
    };

    Kind kind = None;
    QString text; ///< the cause in a few words, such as "Permission denied"

    /// Whether the device has no such file, rather than one that cannot be read.
    bool isMissing() const { return kind == NotFound || kind == WrongType || kind == Outside; }

    /// The error for a system call's `errno`.
    static FileError fromErrno(int code);

    /// That of a device which `DeviceFileSystem::close` was called for.
    static FileError closed();
};

/// What a device tells of a file or folder without opening it.
struct FileInfo {
    enum Type { File, Folder, Other };

    Type type = Other;
    qint64 size = 0;     ///< bytes of a file
    qint64 modified = 0; ///< nanoseconds since 1970-01-01 UTC
    qint64 changed = 0;  ///< likewise, and nobody can set it; 0 where the device does not tell

    /// Whether a file is as it was when `other` was asked for.
    bool isSameAs(const FileInfo &other) const
    {
        return type == other.type && size == other.size && modified == other.modified &&
               changed == other.changed;
    }
};

/// A file that is open for reading.
///
/// One thread at a time. The file system that opened it outlives it. Each operation that
/// fails fills `*error`, which must not be null.
class DeviceFile
{
public:
    virtual ~DeviceFile() {}

    /// Reads up to `length` bytes from `offset`, both not negative, into `buffer`. Returns fewer
    /// only at the end of the file or before an error that the next call reports; 0 at and beyond
    /// the end; -1 on failure.
    virtual qint64 read(qint64 offset, char *buffer, qint64 length, FileError *error) = 0;

    /// The file's size in bytes, or -1 on failure.
    virtual qint64 size(FileError *error) = 0;
};

/// Whether a device's files can be read now.
enum class DeviceState {
    Ready,
    Locked,        ///< until a person unlocks the device
    NotTrusted,    ///< until a person tells the device to trust this computer
    NeedsPassword, ///< an encrypted backup, say
    Gone,          ///< and will not come back
};

/// The files of one device, below its media root, for reading.
///
/// A path is a sequence of names separated by "/", counted from the media root whether it
/// begins with "/" or not; "" and "/" are the root itself. Names are the bytes that the
/// device uses, without a "/" or a NUL, and differ by case where the device says so. A
/// path that leads out of the device, by ".." or by a link, is refused with
/// `FileError::Outside`.
///
/// Threads: every operation may be called from several threads at a time, and each open
/// file belongs to one thread at a time. An implementation over one connection serialises
/// the calls itself. Devices run out of handles, so callers close files soon and keep few
/// open; an implementation may also hold none between two calls.
///
/// Each operation that fails fills `*error`, which must not be null, and nothing else.
/// Operations may block for as long as the device takes; they may throw only
/// std::bad_alloc.
class DeviceFileSystem
{
public:
    virtual ~DeviceFileSystem() {}

    /// Opens a regular file for reading; anything else is `FileError::WrongType`, and no
    /// pipe or device node is waited for. Returns null on failure.
    virtual std::unique_ptr<DeviceFile> open(const QByteArray &path, FileError *error) = 0;

    /// Fills `*info` for a file or folder. Returns false on failure.
    virtual bool info(const QByteArray &path, FileInfo *info, FileError *error) = 0;

    /// Fills `*names` with what a folder holds, in byte order, without "." and "..".
    /// Returns false on failure; a file is `FileError::WrongType`.
    virtual bool list(const QByteArray &path, QList<QByteArray> *names, FileError *error) = 0;

    /// Whether the files can be read now. May ask the device.
    virtual DeviceState state() = 0;

    /// Ends the use of the device: operations that are going on soon fail with
    /// `FileError::Disconnected`, and so does each that comes after. From any thread, as often as
    /// one likes; returns at once.
    virtual void close() = 0;

    /// What tells this device from all others, the same each time that it is opened. Not for
    /// people.
    virtual QByteArray id() const = 0;

    /// The device's name for people, in UTF-8 or the user's own bytes; not safe to show.
    virtual QByteArray name() const = 0;

    /// Opens a regular file like `open`, for those who need a descriptor of the host computer.
    /// Not open on failure, and for a device whose files have none.
    virtual UniqueFd openLocal(const QByteArray &path, FileError *error)
    {
        Q_UNUSED(path)
        *error = {FileError::Failed, QStringLiteral("not a file of this computer")};
        return UniqueFd();
    }

    /// `path` as a person knows it, for messages: for a folder its name on the host.
    virtual QByteArray displayName(const QByteArray &path) const = 0;
};

#endif // PHOTOLIB_DEVICES_DEVICE_FILE_SYSTEM_H
