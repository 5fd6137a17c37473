#ifndef PHOTOLIB_CAMERADB_SQLITE_STATEMENT_H
#define PHOTOLIB_CAMERADB_SQLITE_STATEMENT_H

#include "cameradb/bounded_prepare.h"

#include <sqlite3.h>

/// Owns one statement of a connection, from prepare to finalize.
class sqlite_statement
{
public:
    sqlite_statement(sqlite3 *db, const char *sql)
        : m_stmt(nullptr), m_result(prepareBounded(db, sql, &m_stmt))
    {
    }

    ~sqlite_statement() { sqlite3_finalize(m_stmt); }

    sqlite_statement(const sqlite_statement &) = delete;
    sqlite_statement &operator=(const sqlite_statement &) = delete;

    /// SQLITE_OK, or why the statement did not prepare.
    int result() const { return m_result; }
    bool isPrepared() const { return m_result == SQLITE_OK; }

    /// Steps to the next row; false when there is none, for whatever reason.
    bool nextRow() { return sqlite3_step(m_stmt) == SQLITE_ROW; }

    sqlite3_stmt *get() const { return m_stmt; }

    /// The bytes of a column as a text that ends with a NUL; null for NULL. Valid until
    /// the next row.
    const char *text(int column) const
    {
        return reinterpret_cast<const char *>(sqlite3_column_text(m_stmt, column));
    }

private:
    sqlite3_stmt *m_stmt;
    int m_result;
};

#endif // PHOTOLIB_CAMERADB_SQLITE_STATEMENT_H
