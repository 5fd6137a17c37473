#include "support/library_tables_writer.h"

#include <algorithm>
#include <stdexcept>

namespace {

std::string numbered(int number, const char *ending)
{
    return "Z_" + std::to_string(number) + ending;
}

using Entities = std::map<std::string, int>;

Entities entities(int album, int asset, int keyword, Entities others = {})
{
    others["AdditionalAssetAttributes"] = 1;
    others["AlbumList"] = 2;
    others["GenericAlbum"] = album - 1;
    others["Album"] = album;
    others["CloudSharedAlbum"] = album + 1;
    others[others.count("GenericAsset") ? "GenericAsset" : "Asset"] = asset;
    others["Keyword"] = keyword;
    return others;
}

std::vector<LibraryVersion> makeVersions()
{
    LibraryVersion of13{"Of13", "ZGENERICASSET",
                        entities(26, 34, 37, {{"GenericAsset", 34}, {"Asset", 35}}), "Z_34ASSETS"};
    of13.edited = "ZHASADJUSTMENTS";
    of13.faceAsset = "ZASSET";
    of13.facePerson = "ZPERSON";
    of13.rendered = "ZCUSTOMRENDEREDVALUE";
    LibraryVersion of14{"Of14", "ZASSET", entities(26, 3, 36), "Z_3ASSETS"};
    of14.edited = "ZHASADJUSTMENTS";
    of14.faceAsset = "ZASSET";
    of14.facePerson = "ZPERSON";
    LibraryVersion of15{"Of15", "ZASSET", entities(27, 3, 38), "Z_3ASSETS"};
    of15.edited = "ZHASADJUSTMENTS";
    of15.faceAsset = "ZASSET";
    of15.facePerson = "ZPERSON";
    LibraryVersion of16{"Of16", "ZASSET", entities(28, 3, 40), "Z_3ASSETS"};
    of16.edited = "ZHASADJUSTMENTS";
    LibraryVersion of18{"Of18", "ZASSET", entities(30, 3, 47), "Z_3ASSETS"};
    of18.hasImportPlaces = false;
    LibraryVersion of26{"Of26", "ZASSET", entities(33, 3, 52), "Z_3ASSETS"};
    of26.hasImportPlaces = false;
    return {of13, of14, of15, of16, of18, of26};
}

std::string quoted(const std::string &name)
{
    return '"' + name + '"';
}

std::string joined(const std::vector<std::string> &texts)
{
    std::string all;
    for (const std::string &text : texts)
        all += (all.empty() ? "" : ", ") + text;
    return all;
}

// Core Data gives numbers and texts different affinities; none keeps values as the test writes
// them.
std::string definition(const std::string &column)
{
    return quoted(column) + (column == "Z_PK" ? " INTEGER PRIMARY KEY" : "");
}

void insert(sqlite3 *db, const std::string &table, const TableRow &row)
{
    std::vector<std::string> names, marks;
    for (const auto &[column, value] : row) {
        names.push_back(quoted(column));
        marks.push_back("?");
    }
    const std::string values =
        row.empty() ? "DEFAULT VALUES" : '(' + joined(names) + ") VALUES (" + joined(marks) + ')';
    const std::string sql = "INSERT INTO " + quoted(table) + ' ' + values;
    sqlite3_stmt *stmt = nullptr;
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr) != SQLITE_OK)
        throw std::runtime_error(sqlite3_errmsg(db) + (": " + sql));
    int index = 0;
    for (const auto &[column, value] : row)
        value.bind(stmt, ++index);
    sqlite3_step(stmt);
    if (sqlite3_finalize(stmt) != SQLITE_OK)
        throw std::runtime_error(sqlite3_errmsg(db) + (": " + sql));
}

} // namespace

std::string LibraryVersion::joinTable() const
{
    return numbered(entities.at("Album"), "ASSETS");
}

std::string LibraryVersion::joinAlbum() const
{
    return numbered(entities.at("Album"), "ALBUMS");
}

std::string LibraryVersion::keywordTable() const
{
    return numbered(entities.at("AdditionalAssetAttributes"), "KEYWORDS");
}

