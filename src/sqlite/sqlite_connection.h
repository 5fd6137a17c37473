#ifndef PHOTOLIB_SQLITE_CONNECTION_H
#define PHOTOLIB_SQLITE_CONNECTION_H

#include "sqlite/temp_file_limit.h"

#include <QByteArray>
#include <QSet>
#include <QString>
#include <QtGlobal>

#include <sqlite3.h>

#include <memory>

/// Owns one connection to a local copy of a device's database, set up so that the file can only be
/// read as data.
///
/// A database file carries programs: views, triggers, generated columns, CHECK constraints,
/// indexes on expressions, virtual tables. Photo libraries are plain tables with plain columns, so
/// none of the others is let in:
/// - statements may SELECT, read columns of plain tables and of the schema, and call `like`; the
///   authorizer that sees to it stays for the connection's life, so it also sees what SQLite
///   compiles while a statement runs;
/// - every other function is replaced by one that fails, and every module of virtual tables
///   is dropped, which reaches what the schema calls as well;
/// - a statement that names any other table does not compile: SQLITE_AUTH for a table with CHECK
///   constraints or generated columns, SQLITE_ERROR for views and virtual tables.
///
/// No table can be read of a database whose write-ahead log claims far more pages than there are.
///
/// All statements share an allowance of work, of processor time and of temporary files in
/// proportion to the size of the database's files; beyond it they end with SQLITE_INTERRUPT or
/// SQLITE_FULL. The connection's own memory stays below four times the files and 68 MiB: see
/// `limitMemory`.
///
/// For one thread at a time.
class sqlite_connection
{
public:
    /// Opens `path`, and creates it when it is missing. What is wrong with the file is for the
    /// statements to tell.
    explicit sqlite_connection(const QString &path);

    sqlite_connection(const sqlite_connection &) = delete;
    sqlite_connection &operator=(const sqlite_connection &) = delete;

    /// False when the file cannot be opened or the connection cannot be made safe.
    bool isOpen() const { return m_result == SQLITE_OK; }

    /// Valid as long as this object.
    sqlite3 *get() const { return m_db.get(); }

private:
    struct closer {
        void operator()(sqlite3 *db) const { sqlite3_close(db); }
    };

    static sqlite3 *open(temp_file_limit &tempFiles, const QString &path, int &result);
    int setUp();
    int configure();
    void limitMemory();
    void limitWork();
    bool claimsTooManyPages() const;
    void findPlainTables();
    bool isReadable(const char *table, const char *database) const;
    bool isSchemaTooLarge() const;
    static int authorize(void *connection, int action, const char *first, const char *second,
                         const char *database, const char *trigger);
    static int isExhausted(void *connection);

    bool m_isSettingUp; // our own PRAGMAs are let through
    QSet<QByteArray> m_plainTables;
    qint64 m_stepsLeft;     // in units of `progressStep` instructions
    qint64 m_nextLook;      // in milliseconds of the clock
    qint64 m_deadline;      // in milliseconds of the thread's processor time
    qint64 m_largestSchema; // in bytes of memory
    int m_result;
    temp_file_limit m_tempFiles;
    // Closed first: the connection uses all of the above.
    std::unique_ptr<sqlite3, closer> m_db;
};

#endif // PHOTOLIB_SQLITE_CONNECTION_H
