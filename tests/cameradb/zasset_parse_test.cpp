#include "cameradb/local_copy_fixture.h"
#include "support/raw_pages.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <ctime>
#include <random>
#include <string>
#include <vector>

namespace {

using Keys = QList<quint64>;

const qint64 mebibyte = 1048576;

// Parses of a library since iOS 14, with a photo, a video and an album.
class ZassetParse : public LocalCopyFixture
{
protected:
    ZassetParse()
    {
        database.schema = Schema::zasset();
        database.rows.assets = {photoRow(1, 1), videoRow(2, 2)};
        database.rows.assets[1].duration = 12.5;
        database.rows.assets[1].dateCreated = 600000000;
        database.rows.attributes = {{11, 1, {}, 100}, {12, 2, {}, 200}};
        database.rows.albums = {albumRow(3)};
        database.joinTables[0].columns = {"Z_26ALBUMS", "Z_3ASSETS", "Z_FOK_3ASSETS"};
        database.join().add(3, 1);
    }

    int parseDatabase() { return parse(database.bytes()); }

    // A database that was made to take time or memory ends within the bounds of every file.
    int parseInBounds(const QByteArray &bytes)
    {
        const std::clock_t longestParse = 10 * CLOCKS_PER_SEC;
        sqlite3_memory_highwater(1);
        const qint64 before = sqlite3_memory_used();
        const std::clock_t start = std::clock();
        const int result = parse(bytes);
        EXPECT_LT(std::clock() - start, longestParse);
        EXPECT_LE(sqlite3_memory_highwater(0) - before, 4 * bytes.size() + 64 * mebibyte);
        expectContract(result);
        return result;
    }
};

TEST_F(ZassetParse, ReadsAssetsAlbumsAndMembers)
{
    EXPECT_EQ(parseDatabase(), 1);
    EXPECT_EQ(host.log(), parsedLog());
    EXPECT_TRUE(model->hasAssetTable);
    EXPECT_TRUE(model->hasKindSubtype);
    EXPECT_EQ(model->assets.keys(), (Keys{1, 2}));
    EXPECT_EQ(model->videos.keys(), Keys{2});
    EXPECT_EQ(model->albums.value(3)->assetKeys, Keys{1});
    EXPECT_EQ(model->assets.value(1)->originalFileSize, 100);
    EXPECT_EQ(model->assets.value(2)->originalFileSize, 200);
    EXPECT_EQ(model->assets.value(2)->duration, 13);
    EXPECT_EQ(model->assets.value(2)->createDate, 600000000);
}

TEST_F(ZassetParse, ReadsTheWriteAheadLogToo)
{
    PhotosRows later;
    later.assets = {photoRow(5, 9)};
    const PhotosFiles files = database.filesWithWal(later);
    host.setHostFile(local(), files.database);
    host.setHostFile(local("-wal"), files.wal);
    EXPECT_EQ(parseLocal(), 1);
    EXPECT_EQ(model->assets.keys(), (Keys{1, 2, 5}));
}

TEST_F(ZassetParse, KnowsNoKindSubtypeWhereThereIsNone)
{
    database.schema.kindSubtype = false;
    database.rows.sql = {"CREATE INDEX ZKINDSUBTYPE_INDEX ON ZASSET (ZKIND)"};
    EXPECT_EQ(parseDatabase(), 1);
    EXPECT_FALSE(model->hasKindSubtype);
}

TEST_F(ZassetParse, LeavesZassetAloneWhereThereIsTheOtherTable)
{
    PhotosDatabase both;
    both.rows.assets = {photoRow(41, 1), photoRow(42, 2), videoRow(43, 3)};
    both.rows.assets[1].savedAssetType = 6;
    both.rows.assets[0].fileName = "\xc3\xa4.JPG";
    both.rows.attributes = {{41, 43, 5.0, 100}};
    both.rows.albums = {albumRow(3)};
    both.join().add(3, 41);
    both.rows.sql = {
        "CREATE TABLE ZASSET (Z_PK INTEGER PRIMARY KEY, ZKIND, ZSAVEDASSETTYPE, "
        "ZHEIGHT, ZWIDTH, ZTHUMBNAILINDEX, ZORIENTATION, ZDIRECTORY, ZFILENAME, "
        "ZMODIFICATIONDATE, ZUUID, ZKINDSUBTYPE, ZDURATION, ZDATECREATED)",
        "INSERT INTO ZASSET VALUES (41, 0, 3, 1, 1, 1, 1, 'D', 'F', 1, x'01', 0, 9, 9)",
        "INSERT INTO ZASSET VALUES (44, 0, 3, 1, 1, 1, 1, 'D', 'F', 1, x'02', 0, 9, "
        "9)"};
    EXPECT_EQ(parse(both.bytes()), 1);
    EXPECT_EQ(host.log(), parsedLog());
    EXPECT_FALSE(model->hasAssetTable);
    EXPECT_EQ(model->assets.keys(), (Keys{41, 43}));
    EXPECT_EQ(model->assets.value(41)->fileName, QStringLiteral("\u00c3\u00a4.JPG"));
    EXPECT_EQ(model->assets.value(41)->originalFileSize, 100) << "joined by its own key";
    EXPECT_EQ(model->assets.value(41)->createDate, 0);
    EXPECT_EQ(model->assets.value(43)->duration, 5);
}

TEST_F(ZassetParse, FindsTheOtherTableInAnyCase)
{
    database = PhotosDatabase();
    database.rows.assets = {photoRow(41, 1)};
    database.rows.sql = {"ALTER TABLE ZGENERICASSET RENAME TO stored",
                         "ALTER TABLE stored RENAME TO ZGenericAsset",
                         "CREATE TABLE ZASSET (Z_PK)"};
    EXPECT_EQ(parseDatabase(), 1);
    EXPECT_EQ(model->assets.keys(), Keys{41});
    EXPECT_FALSE(model->hasAssetTable);
}

TEST_F(ZassetParse, FailsWithNeitherTableAsItAlwaysDid)
{
    database.rows.sql = {"ALTER TABLE ZASSET RENAME TO ZMOMENT"};
    database.rows.sql.push_back("CREATE TABLE ZASSETS (Z_PK)");
    EXPECT_EQ(parseDatabase(), 0);
    EXPECT_EQ(host.log(), failedLog({failure("photo sql error #1: no such table: ZGENERICASSET")}));
    EXPECT_TRUE(model->assets.isEmpty());
    EXPECT_EQ(model->albums.size(), 1);
}

struct NoTable {
    const char *name;
    std::vector<std::string> sql;
};

class NoZasset : public ZassetParse, public testing::WithParamInterface<NoTable>
{
};

TEST_P(NoZasset, IsThereWhereOnlyTheNameIs)
{
    database.rows.sql = GetParam().sql;
    EXPECT_EQ(parseDatabase(), 0);
    EXPECT_EQ(host.log(), failedLog({failure("photo sql error #1: no such table: ZGENERICASSET")}));
    expectHealthyParse();
}

INSTANTIATE_TEST_SUITE_P(
    Names, NoZasset,
    testing::Values(NoTable{"OfAView",
                            {"ALTER TABLE ZASSET RENAME TO stored",
                             "CREATE VIEW ZASSET AS SELECT * FROM stored"}},
                    NoTable{"OfAnIndex",
                            {"ALTER TABLE ZASSET RENAME TO stored",
                             "CREATE INDEX ZASSET ON stored (ZKIND)"}},
                    NoTable{"OfATrigger",
                            {"ALTER TABLE ZASSET RENAME TO stored",
                             "CREATE TRIGGER ZASSET AFTER INSERT ON stored BEGIN SELECT 1; END"}}),
    rowName<NoTable>);

struct BrokenZasset {
    const char *name;
    std::vector<std::string> sql;
    LogLines logged;
    int assets; ///< filed before the failure
};

class FailedZassetParse : public ZassetParse, public testing::WithParamInterface<BrokenZasset>
{
};

TEST_P(FailedZassetParse, YieldsZeroAndStillAddsTheExtendedInformation)
{
    database.rows.sql = GetParam().sql;
    EXPECT_EQ(parseInBounds(database.bytes()), 0);
    EXPECT_EQ(host.log(), failedLog(GetParam().logged));
    ASSERT_EQ(model->assets.size(), GetParam().assets);
    if (GetParam().assets > 0) {
        EXPECT_EQ(model->assets.first()->originalFileSize, 100);
    }
    expectHealthyParse();
}

INSTANTIATE_TEST_SUITE_P(
    Queries, FailedZassetParse,
    testing::Values(
        BrokenZasset{
            "Albums", {"DROP TABLE ZGENERICALBUM"}, {failure("Can not parse camera album")}, 0},
        BrokenZasset{"Attributes",
                     {"DROP TABLE ZADDITIONALASSETATTRIBUTES"},
                     {failure("photo sql error #1: no such table: ZADDITIONALASSETATTRIBUTES")},
                     0},
        BrokenZasset{"AttributesOfNoAsset",
                     {"ALTER TABLE ZADDITIONALASSETATTRIBUTES RENAME COLUMN ZASSET TO ZOTHER"},
                     {failure("photo sql error #1: no such column: T.ZASSET")},
                     0},
        BrokenZasset{"Uuid",
                     {"ALTER TABLE ZASSET RENAME COLUMN ZUUID TO ZID"},
                     {failure("photo sql error #1: no such column: A.ZUUID")},
                     0},
        BrokenZasset{"GeneratedColumn",
                     {"ALTER TABLE ZASSET ADD COLUMN ZX AS (Z_PK + 1)"},
                     {failure("photo sql error #23: access to ZASSET.Z_PK is prohibited")},
                     0},
        BrokenZasset{"Videos",
                     {"ALTER TABLE ZADDITIONALASSETATTRIBUTES ADD COLUMN ZKIND INTEGER"},
                     {failure("Can not parse camera video")},
                     1},
        BrokenZasset{"Members",
                     {"DROP TABLE Z_26ASSETS"},
                     {failure("Can not get the proper assets table name")},
                     2}),
    rowName<BrokenZasset>);

// --- Damage

class DamagedZasset : public ZassetParse
{
protected:
    static const int pageSize = 512;

