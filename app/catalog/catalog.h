#ifndef PHOTOLIB_CATALOG_CATALOG_H
#define PHOTOLIB_CATALOG_CATALOG_H

#include "catalog/album.h"
#include "catalog/asset.h"
#include "catalog/person.h"

#include <QByteArray>
#include <QString>

#include <vector>

class CancelToken;

/// A table that could not be read to its end.
struct UnreadTable {
    QByteArray table; ///< its name
    QByteArray cause; ///< in SQLite's words
};

/// All that a photo library tells of its photos, videos, albums and people: plain values, which
/// any number of threads may read.
struct Catalog {
    std::vector<Asset> assets; ///< photos and videos by id, those in the trash and shared ones too
    std::vector<Album>
        albums; ///< those that a person knows of and that are not in the trash, by id
    std::vector<Person> people; ///< by id

    /// The tables and columns that the library does not have, "ZASSET.ZFAVORITE": what they would
    /// tell is not known.
    std::vector<QByteArray> missing;

    /// What could not be read although the library has it: all of the above is only a part then.
    std::vector<UnreadTable> unread;

    /// The photo or video with this id; null when there is none. Quick.
    const Asset *asset(qint64 id) const;

    /// The listed album with this id; null when there is none. Quick.
    const Album *album(qint64 id) const;
};

/// Reads the local copy `database` of a Photos.sqlite, on the calling thread and another one of its
/// own, which has ended when it returns. Tables and columns are looked for, so that a library of
/// any version is read as far as it goes. Throws Error, of the kind Damaged when it is not a
/// database or has no photos' table, and of the kind Cancelled soon after `cancel` is. What the
/// files hold bounds the memory that it takes.
Catalog readCatalog(const QString &database, CancelToken &cancel);

#endif // PHOTOLIB_CATALOG_CATALOG_H
