#ifndef PHOTOLIB_CATALOG_LIBRARY_TABLES_H
#define PHOTOLIB_CATALOG_LIBRARY_TABLES_H

#include "base/cancel_token.h"
#include "catalog/catalog.h"
#include "sqlite/sqlite_connection.h"

#include <QByteArray>
#include <QString>

#include <map>
#include <vector>

/// The local copy of a library's database, open for one reading of it: which tables and columns
/// it has. What is looked for and not there, or cannot be read, is told in the catalog.
///
/// For one thread.
class LibraryTables
{
public:
    /// Opens `database`. Throws Error of the kind Damaged when it has no schema that can be read.
    /// `cancel`, which must be for this reading only, and `catalog` must outlive the object.
    LibraryTables(const QString &database, CancelToken &cancel, Catalog &catalog);

    LibraryTables(const LibraryTables &) = delete;
    LibraryTables &operator=(const LibraryTables &) = delete;

    sqlite3 *db() const { return m_connection.get(); }

    bool has(const QByteArray &table) const;

    /// How many of `expected` rows to make room for: what the files cannot hold is no reason to.
    std::size_t roomFor(qint64 expected) const;

    /// All names, ascending.
    const std::vector<QByteArray> &names() const { return m_names; }

    /// The columns of a table as they are declared; none of a table that is not there or cannot be
    /// read, which is told once.
    const std::vector<QByteArray> &columns(const QByteArray &table);

    bool hasColumn(const QByteArray &table, const QByteArray &column);

    /// `name` is a table, "TABLE", or a column, "TABLE.COLUMN".
    void tellMissing(const QByteArray &name);

    void tellUnread(const QByteArray &table, const QByteArray &cause);

    /// Tells that a statement on `table` ended with `result`, which is an error of SQLite's. Throws
    /// instead when the reading is cancelled or memory has run out.
    void tellFailure(const QByteArray &table, int result);

    /// Throws Error of the kind Cancelled when the reading is.
    void throwIfCancelled() const
    {
        if (m_cancel.isCancelled())
            throwCancelled();
    }

private:
    [[noreturn]] static void throwCancelled();
    void readNames(const QString &database);
    std::vector<QByteArray> columnsOf(const QByteArray &table);

    Catalog &m_catalog;
    CancelToken &m_cancel;
    const sqlite_connection m_connection;
    const CancelHook m_hook; // ends a statement
    std::vector<QByteArray> m_names;
    std::map<QByteArray, std::vector<QByteArray>> m_columns; // of the tables that were asked for
};

#endif // PHOTOLIB_CATALOG_LIBRARY_TABLES_H
