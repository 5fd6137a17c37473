#include "cameradb/query_fixture.h"
#include "sqlite/sqlite_connection.h"
#include "support/expected_leak.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <string>
#include <vector>

namespace {

// Queries of a library since iOS 14, whose assets are in ZASSET.
class ZassetQueries : public QueryFixture
{
protected:
    ZassetQueries()
    {
        database.schema = Schema::zasset();
        model->hasKindSubtype = true;
    }

    // All that a parse asks about assets.
    void query()
    {
        const SqliteOwner db = database.open();
        EXPECT_EQ(queryCameraPhotos(db.get(), model.get()), 1);
        EXPECT_EQ(queryCameraVideo(db.get(), model.get()), 1);
        EXPECT_EQ(queryCameraExtendInfo(db.get(), model->assets), 1);
        expectSilence();
    }

    const Camera_Data &only()
    {
        static const Camera_Data none = Camera_Data();
        EXPECT_EQ(model->assets.size(), 1);
        return model->assets.isEmpty() ? none : *model->assets.first();
    }
};

AssetRow fullRow(AssetRow row)
{
    row.height = 3024;
    row.width = 4032;
    row.thumbnailIndex = 12;
    row.orientation = 6;
    row.directory = "DCIM/101APPLE";
    row.fileName = "IMG_0007.HEIC";
    row.kindSubtype = 2;
    row.trashedDate = 430000000.5;
    row.avalancheUuid = "burst";
    row.sortToken = 2.25;
    row.duration = 7.5;
    row.dateCreated = 410000000.75;
    return row;
}

void expectFullRow(const Camera_Data &asset)
{
    EXPECT_EQ(asset.pk, 7U);
    EXPECT_EQ(asset.height, 3024);
    EXPECT_EQ(asset.width, 4032);
    EXPECT_EQ(asset.thumbnailIndex, 12);
    EXPECT_EQ(asset.orientation, 6);
    EXPECT_EQ(asset.directory, QStringLiteral("DCIM/101APPLE"));
    EXPECT_EQ(asset.fileName, QStringLiteral("IMG_0007.HEIC"));
    EXPECT_EQ(asset.name, QStringLiteral("IMG_0007.HEIC"));
    EXPECT_EQ(asset.modificationDate, 420000000);
    EXPECT_EQ(asset.uuid, uuidBlob(7));
    EXPECT_EQ(asset.originalFileSize, 123456);
    EXPECT_EQ(asset.trashedDate, 430000000);
    EXPECT_EQ(asset.duration, 8);
    EXPECT_EQ(asset.createDate, 410000000);
}

TEST_F(ZassetQueries, FileAPhotoOfEveryColumn)
{
    database.rows.assets = {fullRow(photoRow(7, 420000000))};
    database.rows.attributes = {{99, 7, {}, 123456}};
    query();
    const Camera_Data &photo = only();
    expectFullRow(photo);
    EXPECT_EQ(photo.db, model.get());
    EXPECT_EQ(photo.kind, 0);
    EXPECT_EQ(photo.kindSubtype, 2);
    EXPECT_EQ(photo.avalancheUUID, QStringLiteral("burst"));
    EXPECT_EQ(photo.sortToken, 2.25);
    EXPECT_TRUE(model->videos.isEmpty());
    EXPECT_EQ(model->maxAssetPk, 7);
}

TEST_F(ZassetQueries, FileAVideoOfEveryColumnButSubtypeAndBurst)
{
    database.rows.assets = {fullRow(videoRow(7, 420000000))};
    database.rows.attributes = {{99, 7, {}, 123456}};
    query();
    const Camera_Data &video = only();
    expectFullRow(video);
    EXPECT_EQ(video.kind, 1);
    EXPECT_EQ(video.kindSubtype, 0);
    EXPECT_EQ(video.avalancheUUID, QStringLiteral("0"));
    EXPECT_EQ(video.sortToken, 0.0);
    EXPECT_EQ(model->videos.value(7), model->assets.value(7));
    EXPECT_EQ(model->maxAssetPk, 7);
}

TEST_F(ZassetQueries, TakeEverySavedTypeButCopiesOutOfSharedAlbums)
{
    int pk = 0;
    Keys photos;
    Keys videos;
    for (const int kind : {0, 1, 2, -1}) {
        for (const int savedType : {-1, 0, 1, 2, 3, 4, 5, 6, 8, 10, 12, 255, 256, 257}) {
            AssetRow row = photoRow(++pk);
            row.kind = kind;
            row.savedAssetType = savedType;
            database.rows.assets.push_back(row);
            if (savedType != 4 && (kind == 0 || kind == 1))
                (kind == 0 ? photos : videos).append(key(pk));
        }
        AssetRow without = photoRow(++pk);
        without.kind = kind;
        without.savedAssetType = nullptr;
        database.rows.assets.push_back(without);
        if (kind == 0 || kind == 1)
            (kind == 0 ? photos : videos).append(key(pk));
    }
    AssetRow noKind = photoRow(++pk);
    noKind.kind = nullptr;
    database.rows.assets.push_back(noKind);

    query();
    ASSERT_EQ(photos.size(), 14);
    ASSERT_EQ(videos.size(), 14);
    EXPECT_EQ(model->videos.keys(), videos);
    EXPECT_EQ(model->assets.keys(), photos + videos);
}

TEST_F(ZassetQueries, TakeTrashedAssetsToo)
{
    for (AssetRow row : {photoRow(1), videoRow(2)}) {
        row.trashedState = 1;
        row.trashedDate = 5;
        database.rows.assets.push_back(row);
    }
    query();
    ASSERT_EQ(model->assets.keys(), (Keys{1, 2}));
    EXPECT_EQ(model->assets.value(1)->trashedDate, 5);
    EXPECT_EQ(model->assets.value(2)->trashedDate, 5);
}

TEST_F(ZassetQueries, ReadPhotosInTheOrderOfTheirModificationAndMakeDatesDistinct)
{
    database.rows.assets = {photoRow(1, 30), photoRow(2, 10), photoRow(3, 10), videoRow(4, 10)};
    query();
    EXPECT_EQ(model->assets.value(2)->modificationDate, 10);
    EXPECT_EQ(model->assets.value(3)->modificationDate, 11);
    EXPECT_EQ(model->assets.value(1)->modificationDate, 30);
    EXPECT_EQ(model->assets.value(4)->modificationDate, 10);
}

TEST_F(ZassetQueries, FilePanoramasTwice)
{
    database.rows.assets = {photoRow(1), photoRow(2)};
    database.rows.assets[1].kindSubtype = 1;
    query();
    ASSERT_EQ(model->panoramas.keys(), Keys{2});
    EXPECT_EQ(model->panoramas.value(2), model->assets.value(2));
}

TEST_F(ZassetQueries, SkipRowsWithoutDirectoryFileNameOrUuid)
{
    for (const int kind : {0, 1}) {
        std::vector<AssetRow> rows;
        for (int i = 1; i <= 4; ++i) {
            rows.push_back(photoRow(4 * kind + i, 5));
            rows.back().kind = kind;
        }
        rows[0].directory = nullptr;
        rows[1].fileName = nullptr;
        rows[2].uuid = nullptr;
        database.rows.assets.insert(database.rows.assets.end(), rows.begin(), rows.end());
    }
    query();
    EXPECT_EQ(model->assets.keys(), (Keys{4, 8}));
    EXPECT_EQ(model->assets.value(4)->modificationDate, 5);
}

// --- The attributes

TEST_F(ZassetQueries, JoinTheAttributesByTheAssetThatTheyName)
{
    database.rows.assets = {photoRow(1, 1), photoRow(2, 2), videoRow(3, 3), videoRow(4, 4)};
    database.rows.attributes = {{1, 2, {}, 200}, {2, 1, {}, 100}, {3, 4, {}, 400}, {4, 3, {}, 300}};
    const SqliteOwner db = database.open();
    ASSERT_EQ(queryCameraPhotos(db.get(), model.get()), 1);
    ASSERT_EQ(queryCameraVideo(db.get(), model.get()), 1);
    ASSERT_EQ(model->assets.keys(), (Keys{1, 2, 3, 4}));
    for (const Camera_Data *asset : qAsConst(model->assets))
        EXPECT_EQ(asset->originalFileSize, 100 * static_cast<qint64>(asset->pk));
    ASSERT_EQ(queryCameraExtendInfo(db.get(), model->assets), 1);
    for (const Camera_Data *asset : qAsConst(model->assets))
        EXPECT_EQ(asset->originalFileSize, 100 * static_cast<qint64>(asset->pk));
}

TEST_F(ZassetQueries, LeaveAnAssetWithoutAttributesWithoutASize)
{
    database.rows.assets = {photoRow(1, 1), videoRow(2, 2)};
    for (AssetRow &row : database.rows.assets)
        row.duration = 3;
    database.rows.attributes = {{1, 9, {}, 100}, {2, nullptr, {}, 200}};
    query();
    ASSERT_EQ(model->assets.keys(), (Keys{1, 2}));
    for (const Camera_Data *asset : qAsConst(model->assets)) {
        EXPECT_EQ(asset->originalFileSize, 0);
        EXPECT_EQ(asset->duration, 3);
    }
}

TEST_F(ZassetQueries, ListAnAssetOnceThatSeveralAttributesName)
{
    database.rows.assets = {photoRow(1, 10), photoRow(2, 10), videoRow(3, 10)};
    database.rows.assets[0].kindSubtype = 1;
    database.rows.attributes = {{1, 1, {}, 100}, {2, 3, {}, 300}, {3, 1, {}, 101},
                                {4, 2, {}, 200}, {5, 3, {}, 301}, {6, 1, {}, 102}};
    query();
    ASSERT_EQ(model->assets.keys(), (Keys{1, 2, 3}));
    EXPECT_EQ(model->panoramas.value(1), model->assets.value(1));
    EXPECT_EQ(model->assets.value(1)->modificationDate, 10) << "a date is taken once";
    EXPECT_EQ(model->assets.value(2)->modificationDate, 11);
    EXPECT_EQ(model->assets.value(1)->originalFileSize, 102) << "the last row holds";
    EXPECT_EQ(model->assets.value(2)->originalFileSize, 200);
    EXPECT_EQ(model->assets.value(3)->originalFileSize, 301);
}

TEST_F(ZassetQueries, LetTheLastRowOfAKeyWinAmongPhotos)
{
    database.schema.uniqueKeys = false;
    database.rows.assets = {photoRow(5, 30), photoRow(5, 10), photoRow(5, 20)};
    database.rows.assets[0].fileName = "LAST.JPG";
    {
        // Nothing points to the earlier records any more.
        const ExpectedLeak replaced;
        query();
    }
    EXPECT_EQ(only().fileName, QStringLiteral("LAST.JPG"));
    EXPECT_EQ(only().modificationDate, 30);
}

TEST_F(ZassetQueries, TakeTheDurationFromTheAssetOnly)
{
    database.schema.attributesDuration = true;
    database.rows.assets = {videoRow(1)};
    database.rows.assets[0].duration = 4.0;
    database.rows.attributes = {{1, 1, 99.0, 100}};
    query();
    EXPECT_EQ(only().duration, 4);
    EXPECT_EQ(only().originalFileSize, 100);
}

TEST_F(ZassetQueries, AddNoMoreThanTheSizeToRecordsThatAreThere)
{
    Camera_Data *asset = new Camera_Data();
    asset->pk = 1;
    asset->duration = -1;
    asset->originalFileSize = -1;
    model->assets.insert(1, asset);
    database.rows.attributes = {{9, 1, {}, 5000000000}};
    const SqliteOwner db = database.open();
    EXPECT_EQ(queryCameraExtendInfo(db.get(), model->assets), 1);
    expectSilence();
    EXPECT_EQ(asset->duration, -1);
    EXPECT_EQ(asset->originalFileSize, 5000000000);
}

TEST_F(ZassetQueries, FailSilentlyToExtendWithoutAttributes)
{
    database.schema.attributes = false;
    const SqliteOwner db = database.open();
    EXPECT_EQ(queryCameraExtendInfo(db.get(), model->assets), 0);
    expectSilence();
}

// --- Times

struct ZassetDuration {
    const char *name;
    SqlValue stored;
    qint32 seconds;
};

class DurationOfZasset : public ZassetQueries, public testing::WithParamInterface<ZassetDuration>
{
};

TEST_P(DurationOfZasset, IsRoundedToWholeSeconds)
{
    database.rows.assets = {photoRow(1), videoRow(2)};
    for (AssetRow &row : database.rows.assets)
        row.duration = GetParam().stored;
    query();
    ASSERT_EQ(model->assets.keys(), (Keys{1, 2}));
    EXPECT_EQ(model->assets.value(1)->duration, GetParam().seconds);
    EXPECT_EQ(model->assets.value(2)->duration, GetParam().seconds);
}

INSTANTIATE_TEST_SUITE_P(
    Durations, DurationOfZasset,
    testing::Values(ZassetDuration{"Half", 2.5, 3}, ZassetDuration{"LessThanHalf", 2.49, 2},
                    ZassetDuration{"Zero", 0, 0}, ZassetDuration{"Whole", 7, 7},
                    ZassetDuration{"Null", nullptr, 0}, ZassetDuration{"Text", "12.6", 13},
                    ZassetDuration{"NoNumber", "long", 0}, ZassetDuration{"Negative", -1.2, 0},
                    ZassetDuration{"NegativeHalf", -2.5, -2},
                    ZassetDuration{"Highest", 2147483646.4, 2147483646},
                    ZassetDuration{"BeyondAllNumbers", 1e300, 2147483647},
                    ZassetDuration{"BelowAllNumbers", -1e300, -2147483647 - 1}),
    rowName<ZassetDuration>);

struct Created {
    const char *name;
    SqlValue stored;
    qint32 date;
};

class DateOfZasset : public ZassetQueries, public testing::WithParamInterface<Created>
{
};

TEST_P(DateOfZasset, IsReadInWholeSecondsOfWhichTheLow32BitsAreKept)
{
    database.rows.assets = {photoRow(1), videoRow(2)};
    for (AssetRow &row : database.rows.assets)
        row.dateCreated = GetParam().stored;
    query();
    ASSERT_EQ(model->assets.keys(), (Keys{1, 2}));
    EXPECT_EQ(model->assets.value(1)->createDate, GetParam().date);
    EXPECT_EQ(model->assets.value(2)->createDate, GetParam().date);
}

INSTANTIATE_TEST_SUITE_P(
    Dates, DateOfZasset,
    testing::Values(
        Created{"Whole", 600560216, 600560216}, Created{"Fraction", 738796212.9, 738796212},
        Created{"Null", nullptr, 0}, Created{"Negative", -86400, -86400},
        Created{"NegativeFraction", -1.9, -1}, Created{"TwoToThe31", 2147483648, -2147483647 - 1},
        Created{"TwoToThe32And5", 4294967301, 5}, Created{"RealBeyond32Bits", 4294967301.5, 5},
        Created{"BelowAllDates", -4294967296 - 7, -7}, Created{"BeyondAllNumbers", 1e300, -1},
        Created{"NoNumber", "today", 0}, Created{"Text", "17.9", 17}),
    rowName<Created>);

// --- Texts

TEST_F(ZassetQueries, DecodeDirectoryAndFileNameAsUtf8)
{
    database.rows.assets = {photoRow(1, 1), photoRow(2, 2), videoRow(3, 3)};
    for (AssetRow &row : database.rows.assets) {
        row.directory = "PhotoData/\xc3\x89t\xc3\xa9";
        row.fileName = "\xe5\x86\x99\xe7\x9c\x9f \xf0\x9f\x93\xb7.JPG";
    }
    query();
    ASSERT_EQ(model->assets.keys(), (Keys{1, 2, 3}));
    for (const Camera_Data *asset : qAsConst(model->assets)) {
        EXPECT_EQ(asset->directory, QStringLiteral("PhotoData/\u00c9t\u00e9"));
        EXPECT_EQ(asset->fileName, QStringLiteral("\u5199\u771f \U0001f4f7.JPG"));
        EXPECT_EQ(asset->name, asset->fileName);
    }
}

TEST_F(ZassetQueries, DecodeABurstAsLatin1AlsoWhereItLooksLikeTheDirectory)
{
    database.rows.assets = {photoRow(1, 1), photoRow(2, 2)};
    for (AssetRow &row : database.rows.assets) {
        row.directory = "\xc3\xa9";
        row.avalancheUuid = "\xc3\xa9";
    }
    query();
    ASSERT_EQ(model->assets.keys(), (Keys{1, 2}));
    for (const Camera_Data *photo : qAsConst(model->assets)) {
        EXPECT_EQ(photo->directory, QStringLiteral("\u00e9"));
        EXPECT_EQ(photo->avalancheUUID, QStringLiteral("\u00c3\u00a9"));
    }
}

TEST_F(ZassetQueries, ShareADirectoryThatNeighboursHaveInCommon)
{
    database.rows.assets = {photoRow(1, 1), photoRow(2, 2), photoRow(3, 3)};
    database.rows.assets[2].directory = "DCIM/101APPLE";
    query();
    ASSERT_EQ(model->assets.keys(), (Keys{1, 2, 3}));
    const QString first = model->assets.value(1)->directory;
    EXPECT_EQ(first.constData(), model->assets.value(2)->directory.constData());
    EXPECT_EQ(model->assets.value(3)->directory, QStringLiteral("DCIM/101APPLE"));
}

TEST_F(ZassetQueries, ReadTextsThatAreStoredInUtf16)
{
    database.schema.utf16 = true;
    database.rows.assets = {photoRow(1)};
    database.rows.assets[0].fileName = "\xc3\xa4.JPG";
    query();
    EXPECT_EQ(only().fileName, QStringLiteral("\u00e4.JPG"));
}

// --- Columns that are not there

struct ZassetColumn {
    const char *name;
    bool Schema::*missing;
    void (*expect)(const Camera_Data &photo, const Camera_Data &video);
};

class ZassetWithoutColumn : public ZassetQueries, public testing::WithParamInterface<ZassetColumn>
{
};

TEST_P(ZassetWithoutColumn, IsReadWithNothingInItsPlace)
{
    database.schema.*(GetParam().missing) = false;
    model->hasKindSubtype = database.schema.kindSubtype;
    AssetRow video = fullRow(videoRow(8));
    database.rows.assets = {fullRow(photoRow(7)), video};
    database.rows.attributes = {{99, 7, {}, 123456}, {98, 8, {}, 123456}};
    query();
    ASSERT_EQ(model->assets.keys(), (Keys{7, 8}));
    EXPECT_EQ(model->assets.value(7)->fileName, QStringLiteral("IMG_0007.HEIC"));
    EXPECT_EQ(model->assets.value(7)->originalFileSize, 123456);
    GetParam().expect(*model->assets.value(7), *model->assets.value(8));
}

INSTANTIATE_TEST_SUITE_P(
    Missing, ZassetWithoutColumn,
    testing::Values(ZassetColumn{"KindSubtype", &Schema::kindSubtype,
                                 [](const Camera_Data &photo, const Camera_Data &) {
                                     EXPECT_EQ(photo.kindSubtype, 0);
                                     EXPECT_EQ(photo.duration, 8);
                                 }},
                    ZassetColumn{"TrashedDate", &Schema::trashedDate,
                                 [](const Camera_Data &photo, const Camera_Data &video) {
                                     EXPECT_EQ(photo.trashedDate, 0);
                                     EXPECT_EQ(video.trashedDate, 0);
                                     EXPECT_EQ(video.createDate, 410000000);
                                 }},
                    ZassetColumn{"AvalancheUuid", &Schema::avalancheUuid,
                                 [](const Camera_Data &photo, const Camera_Data &) {
                                     EXPECT_EQ(photo.avalancheUUID, QStringLiteral("0"));
                                     EXPECT_EQ(photo.sortToken, 2.25);
                                 }},
                    ZassetColumn{"SortToken", &Schema::sortToken,
                                 [](const Camera_Data &photo, const Camera_Data &) {
                                     EXPECT_EQ(photo.avalancheUUID, QStringLiteral("burst"));
                                     EXPECT_EQ(photo.sortToken, 0.0);
                                 }},
                    ZassetColumn{"Duration", &Schema::assetDuration,
                                 [](const Camera_Data &photo, const Camera_Data &video) {
                                     EXPECT_EQ(photo.duration, 0);
                                     EXPECT_EQ(video.duration, 0);
                                     EXPECT_EQ(video.createDate, 410000000);
                                 }},
                    ZassetColumn{"DateCreated", &Schema::dateCreated,
                                 [](const Camera_Data &photo, const Camera_Data &video) {
                                     EXPECT_EQ(photo.createDate, 0);
                                     EXPECT_EQ(video.createDate, 0);
                                     EXPECT_EQ(video.duration, 8);
                                 }}),
    rowName<ZassetColumn>);

TEST_F(ZassetQueries, LookForTheAlbumsTrashAmongTheAssetsToo)
{
    database.rows.albums = {albumRow(3)};
    database.rows.albums[0].trashedState = 1;
    {
        const SqliteOwner db = database.open();
        ASSERT_EQ(queryCameraAlbum(db.get(), model.get()), 1);
        EXPECT_EQ(model->albums.value(3)->trashedState, 1);
    }
    qDeleteAll(model->albums);
    model->albums.clear();
    database.schema.assetTrashedState = false;
    const SqliteOwner db = database.open();
    ASSERT_EQ(queryCameraAlbum(db.get(), model.get()), 1);
    EXPECT_EQ(model->albums.value(3)->trashedState, 0);
    expectSilence();
}

TEST_F(ZassetQueries, FailForAlbumsWhoseTrashOnlyTheAssetsKnow)
{
    database.schema.albumTrashedState = false;
    const SqliteOwner db = database.open();
    EXPECT_EQ(queryCameraAlbum(db.get(), model.get()), 0);
    expectLogged("Can not parse camera album");
}

// --- Failures

TEST_F(ZassetQueries, LogAPhotoStatementThatDoesNotPrepare)
{
    database.schema.attributes = false;
    const SqliteOwner db = database.open();
    EXPECT_EQ(queryCameraPhotos(db.get(), model.get()), 0);
    expectLogged("photo sql error #1: no such table: ZADDITIONALASSETATTRIBUTES");
}

TEST_F(ZassetQueries, LogAVideoStatementThatDoesNotPrepare)
{
    database.schema.attributes = false;
    const SqliteOwner db = database.open();
    EXPECT_EQ(queryCameraVideo(db.get(), model.get()), 0);
    expectLogged("Can not parse camera video");
}

TEST_F(ZassetQueries, LogAColumnThatOnlySeemsToBeThere)
{
    database.schema.assetDuration = false;
    database.schema.furtherAssetColumns = {"ZDURATIONOLD"};
    const SqliteOwner db = database.open();
    EXPECT_EQ(queryCameraPhotos(db.get(), model.get()), 0);
    expectLogged("photo sql error #1: no such column: A.ZDURATION");
}

// --- The statements, letter by letter

class Statements : public QueryFixture
{
protected:
    // What the asset and album queries run on this database, without what looks at the schema.
    std::vector<std::string> run()
    {
        const SqliteOwner db = database.open();
        std::vector<std::string> all;
        sqlite3_trace_v2(
            db.get(), SQLITE_TRACE_STMT,
            [](unsigned, void *list, void *, void *sql) {
                static_cast<std::vector<std::string> *>(list)->push_back(
                    static_cast<const char *>(sql));
                return 0;
            },
            &all);
        EXPECT_EQ(queryCameraAlbum(db.get(), model.get()), 1);
        EXPECT_EQ(queryCameraPhotos(db.get(), model.get()), 1);
        EXPECT_EQ(queryCameraVideo(db.get(), model.get()), 1);
        EXPECT_EQ(queryCameraExtendInfo(db.get(), model->assets), 1);
        std::vector<std::string> statements;
        for (const std::string &sql : all) {
            if (sql.find("sqlite_master") == std::string::npos)
                statements.push_back(sql);
        }
        return statements;
    }
};

const char *const albumStatement =
    "select Z_PK,ZTITLE,ZKIND,ZUUID,ZTRASHEDSTATE from ZGENERICALBUM where (ZKIND=1000 or (ZKIND < "
    "1600 and ZKIND > 1000) or ZKIND=2)";

TEST_F(Statements, OfZgenericassetAreTheseWithEveryColumn)
{
    model->hasKindSubtype = true;
    EXPECT_EQ(
        run(),
        (std::vector<std::string>{
            albumStatement,
            "select A.Z_PK,A.ZKIND,A.ZHEIGHT,A.ZWIDTH, A.ZTHUMBNAILINDEX,A.ZORIENTATION,"
            "A.ZDIRECTORY,A.ZFILENAME,A.ZMODIFICATIONDATE,A.ZUUID, T.ZORIGINALFILESIZE, "
            "A.ZKINDSUBTYPE, A.ZTRASHEDDATE, A.ZAVALANCHEUUID, A.ZSORTTOKEN from ZGENERICASSET as "
            "A left join ZADDITIONALASSETATTRIBUTES as T on A.Z_PK = T.Z_PK where (A.ZKIND = 0 and "
            "((A.ZSAVEDASSETTYPE = 3) or (A.ZSAVEDASSETTYPE = 256) or (A.ZSAVEDASSETTYPE = 1) or "
            "(A.ZSAVEDASSETTYPE = 5))) order by A.ZMODIFICATIONDATE ASC",
            "select A.Z_PK,ZKIND,A.ZHEIGHT,A.ZWIDTH,A.ZTHUMBNAILINDEX, A.ZORIENTATION,A.ZDIRECTORY,"
            "A.ZFILENAME,A.ZMODIFICATIONDATE,A.ZUUID, T.ZORIGINALFILESIZE, \"0\", A.ZTRASHEDDATE "
            "from ZGENERICASSET as A left join ZADDITIONALASSETATTRIBUTES as T on A.Z_PK = T.Z_PK "
            "where (A.ZKIND = 1 and (A.ZSAVEDASSETTYPE = 256 or A.ZSAVEDASSETTYPE = 3 or "
            "A.ZSAVEDASSETTYPE = 0))",
            "select Z_PK,ZASSET,ZDURATION,ZORIGINALFILESIZE from ZADDITIONALASSETATTRIBUTES"}));
}

TEST_F(Statements, OfZgenericassetAreTheseWithoutAnOptionalColumn)
{
    database.schema = Schema::early();
    const std::vector<std::string> statements = run();
    ASSERT_EQ(statements.size(), 4U);
    EXPECT_EQ(statements[0], "select Z_PK,ZTITLE,ZKIND,ZUUID from ZGENERICALBUM where (ZKIND=1000 "
                             "or (ZKIND < 1600 and ZKIND > 1000) or ZKIND=2)");
    EXPECT_NE(statements[1].find("T.ZORIGINALFILESIZE, \"0\", \"0\", \"0\", \"0\" from "
                                 "ZGENERICASSET as A"),
              std::string::npos);
    EXPECT_NE(statements[2].find("T.ZORIGINALFILESIZE, \"0\", \"0\" from ZGENERICASSET as A"),
              std::string::npos);
}

TEST_F(Statements, OfZassetNameItsTableConditionsAndJoin)
{
    database.schema = Schema::zasset();
    model->hasKindSubtype = true;
    const std::vector<std::string> statements = run();
    ASSERT_EQ(statements.size(), 4U);
    EXPECT_EQ(statements[0], albumStatement);
    const auto end = [](const std::string &sql) { return sql.substr(sql.find(" from ")); };
    EXPECT_EQ(end(statements[1]),
              " from ZASSET as A left join ZADDITIONALASSETATTRIBUTES as T on T.ZASSET = A.Z_PK "
              "where (A.ZKIND = 0 and A.ZSAVEDASSETTYPE is not 4) order by A.ZMODIFICATIONDATE "
              "ASC");
    EXPECT_EQ(end(statements[2]),
              " from ZASSET as A left join ZADDITIONALASSETATTRIBUTES as T on T.ZASSET = A.Z_PK "
              "where (A.ZKIND = 1 and A.ZSAVEDASSETTYPE is not 4)");
    EXPECT_EQ(statements[3].find("ZDURATION"), std::string::npos);
    for (const std::string &sql : statements)
        EXPECT_EQ(sql.find("ZGENERICASSET"), std::string::npos) << sql;
}

// --- Work

// In the instructions of SQLite, which no machine's speed changes.
qint64 workOf(int assets)
{
    PhotosDatabase database;
    database.schema = Schema::zasset();
    const std::string rows =
        "with recursive r(x) as (select 1 union all select x + 1 from r limit " +
        std::to_string(assets) + ") ";
    database.rows.sql = {
        "insert into ZASSET (Z_PK, ZKIND, ZSAVEDASSETTYPE, ZDIRECTORY, ZFILENAME, "
        "ZMODIFICATIONDATE, ZUUID) " +
            rows +
            "select x, x % 10 = 0, 3, 'DCIM/100APPLE', 'IMG_' || x || '.JPG', 7919 * x % 10007, "
            "zeroblob(16) from r",
        // In another order, and without an index on the asset.
        "insert into ZADDITIONALASSETATTRIBUTES (Z_PK, ZASSET, ZORIGINALFILESIZE) " + rows +
            "select x, " + std::to_string(assets + 1) + " - x, x from r"};
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("Photos.sqlite"));
    runSql(database.open().get(), "vacuum into '" + path.toStdString() + "'");
    sqlite_connection connection(path);
    const qint64 before = connection.m_stepsLeft;
    const OwnedModel model = emptyModel();
    const FakeHost host;
    EXPECT_EQ(queryCameraPhotos(connection.get(), model.get()), 1);
    EXPECT_EQ(queryCameraVideo(connection.get(), model.get()), 1);
    EXPECT_EQ(model->assets.size(), assets);
    for (const Camera_Data *asset : qAsConst(model->assets))
        EXPECT_EQ(asset->originalFileSize, assets + 1 - static_cast<qint64>(asset->pk));
    return before - connection.m_stepsLeft;
}

TEST(WorkOfZassetQueries, GrowsWithTheLibraryAlsoWithoutAnIndexOfTheAttributes)
{
    const qint64 few = workOf(5000);
    const qint64 many = workOf(50000);
    EXPECT_GT(few, 0);
    EXPECT_LT(many, 11 * few);
}

} // namespace
