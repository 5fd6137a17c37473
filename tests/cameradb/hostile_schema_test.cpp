#include "cameradb/bounded_prepare.h"
#include "cameradb/local_copy_fixture.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <ctime>
#include <string>
#include <vector>

namespace {

using Statements = std::vector<std::string>;

// Far above what any of them takes, and far below what they would without bounds.
const std::clock_t longestParse = 10 * CLOCKS_PER_SEC;

class HostileSchema : public LocalCopyFixture
{
protected:
    HostileSchema()
    {
        database.rows.assets = {photoRow(1, 1), videoRow(2, 2)};
        database.rows.albums = {albumRow(3)};
    }

    // The result, after a look at the log and the time that it took.
    int parseInBounds()
    {
        const QByteArray bytes = database.bytes();
        const std::clock_t start = std::clock();
        const int result = parse(bytes);
        EXPECT_LT(std::clock() - start, longestParse);
        expectContract(result);
        return result;
    }
};

// --- Schemas that are not Core Data's

struct Foreign {
    const char *name;
    Statements sql;
    LogLines failures; ///< empty for a parse that succeeds
};

class ForeignSchema : public HostileSchema, public testing::WithParamInterface<Foreign>
{
};

TEST_P(ForeignSchema, EndsWithTheResultAndLogOfItsFirstFailure)
{
    database.rows.sql = GetParam().sql;
    const bool fails = !GetParam().failures.empty();

    EXPECT_EQ(parseInBounds(), fails ? 0 : 1);

    EXPECT_EQ(host.log(), fails ? failedLog(GetParam().failures) : parsedLog());
    expectHealthyParse();
}

const LogLine noAlbums = failure("Can not parse camera album");
const LogLine noVideos = failure("Can not parse camera video");
const LogLine noJoinTable = failure("Can not get the proper assets table name");

const char *const dropAssets = "DROP TABLE ZGENERICASSET";
const char *const dropAlbums = "DROP TABLE ZGENERICALBUM";
const char *const dropJoin = "DROP TABLE Z_26ASSETS";
const char *const writable = "PRAGMA writable_schema = ON";

INSTANTIATE_TEST_SUITE_P(
    Schemas, ForeignSchema,
    testing::Values(
        Foreign{"NoTables",
                {dropAssets, dropAlbums, dropJoin, "DROP TABLE ZADDITIONALASSETATTRIBUTES",
                 "DROP TABLE Z_METADATA"},
                {noAlbums}},
        Foreign{"OtherTablesOnly",
                {dropAssets, dropAlbums, dropJoin, "CREATE TABLE notes (id, text)"},
                {noAlbums}},
        Foreign{"AlbumsAreAView",
                {"ALTER TABLE ZGENERICALBUM RENAME TO stored",
                 "CREATE VIEW ZGENERICALBUM AS SELECT * FROM stored"},
                {}},
        Foreign{"AssetsAreAView",
                {"ALTER TABLE ZGENERICASSET RENAME TO stored",
                 "CREATE VIEW ZGENERICASSET AS SELECT * FROM stored"},
                {}},
        Foreign{"AlbumsAreAViewOfThemselves",
                {"ALTER TABLE ZGENERICALBUM RENAME TO stored",
                 "CREATE VIEW ZGENERICALBUM AS SELECT * FROM ZGENERICALBUM"},
                {noAlbums}},
        Foreign{"AlbumsAreTwoViewsOfEachOther",
                {dropAlbums, "CREATE VIEW ZGENERICALBUM AS SELECT * FROM other",
                 "CREATE VIEW other AS SELECT * FROM ZGENERICALBUM"},
                {noAlbums}},
        Foreign{"AlbumsAreASearchIndex",
                {dropAlbums, "CREATE VIRTUAL TABLE ZGENERICALBUM USING "
                             "fts4(Z_PK, ZTITLE, ZKIND, ZUUID, ZTRASHEDSTATE)"},
                {}},
        Foreign{"AlbumsAreOfAnUnknownModule",
                {dropAlbums, writable,
                 "INSERT INTO sqlite_master VALUES ('table', 'ZGENERICALBUM', 'ZGENERICALBUM', 0, "
                 "'CREATE VIRTUAL TABLE ZGENERICALBUM USING unheard_of(a)')"},
                {noAlbums}},
        Foreign{"AnIndexHasTheAlbumsName",
                {dropAlbums, "CREATE INDEX ZGENERICALBUM ON ZGENERICASSET (ZKIND)"},
                {noAlbums}},
        Foreign{"AnAlbumColumnIsRenamed",
                {"ALTER TABLE ZGENERICALBUM RENAME COLUMN ZTITLE TO ZNAME"},
                {noAlbums}},
        Foreign{"AnAssetColumnIsRenamed",
                {"ALTER TABLE ZGENERICASSET RENAME COLUMN ZUUID TO ZID"},
                {failure("photo sql error #1: no such column: A.ZUUID")}},
        Foreign{"OnlyTheVideosColumnIsAmbiguous",
                {"ALTER TABLE ZADDITIONALASSETATTRIBUTES ADD COLUMN ZKIND"},
                {noVideos}},
        Foreign{"AlbumsWithoutRowids",
                {dropAlbums, "CREATE TABLE ZGENERICALBUM (Z_PK PRIMARY KEY, ZTITLE, ZKIND, ZUUID, "
                             "ZTRASHEDSTATE) WITHOUT ROWID"},
                {}},
        Foreign{"AGeneratedTitle",
                {dropAlbums, "CREATE TABLE ZGENERICALBUM (Z_PK, ZKIND, ZUUID, ZTRASHEDSTATE, "
                             "ZTITLE AS (ZKIND || 'x'))"},
                {}},
        Foreign{"Triggers",
                {"CREATE TRIGGER t AFTER INSERT ON ZGENERICALBUM BEGIN DELETE FROM ZGENERICASSET; "
                 "END"},
                {}},
        Foreign{"JoinTableMissing", {dropJoin}, {noJoinTable}},
        Foreign{"ATextThatIsNoSql",
                {writable, "UPDATE sqlite_master SET sql = 'nonsense' WHERE name = 'Z_METADATA'"},
                {failure("master sql error #11: malformed database schema (Z_METADATA)")}},
        Foreign{
            "ATextThatBeginsLikeSql",
            {writable, "UPDATE sqlite_master SET sql = 'CREATE TABLE (' WHERE name = 'Z_METADATA'"},
            {failure("master sql error #11: malformed database schema (Z_METADATA) - near "
                     "\"(\": syntax error")}},
        Foreign{"APageThatDoesNotExist",
                {writable, "UPDATE sqlite_master SET rootpage = 99999 WHERE name = 'Z_METADATA'"},
                {failure("master sql error #11: malformed database schema (Z_METADATA) - invalid "
                         "rootpage")}},
        Foreign{"TablesThatShareAPage",
                {writable, "UPDATE sqlite_master SET rootpage = (SELECT rootpage FROM "
                           "sqlite_master WHERE name = 'ZGENERICASSET') WHERE name LIKE 'Z%'"},
                {}},
        Foreign{"TablesOnTheSchemasPage",
                {writable, "UPDATE sqlite_master SET rootpage = 1 WHERE name = 'ZGENERICALBUM'"},
                {failure("master sql error #11: malformed database schema (ZGENERICALBUM)")}}),
    rowName<Foreign>);

// --- Views that multiply while a statement is compiled

std::string repeated(const std::string &part, const std::string &separator, int count)
{
    std::string text = part;
    for (int i = 1; i < count; ++i)
        text.append(separator).append(part);
    return text;
}

// Views v0 to v`levels`, each made of the one before: `v` stands for that one's name.
Statements viewsOfViews(int levels, const std::string &query)
{
    Statements sql = {dropAlbums, "CREATE TABLE t (x)", "CREATE VIEW v0 AS SELECT x FROM t"};
    for (int level = 1; level <= levels; ++level) {
        std::string select = query;
        const std::string below = "v" + std::to_string(level - 1);
        for (std::size_t at = 0; (at = select.find('$', at)) != std::string::npos;)
            select.replace(at, 1, below);
        sql.push_back("CREATE VIEW v" + std::to_string(level) + " AS " + select);
    }
    sql.push_back("CREATE VIEW ZGENERICALBUM AS SELECT x AS Z_PK, x AS ZTITLE, 2 AS ZKIND, x AS "
                  "ZUUID, 0 AS ZTRASHEDSTATE FROM v" +
                  std::to_string(levels));
    return sql;
}

// A text that names its own queries `levels` deep, each `fanOut` times.
std::string queriesOfQueries(int levels, int fanOut)
{
    std::string sql = "WITH c0 AS (SELECT 1 AS x)";
    for (int level = 1; level <= levels; ++level) {
        const std::string below = "c" + std::to_string(level - 1);
        std::string from = below + " a0";
        for (int i = 1; i < fanOut; ++i)
            from += "," + below + " a" + std::to_string(i);
        sql += ",c" + std::to_string(level) + " AS (SELECT a0.x FROM " + from + ")";
    }
    return sql + " SELECT x FROM c" + std::to_string(levels);
}

struct Multiplying {
    const char *name;
    Statements sql;
};

class MultiplyingViews : public HostileSchema, public testing::WithParamInterface<Multiplying>
{
};

TEST_P(MultiplyingViews, AreRefusedBeforeTheyTakeTimeMemoryOrStack)
{
    database.rows.sql = GetParam().sql;

    EXPECT_EQ(parseInBounds(), 0);

    EXPECT_TRUE(model->albums.isEmpty());
    expectHealthyParse();
}

Statements oneView(const std::string &query)
{
    return {dropAlbums, "CREATE VIEW ZGENERICALBUM AS SELECT x AS Z_PK, x AS ZTITLE, 2 AS ZKIND, x "
                        "AS ZUUID, 0 AS ZTRASHEDSTATE FROM (" +
                            query + ")"};
}

// Written into the schema in one statement, which is faster than making them one by one.
Statements deepViews(int levels)
{
    return {dropAlbums, "CREATE TABLE t (x)", writable,
            "WITH n (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " +
                std::to_string(levels) +
                ") INSERT INTO sqlite_master SELECT 'view', 'v' || i, 'v' || i, 0, 'CREATE VIEW v' "
                "|| i || ' AS SELECT x FROM ' || iif(i = 1, 't', 'v' || (i - 1)) FROM n",
            "INSERT INTO sqlite_master VALUES ('view', 'ZGENERICALBUM', 'ZGENERICALBUM', 0, "
            "'CREATE VIEW ZGENERICALBUM AS SELECT x AS Z_PK, x AS ZTITLE, 2 AS ZKIND, x AS ZUUID, "
            "0 AS ZTRASHEDSTATE FROM v" +
                std::to_string(levels) + "')"};
}

// A view that says that it is a table, and one with a comment where SQLite writes none.
Statements disguised(Statements views, const std::string &type)
{
    views.emplace_back(writable);
    views.push_back("UPDATE sqlite_master SET type = '" + type +
                    "', sql = replace(sql, 'CREATE VIEW', 'create/**/view') WHERE type = 'view'");
    return views;
}

INSTANTIATE_TEST_SUITE_P(
    Views, MultiplyingViews,
    testing::Values(
        Multiplying{"SumsOfSums", viewsOfViews(40, "SELECT x + x AS x FROM $")},
        Multiplying{"WideSums",
                    viewsOfViews(8, "SELECT " + repeated("x", " + ", 60) + " AS x FROM $")},
        Multiplying{"Joins", viewsOfViews(14, "SELECT a.x FROM $ a, $ b")},
        Multiplying{"Unions", viewsOfViews(18, "SELECT x FROM $ UNION ALL SELECT x FROM $")},
        Multiplying{"Subqueries", viewsOfViews(18, "SELECT (SELECT x FROM $) + (SELECT x FROM $) "
                                                   "AS x FROM t")},
        Multiplying{"Filters", viewsOfViews(30, "SELECT x + x AS x FROM $ WHERE x + x > 1")},
        Multiplying{"CommonQueries", oneView(queriesOfQueries(30, 2))},
        Multiplying{"WideCommonQueries", oneView(queriesOfQueries(6, 60))},
        Multiplying{"DeepCommonQueries", oneView(queriesOfQueries(3000, 1))},
        Multiplying{"DeepViews", deepViews(20000)},
        Multiplying{"ViewsThatSayTheyAreTables",
                    disguised(viewsOfViews(40, "SELECT x + x AS x FROM $"), "table")},
        Multiplying{"ViewsOfNoType", disguised(viewsOfViews(14, "SELECT a.x FROM $ a, $ b"), "")}),
    rowName<Multiplying>);

TEST_F(HostileSchema, RefusesColumnsThatAreMadeOfEachOther)
{
    std::string columns = "Z_PK, ZTITLE, ZKIND, ZTRASHEDSTATE, c0";
    for (int i = 1; i <= 60; ++i) {
        const std::string below = "c" + std::to_string(i - 1);
        columns += ", c" + std::to_string(i) + " AS (" + below + " + " + below + ")";
    }
    database.rows.sql = {dropAlbums,
                         "CREATE TABLE ZGENERICALBUM (" + columns + ", ZUUID AS (c60))"};

    EXPECT_EQ(parseInBounds(), 0);

    EXPECT_EQ(host.log(), failedLog({noAlbums}));
    expectHealthyParse();
}

TEST_F(HostileSchema, RefusesALongChainOfColumns)
{
    std::string columns = "Z_PK, ZTITLE, ZKIND, ZTRASHEDSTATE, c0";
    for (int i = 1; i <= 1900; ++i)
        columns += ", c" + std::to_string(i) + " as (c" + std::to_string(i - 1) + " + 1)";
    database.rows.sql = {dropAlbums,
                         "CREATE TABLE ZGENERICALBUM (" + columns + ", ZUUID as (c1900))"};

    EXPECT_EQ(parseInBounds(), 0);

    EXPECT_EQ(host.log(), failedLog({failure("master sql error #18: string or blob too big")}));
    expectHealthyParse();
}

// --- Work in single instructions

struct Slow {
    const char *name;
    std::string condition; ///< on the row's number `x`; no row passes it
};

class SlowConditions : public HostileSchema, public testing::WithParamInterface<Slow>
{
};

TEST_P(SlowConditions, TakeABoundedTime)
{
    database.rows.sql = {dropAlbums,
                         "CREATE VIEW ZGENERICALBUM AS WITH RECURSIVE r(x) AS (SELECT 1 UNION ALL "
                         "SELECT x + 1 FROM r WHERE x < 1000) SELECT x AS Z_PK, null AS ZTITLE, 2 "
                         "AS ZKIND, null AS ZUUID, 0 AS ZTRASHEDSTATE FROM r WHERE " +
                             GetParam().condition};
    parseInBounds();
    EXPECT_TRUE(model->albums.isEmpty());
    expectHealthyParse();
}

// SQLite would find out once and for all what does not depend on the row.
INSTANTIATE_TEST_SUITE_P(
    Conditions, SlowConditions,
    testing::Values(
        Slow{"Search", "instr(hex(zeroblob(500000 + x)), hex(zeroblob(240000)) || '1')"},
        Slow{"Pattern", "hex(zeroblob(500000 + x)) LIKE '" + repeated("%0", "", 1500) + "1'"},
        Slow{"Replacement", "replace(hex(zeroblob(500000 + x)), hex(zeroblob(240000)) "
                            "|| '1', '') = ''"},
        Slow{"Blob", "hex(zeroblob(1000000000 + x)) = ''"},
        Slow{"Random", "hex(randomblob(900000000 + x)) = ''"},
        Slow{"Format", "printf('%.*c', 900000000 + x, 'x') = ''"}),
    rowName<Slow>);

// --- Queries in the join table's name

struct Injected {
    const char *name;
    std::string table; ///< `SELECT * FROM ` goes before it
    QByteArray reason;
};

class InjectedQuery : public HostileSchema, public testing::WithParamInterface<Injected>
{
};

TEST_P(InjectedQuery, IsRefused)
{
    JoinTable table;
    table.name = GetParam().table;
    database.joinTables = {table};
    const int result = parseInBounds();

    EXPECT_EQ(result, 0);
    EXPECT_EQ(host.log()[1],
              notice("Got asset table name: " + QByteArray::fromStdString(GetParam().table)));
    EXPECT_EQ(host.log()[2], failure("Can not parse camera photos: " + GetParam().reason));
    expectHealthyParse();
}

INSTANTIATE_TEST_SUITE_P(
    Names, InjectedQuery,
    testing::Values(
        Injected{"TokenizersAddress",
                 "Z_METADATA, (select fts3_tokenizer('simple', x'4141414141414141'))--ASSETS",
                 "not authorized to use function: fts3_tokenizer"},
        Injected{"Extension", "Z_METADATA, (select load_extension('/tmp/x'))--ASSETS",
                 "not authorized to use function: load_extension"},
        Injected{"QueriesOfQueries", "Z_METADATA, (" + queriesOfQueries(12, 2) + ")--ASSETS",
                 "authorization denied"},
        Injected{"SumsOfSums",
                 "Z_METADATA, (select x+x+x+x from (select x+x+x+x as x from (select x+x+x+x as x "
                 "from (select x+x+x+x as x from (select x+x+x+x as x from (select x+x+x+x as x "
                 "from (select 1 as x)))))))--ASSETS",
                 "not authorized"},
        Injected{"AnotherStatement", "Z_x; drop table ZGENERICASSET--ASSETS",
                 "no such table: Z_x"}),
    rowName<Injected>);

struct Text {
    const char *name;
    const char *sql;
    int references;
};

class References : public testing::TestWithParam<Text>
{
};

TEST_P(References, AreCountedWhereATableMayBeNamed)
{
    EXPECT_EQ(countReferences(GetParam().sql), GetParam().references);
}

INSTANTIATE_TEST_SUITE_P(Texts, References,
                         testing::Values(Text{"None", "", 0}, Text{"From", "select x from t", 1},
                                         Text{"AnyCase", "SELECT x FroM t JOIN u", 2},
                                         Text{"Commas", "from a,b , c", 3}, Text{"In", "x in a", 1},
                                         Text{"InsideAName", "fromage rejoin joint inner x_in", 0},
                                         Text{"BesideSigns", "(from)x\"join\"[in]", 3},
                                         Text{"AtTheEnd", "select x from", 1}),
                         rowName<Text>);

} // namespace
