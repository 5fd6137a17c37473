#include "cameradb/sqlite_connection.h"

#include "cameradb/sqlite_statement.h"

#include <QByteArray>

namespace {

// Instructions of SQLite's virtual machine between two looks at the allowance.
const int progressStep = 10000;

// Reading a library takes about seven instructions a byte of its file.
const qint64 instructionsPerByte = 32;
const qint64 instructionsAlways = 20000000;

// No text or blob of a photo database comes near it.
const int longestValue = 64 * 1024 * 1024;

} // namespace

sqlite_connection::sqlite_connection(const QString &path)
    : m_db(nullptr), m_result(sqlite3_open(path.toUtf8().constData(), &m_db)), m_allowance(0)
{
    if (isOpen())
        setUp();
}

sqlite_connection::~sqlite_connection()
{
    sqlite3_close(m_db);
}

void sqlite_connection::setUp()
{
#ifdef SQLITE_DBCONFIG_DQS_DML
    // The statements write some literals in double quotes, which builds may refuse.
    sqlite3_db_config(m_db, SQLITE_DBCONFIG_DQS_DML, 1, nullptr);
    sqlite3_db_config(m_db, SQLITE_DBCONFIG_DQS_DDL, 1, nullptr);
#endif
#ifdef SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE
    // The journals stay beside the copy as they came from the device.
    sqlite3_db_config(m_db, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
#endif
    sqlite3_limit(m_db, SQLITE_LIMIT_LENGTH, longestValue);

    const qint64 bytes = pragma("PRAGMA page_count") * pragma("PRAGMA page_size");
    m_allowance = (bytes * instructionsPerByte + instructionsAlways) / progressStep;
    sqlite3_progress_handler(m_db, progressStep, isExhausted, this);
}

// SQLite bounds both numbers asked for here, so their product fits easily.
qint64 sqlite_connection::pragma(const char *sql) const
{
    sqlite_statement statement(m_db, sql);
    if (!statement.isPrepared() || !statement.nextRow())
        return 0;
    return sqlite3_column_int64(statement.get(), 0);
}

int sqlite_connection::isExhausted(void *connection)
{
    return --static_cast<sqlite_connection *>(connection)->m_allowance < 0;
}
