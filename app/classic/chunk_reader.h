#ifndef PHOTOLIB_CLASSIC_CHUNK_READER_H
#define PHOTOLIB_CLASSIC_CHUNK_READER_H

#include <QByteArray>
#include <QString>

#include <optional>
#include <string_view>

/// What makes a database unreadable; thrown by the classes below and caught in the reader
/// that uses them.
struct DamagedDatabase {
    QString cause; ///< one line, which tells the place
};

/// The kind of a chunk, as a number that is the same in files of either byte order: their
/// tags are numbers, too.
using ChunkTag = quint32;

constexpr ChunkTag chunkTag(const char (&letters)[5])
{
    return static_cast<quint8>(letters[0]) | static_cast<quint8>(letters[1]) << 8 |
           static_cast<quint8>(letters[2]) << 16 | static_cast<quint32>(letters[3]) << 24;
}

/// The bytes of a whole database. Offsets are not checked: that is the chunks' matter.
class DatabaseBytes
{
public:
    enum ByteOrder { LittleEndian, BigEndian };

    /// `bytes` must outlive the object.
    DatabaseBytes(const QByteArray &bytes, ByteOrder order) : m_bytes(bytes), m_order(order) {}

    qint64 size() const { return m_bytes.size(); }
    ByteOrder order() const { return m_order; }

    quint8 u8(qint64 offset) const;
    quint16 u16(qint64 offset) const;
    quint32 u32(qint64 offset) const;
    std::string_view view(qint64 offset, qint64 size) const;

private:
    const QByteArray &m_bytes;
    const ByteOrder m_order;
};

/// One chunk: tag, length of its header, total length, further fields of the header, and the
/// chunks within it. A list's chunk has a count for its total length, and goes as far as the
/// chunk around it.
///
/// A chunk that exists lies within the one around it, and its header within it. Whatever it
/// is asked for that is not there throws DamagedDatabase.
class Chunk
{
public:
    /// The chunk that the file starts with and all others lie in.
    static Chunk root(const DatabaseBytes &bytes);

    ChunkTag tag() const { return m_tag; }
    qint64 offset() const { return m_offset; }

    /// "the chunk mhii at offset 0x2d4".
    QString name() const;

    /// Whether the header has a field of `size` bytes at `at`, counted from the chunk's start.
    bool hasField(quint32 at, quint32 size) const { return quint64(at) + size <= m_headerLength; }

    /// The number at `at` in the header.
    quint8 u8(quint32 at) const;
    quint16 u16(quint32 at) const;
    quint32 u32(quint32 at) const;

    /// The list right behind the header, of the kind `tag`.
    Chunk list(ChunkTag tag) const;

    /// The first chunk of the kind `tag` within this one.
    std::optional<Chunk> find(ChunkTag tag) const;

    /// The text of a chunk that holds one, decoded. It ends at its first NUL, if any.
    QString text() const;

    /// The stored form of that text, equal for equal texts only.
    std::string_view storedText() const;

private:
    friend class ChunksWithin;

    static constexpr quint32 commonHeader = 12;

    enum class Kind { Ordinary, List };

    /// What a chunk lies in: another one, or the file.
    struct Place {
        const Chunk *parent;
        qint64 offset;
        qint64 end;

        QString name() const;
    };

    Chunk(const DatabaseBytes &bytes, const Place &place, Kind kind);

    void needField(quint32 at, quint32 size) const;

    const DatabaseBytes *m_bytes;
    qint64 m_offset;
    qint64 m_end;
    ChunkTag m_tag;
    quint32 m_headerLength;
};

/// Goes through the chunks within another: those of one or two kinds, for the others are of
/// no use to anybody. It ends when it has seen as many as the parent announces.
class ChunksWithin
{
public:
    /// `parent` must outlive the object. `announced` is the number of chunks of the kinds
    /// `tag` and `otherTag` that it says it has. Writers differ in whether they count chunks
    /// of other kinds.
    ChunksWithin(const Chunk &parent, quint64 announced, ChunkTag tag, ChunkTag otherTag = 0);

    /// The next one, or none at the end.
    std::optional<Chunk> next();

private:
    const Chunk &m_parent;
    const quint64 m_announced;
    const ChunkTag m_tags[2];
    qint64 m_offset;
    quint64 m_found = 0;   ///< of the kinds that count
    quint64 m_skipped = 0; ///< of others
};

#endif // PHOTOLIB_CLASSIC_CHUNK_READER_H
