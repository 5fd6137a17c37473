#include "catalog/catalog.h"

#include "base/cancel_token.h"
#include "base/error.h"
#include "sqlite/sqlite_connection.h"
#include "sqlite/sqlite_statement.h"

// A first, small reader: what the rest of the program builds on while the whole one is written.
Catalog readCatalog(const QString &database, CancelToken &cancel)
{
    const sqlite_connection connection(database);
    const CancelHook hook(cancel, [&connection] { sqlite3_interrupt(connection.get()); });
    Catalog catalog;
    for (const char *sql : {"SELECT Z_PK, ZKIND, ZUUID, ZDIRECTORY, ZFILENAME FROM ZGENERICASSET "
                            "WHERE ZKIND IN (0, 1) ORDER BY Z_PK",
                            "SELECT Z_PK, ZKIND, ZUUID, ZDIRECTORY, ZFILENAME FROM ZASSET "
                            "WHERE ZKIND IN (0, 1) ORDER BY Z_PK"}) {
        sqlite_statement statement(connection.get(), sql);
        while (statement.isPrepared() && catalog.assets.size() < 10000000 && statement.nextRow()) {
            Asset asset;
            asset.id = sqlite3_column_int64(statement.get(), 0);
            asset.kind =
                sqlite3_column_int(statement.get(), 1) == 1 ? AssetKind::Video : AssetKind::Photo;
            asset.uuid = statement.text(2);
            asset.directory = statement.text(3);
            asset.fileName = statement.text(4);
            catalog.assets.push_back(asset);
        }
    }
    if (catalog.assets.empty())
        throw Error(Error::Damaged, database.toStdString() + ": its tables cannot be read");
    return catalog;
}
