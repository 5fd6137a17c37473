#ifndef PHOTOLIB_DEVICES_MEMORY_FILE_H
#define PHOTOLIB_DEVICES_MEMORY_FILE_H

#include "devices/device_file_system.h"

/// A file whose content is in memory.
class MemoryFile : public DeviceFile
{
public:
    explicit MemoryFile(QByteArray bytes) : m_bytes(std::move(bytes)) {}

    qint64 read(qint64 offset, char *buffer, qint64 length, FileError *error) override;
    qint64 size(FileError *) override { return m_bytes.size(); }

private:
    const QByteArray m_bytes;
};

#endif // PHOTOLIB_DEVICES_MEMORY_FILE_H
