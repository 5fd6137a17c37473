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
        Foreign{"AlbumsAreAViewOfThemselves",
                {"ALTER TABLE ZGENERICALBUM RENAME TO stored",
                 "CREATE VIEW ZGENERICALBUM AS SELECT * FROM ZGENERICALBUM"},
                {noAlbums}},
        Foreign{"AlbumsAreTwoViewsOfEachOther",
                {dropAlbums, "CREATE VIEW ZGENERICALBUM AS SELECT * FROM other",
                 "CREATE VIEW other AS SELECT * FROM ZGENERICALBUM"},
                {noAlbums}},
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

} // namespace
