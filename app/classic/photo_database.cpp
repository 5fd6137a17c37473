#include "classic/photo_database.h"

#include "classic/chunk_reader.h"

#include <map>
#include <set>

namespace {

enum SectionType { PhotoSection = 1, AlbumSection = 2 };

// What a chunk mhod has in it.
enum ContentType { AlbumName = 1, Thumbnail = 2, FileName = 3, FullResolution = 5 };

constexpr quint32 contentTypeField = 12; // 16 bits, like the type of a section

constexpr quint32 formatField = 16;
constexpr quint32 fullResolutionFormat = 1;

// Letters; no system opens a file by a longer name.
constexpr int longestFileName = 4096;

// Bytes of a stored picture, nearly a hundred times those of the largest that any iPod has. The
// plug-in reads a picture as a whole, and a file of holes would have as many bytes as are asked
// for.
constexpr qint32 largestPicture = 64 << 20;

class LibraryReader
{
public:
    ClassicLibrary read(const DatabaseBytes &bytes);

private:
    void readPhotos(const Chunk &section);
    void readPhoto(const Chunk &item);
    void readImage(const Chunk &content, ClassicPhoto *photo);
    void readVariant(const Chunk &image, ClassicPhoto *photo);
    void readAlbums(const Chunk &section);
    void readAlbum(const Chunk &item);

    QString sharedName(const Chunk &name);

    ClassicLibrary m_library;

