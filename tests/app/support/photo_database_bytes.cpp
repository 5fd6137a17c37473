#include "support/photo_database_bytes.h"

#include <QtEndian>

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace {

QByteArray reversed(QByteArray bytes)
{
    std::reverse(bytes.begin(), bytes.end());
    return bytes;
}

QByteArray numberBytes(quint32 value, int size, QSysInfo::Endian order)
{
    QByteArray bytes;
    for (int i = 0; i < size; ++i)
        bytes += static_cast<char>(value >> 8 * i & 0xff);
    return order == QSysInfo::LittleEndian ? bytes : reversed(bytes);
}

QByteArray utf16(const QString &text, QSysInfo::Endian order)
{
    QByteArray bytes;
    for (const QChar unit : text)
        bytes += numberBytes(unit.unicode(), 2, order);
    return bytes;
}

} // namespace

void putNumber(QByteArray *database, int chunkOffset, const ChunkNumber &number,
               QSysInfo::Endian order)
{
    const int offset = chunkOffset + number.at;
    ASSERT_LE(offset + number.size, database->size());
    database->replace(offset, number.size, numberBytes(number.value, number.size, order));
}

int chunkOffset(const QByteArray &database, const QByteArray &tag, int number)
{
    const QByteArray stored = database.startsWith("dfhm") ? reversed(tag) : tag;
    int offset = database.indexOf(stored);
    for (int i = 0; i < number && offset >= 0; ++i)
        offset = database.indexOf(stored, offset + 1);
    EXPECT_GE(offset, 0) << "no chunk " << tag.constData() << " after " << number << " others";
    return offset;
}

QByteArray photoDatabaseBytes(const ClassicLibrary &library, const PhotoDatabaseForm &form)
{
    const PhotoDatabaseChunks chunks(form);
    QByteArrayList photos;
    for (const ClassicPhoto &photo : library.photos)
        photos += chunks.photo(photo);
    QByteArrayList albums;
    for (const ClassicAlbum &album : library.albums)
        albums += chunks.album(album);
    QByteArrayList sections{chunks.photoSection(photos), chunks.albumSection(albums)};
    if (form.albumsFirst)
        std::reverse(sections.begin(), sections.end());
    return chunks.database(sections);
}

std::string describe(const ClassicLibrary &library)
{
    std::ostringstream out;
    for (const ClassicPhoto &photo : library.photos) {
        out << "photo " << photo.id << " taken " << photo.taken << " original '"
            << photo.originalName.toStdString() << "'\n";
        for (const StoredPicture &picture : photo.variants)
            out << "  format " << picture.formatId << " '" << picture.fileName.toStdString() << "' "
                << picture.size << " bytes at " << picture.offset << ", " << picture.width << " x "
                << picture.height << ", padding " << picture.horizontalPadding << ", "
                << picture.verticalPadding << "\n";
    }
    for (const ClassicAlbum &album : library.albums) {
        out << "album " << album.id << " '" << album.name.toStdString() << "' type " << album.type
            << ":";
        for (const quint32 id : album.photoIDs)
            out << " " << id;
        out << "\n";
    }
    return out.str();
}

QByteArray PhotoDatabaseChunks::chunk(const QByteArray &tag, int headerLength,
                                      const std::vector<ChunkNumber> &numbers,
                                      const QByteArray &content) const
{
    QByteArray bytes = m_form.order == QSysInfo::LittleEndian ? tag : reversed(tag);
    bytes.resize(headerLength);
    std::fill(bytes.begin() + tag.size(), bytes.end(), '\0');
    bytes += content;
    putNumber(&bytes, 0, {4, 4, static_cast<quint32>(headerLength)}, m_form.order);
    putNumber(&bytes, 0, {8, 4, static_cast<quint32>(bytes.size())}, m_form.order);
    for (const ChunkNumber &number : numbers)
        putNumber(&bytes, 0, number, m_form.order);
    return bytes;
}

int PhotoDatabaseChunks::announced(int children) const
{
    return m_form.otherChunks == PhotoDatabaseForm::Counted ? children + 1 : children;
}

QByteArray PhotoDatabaseChunks::content(const QByteArrayList &children) const
{
    if (m_form.otherChunks == PhotoDatabaseForm::None)
        return children.join();
    return chunk("mhzz", 16, {}, "mhii, but no chunk") + children.join();
}

