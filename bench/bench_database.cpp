#include "bench_database.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <vector>

namespace {

const char *const assetColumns =
    "(Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER, "
    "ZCOMPLETE INTEGER, ZFAVORITE INTEGER, ZHEIGHT INTEGER, ZHIDDEN INTEGER, ZKIND INTEGER, "
    "ZKINDSUBTYPE INTEGER, ZORIENTATION INTEGER, ZSAVEDASSETTYPE INTEGER, "
    "ZTHUMBNAILINDEX INTEGER, ZTRASHEDSTATE INTEGER, ZVISIBILITYSTATE INTEGER, ZWIDTH INTEGER, "
    "ZDATECREATED TIMESTAMP, ZMODIFICATIONDATE TIMESTAMP, ZSORTTOKEN FLOAT, "
    "ZTRASHEDDATE TIMESTAMP, ZAVALANCHEUUID VARCHAR, ZDIRECTORY VARCHAR, ZFILENAME VARCHAR, "
    "ZUUID VARCHAR";

const char *const genericTables =
    "CREATE TABLE ZADDITIONALASSETATTRIBUTES (Z_PK INTEGER PRIMARY KEY, ZASSET INTEGER, "
    "ZORIGINALFILESIZE INTEGER, ZDURATION FLOAT);";

const char *const zassetTables =
    "CREATE TABLE ZADDITIONALASSETATTRIBUTES (Z_PK INTEGER PRIMARY KEY, ZASSET INTEGER, "
    "ZORIGINALFILESIZE INTEGER);"
    "CREATE INDEX ZADDITIONALASSETATTRIBUTES_ZASSET_INDEX ON ZADDITIONALASSETATTRIBUTES (ZASSET);";

const char *const commonTables =
    "CREATE TABLE ZGENERICALBUM (Z_PK INTEGER PRIMARY KEY, ZKIND INTEGER, ZTRASHEDSTATE INTEGER, "
    "ZTITLE VARCHAR, ZUUID VARCHAR);"
    "CREATE TABLE Z_METADATA (Z_VERSION INTEGER PRIMARY KEY, Z_UUID VARCHAR(255), Z_PLIST BLOB);"
    "INSERT INTO Z_METADATA VALUES (1, 'A0B1C2D3-0000-4000-8000-0123456789AB', NULL);"
    "CREATE TABLE Z_23ASSETS (Z_23ALBUMS INTEGER, Z_30ASSETS INTEGER, Z_FOK_30ASSETS INTEGER, "
    "PRIMARY KEY (Z_23ALBUMS, Z_30ASSETS));";

std::string schemaOf(const Library &library)
{
    const std::string assets =
        library.isZasset
            ? std::string("CREATE TABLE ZASSET ") + assetColumns + ", ZDURATION FLOAT);"
            : std::string("CREATE TABLE ZGENERICASSET ") + assetColumns + ");";
    return "PRAGMA journal_mode=WAL;" + assets + (library.isZasset ? zassetTables : genericTables) +
           commonTables;
}

void check(int result, sqlite3 *db, const char *what)
{
    if (result == SQLITE_OK || result == SQLITE_DONE)
        return;
    std::fprintf(stderr, "bench: %s: %s\n", what, sqlite3_errmsg(db));
    std::exit(1);
}

// Inserts rows through one prepared statement.
class Inserter
{
public:
    Inserter(sqlite3 *db, const char *sql) : m_db(db), m_stmt(nullptr)
    {
        check(sqlite3_prepare_v2(db, sql, -1, &m_stmt, nullptr), db, sql);
    }
    ~Inserter() { sqlite3_finalize(m_stmt); }

    Inserter(const Inserter &) = delete;
    Inserter &operator=(const Inserter &) = delete;

