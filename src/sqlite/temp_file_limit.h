#ifndef PHOTOLIB_SQLITE_TEMP_FILE_LIMIT_H
#define PHOTOLIB_SQLITE_TEMP_FILE_LIMIT_H

#include <QtGlobal>

#include <sqlite3.h>

#include <atomic>

/// Bounds what SQLite writes to temporary files for one connection. What does not fit into
/// its caches while it sorts goes there, and a database of a few megabytes can be made to
/// sort rows without number, each with a text of a megabyte: the host's disk would be full
/// long before an allowance of work ends it.
///
/// It stands between the connection and the files of SQLite's default VFS: a write to a
/// temporary file that is beyond the budget fails with SQLITE_FULL, as on a full disk. All
/// other files are the default's own. It must outlive its connection.
class temp_file_limit
{
public:
    temp_file_limit();

    temp_file_limit(const temp_file_limit &) = delete;
    temp_file_limit &operator=(const temp_file_limit &) = delete;

    /// Like `sqlite3_open`, with the limit in force and for one thread at a time; without one
    /// where SQLite has no default VFS or does not take another.
    int open(const char *path, sqlite3 **db);

    /// Whether `db` was opened through a limit of its own, and so for a device's file.
    static bool isBehind(sqlite3 *db);

    /// Raises the budget for a database whose files have `databaseBytes`. Before, it is
    /// that of an empty one.
    void allowFor(qint64 databaseBytes);

    /// What may still be written.
    qint64 bytesLeft() const { return m_left.load(std::memory_order_relaxed); }

private:
    struct temp_file;
    template <auto method>
    struct forwarded;
    template <auto method>
    struct forwarded_to_file;

    static temp_file_limit *of(sqlite3_vfs *vfs);
    static int openFile(sqlite3_vfs *vfs, const char *name, sqlite3_file *file, int flags,
                        int *outFlags);
    static sqlite3_io_methods fileMethods();
    int openTemporary(const char *name, sqlite3_file *file, int flags, int *outFlags);
    void forwardMethods();
    bool spend(qint64 bytes);
    void giveBack(qint64 bytes);

    sqlite3_vfs *m_default;
    sqlite3_vfs m_vfs;
    char m_name[40];
    // SQLite can be set up to sort in threads of its own.
    std::atomic<qint64> m_left;
};

#endif // PHOTOLIB_SQLITE_TEMP_FILE_LIMIT_H
