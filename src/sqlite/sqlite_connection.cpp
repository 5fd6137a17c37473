#include "sqlite/sqlite_connection.h"

#include "sqlite/plain_table.h"
#include "sqlite/refused_functions.h"
#include "sqlite/row_allowance.h"
#include "sqlite/sqlite_statement.h"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <utility>

namespace {

// Instructions of SQLite's virtual machine between two looks at the allowances. One instruction
// handles values of at most `longestValue` bytes, about a millisecond's work.
const int progressStep = 100;

// Reading a library takes about seven instructions a byte of its file.
const qint64 instructionsPerByte = 32;
const qint64 instructionsAlways = 20000000;

// A library is read at tens of megabytes a second.
const qint64 bytesPerMillisecond = 1024;
const qint64 millisecondsAlways = 5000;

// Between two looks at the processor time and the schema's size, which cost more than the clock.
const qint64 millisecondsPerLook = 5;

// A name of a megabyte still fits. Counts for a whole row that is sorted, too.
const int longestValue = 1310720;

// The longest definition in a library has 4 KB. One takes up to a hundred bytes of memory for
// each two of its text.
const int longestDefinition = 65536;

// A library whose files were copied while it changed may lack some of its pages.
const qint64 claimedBytesPerFileByte = 2;

// Besides the file's own size: ten times what the schema of a library takes.
const qint64 schemaBytesAlways = 8388608;

// Expressions nest on the stack; our own do so eight deep.
const int deepestExpression = 100;

qint64 milliseconds(clockid_t clock)
{
    timespec now = {};
    if (clock_gettime(clock, &now) != 0)
        return 0;
    return static_cast<qint64>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

// A slow disk or a stopped process must not cut an honest library short.
qint64 processorTime()
{
    return milliseconds(CLOCK_THREAD_CPUTIME_ID);
}

// Without a system call, since it is looked at all the time.
qint64 clockTime()
{
#ifdef CLOCK_MONOTONIC_COARSE
    return milliseconds(CLOCK_MONOTONIC_COARSE);
#else
    return milliseconds(CLOCK_MONOTONIC);
#endif
}

qint64 numberOf(sqlite3 *db, const char *pragma)
{
    sqlite_statement statement(db, pragma);
    return statement.isPrepared() && statement.nextRow() ? sqlite3_column_int64(statement.get(), 0)
                                                         : 0;
}

int execute(sqlite3 *db, const char *sql)
{
    return sqlite3_exec(db, sql, nullptr, nullptr, nullptr);
}

} // namespace

sqlite_connection::sqlite_connection(const QString &path)
    : m_isSettingUp(true), m_stepsLeft(0), m_nextLook(0), m_deadline(0), m_largestSchema(0),
      m_result(SQLITE_ERROR), m_db(open(m_tempFiles, path, m_result))
{
    if (m_result == SQLITE_OK)
        m_result = setUp();
}

sqlite3 *sqlite_connection::open(temp_file_limit &tempFiles, const QString &path, int &result)
{
    sqlite3 *db = nullptr;
    result = tempFiles.open(path.toUtf8().constData(), &db);
    return db;
}

// Functions and modules go before the schema is read for the first time.
int sqlite_connection::setUp()
{
    const int configured = configure();
    if (configured != SQLITE_OK)
        return configured;
    const int refused = refuseFunctions(get());
    if (refused != SQLITE_OK)
        return refused;
    sqlite3_set_authorizer(get(), authorize, this);
    limitWork();
    limitMemory();
    findPlainTables();
    m_isSettingUp = false;
    return SQLITE_OK;
}

int sqlite_connection::configure()
{
    const std::pair<int, int> settings[] = {
        {SQLITE_DBCONFIG_ENABLE_FTS3_TOKENIZER, 0},
        {SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0},
        {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},
        {SQLITE_DBCONFIG_DEFENSIVE, 1},
        {SQLITE_DBCONFIG_ENABLE_VIEW, 0},
        {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0},
        // The statements write some literals in double quotes, which builds may refuse.
        {SQLITE_DBCONFIG_DQS_DML, 1},
        {SQLITE_DBCONFIG_DQS_DDL, 1},
        // The journals stay beside the copy as they came from the device.
        {SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1},
    };
    for (const std::pair<int, int> &setting : settings) {
        int now = -1;
        const int result = sqlite3_db_config(get(), setting.first, setting.second, &now);
        if (result != SQLITE_OK || now != setting.second)
            return SQLITE_ERROR;
    }
    const int dropped = sqlite3_drop_modules(get(), nullptr);
    if (dropped != SQLITE_OK)
        return dropped;
    // A mapped file that is cut short ends the process.
    return execute(get(), "PRAGMA cell_size_check = ON; PRAGMA mmap_size = 0");
}

// The files' own sizes count: what the database says of itself may be a lie.
void sqlite_connection::limitWork()
{
    // A first look opens the write-ahead log; its outcome is for the queries to tell.
    execute(get(), "PRAGMA schema_version");
    const qint64 bytes = databaseBytes(get());
    m_stepsLeft = (bytes * instructionsPerByte + instructionsAlways) / progressStep;
    m_deadline = processorTime() + bytes / bytesPerMillisecond + millisecondsAlways;
    m_largestSchema = bytes + schemaBytesAlways;
    sqlite3_progress_handler(get(), progressStep, isExhausted, this);
    m_tempFiles.allowFor(bytes);
}

// SQLite knows no limit of memory for one connection, so these add up to one. With files of F
// bytes: the schema F + 8 MiB; pages 2 MiB; what a sort collects, 24 MiB at the largest page size,
// and the rows at the heads of the parts that it merges, no more than all parts, 3 F + 2 MiB; the
// longest value of each of at most 17 columns before the sort and of 4 after it, 27 MiB; an index
// that a join makes for itself, 4 MiB; before the parts are merged, a key of an index, 2 F.
// Together less than 4 F + 68 MiB. A schema that is larger adds its last definition, at most 9 MiB,
// and what else is read of it in 5 ms, but then nothing else is read.
void sqlite_connection::limitMemory()
{
    sqlite3_limit(get(), SQLITE_LIMIT_LENGTH, longestValue);
    sqlite3_limit(get(), SQLITE_LIMIT_SQL_LENGTH, longestDefinition);
    sqlite3_limit(get(), SQLITE_LIMIT_EXPR_DEPTH, deepestExpression);
    sqlite3_limit(get(), SQLITE_LIMIT_ATTACHED, 0);
    sqlite3_limit(get(), SQLITE_LIMIT_WORKER_THREADS, 0);
    // The file's header suggests a size of its own, which is in force until here.
    execute(get(), "PRAGMA cache_size = -2000");
}

// SQLite takes the key of an index to be as long as it says, up to all pages, and reads it in one
// piece for each comparison. Of their number, only that in a write-ahead log goes unchecked.
bool sqlite_connection::claimsTooManyPages() const
{
    const qint64 claimed =
        numberOf(get(), "PRAGMA page_count") * numberOf(get(), "PRAGMA page_size");
    return claimed > databaseBytes(get()) * claimedBytesPerFileByte;
}

// Statistics, which would be tables to read as well, are not used.
void sqlite_connection::findPlainTables()
{
    if (claimsTooManyPages())
        return;
    sqlite_statement schema(get(), "SELECT name, sql FROM sqlite_master");
    while (schema.isPrepared() && schema.nextRow()) {
        const char *name = schema.text(0);
        const char *definition = schema.text(1);
        if (name && definition && definesPlainTable(definition, name))
            m_plainTables.insert(name);
    }
}

bool sqlite_connection::isReadable(const char *table, const char *database) const
{
    // A table of which no column is used is named as in the statement, mostly without its database.
    if (!table || (database && std::strcmp(database, "main") != 0))
        return false;
    return std::strcmp(table, "sqlite_master") == 0 || m_plainTables.contains(table);
}

int sqlite_connection::authorize(void *connection, int action, const char *first,
                                 const char *second, const char *database, const char *)
{
    const sqlite_connection *self = static_cast<const sqlite_connection *>(connection);
    bool isAllowed = false;
    if (action == SQLITE_SELECT)
        isAllowed = true;
    else if (action == SQLITE_READ)
        isAllowed = self->isReadable(first, database);
    else if (action == SQLITE_FUNCTION)
        isAllowed = second && sqlite3_stricmp(second, "like") == 0;
    else if (action == SQLITE_PRAGMA)
        isAllowed = self->m_isSettingUp;
    return isAllowed ? SQLITE_OK : SQLITE_DENY;
}

bool sqlite_connection::isSchemaTooLarge() const
{
    int bytes = 0;
    int highest = 0;
    if (sqlite3_db_status(get(), SQLITE_DBSTATUS_SCHEMA_USED, &bytes, &highest, 0) != SQLITE_OK)
        return true;
    // More than an int holds counts as negative.
    return bytes < 0 || bytes > m_largestSchema;
}

int sqlite_connection::isExhausted(void *connection)
{
    sqlite_connection *self = static_cast<sqlite_connection *>(connection);
    if (--self->m_stepsLeft < 0)
        return 1;
    const qint64 now = clockTime();
    if (now < self->m_nextLook)
        return 0;
    if (processorTime() > self->m_deadline || self->isSchemaTooLarge()) {
        // For good: what a statement gave up, the next would begin again.
        self->m_stepsLeft = 0;
        return 1;
    }
    self->m_nextLook = now + millisecondsPerLook;
    return 0;
}
