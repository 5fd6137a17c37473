#include "host/device.h"

#include "host/classic_ipod.h"

Device::Device(std::shared_ptr<DeviceFileSystem> files, DeviceKind kind, QString localDataPath)
    : m_files(std::move(files)), m_kind(kind), m_localDataPath(std::move(localDataPath)),
      m_registration(m_files)
{
    if (m_kind == DeviceKind::Classic)
        m_classicIpod = std::make_unique<ClassicIpod>(*m_files);
}

Device::~Device() {}

// A device that is gone is not blocked: its files tell what is wrong.
bool Device::isAccessBlocked()
{
    const DeviceState state = m_files->state();
    return state != DeviceState::Ready && state != DeviceState::Gone;
}

QString Device::driveName()
{
    return m_classicIpod ? m_classicIpod->driveName() : QString();
}
