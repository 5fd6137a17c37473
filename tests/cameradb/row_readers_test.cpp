#include "cameradb/query_fixture.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

const qint32 highestDate = std::numeric_limits<qint32>::max();
const qint32 lowestDate = std::numeric_limits<qint32>::min();

struct FinalizeStatement {
    void operator()(sqlite3_stmt *stmt) const { sqlite3_finalize(stmt); }
};

// One statement at its first row.
class Row
{
public:
    explicit Row(const std::string &sql) : m_db(openEmptyDatabase())
    {
        sqlite3_stmt *stmt = nullptr;
        EXPECT_EQ(sqlite3_prepare_v2(m_db.get(), sql.c_str(), -1, &stmt, nullptr), SQLITE_OK)
            << sqlite3_errmsg(m_db.get());
        m_stmt.reset(stmt);
        EXPECT_EQ(sqlite3_step(stmt), SQLITE_ROW);
    }
    sqlite3_stmt *get() const { return m_stmt.get(); }

private:
    SqliteOwner m_db;
    std::unique_ptr<sqlite3_stmt, FinalizeStatement> m_stmt;
};

// The select list of an asset statement, each item an SQL literal.
struct AssetColumns {
    std::string pk = "1";
    std::string kind = "0";
    std::string height = "3";
    std::string width = "4";
    std::string thumbnailIndex = "5";
    std::string orientation = "6";
    std::string directory = "'DCIM'";
    std::string fileName = "'A.JPG'";
    std::string modificationDate = "9";
    std::string uuid = "x'0A'";
    std::string originalFileSize = "11";
    std::string kindSubtype = "12";
    std::string trashedDate = "13";
    std::string avalancheUuid = "'burst'";
    std::string sortToken = "1.5";

    std::string list(std::size_t count = 15) const
    {
        const std::vector<std::string> all = {
            pk,          kind,          height,           width, thumbnailIndex,   orientation,
            directory,   fileName,      modificationDate, uuid,  originalFileSize, kindSubtype,
            trashedDate, avalancheUuid, sortToken};
        std::string sql = "SELECT " + all.front();
        for (std::size_t i = 1; i < count; ++i)
            sql += ", " + all[i];
        return sql;
    }
};

class AssetReader : public QueryFixture
{
protected:
    std::unique_ptr<Camera_Data> read(const AssetColumns &columns, std::size_t count = 15)
    {
        const Row row(columns.list(count));
        return std::unique_ptr<Camera_Data>(selectCameraData(model.get(), row.get()));
    }
};

TEST_F(AssetReader, TakesEachColumnIntoItsField)
{
    const std::unique_ptr<Camera_Data> asset = read(AssetColumns());
    ASSERT_TRUE(asset);
    EXPECT_EQ(asset->db, model.get());
    EXPECT_EQ(asset->pk, 1U);
    EXPECT_EQ(asset->kind, 0);
    EXPECT_EQ(asset->height, 3);
    EXPECT_EQ(asset->width, 4);
    EXPECT_EQ(asset->thumbnailIndex, 5);
    EXPECT_EQ(asset->orientation, 6);
    EXPECT_EQ(asset->directory, QStringLiteral("DCIM"));
    EXPECT_EQ(asset->fileName, QStringLiteral("A.JPG"));
    EXPECT_EQ(asset->name, QStringLiteral("A.JPG"));
    EXPECT_EQ(asset->modificationDate, 9);
    EXPECT_EQ(asset->uuid, QByteArray("\x0a"));
    EXPECT_EQ(asset->originalFileSize, 11);
    EXPECT_EQ(asset->kindSubtype, 12);
    EXPECT_EQ(asset->trashedDate, 13);
    EXPECT_EQ(asset->avalancheUUID, QStringLiteral("burst"));
    EXPECT_EQ(asset->sortToken, 1.5);
    expectSilence();
}

TEST_F(AssetReader, LeavesWhatTheDatabaseDoesNotTellAtZero)
{
    const std::unique_ptr<Camera_Data> asset = read(AssetColumns());
    ASSERT_TRUE(asset);
    EXPECT_EQ(asset->createDate, 0);
    EXPECT_EQ(asset->duration, 0);
    EXPECT_EQ(asset->reserved1, 0);
    EXPECT_EQ(asset->reserved2, 0);
    EXPECT_EQ(asset->reserved3, 0);
}

