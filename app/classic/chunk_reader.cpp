#include "classic/chunk_reader.h"

#include <QtEndian>

#include <algorithm>

namespace {

// Of the fields of a text, which lie behind its chunk's header as the header tells its
// length, but are counted from the chunk's start.
constexpr qint64 textLengthField = 24;
constexpr qint64 textEncodingField = 28;
constexpr qint64 textStart = 36;

enum TextEncoding { UnmarkedUtf8 = 0, Utf8 = 1, Utf16 = 2 };

QString hex(qint64 number)
{
    return QStringLiteral("0x%1").arg(number, 0, 16);
}

bool isTagLetter(uint letter)
{
    return (letter >= 'a' && letter <= 'z') || (letter >= '0' && letter <= '9');
}

// Chunks of kinds that came later are skipped, but not what can be no chunk at all.
bool isTag(ChunkTag tag)
{
    constexpr ChunkTag start = chunkTag("mh\0\0");
    return (tag & 0xffff) == start && isTagLetter(tag >> 16 & 0xff) && isTagLetter(tag >> 24);
}

template <class Number>
Number numberAt(const void *bytes, DatabaseBytes::ByteOrder order)
{
    return order == DatabaseBytes::LittleEndian ? qFromLittleEndian<Number>(bytes)
                                                : qFromBigEndian<Number>(bytes);
}

QString textOfUtf8(std::string_view stored)
{
    const std::string_view text = stored.substr(0, stored.find('\0'));
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

QString textOfUtf16(std::string_view stored, DatabaseBytes::ByteOrder order)
{
    QString text(static_cast<int>(stored.size() / 2), Qt::Uninitialized);
    const char *unit = stored.data();
    for (QChar &letter : text) {
        letter = QChar(numberAt<quint16>(unit, order));
        unit += 2;
    }
    const int end = text.indexOf(QChar::Null);
    return end < 0 ? text : text.left(end);
}

int asciiLetters(const QString &text)
{
    return static_cast<int>(std::count_if(text.begin(), text.end(), [](QChar letter) {
        return letter >= QLatin1Char(' ') && letter <= QLatin1Char('~');
    }));
}

// Big-endian files are too rare to tell for sure that their writers turned the texts, too.
// Names of files start with ":Thumbs:", so either reading shows which one is meant.
QString textOfBigEndianFile(std::string_view stored)
{
    const QString asFile = textOfUtf16(stored, DatabaseBytes::BigEndian);
    const QString turned = textOfUtf16(stored, DatabaseBytes::LittleEndian);
    return asciiLetters(turned) > asciiLetters(asFile) ? turned : asFile;
}

} // namespace

quint8 DatabaseBytes::u8(qint64 offset) const
{
    return static_cast<quint8>(m_bytes.constData()[offset]);
}

quint16 DatabaseBytes::u16(qint64 offset) const
{
    return numberAt<quint16>(m_bytes.constData() + offset, m_order);
}

quint32 DatabaseBytes::u32(qint64 offset) const
{
    return numberAt<quint32>(m_bytes.constData() + offset, m_order);
}

std::string_view DatabaseBytes::view(qint64 offset, qint64 size) const
{
    return {m_bytes.constData() + offset, static_cast<std::size_t>(size)};
}

QString Chunk::Place::name() const
{
    return parent == nullptr ? QStringLiteral("the file") : parent->name();
}

Chunk Chunk::root(const DatabaseBytes &bytes)
{
    return Chunk(bytes, {nullptr, 0, bytes.size()}, Kind::Ordinary);
}

Chunk::Chunk(const DatabaseBytes &bytes, const Place &place, Kind kind)
    : m_bytes(&bytes), m_offset(place.offset), m_end(place.end)
{
    const qint64 room = place.end - m_offset;
    if (room < commonHeader)
        throw DamagedDatabase{QStringLiteral("%1 ends within the chunk at offset %2")
                                  .arg(place.name(), hex(m_offset))};
    m_tag = bytes.u32(m_offset);
    if (!isTag(m_tag))
        throw DamagedDatabase{
            QStringLiteral("%1 has no chunk at offset %2").arg(place.name(), hex(m_offset))};
    m_headerLength = bytes.u32(m_offset + 4);
    const qint64 total = kind == Kind::List ? room : bytes.u32(m_offset + 8);
    if (total > room)
        throw DamagedDatabase{
            QStringLiteral("%1 goes beyond the end of %2").arg(name(), place.name())};
    m_end = m_offset + total;
    if (m_headerLength > total)
        throw DamagedDatabase{
            QStringLiteral("the header of %1 is longer than the chunk").arg(name())};
    needField(0, commonHeader);
}

QString Chunk::name() const
{
    QString letters;
    for (int shift = 0; shift < 32; shift += 8)
        letters += QLatin1Char(static_cast<char>(m_tag >> shift & 0xff));
    return QStringLiteral("the chunk %1 at offset %2").arg(letters, hex(m_offset));
}

void Chunk::needField(quint32 at, quint32 size) const
{
    if (hasField(at, size))
        return;
    throw DamagedDatabase{QStringLiteral("the header of %1 is too short: %2 bytes instead of %3")
                              .arg(name())
                              .arg(m_headerLength)
                              .arg(at + size)};
}

quint8 Chunk::u8(quint32 at) const
{
    needField(at, 1);
    return m_bytes->u8(m_offset + at);
}

quint16 Chunk::u16(quint32 at) const
{
    needField(at, 2);
    return m_bytes->u16(m_offset + at);
}

quint32 Chunk::u32(quint32 at) const
{
    needField(at, 4);
    return m_bytes->u32(m_offset + at);
}

Chunk Chunk::list(ChunkTag tag) const
{
    const Chunk list(*m_bytes, {this, m_offset + m_headerLength, m_end}, Kind::List);
    if (list.tag() != tag)
        throw DamagedDatabase{
            QStringLiteral("%1 is not the list that %2 needs").arg(list.name(), name())};
    return list;
}

std::optional<Chunk> Chunk::find(ChunkTag tag) const
{
    for (qint64 offset = m_offset + m_headerLength; offset < m_end;) {
        const Chunk chunk(*m_bytes, {this, offset, m_end}, Kind::Ordinary);
        if (chunk.tag() == tag)
            return chunk;
        offset = chunk.m_end;
    }
    return std::nullopt;
}

std::string_view Chunk::storedText() const
{
    const qint64 room = m_end - m_offset - textStart;
    if (room < 0)
        throw DamagedDatabase{name() + QStringLiteral(" is too short for a text")};
    const quint32 length = m_bytes->u32(m_offset + textLengthField);
    if (length > room)
        throw DamagedDatabase{QStringLiteral("the text of %1 is longer than the chunk: "
                                             "%2 bytes where %3 are left")
                                  .arg(name())
                                  .arg(length)
                                  .arg(room)};
    return m_bytes->view(m_offset + textEncodingField, textStart - textEncodingField + length);
}

QString Chunk::text() const
{
    const std::string_view stored = storedText().substr(textStart - textEncodingField);
    const quint8 encoding = m_bytes->u8(m_offset + textEncodingField);
    if (encoding == UnmarkedUtf8 || encoding == Utf8)
        return textOfUtf8(stored);
    if (encoding != Utf16)
        throw DamagedDatabase{
            QStringLiteral("the text of %1 has the unknown encoding %2").arg(name()).arg(encoding)};
    if (stored.size() % 2 != 0)
        throw DamagedDatabase{QStringLiteral("the text of %1 has half a letter in its %2 bytes")
                                  .arg(name())
                                  .arg(stored.size())};
    return m_bytes->order() == DatabaseBytes::BigEndian ? textOfBigEndianFile(stored)
                                                        : textOfUtf16(stored, m_bytes->order());
}

ChunksWithin::ChunksWithin(const Chunk &parent, quint64 announced, ChunkTag tag, ChunkTag otherTag)
    : m_parent(parent), m_announced(announced), m_tags{tag, otherTag},
      m_offset(parent.m_offset + parent.m_headerLength)
{
}

std::optional<Chunk> ChunksWithin::next()
{
    while (m_found < m_announced && m_offset < m_parent.m_end) {
        const Chunk chunk(*m_parent.m_bytes, {&m_parent, m_offset, m_parent.m_end},
                          Chunk::Kind::Ordinary);
        m_offset = chunk.m_end;
        if (std::find(std::begin(m_tags), std::end(m_tags), chunk.tag()) != std::end(m_tags)) {
            ++m_found;
            return chunk;
        }
        ++m_skipped;
    }
    if (m_found + m_skipped < m_announced)
        throw DamagedDatabase{QStringLiteral("%1 announces %2 chunks and holds %3")
                                  .arg(m_parent.name())
                                  .arg(m_announced)
                                  .arg(m_found + m_skipped)};
    return std::nullopt;
}
