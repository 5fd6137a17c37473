#ifndef PHOTOLIB_CLASSIC_PHOTO_DATABASE_H
#define PHOTOLIB_CLASSIC_PHOTO_DATABASE_H

#include "classic/stored_picture.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QVector>

/// A classic iPod's photo database: the device's folder for photos, and the database in it.
constexpr char photosFolderPath[] = "/Photos";
constexpr char photoDatabasePath[] = "/Photos/Photo Database";

/// One photo of the database.
struct ClassicPhoto {
    quint32 id = 0;

    /// When it was taken, in seconds since 1904-01-01 00:00:00 by the device's own clock,
    /// whose time zone the database does not tell; 0 when it is not recorded.
    quint32 taken = 0;

    /// The stored pictures, in the database's order, without the full-resolution file. Names
    /// and numbers are as the database has them; widths, heights and paddings may be negative.
    QList<StoredPicture> variants;

    /// The full-resolution file in colon-separated form, ":Full Resolution:2005:08:06:x.jpg";
    /// empty when the database names none.
    QString originalName;
};

/// One album of the database.
struct ClassicAlbum {
    quint32 id = 0;
    QString name;
    int type = 0;            ///< as stored: 1 the library itself, 2 an album of the user's
    QList<quint32> photoIDs; ///< in album order, as stored
};

/// What a photo database holds, in its order.
struct ClassicLibrary {
    QVector<ClassicPhoto> photos; ///< each id once: of several photos with one id the first
    QVector<ClassicAlbum> albums; ///< likewise
};

/// Reads a "Photo Database" file, little- or big-endian, given as its bytes.
///
/// The bytes are not trusted: every length and count is held against the bytes that are
/// there, so time and memory are in proportion to them. Chunks of a kind that is not known
/// are skipped, and so is what follows the chunks that a header announces.
///
/// A stored picture that nothing could read is no damage but left out of `variants`: one
/// without a file name, with one that is longer than any path, of no bytes, of more than 64 MiB,
/// or beyond 2 GiB in its file, as `StoredPicture` counts. A full-resolution file without such a
/// name is none. A header that ends before the dates is one of a photo without them.
///
/// Returns false for a damaged file, fills `*error` with one line on what is wrong at which
/// offset, as in "the chunk mhii at offset 0x140 goes beyond the end of the chunk mhli at
/// offset 0xe4", and leaves `*library` as it was. Neither pointer may be null. May be called
/// on any thread; throws std::bad_alloc only.
bool readPhotoDatabase(const QByteArray &bytes, ClassicLibrary *library, QString *error);

#endif // PHOTOLIB_CLASSIC_PHOTO_DATABASE_H
