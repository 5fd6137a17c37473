#include "support/photos_database.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstring>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace {

struct FinalizeStatement {
    void operator()(sqlite3_stmt *stmt) const { sqlite3_finalize(stmt); }
};
using StatementOwner = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

using Columns = std::vector<std::pair<std::string, SqlValue>>;

[[noreturn]] void fail(sqlite3 *db, const std::string &sql)
{
    throw std::runtime_error(std::string(sqlite3_errmsg(db)) + " in: " + sql);
}

std::string identifier(const std::string &name)
{
    std::string quoted = "[";
    return quoted.append(name).append("]");
}

std::string joined(const std::vector<std::string> &parts)
{
    std::string text;
    for (const std::string &part : parts)
        text += (text.empty() ? "" : ", ") + part;
    return text;
}

void insert(sqlite3 *db, const std::string &table, const Columns &columns)
{
    std::vector<std::string> names;
    for (const auto &column : columns)
        names.push_back(identifier(column.first));
    const std::string sql = "INSERT INTO " + identifier(table) + " (" + joined(names) +
                            ") VALUES (" + joined(std::vector<std::string>(columns.size(), "?")) +
                            ")";
    sqlite3_stmt *prepared = nullptr;
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &prepared, nullptr) != SQLITE_OK)
        fail(db, sql);
    const StatementOwner statement(prepared);
    for (std::size_t i = 0; i < columns.size(); ++i)
        columns[i].second.bind(prepared, static_cast<int>(i) + 1);
    if (sqlite3_step(prepared) != SQLITE_DONE)
        fail(db, sql);
}

std::string keyColumn(const Schema &schema)
{
    return schema.uniqueKeys ? "Z_PK INTEGER PRIMARY KEY" : "Z_PK INTEGER";
}

void createAssetTable(sqlite3 *db, const Schema &schema)
{
    std::vector<std::string> columns = {keyColumn(schema),
                                        "Z_ENT INTEGER",
                                        "ZKIND INTEGER",
                                        "ZSAVEDASSETTYPE INTEGER",
                                        "ZHEIGHT INTEGER",
                                        "ZWIDTH INTEGER",
                                        "ZTHUMBNAILINDEX INTEGER",
                                        "ZORIENTATION INTEGER",
                                        "ZDIRECTORY VARCHAR",
                                        "ZFILENAME VARCHAR",
                                        "ZMODIFICATIONDATE TIMESTAMP",
                                        "ZUUID"};
    columns.insert(columns.end(), schema.furtherAssetColumns.begin(),
                   schema.furtherAssetColumns.end());
    if (schema.kindSubtype)
        columns.emplace_back("ZKINDSUBTYPE INTEGER");
    if (schema.trashedDate)
        columns.emplace_back("ZTRASHEDDATE TIMESTAMP");
    if (schema.assetTrashedState)
        columns.emplace_back("ZTRASHEDSTATE INTEGER");
    if (schema.avalancheUuid)
        columns.emplace_back("ZAVALANCHEUUID VARCHAR");
    if (schema.sortToken)
        columns.emplace_back("ZSORTTOKEN FLOAT");
    if (schema.isZasset && schema.assetDuration)
        columns.emplace_back("ZDURATION FLOAT");
    if (schema.isZasset && schema.dateCreated)
        columns.emplace_back("ZDATECREATED TIMESTAMP");
    runSql(db, std::string("CREATE TABLE ") + schema.assetTable() + " (" + joined(columns) + ")");
}

void createAlbumTable(sqlite3 *db, const Schema &schema)
{
    runSql(db, "CREATE TABLE ZGENERICALBUM (" + keyColumn(schema) +
                   ", Z_ENT INTEGER, ZKIND INTEGER, ZTITLE VARCHAR, ZUUID" +
                   (schema.albumTrashedState ? ", ZTRASHEDSTATE INTEGER)" : ")"));
}

void createAttributesTable(sqlite3 *db, const Schema &schema)
{
    runSql(db, "CREATE TABLE ZADDITIONALASSETATTRIBUTES (" + keyColumn(schema) +
                   ", ZASSET INTEGER, ZORIGINALFILESIZE INTEGER" +
                   (schema.attributesDuration ? ", ZDURATION FLOAT)" : ")"));
}

void createJoinTable(sqlite3 *db, const JoinTable &table)
{
    std::vector<std::string> names;
    for (const std::string &column : table.columns)
        names.push_back(identifier(column));
    runSql(db, "CREATE TABLE " + identifier(table.name) + " (" + joined(names) + ")");
    for (const std::vector<SqlValue> &row : table.rows) {
        Columns columns;
        for (std::size_t i = 0; i < row.size(); ++i)
            columns.emplace_back(table.columns.at(i), row[i]);
        insert(db, table.name, columns);
    }
}

