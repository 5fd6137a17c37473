#include "sample/classic_database.h"

#include "sample/classic_format.h"

#include <QRect>
#include <QtEndian>

namespace sample {

namespace {

enum SetKind { PhotoSet = 1, AlbumSet = 2, FormatSet = 3 };
enum DataKind { AlbumName = 1, ThumbnailData = 2, TransitionName = 2, FileName = 3, FullData = 5 };
enum TextEncoding { Utf8 = 1, Utf16 = 2 };
enum AlbumKind { MasterAlbum = 1, UserAlbum = 2 };

constexpr int dataHeader = 0x18;
constexpr int memberBytes = 0x28;
constexpr int fullResolution = 1; // the format id of a file that is no frame
constexpr int transitionMillis = 1000;

// 97 years with 25 leap days, from the reference of the device's dates to that of the plan's.
constexpr quint32 secondsFrom1904 = (97U * 365 + 25) * 86400;

// A little more than the chunks of a photo and of its places in albums take on average.
constexpr int bytesPerPhoto = 1200;

QByteArray utf16(const QString &text)
{
    QByteArray bytes(text.size() * 2, Qt::Uninitialized);
    for (int i = 0; i < text.size(); ++i)
        qToLittleEndian(text.at(i).unicode(), bytes.data() + qptrdiff{2} * i);
    return bytes;
}

/// A chunk with a text, filled up to four bytes.
void addText(ChunkBuffer &chunks, int kind, const QString &text, TextEncoding encoding)
{
    const QByteArray bytes = encoding == Utf16 ? utf16(text) : text.toUtf8();
    const int padding = (4 - bytes.size() % 4) % 4;
    const int chunk = chunks.begin("mhod", dataHeader);
    chunks.set16(chunk, 12, kind);
    chunks.set8(chunk, 15, padding);
    const int textHeader = 12;
    chunks.append(QByteArray(textHeader, '\0'));
    chunks.set32(chunk, dataHeader, static_cast<quint32>(bytes.size()));
    chunks.set8(chunk, dataHeader + 4, encoding);
    chunks.append(bytes);
    chunks.append(QByteArray(padding, '\0'));
    chunks.end(chunk);
}

/// A stored picture, as its chunk has it.
struct StoredPicture {
    int formatId = 0;
    quint32 offset = 0;
    quint32 size = 0; ///< bytes
    QRect area;       ///< of the picture in its frame
    QString path;     ///< relative to the folder of photos
};

void addPicture(ChunkBuffer &chunks, int kind, const StoredPicture &picture)
{
    const int data = chunks.begin("mhod", dataHeader);
    chunks.set16(data, 12, kind);
    const int image = chunks.begin("mhni", 0x4c);
    chunks.set32(image, 12, 1); // the file's name
    chunks.set32(image, 16, static_cast<quint32>(picture.formatId));
    chunks.set32(image, 20, picture.offset);
    chunks.set32(image, 24, picture.size);
    chunks.set16(image, 28, picture.area.top());
    chunks.set16(image, 30, picture.area.left());
    // Both count from the edge of the frame.
    chunks.set16(image, 32, picture.area.top() + picture.area.height());
    chunks.set16(image, 34, picture.area.left() + picture.area.width());
    QString name = QLatin1Char(':') + picture.path;
    addText(chunks, FileName, name.replace(QLatin1Char('/'), QLatin1Char(':')), Utf16);
    chunks.end(image);
    chunks.end(data);
}

void addMember(ChunkBuffer &chunks, quint32 photoId)
{
    const int chunk = chunks.begin("mhia", memberBytes);
    chunks.set32(chunk, 16, photoId);
    chunks.end(chunk);
}

} // namespace

ClassicDatabase::ClassicDatabase(const ClassicPlan &plan)
    : m_plan(plan), m_chunks(4096 + plan.photoCount() * bytesPerPhoto),
      m_file(m_chunks.begin("mhfd", 0x84)), m_photos(beginSet(PhotoSet))
{
    m_chunks.set32(m_file, 16, 2); // version
    m_chunks.set32(m_file, 20, 3); // sets
    m_chunks.set8(m_file, 48, 2);
    beginList("mhli", plan.photoCount());
}

int ClassicDatabase::beginSet(int kind)
{
    const int chunk = m_chunks.begin("mhsd", 0x60);
    m_chunks.set16(chunk, 12, kind);
    return chunk;
}

/// A list has the number of its members in the place of its length; it is never ended.
int ClassicDatabase::beginList(const char *tag, int count)
{
    const int chunk = m_chunks.begin(tag, 0x5c);
    m_chunks.set32(chunk, 8, static_cast<quint32>(count));
    return chunk;
}

void ClassicDatabase::addPhoto(const ClassicPhotoPlan &photo, qint64 sourceSize)
{
    const int chunk = m_chunks.begin("mhii", 0x98);
    const bool hasOriginal = !photo.originalPath.isEmpty();
    m_chunks.set32(chunk, 12, static_cast<quint32>(classicFormats.size()) + (hasOriginal ? 1 : 0));
    m_chunks.set32(chunk, 16, photo.id);
    const quint32 taken = secondsFrom1904 + static_cast<quint32>(photo.asset.created);
    m_chunks.set32(chunk, 40, taken);
    m_chunks.set32(chunk, 44, taken);
    m_chunks.set32(chunk, 48, static_cast<quint32>(sourceSize));
    addVariants(photo);
    if (hasOriginal)
        addOriginal(photo, sourceSize);
    m_chunks.end(chunk);
}

void ClassicDatabase::addVariants(const ClassicPhotoPlan &photo)
{
    for (const ClassicFormat &format : classicFormats) {
        const FrameLocation location = frameLocation(format, photo.index);
        StoredPicture picture;
        picture.formatId = format.id;
        picture.offset = location.offset;
        picture.size = static_cast<quint32>(format.frameBytes());
        picture.area = format.pictureArea({photo.asset.width, photo.asset.height});
        picture.path = location.path;
        addPicture(m_chunks, ThumbnailData, picture);
    }
}

void ClassicDatabase::addOriginal(const ClassicPhotoPlan &photo, qint64 size)
{
    StoredPicture picture;
    picture.formatId = fullResolution;
    picture.size = static_cast<quint32>(size);
    picture.area = QRect(0, 0, photo.asset.width, photo.asset.height);
    picture.path = photo.originalPath;
    addPicture(m_chunks, FullData, picture);
}

void ClassicDatabase::addAlbums()
{
    const QVector<ClassicAlbumPlan> albums = classicAlbums();
    const int set = beginSet(AlbumSet);
    beginList("mhla", albums.size());
    // After the ids of all photos, the one that would be next included.
    quint32 id = ClassicPlan::photoId(m_plan.photoCount());
    for (const ClassicAlbumPlan &album : albums)
        addAlbum(album, ++id);
    m_chunks.set32(m_file, 28, id + 1);
    m_chunks.end(set);
}

void ClassicDatabase::addAlbum(const ClassicAlbumPlan &album, quint32 id)
{
    const int chunk = m_chunks.begin("mhba", 0x94);
    m_chunks.set32(chunk, 12, album.transition.isNull() ? 1 : 2);
    m_chunks.set32(chunk, 20, id);
    m_chunks.set8(chunk, 30, album.isMaster ? MasterAlbum : UserAlbum);
    m_chunks.set32(chunk, 36, static_cast<quint32>(album.slideSeconds));
    addText(m_chunks, AlbumName, album.name, album.isWide ? Utf16 : Utf8);
    if (!album.transition.isNull()) {
        m_chunks.set32(chunk, 40, transitionMillis);
        addText(m_chunks, TransitionName, album.transition, Utf8);
    }
    quint32 members = 0;
    for (int i = 0; i < m_plan.photoCount(); ++i)
        if (ClassicPlan::isMember(album, i)) {
            addMember(m_chunks, ClassicPlan::photoId(i));
            ++members;
        }
    m_chunks.set32(chunk, 16, members);
    m_chunks.end(chunk);
}

void ClassicDatabase::addFormats()
{
    const int set = beginSet(FormatSet);
    beginList("mhlf", static_cast<int>(classicFormats.size()));
    for (const ClassicFormat &format : classicFormats) {
        const int chunk = m_chunks.begin("mhif", 0x7c);
        m_chunks.set32(chunk, 16, static_cast<quint32>(format.id));
        m_chunks.set32(chunk, 20, static_cast<quint32>(format.frameBytes()));
        m_chunks.end(chunk);
    }
    m_chunks.end(set);
}

const QByteArray &ClassicDatabase::finish()
{
    m_chunks.end(m_photos);
    addAlbums();
    addFormats();
    m_chunks.end(m_file);
    return m_chunks.bytes();
}

} // namespace sample
