#include "cameradb/asset_schema.h"

#include "host/host_log.h"
#include "sqlite/sqlite_statement.h"

#include <cstring>

const char *const missingColumn = "\"0\"";

namespace {

const asset_table genericAsset = {
    "ZGENERICASSET",
    "A.Z_PK = T.Z_PK",
    "A.ZKIND = 0 and ((A.ZSAVEDASSETTYPE = 3) or (A.ZSAVEDASSETTYPE = 256) or "
    "(A.ZSAVEDASSETTYPE = 1) or (A.ZSAVEDASSETTYPE = 5))",
    "A.ZKIND = 1 and (A.ZSAVEDASSETTYPE = 256 or A.ZSAVEDASSETTYPE = 3 or A.ZSAVEDASSETTYPE = 0)",
    "select Z_PK,ZASSET,ZDURATION,ZORIGINALFILESIZE from ZADDITIONALASSETATTRIBUTES",
};

// The saved type 4 marks the copies out of shared albums.
const asset_table zasset = {
    "ZASSET",
    "T.ZASSET = A.Z_PK",
    "A.ZKIND = 0 and A.ZSAVEDASSETTYPE is not 4",
    "A.ZKIND = 1 and A.ZSAVEDASSETTYPE is not 4",
    "select Z_PK,ZASSET,NULL,ZORIGINALFILESIZE from ZADDITIONALASSETATTRIBUTES",
};

bool isText(const char *text, const char *expected)
{
    return text && std::strcmp(text, expected) == 0;
}

// What the schema tells of one of the two tables.
struct found_table {
    explicit found_table(const char *tableName) : name(tableName) {}

    void add(const sqlite_statement &row);

    const char *name;
    bool isThere = false;
    bool hasKindSubtype = false;
    QByteArray definition; // null until one is found
};

// A table is found by its name as statements find it, in any case; texts are looked for under the
// very name only, where a view's definition counts as well.
void found_table::add(const sqlite_statement &row)
{
    const char *const tableOfRow = row.text(2);
    if (!tableOfRow || sqlite3_stricmp(tableOfRow, name) != 0)
        return;
    const bool isTable = isText(row.text(0), "table");
    const char *const nameOfRow = row.text(1);
    isThere = isThere || (isTable && nameOfRow && sqlite3_stricmp(nameOfRow, name) == 0);
    const char *const sql = row.text(3);
    if (!sql || !isText(tableOfRow, name))
        return;
    hasKindSubtype = hasKindSubtype || (isTable && std::strstr(sql, "ZKINDSUBTYPE"));
    if (definition.isNull() && isText(nameOfRow, name))
        definition = QByteArray(sql);
}

} // namespace

asset_schema::asset_schema(sqlite3 *db)
    : m_result(SQLITE_OK), m_table(&genericAsset), m_hasKindSubtype(false)
{
    sqlite_statement statement(db, "SELECT type, name, tbl_name, sql FROM sqlite_master where "
                                   "tbl_name = 'ZGENERICASSET' collate nocase or "
                                   "tbl_name = 'ZASSET' collate nocase");
    if (!statement.isPrepared()) {
        m_result = statement.result();
        m_message = QByteArray(sqlite3_errmsg(db));
        return;
    }
    found_table generic(genericAsset.name);
    found_table later(zasset.name);
    while (statement.nextRow()) {
        generic.add(statement);
        later.add(statement);
    }
    const bool takesLater = !generic.isThere && later.isThere;
    m_table = takesLater ? &zasset : &genericAsset;
    m_definition = takesLater ? later.definition : generic.definition;
    m_hasKindSubtype = takesLater ? later.hasKindSubtype : generic.hasKindSubtype;
}

bool asset_schema::isZasset() const
{
    return m_table == &zasset;
}

bool asset_schema::hasColumn(const QString &column) const
{
    if (!isRead()) {
        Log("PHOTOLIB", 2, "get assets table name sql error #%d: %s", result(), message());
        return false;
    }
    return !m_definition.isNull() && QString::fromUtf8(m_definition.constData()).contains(column);
}

const char *asset_schema::itemOrMissing(const char *column, const char *selectItem) const
{
    return hasColumn(QString::fromLatin1(column)) ? selectItem : missingColumn;
}
