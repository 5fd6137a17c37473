#include "cameradb/query_fixture.h"
#include "support/expected_leak.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

class PhotosQuery : public QueryFixture
{
protected:
    PhotosQuery() { model->hasKindSubtype = true; }

    gboolean query()
    {
        const SqliteOwner db = database.open();
        return queryCameraPhotos(db.get(), model.get());
    }
};

TEST_F(PhotosQuery, FilesARowOfEveryColumn)
{
    AssetRow row = photoRow(7, 420000000);
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
    database.rows.assets = {row};
    database.rows.attributes = {{7, 99, 1.0, 123456}};
    EXPECT_EQ(query(), 1);
    expectSilence();

    ASSERT_EQ(model->assets.keys(), Keys{7});
    const Camera_Data *photo = model->assets.value(7);
    EXPECT_EQ(photo->db, model.get());
    EXPECT_EQ(photo->pk, 7U);
    EXPECT_EQ(photo->kind, 0);
    EXPECT_EQ(photo->height, 3024);
    EXPECT_EQ(photo->width, 4032);
    EXPECT_EQ(photo->thumbnailIndex, 12);
    EXPECT_EQ(photo->orientation, 6);
    EXPECT_EQ(photo->directory, QStringLiteral("DCIM/101APPLE"));
    EXPECT_EQ(photo->fileName, QStringLiteral("IMG_0007.HEIC"));
    EXPECT_EQ(photo->name, QStringLiteral("IMG_0007.HEIC"));
    EXPECT_EQ(photo->modificationDate, 420000000);
    EXPECT_EQ(photo->uuid, uuidBlob(7));
    EXPECT_EQ(photo->originalFileSize, 123456);
    EXPECT_EQ(photo->kindSubtype, 2);
    EXPECT_EQ(photo->trashedDate, 430000000);
    EXPECT_EQ(photo->avalancheUUID, QStringLiteral("burst"));
    EXPECT_EQ(photo->sortToken, 2.25);
    EXPECT_EQ(photo->duration, 0);
    EXPECT_EQ(photo->createDate, 0);
}

TEST_F(PhotosQuery, TakesPhotosOfFourSavedTypes)
{
    int pk = 0;
    Keys admitted;
    for (const int kind : {0, 1, 2}) {
        for (const int savedType : {-1, 0, 1, 2, 3, 4, 5, 6, 255, 256, 257}) {
            AssetRow row = photoRow(++pk);
            row.kind = kind;
            row.savedAssetType = savedType;
            database.rows.assets.push_back(row);
            const bool listed =
                savedType == 3 || savedType == 256 || savedType == 1 || savedType == 5;
            if (kind == 0 && listed)
                admitted.append(key(pk));
        }
    }
    AssetRow without = photoRow(++pk);
    without.savedAssetType = nullptr;
    database.rows.assets.push_back(without);

    EXPECT_EQ(query(), 1);
    ASSERT_EQ(admitted.size(), 4);
    EXPECT_EQ(model->assets.keys(), admitted);
    EXPECT_TRUE(model->videos.isEmpty());
}

TEST_F(PhotosQuery, TakesTrashedPhotosToo)
{
    AssetRow row = photoRow(1);
    row.trashedState = 1;
    row.trashedDate = 5;
    database.rows.assets = {row};
    EXPECT_EQ(query(), 1);
    ASSERT_EQ(model->assets.keys(), Keys{1});
    EXPECT_EQ(model->assets.value(1)->trashedDate, 5);
}

TEST_F(PhotosQuery, ReadsAnEarlySchema)
{
    database.schema = Schema::early();
    database.rows.assets = {photoRow(1, 10)};
    model->hasKindSubtype = false;
    EXPECT_EQ(query(), 1);
    expectSilence();
    ASSERT_EQ(model->assets.keys(), Keys{1});
    const Camera_Data *photo = model->assets.value(1);
    EXPECT_EQ(photo->kindSubtype, 0);
    EXPECT_EQ(photo->trashedDate, 0);
    EXPECT_EQ(photo->avalancheUUID, QStringLiteral("0"));
    EXPECT_EQ(photo->sortToken, 0.0);
}

struct OptionalColumns {
    const char *name;
    bool Schema::*missing;
    qint32 kindSubtype;
    qint64 trashedDate;
    QString avalancheUuid;
    double sortToken;
};

class PhotosQueryWithoutColumn : public PhotosQuery,
                                 public testing::WithParamInterface<OptionalColumns>
{
};

