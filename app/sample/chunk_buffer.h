#ifndef PHOTOLIB_SAMPLE_CHUNK_BUFFER_H
#define PHOTOLIB_SAMPLE_CHUNK_BUFFER_H

#include <QByteArray>

namespace sample {

/// The chunks of a photo database, little-endian, one in another. A chunk starts with its tag,
/// the length of its header and its total length; its children follow the header.
class ChunkBuffer
{
public:
    /// Makes room for `bytes` in all.
    explicit ChunkBuffer(int bytes) { m_bytes.reserve(bytes); }

    /// Starts a chunk with a header of zeros, and returns its position. What is appended
    /// before it is ended is in it.
    int begin(const char *tag, int headerSize);
    void end(int chunk);

    // Fields of the header of the chunk at `chunk`.
    void set8(int chunk, int offset, int value);
    void set16(int chunk, int offset, int value);
    void set32(int chunk, int offset, quint32 value);

    void append(const QByteArray &bytes) { m_bytes.append(bytes); }

    const QByteArray &bytes() const { return m_bytes; }

private:
    QByteArray m_bytes;
};

} // namespace sample

#endif // PHOTOLIB_SAMPLE_CHUNK_BUFFER_H