std::string LibraryVersion::keywordAttributes() const
{
    return numbered(entities.at("AdditionalAssetAttributes"), "ASSETATTRIBUTES");
}

std::string LibraryVersion::keywordKeyword() const
{
    return numbered(entities.at("Keyword"), "KEYWORDS");
}

const std::vector<LibraryVersion> &libraryVersions()
{
    static const std::vector<LibraryVersion> versions = makeVersions();
    return versions;
}

const LibraryVersion &libraryVersion(const std::string &name)
{
    const std::vector<LibraryVersion> &all = libraryVersions();
    return *std::find_if(all.begin(), all.end(),
                         [&](const LibraryVersion &version) { return version.name == name; });
}

LibraryTablesWriter::LibraryTablesWriter(const LibraryVersion &version) : m_version(version)
{
    addTable("Z_PRIMARYKEY", {"Z_ENT", "Z_NAME", "Z_SUPER", "Z_MAX"});
    for (const auto &[name, number] : version.entities)
        add("Z_PRIMARYKEY", {{"Z_NAME", name}, {"Z_ENT", number}});
    addTable(version.assets, {"Z_PK",
                              "Z_ENT",
                              "ZKIND",
                              "ZKINDSUBTYPE",
                              "ZSAVEDASSETTYPE",
                              "ZUUID",
                              "ZDIRECTORY",
                              "ZFILENAME",
                              "ZDATECREATED",
                              "ZMODIFICATIONDATE",
                              "ZADDEDDATE",
                              "ZTRASHEDDATE",
                              "ZTRASHEDSTATE",
                              "ZWIDTH",
                              "ZHEIGHT",
                              "ZORIENTATION",
                              "ZDURATION",
                              "ZFAVORITE",
                              "ZHIDDEN",
                              "ZCLOUDLOCALSTATE",
                              "ZAVALANCHEUUID",
                              "ZVISIBILITYSTATE",
                              "ZLATITUDE",
                              "ZLONGITUDE",
                              "ZADDITIONALATTRIBUTES",
                              "ZIMPORTSESSION",
                              version.edited,
                              version.rendered});
    if (version.hasImportPlaces)
        m_tables[version.assets].columns.push_back("Z_FOK_IMPORTSESSION");
    addTable("ZADDITIONALASSETATTRIBUTES",
             {"Z_PK", "ZASSET", "ZTIMEZONEOFFSET", "ZORIGINALFILENAME", "ZTITLE",
              "ZORIGINALFILESIZE", "ZASSETDESCRIPTION"});
    addTable("ZASSETDESCRIPTION", {"Z_PK", "ZASSETATTRIBUTES", "ZLONGDESCRIPTION"});
    addTable("ZKEYWORD", {"Z_PK", "ZTITLE"});
    addTable(version.keywordTable(), {version.keywordAttributes(), version.keywordKeyword()});
    addTable("ZPERSON", {"Z_PK", "ZFULLNAME", "ZDISPLAYNAME", "ZPERSONUUID"});
    addTable("ZDETECTEDFACE", {"Z_PK", version.faceAsset, version.facePerson});
    addTable("ZGENERICALBUM",
             {"Z_PK", "Z_ENT", "ZKIND", "ZUUID", "ZTITLE", "ZPARENTFOLDER", "ZTRASHEDSTATE",
              "ZCUSTOMSORTKEY", "ZCUSTOMSORTASCENDING", "ZCREATIONDATE"});
    addTable(version.joinTable(), {version.joinAlbum(), version.joinAsset, version.joinPlace()});
    const std::string number = version.joinAsset.substr(0, version.joinAsset.find("ASSETS"));
    addTable(number + "MEMORIESBEINGCURATEDASSETS", {"Z_40MEMORIES", version.joinAsset});
    addTable("Z_29KEYASSETS", {"Z_29ALBUMS", version.joinAsset});
    addTable("Z_2ALBUMLISTS", {version.joinAlbum(), "Z_2ALBUMLISTS"});
}

void LibraryTablesWriter::addPhoto(int id, TableRow row)
{
    row.insert({{"Z_PK", id}, {"ZKIND", 0}, {"ZSAVEDASSETTYPE", 3}, {"ZTRASHEDSTATE", 0}});
    add(m_version.assets, row);
}

