#include "host/device_registry.h"

#include "host/device_handles.h"

#include <map>

namespace {

// The devices of the process by name.
class Registry
{
public:
    QByteArray add(std::shared_ptr<DeviceFileSystem> files)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        QByteArray name = "device-" + QByteArray::number(++m_lastNumber);
        m_devices[name] = std::make_unique<VDev>(std::move(files));
        return name;
    }

    void remove(const QByteArray &name)
    {
        // Files are closed after unlocking: a slow device holds up no other one.
        std::unique_ptr<VDev> removed;
        const std::lock_guard<std::mutex> lock(m_mutex);
        removed.swap(m_devices[name]);
        m_devices.erase(name);
    }

    VDev *find(const QByteArray &name)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_devices.find(name);
        return found == m_devices.end() ? nullptr : found->second.get();
    }

private:
    std::mutex m_mutex;
    std::map<QByteArray, std::unique_ptr<VDev>> m_devices;
    quint64 m_lastNumber = 0;
};

Registry &registry()
{
    static Registry instance;
    return instance;
}

} // namespace

VFile *VDev::add(std::unique_ptr<VFile> file)
{
    VFile *const handle = file.get();
    handle->dev = this;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_openFiles[handle] = std::move(file);
    return handle;
}

void VDev::close(VFile *file)
{
    std::unique_ptr<VFile> closed; // after unlocking, for closing may take a while
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_openFiles.find(file);
    if (found == m_openFiles.end())
        return;
    closed = std::move(found->second);
    m_openFiles.erase(found);
}

VDev *hostFileSystem()
{
    static VDev instance(nullptr);
    return &instance;
}

VDev *registeredDevice(const QByteArray &name)
{
    return registry().find(name);
}

DeviceRegistration::DeviceRegistration(std::shared_ptr<DeviceFileSystem> files)
    : m_name(registry().add(std::move(files)))
{
}

DeviceRegistration::~DeviceRegistration()
{
    registry().remove(m_name);
}
