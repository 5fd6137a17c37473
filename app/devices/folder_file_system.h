#ifndef PHOTOLIB_DEVICES_FOLDER_FILE_SYSTEM_H
#define PHOTOLIB_DEVICES_FOLDER_FILE_SYSTEM_H

#include "base/unique_fd.h"
#include "devices/device_file_system.h"

#include <atomic>

/// A folder of the host computer that is laid out as a device's media root: a mounted
/// device or a copy of one.
///
/// Nothing outside the folder can be reached, whatever a path or a link in the folder
/// says, also while somebody changes the folder. Links that stay inside are followed where
/// the kernel can confine them, and refused where it cannot.
class FolderFileSystem : public DeviceFileSystem
{
public:
    /// How paths are confined to the folder.
    enum class Confinement {
        BestAvailable, ///< by the kernel (openat2), or name by name where it lacks that
        NameByName,    ///< always name by name, which refuses every link
    };

    /// Opens the folder `root`, a name in the host's own bytes that may itself be a link.
    /// Returns null and fills `*error` when it is not a folder that can be entered. The
    /// folder is held open: renaming it later does no harm. Once it is removed, the device
    /// is gone: FileError::Disconnected.
    static std::unique_ptr<FolderFileSystem>
    openFolder(const QByteArray &root, FileError *error,
               Confinement confinement = Confinement::BestAvailable);

    std::unique_ptr<DeviceFile> open(const QByteArray &path, FileError *error) override;
    bool info(const QByteArray &path, FileInfo *info, FileError *error) override;
    bool list(const QByteArray &path, QList<QByteArray> *names, FileError *error) override;
    UniqueFd openLocal(const QByteArray &path, FileError *error) override;
    DeviceState state() override;
    void close() override { m_isClosed = true; }

    /// The folder's path without links, so that every name of it gives the same id.
    QByteArray id() const override;

    /// As it was given.
    QByteArray name() const override { return m_root; }

    QByteArray displayName(const QByteArray &path) const override;

private:
    FolderFileSystem(QByteArray root, UniqueFd fd, Confinement confinement);

    UniqueFd openBelow(const QByteArray &path, int flags, FileError *error) const;
    FileError failure(int code) const;
    void nameWrongType(const QByteArray &path, FileError *error);
    bool isRemoved() const;

    const QByteArray m_root;
    const UniqueFd m_fd;
    const bool m_kernelConfines;
    std::atomic<bool> m_isClosed{false};
};

#endif // PHOTOLIB_DEVICES_FOLDER_FILE_SYSTEM_H
