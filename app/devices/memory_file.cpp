#include "devices/memory_file.h"

#include <cstring>

qint64 MemoryFile::read(qint64 offset, char *buffer, qint64 length, FileError *)
{
    if (offset >= m_bytes.size())
        return 0;
    const qint64 count = qMin(length, m_bytes.size() - offset);
    std::memcpy(buffer, m_bytes.constData() + offset, static_cast<size_t>(count));
    return count;
}
