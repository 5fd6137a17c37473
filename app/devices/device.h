#ifndef PHOTOLIB_DEVICES_DEVICE_H
#define PHOTOLIB_DEVICES_DEVICE_H

#include "devices/device_file_system.h"
#include "host/iipod.h"
#include "services/device_registry.h"

/// An iOS device's library database, with its journals "-wal" and "-shm" beside it.
constexpr char databasePath[] = "/PhotoData/Photos.sqlite";

/// What kind of photo library a device holds.
enum class DeviceKind {
    None,    ///< neither of the two
    Ios,     ///< an iOS device: PhotoData/Photos.sqlite
    Classic, ///< a classic iPod: Photos/Photo Database
};

/// Looks which library database `files` holds; the iOS one when it holds both. Returns
/// false and fills `*error` when the device does not say.
bool findDeviceKind(DeviceFileSystem &files, DeviceKind *kind, FileError *error);

/// A connected device as the plug-in sees it. While the object lives, the plug-in can open
/// the device's files; handles that the plug-in leaves open are closed with it, so it must
/// outlive every manager made for it. The operations may be called from any thread.
class Device : public IIPod
{
public:
    /// `localDataPath` is the folder for the copies of its database, with a closing "/".
    Device(std::shared_ptr<DeviceFileSystem> files, DeviceKind kind, QString localDataPath);

    DeviceFileSystem &files() const { return *m_files; }

    bool isAccessBlocked() override { return m_files->isBlocked(); }

    /// A name in ASCII that no other device of the process has, whatever the device's own
    /// name is: part of the plug-in passes it on in the locale's encoding.
    QString devicePath() override { return QString::fromLatin1(m_registration.name()); }

    QString driveName() override { return devicePath(); }
    bool isIOSDevice() override { return m_kind == DeviceKind::Ios; }
    QString localDataPath() override { return m_localDataPath; }

private:
    const std::shared_ptr<DeviceFileSystem> m_files;
    const DeviceKind m_kind;
    const QString m_localDataPath;
    const DeviceRegistration m_registration;
};

#endif // PHOTOLIB_DEVICES_DEVICE_H
