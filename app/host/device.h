#ifndef PHOTOLIB_HOST_DEVICE_H
#define PHOTOLIB_HOST_DEVICE_H

#include "devices/device_file_system.h"
#include "host/device_kind.h"
#include "host/device_registry.h"
#include "host/iipod.h"

class ClassicIpod;

/// A connected device as the plug-in sees it. While the object lives, the plug-in can open
/// the device's files; handles that the plug-in leaves open are closed with it, so it must
/// outlive every manager made for it. The operations may be called from any thread.
class Device : public IIPod
{
public:
    /// `localDataPath` is the folder for the copies of its database, with a closing "/";
    /// a classic iPod has none. Throws std::system_error when a classic iPod's drive cannot
    /// be given a name.
    Device(std::shared_ptr<DeviceFileSystem> files, DeviceKind kind, QString localDataPath);
    ~Device() override;

    DeviceFileSystem &files() const { return *m_files; }

    /// Null for a device of another kind.
    ClassicIpod *classicIpod() const { return m_classicIpod.get(); }

    bool isAccessBlocked() override;

    /// A name in ASCII that no other device of the process has, whatever the device's own
    /// name is: part of the plug-in passes it on in the locale's encoding.
    QString devicePath() override { return QString::fromLatin1(m_registration.name()); }

    QString driveName() override;
    bool isIOSDevice() override { return m_kind == DeviceKind::Ios; }
    QString localDataPath() override { return m_localDataPath; }

private:
    const std::shared_ptr<DeviceFileSystem> m_files;
    const DeviceKind m_kind;
    const QString m_localDataPath;
    const DeviceRegistration m_registration;
    std::unique_ptr<ClassicIpod> m_classicIpod;
};

#endif // PHOTOLIB_HOST_DEVICE_H
