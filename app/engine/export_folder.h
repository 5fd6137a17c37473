#ifndef PHOTOLIB_ENGINE_EXPORT_FOLDER_H
#define PHOTOLIB_ENGINE_EXPORT_FOLDER_H

#include "base/unique_fd.h"
#include "devices/folder_file_system.h"

#include <QList>
#include <QMap>
#include <QString>

#include <memory>
#include <set>

/// The folder that photos are copied to, and which of its names are taken: by what was
/// there before, and by the photos of this run, each of which claims a name of its own.
/// Names that differ by case only count as one, so that the files fit on any disk.
class ExportFolder
{
public:
    /// Opens the existing folder `path` and looks what is in it. Throws Error.
    explicit ExportFolder(const QByteArray &path);

    const QByteArray &path() const { return m_path; }

    /// A descriptor of the folder, for as long as the object lives.
    int fd() const { return m_fd.get(); }

    /// The number of the first name like `name` that no photo has claimed.
    int firstUnclaimed(const QByteArray &name);
    bool isClaimed(const QByteArray &name) const;
    void claim(const QByteArray &name);

    /// What the folder holds under `name`: maybe in another case when it was there before,
    /// and in this one also when another program has added it since.
    QList<QByteArray> holding(const QByteArray &name) const;

    /// Fills `*info` for a regular file of the folder. False for anything else, a link among it.
    bool info(const QByteArray &name, FileInfo *info);

    /// Opens a regular file of the folder for reading; null for anything else, a link
    /// among it.
    std::unique_ptr<DeviceFile> open(const QByteArray &name);

private:
    const QByteArray m_path;
    const UniqueFd m_fd;
    std::unique_ptr<FolderFileSystem> m_files;
    // Sorted: names that come from a device can be chosen so that a hash holds them for one.
    QMultiMap<QString, QByteArray> m_holding; // by compared name
    std::set<QString> m_claimed;              // compared names
    QMap<QString, int> m_firstUnclaimed;      // by compared name; lower ones are claimed
};

#endif // PHOTOLIB_ENGINE_EXPORT_FOLDER_H
