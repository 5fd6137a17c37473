#include "engine/record_database.h"

#include "base/cancel_token.h"
#include "base/error.h"
#include "base/unique_fd.h"

#include <sqlite3.h>

#include <fcntl.h>
#include <string>
#include <system_error>
#include <utility>

namespace {

constexpr int longestValue = 1 << 20; // bytes; the longest path has 4096

// What the schema of a file may carry besides tables is not run.
constexpr std::pair<int, int> settings[] = {
    {SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0},
    {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},
    {SQLITE_DBCONFIG_DEFENSIVE, 1},
    {SQLITE_DBCONFIG_ENABLE_VIEW, 0},
    {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0},
};

bool isDamage(int result)
{
    return result == SQLITE_CORRUPT || result == SQLITE_NOTADB;
}

// Whether the disk has the locks that SQLite takes. Makes the file where there is none. The process
// must not have it open, for it would lose its locks.
bool hasLocks(const QByteArray &path)
{
    constexpr int flags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    const UniqueFd fd(::open(path.constData(), flags, 0666));
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    return !fd.isOpen() || ::fcntl(fd.get(), F_GETLK, &lock) == 0;
}

} // namespace

void RecordDatabase::Closer::operator()(sqlite3 *handle) const
{
    sqlite3_close(handle);
}

RecordDatabase::RecordDatabase(const QByteArray &path, const QByteArray &name) : m_name(name)
{
    open(path);
    configure();
}

void RecordDatabase::open(const QByteArray &path)
{
    constexpr int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOFOLLOW;
    const char *const withoutLocks = "unix-none"; // one of SQLite's own
    const char *const files = hasLocks(path) ? nullptr : withoutLocks;
    sqlite3 *handle = nullptr;
    const int result = sqlite3_open_v2(path.constData(), &handle, flags, files);
    m_handle.reset(handle);
    if (result != SQLITE_OK)
        fail();
}

// A connection that nobody shares the database with needs no shared memory for the log, which disks
// on a network cannot give.
void RecordDatabase::configure() const
{
    for (const auto &[setting, value] : settings) {
        if (sqlite3_db_config(handle(), setting, value, nullptr) != SQLITE_OK)
            fail();
    }
    sqlite3_limit(handle(), SQLITE_LIMIT_LENGTH, longestValue);
    // A mapped file that is cut short ends the process.
    run("PRAGMA locking_mode = EXCLUSIVE; PRAGMA cell_size_check = ON; PRAGMA mmap_size = 0");
}

void RecordDatabase::endWith(const CancelToken &cancel) const
{
    constexpr int interval = 1000; // instructions of SQLite's virtual machine
    const auto isCancelled = [](void *token) {
        return static_cast<const CancelToken *>(token)->isCancelled() ? 1 : 0;
    };
    sqlite3_progress_handler(handle(), interval, isCancelled, const_cast<CancelToken *>(&cancel));
}

void RecordDatabase::run(const char *sql) const
{
    if (sqlite3_exec(handle(), sql, nullptr, nullptr, nullptr) != SQLITE_OK)
        fail();
}

qint64 RecordDatabase::number(const char *sql) const
{
    RecordStatement statement(*this, sql);
    if (!statement.nextRow())
        failDamaged("a value is missing");
    return statement.number(0);
}

void RecordDatabase::fail() const
{
    const int result = sqlite3_errcode(handle());
    if (isDamage(result))
        failDamaged(sqlite3_errmsg(handle()));
    if (result == SQLITE_INTERRUPT)
        throw Error(Error::Cancelled, "interrupted");
    if (result == SQLITE_BUSY)
        throw Error(m_name.toStdString(), "is open in another program");
    std::string cause = sqlite3_errmsg(handle());
    const int systemError = sqlite3_system_errno(handle());
    if (result != SQLITE_ERROR && systemError != 0)
        cause += " (" + std::generic_category().message(systemError) + ')';
    throw Error(m_name.toStdString(), cause);
}

void RecordDatabase::failDamaged(const QByteArray &cause) const
{
    throw Error(Error::Damaged, m_name.toStdString() + ": is damaged: " + cause.toStdString());
}

void RecordStatement::Finalizer::operator()(sqlite3_stmt *handle) const
{
    sqlite3_finalize(handle);
}

RecordStatement::RecordStatement(const RecordDatabase &database, const char *sql)
    : m_database(database)
{
    sqlite3_stmt *handle = nullptr;
    const int result = sqlite3_prepare_v2(database.handle(), sql, -1, &handle, nullptr);
    m_handle.reset(handle);
    if (result != SQLITE_OK)
        database.fail();
}

RecordStatement &RecordStatement::bind(const QByteArray &text)
{
    // A null pointer, which an empty text may have, would be NULL.
    const char *const bytes = text.isEmpty() ? "" : text.constData();
    if (sqlite3_bind_text(m_handle.get(), ++m_bound, bytes, text.size(), SQLITE_STATIC) !=
        SQLITE_OK)
        m_database.fail();
    return *this;
}

RecordStatement &RecordStatement::bind(qint64 number)
{
    if (sqlite3_bind_int64(m_handle.get(), ++m_bound, number) != SQLITE_OK)
        m_database.fail();
    return *this;
}

bool RecordStatement::nextRow()
{
    const int result = sqlite3_step(m_handle.get());
    if (result == SQLITE_ROW)
        return true;
    m_bound = 0;
    if (sqlite3_reset(m_handle.get()) != SQLITE_OK)
        m_database.fail();
    return false;
}

void RecordStatement::run()
{
    while (nextRow()) {
    }
}

void RecordStatement::requireType(int column, int type) const
{
    if (sqlite3_column_type(m_handle.get(), column) != type)
        m_database.failDamaged("a value is of the wrong type");
}

QByteArray RecordStatement::text(int column) const
{
    requireType(column, SQLITE_TEXT);
    const auto *const bytes =
        static_cast<const char *>(sqlite3_column_blob(m_handle.get(), column));
    return QByteArray(bytes, sqlite3_column_bytes(m_handle.get(), column));
}

qint64 RecordStatement::number(int column) const
{
    requireType(column, SQLITE_INTEGER);
    return sqlite3_column_int64(m_handle.get(), column);
}

RecordTransaction::RecordTransaction(const RecordDatabase &database) : m_database(database)
{
    m_database.run("BEGIN IMMEDIATE");
}

RecordTransaction::~RecordTransaction()
{
    if (m_isOpen)
        sqlite3_exec(m_database.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
}

void RecordTransaction::commit()
{
    m_database.run("COMMIT");
    m_isOpen = false;
}
