#ifndef PHOTOLIB_CAMERADB_SQLITE_CONNECTION_H
#define PHOTOLIB_CAMERADB_SQLITE_CONNECTION_H

#include "cameradb/temp_file_limit.h"

#include <QString>
#include <QtGlobal>

#include <sqlite3.h>

/// Owns one connection to a copied Photos.sqlite, set up for reading a file that comes
/// from a device and can not be trusted.
///
/// The statements on one connection share an allowance of work and of processor time in proportion
/// to the file's size: honest databases use a small part of it, and one made to run for
/// ever (a view over an endless query, say) ends with an error instead. No statement compiles
/// where the views are more than a few short ones. Sorting writes no more to temporary files
/// than honest databases of that size need.
class sqlite_connection
{
public:
    explicit sqlite_connection(const QString &path);
    ~sqlite_connection();

    sqlite_connection(const sqlite_connection &) = delete;
    sqlite_connection &operator=(const sqlite_connection &) = delete;

    bool isOpen() const { return m_result == SQLITE_OK; }
    sqlite3 *get() const { return m_db; }

private:
    void setUp();
    void limitWork();
    void limitValues(qint64 bytes);
    static int isExhausted(void *connection);

    temp_file_limit m_tempFiles; // the connection's, which is closed before it goes
    sqlite3 *m_db;
    int m_result;
    qint64 m_stepsLeft; // in units of `progressStep` instructions
    qint64 m_deadline;  // in the thread's processor time
};

#endif // PHOTOLIB_CAMERADB_SQLITE_CONNECTION_H
