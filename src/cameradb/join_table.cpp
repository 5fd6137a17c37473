#include "cameradb/join_table.h"

#include "host/host_log.h"
#include "sqlite/row_allowance.h"
#include "sqlite/sqlite_statement.h"
#include "sqlite/value_limit.h"

#include <QRegExp>

#include <glib.h>

#include <vector>

namespace {

const int sqlSize = 1024;

// Memberships are numbers, while the table may have any columns: SQLite keeps the longest value
// of each of them, of up to 2,000, in memory.
const int longestValue = 16384;

QRegExp albumNames()
{
    return QRegExp(QString::fromLatin1("Z_\\d+ALBUMS"));
}
QRegExp assetNames()
{
    return QRegExp(QString::fromLatin1("Z_\\d+ASSETS"));
}

// Databases hold look-alikes such as Z_31KEYASSETS, some of them made before the join
// table: the first exact name wins, and a look-alike only where there is none. The
// schema lists tables in the order in which they were made.
QByteArray assetsTableName(sqlite3 *db)
{
    sqlite_statement statement(
        db, "SELECT DISTINCT(tbl_name) FROM sqlite_master where tbl_name like 'Z_%ASSETS'");
    if (!statement.isPrepared()) {
        Log("PHOTOLIB", 2, "get assets table name sql error #%d: %s", statement.result(),
            sqlite3_errmsg(db));
        return QByteArray();
    }
    const QRegExp exactName = assetNames();
    QByteArray lookAlike;
    while (statement.nextRow()) {
        QByteArray name = statement.text(0);
        if (exactName.exactMatch(QString::fromLatin1(name.constData())))
            return name;
        if (lookAlike.isEmpty())
            lookAlike = name;
    }
    return lookAlike;
}

// The name goes into the statement as it stands, so it can hold queries of its own. SQLite would
// compile them without looking at the clock, and sort many of them at once.
bool holdsQuery(const QByteArray &table)
{
    const QRegExp query(QString::fromLatin1("[(,]|(^|[^a-z0-9_$])(where|join|select|by|in)"
                                            "($|[^a-z0-9_$])"),
                        Qt::CaseInsensitive);
    return query.indexIn(QString::fromLatin1(table.constData())) >= 0;
}

struct key_column {
    int index;
    bool isAlbum;
};

// The columns of the statement that hold a key, in order: a name never changes from
// row to row.
std::vector<key_column> keyColumns(sqlite3_stmt *stmt)
{
    const QRegExp albums = albumNames();
    const QRegExp assets = assetNames();
    std::vector<key_column> columns;
    for (int i = 0; i < sqlite3_column_count(stmt); ++i) {
        const QString name = QString::fromLatin1(sqlite3_column_name(stmt, i));
        const bool isAlbum = albums.exactMatch(name);
        if (isAlbum || assets.exactMatch(name))
            columns.push_back(key_column{i, isAlbum});
    }
    return columns;
}

struct membership {
    quint64 album = 0;
    quint64 asset = 0;

    bool isComplete() const { return album != 0 && asset != 0; }
};

membership readMembership(sqlite3_stmt *stmt, const std::vector<key_column> &columns)
{
    membership keys;
    for (const key_column &column : columns) {
        const quint64 key = static_cast<quint64>(sqlite3_column_int64(stmt, column.index));
        (column.isAlbum ? keys.album : keys.asset) = key;
        if (keys.isComplete())
            break;
    }
    return keys;
}

void appendMembers(sqlite3 *db, sqlite_statement &statement, CameraDB *cameraDb)
{
    const std::vector<key_column> columns = keyColumns(statement.get());
    // Rows of one album mostly follow each other.
    quint64 lastKey = 0;
    Camera_Album *lastAlbum = nullptr;
    row_allowance allowance(db);
    while (!allowance.isExhausted() && statement.nextRow()) {
        const membership keys = readMembership(statement.get(), columns);
        if (!keys.isComplete())
            continue;
        if (keys.album != lastKey) {
            lastKey = keys.album;
            lastAlbum = cameraDb->albums.value(keys.album);
        }
        if (!lastAlbum)
            continue;
        lastAlbum->assetKeys.append(keys.asset);
        allowance.spend(0);
    }
}

} // namespace

bool queryAlbumPhoto(sqlite3 *db, CameraDB *cameraDb)
{
    if (!db) {
        g_return_if_fail_warning(nullptr, "int queryAlbumPhoto(sqlite3 *, CameraDB *)", "sql_db");
        return false;
    }
    const QByteArray table = assetsTableName(db);
    if (table.isEmpty()) {
        Log("PHOTOLIB", 2, "Can not get the proper assets table name");
        return false;
    }
    Log("PHOTOLIB", 1, "Got asset table name: %s", table.constData());
    char sql[sqlSize];
    sqlite3_snprintf(sqlSize, sql, "select * from %s", table.constData());
    if (holdsQuery(table)) {
        Log("PHOTOLIB", 2, "Can not parse camera photos: %s", sqlite3_errstr(SQLITE_AUTH));
        return false;
    }
    sqlite_statement statement(db, sql);
    if (!statement.isPrepared()) {
        Log("PHOTOLIB", 2, "Can not parse camera photos: %s", sqlite3_errmsg(db));
        return false;
    }
    const value_limit limit(db, longestValue);
    appendMembers(db, statement, cameraDb);
    return true;
}
