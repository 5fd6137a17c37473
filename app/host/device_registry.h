#ifndef PHOTOLIB_HOST_DEVICE_REGISTRY_H
#define PHOTOLIB_HOST_DEVICE_REGISTRY_H

#include <QByteArray>

#include <memory>

class DeviceFileSystem;

/// Makes a device's files available to `vDevOpen(VDevDevice, name)` for as long as the
/// object lives. Its end closes every file of the device that is still open: the plug-in
/// leaves some open on purpose. So whoever uses the device must have stopped by then.
///
/// Devices may be registered, opened and dropped on any threads at a time.
class DeviceRegistration
{
public:
    /// Registers `files` under a new name of ASCII letters, digits and "-".
    explicit DeviceRegistration(std::shared_ptr<DeviceFileSystem> files);
    ~DeviceRegistration();

    DeviceRegistration(const DeviceRegistration &) = delete;
    DeviceRegistration &operator=(const DeviceRegistration &) = delete;

    const QByteArray &name() const { return m_name; }

private:
    const QByteArray m_name;
};

#endif // PHOTOLIB_HOST_DEVICE_REGISTRY_H