TEST_P(PhotosQueryWithoutColumn, ReadsTheOtherThree)
{
    database.schema.*(GetParam().missing) = false;
    model->hasKindSubtype = database.schema.kindSubtype;
    AssetRow row = photoRow(1);
    row.kindSubtype = 1;
    row.trashedDate = 77;
    row.avalancheUuid = "burst";
    row.sortToken = 1.5;
    database.rows.assets = {row};
    EXPECT_EQ(query(), 1);
    expectSilence();

    ASSERT_EQ(model->assets.keys(), Keys{1});
    const Camera_Data *photo = model->assets.value(1);
    EXPECT_EQ(photo->kindSubtype, GetParam().kindSubtype);
    EXPECT_EQ(photo->trashedDate, GetParam().trashedDate);
    EXPECT_EQ(photo->avalancheUUID, GetParam().avalancheUuid);
    EXPECT_EQ(photo->sortToken, GetParam().sortToken);
}

// A literal in the burst's place is a text, so the token is read.
INSTANTIATE_TEST_SUITE_P(
    Missing, PhotosQueryWithoutColumn,
    testing::Values(
        OptionalColumns{"KindSubtype", &Schema::kindSubtype, 0, 77, QStringLiteral("burst"), 1.5},
        OptionalColumns{"TrashedDate", &Schema::trashedDate, 1, 0, QStringLiteral("burst"), 1.5},
        OptionalColumns{"AvalancheUuid", &Schema::avalancheUuid, 1, 77, QStringLiteral("0"), 1.5},
        OptionalColumns{"SortToken", &Schema::sortToken, 1, 77, QStringLiteral("burst"), 0.0}),
    rowName<OptionalColumns>);

TEST_F(PhotosQuery, ReadsNoKindSubtypeThatTheModelDoesNotKnow)
{
    AssetRow row = photoRow(1);
    row.kindSubtype = 1;
    database.rows.assets = {row};
    model->hasKindSubtype = false;
    EXPECT_EQ(query(), 1);
    ASSERT_EQ(model->assets.keys(), Keys{1});
    EXPECT_EQ(model->assets.value(1)->kindSubtype, 0);
    EXPECT_TRUE(model->panoramas.isEmpty());
}

TEST_F(PhotosQuery, GivesAPhotoOutsideABurstNoToken)
{
    AssetRow row = photoRow(1);
    row.avalancheUuid = nullptr;
    row.sortToken = 9.5;
    database.rows.assets = {row};
    EXPECT_EQ(query(), 1);
    ASSERT_EQ(model->assets.keys(), Keys{1});
    EXPECT_EQ(model->assets.value(1)->avalancheUUID, QStringLiteral("0"));
    EXPECT_EQ(model->assets.value(1)->sortToken, 0.0);
}

TEST_F(PhotosQuery, FilesPanoramasTwice)
{
    for (int pk = 1; pk <= 4; ++pk) {
        AssetRow row = photoRow(pk, pk);
        row.kindSubtype = pk - 1;
        database.rows.assets.push_back(row);
    }
    EXPECT_EQ(query(), 1);
    EXPECT_EQ(model->assets.keys(), (Keys{1, 2, 3, 4}));
    ASSERT_EQ(model->panoramas.keys(), Keys{2});
    EXPECT_EQ(model->panoramas.value(2), model->assets.value(2));
}

TEST_F(PhotosQuery, SkipsRowsWithoutDirectoryFileNameOrUuid)
{
    AssetRow noDirectory = photoRow(1, 5);
    noDirectory.directory = nullptr;
    AssetRow noName = photoRow(2, 5);
    noName.fileName = nullptr;
    AssetRow noUuid = photoRow(300, 5);
    noUuid.uuid = nullptr;
    database.rows.assets = {noDirectory, noName, noUuid, photoRow(4, 5)};
    EXPECT_EQ(query(), 1);
    expectSilence();
    EXPECT_EQ(model->assets.keys(), Keys{4});
    EXPECT_EQ(model->assets.value(4)->modificationDate, 5) << "a skipped row takes no date";
    EXPECT_EQ(model->maxAssetPk, 4) << "nor counts its key";
}

