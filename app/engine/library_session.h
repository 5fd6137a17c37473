#ifndef PHOTOLIB_ENGINE_LIBRARY_SESSION_H
#define PHOTOLIB_ENGINE_LIBRARY_SESSION_H

#include "base/cancel_token.h"
#include "base/folders.h"
#include "boundary/photo_manager_int.h"
#include "boundary/photo_records.h"
#include "catalog/catalog.h"
#include "engine/device_listing.h"
#include "engine/file_state.h"
#include "host/device.h"
#include "host/plugin.h"

#include <memory>
#include <string>

class DatabaseCopy;
class WorkFolder;

/// Which device to open, and how.
struct LibraryOptions {
    QByteArray device;                  ///< the folder, in the user's own bytes
    DeviceKind kind = DeviceKind::None; ///< None to look what is in the folder
    QByteArray workFolder;              ///< for the copy of its database; empty for the default
    std::string plugin;                 ///< the plug-in's file; empty to search for it

    /// The device's files, where they are not read from the folder, which then only names the
    /// device. For one session at a time.
    std::shared_ptr<DeviceFileSystem> files;
};

/// Hears how the opening of a library goes, on the thread that opens it.
class OpenObserver
{
public:
    virtual ~OpenObserver() {}

    /// Another program has the work folder, which is waited for.
    virtual void waiting(const QByteArray &workFolder) = 0;

    /// `done` bytes of `total` of the database are copied.
    virtual void copied(qint64 done, qint64 total) = 0;
};

/// The parsed photo library of one device, from opening the device to dropping it. Any number may
/// be open at a time, each for one thread at a time.
///
/// An iOS device's database is copied to a work folder of the session's own, which is locked and
/// holds the copy as long as the session lives, and is gone afterwards.
class LibrarySession
{
public:
    /// Opens the device and parses its library, on the calling thread. Throws Error when that
    /// fails, of the kind Cancelled once `cancel` is; nothing is left behind then. `observer` and
    /// `cancel` are needed no longer than that.
    LibrarySession(const LibraryOptions &options, OpenObserver &observer, CancelToken &cancel);
    ~LibrarySession();

    LibrarySession(const LibrarySession &) = delete;
    LibrarySession &operator=(const LibrarySession &) = delete;

    /// What the library tells of its photos, videos, albums and people. Read once, when it is
    /// opened.
    const Catalog &catalog() const { return m_catalog; }

    /// The plug-in's view of the library: thumbnails, album edits. Throws Error when the plug-in
    /// cannot read the library although `catalog` can.
    photo_manager_int &library();

    /// Fills `*item`, a new one, for the photo or video `id`, and tells of its file. Of a file that
    /// is empty or not there only the identity, name, dimensions, kind and path are filled: the
    /// dates stay invalid. A photo of a classic iPod needs no file of its own.
    FileState photo(quint64 id, photoItem *item);

    /// Whether the file of `item` is on the device, be it empty; it is on a classic iPod. Notes
    /// one that cannot be read. Throws Error, and so does `photo`, when the device is
    /// gone.
    FileState fileState(const photoItem &item);

    /// Why the plug-in cannot read the library although `catalog` can, for a message; empty when it
    /// can.
    std::string parseFailure() const { return m_parseFailure; }

    /// That of the library which a computer has synchronized to the device; empty when none has.
    QString libraryUuid() const
    {
        return m_parseFailure.empty() ? m_library->getUUID() : QString();
    }

    /// Whether the file of `asset` is on the device, be it empty; what a folder cannot tell is
    /// noted once. It is on a classic iPod. Throws Error when the device is gone.
    FileState fileState(const Asset &asset);

    /// The device's folders, each listed when it is asked for first.
    DeviceListing &listing() { return *m_listing; }

    /// Notes a file of the device that cannot be read though it is not missing, by a name for
    /// messages. On the thread that uses the session.
    void noteUnreadable(const QString &name, const FileError &error);

    /// Why the first file that was noted cannot be read, and how many there are, for a
    /// message; empty when there are none.
    QString unreadableText() const;

    /// That the photo database of an iOS device is damaged, so that the library lacks what it
    /// should hold, for a message; empty when it is sound.
    QByteArray damageText() const;

    /// Throws Error when the device is gone: to be called before something is said to
    /// be missing.
    void requireDevice() const;

    /// Throws Error when `error` tells that the device is gone: then every file looks missing.
    void requireConnected(const FileError &error) const;

    /// What the program knows of a classic iPod beyond the plug-in's records; null for an
    /// iOS device.
    const ClassicIpod *classicIpod() const { return m_device->classicIpod(); }

    /// The device's folder as the user named it.
    std::string deviceName() const { return m_options.device.toStdString(); }

    /// The device's files; any thread may use them as long as the session lives.
    DeviceFileSystem &files() { return *m_files; }

    /// Makes the folder `path` for what is written, with missing parents. Throws
    /// Error when that fails, and, without touching the device, when it would lie
    /// in it.
    std::unique_ptr<EnsuredFolder> folderOutside(const QByteArray &path) const;

    /// Throws Error when the existing folder `folder` lies in the device, which is
    /// never written.
    void refuseInDevice(const QByteArray &folder) const;

private:
    void openIos(OpenObserver &observer, CancelToken &cancel);
    std::unique_ptr<WorkFolder> newWorkFolder(OpenObserver &observer) const;
    void readTables(const DatabaseCopy &copy, CancelToken &cancel);
    void openClassic(CancelToken &cancel);
    bool parse(CancelToken &cancel);
    void requireCopied(DatabaseCopy &copy, const CancelToken &cancel) const;

    const LibraryOptions m_options;
    QByteArray m_damagedDatabase; // as a person knows it; empty when it is sound
    std::string m_parseFailure;   // why the plug-in cannot read the library; empty when it can
    Catalog m_catalog;
    QString m_firstUnreadable; // "NAME: CAUSE"
    int m_unreadable = 0;

    // In the order in which they depend on each other.
    std::shared_ptr<DeviceFileSystem> m_files;
    std::unique_ptr<DeviceListing> m_listing;
    std::unique_ptr<Plugin> m_plugin;
    std::unique_ptr<WorkFolder> m_workFolder; // null for a classic iPod
    std::unique_ptr<Device> m_device;
    std::unique_ptr<photo_manager_int> m_library;
};

#endif // PHOTOLIB_ENGINE_LIBRARY_SESSION_H
