#include "cameradb/join_table.h"
#include "cameradb/query_fixture.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

namespace {

using LogLines = std::vector<LogLine>;

// Albums 1, 2 and -5 are in the model; the database has join tables only.
class AlbumMembership : public QueryFixture
{
protected:
    AlbumMembership()
    {
        for (const qint32 pk : {1, 2, -5})
            model->albums.insert(key(pk), new Camera_Album());
    }

    bool query()
    {
        const SqliteOwner db = database.open();
        return queryAlbumPhoto(db.get(), model.get());
    }

    Keys members(qint32 album) const { return model->albums.value(key(album))->assetKeys; }

    // One table of the usual name with these columns and rows.
    void setTable(const std::vector<std::string> &columns,
                  const std::vector<std::vector<SqlValue>> &rows)
    {
        JoinTable table;
        table.columns = columns;
        table.rows = rows;
        database.joinTables = {table};
    }
};

TEST_F(AlbumMembership, FollowsTheRowsOfTheJoinTable)
{
    database.joinTables[0].rows = {{1, 30, 1}, {2, 31, 2}, {1, 10, 3}, {1, 20, 4}, {2, 10, 5}};
    EXPECT_TRUE(query());
    EXPECT_EQ(members(1), (Keys{30, 10, 20}));
    EXPECT_EQ(members(2), (Keys{31, 10}));
    EXPECT_EQ(members(-5), Keys());
    EXPECT_EQ(host.trace(), std::vector<std::string>{
                                "Log(\"PHOTOLIB\", 1, \"Got asset table name: Z_26ASSETS\")"});
}

TEST_F(AlbumMembership, KeepsDuplicates)
{
    database.joinTables[0].rows = {{1, 7}, {1, 8}, {1, 7}, {1, 7}};
    EXPECT_TRUE(query());
    EXPECT_EQ(members(1), (Keys{7, 8, 7, 7}));
}

TEST_F(AlbumMembership, AppendsToTheMembersThatAnAlbumHas)
{
    model->albums.value(1)->assetKeys = {5};
    database.join().add(1, 6);
    EXPECT_TRUE(query());
    EXPECT_EQ(members(1), (Keys{5, 6}));
}

TEST_F(AlbumMembership, AsksForNoAssetInTheModel)
{
    EXPECT_TRUE(model->assets.isEmpty());
    database.join().add(1, 99);
    EXPECT_TRUE(query());
    EXPECT_EQ(members(1), Keys{99});
}

TEST_F(AlbumMembership, PassesOverAlbumsThatAreNotInTheModel)
{
    database.joinTables[0].rows = {{3, 7}, {1, 8}, {3, 9}};
    EXPECT_TRUE(query());
    EXPECT_EQ(members(1), Keys{8});
    EXPECT_EQ(model->albums.size(), 3);
}

TEST_F(AlbumMembership, SucceedsWithAnEmptyTable)
{
    EXPECT_TRUE(query());
    EXPECT_EQ(members(1), Keys());
}

TEST_F(AlbumMembership, SucceedsWhenEveryAlbumWasFilteredOut)
{
    qDeleteAll(model->albums);
    model->albums.clear();
    database.join().add(1, 7);
    EXPECT_TRUE(query());
    EXPECT_TRUE(model->albums.isEmpty());
}

// --- Keys

struct Pair {
    const char *name;
    SqlValue album;
    SqlValue asset;
    qint32 holder; ///< the album that gets the asset, or 0
    quint64 member;
};

class MembershipKeys : public AlbumMembership, public testing::WithParamInterface<Pair>
{
};

TEST_P(MembershipKeys, AreReadAs64BitsAndCountUnlessZero)
{
    database.join().add(GetParam().album, GetParam().asset);
    EXPECT_TRUE(query());
    for (const qint32 album : {1, 2, -5}) {
        const Keys expected = album == GetParam().holder ? Keys{GetParam().member} : Keys();
        EXPECT_EQ(members(album), expected) << album;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Pairs, MembershipKeys,
    testing::Values(
        Pair{"Plain", 1, 7, 1, 7}, Pair{"NoAlbum", 0, 7, 0, 0}, Pair{"NoAsset", 1, 0, 0, 0},
        Pair{"NullAlbum", nullptr, 7, 0, 0}, Pair{"NullAsset", 1, nullptr, 0, 0},
        Pair{"Neither", nullptr, nullptr, 0, 0}, Pair{"LargeAsset", 1, 5000000000, 1, 5000000000},
        Pair{"NegativeAsset", 1, -7, 1, 0xfffffffffffffff9}, Pair{"NegativeAlbum", -5, 7, -5, 7},
        Pair{"AlbumBeyond32Bits", (1LL << 32) + 1, 7, 0, 0}, Pair{"Texts", "2", "8", 2, 8},
        Pair{"Words", "one", "seven", 0, 0}, Pair{"Reals", 2.9, 8.9, 2, 8}),
    rowName<Pair>);

// --- Columns

struct Columns {
    const char *name;
    std::vector<std::string> columns;
    std::vector<SqlValue> row;
    Keys members; ///< of album 1
};

class MembershipColumns : public AlbumMembership, public testing::WithParamInterface<Columns>
{
};

TEST_P(MembershipColumns, AreFoundByTheirNames)
{
    setTable(GetParam().columns, {GetParam().row});
    EXPECT_TRUE(query());
    EXPECT_EQ(members(1), GetParam().members);
    EXPECT_EQ(members(2), Keys());
}

// Where a walk meets two columns of one kind before it has both keys, the later one
// counts; once it has both it ends.
INSTANTIATE_TEST_SUITE_P(
    Names, MembershipColumns,
    testing::Values(
        Columns{"AlbumFirst", {"Z_26ALBUMS", "Z_34ASSETS"}, {1, 7}, {7}},
        Columns{"AssetFirst", {"Z_34ASSETS", "Z_26ALBUMS"}, {7, 1}, {7}},
        Columns{"OneDigit", {"Z_2ALBUMS", "Z_3ASSETS"}, {1, 7}, {7}},
        Columns{"ManyDigits", {"Z_1234567890ALBUMS", "Z_0ASSETS"}, {1, 7}, {7}},
        Columns{"Others", {"A", "Z_26ALBUMS", "Z_FOK_34ASSETS", "Z_34ASSETS"}, {8, 1, 9, 7}, {7}},
        Columns{"NoAlbumColumn", {"ALBUM", "Z_34ASSETS"}, {1, 7}, {}},
        Columns{"NoAssetColumn", {"Z_26ALBUMS", "ASSET"}, {1, 7}, {}},
        Columns{"AlbumWithoutDigits", {"Z_ALBUMS", "Z_34ASSETS"}, {1, 7}, {}},
        Columns{"AssetWithoutDigits", {"Z_26ALBUMS", "Z_ASSETS"}, {1, 7}, {}},
        Columns{"OtherCase", {"z_26albums", "Z_34ASSETS"}, {1, 7}, {}},
        Columns{"OtherCaseAsset", {"Z_26ALBUMS", "Z_34assets"}, {1, 7}, {}},
        Columns{"LongerName", {"Z_26ALBUMSX", "Z_34ASSETS"}, {1, 7}, {}},
        Columns{"LongerFront", {"XZ_26ALBUMS", "Z_34ASSETS"}, {1, 7}, {}},
        Columns{"LongerAsset", {"Z_26ALBUMS", "Z_34KEYASSETS"}, {1, 7}, {}},
        Columns{
            "SecondAssetAfterThePair", {"Z_26ALBUMS", "Z_34ASSETS", "Z_35ASSETS"}, {1, 7, 8}, {7}},
        Columns{"SecondAssetForAZero", {"Z_26ALBUMS", "Z_34ASSETS", "Z_35ASSETS"}, {1, 0, 8}, {8}},
        Columns{"SecondAssetBeforeTheAlbum",
                {"Z_34ASSETS", "Z_35ASSETS", "Z_26ALBUMS"},
                {7, 8, 1},
                {8}},
        Columns{
            "ZeroAssetBeforeTheAlbum", {"Z_34ASSETS", "Z_35ASSETS", "Z_26ALBUMS"}, {7, 0, 1}, {}},
        Columns{
            "SecondAlbumAfterThePair", {"Z_26ALBUMS", "Z_34ASSETS", "Z_27ALBUMS"}, {1, 7, 2}, {7}},
        Columns{"SecondAlbumBeforeTheAsset",
                {"Z_27ALBUMS", "Z_26ALBUMS", "Z_34ASSETS"},
                {2, 1, 7},
                {7}}),
    rowName<Columns>);

// --- The table

struct Tables {
    const char *name;
    std::vector<std::string> made; ///< in this order
    QByteArray chosen;             ///< empty for none
};

class MembershipTable : public AlbumMembership, public testing::WithParamInterface<Tables>
{
};

TEST_P(MembershipTable, IsChosenByNameAndAge)
{
    database.joinTables.clear();
    for (const std::string &name : GetParam().made) {
        JoinTable table;
        table.name = name;
        // Tells which table was read.
        table.add(1, static_cast<int>(database.joinTables.size()) + 1);
        database.joinTables.push_back(table);
    }
    const auto chosen =
        std::find(GetParam().made.begin(), GetParam().made.end(), GetParam().chosen.toStdString());
    if (chosen == GetParam().made.end()) {
        EXPECT_FALSE(query());
        EXPECT_EQ(host.log(), LogLines{failure("Can not get the proper assets table name")});
        EXPECT_EQ(members(1), Keys());
        return;
    }
    EXPECT_TRUE(query());
    EXPECT_EQ(host.log(), LogLines{notice("Got asset table name: " + GetParam().chosen)});
    EXPECT_EQ(members(1), Keys{static_cast<quint64>(chosen - GetParam().made.begin()) + 1});
}

INSTANTIATE_TEST_SUITE_P(
    Made, MembershipTable,
    testing::Values(
        Tables{"Only", {"Z_26ASSETS"}, "Z_26ASSETS"},
        Tables{"AfterLookAlikes",
               {"Z_3SUGGESTIONSBEINGREPRESENTATIVEASSETS", "Z_31KEYASSETS", "Z_26ASSETS"},
               "Z_26ASSETS"},
        Tables{"BeforeLookAlikes",
               {"Z_26ASSETS", "Z_3MEMORIESBEINGCURATEDASSETS", "Z_29KEYASSETS"},
               "Z_26ASSETS"},
        Tables{"BetweenLookAlikes",
               {"Z_3MEMORIESBEINGCURATEDASSETS", "Z_8ASSETS", "Z_9KEYASSETS"},
               "Z_8ASSETS"},
        Tables{"TheOldestOfSeveral", {"Z_30ASSETS", "Z_9ASSETS", "Z_26ASSETS"}, "Z_30ASSETS"},
        Tables{"TheOldestLookAlike",
               {"Z_31KEYASSETS", "Z_3MEMORIESBEINGCURATEDASSETS"},
               "Z_31KEYASSETS"},
        Tables{"NoDigitsIsALookAlike", {"Z_ASSETS", "Z_26ASSETS"}, "Z_26ASSETS"},
        Tables{"NoDigitsAlone", {"Z_ASSETS"}, "Z_ASSETS"},
        Tables{"OtherCaseIsALookAlike", {"z_27assets", "Z_26ASSETS"}, "Z_26ASSETS"},
        Tables{"OtherCaseAlone", {"z_27assets"}, "z_27assets"},
        Tables{"AnyCharacterIsALookAlike", {"ZX27ASSETS", "Z_26ASSETS"}, "Z_26ASSETS"},
        Tables{"AnyCharacterAlone", {"ZX27ASSETS"}, "ZX27ASSETS"},
        Tables{
            "OneTableOfEach", {"OTHER", "Z_26ALBUMS", "Z_26ASSETSX", "Z_26ASSETS"}, "Z_26ASSETS"},
        Tables{"NoneAtAll", {}, ""}, Tables{"NothingBetween", {"ZASSETS"}, ""},
        Tables{"LongerNames", {"Z_26ASSETSX", "AZ_26ASSETS"}, ""},
        Tables{"OtherTables", {"ZASSET", "Z_26ALBUMS"}, ""}),
    rowName<Tables>);

TEST_F(AlbumMembership, PassesOverTheNamesOfIndexes)
{
    database.joinTables.clear();
    database.rows.sql = {"CREATE TABLE OTHER (A)", "CREATE INDEX Z_9ASSETS ON OTHER (A)",
                         "CREATE TABLE Z_26ASSETS (Z_26ALBUMS, Z_34ASSETS)",
                         "CREATE INDEX Z_25ASSETS ON Z_26ASSETS (Z_34ASSETS)",
                         "INSERT INTO Z_26ASSETS VALUES (1, 7)"};
    EXPECT_TRUE(query());
    EXPECT_EQ(host.log(), LogLines{notice("Got asset table name: Z_26ASSETS")});
    EXPECT_EQ(members(1), Keys{7});
}

TEST_F(AlbumMembership, ReadsAViewOfTheName)
{
    database.joinTables[0].name = "STORED";
    database.join().add(1, 7);
    database.rows.sql = {"CREATE VIEW Z_26ASSETS AS SELECT * FROM STORED"};
    EXPECT_TRUE(query());
    EXPECT_EQ(members(1), Keys{7});
}

TEST_F(AlbumMembership, LogsATableThatCanNotBeRead)
{
    database.joinTables[0].name = "Z_-ASSETS";
    EXPECT_FALSE(query());
    EXPECT_EQ(host.log(),
              (LogLines{notice("Got asset table name: Z_-ASSETS"),
                        failure("Can not parse camera photos: near \"-\": syntax error")}));
}

TEST_F(AlbumMembership, LogsASchemaThatCanNotBeRead)
{
    const SqliteOwner db = openUnreadable();
    EXPECT_FALSE(queryAlbumPhoto(db.get(), model.get()));
    EXPECT_EQ(host.log(),
              (LogLines{failure("get assets table name sql error #26: file is not a database"),
                        failure("Can not get the proper assets table name")}));
}

TEST_F(AlbumMembership, WarnsWithoutAConnection)
{
    EXPECT_FALSE(queryAlbumPhoto(nullptr, model.get()));
    EXPECT_EQ(host.warnings(), std::vector<Precondition>{precondition(
                                   "int queryAlbumPhoto(sqlite3 *, CameraDB *)", "sql_db")});
    EXPECT_EQ(host.trace().size(), 1U);
}

TEST_F(AlbumMembership, TakesAnErrorInTheMiddleForTheEnd)
{
    database.joinTables[0].columns = {"Z_26ALBUMS", "Z_34ASSETS", "Z_PK"};
    database.joinTables[0].rows = {{1, 7, 1}, {1, 8, 2}, {1, 9, 3}};
    const SqliteOwner db = database.open();
    failAt(db.get(), "Z_26ASSETS", 3);
    EXPECT_TRUE(queryAlbumPhoto(db.get(), model.get()));
    EXPECT_EQ(members(1), (Keys{7, 8}));
}

} // namespace
