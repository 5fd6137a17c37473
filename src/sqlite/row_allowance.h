#ifndef PHOTOLIB_SQLITE_ROW_ALLOWANCE_H
#define PHOTOLIB_SQLITE_ROW_ALLOWANCE_H

#include <QtGlobal>

struct sqlite3;

/// The bytes of the local files behind `db`, which must have been read from, or its
/// write-ahead log does not count; 0 for a database in memory.
qint64 databaseBytes(sqlite3 *db);

/// What one query may keep of a device's database, whose rows may share their bytes and so be
/// far more than the files hold: all that the files can honestly hold, and some more. Only a
/// `sqlite_connection` is limited; any other is its caller's own.
class row_allowance
{
public:
    explicit row_allowance(sqlite3 *db);

    /// Counts one more row with `bytes` of texts and uuids, whether it is kept or not.
    void spend(qint64 bytes);

    bool isExhausted() const { return m_left < 0; }

private:
    bool m_isLimited;
    qint64 m_left; // bytes
};

#endif // PHOTOLIB_SQLITE_ROW_ALLOWANCE_H
