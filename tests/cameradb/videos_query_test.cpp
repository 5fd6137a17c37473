#include "cameradb/query_fixture.h"

#include <gtest/gtest.h>

namespace {

class VideosQuery : public QueryFixture
{
protected:
    gboolean query()
    {
        const SqliteOwner db = database.open();
        return queryCameraVideo(db.get(), model.get());
    }
};

TEST_F(VideosQuery, FilesARowOfEveryColumn)
{
    AssetRow row = videoRow(7, 420000000);
    row.height = 1080;
    row.width = 1920;
    row.thumbnailIndex = 12;
    row.orientation = 3;
    row.directory = "DCIM/101APPLE";
    row.fileName = "IMG_0007.MOV";
    row.trashedDate = 5;
    database.rows.assets = {row};
    database.rows.attributes = {{7, 99, 1.0, 123456}};
    EXPECT_EQ(query(), 1);
    expectSilence();

    ASSERT_EQ(model->assets.keys(), Keys{7});
    const Camera_Data *video = model->assets.value(7);
    EXPECT_EQ(model->videos.keys(), Keys{7});
    EXPECT_EQ(model->videos.value(7), video);
    EXPECT_TRUE(model->panoramas.isEmpty());
    EXPECT_EQ(video->db, model.get());
    EXPECT_EQ(video->pk, 7U);
    EXPECT_EQ(video->kind, 1);
    EXPECT_EQ(video->height, 1080);
    EXPECT_EQ(video->width, 1920);
    EXPECT_EQ(video->thumbnailIndex, 12);
    EXPECT_EQ(video->orientation, 3);
    EXPECT_EQ(video->directory, QStringLiteral("DCIM/101APPLE"));
    EXPECT_EQ(video->fileName, QStringLiteral("IMG_0007.MOV"));
    EXPECT_EQ(video->name, QStringLiteral("IMG_0007.MOV"));
    EXPECT_EQ(video->modificationDate, 420000000);
    EXPECT_EQ(video->uuid, uuidBlob(7));
    EXPECT_EQ(video->originalFileSize, 123456);
    EXPECT_EQ(video->trashedDate, 5);
    EXPECT_EQ(model->maxAssetPk, 7);
}

TEST_F(VideosQuery, TakesVideosOfThreeSavedTypes)
{
    int pk = 0;
    Keys admitted;
    for (const int kind : {0, 1, 2}) {
        for (const int savedType : {-1, 0, 1, 2, 3, 4, 5, 6, 255, 256, 257}) {
            AssetRow row = videoRow(++pk);
            row.kind = kind;
            row.savedAssetType = savedType;
            database.rows.assets.push_back(row);
            if (kind == 1 && (savedType == 256 || savedType == 3 || savedType == 0))
                admitted.append(key(pk));
        }
    }
    EXPECT_EQ(query(), 1);
    ASSERT_EQ(admitted.size(), 3);
    EXPECT_EQ(model->assets.keys(), admitted);
    EXPECT_EQ(model->videos.keys(), admitted);
}

TEST_F(VideosQuery, ReadsNeitherSubtypeNorBurst)
{
    AssetRow row = videoRow(1);
    row.kindSubtype = 1;
    row.avalancheUuid = "burst";
    row.sortToken = 2.5;
    database.rows.assets = {row};
    model->hasKindSubtype = true;
    EXPECT_EQ(query(), 1);
    ASSERT_EQ(model->assets.keys(), Keys{1});
    EXPECT_EQ(model->assets.value(1)->kindSubtype, 0);
    EXPECT_EQ(model->assets.value(1)->avalancheUUID, QStringLiteral("0"));
    EXPECT_EQ(model->assets.value(1)->sortToken, 0.0);
    EXPECT_TRUE(model->panoramas.isEmpty());
}

TEST_F(VideosQuery, ReadsAnEarlySchema)
{
    database.schema = Schema::early();
    database.rows.assets = {videoRow(1, 10)};
    EXPECT_EQ(query(), 1);
    expectSilence();
    ASSERT_EQ(model->videos.keys(), Keys{1});
    EXPECT_EQ(model->videos.value(1)->trashedDate, 0);
}

TEST_F(VideosQuery, LeavesEqualDatesEqual)
{
    database.rows.assets = {videoRow(1, 50), videoRow(2, 50), videoRow(3, 50)};
    EXPECT_EQ(query(), 1);
    ASSERT_EQ(model->videos.keys(), (Keys{1, 2, 3}));
    for (const Camera_Data *video : qAsConst(model->videos))
        EXPECT_EQ(video->modificationDate, 50);
}

TEST_F(VideosQuery, NeverReplacesAPhotoOfItsKey)
{
    Camera_Data *photo = new Camera_Data();
    model->assets.insert(2, photo);
    database.rows.assets = {videoRow(1), videoRow(2), videoRow(3)};
    EXPECT_EQ(query(), 1);
    expectSilence();
    EXPECT_EQ(model->assets.keys(), (Keys{1, 2, 3}));
    EXPECT_EQ(model->assets.value(2), photo);
    EXPECT_EQ(model->videos.keys(), (Keys{1, 3}));
}

TEST_F(VideosQuery, CountsNoKeyOfADroppedVideo)
{
    model->assets.insert(9, new Camera_Data());
    database.rows.assets = {videoRow(1), videoRow(9)};
    EXPECT_EQ(query(), 1);
    EXPECT_EQ(model->maxAssetPk, 1);
}

TEST_F(VideosQuery, KeepsTheFirstVideoOfAKey)
{
    database.schema.uniqueKeys = false;
    database.rows.assets = {videoRow(5), videoRow(5)};
    database.rows.assets[0].fileName = "FIRST.MOV";
    EXPECT_EQ(query(), 1);
    ASSERT_EQ(model->videos.keys(), Keys{5});
    EXPECT_EQ(model->videos.value(5)->fileName, QStringLiteral("FIRST.MOV"));
    EXPECT_EQ(model->assets.value(5), model->videos.value(5));
}

TEST_F(VideosQuery, SkipsRowsWithoutDirectoryFileNameOrUuid)
{
    database.rows.assets = {videoRow(1), videoRow(2), videoRow(3), videoRow(4)};
    database.rows.assets[0].directory = nullptr;
    database.rows.assets[1].fileName = nullptr;
    database.rows.assets[3].uuid = nullptr;
    EXPECT_EQ(query(), 1);
    expectSilence();
    EXPECT_EQ(model->assets.keys(), Keys{3});
    EXPECT_EQ(model->maxAssetPk, 3);
}

TEST_F(VideosQuery, ComparesKeysAsUnsignedNumbers)
{
    database.rows.assets = {videoRow(-5), videoRow(9), videoRow(-7)};
    EXPECT_EQ(query(), 1);
    EXPECT_EQ(model->maxAssetPk, -5);
    EXPECT_EQ(model->videos.keys(), (Keys{9, key(-7), key(-5)}));
}

TEST_F(VideosQuery, LogsAStatementThatDoesNotPrepare)
{
    database.schema.attributes = false;
    database.rows.assets = {videoRow(1)};
    model->assets.insert(5, new Camera_Data());
    EXPECT_EQ(query(), 0);
    expectLogged("Can not parse camera video");
    EXPECT_EQ(model->assets.keys(), Keys{5});
    EXPECT_TRUE(model->videos.isEmpty());
}

TEST_F(VideosQuery, TakesAnErrorInTheMiddleForTheEnd)
{
    database.rows.assets = {videoRow(1), videoRow(2), videoRow(3)};
    const SqliteOwner db = database.open();
    failAt(db.get(), "ZGENERICASSET", 3);
    EXPECT_EQ(queryCameraVideo(db.get(), model.get()), 1);
    EXPECT_EQ(model->videos.keys(), (Keys{1, 2}));
    expectSilence();
}

} // namespace