TEST_F(AssetReader, FilesNothingInTheModel)
{
    EXPECT_TRUE(read(AssetColumns()));
    EXPECT_TRUE(model->assets.isEmpty());
    EXPECT_EQ(model->maxAssetPk, 0);
}

TEST_F(AssetReader, NeedsNoModel)
{
    const Row row(AssetColumns().list());
    const std::unique_ptr<Camera_Data> asset(selectCameraData(nullptr, row.get()));
    ASSERT_TRUE(asset);
    EXPECT_EQ(asset->db, nullptr);
    expectSilence();
}

struct KeyText {
    const char *name;
    const char *stored;
    quint64 key;
};

class RowKey : public AssetReader, public testing::WithParamInterface<KeyText>
{
};

TEST_P(RowKey, IsReadAs32BitsOfAnAssetAndSignExtended)
{
    AssetColumns columns;
    columns.pk = GetParam().stored;
    const std::unique_ptr<Camera_Data> asset = read(columns);
    ASSERT_TRUE(asset);
    EXPECT_EQ(asset->pk, GetParam().key);
}

TEST_P(RowKey, IsReadAs32BitsOfAnAlbumAndSignExtended)
{
    const Row row(std::string("SELECT ") + GetParam().stored + ", 'title', 2, x'01'");
    const std::unique_ptr<Camera_Album> album(selectCameraAblumValues(row.get()));
    ASSERT_TRUE(album);
    EXPECT_EQ(album->pk, GetParam().key);
}

INSTANTIATE_TEST_SUITE_P(
    Keys, RowKey,
    testing::Values(KeyText{"Zero", "0", 0}, KeyText{"Highest", "2147483647", 2147483647},
                    KeyText{"Negative", "-5", 0xfffffffffffffffb},
                    KeyText{"Lowest", "-2147483648", 0xffffffff80000000},
                    KeyText{"BeyondThe31Bits", "2147483648", 0xffffffff80000000},
                    KeyText{"BeyondThe32Bits", "4294967301", 5}, KeyText{"Text", "'17'", 17}),
    rowName<KeyText>);

struct Date {
    const char *name;
    const char *stored;
    qint32 date;
};

class RowDate : public AssetReader, public testing::WithParamInterface<Date>
{
};

TEST_P(RowDate, KeepsTheLow32BitsOfTheWholeSeconds)
{
    AssetColumns columns;
    columns.modificationDate = GetParam().stored;
    const std::unique_ptr<Camera_Data> asset = read(columns);
    ASSERT_TRUE(asset);
    EXPECT_EQ(asset->modificationDate, GetParam().date);
}

INSTANTIATE_TEST_SUITE_P(Dates, RowDate,
                         testing::Values(Date{"Whole", "420000000", 420000000},
                                         Date{"Fraction", "420000000.9", 420000000},
                                         Date{"NegativeFraction", "-1.5", -1},
                                         Date{"Null", "NULL", 0},
                                         Date{"Highest", "2147483647", highestDate},
                                         Date{"BeyondTheHighest", "2147483648", lowestDate},
                                         Date{"BeyondThe32Bits", "4294967313", 17},
                                         Date{"Negative64Bits", "-4294967313", -17}),
                         rowName<Date>);

TEST_F(AssetReader, KeepsA64BitTrashedDateAndFileSize)
{
    AssetColumns columns;
    columns.originalFileSize = "5000000000";
    columns.trashedDate = "-9223372036854775808";
    const std::unique_ptr<Camera_Data> asset = read(columns);
    ASSERT_TRUE(asset);
    EXPECT_EQ(asset->originalFileSize, 5000000000);
    EXPECT_EQ(asset->trashedDate, std::numeric_limits<qint64>::min());
}

TEST_F(AssetReader, ReadsTheTextZeroAsTheNumberZero)
{
    AssetColumns columns;
    columns.kindSubtype = "'0'";
    columns.trashedDate = "'0'";
    columns.avalancheUuid = "'0'";
    columns.sortToken = "'0'";
    const std::unique_ptr<Camera_Data> asset = read(columns);
    ASSERT_TRUE(asset);
    EXPECT_EQ(asset->kindSubtype, 0);
    EXPECT_EQ(asset->trashedDate, 0);
    EXPECT_EQ(asset->avalancheUUID, QStringLiteral("0"));
    EXPECT_EQ(asset->sortToken, 0.0);
}