QByteArray PhotoDatabaseChunks::database(const QByteArrayList &sections) const
{
    const auto count = static_cast<quint32>(announced(sections.size()));
    return chunk("mhfd", 0x84 + m_form.longerHeaders,
                 {{16, 4, 2}, {20, 4, count}, {28, 4, 0x66}, {48, 1, 2}}, content(sections));
}

QByteArray PhotoDatabaseChunks::section(int type, const QByteArray &content) const
{
    return chunk("mhsd", 0x60 + m_form.longerHeaders, {{12, 2, static_cast<quint32>(type)}},
                 content);
}

QByteArray PhotoDatabaseChunks::list(const char *tag, const QByteArrayList &items) const
{
    return chunk(tag, 0x5c + m_form.longerHeaders,
                 {{8, 4, static_cast<quint32>(announced(items.size()))}}, content(items));
}

QByteArray PhotoDatabaseChunks::photoSection(const QByteArrayList &photos) const
{
    return section(1, list("mhli", photos));
}

QByteArray PhotoDatabaseChunks::albumSection(const QByteArrayList &albums) const
{
    return section(2, list("mhla", albums));
}

QByteArray PhotoDatabaseChunks::photo(const ClassicPhoto &photo, const QByteArrayList &others) const
{
    QByteArrayList children;
    if (!photo.originalName.isEmpty()) {
        StoredPicture original;
        original.formatId = 1;
        original.fileName = photo.originalName;
        children += picture(5, original);
    }
    for (const StoredPicture &variant : photo.variants)
        children += picture(2, variant);
    children += others;
    const auto count = static_cast<quint32>(announced(children.size()));
    return chunk("mhii", 0x98 + m_form.longerHeaders,
                 {{12, 4, count}, {16, 4, photo.id}, {40, 4, photo.taken}}, content(children));
}

QByteArray PhotoDatabaseChunks::album(const ClassicAlbum &album) const
{
    QByteArrayList children;
    if (!album.name.isNull())
        children += text(1, album.name);
    const int texts = children.size();
    for (const quint32 id : album.photoIDs)
        children += chunk("mhia", 0x28 + m_form.longerHeaders, {{16, 4, id}});
    return chunk("mhba", 0x94 + m_form.longerHeaders,
                 {{12, 4, static_cast<quint32>(announced(texts))},
                  {16, 4, static_cast<quint32>(album.photoIDs.size())},
                  {20, 4, album.id},
                  {30, 1, static_cast<quint32>(album.type)}},
                 content(children));
}

QByteArray PhotoDatabaseChunks::picture(int type, const StoredPicture &picture) const
{
    QByteArrayList children;
    if (!picture.fileName.isNull())
        children += text(3, picture.fileName);
    const auto stored = [](qint32 number) { return static_cast<quint32>(number); };
    const QByteArray image = chunk("mhni", 0x4c + m_form.longerHeaders,
                                   {{12, 4, stored(announced(children.size()))},
                                    {16, 4, stored(picture.formatId)},
                                    {20, 4, stored(picture.offset)},
                                    {24, 4, stored(picture.size)},
                                    {28, 2, stored(picture.verticalPadding)},
                                    {30, 2, stored(picture.horizontalPadding)},
                                    {32, 2, stored(picture.height)},
                                    {34, 2, stored(picture.width)}},
                                   content(children));
    return chunk("mhod", 0x18 + m_form.longerHeaders, {{12, 2, stored(type)}}, content({image}));
}

QByteArray PhotoDatabaseChunks::text(int type, const QString &text) const
{
    return storedText(type, m_form.textEncoding,
                      m_form.textEncoding == 2 ? utf16(text, m_form.order) : text.toUtf8());
}

// The length of the header is what devices have there, although the fields of the text are
// behind it.
QByteArray PhotoDatabaseChunks::storedText(int type, int encoding, const QByteArray &text) const
{
    const int padding = (4 - text.size() % 4) % 4;
    return chunk("mhod", 0x18,
                 {{12, 2, static_cast<quint32>(type)},
                  {15, 1, static_cast<quint32>(padding)},
                  {24, 4, static_cast<quint32>(text.size())},
                  {28, 1, static_cast<quint32>(encoding)}},
                 QByteArray(12, '\0') + text + QByteArray(padding, '\0'));
}