    // Ordered, not hashed: no database can make them slow.
    std::set<quint32> m_photoIds;
    std::set<quint32> m_albumIds;
    std::map<std::string_view, QString> m_names; ///< by their stored form
};

ClassicLibrary LibraryReader::read(const DatabaseBytes &bytes)
{
    const Chunk database = Chunk::root(bytes);
    ChunksWithin sections(database, database.u32(20), chunkTag("mhsd"));
    while (const auto section = sections.next()) {
        switch (section->u16(12)) {
        case PhotoSection:
            readPhotos(*section);
            break;
        case AlbumSection:
            readAlbums(*section);
            break;
        default: // the list of thumbnail files, say, which tells nothing that photos do not
            break;
        }
    }
    return std::move(m_library);
}

void LibraryReader::readPhotos(const Chunk &section)
{
    const Chunk list = section.list(chunkTag("mhli"));
    ChunksWithin items(list, list.u32(8), chunkTag("mhii"));
    while (const auto item = items.next())
        readPhoto(*item);
}

// A header that ends before the dates is one of a photo without them.
quint32 takenDate(const Chunk &item)
{
    constexpr quint32 createdField = 40;
    constexpr quint32 digitisedField = 44;
    const quint32 created = item.hasField(createdField, 4) ? item.u32(createdField) : 0;
    if (created != 0)
        return created;
    return item.hasField(digitisedField, 4) ? item.u32(digitisedField) : 0;
}

void LibraryReader::readPhoto(const Chunk &item)
{
    ClassicPhoto photo;
    photo.id = item.u32(16);
    photo.taken = takenDate(item);
    ChunksWithin contents(item, item.u32(12), chunkTag("mhod"));
    while (const auto content = contents.next()) {
        const quint16 type = content->u16(contentTypeField);
        if (type == Thumbnail || type == FullResolution)
            readImage(*content, &photo);
    }
    if (m_photoIds.insert(photo.id).second)
        m_library.photos.append(std::move(photo));
}

Chunk imageOf(const Chunk &content)
{
    const std::optional<Chunk> image = content.find(chunkTag("mhni"));
    if (!image)
        throw DamagedDatabase{content.name() + QStringLiteral(" holds no image")};
    return *image;
}

std::optional<Chunk> fileNameOf(const Chunk &image)
{
    ChunksWithin contents(image, image.u32(12), chunkTag("mhod"));
    while (const auto content = contents.next()) {
        if (content->u16(contentTypeField) == FileName)
            return content;
    }
    return std::nullopt;
}

qint32 pixels(quint16 stored)
{
    return static_cast<qint16>(stored);
}

StoredPicture storedPicture(const Chunk &image)
{
    StoredPicture picture;
    picture.formatId = static_cast<qint32>(image.u32(formatField));
    picture.offset = static_cast<qint32>(image.u32(20));
    picture.size = static_cast<qint32>(image.u32(24));
    picture.verticalPadding = pixels(image.u16(28));
    picture.horizontalPadding = pixels(image.u16(30));
    picture.height = pixels(image.u16(32));
    picture.width = pixels(image.u16(34));
    return picture;
}

bool isFileName(const QString &name)
{
    return !name.isEmpty() && name.size() <= longestFileName;
}

// Of what cannot be read nothing may be listed: it would be taken for the smallest or the
// largest picture of its photo, and hide the ones that can. Numbers beyond the signed ones
// have become negative.
bool isReadable(const StoredPicture &picture)
{
    const bool hasSize = picture.size > 0 && picture.size <= largestPicture;
    return picture.offset >= 0 && hasSize && isFileName(picture.fileName);
}

bool isFullResolution(const Chunk &content, const Chunk &image)
{
    return content.u16(contentTypeField) == FullResolution ||
           image.u32(formatField) == fullResolutionFormat;
}

void LibraryReader::readImage(const Chunk &content, ClassicPhoto *photo)
{
    const Chunk image = imageOf(content);
    if (!isFullResolution(content, image))
        return readVariant(image, photo);
    const std::optional<Chunk> chunk = fileNameOf(image);
    if (!chunk || !photo->originalName.isEmpty())
        return;
    const QString name = chunk->text();
    if (isFileName(name))
        photo->originalName = name;
}

void LibraryReader::readVariant(const Chunk &image, ClassicPhoto *photo)
{
    StoredPicture picture = storedPicture(image);
    if (const std::optional<Chunk> name = fileNameOf(image))
        picture.fileName = sharedName(*name);
    if (isReadable(picture))
        photo->variants.append(picture);
}

// All pictures of a format are in a few files, so thousands of them share one name.
QString LibraryReader::sharedName(const Chunk &name)
{
    const auto [entry, isNew] = m_names.emplace(name.storedText(), QString());
    if (isNew)
        entry->second = name.text();
    return entry->second;
}

void LibraryReader::readAlbums(const Chunk &section)
{
    const Chunk list = section.list(chunkTag("mhla"));
    ChunksWithin items(list, list.u32(8), chunkTag("mhba"));
    while (const auto item = items.next())
        readAlbum(*item);
}

void LibraryReader::readAlbum(const Chunk &item)
{
    ClassicAlbum album;
    album.id = item.u32(20);
    album.type = item.u8(30);
    const quint64 announced = quint64(item.u32(12)) + item.u32(16);
    ChunksWithin contents(item, announced, chunkTag("mhod"), chunkTag("mhia"));
    while (const auto content = contents.next()) {
        if (content->tag() == chunkTag("mhia"))
            album.photoIDs.append(content->u32(16));
        else if (content->u16(contentTypeField) == AlbumName && album.name.isEmpty())
            album.name = content->text();
    }
    if (m_albumIds.insert(album.id).second)
        m_library.albums.append(std::move(album));
}

bool isBigEndian(const QByteArray &bytes)
{
    return bytes.startsWith("dfhm");
}

bool isPhotoDatabase(const QByteArray &bytes)
{
    return bytes.startsWith("mhfd") || isBigEndian(bytes);
}

QString notADatabase(const QByteArray &bytes)
{
    return bytes.isEmpty() ? QStringLiteral("the file is empty")
                           : QStringLiteral("this is no photo database: "
                                            "no chunk mhfd at offset 0x0");
}

} // namespace

bool readPhotoDatabase(const QByteArray &bytes, ClassicLibrary *library, QString *error)
{
    if (!isPhotoDatabase(bytes)) {
        *error = notADatabase(bytes);
        return false;
    }
    try {
        const DatabaseBytes database(bytes, isBigEndian(bytes) ? DatabaseBytes::BigEndian
                                                               : DatabaseBytes::LittleEndian);
        *library = LibraryReader().read(database);
        return true;
    } catch (const DamagedDatabase &damage) {
        *error = damage.cause;
        return false;
    }
}
