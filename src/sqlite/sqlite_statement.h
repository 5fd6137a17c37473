#ifndef PHOTOLIB_SQLITE_STATEMENT_H
#define PHOTOLIB_SQLITE_STATEMENT_H

#include <sqlite3.h>

/// Owns one statement of a connection, from prepare to finalize. For the connection's thread.
class sqlite_statement
{
public:
    /// Prepares all of `sql`, which is not needed afterwards. `db` must outlive the statement.
    sqlite_statement(sqlite3 *db, const char *sql)
        : m_stmt(nullptr), m_result(sqlite3_prepare(db, sql, -1, &m_stmt, nullptr))
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

    /// Ends the statement: SQLITE_OK when its last step had no error.
    int finish()
    {
        sqlite3_stmt *const ended = m_stmt;
        m_stmt = nullptr;
        return sqlite3_finalize(ended);
    }

    /// Null unless prepared.
    sqlite3_stmt *get() const { return m_stmt; }

    /// The bytes of a column as a text that ends with a NUL; null for NULL and when memory runs
    /// out. Valid until the next row.
    const char *text(int column) const
    {
        return reinterpret_cast<const char *>(sqlite3_column_text(m_stmt, column));
    }

private:
    sqlite3_stmt *m_stmt;
    int m_result;
};

#endif // PHOTOLIB_SQLITE_STATEMENT_H
