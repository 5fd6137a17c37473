#include "sample/chunk_buffer.h"

#include <QtEndian>

namespace sample {

namespace {

constexpr int headerSizeField = 4;
constexpr int totalSizeField = 8;

} // namespace

int ChunkBuffer::begin(const char *tag, int headerSize)
{
    const int chunk = m_bytes.size();
    m_bytes.append(tag, headerSizeField);
    m_bytes.append(headerSize - headerSizeField, '\0');
    set32(chunk, headerSizeField, static_cast<quint32>(headerSize));
    return chunk;
}

void ChunkBuffer::end(int chunk)
{
    set32(chunk, totalSizeField, static_cast<quint32>(m_bytes.size() - chunk));
}

void ChunkBuffer::set8(int chunk, int offset, int value)
{
    m_bytes[chunk + offset] = static_cast<char>(value);
}

void ChunkBuffer::set16(int chunk, int offset, int value)
{
    qToLittleEndian(static_cast<quint16>(value), m_bytes.data() + chunk + offset);
}

void ChunkBuffer::set32(int chunk, int offset, quint32 value)
{
    qToLittleEndian(value, m_bytes.data() + chunk + offset);
}

} // namespace sample
