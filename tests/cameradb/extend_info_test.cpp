#include "cameradb/query_fixture.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

namespace {

const qint64 wholeRange = qint64(1) << 32;

class ExtendInfoQuery : public QueryFixture
{
protected:
    // A record that the attributes may name.
    Camera_Data *addAsset(qint32 pk)
    {
        Camera_Data *asset = new Camera_Data();
        asset->pk = key(pk);
        asset->duration = -1;
        asset->originalFileSize = -1;
        model->assets.insert(key(pk), asset);
        return asset;
    }

    gboolean query()
    {
        const SqliteOwner db = database.open();
        return queryCameraExtendInfo(db.get(), model->assets);
    }
};

struct Duration {
    const char *name;
    SqlValue stored;
    qint32 seconds;
};

class ExtendInfoDuration : public ExtendInfoQuery, public testing::WithParamInterface<Duration>
{
};

TEST_P(ExtendInfoDuration, IsRoundedToWholeSeconds)
{
    const Camera_Data *asset = addAsset(1);
    database.rows.attributes = {{10, 1, GetParam().stored, 5}};
    EXPECT_EQ(query(), 1);
    EXPECT_EQ(asset->duration, GetParam().seconds);
}

// Half a second is added and the rest cut off, so a negative one rounds up as well.
INSTANTIATE_TEST_SUITE_P(
    Durations, ExtendInfoDuration,
    testing::Values(Duration{"Half", 2.5, 3}, Duration{"LessThanHalf", 2.49, 2},
                    Duration{"Zero", 0, 0}, Duration{"HalfASecond", 0.5, 1},
                    Duration{"AlmostHalfASecond", 0.49, 0}, Duration{"Whole", 7, 7},
                    Duration{"Null", nullptr, 0}, Duration{"Text", "12.6", 13},
                    Duration{"NoNumber", "long", 0}, Duration{"Negative", -1.2, 0},
                    Duration{"NegativeHalf", -2.5, -2}, Duration{"NegativeMore", -2.6, -2},
                    Duration{"Day", 86400.0, 86400}, Duration{"Highest", 2147483646.4, 2147483646}),
    rowName<Duration>);

TEST_F(ExtendInfoQuery, SurvivesADurationBeyondAllNumbers)
{
    addAsset(1);
    addAsset(2);
    database.rows.attributes = {{1, 1, 1e300, 5}, {2, 2, -1e300, 6}};
    EXPECT_EQ(query(), 1);
    EXPECT_EQ(model->assets.value(1)->originalFileSize, 5);
    EXPECT_EQ(model->assets.value(2)->originalFileSize, 6);
}

TEST_F(ExtendInfoQuery, FindsTheAssetByItsOwnColumn)
{
    const Camera_Data *first = addAsset(1);
    const Camera_Data *second = addAsset(2);
    database.rows.attributes = {{2, 1, 10.0, 100}, {1, 2, 20.0, 200}};
    EXPECT_EQ(query(), 1);
    expectSilence();
    EXPECT_EQ(first->duration, 10);
    EXPECT_EQ(first->originalFileSize, 100);
    EXPECT_EQ(second->duration, 20);
    EXPECT_EQ(second->originalFileSize, 200);
}

TEST_F(ExtendInfoQuery, SkipsRowsOfUnknownAssets)
{
    const Camera_Data *asset = addAsset(1);
    database.rows.attributes = {{1, 5, 10.0, 100}, {2, nullptr, 11.0, 101}};
    EXPECT_EQ(query(), 1);
    expectSilence();
    EXPECT_EQ(asset->duration, -1);
    EXPECT_EQ(asset->originalFileSize, -1);
}

TEST_F(ExtendInfoQuery, ServesAssetsInAnyOrderAndBetweenUnknownOnes)
{
    for (const int pk : {2, 3, 5, 8, 9})
        addAsset(pk);
    int row = 0;
    for (const int asset : {9, 2, 3, 4, 5, 1, 8, 10, 9, 7, 3})
        database.rows.attributes.push_back({++row, asset, double(row), 1000 + row});
    EXPECT_EQ(query(), 1);
    const QMap<quint64, int> lastRows = {{2, 2}, {3, 11}, {5, 5}, {8, 7}, {9, 9}};
    for (const Camera_Data *asset : qAsConst(model->assets)) {
        EXPECT_EQ(asset->duration, lastRows.value(asset->pk)) << asset->pk;
        EXPECT_EQ(asset->originalFileSize, 1000 + lastRows.value(asset->pk)) << asset->pk;
    }
}

TEST_F(ExtendInfoQuery, ReadsTheAssetsKeyAs32BitsSignExtended)
{
    const Camera_Data *negative = addAsset(-5);
    const Camera_Data *cut = addAsset(6);
    database.rows.attributes = {{1, -5, 10.0, 100}, {2, wholeRange + 6, 11.0, 101}};
    EXPECT_EQ(query(), 1);
    EXPECT_EQ(negative->duration, 10);
    EXPECT_EQ(cut->duration, 11);
}

TEST_F(ExtendInfoQuery, ReplacesTheFileSizeAlsoByNothing)
{
    const Camera_Data *large = addAsset(1);
    const Camera_Data *unknown = addAsset(2);
    database.rows.attributes = {{1, 1, 0, 5000000000}, {2, 2, 0, nullptr}};
    EXPECT_EQ(query(), 1);
    EXPECT_EQ(large->originalFileSize, 5000000000);
    EXPECT_EQ(unknown->originalFileSize, 0);
}

TEST_F(ExtendInfoQuery, FailsSilentlyWithoutADuration)
{
    const Camera_Data *asset = addAsset(1);
    database.schema.attributesDuration = false;
    database.rows.attributes = {{1, 1, 10.0, 100}};
    EXPECT_EQ(query(), 0);
    expectSilence();
    EXPECT_EQ(asset->duration, -1);
    EXPECT_EQ(asset->originalFileSize, -1);
}

TEST_F(ExtendInfoQuery, FailsSilentlyWithoutItsTable)
{
    database.schema.attributes = false;
    EXPECT_EQ(query(), 0);
    expectSilence();
}

TEST_F(ExtendInfoQuery, SucceedsWithoutAssets)
{
    database.rows.attributes = {{1, 1, 10.0, 100}};
    EXPECT_EQ(query(), 1);
    expectSilence();
}

TEST_F(ExtendInfoQuery, TakesAnErrorInTheMiddleForTheEnd)
{
    const Camera_Data *before = addAsset(1);
    const Camera_Data *after = addAsset(2);
    database.rows.attributes = {{1, 1, 10.0, 100}, {2, 2, 20.0, 200}};
    const SqliteOwner db = database.open();
    failAt(db.get(), "ZADDITIONALASSETATTRIBUTES", 2);
    EXPECT_EQ(queryCameraExtendInfo(db.get(), model->assets), 1);
    expectSilence();
    EXPECT_EQ(before->duration, 10);
    EXPECT_EQ(after->duration, -1);
}

} // namespace
