#ifndef PHOTOLIB_CAMERADB_READ_LIMITS_H
#define PHOTOLIB_CAMERADB_READ_LIMITS_H

#include <QtGlobal>

struct sqlite3;

/// A database that comes from a device may be made to yield far more than it holds, by
/// endless views or by values that share their bytes. What is read from it is therefore
/// held against the size of its files.

/// The bytes of the local files behind `db`, which must have been read from, or its
/// write-ahead log does not count; 0 for a database in memory.
qint64 databaseBytes(sqlite3 *db);

/// What one query may keep: all that the database's files can honestly hold, and some
/// more. A database in memory did not come from a device and is not limited.
class row_allowance
{
public:
    explicit row_allowance(sqlite3 *db);

    /// Counts one more row with `bytes` of texts and uuids.
    void spend(qint64 bytes);

    bool isExhausted() const { return m_left < 0; }

private:
    bool m_isLimited;
    qint64 m_left; // bytes
};

#endif // PHOTOLIB_CAMERADB_READ_LIMITS_H
