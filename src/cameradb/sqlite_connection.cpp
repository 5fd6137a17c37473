#include "cameradb/sqlite_connection.h"

#include "cameradb/bounded_prepare.h"
#include "cameradb/read_limits.h"

#include <QByteArray>
#include <QtGlobal>

#include <ctime>

namespace {

// Instructions of SQLite's virtual machine between two looks at the allowances: so few that
// a run of those that work on long texts is noticed.
const int progressStep = 1000;

// Reading a library takes about seven instructions a byte of its file.
const qint64 instructionsPerByte = 32;
const qint64 instructionsAlways = 20000000;

// Single instructions can be made slow. A library is read at tens of megabytes a second.
const qint64 bytesPerMillisecond = 1024;
const qint64 millisecondsAlways = 20000;

// The processor time of this thread: a slow disk or a stopped process must not cut an
// honest library short. 0 where the system does not tell; the instructions still count.
qint64 threadMilliseconds()
{
#if defined(CLOCK_THREAD_CPUTIME_ID)
    timespec now = {};
    if (clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now) == 0)
        return static_cast<qint64>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
#endif
    return 0;
}

// No text or blob of a photo database comes near it, nor does one of a short file come near
// the shorter one.
const qint64 longestValue = 16777216;
const qint64 longestValueOfShortFile = 1048576;

// Our own statements take a tenth of each. Expressions nest on the stack; a column that is
// made of others has their instructions each time; and a pattern is tried at each character.
const int deepestExpression = 100;
const int mostInstructions = 25000;
const int longestPattern = 64;

} // namespace

sqlite_connection::sqlite_connection(const QString &path)
    : m_db(nullptr), m_result(m_tempFiles.open(path.toUtf8().constData(), &m_db)), m_stepsLeft(0),
      m_deadline(0)
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
    limitWork();
}

// The files' own sizes count: what the database says of itself may be a lie.
void sqlite_connection::limitWork()
{
    // A first look opens the write-ahead log; its outcome is for the queries to tell.
    sqlite3_exec(m_db, "PRAGMA schema_version", nullptr, nullptr, nullptr);
    const qint64 bytes = databaseBytes(m_db);
    m_stepsLeft = (bytes * instructionsPerByte + instructionsAlways) / progressStep;
    m_deadline = threadMilliseconds() + bytes / bytesPerMillisecond + millisecondsAlways;
    sqlite3_progress_handler(m_db, progressStep, isExhausted, this);
    m_tempFiles.allowFor(bytes);
    limitValues(bytes);
}

void sqlite_connection::limitValues(qint64 bytes)
{
    const qint64 longest = qBound(longestValueOfShortFile, 2 * bytes, longestValue);
    sqlite3_limit(m_db, SQLITE_LIMIT_LENGTH, static_cast<int>(longest));
    sqlite3_limit(m_db, SQLITE_LIMIT_EXPR_DEPTH, deepestExpression);
    sqlite3_limit(m_db, SQLITE_LIMIT_VDBE_OP, mostInstructions);
    sqlite3_limit(m_db, SQLITE_LIMIT_LIKE_PATTERN_LENGTH, longestPattern);
    // No statement compiles then, whatever it reads.
    if (!hasSimpleSchema(m_db))
        sqlite3_limit(m_db, SQLITE_LIMIT_SQL_LENGTH, 1);
}

int sqlite_connection::isExhausted(void *connection)
{
    sqlite_connection *self = static_cast<sqlite_connection *>(connection);
    return --self->m_stepsLeft < 0 || threadMilliseconds() > self->m_deadline;
}
