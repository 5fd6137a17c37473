#ifndef PHOTOLIB_CATALOG_JOIN_TABLE_H
#define PHOTOLIB_CATALOG_JOIN_TABLE_H

#include "catalog/library_tables.h"

#include <QByteArray>

#include <map>
#include <optional>

/// The numbers of the library's kinds of rows, which differ between the versions of the system and
/// are part of the names of tables and columns.
class EntityNumbers
{
public:
    explicit EntityNumbers(LibraryTables &tables);

    /// Nothing where `entity`, "Album" say, has no number.
    std::optional<qint64> of(const QByteArray &entity) const;

    /// The highest id that the library says it has given to a row of `entity`; 0 where it does not
    /// say.
    qint64 highestId(const QByteArray &entity) const;

private:
    struct Entity {
        qint64 number;
        qint64 highestId;
    };

    std::map<QByteArray, Entity> m_entities;
};

/// A table whose rows each say that two rows of others belong together.
struct FoundJoin {
    QByteArray table; ///< empty for none
    QByteArray owner; ///< the column of an album, or of the additional attributes
    QByteArray item;  ///< the column of an asset, or of a keyword
};

/// The table of albums and their photos. Told when it is missing.
FoundJoin albumJoinTable(LibraryTables &tables, const EntityNumbers &numbers);

/// The table of additional attributes and their keywords. Told when it is missing.
FoundJoin keywordJoinTable(LibraryTables &tables, const EntityNumbers &numbers);

#endif // PHOTOLIB_CATALOG_JOIN_TABLE_H