TEST_F(AssetReader, ReadsTextsAsLatin1)
{
    AssetColumns columns;
    columns.directory = "'\xc3\xa9'";
    columns.fileName = "'\xe9\x9b\xbb'";
    columns.avalancheUuid = "'\xc3\xbc'";
    const std::unique_ptr<Camera_Data> asset = read(columns);
    ASSERT_TRUE(asset);
    EXPECT_EQ(asset->directory, QStringLiteral("\u00c3\u00a9"));
    EXPECT_EQ(asset->fileName, QStringLiteral("\u00e9\u009b\u00bb"));
    EXPECT_EQ(asset->name, asset->fileName);
    EXPECT_EQ(asset->avalancheUUID, QStringLiteral("\u00c3\u00bc"));
}

TEST_F(AssetReader, KeepsEveryByteOfTheUuid)
{
    AssetColumns columns;
    columns.uuid = "x'00FF0A0041'";
    const std::unique_ptr<Camera_Data> asset = read(columns);
    ASSERT_TRUE(asset);
    EXPECT_EQ(asset->uuid, QByteArray("\x00\xff\x0a\x00\x41", 5));
}

TEST_F(AssetReader, TakesATextUuidsBytes)
{
    AssetColumns columns;
    columns.uuid = "'0A1B-\xc3\xa9'";
    const std::unique_ptr<Camera_Data> asset = read(columns);
    ASSERT_TRUE(asset);
    EXPECT_EQ(asset->uuid, QByteArray("0A1B-\xc3\xa9"));
}

TEST_F(AssetReader, TakesEmptyTexts)
{
    AssetColumns columns;
    columns.directory = "''";
    columns.fileName = "''";
    columns.avalancheUuid = "''";
    const std::unique_ptr<Camera_Data> asset = read(columns);
    ASSERT_TRUE(asset);
    EXPECT_TRUE(asset->directory.isEmpty());
    EXPECT_TRUE(asset->fileName.isEmpty());
    EXPECT_TRUE(asset->avalancheUUID.isEmpty());
    EXPECT_EQ(asset->sortToken, 1.5);
}

TEST_F(AssetReader, TurnsNumbersIntoTexts)
{
    AssetColumns columns;
    columns.directory = "8";
    columns.fileName = "-1.5";
    const std::unique_ptr<Camera_Data> asset = read(columns);
    ASSERT_TRUE(asset);
    EXPECT_EQ(asset->directory, QStringLiteral("8"));
    EXPECT_EQ(asset->fileName, QStringLiteral("-1.5"));
}

struct Rejected {
    const char *name;
    std::string AssetColumns::*column;
    const char *value;
};

class RejectedAsset : public AssetReader, public testing::WithParamInterface<Rejected>
{
};

TEST_P(RejectedAsset, YieldsNoRecordAndLogsNothing)
{
    AssetColumns columns;
    columns.*(GetParam().column) = GetParam().value;
    EXPECT_FALSE(read(columns));
    expectSilence();
}

// SQLite has no pointer for a blob without bytes either.
INSTANTIATE_TEST_SUITE_P(Columns, RejectedAsset,
                         testing::Values(Rejected{"Directory", &AssetColumns::directory, "NULL"},
                                         Rejected{"FileName", &AssetColumns::fileName, "NULL"},
                                         Rejected{"Uuid", &AssetColumns::uuid, "NULL"},
                                         Rejected{"EmptyUuid", &AssetColumns::uuid, "x''"}),
                         rowName<Rejected>);

TEST_F(AssetReader, GivesANullBurstTheTextZeroAndNoToken)
{
    AssetColumns columns;
    columns.avalancheUuid = "NULL";
    columns.sortToken = "7.5";
    const std::unique_ptr<Camera_Data> asset = read(columns);
    ASSERT_TRUE(asset);
    EXPECT_EQ(asset->avalancheUUID, QStringLiteral("0"));
    EXPECT_EQ(asset->sortToken, 0.0);
}

// SQLite keeps that a column was asked for which the statement does not have.
TEST_F(AssetReader, AsksForNoColumnThatAVideosStatementDoesNotHave)
{
    const std::size_t videoColumns = 13;
    const Row row(AssetColumns().list(videoColumns));
    const std::unique_ptr<Camera_Data> asset(selectCameraData(model.get(), row.get()));
    ASSERT_TRUE(asset);
    EXPECT_NE(sqlite3_errcode(sqlite3_db_handle(row.get())), SQLITE_RANGE);
}

