#include "engine/database_damage.h"

#include "base/error.h"
#include "sqlite/sqlite_connection.h"
#include "sqlite/sqlite_statement.h"

#include <QByteArray>
#include <QList>
#include <QRegularExpression>

#include <algorithm>
#include <new>

namespace {

// In double quotes a column that the database does not have reads as a text.
const char assetRows[] =
    R"(SELECT "Z_PK", "ZKIND", "ZHEIGHT", "ZWIDTH", "ZTHUMBNAILINDEX", "ZORIENTATION",)"
    R"( "ZDIRECTORY", "ZFILENAME", "ZMODIFICATIONDATE", "ZUUID", "ZKINDSUBTYPE", "ZTRASHEDDATE",)"
    R"( "ZAVALANCHEUUID", "ZSORTTOKEN", "ZSAVEDASSETTYPE" FROM ZGENERICASSET)";
const char attributesRows[] = R"(SELECT "Z_PK", "ZASSET", "ZDURATION", "ZORIGINALFILESIZE" FROM)"
                              R"( ZADDITIONALASSETATTRIBUTES)";
const char albumRows[] =
    R"(SELECT "Z_PK", "ZTITLE", "ZKIND", "ZUUID", "ZTRASHEDSTATE" FROM ZGENERICALBUM)";

// An index leads to the wanted rows faster, but may be damaged itself: the conditions are those
// that have the plug-in use one.
const char photosOnly[] =
    " WHERE (ZKIND = 0 AND (ZSAVEDASSETTYPE = 3 OR ZSAVEDASSETTYPE = 256 OR ZSAVEDASSETTYPE = 1 OR"
    " ZSAVEDASSETTYPE = 5)) ORDER BY ZMODIFICATIONDATE";
const char videosOnly[] = " WHERE (ZKIND = 1 AND (ZSAVEDASSETTYPE = 256 OR ZSAVEDASSETTYPE = 3 OR"
                          " ZSAVEDASSETTYPE = 0))";
const char listedAlbumsOnly[] =
    " WHERE (ZKIND = 1000 OR (ZKIND < 1600 AND ZKIND > 1000) OR ZKIND = 2)";
const char withoutIndex[] = " NOT INDEXED";

// What ended a statement.
int resultOf(const sqlite_connection &connection, const QByteArray &sql)
{
    sqlite_statement statement(connection.get(), sql.constData());
    if (!statement.isPrepared())
        return statement.result();
    while (statement.nextRow()) {
    }
    return statement.finish();
}

// A database need not have a table, and a library is read without one that it may not use.
bool isDamage(int result)
{
    switch (result) {
    case SQLITE_OK:
    case SQLITE_ERROR:
    case SQLITE_AUTH:
        return false;
    case SQLITE_NOMEM:
        throw std::bad_alloc();
    default:
        return true;
    }
}

// Their names carry a number that differs between the versions of iOS.
QList<QByteArray> joinTables(const sqlite_connection &connection)
{
    const QRegularExpression joinName(QStringLiteral("\\AZ_[0-9]+ASSETS\\z"));
    QList<QByteArray> names;
    sqlite_statement statement(connection.get(), "SELECT name FROM sqlite_master");
    while (statement.isPrepared() && statement.nextRow()) {
        const QByteArray name = statement.text(0);
        if (joinName.match(QString::fromLatin1(name)).hasMatch())
            names.append(name);
    }
    return names;
}

QList<QByteArray> statements(const sqlite_connection &connection)
{
    const QByteArray assets = assetRows;
    const QByteArray albums = albumRows;
    QList<QByteArray> all = {
        assets + withoutIndex, assets + photosOnly,
        assets + videosOnly,   attributesRows + QByteArray(withoutIndex),
        albums + withoutIndex, albums + listedAlbumsOnly,
    };
    for (const QByteArray &table : joinTables(connection)) {
        all.append("SELECT * FROM " + table);
        all.append("SELECT * FROM " + table + withoutIndex);
    }
    return all;
}

} // namespace

bool isDamaged(const QString &database, CancelToken &cancel)
{
    const sqlite_connection connection(database);
    if (!connection.isOpen())
        throw Error(database.toStdString(), "cannot be opened");
    const CancelHook hook(cancel, [&connection] { sqlite3_interrupt(connection.get()); });
    const QList<QByteArray> all = statements(connection);
    return std::any_of(all.begin(), all.end(), [&](const QByteArray &sql) {
        return !cancel.isCancelled() && isDamage(resultOf(connection, sql));
    });
}