void LibraryTablesWriter::addVideo(int id, TableRow row)
{
    row.insert({"ZKIND", 1});
    addPhoto(id, row);
}

void LibraryTablesWriter::addAttributes(int id, int asset, TableRow row)
{
    row.insert({{"Z_PK", id}, {"ZASSET", asset}});
    add("ZADDITIONALASSETATTRIBUTES", row);
}

void LibraryTablesWriter::addAlbum(int id, TableRow row)
{
    row.insert({{"Z_PK", id}, {"ZKIND", 2}, {"ZTRASHEDSTATE", 0}});
    add("ZGENERICALBUM", row);
}

void LibraryTablesWriter::addMember(int album, int asset, const SqlValue &place)
{
    add(m_version.joinTable(), {{m_version.joinAlbum(), album},
                                {m_version.joinAsset, asset},
                                {m_version.joinPlace(), place}});
}

void LibraryTablesWriter::addKeyword(int id, const SqlValue &title)
{
    add("ZKEYWORD", {{"Z_PK", id}, {"ZTITLE", title}});
}

void LibraryTablesWriter::addKeywordOf(int attributes, int keyword)
{
    add(m_version.keywordTable(),
        {{m_version.keywordAttributes(), attributes}, {m_version.keywordKeyword(), keyword}});
}

void LibraryTablesWriter::addPerson(int id, const SqlValue &name, TableRow row)
{
    row.insert({{"Z_PK", id}, {"ZFULLNAME", name}});
    add("ZPERSON", row);
}

void LibraryTablesWriter::addFace(const SqlValue &asset, const SqlValue &person)
{
    add("ZDETECTEDFACE", {{m_version.faceAsset, asset}, {m_version.facePerson, person}});
}

void LibraryTablesWriter::add(const std::string &table, const TableRow &row)
{
    m_tables[table].rows.push_back(row);
}

void LibraryTablesWriter::leaveOut(const std::string &table)
{
    if (m_tables.erase(table) != 1)
        throw std::runtime_error("no table " + table);
}

void LibraryTablesWriter::leaveOut(const std::string &table, const std::string &column)
{
    std::vector<std::string> &columns = m_tables.at(table).columns;
    const auto found = std::find(columns.begin(), columns.end(), column);
    if (found == columns.end())
        throw std::runtime_error("no column " + column);
    columns.erase(found);
}

void LibraryTablesWriter::rename(const std::string &table, const std::string &column,
                                 const std::string &to)
{
    leaveOut(table, column);
    Table &renamed = m_tables.at(table);
    renamed.columns.push_back(to);
    for (TableRow &row : renamed.rows) {
        if (row.count(column))
            row[to] = row.at(column);
    }
}

void LibraryTablesWriter::addTable(const std::string &table,
                                   const std::vector<std::string> &columns)
{
    m_tables[table].columns = columns;
}

void LibraryTablesWriter::writeTable(sqlite3 *db, const std::string &name, const Table &table)
{
    std::vector<std::string> definitions;
    std::transform(table.columns.begin(), table.columns.end(), std::back_inserter(definitions),
                   definition);
    runSql(db, "CREATE TABLE " + quoted(name) + " (" + joined(definitions) + ")");
    for (const TableRow &row : table.rows) {
        TableRow written;
        for (const std::string &column : table.columns) {
            if (row.count(column))
                written[column] = row.at(column);
        }
        insert(db, name, written);
    }
}

QByteArray LibraryTablesWriter::bytes() const
{
    const SqliteOwner db = openEmptyDatabase();
    if (m_isUtf16)
        runSql(db.get(), "PRAGMA encoding = 'UTF-16le'");
    for (const auto &[name, table] : m_tables)
        writeTable(db.get(), name, table);
    for (const std::string &sql : m_sql)
        runSql(db.get(), sql);
    sqlite3_int64 size = 0;
    const std::unique_ptr<unsigned char, decltype(&sqlite3_free)> image(
        sqlite3_serialize(db.get(), "main", &size, 0), &sqlite3_free);
    return QByteArray(reinterpret_cast<const char *>(image.get()), static_cast<int>(size));
}
