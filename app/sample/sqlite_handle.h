#ifndef PHOTOLIB_SAMPLE_SQLITE_HANDLE_H
#define PHOTOLIB_SAMPLE_SQLITE_HANDLE_H

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <memory>
#include <string>
#include <variant>

struct sqlite3;
struct sqlite3_stmt;

namespace sample {

/// One value of a row: NULL, an integer, a real, text or a blob.
using Value = std::variant<std::monostate, qint64, double, QString, QByteArray>;

/// A database connection. All operations throw SampleError on failure.
class Database
{
public:
    explicit Database(const QString &path);

    /// Runs statements that yield no rows of interest.
    void run(const QByteArray &sql);
    sqlite3 *handle() const { return m_handle.get(); }

    /// Closes the connection without moving its write-ahead log into the main file, and
    /// leaves the log where it is. Its statements must be gone.
    void closeKeepingLog();

    /// Throws a SampleError with the connection's last message.
    [[noreturn]] void fail() const;

private:
    struct Closer {
        void operator()(sqlite3 *handle) const;
    };
    QString m_path;
    std::unique_ptr<sqlite3, Closer> m_handle;
};

/// A prepared statement; its database must outlive it.
class Statement
{
public:
    Statement(const Database &database, const QByteArray &sql);

    /// `position` counts from 1. Text and blobs are copied.
    void bind(int position, const Value &value);
    /// Runs the statement with what is bound, and makes it ready for the next values.
    void run();

private:
    struct Finalizer {
        void operator()(sqlite3_stmt *handle) const;
    };
    const Database &m_database;
    std::unique_ptr<sqlite3_stmt, Finalizer> m_handle;
};

} // namespace sample

#endif // PHOTOLIB_SAMPLE_SQLITE_HANDLE_H
