#ifndef PHOTOLIB_TESTS_APP_PHOTO_DATABASE_BYTES_H
#define PHOTOLIB_TESTS_APP_PHOTO_DATABASE_BYTES_H

#include "classic/photo_database.h"

#include <QByteArrayList>
#include <QSysInfo>

#include <vector>

/// How a photo database is written down, apart from what it says.
struct PhotoDatabaseForm {
    enum OtherChunks { None, Counted, Uncounted };

    QSysInfo::Endian order = QSysInfo::LittleEndian;
    int longerHeaders = 0; ///< bytes by which headers are longer than usual
    int textEncoding = 1;  ///< 0 and 1: UTF-8, 2: UTF-16
    bool albumsFirst = false;

    /// Whether each chunk that has others within it also has one of a kind that nobody
    /// knows, in front of them, and whether the numbers of chunks count that one.
    OtherChunks otherChunks = None;
};

/// A photo database that says what `library` says: what the device would have on its disk.
QByteArray photoDatabaseBytes(const ClassicLibrary &library, const PhotoDatabaseForm &form = {});

/// What `library` says as a text, to compare it by.
std::string describe(const ClassicLibrary &library);

/// One number in a chunk.
struct ChunkNumber {
    int at;   ///< counted from the chunk's start
    int size; ///< bytes: 1, 2 or 4
    quint32 value;
};

/// Overwrites the number in the chunk at `chunkOffset` of a database.
void putNumber(QByteArray *database, int chunkOffset, const ChunkNumber &number,
               QSysInfo::Endian order);

/// The offset of the chunk `tag` in a database: of the first one after `number` others. A
/// missing one fails the test.
int chunkOffset(const QByteArray &database, const QByteArray &tag, int number = 0);

/// Makes a database's chunks one by one, for databases that say what no library does.
class PhotoDatabaseChunks
{
public:
    explicit PhotoDatabaseChunks(const PhotoDatabaseForm &form = {}) : m_form(form) {}

    QByteArray database(const QByteArrayList &sections) const;

    /// A section of the type 1, photos, or 2, albums, or of another one with any content.
    QByteArray section(int type, const QByteArray &content) const;
    QByteArray photoSection(const QByteArrayList &photos) const;
    QByteArray albumSection(const QByteArrayList &albums) const;

    /// A photo with its variants and its full-resolution file, and `others` behind them.
    QByteArray photo(const ClassicPhoto &photo, const QByteArrayList &others = {}) const;
    QByteArray album(const ClassicAlbum &album) const;

    /// A photo's entry of the type 2, thumbnail, or 5, full resolution; without a name when
    /// that is null.
    QByteArray picture(int type, const StoredPicture &picture) const;

    /// A chunk mhod of the type 1, album name, or 3, file name, or of another one.
    QByteArray text(int type, const QString &text) const;
    QByteArray storedText(int type, int encoding, const QByteArray &text) const;

    /// Any chunk. For the total length of a list `numbers` has its count.
    QByteArray chunk(const QByteArray &tag, int headerLength,
                     const std::vector<ChunkNumber> &numbers, const QByteArray &content = {}) const;

private:
    int announced(int children) const;
    QByteArray content(const QByteArrayList &children) const;
    QByteArray list(const char *tag, const QByteArrayList &items) const;

    const PhotoDatabaseForm m_form;
};

#endif // PHOTOLIB_TESTS_APP_PHOTO_DATABASE_BYTES_H