TEST_F(PhotosQuery, JoinsTheFileSizeByTheAttributesOwnKey)
{
    database.rows.assets = {photoRow(1, 1), photoRow(2, 2), photoRow(3, 3)};
    database.rows.attributes = {{1, 3, 0, 100}, {3, 1, 0, nullptr}};
    EXPECT_EQ(query(), 1);
    ASSERT_EQ(model->assets.keys(), (Keys{1, 2, 3}));
    EXPECT_EQ(model->assets.value(1)->originalFileSize, 100);
    EXPECT_EQ(model->assets.value(2)->originalFileSize, 0);
    EXPECT_EQ(model->assets.value(3)->originalFileSize, 0);
}

TEST_F(PhotosQuery, SharesATextThatNeighboursHaveInCommon)
{
    database.rows.assets = {photoRow(1, 1), photoRow(2, 2), photoRow(3, 3)};
    database.rows.assets[2].directory = "DCIM/101APPLE";
    EXPECT_EQ(query(), 1);
    ASSERT_EQ(model->assets.keys(), (Keys{1, 2, 3}));
    const QString first = model->assets.value(1)->directory;
    EXPECT_EQ(first.constData(), model->assets.value(2)->directory.constData());
    EXPECT_EQ(first, QStringLiteral("DCIM/100APPLE"));
    EXPECT_EQ(model->assets.value(3)->directory, QStringLiteral("DCIM/101APPLE"));
}

TEST_F(PhotosQuery, ReadsTextsThatNeighboursHaveInCommonAsLatin1)
{
    database.rows.assets = {photoRow(1, 1), photoRow(2, 2)};
    for (AssetRow &row : database.rows.assets) {
        row.directory = "\xc3\xa9";
        row.avalancheUuid = "\xe9\x9b\xbb";
    }
    EXPECT_EQ(query(), 1);
    ASSERT_EQ(model->assets.keys(), (Keys{1, 2}));
    for (const Camera_Data *photo : qAsConst(model->assets)) {
        EXPECT_EQ(photo->directory, QStringLiteral("\u00c3\u00a9"));
        EXPECT_EQ(photo->avalancheUUID, QStringLiteral("\u00e9\u009b\u00bb"));
    }
}

TEST_F(PhotosQuery, KeepsManyDifferentTextsApart)
{
    const int count = 9000;
    for (int pk = 1; pk <= count; ++pk) {
        AssetRow row = photoRow(pk, pk);
        row.directory = "DCIM/" + std::to_string(pk * 7919 % count) + "APPLE";
        row.avalancheUuid = std::to_string(pk % 5000);
        database.rows.assets.push_back(row);
    }
    EXPECT_EQ(query(), 1);
    ASSERT_EQ(model->assets.size(), count);
    for (const Camera_Data *photo : qAsConst(model->assets)) {
        const int pk = static_cast<int>(photo->pk);
        ASSERT_EQ(photo->directory, QStringLiteral("DCIM/%1APPLE").arg(pk * 7919 % count));
        ASSERT_EQ(photo->avalancheUUID, QString::number(pk % 5000));
    }
}

struct BrokenPhotos {
    const char *name;
    void (*breakIt)(PhotosDatabase &database);
    const char *logged;
};

class PhotosQueryFailure : public PhotosQuery, public testing::WithParamInterface<BrokenPhotos>
{
};

