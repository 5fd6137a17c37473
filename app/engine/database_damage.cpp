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
    R"( "ZAVALANCHEUUID", "ZSORTTOKEN", "ZSAVEDASSETTYPE", "ZDURATION", "ZDATECREATED" FROM )";
const char attributesRows[] = R"(SELECT "Z_PK", "ZASSET", "ZDURATION", "ZORIGINALFILESIZE" FROM)"
                              R"( ZADDITIONALASSETATTRIBUTES)";
const char albumRows[] =
    R"(SELECT "Z_PK", "ZTITLE", "ZKIND", "ZUUID", "ZTRASHEDSTATE" FROM ZGENERICALBUM)";

// An index leads to the wanted rows faster, but may be damaged itself: the conditions are those
// that have the plug-in use one.
struct AssetTable {
    const char *name;
    const char *photosOnly;
    const char *videosOnly;
};
const AssetTable assetsToIos13 = {
    "ZGENERICASSET",
    " WHERE (ZKIND = 0 AND (ZSAVEDASSETTYPE = 3 OR ZSAVEDASSETTYPE = 256 OR ZSAVEDASSETTYPE = 1 OR"
    " ZSAVEDASSETTYPE = 5)) ORDER BY ZMODIFICATIONDATE",
    " WHERE (ZKIND = 1 AND (ZSAVEDASSETTYPE = 256 OR ZSAVEDASSETTYPE = 3 OR"
    " ZSAVEDASSETTYPE = 0))",
};
const AssetTable assetsFromIos14 = {
    "ZASSET",
    " WHERE (ZKIND = 0 AND ZSAVEDASSETTYPE IS NOT 4) ORDER BY ZMODIFICATIONDATE",
    " WHERE (ZKIND = 1 AND ZSAVEDASSETTYPE IS NOT 4)",
};
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

QList<QByteArray> schemaNames(const sqlite_connection &connection)
{
    QList<QByteArray> names;
    sqlite_statement statement(connection.get(), "SELECT name FROM sqlite_master");
    while (statement.isPrepared() && statement.nextRow())
        names.append(statement.text(0));
    return names;
}

// A table that joins albums with what is in them: its name carries a number that differs between
// the versions of iOS.
bool isJoinTable(const QByteArray &name)
{
    static const QRegularExpression joinName(QStringLiteral("\\AZ_[0-9]+ASSETS\\z"));
    return joinName.match(QString::fromLatin1(name)).hasMatch();
}

QList<QByteArray> statements(const sqlite_connection &connection)
{
    const QList<QByteArray> names = schemaNames(connection);
    const AssetTable &table = names.contains(assetsToIos13.name) ? assetsToIos13 : assetsFromIos14;
    const QByteArray assets = QByteArray(assetRows) + table.name;
    const QByteArray albums = albumRows;
    QList<QByteArray> all = {
        assets + withoutIndex,     assets + table.photosOnly,
        assets + table.videosOnly, attributesRows + QByteArray(withoutIndex),
        albums + withoutIndex,     albums + listedAlbumsOnly,
    };
    for (const QByteArray &name : names) {
        if (!isJoinTable(name))
            continue;
        all.append("SELECT * FROM " + name);
        all.append("SELECT * FROM " + name + withoutIndex);
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
