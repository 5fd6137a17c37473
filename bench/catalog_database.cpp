#include "catalog_database.h"

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <random>

namespace {

// As much of a table as the catalog reads, and little more, so that passing over the rest does not
// hide what reading takes. The order of columns is the system's: numbers, dates, texts.
const char *const schema =
    "CREATE TABLE ZASSET (Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER, "
    "ZADJUSTMENTSSTATE INTEGER, ZAVALANCHEPICKTYPE INTEGER, ZCLOUDLOCALSTATE INTEGER, "
    "ZCOMPLETE INTEGER, ZFAVORITE INTEGER, ZHDRTYPE INTEGER, ZHEIGHT INTEGER, ZHIDDEN INTEGER, "
    "ZKIND INTEGER, ZKINDSUBTYPE INTEGER, ZORIENTATION INTEGER, ZPLAYBACKSTYLE INTEGER, "
    "ZSAVEDASSETTYPE INTEGER, ZTHUMBNAILINDEX INTEGER, ZTRASHEDSTATE INTEGER, "
    "ZVISIBILITYSTATE INTEGER, ZWIDTH INTEGER, ZADDITIONALATTRIBUTES INTEGER, "
    "ZIMPORTSESSION INTEGER, ZADDEDDATE TIMESTAMP, ZDATECREATED TIMESTAMP, ZDURATION FLOAT, "
    "ZLATITUDE FLOAT, ZLONGITUDE FLOAT, ZMODIFICATIONDATE TIMESTAMP, ZSORTTOKEN FLOAT, "
    "ZTRASHEDDATE TIMESTAMP, ZAVALANCHEUUID VARCHAR, ZDIRECTORY VARCHAR, ZFILENAME VARCHAR, "
    "ZUNIFORMTYPEIDENTIFIER VARCHAR, ZUUID VARCHAR);"
    "CREATE TABLE ZADDITIONALASSETATTRIBUTES (Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, "
    "Z_OPT INTEGER, ZORIGINALFILESIZE INTEGER, ZORIGINALHEIGHT INTEGER, ZORIGINALWIDTH INTEGER, "
    "ZTIMEZONEOFFSET INTEGER, ZASSET INTEGER, ZASSETDESCRIPTION INTEGER, "
    "ZEXIFTIMESTAMPSTRING VARCHAR, ZORIGINALFILENAME VARCHAR, ZTIMEZONENAME VARCHAR, "
    "ZTITLE VARCHAR);"
    "CREATE TABLE ZASSETDESCRIPTION (Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER, "
    "ZASSETATTRIBUTES INTEGER, ZLONGDESCRIPTION VARCHAR);"
    "CREATE TABLE ZKEYWORD (Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER, "
    "ZSHORTCUT VARCHAR, ZTITLE VARCHAR, ZUUID VARCHAR);"
    "CREATE TABLE Z_1KEYWORDS (Z_1ASSETATTRIBUTES INTEGER, Z_47KEYWORDS INTEGER, "
    "PRIMARY KEY (Z_1ASSETATTRIBUTES, Z_47KEYWORDS));"
    "CREATE TABLE ZPERSON (Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER, "
    "ZFACECOUNT INTEGER, ZTYPE INTEGER, ZDISPLAYNAME VARCHAR, ZFULLNAME VARCHAR, "
    "ZPERSONUUID VARCHAR);"
    "CREATE TABLE ZDETECTEDFACE (Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER, "
    "ZHIDDEN INTEGER, ZASSETFORFACE INTEGER, ZPERSONFORFACE INTEGER, ZCENTERX FLOAT, "
    "ZCENTERY FLOAT, ZSIZE FLOAT, ZUUID VARCHAR);"
    "CREATE TABLE ZGENERICALBUM (Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER, "
    "ZCUSTOMSORTASCENDING INTEGER, ZCUSTOMSORTKEY INTEGER, ZKIND INTEGER, ZTRASHEDSTATE INTEGER, "
    "ZPARENTFOLDER INTEGER, ZCREATIONDATE TIMESTAMP, ZTITLE VARCHAR, ZUUID VARCHAR);"
    "CREATE TABLE Z_30ASSETS (Z_30ALBUMS INTEGER, Z_3ASSETS INTEGER, Z_FOK_3ASSETS INTEGER, "
    "PRIMARY KEY (Z_30ALBUMS, Z_3ASSETS));"
    "CREATE TABLE Z_PRIMARYKEY (Z_ENT INTEGER PRIMARY KEY, Z_NAME VARCHAR, Z_SUPER INTEGER, "
    "Z_MAX INTEGER);"
    "INSERT INTO Z_PRIMARYKEY VALUES (1, 'AdditionalAssetAttributes', 0, 0), (3, 'Asset', 0, 0), "
    "(30, 'Album', 29, 0), (47, 'Keyword', 0, 0);";

[[noreturn]] void fail(sqlite3 *db, const std::string &what)
{
    std::fprintf(stderr, "bench: %s: %s\n", what.c_str(), sqlite3_errmsg(db));
    std::exit(1);
}

void run(sqlite3 *db, const std::string &sql)
{
    if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        fail(db, sql);
}

// A statement with an integer parameter ?1, and a random one from 0 to 2^31 ?2 and ?3.
class Inserter
{
public:
    Inserter(sqlite3 *db, const std::string &sql) : m_db(db)
    {
        if (sqlite3_prepare_v2(db, sql.c_str(), -1, &m_stmt, nullptr) != SQLITE_OK)
            fail(db, sql);
    }
    ~Inserter() { sqlite3_finalize(m_stmt); }

    Inserter(const Inserter &) = delete;
    Inserter &operator=(const Inserter &) = delete;

