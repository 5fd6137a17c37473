#include "sqlite/sqlite_connection.h"

#include "sqlite/plain_table.h"
#include "sqlite/refused_functions.h"
#include "sqlite/sqlite_statement.h"
#include "support/photos_database.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <string>
#include <utility>
#include <vector>

namespace {

// A connection to a file that `sql` made.
class HardenedConnection : public testing::Test
{
protected:
    HardenedConnection() : path(folder.filePath("a.sqlite")) {}

    void make(const std::string &sql) const
    {
        sqlite3 *db = nullptr;
        ASSERT_EQ(sqlite3_open(path.toUtf8().constData(), &db), SQLITE_OK);
        const SqliteOwner owner(db);
        runSql(db, sql);
    }

    // SQLITE_OK when the statement prepares and steps to its end.
    static int run(const sqlite_connection &connection, const std::string &sql)
    {
        sqlite_statement statement(connection.get(), sql.c_str());
        if (!statement.isPrepared())
            return statement.result();
        while (statement.nextRow()) {
        }
        return statement.finish();
    }

    const QTemporaryDir folder;
    const QString path;
};

struct Setting {
    const char *name;
    int option;
    int value;
};

class ConnectionSetting : public HardenedConnection, public testing::WithParamInterface<Setting>
{
};

TEST_P(ConnectionSetting, KeepsTheFilesPrograms)
{
    const sqlite_connection connection(path);
    int value = -1;
    EXPECT_EQ(sqlite3_db_config(connection.get(), GetParam().option, -1, &value), SQLITE_OK);
    EXPECT_EQ(value, GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(
    Options, ConnectionSetting,
    testing::Values(Setting{"Tokenizer", SQLITE_DBCONFIG_ENABLE_FTS3_TOKENIZER, 0},
                    Setting{"TrustedSchema", SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},
                    Setting{"Defensive", SQLITE_DBCONFIG_DEFENSIVE, 1},
                    Setting{"Views", SQLITE_DBCONFIG_ENABLE_VIEW, 0},
                    Setting{"Triggers", SQLITE_DBCONFIG_ENABLE_TRIGGER, 0},
                    Setting{"Extensions", SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0}),
    rowName<Setting>);

struct Statement {
    const char *name;
    const char *sql;
    int result;
};

class ConnectionStatement : public HardenedConnection, public testing::WithParamInterface<Statement>
{
};

TEST_P(ConnectionStatement, RunsIfItOnlyReadsPlainTables)
{
    make("create table t (x, y); insert into t values (1, 2), ('a', 'b');"
         "create table checked (x check (x > 0)); create table computed (x, y as (x + 1));"
         "create view v as select * from t; create virtual table f using fts4(x)");
    const sqlite_connection connection(path);

    EXPECT_EQ(run(connection, GetParam().sql), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    Statements, ConnectionStatement,
    testing::Values(
        Statement{"Select", "select x from t where y = 2 order by x", SQLITE_OK},
        Statement{"AliasesAndJoins", "select a.x from t a left join t b", SQLITE_OK},
        Statement{"Schema", "select sql from sqlite_master", SQLITE_OK},
        Statement{"QuotedLiteral", "select \"0\" from t", SQLITE_OK},
        Statement{"Like", "select x from t where x like 'A%'", SQLITE_OK},
        Statement{"LikeWithEscape", "select x from t where x like 'a' escape '%'", SQLITE_ERROR},
        Statement{"Count", "select count(*) from t", SQLITE_ERROR},
        Statement{"Function", "select abs(1)", SQLITE_ERROR},
        Statement{"Recursion",
                  "with recursive r(x) as (select 1 union all select x + 1 from r) "
                  "select x from r",
                  SQLITE_AUTH},
        Statement{"CheckedTable", "select x from checked", SQLITE_AUTH},
        Statement{"ComputedTable", "select x from computed", SQLITE_AUTH},
        Statement{"View", "select x from v", SQLITE_ERROR},
        Statement{"VirtualTable", "select x from f", SQLITE_ERROR},
        Statement{"Statistics", "select stat from sqlite_stat1", SQLITE_ERROR},
        Statement{"TemporarySchema", "select sql from sqlite_temp_master", SQLITE_AUTH},
        Statement{"Pragma", "pragma integrity_check", SQLITE_AUTH},
        Statement{"PragmaFunction", "select * from pragma_integrity_check", SQLITE_ERROR},
        Statement{"Insert", "insert into t values (1, 2)", SQLITE_AUTH},
        Statement{"Update", "update t set x = 1", SQLITE_AUTH},
        Statement{"Delete", "delete from t", SQLITE_AUTH},
        Statement{"Create", "create table u (x)", SQLITE_AUTH},
        Statement{"CreateTemporary", "create temp table u (x)", SQLITE_AUTH},
        Statement{"Attach", "attach ':memory:' as other", SQLITE_AUTH},
        Statement{"Analyze", "analyze", SQLITE_AUTH}),
    rowName<Statement>);

TEST_F(HardenedConnection, LooksForAStatementInWhatAnotherOneCompilesWhileItRuns)
{
    make("create table t (x)");
    sqlite_connection connection(path);
    connection.m_plainTables.insert("pragma_integrity_check");

    EXPECT_NE(run(connection, "select * from pragma_integrity_check"), SQLITE_OK);
    EXPECT_STREQ(sqlite3_errmsg(connection.get()), "not authorized");
}

TEST_F(HardenedConnection, HasAPageCacheOfItsOwnSize)
{
    make("pragma default_cache_size = 1000000; create table t (x)");
    sqlite_connection connection(path);
    connection.m_isSettingUp = true;

    sqlite_statement size(connection.get(), "pragma cache_size");
    ASSERT_TRUE(size.nextRow());
    EXPECT_EQ(sqlite3_column_int(size.get(), 0), -2000);
    sqlite_statement checks(connection.get(), "pragma cell_size_check");
    ASSERT_TRUE(checks.nextRow());
    EXPECT_EQ(sqlite3_column_int(checks.get(), 0), 1);
}

TEST_F(HardenedConnection, GivesUpForGoodOnceItIsExhausted)
{
    make("create table t (x); insert into t values (1), (2), (3), (4), (5), (6), (7), (8), (9)");
    sqlite_connection connection(path);
    const char *const join = "select a.x from t a, t b, t c, t d";
    EXPECT_EQ(run(connection, join), SQLITE_OK);

    connection.m_largestSchema = 0;
    connection.m_nextLook = 0;
    EXPECT_EQ(run(connection, join), SQLITE_INTERRUPT);
    connection.m_largestSchema = 1 << 30;
    EXPECT_EQ(run(connection, join), SQLITE_INTERRUPT);
}

TEST_F(HardenedConnection, EndsAtItsDeadline)
{
    make("create table t (x); insert into t values (1), (2), (3), (4), (5), (6), (7), (8), (9)");
    sqlite_connection connection(path);
    connection.m_deadline = -1;
    connection.m_nextLook = 0;

    EXPECT_EQ(run(connection, "select a.x from t a, t b, t c, t d"), SQLITE_INTERRUPT);
}

// --- Functions

SqliteOwner withRefusedFunctions()
{
    SqliteOwner db = openEmptyDatabase();
    EXPECT_EQ(refuseFunctions(db.get()), SQLITE_OK);
    return db;
}

std::vector<std::pair<std::string, int>> functionsOf(sqlite3 *db)
{
    std::vector<std::pair<std::string, int>> functions;
    sqlite_statement list(db, "pragma function_list");
    while (list.nextRow())
        functions.emplace_back(list.text(0), sqlite3_column_int(list.get(), 4));
    return functions;
}

std::string call(const std::string &name, int arguments)
{
    std::string sql = "select \"" + name + "\"(";
    for (int i = 0; i < arguments; ++i)
        sql += i == 0 ? "1" : ", 1";
    return sql + ")";
}

// All those of SQLite with as many arguments as they take, and with 1 to 3 where any are fine.
TEST(RefusedFunctions, AreAllButLike)
{
    const SqliteOwner db = withRefusedFunctions();
    int calls = 0;
    for (const auto &function : functionsOf(db.get())) {
        for (int count = 0; count < 4; ++count) {
            if (function.second >= 0 && count != function.second)
                continue;
            if (function.first == "like" && count == 2)
                continue;
            const std::string sql = call(function.first, count);
            sqlite_statement statement(db.get(), sql.c_str());
            EXPECT_TRUE(!statement.isPrepared() || !statement.nextRow()) << sql;
            EXPECT_EQ(sqlite3_errcode(db.get()) & 0xff, SQLITE_ERROR) << sql;
            ++calls;
        }
    }
    EXPECT_GT(calls, 150);
}

TEST(RefusedFunctions, IncludeThoseThatAnExtensionOfTheHostAdds)
{
    const SqliteOwner db = openEmptyDatabase();
    const auto seven = [](sqlite3_context *context, int, sqlite3_value **) {
        sqlite3_result_int(context, 7);
    };
    sqlite3_create_function(db.get(), "seven", 0, SQLITE_UTF16LE, nullptr, seven, nullptr, nullptr);
    EXPECT_EQ(refuseFunctions(db.get()), SQLITE_OK);

    sqlite_statement statement(db.get(), "select seven()");
    EXPECT_FALSE(statement.nextRow());
}

TEST(RefusedFunctions, AreRefusedInChecksAndComputedColumnsToo)
{
    for (const char *table :
         {"create table t (x check (abs(x) > 0))", "create table t (x, y as (abs(x)) stored)"}) {
        const SqliteOwner db = openEmptyDatabase();
        runSql(db.get(), table);
        EXPECT_EQ(refuseFunctions(db.get()), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(db.get(), "insert into t (x) values (1)", nullptr, nullptr, nullptr),
                  SQLITE_ERROR)
            << table;
    }
}

struct Pattern {
    const char *name;
    std::string text;
    std::string pattern;
    int result; ///< 0 or 1, or -1 for an error
};

class LikePattern : public testing::TestWithParam<Pattern>
{
};

TEST_P(LikePattern, ComparesShortTexts)
{
    const SqliteOwner db = withRefusedFunctions();
    const std::string sql = "select '" + GetParam().text + "' like '" + GetParam().pattern + "'";
    sqlite_statement statement(db.get(), sql.c_str());
    ASSERT_TRUE(statement.isPrepared());
    const int result = statement.nextRow() ? sqlite3_column_int(statement.get(), 0) : -1;
    EXPECT_EQ(result, GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(Patterns, LikePattern,
                         testing::Values(Pattern{"Equal", "ab", "ab", 1},
                                         Pattern{"AnyCase", "Z_26ASSETS", "z_%assets", 1},
                                         Pattern{"NoMatch", "Z_26ALBUMS", "Z_%ASSETS", 0},
                                         Pattern{"LongestText", std::string(16384, 'a'), "%", 1},
                                         Pattern{"LongText", std::string(16385, 'a'), "%", -1},
                                         Pattern{"LongestPattern", "a", std::string(64, '%'), 1},
                                         Pattern{"LongPattern", "a", std::string(65, '%'), -1}),
                         rowName<Pattern>);

TEST(LikeFunction, IsNullForNull)
{
    const SqliteOwner db = withRefusedFunctions();
    for (const char *sql : {"select null like 'a'", "select 'a' like null"}) {
        sqlite_statement statement(db.get(), sql);
        ASSERT_TRUE(statement.nextRow());
        EXPECT_EQ(sqlite3_column_type(statement.get(), 0), SQLITE_NULL) << sql;
    }
}

// --- Definitions

struct Definition {
    const char *name;
    const char *sql;
    bool isPlain;
};

class TableDefinition : public testing::TestWithParam<Definition>
{
};

TEST_P(TableDefinition, IsPlainWithStoredColumnsOnly)
{
    EXPECT_EQ(definesPlainTable(GetParam().sql, "ZT"), GetParam().isPlain);
}

INSTANTIATE_TEST_SUITE_P(
    Definitions, TableDefinition,
    testing::Values(
        Definition{"CoreData", "CREATE TABLE ZT ( Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER )", true},
        Definition{"Quoted", "CREATE TABLE \"ZT\" (a)", true},
        Definition{"Bracketed", "CREATE TABLE [ZT](a)", true},
        Definition{"NoBlank", "CREATE TABLE ZT(a)", true},
        Definition{"NamesThatHoldTheWords",
                   "CREATE TABLE ZT (ZBASE, CHECKED, $AS, as_, \xc3\xa9"
                   "as)",
                   true},
        Definition{"WithoutRowids", "CREATE TABLE ZT (a PRIMARY KEY) WITHOUT ROWID", true},
        Definition{"OtherName", "CREATE TABLE ZTX (a)", false},
        Definition{"QuotedOtherName", "CREATE TABLE \"ZT X\" (a)", false},
        Definition{"DollarName", "CREATE TABLE ZT$ (a)", false},
        Definition{"NameNotInAscii", "CREATE TABLE ZT\xc3\xa9 (a)", false},
        Definition{"OtherCase", "CREATE TABLE zt (a)", false},
        Definition{"View", "CREATE VIEW ZT AS SELECT 1", false},
        Definition{"Virtual", "CREATE VIRTUAL TABLE ZT USING fts4(a)", false},
        Definition{"Index", "CREATE INDEX ZT ON b (a)", false},
        Definition{"Temporary", "CREATE TEMP TABLE ZT (a)", false},
        Definition{"SmallLetters", "create table ZT (a)", false},
        Definition{"Comment", "CREATE TABLE/**/ZT (a)", false},
        Definition{"Check", "CREATE TABLE ZT (a CHECK(a > 1))", false},
        Definition{"CheckInAnyCase", "CREATE TABLE ZT (a, cHeCk(a > 1))", false},
        Definition{"Generated", "CREATE TABLE ZT (a, b GENERATED ALWAYS AS (a))", false},
        Definition{"ShortGenerated", "CREATE TABLE ZT (a, b\nas(a))", false},
        Definition{"Empty", "", false}),
    rowName<Definition>);

} // namespace