TEST_P(PhotosQueryFailure, IsLoggedWithSqlitesWords)
{
    database.rows.assets = {photoRow(1)};
    GetParam().breakIt(database);
    Camera_Data *earlier = new Camera_Data();
    model->assets.insert(5, earlier);
    EXPECT_EQ(query(), 0);
    expectLogged(GetParam().logged);
    EXPECT_EQ(model->assets.keys(), Keys{5}) << "what was filed before stays";
    EXPECT_EQ(model->maxAssetPk, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Reasons, PhotosQueryFailure,
    testing::Values(
        BrokenPhotos{"NoAssetTable",
                     [](PhotosDatabase &database) {
                         database.schema.assets = false;
                         database.rows.assets.clear();
                     },
                     "photo sql error #1: no such table: ZGENERICASSET"},
        BrokenPhotos{"NoAttributesTable",
                     [](PhotosDatabase &database) { database.schema.attributes = false; },
                     "photo sql error #1: no such table: ZADDITIONALASSETATTRIBUTES"},
        BrokenPhotos{"ModelExpectsAKindSubtype",
                     [](PhotosDatabase &database) { database.schema.kindSubtype = false; },
                     "photo sql error #1: no such column: A.ZKINDSUBTYPE"},
        BrokenPhotos{"OnlyALongerTrashedDate",
                     [](PhotosDatabase &database) {
                         database.schema.trashedDate = false;
                         database.schema.furtherAssetColumns = {"ZTRASHEDDATEOLD"};
                     },
                     "photo sql error #1: no such column: A.ZTRASHEDDATE"},
        BrokenPhotos{"OnlyACommentOnTheBurst",
                     [](PhotosDatabase &database) {
                         database.schema.avalancheUuid = false;
                         database.schema.furtherAssetColumns = {"ZX /* ZAVALANCHEUUID */"};
                     },
                     "photo sql error #1: no such column: A.ZAVALANCHEUUID"},
        BrokenPhotos{"OnlyALongerSortToken",
                     [](PhotosDatabase &database) {
                         database.schema.sortToken = false;
                         database.schema.furtherAssetColumns = {"ZSORTTOKENOLD"};
                     },
                     "photo sql error #1: no such column: A.ZSORTTOKEN"}),
    rowName<BrokenPhotos>);

TEST_F(PhotosQuery, TakesAnErrorInTheMiddleForTheEnd)
{
    database.rows.assets = {photoRow(1, 1), photoRow(2, 2), photoRow(3, 3)};
    const SqliteOwner db = database.open();
    failAt(db.get(), "ZGENERICASSET", 3);
    model->hasKindSubtype = false;
    EXPECT_EQ(queryCameraPhotos(db.get(), model.get()), 1);
    EXPECT_FALSE(model->assets.contains(3));
    expectSilence();
}

TEST_F(PhotosQuery, LogsAProbeThatFailsAndThenTheStatement)
{
    const SqliteOwner db = openUnreadable();
    EXPECT_EQ(queryCameraPhotos(db.get(), model.get()), 0);
    const LogLine probe = failure("get assets table name sql error #26: file is not a database");
    EXPECT_EQ(host.log(),
              (std::vector<LogLine>{probe, probe, probe,
                                    failure("photo sql error #26: file is not a database")}));
}

TEST_F(PhotosQuery, RaisesTheHighestKeyOnly)
{
    database.rows.assets = {photoRow(9, 1), photoRow(40, 2), photoRow(12, 3)};
    EXPECT_EQ(query(), 1);
    EXPECT_EQ(model->maxAssetPk, 40);
}

TEST_F(PhotosQuery, KeepsAHigherKeyMetBefore)
{
    database.rows.assets = {photoRow(9, 1), photoRow(40, 2)};
    model->maxAssetPk = 100;
    EXPECT_EQ(query(), 1);
    EXPECT_EQ(model->maxAssetPk, 100);
}

TEST_F(PhotosQuery, ComparesKeysAsUnsignedNumbers)
{
    database.rows.assets = {photoRow(9, 1), photoRow(-5, 2), photoRow(40, 3), photoRow(-7, 4)};
    EXPECT_EQ(query(), 1);
    EXPECT_EQ(model->maxAssetPk, -5);
    EXPECT_EQ(model->assets.keys(), (Keys{9, 40, key(-7), key(-5)}));
}

TEST_F(PhotosQuery, LetsTheLastRowOfAKeyWin)
{
    database.schema.uniqueKeys = false;
    database.rows.assets = {photoRow(5, 30), photoRow(5, 10), photoRow(5, 20)};
    database.rows.assets[0].fileName = "LAST.JPG";
    {
        // Nothing points to the earlier records any more.
        const ExpectedLeak replaced;
        EXPECT_EQ(query(), 1);
    }
    ASSERT_EQ(model->assets.keys(), Keys{5});
    EXPECT_EQ(model->assets.value(5)->fileName, QStringLiteral("LAST.JPG"));
    EXPECT_EQ(model->assets.value(5)->modificationDate, 30);
}

TEST_F(PhotosQuery, LeavesAReplacedPanoramaAmongThePanoramas)
{
    database.schema.uniqueKeys = false;
    database.rows.assets = {photoRow(5, 10), photoRow(5, 20)};
    database.rows.assets[0].kindSubtype = 1;
    EXPECT_EQ(query(), 1);
    ASSERT_EQ(model->assets.keys(), Keys{5});
    EXPECT_EQ(model->assets.value(5)->modificationDate, 20);
    ASSERT_EQ(model->panoramas.keys(), Keys{5});
    const std::unique_ptr<Camera_Data> replaced(model->panoramas.take(5));
    EXPECT_EQ(replaced->modificationDate, 10);
}

} // namespace