    Inserter &number(sqlite3_int64 value)
    {
        sqlite3_bind_int64(m_stmt, ++m_column, value);
        return *this;
    }
    Inserter &real(double value)
    {
        sqlite3_bind_double(m_stmt, ++m_column, value);
        return *this;
    }
    Inserter &text(const std::string &value)
    {
        sqlite3_bind_text(m_stmt, ++m_column, value.c_str(), -1, SQLITE_TRANSIENT);
        return *this;
    }
    void insert()
    {
        check(sqlite3_step(m_stmt), m_db, "insert");
        sqlite3_reset(m_stmt);
        m_column = 0;
    }

private:
    sqlite3 *m_db;
    sqlite3_stmt *m_stmt;
    int m_column = 0;
};

std::string formatted(const char *format, unsigned a, unsigned b = 0, unsigned c = 0,
                      unsigned d = 0)
{
    char text[64];
    std::snprintf(text, sizeof text, format, a, b, c, d);
    return text;
}

std::string randomUuid(std::mt19937 &random)
{
    unsigned words[4];
    for (unsigned &word : words)
        word = static_cast<unsigned>(random());
    const unsigned a = words[0], b = words[1], c = words[2], d = words[3];
    return formatted("%08X-%04X-4", a, b >> 16) + formatted("%03X-%04X-", b & 0xfff, c >> 16) +
           formatted("%04X%08X", c & 0xffff, d);
}

bool isVideo(int asset)
{
    return asset % 12 == 0;
}

// Dates minutes apart, in no order of the keys, as after years of syncing.
std::vector<int> shuffledDates(const Library &library, std::mt19937 &random)
{
    const int firstDate = 500000000;
    std::vector<int> dates(static_cast<std::size_t>(library.assets), firstDate);
    if (!library.hasOneDate) {
        for (std::size_t i = 1; i < dates.size(); ++i)
            dates[i] = dates[i - 1] + 1 + static_cast<int>(random() % 300);
        std::shuffle(dates.begin(), dates.end(), random);
    }
    return dates;
}

const char *const insertGeneric =
    "INSERT INTO ZGENERICASSET VALUES "
    "(?1,3,1,1,0,3024,0,?2,?3,1,3,?1,0,0,4032,?4,?4,0,NULL,NULL,?5,?6,?7)";
const char *const insertZasset =
    "INSERT INTO ZASSET VALUES "
    "(?1,3,1,1,0,3024,0,?2,?3,1,3,?1,0,0,4032,?4,?4,0,NULL,NULL,?5,?6,?7,?2*12.5)";

// Their own key is the asset's, or another one.
const char *const insertAttributes = "INSERT INTO ZADDITIONALASSETATTRIBUTES VALUES (?1,?1,?2,?3)";
const char *const insertNamingAttributes =
    "INSERT INTO ZADDITIONALASSETATTRIBUTES VALUES (?1+7,?1,?2)";

void insertAssets(sqlite3 *db, const Library &library)
{
    std::mt19937 random(1);
    const std::vector<int> dates = shuffledDates(library, random);
    Inserter assets(db, library.isZasset ? insertZasset : insertGeneric);
    Inserter attributes(db, library.isZasset ? insertNamingAttributes : insertAttributes);
    for (int asset = 1; asset <= library.assets; ++asset) {
        const unsigned number = static_cast<unsigned>(asset);
        assets.number(asset)
            .number(isVideo(asset) ? 1 : 0)
            .number(asset % 50 == 1 ? 1 : 0)
            .real(dates[static_cast<std::size_t>(asset - 1)] + 0.25)
            .text(formatted("DCIM/%03uAPPLE", 100 + number / 1000 % 900))
            .text(formatted(isVideo(asset) ? "IMG_%04u.MOV" : "IMG_%04u.JPG", number % 10000))
            .text(randomUuid(random))
            .insert();
        attributes.number(asset).number(2000000 + asset);
        if (!library.isZasset)
            attributes.real(isVideo(asset) ? 12.5 : 0.0);
        attributes.insert();
    }
}

void insertAlbum(sqlite3 *db, int key, int kind, const std::string &title)
{
    std::mt19937 random(static_cast<unsigned>(key));
    Inserter(db, "INSERT INTO ZGENERICALBUM VALUES (?,?,0,?,?)")
        .number(key)
        .number(kind)
        .text(title)
        .text(randomUuid(random))
        .insert();
}

int userAlbumKey(int place)
{
    // The library itself makes an album of the key 1000 where there is no Camera Roll.
    return place + 2 < 1000 ? place + 2 : place + 3;
}

void insertMembers(Inserter &members, int album, const Library &library)
{
    if (library.members == 0) {
        // Half of the assets are in an album, some of them in two.
        const int step = 2 * library.userAlbums - album % 3;
        for (int asset = album; asset <= library.assets; asset += step)
            members.number(album).number(asset).insert();
        return;
    }
    // Neighbours, as of one journey; the journeys overlap.
    const int first = static_cast<int>(album * 7919LL % (library.assets - library.members));
    for (int asset = first + 1; asset <= first + library.members; ++asset)
        members.number(album).number(asset).insert();
}

void insertAlbums(sqlite3 *db, const Library &library)
{
    Inserter members(db, "INSERT INTO Z_23ASSETS VALUES (?1,?2,?2)");
    if (library.hasCameraRoll) {
        insertAlbum(db, 1, 1000, "Camera Roll");
        for (int asset = 1; asset <= library.assets; ++asset)
            members.number(1).number(asset).insert();
    }
    for (int i = 0; i < library.userAlbums; ++i) {
        const int album = userAlbumKey(i);
        insertAlbum(db, album, album % 4 == 0 ? 1550 : 2, formatted("Album %u", unsigned(album)));
        insertMembers(members, album, library);
    }
}

} // namespace

void writeLibrary(const std::string &root, const Library &library)
{
    std::filesystem::create_directories(root + "/PhotoData");
    sqlite3 *db = nullptr;
    check(sqlite3_open((root + "/PhotoData/Photos.sqlite").c_str(), &db), db, "open");
    check(sqlite3_exec(db, schemaOf(library).c_str(), nullptr, nullptr, nullptr), db, "schema");
    check(sqlite3_exec(db, "BEGIN", nullptr, nullptr, nullptr), db, "begin");
    insertAssets(db, library);
    check(sqlite3_exec(db, "COMMIT; PRAGMA wal_checkpoint(TRUNCATE); BEGIN", nullptr, nullptr,
                       nullptr),
          db, "checkpoint");
    insertAlbums(db, library);
    check(sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr), db, "commit");
    // The write-ahead log stays, as on a device.
    sqlite3_db_config(db, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    sqlite3_close(db);
}