    void insertFrom1To(int last)
    {
        for (int id = 1; id <= last; ++id) {
            sqlite3_bind_int(m_stmt, 1, id);
            sqlite3_bind_int(m_stmt, 2, static_cast<int>(m_random() >> 1));
            sqlite3_bind_int(m_stmt, 3, static_cast<int>(m_random() >> 1));
            if (sqlite3_step(m_stmt) != SQLITE_DONE)
                fail(m_db, "insert");
            sqlite3_reset(m_stmt);
        }
    }

private:
    sqlite3 *m_db;
    sqlite3_stmt *m_stmt = nullptr;
    std::mt19937 m_random{1};
};

const char *const uuid = "printf('%08X-%04X-4000-8000-%012X', ?2, ?3 & 65535, ?1)";

void insertPhotos(sqlite3 *db, const CatalogSize &size)
{
    const std::string name = "printf('IMG_%04d.%s', ?1 % 10000, iif(?1 % 12, 'HEIC', 'MOV'))";
    Inserter(db,
             "INSERT INTO ZASSET VALUES (?1, 3, 5, iif(?2 % 9, 0, 2), 0, ?2 % 2, 1, ?2 % 20 = 0, "
             "0, 3024, 0, ?1 % 12 = 0, iif(?1 % 12, 2 * (?2 % 3 = 0), 0), 1 + 5 * (?3 % 2), 1, "
             "3, ?1, ?3 % 50 = 0, 0, 4032, ?1, 101 + ?1 / 200, 700000000.5 + ?1, "
             "500000000.25 + ?2 % 200000000, iif(?1 % 12, 0, 12.5), 46.0 + ?2 % 1000 * 0.001, "
             "7.0 + ?3 % 1000 * 0.001, 700000000.75 + ?1, 0.5, "
             "iif(?3 % 50, NULL, 710000000.5), iif(?2 % 40, NULL, 'B' || " +
                 std::string(uuid) + "), printf('DCIM/%dAPPLE', 100 + ?1 / 1000 % 900), " + name +
                 ", 'public.heic', " + uuid + ")")
        .insertFrom1To(size.assets);
    Inserter(db, "INSERT INTO ZADDITIONALASSETATTRIBUTES VALUES (?1, 1, 2, 2000000 + ?2 % 3000000, "
                 "3024, 4032, 3600 * (?3 % 12), ?1, iif(?1 % 10, NULL, ?1 / 10), "
                 "'2024:07:01 12:34:56', " +
                     name + ", 'Europe/Vienna', iif(?2 % 8, NULL, 'Title ' || ?2))")
        .insertFrom1To(size.assets);
    Inserter(db, "INSERT INTO ZASSETDESCRIPTION VALUES (?1, 6, 1, ?1 * 10, 'What is to be seen on "
                 "this photo, in a sentence or two ' || ?2)")
        .insertFrom1To(size.assets / 10);
}

void insertKeywordsAndPeople(sqlite3 *db, const CatalogSize &size)
{
    const std::string photo = " % " + std::to_string(size.assets);
    Inserter(db, std::string("INSERT INTO ZKEYWORD VALUES (?1, 47, 1, NULL, 'Keyword ' || ?2, ") +
                     uuid + ")")
        .insertFrom1To(size.keywords);
    Inserter(db, "INSERT OR IGNORE INTO Z_1KEYWORDS VALUES (1 + ?2" + photo + ", 1 + ?3 % " +
                     std::to_string(size.keywords) + ")")
        .insertFrom1To(size.assets + size.assets / 2);
    Inserter(db, std::string("INSERT INTO ZPERSON VALUES (?1, 54, 1, 3, 0, 'First', 'First Last ' "
                             "|| ?2, ") +
                     uuid + ")")
        .insertFrom1To(size.people);
    Inserter(db, "INSERT INTO ZDETECTEDFACE VALUES (?1, 20, 1, 0, 1 + ?2" + photo + ", 1 + ?3 % " +
                     std::to_string(size.people) + ", 0.5, 0.5, 0.25, " + uuid + ")")
        .insertFrom1To(size.assets);
}

void insertAlbums(sqlite3 *db, const CatalogSize &size)
{
    const std::string album = "1 + ?3 % " + std::to_string(size.albums);
    Inserter(db, std::string("INSERT INTO ZGENERICALBUM VALUES (?1, 30, 1, ?1 / 4 % 2, "
                             "CASE ?1 % 4 WHEN 0 THEN 1 WHEN 1 THEN 5 ELSE 0 END, 2, 0, NULL, "
                             "600000000.5, 'Album ' || ?1, ") +
                     uuid + ")")
        .insertFrom1To(size.albums);
    Inserter(db, std::string("INSERT INTO ZGENERICALBUM VALUES (100 + ?1, 39, 1, 1, 0, 1506, "
                             "0, NULL, 600000000.5, NULL, ") +
                     uuid + ")")
        .insertFrom1To(size.assets / 200 + 1);
    Inserter(db, "INSERT OR IGNORE INTO Z_30ASSETS VALUES (" + album + ", 1 + ?2 % " +
                     std::to_string(size.assets) + ", ?1 * 1024)")
        .insertFrom1To(size.assets * 6 / 10);
}

} // namespace

void writeCatalogDatabase(const std::string &path, const CatalogSize &size)
{
    sqlite3 *db = nullptr;
    if (sqlite3_open(path.c_str(), &db) != SQLITE_OK)
        fail(db, "open");
    run(db, schema);
    run(db, "BEGIN");
    insertPhotos(db, size);
    insertKeywordsAndPeople(db, size);
    insertAlbums(db, size);
    run(db, "UPDATE Z_PRIMARYKEY SET Z_MAX = " + std::to_string(size.assets) +
                " WHERE Z_NAME = 'Asset'");
    run(db, "COMMIT");
    sqlite3_close(db);
}
