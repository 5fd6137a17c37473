#ifndef PHOTOLIB_SQLITE_VALUE_LIMIT_H
#define PHOTOLIB_SQLITE_VALUE_LIMIT_H

#include <sqlite3.h>

/// While it exists, a statement of `db` that meets a text or blob of more than `bytes` ends with
/// SQLITE_TOOBIG. `db` must outlive it.
class value_limit
{
public:
    value_limit(sqlite3 *db, int bytes)
        : m_db(db), m_before(sqlite3_limit(db, SQLITE_LIMIT_LENGTH, bytes))
    {
    }

    ~value_limit() { sqlite3_limit(m_db, SQLITE_LIMIT_LENGTH, m_before); }

    value_limit(const value_limit &) = delete;
    value_limit &operator=(const value_limit &) = delete;

private:
    sqlite3 *m_db;
    int m_before;
};

#endif // PHOTOLIB_SQLITE_VALUE_LIMIT_H
