#include "sample/sqlite_handle.h"

#include "sample/sample_error.h"

#include <QFile>

#include <sqlite3.h>

namespace sample {

namespace {

struct Binder {
    sqlite3_stmt *handle;
    int position;

    int operator()(std::monostate) const { return sqlite3_bind_null(handle, position); }
    int operator()(qint64 value) const { return sqlite3_bind_int64(handle, position, value); }
    int operator()(double value) const { return sqlite3_bind_double(handle, position, value); }
    int operator()(const QString &value) const
    {
        const QByteArray utf8 = value.toUtf8();
        return sqlite3_bind_text(handle, position, utf8.constData(), utf8.size(), SQLITE_TRANSIENT);
    }
    int operator()(const QByteArray &value) const
    {
        return sqlite3_bind_blob(handle, position, value.constData(), value.size(),
                                 SQLITE_TRANSIENT);
    }
};

} // namespace

void Database::Closer::operator()(sqlite3 *handle) const
{
    sqlite3_close(handle);
}

Database::Database(const QString &path) : m_path(path)
{
    sqlite3 *handle = nullptr;
    // SQLite hands the name on to the system unchanged.
    const QByteArray name = QFile::encodeName(path);
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    const int result = sqlite3_open_v2(name.constData(), &handle, flags, nullptr);
    m_handle.reset(handle);
    if (result != SQLITE_OK)
        fail();
}

void Database::run(const QByteArray &sql)
{
    if (sqlite3_exec(handle(), sql.constData(), nullptr, nullptr, nullptr) != SQLITE_OK)
        fail();
}

void Database::closeKeepingLog()
{
    const int keep = SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE;
    if (sqlite3_db_config(handle(), keep, 1, nullptr) != SQLITE_OK)
        fail();
    m_handle.reset();
}

void Database::fail() const
{
    QString cause = QString::fromUtf8(sqlite3_errmsg(handle()));
    if (const int systemError = sqlite3_system_errno(handle()))
        cause += QStringLiteral(" (%1)").arg(qt_error_string(systemError));
    throw SampleError(QStringLiteral("cannot write %1: %2").arg(m_path, cause));
}

void Statement::Finalizer::operator()(sqlite3_stmt *handle) const
{
    sqlite3_finalize(handle);
}

Statement::Statement(const Database &database, const QByteArray &sql) : m_database(database)
{
    sqlite3_stmt *handle = nullptr;
    const int result =
        sqlite3_prepare_v2(database.handle(), sql.constData(), sql.size(), &handle, nullptr);
    m_handle.reset(handle);
    if (result != SQLITE_OK)
        database.fail();
}

void Statement::bind(int position, const Value &value)
{
    if (std::visit(Binder{m_handle.get(), position}, value) != SQLITE_OK)
        m_database.fail();
}

void Statement::run()
{
    const int result = sqlite3_step(m_handle.get());
    if (result != SQLITE_DONE && result != SQLITE_ROW)
        m_database.fail();
    if (sqlite3_reset(m_handle.get()) != SQLITE_OK)
        m_database.fail();
}

} // namespace sample