    DamagedZasset()
    {
        for (int pk = 4; pk <= 14; ++pk) {
            database.rows.assets.push_back(pk % 4 == 0 ? videoRow(pk, pk) : photoRow(pk, pk));
            database.rows.attributes.push_back({100 - pk, pk, {}, 100});
            database.join().add(3, pk);
        }
        database.rows.sql = {"CREATE INDEX i ON ZADDITIONALASSETATTRIBUTES (ZASSET)"};
        sound = inPagesOf(pageSize, database.bytes());
    }

    void expectContractOf(const QByteArray &damaged) { expectContract(parse(damaged)); }

    QByteArray sound;
};

TEST_F(DamagedZasset, IsReadWhileItIsSound)
{
    EXPECT_EQ(parse(sound), 1);
    EXPECT_EQ(model->assets.size(), 13);
}

TEST_F(DamagedZasset, KeepsTheContractAtEveryTruncation)
{
    for (int border = 0; border < sound.size(); border += pageSize) {
        for (const int length :
             {border, border + 1, border + pageSize / 2, border + pageSize - 1}) {
            SCOPED_TRACE(length);
            expectContractOf(sound.left(length));
        }
    }
    expectHealthyParse();
}

class FlippedBitOfZasset : public DamagedZasset, public testing::WithParamInterface<int>
{
};

TEST_P(FlippedBitOfZasset, KeepsTheContract)
{
    std::mt19937 random(20260701U + static_cast<unsigned>(GetParam()));
    for (int i = 0; i < 250; ++i) {
        const int offset =
            static_cast<int>(random() % static_cast<unsigned>(sound.size() - 100)) + 100;
        SCOPED_TRACE(offset);
        QByteArray damaged = sound;
        damaged[offset] = static_cast<char>(damaged[offset] ^ (1 << GetParam()));
        expectContractOf(damaged);
    }
    expectHealthyParse();
}

INSTANTIATE_TEST_SUITE_P(Bits, FlippedBitOfZasset, testing::Range(0, 8));

// --- Databases that were made to take time or memory

// An asset that is there `assets` times, and so are its attributes: as many pairs as their
// product.
class RepeatedZasset : public ZassetParse, public testing::WithParamInterface<const char *>
{
};

TEST_P(RepeatedZasset, IsNotJoinedForEver)
{
    database.schema.uniqueKeys = false;
    const std::string times = "with recursive r(x) as (select 1 union all select x + 1 from r "
                              "limit 20000) ";
    database.rows.sql = {
        std::string("insert into ZASSET (Z_PK, ZKIND, ZSAVEDASSETTYPE, ZDIRECTORY, ZFILENAME, "
                    "ZMODIFICATIONDATE, ZUUID) ") +
            times + "select 1, " + GetParam() + " from r",
        "insert into ZADDITIONALASSETATTRIBUTES (Z_PK, ZASSET) " + times + "select x, 1 from r"};
    parseInBounds(database.bytes());
    EXPECT_EQ(model->albums.size(), 1);
    expectHealthyParse();
}

INSTANTIATE_TEST_SUITE_P(Assets, RepeatedZasset,
                         testing::Values("0, 3, 'D', 'F', 5, x'01'", "0, 3, 'D', 'F', x, x'01'",
                                         "1, 3, 'D', 'F', 5, x'01'", "1, 3, 'D', 'F', x, x'01'",
                                         "1, 3, 'D', 'F', x, NULL"));

TEST_F(ZassetParse, ReadsAnAssetThatThousandsOfAttributesName)
{
    const int times = 5000;
    database.rows.sql = {
        "insert into ZADDITIONALASSETATTRIBUTES (Z_PK, ZASSET, ZORIGINALFILESIZE) with recursive "
        "r(x) as (select 1 union all select x + 1 from r limit " +
        std::to_string(times) + ") select 100 + x, 1, x from r"};
    EXPECT_EQ(parseInBounds(database.bytes()), 1);
    ASSERT_EQ(model->assets.keys(), (Keys{1, 2}));
    EXPECT_EQ(model->assets.value(1)->originalFileSize, times);
    EXPECT_EQ(model->assets.value(1)->modificationDate, 1);
}

TEST_F(ZassetParse, StaysInBoundsWithLongValuesInEveryColumn)
{
    const char *const columns[] = {
        "ZKIND",        "ZHEIGHT",    "ZWIDTH",         "ZTHUMBNAILINDEX",   "ZORIENTATION",
        "ZDIRECTORY",   "ZFILENAME",  "ZUUID",          "ZMODIFICATIONDATE", "ZKINDSUBTYPE",
        "ZTRASHEDDATE", "ZSORTTOKEN", "ZAVALANCHEUUID", "ZDURATION",         "ZDATECREATED"};
    int pk = 20;
    for (const char *column : columns) {
        ++pk;
        database.rows.assets.push_back(photoRow(pk, pk));
        database.rows.sql.push_back(
            "UPDATE ZASSET SET " + std::string(column) +
            " = CAST(zeroblob(1000000) AS TEXT) WHERE Z_PK = " + std::to_string(pk));
    }
    database.rows.sql.push_back(
        "UPDATE ZADDITIONALASSETATTRIBUTES SET ZASSET = 'x' || hex(zeroblob(500000))");
    EXPECT_EQ(parseInBounds(database.bytes()), 1);
    EXPECT_TRUE(model->assets.contains(1));
    expectHealthyParse();
}

TEST_F(ZassetParse, KeepsNoMoreAssetsThanTheFilesHold)
{
    database.schema.uniqueKeys = false;
    RawPages pages(inPagesOf(65536, database.bytes()));
    const int leaf = pages.add();
    pages.fillLeaf(leaf,
                   {RawValue::number(7), RawValue::number(1), RawValue::number(1),
                    RawValue::number(3), RawValue::number(1), RawValue::number(1),
                    RawValue::number(1), RawValue::number(1), RawValue::text("D"),
                    RawValue::text("F"), RawValue::number(1), RawValue::text("u")},
                   3000);
    const int inner = pages.add();
    pages.fillInner(inner, leaf);
    pages.fillInner(pages.root("ZASSET"), inner);
    EXPECT_EQ(parseInBounds(pages.bytes()), 1);
    EXPECT_EQ(model->assets.keys(), Keys{7});
    expectHealthyParse();
}

} // namespace
