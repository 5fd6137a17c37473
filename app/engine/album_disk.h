#ifndef PHOTOLIB_ENGINE_ALBUM_DISK_H
#define PHOTOLIB_ENGINE_ALBUM_DISK_H

#include "base/unique_fd.h"
#include "engine/export_record.h"

#include <QByteArray>

#include <functional>
#include <optional>

#include <sys/stat.h>

class CancelToken;

/// Throws Error when the disk with the export in the folder that `exportFolder` holds open takes no
/// links of this kind. Leaves nothing there; says nothing of a disk that is full or cannot be
/// written.
void requireLinks(RecordedAlbumFile::Kind kind, int exportFolder);

/// The albums' part of an export as it is on the disk. Paths are below the export's folder, and no
/// link in one is followed.
///
/// Each operation throws std::system_error when the disk refuses, and Error of the kind Cancelled
/// soon after the token is cancelled while it reads or copies.
class AlbumDisk
{
public:
    /// `exportFolder` is a descriptor of the export's folder. What is given by reference and the
    /// descriptor must outlive the object. `copied` hears how many bytes were copied since it heard
    /// last.
    AlbumDisk(int exportFolder, const CancelToken &cancel, std::function<void(qint64)> copied);

    /// Whether anything has this path.
    bool isThere(const QByteArray &path) const;

    /// Whether the path of `file` has what `file` says: a link with that target, another name of
    /// that very file, or a copy of it. A copy is told by its content; by its size and time alone
    /// where neither file has been touched since `rightAt`, when it was a copy: nanoseconds since
    /// 1970-01-01 UTC by the disk's clock, or 0.
    bool holds(const RecordedAlbumFile &file, qint64 rightAt) const;

    /// Whether nothing would be lost with the file that was recorded as `file`: a link of that
    /// target, one of several names of a file, or the same as the exported file, told as above.
    bool isRemovable(const RecordedAlbumFile &file, qint64 rightAt) const;

    /// Whether `path` is a file whose content has that SHA-256.
    bool hasContent(const QByteArray &path, const QByteArray &sha256) const;

    /// Makes the folder and those that it lies in.
    void makeFolder(const QByteArray &path) const;

    /// Makes the file in its folder, which is there. False when anything has its path.
    bool make(const RecordedAlbumFile &file) const;

    void removeFile(const QByteArray &path) const;

    /// Gives the file the name of a scrap, in the same folder, and returns its path now.
    QByteArray setAside(const QByteArray &path) const;

    /// Gives what was set aside as `aside` the path `path`, whose folder is there. False when that
    /// cannot be done.
    bool takeBack(const QByteArray &aside, const QByteArray &path) const;

    /// Removes what a program that was killed left of files that it copied to the folder.
    void removeScraps(const QByteArray &folder) const;

    /// Removes the folder, and those that it lies in, up to the first that is not empty.
    void removeEmptyFolders(const QByteArray &path) const;

private:
    std::optional<struct stat> status(const QByteArray &path) const;
    bool isLinkTo(const QByteArray &path, const QByteArray &target) const;
    bool isCopy(const QByteArray &path, const QByteArray &target, qint64 rightAt) const;
    bool haveSameContent(const QByteArray &path, const QByteArray &other) const;
    UniqueFd openFile(const QByteArray &path) const;
    bool copy(const RecordedAlbumFile &file) const;
    void requireGoingOn() const;

    const int m_root;
    const CancelToken &m_cancel;
    const std::function<void(qint64)> m_copied;
};

#endif // PHOTOLIB_ENGINE_ALBUM_DISK_H
