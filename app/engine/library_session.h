#ifndef PHOTOLIB_ENGINE_LIBRARY_SESSION_H
#define PHOTOLIB_ENGINE_LIBRARY_SESSION_H

#include "boundary/photo_manager_int.h"
#include "boundary/photo_records.h"
#include "cli/common_options.h"
#include "host/plugin.h"
#include "engine/work_folder.h"
#include "host/device.h"

#include <memory>
#include <optional>
#include <string>

class DatabaseCopy;

/// Whether the device has the file of a photo or video.
enum class FileState {
    There,
    Missing,
    Unreadable, ///< the device does not say, for it may not be asked or fails
};

/// The parsed photo library of one device, from opening the device to dropping it. For one
/// thread.
class LibrarySession
{
public:
    /// Opens the device in the folder `device`, the sample device when it names none, and
    /// parses its library with progress on stderr. Throws Error when that fails or
    /// is interrupted; nothing is left behind then but the partial copy of an interrupted
    /// parse. Neither is there after a success, unless `keepCopies` is called.
    LibrarySession(const CommonOptions &options, const std::optional<std::string> &device);

    photo_manager_int &library() { return *m_library; }

    /// Fills `*item` for the photo or video `id`, and tells of its file, where an empty one
    /// counts as missing. Without one the identity, name, dimensions, kind and path are filled
    /// all the same. A photo of a classic iPod needs no file of its own.
    FileState photo(quint64 id, photoItem *item);

    /// Whether the file of `item` is on the device, be it empty; it is on a classic iPod. Notes
    /// one that can not be read. Throws Error, and so does `photo`, when the device is
    /// gone.
    FileState fileState(const photoItem &item);

    /// Notes a file of the device that can not be read though it is not missing, by a name for
    /// messages. On the thread that uses the session.
    void noteUnreadable(const QString &name, const FileError &error);

    /// Why the first file that was noted can not be read, and how many there are, for a
    /// message; empty when there are none.
    QString unreadableText() const;

    /// Throws Error when the device is gone: to be called before something is said to
    /// be missing.
    void requireDevice() const;

    /// What the program knows of a classic iPod beyond the plug-in's records; null for an
    /// iOS device.
    const ClassicIpod *classicIpod() const { return m_device->classicIpod(); }

    /// The device's folder as the user named it.
    const std::string &deviceName() const { return m_name; }

    /// The device's files; any thread may use them as long as the session lives.
    DeviceFileSystem &files() { return *m_files; }

    /// Makes the folder `path` for what is written, with missing parents. Throws
    /// Error when that fails, and, without touching the device, when it would lie
    /// in it.
    std::unique_ptr<EnsuredFolder> folderOutside(const QByteArray &path) const;

    /// Throws Error when the existing folder `folder` lies in the device, which is
    /// never written.
    void refuseInDevice(const QByteArray &folder) const;

    /// Whether progress is to be shown on stderr.
    bool showsProgress() const;

    /// Says on stderr that a sample is shown, if one is and nobody asked for quiet. To be
    /// called once, when the result is about to be written: a failure stays one line.
    void announce() const;

    /// Leaves the copies of the database in the work folder, if there are any.
    void keepCopies();

private:
    void chooseDevice(const std::optional<std::string> &device);
    QByteArray workFolderName() const;
    void openIos();
    void runParse(DatabaseCopy &copy);
    void openClassic();
    void requireConnected(const FileError &error) const;
    void passOn(const QList<QByteArray> &failures) const;

    const CommonOptions m_options;
    std::string m_name;
    bool m_isSample = false;
    bool m_isNewSample = false;
    QString m_firstUnreadable; // "NAME: CAUSE"
    int m_unreadable = 0;

    // In the order in which they depend on each other.
    std::shared_ptr<DeviceFileSystem> m_files;
    std::unique_ptr<Plugin> m_plugin;
    std::unique_ptr<WorkFolder> m_workFolder; // null for a classic iPod
    std::unique_ptr<Device> m_device;
    std::unique_ptr<photo_manager_int> m_library;
};

#endif // PHOTOLIB_ENGINE_LIBRARY_SESSION_H
