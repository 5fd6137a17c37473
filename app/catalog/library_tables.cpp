#include "catalog/library_tables.h"

#include "base/error.h"
#include "sqlite/row_allowance.h"
#include "sqlite/sqlite_statement.h"

#include <algorithm>
#include <new>

namespace {

// Of the files, in a library as systems make them.
const qint64 leastBytesPerRow = 256;

[[noreturn]] void failToRead(const QString &database, const char *cause)
{
    throw Error(Error::Damaged, database.toStdString() + ": " + cause);
}

} // namespace

LibraryTables::LibraryTables(const QString &database, CancelToken &cancel, Catalog &catalog)
    : m_catalog(catalog), m_cancel(cancel), m_connection(database),
      m_hook(cancel, [this] { sqlite3_interrupt(m_connection.get()); })
{
    if (!m_connection.isOpen())
        failToRead(database, "cannot be opened");
    readNames(database);
}

// Files that were migrated keep old numbers in the names of indexes, hence the type.
void LibraryTables::readNames(const QString &database)
{
    sqlite_statement statement(db(), "SELECT name FROM sqlite_master WHERE type = 'table'");
    while (statement.isPrepared() && statement.nextRow()) {
        if (const char *name = statement.text(0))
            m_names.emplace_back(name);
    }
    const int result = statement.isPrepared() ? statement.finish() : statement.result();
    throwIfCancelled();
    if (result == SQLITE_NOMEM)
        throw std::bad_alloc();
    if (result != SQLITE_OK)
        failToRead(database, sqlite3_errstr(result));
    std::sort(m_names.begin(), m_names.end());
}

bool LibraryTables::has(const QByteArray &table) const
{
    return std::binary_search(m_names.begin(), m_names.end(), table);
}

std::size_t LibraryTables::roomFor(qint64 expected) const
{
    const qint64 most = databaseBytes(db()) / leastBytesPerRow;
    return static_cast<std::size_t>(qBound(qint64(0), expected, most));
}

const std::vector<QByteArray> &LibraryTables::columns(const QByteArray &table)
{
    const auto known = m_columns.find(table);
    if (known != m_columns.end())
        return known->second;
    return m_columns.emplace(table, columnsOf(table)).first->second;
}

std::vector<QByteArray> LibraryTables::columnsOf(const QByteArray &table)
{
    std::vector<QByteArray> columns;
    if (!has(table))
        return columns;
    const sqlite_statement statement(db(), ("SELECT * FROM " + table).constData());
    if (!statement.isPrepared()) {
        tellFailure(table, statement.result());
        return columns;
    }
    const int count = sqlite3_column_count(statement.get());
    for (int column = 0; column < count; ++column) {
        const char *name = sqlite3_column_name(statement.get(), column);
        if (!name)
            throw std::bad_alloc();
        columns.emplace_back(name);
    }
    return columns;
}

bool LibraryTables::hasColumn(const QByteArray &table, const QByteArray &column)
{
    const std::vector<QByteArray> &all = columns(table);
    return std::find(all.begin(), all.end(), column) != all.end();
}

void LibraryTables::tellMissing(const QByteArray &name)
{
    m_catalog.missing.push_back(name);
}

void LibraryTables::tellUnread(const QByteArray &table, const QByteArray &cause)
{
    m_catalog.unread.push_back({table, cause});
}

void LibraryTables::tellFailure(const QByteArray &table, int result)
{
    throwIfCancelled();
    if (result == SQLITE_NOMEM)
        throw std::bad_alloc();
    const char *const cause = sqlite3_errmsg(db());
    tellUnread(table, sqlite3_errcode(db()) == result && cause ? cause : sqlite3_errstr(result));
}

void LibraryTables::throwCancelled()
{
    throw Error(Error::Cancelled, "interrupted");
}