void insertAsset(sqlite3 *db, const Schema &schema, const AssetRow &row)
{
    Columns columns = {{"Z_PK", row.pk},
                       {"ZKIND", row.kind},
                       {"ZSAVEDASSETTYPE", row.savedAssetType},
                       {"ZHEIGHT", row.height},
                       {"ZWIDTH", row.width},
                       {"ZTHUMBNAILINDEX", row.thumbnailIndex},
                       {"ZORIENTATION", row.orientation},
                       {"ZDIRECTORY", row.directory},
                       {"ZFILENAME", row.fileName},
                       {"ZMODIFICATIONDATE", row.modificationDate},
                       {"ZUUID", row.uuid}};
    if (schema.kindSubtype)
        columns.emplace_back("ZKINDSUBTYPE", row.kindSubtype);
    if (schema.trashedDate)
        columns.emplace_back("ZTRASHEDDATE", row.trashedDate);
    if (schema.assetTrashedState)
        columns.emplace_back("ZTRASHEDSTATE", row.trashedState);
    if (schema.avalancheUuid)
        columns.emplace_back("ZAVALANCHEUUID", row.avalancheUuid);
    if (schema.sortToken)
        columns.emplace_back("ZSORTTOKEN", row.sortToken);
    if (schema.isZasset && schema.assetDuration)
        columns.emplace_back("ZDURATION", row.duration);
    if (schema.isZasset && schema.dateCreated)
        columns.emplace_back("ZDATECREATED", row.dateCreated);
    insert(db, schema.assetTable(), columns);
}

void insertAttributes(sqlite3 *db, const Schema &schema, const AttributesRow &row)
{
    Columns columns = {
        {"Z_PK", row.pk}, {"ZASSET", row.asset}, {"ZORIGINALFILESIZE", row.originalFileSize}};
    if (schema.attributesDuration)
        columns.emplace_back("ZDURATION", row.duration);
    insert(db, "ZADDITIONALASSETATTRIBUTES", columns);
}

void insertAlbum(sqlite3 *db, const Schema &schema, const AlbumRow &row)
{
    Columns columns = {
        {"Z_PK", row.pk}, {"ZKIND", row.kind}, {"ZTITLE", row.title}, {"ZUUID", row.uuid}};
    if (schema.albumTrashedState)
        columns.emplace_back("ZTRASHEDSTATE", row.trashedState);
    insert(db, "ZGENERICALBUM", columns);
}

void create(sqlite3 *db, const PhotosDatabase &database)
{
    const Schema &schema = database.schema;
    if (schema.assets)
        createAssetTable(db, schema);
    if (schema.albums)
        createAlbumTable(db, schema);
    if (schema.attributes)
        createAttributesTable(db, schema);
    if (schema.metadata)
        runSql(db, "CREATE TABLE Z_METADATA (Z_VERSION INTEGER, Z_UUID, Z_PLIST BLOB)");
    if (!schema.joinTables)
        return;
    for (const JoinTable &table : database.joinTables)
        createJoinTable(db, table);
}

void insertRows(sqlite3 *db, const Schema &schema, const PhotosRows &rows)
{
    for (const SqlValue &uuid : rows.libraryUuids)
        insert(db, "Z_METADATA", {{"Z_VERSION", 1}, {"Z_UUID", uuid}});
    for (const AssetRow &row : rows.assets)
        insertAsset(db, schema, row);
    for (const AttributesRow &row : rows.attributes)
        insertAttributes(db, schema, row);
    for (const AlbumRow &row : rows.albums)
        insertAlbum(db, schema, row);
    for (const std::string &sql : rows.sql)
        runSql(db, sql);
}

// In one transaction, since each costs a sync of a file otherwise.
void fill(sqlite3 *db, const PhotosDatabase &database)
{
    if (database.schema.utf16)
        runSql(db, "PRAGMA encoding = 'UTF-16le'");
    runSql(db, "BEGIN");
    create(db, database);
    insertRows(db, database.schema, database.rows);
    runSql(db, "COMMIT");
}

SqliteOwner openFile(const QByteArray &path)
{
    sqlite3 *opened = nullptr;
    const int result = sqlite3_open(path.constData(), &opened);
    SqliteOwner db(opened);
    if (result != SQLITE_OK)
        fail(opened, "open " + path.toStdString());
    return db;
}

QByteArray fileBytes(const QByteArray &path)
{
    QFile file(QFile::decodeName(path));
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("no file " + path.toStdString());
    return file.readAll();
}

} // namespace