TEST_F(AssetReader, GivesABurstWithoutATokenColumnNoToken)
{
    const std::size_t upToBurst = 14;
    const Row row(AssetColumns().list(upToBurst));
    const std::unique_ptr<Camera_Data> asset(selectCameraData(model.get(), row.get()));
    ASSERT_TRUE(asset);
    EXPECT_EQ(asset->avalancheUUID, QStringLiteral("burst"));
    EXPECT_EQ(asset->sortToken, 0.0);
    EXPECT_NE(sqlite3_errcode(sqlite3_db_handle(row.get())), SQLITE_RANGE);
}

TEST_F(AssetReader, GivesAStatementWithoutBurstColumnsTheTextZeroAndNoToken)
{
    const std::unique_ptr<Camera_Data> asset = read(AssetColumns(), 13);
    ASSERT_TRUE(asset);
    EXPECT_EQ(asset->avalancheUUID, QStringLiteral("0"));
    EXPECT_EQ(asset->sortToken, 0.0);
    EXPECT_EQ(asset->trashedDate, 13);
}

class AlbumReader : public QueryFixture
{
protected:
    std::unique_ptr<Camera_Album> read(const std::string &list)
    {
        const Row row("SELECT " + list);
        return std::unique_ptr<Camera_Album>(selectCameraAblumValues(row.get()));
    }
};

TEST_F(AlbumReader, TakesEachColumnIntoItsField)
{
    const std::unique_ptr<Camera_Album> album = read("3, 'Title', 1550, x'00FF', 7");
    ASSERT_TRUE(album);
    EXPECT_EQ(album->pk, 3U);
    EXPECT_EQ(album->title, QStringLiteral("Title"));
    EXPECT_EQ(album->kind, 1550);
    EXPECT_EQ(album->uuid, QByteArray("\x00\xff", 2));
    EXPECT_EQ(album->trashedState, 7);
    EXPECT_EQ(album->reserved1, 0);
    EXPECT_EQ(album->reserved2, 0);
    EXPECT_EQ(album->reserved3, 0);
    EXPECT_TRUE(album->assetKeys.isEmpty());
    expectSilence();
}

TEST_F(AlbumReader, HasNoTrashedStateWithoutItsColumn)
{
    const std::unique_ptr<Camera_Album> album = read("3, 'Title', 2, x'01'");
    ASSERT_TRUE(album);
    EXPECT_EQ(album->trashedState, 0);
}

TEST_F(AlbumReader, ReadsTheTitleAsUtf8)
{
    const std::unique_ptr<Camera_Album> album = read("3, '\xc3\xa9 \xe9\x9b\xbb', 2, x'01'");
    ASSERT_TRUE(album);
    EXPECT_EQ(album->title, QStringLiteral("\u00e9 \u96fb"));
}

TEST_F(AlbumReader, KeepsANullTitleNull)
{
    const std::unique_ptr<Camera_Album> album = read("3, NULL, 2, x'01'");
    ASSERT_TRUE(album);
    EXPECT_TRUE(album->title.isNull());
}

TEST_F(AlbumReader, KeepsAnEmptyTitleEmpty)
{
    const std::unique_ptr<Camera_Album> album = read("3, '', 2, x'01'");
    ASSERT_TRUE(album);
    EXPECT_TRUE(album->title.isEmpty());
    EXPECT_FALSE(album->title.isNull());
}

TEST_F(AlbumReader, RejectsNoRow)
{
    const std::unique_ptr<Camera_Album> album = read("NULL, NULL, NULL, NULL, NULL");
    ASSERT_TRUE(album);
    EXPECT_EQ(album->pk, 0U);
    EXPECT_EQ(album->kind, 0);
    EXPECT_TRUE(album->uuid.isEmpty());
    expectSilence();
}

TEST_F(AlbumReader, TakesATextUuidsBytes)
{
    const std::unique_ptr<Camera_Album> album = read("3, 'Title', 2, '0A1B-'");
    ASSERT_TRUE(album);
    EXPECT_EQ(album->uuid, QByteArray("0A1B-"));
}

} // namespace
