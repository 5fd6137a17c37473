#include "cameradb/query_fixture.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

namespace {

using AssetQueries = QueryFixture;

struct NullArgument {
    const char *name;
    bool (*fails)(sqlite3 *db, CameraDB *model); ///< calls it, with one of both or none
    bool withDb;
    bool withModel;
    const char *function;
    const char *argument;
};

class QueryWithNullArgument : public QueryFixture, public testing::WithParamInterface<NullArgument>
{
};

TEST_P(QueryWithNullArgument, WarnsWithTheSignatureAndFails)
{
    const SqliteOwner db = database.open();
    const NullArgument &row = GetParam();
    EXPECT_TRUE(row.fails(row.withDb ? db.get() : nullptr, row.withModel ? model.get() : nullptr));
    EXPECT_EQ(host.warnings(), std::vector<Precondition>{precondition(row.function, row.argument)});
    EXPECT_EQ(host.trace().size(), 1U);
    EXPECT_TRUE(model->assets.isEmpty());
    EXPECT_TRUE(model->albums.isEmpty());
}

bool photosFail(sqlite3 *db, CameraDB *model)
{
    return queryCameraPhotos(db, model) == 0;
}
bool videosFail(sqlite3 *db, CameraDB *model)
{
    return queryCameraVideo(db, model) == 0;
}
bool albumsFail(sqlite3 *db, CameraDB *model)
{
    return queryCameraAlbum(db, model) == 0;
}
bool extendInfoFails(sqlite3 *db, CameraDB *)
{
    return queryCameraExtendInfo(db, QMap<quint64, Camera_Data *>()) == 0;
}
bool assetReaderFails(sqlite3 *, CameraDB *model)
{
    return selectCameraData(model, nullptr) == nullptr;
}
bool albumReaderFails(sqlite3 *, CameraDB *)
{
    return selectCameraAblumValues(nullptr) == nullptr;
}

const char *const photosSignature = "gboolean queryCameraPhotos(sqlite3 *, CameraDB *)";
const char *const videosSignature = "gboolean queryCameraVideo(sqlite3 *, CameraDB *)";
const char *const albumsSignature = "gboolean queryCameraAlbum(sqlite3 *, CameraDB *)";
const char *const extendInfoSignature =
    "gboolean queryCameraExtendInfo(sqlite3 *, QMap<unsigned long long, Camera_Data *>)";
const char *const assetReaderSignature =
    "Camera_Data *selectCameraData(CameraDB *, sqlite3_stmt *)";
const char *const albumReaderSignature = "Camera_Album *selectCameraAblumValues(sqlite3_stmt *)";

INSTANTIATE_TEST_SUITE_P(
    Null, QueryWithNullArgument,
    testing::Values(
        NullArgument{"PhotosDb", photosFail, false, true, photosSignature, "sql_db"},
        NullArgument{"PhotosModel", photosFail, true, false, photosSignature, "camera_db"},
        NullArgument{"PhotosBoth", photosFail, false, false, photosSignature, "sql_db"},
        NullArgument{"VideosDb", videosFail, false, true, videosSignature, "sql_db"},
        NullArgument{"VideosModel", videosFail, true, false, videosSignature, "camera_db"},
        NullArgument{"VideosBoth", videosFail, false, false, videosSignature, "sql_db"},
        NullArgument{"AlbumsDb", albumsFail, false, true, albumsSignature, "sql_db"},
        NullArgument{"AlbumsModel", albumsFail, true, false, albumsSignature, "camera_db"},
        NullArgument{"AlbumsBoth", albumsFail, false, false, albumsSignature, "sql_db"},
        NullArgument{"ExtendInfoDb", extendInfoFails, false, true, extendInfoSignature, "sql_db"},
        NullArgument{"AssetStatement", assetReaderFails, true, true, assetReaderSignature, "stmt"},
        NullArgument{"AssetBoth", assetReaderFails, false, false, assetReaderSignature, "stmt"},
        NullArgument{"AlbumStatement", albumReaderFails, true, true, albumReaderSignature, "stmt"}),
    rowName<NullArgument>);

struct Probe {
    const char *name;
    const char *sql;
    QString column;
    bool found;
};

class SchemaProbe : public QueryFixture, public testing::WithParamInterface<Probe>
{
};

TEST_P(SchemaProbe, LooksForTheTextInTheAssetTablesDefinition)
{
    const SqliteOwner db = openEmptyDatabase();
    runSql(db.get(), GetParam().sql);
    EXPECT_EQ(assetsHasSpecialCol(db.get(), GetParam().column), GetParam().found);
    expectSilence();
}

const char *const twoColumns = "CREATE TABLE ZGENERICASSET (Z_PK INTEGER, ZSORTTOKEN FLOAT)";

INSTANTIATE_TEST_SUITE_P(
    Definitions, SchemaProbe,
    testing::Values(
        Probe{"Present", twoColumns, QStringLiteral("ZSORTTOKEN"), true},
        Probe{"Absent", twoColumns, QStringLiteral("ZTRASHEDDATE"), false},
        Probe{"PartOfAName", twoColumns, QStringLiteral("SORTTOK"), true},
        Probe{"AtTheStart", twoColumns, QStringLiteral("CREATE TABLE"), true},
        Probe{"OtherCase", twoColumns, QStringLiteral("zsorttoken"), false},
        Probe{"LongerThanAName", twoColumns, QStringLiteral("ZSORTTOKENS"), false},
        Probe{"InAComment", "CREATE TABLE ZGENERICASSET (Z_PK INTEGER /* ZSORTTOKEN */)",
              QStringLiteral("ZSORTTOKEN"), true},
        Probe{"AddedLater",
              "CREATE TABLE ZGENERICASSET (Z_PK);"
              "ALTER TABLE ZGENERICASSET ADD COLUMN ZSORTTOKEN FLOAT",
              QStringLiteral("ZSORTTOKEN"), true},
        Probe{"Utf8", "CREATE TABLE ZGENERICASSET (Z_PK, Z\xc3\x84NDERUNG)",
              QStringLiteral("Z\u00c4NDERUNG"), true},
        Probe{"NotLatin1", "CREATE TABLE ZGENERICASSET (Z_PK, Z\xc3\x84NDERUNG)",
              QStringLiteral("Z\u00c3\u0084NDERUNG"), false},
        Probe{"NoTable", "CREATE TABLE ZMOMENT (Z_PK, ZSORTTOKEN)", QStringLiteral("ZSORTTOKEN"),
              false},
        Probe{"Zasset", "CREATE TABLE ZASSET (Z_PK, ZSORTTOKEN)", QStringLiteral("ZSORTTOKEN"),
              true},
        Probe{"ZassetWithoutIt", "CREATE TABLE ZASSET (Z_PK)", QStringLiteral("ZSORTTOKEN"), false},
        Probe{"ZassetBesideTheOther",
              "CREATE TABLE ZASSET (Z_PK, ZSORTTOKEN); CREATE TABLE ZGENERICASSET (Z_PK)",
              QStringLiteral("ZSORTTOKEN"), false},
        Probe{"OnlyTheOtherBesideZasset",
              "CREATE TABLE ZASSET (Z_PK); CREATE TABLE ZGENERICASSET (Z_PK, ZSORTTOKEN)",
              QStringLiteral("ZSORTTOKEN"), true},
        Probe{"ZassetBesideAView",
              "CREATE TABLE ZASSET (Z_PK); CREATE VIEW ZGENERICASSET AS SELECT 1 AS ZSORTTOKEN",
              QStringLiteral("ZSORTTOKEN"), false},
        Probe{"ZassetBesideATableInAnotherCase",
              "CREATE TABLE ZASSET (Z_PK, ZSORTTOKEN); CREATE TABLE zGenericAsset (Z_PK)",
              QStringLiteral("ZSORTTOKEN"), false},
        Probe{"IndexOfZasset",
              "CREATE TABLE ZASSET (Z_PK); CREATE INDEX ZSORTTOKEN_INDEX ON ZASSET (Z_PK)",
              QStringLiteral("ZSORTTOKEN"), false},
        Probe{"OtherTable",
              "CREATE TABLE ZGENERICALBUM (Z_PK, ZTRASHEDSTATE); CREATE TABLE ZGENERICASSET (Z_PK)",
              QStringLiteral("ZTRASHEDSTATE"), false},
        Probe{"IndexOfTheTable",
              "CREATE TABLE ZGENERICASSET (Z_PK);"
              "CREATE INDEX ZSORTTOKEN_INDEX ON ZGENERICASSET (Z_PK)",
              QStringLiteral("ZSORTTOKEN"), false},
        Probe{"IndexMadeFirst",
              "CREATE TABLE ZGENERICASSET (Z_PK, ZKIND);"
              "CREATE INDEX A ON ZGENERICASSET (Z_PK);"
              "ALTER TABLE ZGENERICASSET ADD COLUMN ZSORTTOKEN FLOAT",
              QStringLiteral("ZSORTTOKEN"), true},
        Probe{"IndexListedFirst",
              "CREATE TABLE ZGENERICASSET (Z_PK, ZSORTTOKEN);"
              "CREATE INDEX A ON ZGENERICASSET (Z_PK);"
              "PRAGMA writable_schema = ON;"
              "UPDATE sqlite_master SET rowid = 100 WHERE type = 'table'",
              QStringLiteral("ZSORTTOKEN"), true},
        Probe{"EmptyDefinitionListedFirst",
              "CREATE TABLE ZGENERICASSET (Z_PK, ZSORTTOKEN);"
              "PRAGMA writable_schema = ON;"
              "INSERT INTO sqlite_master (rowid, type, name, tbl_name, rootpage, sql) "
              "VALUES (0, 'table', 'ZGENERICASSET', 'ZGENERICASSET', 0, NULL)",
              QStringLiteral("ZSORTTOKEN"), true},
        Probe{"View", "CREATE VIEW ZGENERICASSET AS SELECT 1 AS ZSORTTOKEN",
              QStringLiteral("ZSORTTOKEN"), true}),
    rowName<Probe>);

TEST_F(AssetQueries, ProbeLogsASchemaThatCanNotBeRead)
{
    const SqliteOwner db = openUnreadable();
    EXPECT_FALSE(assetsHasSpecialCol(db.get(), QStringLiteral("ZSORTTOKEN")));
    expectLogged("get assets table name sql error #26: file is not a database");
}

TEST_F(AssetQueries, LetAnAssetWithoutAttributesHaveNeitherSizeNorDuration)
{
    database.rows.assets = {photoRow(1, 1), videoRow(2, 2)};
    const SqliteOwner db = database.open();
    ASSERT_EQ(queryCameraPhotos(db.get(), model.get()), 1);
    ASSERT_EQ(queryCameraVideo(db.get(), model.get()), 1);
    ASSERT_EQ(queryCameraExtendInfo(db.get(), model->assets), 1);
    for (const Camera_Data *asset : qAsConst(model->assets)) {
        EXPECT_EQ(asset->originalFileSize, 0);
        EXPECT_EQ(asset->duration, 0);
    }
    EXPECT_EQ(model->assets.size(), 2);
}

TEST_F(AssetQueries, LetThePhotoWinAVideosKey)
{
    database.schema.uniqueKeys = false;
    database.rows.assets = {videoRow(1, 1), photoRow(1, 2)};
    const SqliteOwner db = database.open();
    ASSERT_EQ(queryCameraPhotos(db.get(), model.get()), 1);
    ASSERT_EQ(queryCameraVideo(db.get(), model.get()), 1);
    ASSERT_EQ(model->assets.keys(), Keys{1});
    EXPECT_EQ(model->assets.value(1)->kind, 0);
    EXPECT_TRUE(model->videos.isEmpty());
    expectSilence();
}

} // namespace