void SqlValue::bind(sqlite3_stmt *stmt, int index) const
{
    const auto bindIt = [&](const auto &value) {
        using Value = std::decay_t<decltype(value)>;
        if constexpr (std::is_same_v<Value, std::monostate>)
            sqlite3_bind_null(stmt, index);
        else if constexpr (std::is_same_v<Value, qint64>)
            sqlite3_bind_int64(stmt, index, value);
        else if constexpr (std::is_same_v<Value, double>)
            sqlite3_bind_double(stmt, index, value);
        else if constexpr (std::is_same_v<Value, std::string>)
            sqlite3_bind_text(stmt, index, value.data(), static_cast<int>(value.size()),
                              SQLITE_TRANSIENT);
        else
            sqlite3_bind_blob(stmt, index, value.constData(), value.size(), SQLITE_TRANSIENT);
    };
    std::visit(bindIt, m_value);
}

QByteArray uuidBlob(int first, int second)
{
    QByteArray uuid(16, '\0');
    uuid[0] = static_cast<char>(first);
    uuid[1] = static_cast<char>(second);
    return uuid;
}

AssetRow photoRow(int pk, qint64 modificationDate)
{
    AssetRow row;
    row.pk = pk;
    row.modificationDate = modificationDate;
    row.uuid = uuidBlob(pk & 0xff, (pk >> 8) & 0xff);
    return row;
}

AssetRow videoRow(int pk, qint64 modificationDate)
{
    AssetRow row = photoRow(pk, modificationDate);
    row.kind = 1;
    row.fileName = "IMG_0001.MOV";
    return row;
}

AlbumRow albumRow(int pk, int kind)
{
    AlbumRow row;
    row.pk = pk;
    row.kind = kind;
    return row;
}

Schema Schema::early()
{
    Schema schema;
    schema.kindSubtype = false;
    schema.trashedDate = false;
    schema.avalancheUuid = false;
    schema.sortToken = false;
    schema.assetTrashedState = false;
    schema.albumTrashedState = false;
    return schema;
}

Schema Schema::zasset()
{
    Schema schema;
    schema.isZasset = true;
    schema.attributesDuration = false;
    return schema;
}

QByteArray PhotosDatabase::bytes() const
{
    const SqliteOwner db = open();
    sqlite3_int64 size = 0;
    const std::unique_ptr<unsigned char, decltype(&sqlite3_free)> image(
        sqlite3_serialize(db.get(), "main", &size, 0), &sqlite3_free);
    if (!image)
        fail(db.get(), "serialize");
    return {reinterpret_cast<const char *>(image.get()), static_cast<int>(size)};
}

PhotosFiles PhotosDatabase::filesWithWal(const PhotosRows &later) const
{
    const QTemporaryDir folder;
    const QByteArray path = QFile::encodeName(folder.filePath(QStringLiteral("Photos.sqlite")));
    const SqliteOwner db = openFile(path);
    runSql(db.get(), "PRAGMA synchronous = OFF; PRAGMA journal_mode = WAL;"
                     "PRAGMA wal_autocheckpoint = 0");
    fill(db.get(), *this);
    runSql(db.get(), "PRAGMA wal_checkpoint(TRUNCATE)");
    runSql(db.get(), "BEGIN");
    insertRows(db.get(), schema, later);
    runSql(db.get(), "COMMIT");
    // Read while the connection lives, for its close would work the log off.
    return {fileBytes(path), fileBytes(path + "-wal"), fileBytes(path + "-shm")};
}

SqliteOwner PhotosDatabase::open() const
{
    SqliteOwner db = openEmptyDatabase();
    fill(db.get(), *this);
    return db;
}

void runSql(sqlite3 *db, const std::string &sql)
{
    if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        fail(db, sql);
}

SqliteOwner openEmptyDatabase()
{
    SqliteOwner db = openFile(":memory:");
    sqlite3_db_config(db.get(), SQLITE_DBCONFIG_DQS_DML, 1, nullptr);
    return db;
}

SqliteOwner openUnreadable()
{
    // Its bytes are looked at when the first statement is prepared.
    const QByteArray garbage(4096, 'x');
    SqliteOwner db = openEmptyDatabase();
    void *copy = sqlite3_malloc(garbage.size());
    std::memcpy(copy, garbage.constData(), static_cast<std::size_t>(garbage.size()));
    sqlite3_deserialize(db.get(), "main", static_cast<unsigned char *>(copy), garbage.size(),
                        garbage.size(), SQLITE_DESERIALIZE_FREEONCLOSE);
    return db;
}

void failAt(sqlite3 *db, const std::string &table, int pk)
{
    const auto check = [](sqlite3_context *context, int, sqlite3_value **arguments) {
        if (sqlite3_value_int(arguments[0]) == sqlite3_value_int(arguments[1]))
            sqlite3_result_error(context, "broken row", -1);
        else
            sqlite3_result_int(context, 1);
    };
    sqlite3_create_function(db, "survives", 2, SQLITE_UTF8, nullptr, check, nullptr, nullptr);
    runSql(db, "ALTER TABLE " + table + " RENAME TO stored");
    runSql(db, "CREATE VIEW " + table + " AS SELECT * FROM stored WHERE survives(Z_PK, " +
                   std::to_string(pk) + ")");
}
