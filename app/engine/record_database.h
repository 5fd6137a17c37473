#ifndef PHOTOLIB_ENGINE_RECORD_DATABASE_H
#define PHOTOLIB_ENGINE_RECORD_DATABASE_H

#include <QByteArray>
#include <QtGlobal>

#include <memory>

class CancelToken;
struct sqlite3;
struct sqlite3_stmt;

/// A connection to the SQLite database of a record of an export, which no other connection can use
/// meanwhile. Its schema runs nothing: triggers and views are off.
///
/// Everything throws Error, of the kind Damaged where that is the cause.
class RecordDatabase
{
public:
    /// Opens `path`, which must not be or lead through a link, and makes an empty database where
    /// there is none. Messages call it `name`.
    RecordDatabase(const QByteArray &path, const QByteArray &name);

    /// Has statements end with an Error of the kind Cancelled once `cancel`, which must outlive the
    /// object, is cancelled.
    void endWith(const CancelToken &cancel) const;

    sqlite3 *handle() const { return m_handle.get(); }
    QByteArray name() const { return m_name; }

    /// Runs statements whose rows are of no interest.
    void run(const char *sql) const;

    /// The first value of the first row, which must be there.
    qint64 number(const char *sql) const;

    /// Throws what the last operation of the connection failed with.
    [[noreturn]] void fail() const;

    /// Throws that it is damaged.
    [[noreturn]] void failDamaged(const QByteArray &cause) const;

private:
    struct Closer {
        void operator()(sqlite3 *handle) const;
    };

    void open(const QByteArray &path);
    void configure() const;

    const QByteArray m_name;
    std::unique_ptr<sqlite3, Closer> m_handle;
};

/// A prepared statement of a database, which must outlive it. Throws like that.
class RecordStatement
{
public:
    RecordStatement(const RecordDatabase &database, const char *sql);

    /// Binds the next of the values, from the first one on after `nextRow` has returned false. A
    /// text must live until then, and may be any bytes.
    RecordStatement &bind(const QByteArray &text);
    RecordStatement &bind(qint64 number);

    /// Steps to the next row; false after the last one, and the statement can be used again.
    bool nextRow();

    /// Runs a statement without rows.
    void run();

    /// The value of a column of the row, counted from 0; one of another type is damage.
    QByteArray text(int column) const;
    qint64 number(int column) const;

private:
    struct Finalizer {
        void operator()(sqlite3_stmt *handle) const;
    };

    void requireType(int column, int type) const;

    const RecordDatabase &m_database;
    std::unique_ptr<sqlite3_stmt, Finalizer> m_handle;
    int m_bound = 0;
};

/// A transaction, which is undone at the end of the object unless it was committed.
class RecordTransaction
{
public:
    explicit RecordTransaction(const RecordDatabase &database);
    ~RecordTransaction();

    RecordTransaction(const RecordTransaction &) = delete;
    RecordTransaction &operator=(const RecordTransaction &) = delete;

    void commit();

private:
    const RecordDatabase &m_database;
    bool m_isOpen = true;
};

#endif // PHOTOLIB_ENGINE_RECORD_DATABASE_H
