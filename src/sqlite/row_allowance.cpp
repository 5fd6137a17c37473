#include "sqlite/row_allowance.h"

#include "sqlite/temp_file_limit.h"

#include <sqlite3.h>

namespace {

// A text takes its bytes in the file, or twice as many in a UTF-16 one; only a page that
// is replaced in the write-ahead log counts twice the other way.
const qint64 bytesPerFileByte = 2;
const qint64 bytesAlways = 1048576;

// Less than any row's numbers and its header take in the file.
const qint64 bytesPerRow = 16;

// The size of one of the connection's open files; 0 while it is not open.
qint64 fileBytes(sqlite3 *db, int whichFile)
{
    sqlite3_file *file = nullptr;
    sqlite3_int64 bytes = 0;
    if (sqlite3_file_control(db, "main", whichFile, &file) != SQLITE_OK || !file || !file->pMethods)
        return 0;
    return file->pMethods->xFileSize(file, &bytes) == SQLITE_OK ? bytes : 0;
}

} // namespace

qint64 databaseBytes(sqlite3 *db)
{
    return fileBytes(db, SQLITE_FCNTL_FILE_POINTER) + fileBytes(db, SQLITE_FCNTL_JOURNAL_POINTER);
}

row_allowance::row_allowance(sqlite3 *db)
    : m_isLimited(temp_file_limit::isBehind(db)),
      m_left(databaseBytes(db) * bytesPerFileByte + bytesAlways)
{
}

void row_allowance::spend(qint64 bytes)
{
    if (m_isLimited)
        m_left -= bytes + bytesPerRow;
}
