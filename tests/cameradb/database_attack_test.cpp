#include "cameradb/asset_queries.h"
#include "cameradb/local_copy_fixture.h"
#include "sqlite/sqlite_connection.h"
#include "support/raw_pages.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

namespace {

using Statements = std::vector<std::string>;

const qint64 mebibyte = 1048576;

// Far above what any of them takes, and far below what they took.
const std::clock_t longestParse = 10 * CLOCKS_PER_SEC;

const LogLine noAlbums = failure("Can not parse camera album");
const char *const dropAlbums = "DROP TABLE ZGENERICALBUM";

// Databases that were made to run something, or to take time, memory or stack.
class DatabaseAttack : public LocalCopyFixture
{
protected:
    DatabaseAttack()
    {
        database.rows.assets = {photoRow(1, 1), videoRow(2, 2)};
        database.rows.albums = {albumRow(3)};
        database.join().add(3, 1);
    }

    // Ends within the bounds of time and memory that hold for every file.
    int parseInBounds(const QByteArray &bytes)
    {
        sqlite3_memory_highwater(1);
        const qint64 before = sqlite3_memory_used();
        const std::clock_t start = std::clock();
        const int result = parse(bytes);
        const std::clock_t time = std::clock() - start;
        const qint64 memory = sqlite3_memory_highwater(0) - before;
        EXPECT_LT(time, longestParse);
        EXPECT_LE(memory, 4 * bytes.size() + 64 * mebibyte);
        std::printf("%d KiB of file: %ld ms, %lld KiB of memory\n", bytes.size() / 1024,
                    long(time * 1000 / CLOCKS_PER_SEC), static_cast<long long>(memory / 1024));
        expectContract(result);
        return result;
    }
};

// --- Schemas

struct Attack {
    const char *name;
    Statements sql;
    LogLines failures; ///< empty for a parse that succeeds
};

class SchemaAttack : public DatabaseAttack, public testing::WithParamInterface<Attack>
{
};

TEST_P(SchemaAttack, EndsAtOnceWithTheResultAndLogOfItsFirstFailure)
{
    database.rows.sql = GetParam().sql;
    const bool fails = !GetParam().failures.empty();

    EXPECT_EQ(parseInBounds(database.bytes()), fails ? 0 : 1);

    EXPECT_EQ(host.log(), fails ? failedLog(GetParam().failures) : parsedLog());
    expectHealthyParse();
}

// A definition as a device may write it, whatever SQLite says of it.
Statements defined(const std::string &name, const std::string &sql)
{
    std::string quoted;
    for (const char character : sql)
        quoted.append(character == '\'' ? 2 : 1, character);
    return {"PRAGMA writable_schema = ON", "INSERT INTO sqlite_master VALUES ('table', '" + name +
                                               "', '" + name +
                                               "', (SELECT rootpage FROM sqlite_master WHERE name "
                                               "= 'Z_METADATA'), '" +
                                               quoted + "')"};
}

Statements together(Statements first, const Statements &second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Statements albumsDefined(const std::string &columns)
{
    return together({dropAlbums},
                    defined("ZGENERICALBUM", "CREATE TABLE ZGENERICALBUM (" + columns + ")"));
}

Statements albumsSelected(const std::string &from)
{
    return {dropAlbums, "CREATE VIEW ZGENERICALBUM AS SELECT 1 AS Z_PK, 'x' AS ZTITLE, 2 AS ZKIND, "
                        "x'00' AS ZUUID, 0 AS ZTRASHEDSTATE FROM " +
                            from};
}

const std::string jump = "fts3_tokenizer('simple', x'4141414141414141')";

std::string wideMaximum()
{
    std::string arguments = "hex(zeroblob(500000))";
    for (int i = 1; i < 120; ++i)
        arguments += ", hex(zeroblob(500000 + " + std::to_string(i) + "))";
    return "max(" + arguments + ")";
}

INSTANTIATE_TEST_SUITE_P(
    Schemas, SchemaAttack,
    testing::Values(
        Attack{"TokenizersAddressInACheckedTable",
               together(defined("t", "CREATE TABLE t (x CHECK (" + jump + "))"),
                        together(albumsSelected("pragma_integrity_check('t')"),
                                 {"CREATE VIRTUAL TABLE next USING fts4(a)"})),
               {noAlbums}},
        Attack{"TokenizersAddressInAGeneratedColumn",
               albumsDefined("Z_PK, ZTITLE, ZKIND, ZUUID, ZTRASHEDSTATE AS (" + jump + ")"),
               {noAlbums}},
        Attack{"QuickCheck", albumsSelected("pragma_quick_check"), {noAlbums}},
        Attack{"PagesOfTheFile", albumsSelected("dbstat"), {noAlbums}},
        Attack{"ASearchIndexOverAView",
               {dropAlbums,
                "CREATE VIEW content AS SELECT 1 AS rowid, hex(zeroblob(900000)) AS ZTITLE, 1 AS "
                "Z_PK, 2 AS ZKIND, 3 AS ZUUID, 0 AS ZTRASHEDSTATE",
                "CREATE VIRTUAL TABLE ZGENERICALBUM USING fts5(Z_PK, ZTITLE, ZKIND, ZUUID, "
                "ZTRASHEDSTATE, content = 'content')"},
               {noAlbums}},
        Attack{"ASearchIndex",
               {dropAlbums, "CREATE VIRTUAL TABLE ZGENERICALBUM USING "
                            "fts4(Z_PK, ZTITLE, ZKIND, ZUUID, ZTRASHEDSTATE)"},
               {noAlbums}},
        Attack{"ASearchInAGeneratedColumn",
               albumsDefined("Z_PK, ZTITLE, ZKIND, ZUUID, ZTRASHEDSTATE AS "
                             "(instr(hex(zeroblob(500000)), hex(zeroblob(240000)) || '1'))"),
               {noAlbums}},
        Attack{"APatternInAGeneratedColumn",
               albumsDefined("Z_PK, ZTITLE, ZKIND, ZUUID, ZTRASHEDSTATE AS "
                             "(hex(zeroblob(500000)) LIKE '%0%0%0%0%0%0%0%0%0%1')"),
               {noAlbums}},
        Attack{
            "ValuesInManyRegisters",
            albumsDefined("Z_PK, ZTITLE, ZKIND, ZUUID, ZTRASHEDSTATE AS (" + wideMaximum() + ")"),
            {noAlbums}},
        Attack{"AStoredGeneratedColumn",
               albumsDefined("Z_PK, ZTITLE, ZKIND, ZUUID, ZTRASHEDSTATE GENERATED ALWAYS AS "
                             "(random()) STORED"),
               {noAlbums}},
        Attack{"AGeneratedColumnBehindAByteOrderMark",
               albumsDefined("Z_PK, ZTITLE, ZKIND, ZUUID, ZTRASHEDSTATE \xef\xbb\xbf\xef\xbb\xbf"
                             "AS (ZKIND || ZKIND)"),
               {noAlbums}},
        Attack{"ACheckedColumn",
               albumsDefined("Z_PK, ZTITLE, ZKIND, ZUUID, ZTRASHEDSTATE check (ZKIND > 0)"),
               {noAlbums}},
        Attack{"ADefinitionBesideThePlainOne",
               defined("other", "CREATE TABLE ZGENERICALBUM (Z_PK, ZTITLE AS (" + jump + "))"),
               {failure("master sql error #11: malformed database schema (other)")}},
        Attack{"ADefinitionUnderThePlainName",
               together({dropAlbums},
                        defined("ZGENERICALBUM", "CREATE/**/TABLE ZGENERICALBUM (Z_PK, ZTITLE, "
                                                 "ZKIND, ZUUID, ZTRASHEDSTATE AS (random()))")),
               {noAlbums}},
        Attack{"ANameThatGoesOn",
               together({dropAlbums},
                        together(defined("x", "CREATE/**/TABLE ZGENERICALBUM (Z_PK, ZTITLE, ZKIND, "
                                              "ZUUID, ZTRASHEDSTATE AS (random()))"),
                                 defined("ZGENERICALBUM", "CREATE TABLE \"ZGENERICALBUM x\" (a)"))),
               {failure("master sql error #11: malformed database schema (x)")}},
        Attack{"StatisticsThatAreComputed",
               defined("sqlite_stat1", "CREATE TABLE sqlite_stat1 (tbl, idx, stat AS "
                                       "(hex(zeroblob(1000000000))))"),
               {}},
        Attack{"AnIndexOnAnExpression",
               {"CREATE INDEX i ON ZGENERICALBUM (hex(zeroblob(10 + ZKIND))) WHERE ZTITLE LIKE "
                "'%a%b%c%'"},
               {}},
        Attack{"ATriggerThatCallsFunctions",
               {"CREATE TRIGGER t AFTER INSERT ON ZGENERICALBUM BEGIN SELECT "
                "hex(zeroblob(1000000000)); END"},
               {}},
        Attack{"OtherTablesThatAreNotPlain",
               {"CREATE TABLE checked (x CHECK (length(x) > 3), y AS (x || x))",
                "CREATE VIRTUAL TABLE boxes USING rtree(id, a, b)", "CREATE VIEW v AS SELECT 1"},
               {}},
        Attack{"AlbumsAreAView",
               {"ALTER TABLE ZGENERICALBUM RENAME TO stored",
                "CREATE VIEW ZGENERICALBUM AS SELECT * FROM stored"},
               {noAlbums}},
        Attack{"AssetsAreAView",
               {"ALTER TABLE ZGENERICASSET RENAME TO stored",
                "CREATE VIEW ZGENERICASSET AS SELECT * FROM stored"},
               {failure("photo sql error #1: access to view \"ZGENERICASSET\" prohibited")}}),
    rowName<Attack>);

// The memory is that of what SQLite makes of the text.
TEST_F(DatabaseAttack, DoesNotFillMemoryWithASchema)
{
    std::string list = "1";
    for (int i = 0; i < 25000; ++i)
        list += ",1";
    Statements sql = {"PRAGMA writable_schema = ON"};
    for (int i = 0; i < 200; ++i)
        sql.push_back("INSERT INTO sqlite_master VALUES ('table', 't" + std::to_string(i) +
                      "', 't" + std::to_string(i) + "', 2, 'CREATE TABLE t" + std::to_string(i) +
                      " (x CHECK (x IN (" + list + ")))')");
    database.rows.sql = sql;

    EXPECT_EQ(parseInBounds(database.bytes()), 0);

    EXPECT_EQ(host.log(), failedLog({failure("master sql error #9: interrupted")}));
    expectHealthyParse();
}

TEST_F(DatabaseAttack, HasNoDefinitionOfMoreThanAFewKilobytes)
{
    database.rows.sql = {"CREATE TABLE t (" + std::string(70000, 'x') + ")"};

    EXPECT_EQ(parseInBounds(database.bytes()), 0);

    EXPECT_EQ(
        host.log(),
        failedLog({failure("master sql error #11: malformed database schema (t) - string or blob "
                           "too big")}));
    expectHealthyParse();
}

// --- Queries in the join table's name

struct Injected {
    const char *name;
    std::string table; ///< `SELECT * FROM ` goes before it
    QByteArray reason;
};

class InjectedQuery : public DatabaseAttack, public testing::WithParamInterface<Injected>
{
};

TEST_P(InjectedQuery, IsRefused)
{
    database.rows.libraryUuids = {"45A4A0C8-8612-4893-A017-25E9315171FA"};
    JoinTable table;
    table.name = GetParam().table;
    database.joinTables = {table};

    EXPECT_EQ(parseInBounds(database.bytes()), 0);

    EXPECT_EQ(host.log(),
              failedLog({notice("Got asset table name: " + QByteArray::fromStdString(table.name)),
                         failure("Can not parse camera photos: " + GetParam().reason)}));
    expectHealthyParse();
}

std::string queriesOfQueries(int levels)
{
    std::string sql = "WITH c0 AS (SELECT 1 AS x)";
    for (int level = 1; level <= levels; ++level) {
        const std::string below = "c" + std::to_string(level - 1);
        sql +=
            ",c" + std::to_string(level) + " AS (SELECT a.x FROM " + below + " a," + below + " b)";
    }
    return sql + " SELECT x FROM c" + std::to_string(levels);
}

INSTANTIATE_TEST_SUITE_P(
    Names, InjectedQuery,
    testing::Values(
        Injected{"TokenizersAddress", "Z_METADATA, (select " + jump + ")--ASSETS",
                 "authorization denied"},
        Injected{"IntegrityCheck", "Z_METADATA, pragma_integrity_check('t')--ASSETS",
                 "authorization denied"},
        Injected{"QuickCheck", "Z_METADATA, pragma_quick_check--ASSETS", "authorization denied"},
        Injected{"PagesOfTheFile", "Z_METADATA, dbstat--ASSETS", "authorization denied"},
        Injected{"QueriesOfQueries", "Z_METADATA, (" + queriesOfQueries(14) + ")--ASSETS",
                 "authorization denied"},
        Injected{"AnotherOperator", "Z_METADATA where 1 match 2--ASSETS", "authorization denied"},
        Injected{"AnotherPattern", "Z_METADATA\nWHERE Z_UUID glob Z_UUID--ASSETS",
                 "authorization denied"},
        Injected{"AnotherTable", "Z_METADATA natural join Z_METADATA x--ASSETS",
                 "authorization denied"},
        Injected{"AnotherTableBehindAByteOrderMark",
                 "Z_METADATA \xef\xbb\xbfJOIN Z_METADATA x--ASSETS", "authorization denied"},
        Injected{"AnotherQuery", "Z_METADATA/**/union/**/select/**/1,2,3--ASSETS",
                 "authorization denied"},
        Injected{"ALongSort", "Z_METADATA order by\"Z_UUID\"--ASSETS", "authorization denied"},
        Injected{"AListThatIsATable", "Z_METADATA limit 1 in Z_METADATA--ASSETS",
                 "authorization denied"},
        Injected{"AnotherStatement", "Z_x; drop table ZGENERICASSET--ASSETS",
                 "no such table: Z_x"}),
    rowName<Injected>);

TEST_F(DatabaseAttack, ComparesNoLongTextsWithPatterns)
{
    JoinTable table;
    table.name = "Z_26ASSETS where Z_26ALBUMS like Z_34ASSETS--ASSETS";
    JoinTable searched;
    searched.rows = {{std::string(1000000, 'a'), "%a%a%a%a%a%a%a%a%a%a%a%a%a%a%b"}};
    database.joinTables = {table, searched};

    parseInBounds(database.bytes());

    EXPECT_TRUE(model->albums.value(3)->assetKeys.isEmpty());
    expectHealthyParse();
}

// --- Pages

class PageAttack : public DatabaseAttack
{
protected:
    // Pages of 64 KB hold the most rows that share their bytes.
    RawPages pages(int pageSize = 65536) const
    {
        return RawPages(inPagesOf(pageSize, database.bytes()));
    }

    // Fills `table` with millions of times the rows of `leaf`.
    static void multiply(RawPages &pages, const std::string &table, int leaf)
    {
        const int inner = pages.add();
        pages.fillInner(inner, leaf);
        pages.fillInner(pages.root(table), inner);
    }

    // A photo (kind 0) or video (1) whose directory has `bytes` letters.
    static std::vector<RawValue> longAsset(quint8 kind, int bytes, const RawValue &uuid)
    {
        return {RawValue::number(7), // Z_PK, which is not the row's own key
                RawValue::number(1), // Z_ENT
                RawValue::number(kind),
                RawValue::number(3),
                RawValue::number(1),
                RawValue::number(1),
                RawValue::number(1),
                RawValue::number(1),
                {13 + 2 * static_cast<quint64>(bytes), ""},
                RawValue::text("a"),
                RawValue::number(1),
                uuid};
    }
};

TEST_F(PageAttack, FindsNoDeepStackInAChainOfPages)
{
    database.rows.sql = albumsSelected("pragma_integrity_check('t')");
    database.rows.sql.insert(database.rows.sql.begin(), "CREATE TABLE t (x)");
    RawPages pages = this->pages(512);
    const int chain = 100000;
    int page = pages.root("t");
    for (int i = 0; i < chain; ++i) {
        const int next = pages.add();
        pages.fillChain(page, next);
        page = next;
    }

    EXPECT_EQ(parseInBounds(pages.bytes()), 0);
    EXPECT_EQ(host.log(), failedLog({noAlbums}));
}

TEST_F(PageAttack, ReadsNoChainOfPagesThatIsDeeperThanATree)
{
    RawPages pages = this->pages(512);
    int page = pages.root("ZGENERICALBUM");
    for (int i = 0; i < 100; ++i) {
        const int next = pages.add();
        pages.fillChain(page, next);
        page = next;
    }

    EXPECT_EQ(parseInBounds(pages.bytes()), 1);
    EXPECT_TRUE(model->albums.isEmpty());
}

TEST_F(PageAttack, KeepsNoMoreMembershipsThanTheFilesHold)
{
    RawPages pages = this->pages();
    const int leaf = pages.add();
    pages.fillLeaf(leaf, {RawValue::number(3), RawValue::number(1), RawValue::null()}, 10000);
    multiply(pages, "Z_26ASSETS", leaf);
    const QByteArray bytes = pages.bytes();

    EXPECT_EQ(parseInBounds(bytes), 1);

    const int count = model->albums.value(3)->assetKeys.size();
    EXPECT_LE(count, bytes.size() / 8 + 65537);
    EXPECT_GT(count, 65536);
}

TEST_F(PageAttack, KeepsNoMoreOfTheUuidThanTheFilesHold)
{
    database.rows.libraryUuids = {"x"};
    RawPages pages = this->pages();
    const int leaf = pages.add();
    pages.fillLeaf(leaf, {RawValue::number(1), RawValue::text(QByteArray(1000, 'u'))}, 50);
    multiply(pages, "Z_METADATA", leaf);
    const QByteArray bytes = pages.bytes();

    EXPECT_EQ(parseInBounds(bytes), 1);

    EXPECT_GT(model->uuid.size(), mebibyte);
    EXPECT_LE(model->uuid.size(), 2 * bytes.size() + mebibyte + 1000);
}

TEST_F(PageAttack, EndsSoonOnLongRowsThatItPassesOver)
{
    database.schema.uniqueKeys = false;
    RawPages pages = this->pages();
    const int overflow = pages.addOverflow(QByteArray(1000000, 'd'));
    const int leaf = pages.add();
    pages.fillLeaf(leaf, longAsset(1, 1000000, RawValue::null()), 7, overflow);
    multiply(pages, "ZGENERICASSET", leaf);
    host.setHostFile(local(), pages.bytes());
    sqlite_connection connection(QString::fromUtf8(local()));
    const qint64 before = connection.m_stepsLeft;

    EXPECT_EQ(queryCameraVideo(connection.get(), model.get()), 1);

    EXPECT_TRUE(model->assets.isEmpty());
    EXPECT_LT(before - connection.m_stepsLeft, 10);
}

// The header suggests how many pages to keep, and a sort takes as much.
TEST_F(PageAttack, SortsWithoutTheMemoryThatTheHeaderSuggests)
{
    database.schema.uniqueKeys = false;
    for (const int pageSize : {4096, 65536}) {
        RawPages pages = this->pages(pageSize);
        const int overflow = pages.addOverflow(QByteArray(200000, 'd'));
        const int leaf = pages.add();
        pages.fillLeaf(leaf, longAsset(0, 200000, RawValue::text("u")), 7, overflow);
        multiply(pages, "ZGENERICASSET", leaf);
        QByteArray bytes = pages.bytes();
        bytes.replace(48, 4, QByteArray("\x7f\xff\xff\xff", 4));

        EXPECT_EQ(parseInBounds(bytes), 1) << pageSize;
    }
}

// SQLite keeps the longest value of each column until the statement ends.
TEST_F(PageAttack, KeepsNoLongValueOfEachColumn)
{
    const int columns = 1000;
    JoinTable &join = database.join();
    join.rows.clear();
    for (int i = 0; i < columns; ++i)
        join.columns.push_back("c" + std::to_string(i));
    RawPages pages = this->pages();
    const int overflow = pages.addOverflow(QByteArray(1000000, 'x'));
    std::vector<int> leaves;
    for (int i = 0; i < columns; i += 2) {
        std::vector<std::vector<RawValue>> rows;
        for (int j = i; j < i + 2; ++j) {
            std::vector<RawValue> row(3 + columns, RawValue::null());
            row[0] = RawValue::number(3);
            row[1] = RawValue::number(1);
            row[static_cast<std::size_t>(3 + j)] = {13 + 2 * 1000000, ""};
            rows.push_back(row);
        }
        leaves.push_back(pages.add());
        pages.fillLeaf(leaves.back(), rows, overflow);
    }
    pages.fillInner(pages.root(join.name), leaves);

    EXPECT_EQ(parseInBounds(pages.bytes()), 1);
}

// SQLite takes no key for longer than the pages that the database has, by what it says.
TEST_F(PageAttack, ReadsNoDatabaseWhoseLogClaimsPagesThatAreNotThere)
{
    const quint32 claimed = 200 * mebibyte;
    const int pageSize = 4096;
    database.rows.sql = {"CREATE INDEX kinds ON ZGENERICASSET (ZKIND)"};
    RawPages pages = this->pages(pageSize);
    pages.fillIndex(pages.root("kinds"), claimed, pages.addEndlessOverflow());
    QByteArray bytes = pages.bytes();
    const QByteArray log = logThatClaims(bytes, claimed / pageSize + 1);
    host.setHostFile(local("-wal"), log);

    EXPECT_EQ(parseInBounds(bytes), 0);

    EXPECT_EQ(host.log(), failedLog({noAlbums}));
}

TEST_F(PageAttack, ReadsADatabaseWhoseLogTellsItsPages)
{
    QByteArray bytes = pages(512).bytes();
    host.setHostFile(local("-wal"), logThatClaims(bytes, static_cast<quint32>(bytes.size() / 512)));

    EXPECT_EQ(parseInBounds(bytes), 1);

    EXPECT_EQ(model->albums.value(3)->assetKeys, QList<quint64>{1});
}

// Each of them is sorted in memory of its own, and only then are they merged.
TEST_F(PageAttack, SortsNoManyQueriesAtOnce)
{
    JoinTable named;
    named.name = "ZA";
    for (int i = 0; i < 20; ++i)
        named.name += " union all select*from ZA";
    named.name += " order by 1--ASSETS";
    JoinTable sorted;
    sorted.name = "ZA";
    database.joinTables = {named, sorted};
    RawPages pages = this->pages();
    const int leaf = pages.add();
    pages.fillLeaf(
        leaf, {RawValue::number(3), RawValue::number(1), RawValue::text(QByteArray(15000, 'x'))},
        4);
    const int inner = pages.root("ZA");
    pages.fillInner(inner, std::vector<int>(200, leaf));

    EXPECT_EQ(parseInBounds(pages.bytes()), 0);

    EXPECT_EQ(host.log().back(), notice("Parser_Ath_camera_DB extend info end"));
}

TEST_F(PageAttack, ReadsRowsOfAnyPageSizeInFull)
{
    for (const int pageSize : {512, 4096, 65536}) {
        EXPECT_EQ(parseInBounds(pages(pageSize).bytes()), 1) << pageSize;
        EXPECT_EQ(model->assets.keys(), (QList<quint64>{1, 2})) << pageSize;
        EXPECT_EQ(model->albums.value(3)->assetKeys, QList<quint64>{1}) << pageSize;
    }
}

} // namespace
