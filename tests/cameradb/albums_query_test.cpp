#include "cameradb/query_fixture.h"
#include "support/expected_leak.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

class AlbumsQuery : public QueryFixture
{
protected:
    gboolean query()
    {
        const SqliteOwner db = database.open();
        return queryCameraAlbum(db.get(), model.get());
    }
};

TEST_F(AlbumsQuery, FilesARowOfEveryColumn)
{
    AlbumRow row = albumRow(7, 1550);
    row.title = "\xc3\x89t\xc3\xa9";
    row.uuid = uuidBlob(1, 2);
    row.trashedState = 1;
    database.rows.albums = {row};
    EXPECT_EQ(query(), 1);
    expectSilence();
    ASSERT_EQ(model->albums.keys(), Keys{7});
    const Camera_Album *album = model->albums.value(7);
    EXPECT_EQ(album->pk, 7U);
    EXPECT_EQ(album->kind, 1550);
    EXPECT_EQ(album->title, QStringLiteral("\u00c9t\u00e9"));
    EXPECT_EQ(album->uuid, uuidBlob(1, 2));
    EXPECT_EQ(album->trashedState, 1) << "trashed albums are filed too";
    EXPECT_TRUE(album->assetKeys.isEmpty());
    EXPECT_EQ(model->maxAlbumPk, 7);
    EXPECT_EQ(model->maxAssetPk, 0);
}

TEST_F(AlbumsQuery, TakesKinds2And1000And1001To1599)
{
    int pk = 0;
    for (const int kind : {-2, 0, 1, 2, 3, 999, 1000, 1001, 1505, 1550, 1599, 1600, 1601, 3571})
        database.rows.albums.push_back(albumRow(++pk, kind));
    AlbumRow without = albumRow(++pk);
    without.kind = nullptr;
    database.rows.albums.push_back(without);
    EXPECT_EQ(query(), 1);
    QList<int> kinds;
    for (const Camera_Album *album : qAsConst(model->albums))
        kinds.append(album->kind);
    EXPECT_EQ(kinds, (QList<int>{2, 1000, 1001, 1505, 1550, 1599}));
}

TEST_F(AlbumsQuery, ReadsAnEarlySchema)
{
    database.schema = Schema::early();
    database.rows.albums = {albumRow(1)};
    EXPECT_EQ(query(), 1);
    expectSilence();
    ASSERT_EQ(model->albums.keys(), Keys{1});
    EXPECT_EQ(model->albums.value(1)->trashedState, 0);
}

TEST_F(AlbumsQuery, ReadsNoTrashedStateThatTheAssetsDoNotHave)
{
    database.schema.assetTrashedState = false;
    database.rows.albums = {albumRow(1)};
    database.rows.albums[0].trashedState = 1;
    EXPECT_EQ(query(), 1);
    ASSERT_EQ(model->albums.keys(), Keys{1});
    EXPECT_EQ(model->albums.value(1)->trashedState, 0);
}

TEST_F(AlbumsQuery, FailsWhenOnlyTheAssetsHaveATrashedState)
{
    database.schema.albumTrashedState = false;
    database.rows.albums = {albumRow(1)};
    model->albums.insert(5, new Camera_Album());
    EXPECT_EQ(query(), 0);
    expectLogged("Can not parse camera album");
    EXPECT_EQ(model->albums.keys(), Keys{5});
}

TEST_F(AlbumsQuery, FailsWithoutAnAlbumTable)
{
    database.schema.albums = false;
    EXPECT_EQ(query(), 0);
    expectLogged("Can not parse camera album");
}

TEST_F(AlbumsQuery, KeepsANullTitleNull)
{
    database.rows.albums = {albumRow(1)};
    database.rows.albums[0].title = nullptr;
    EXPECT_EQ(query(), 1);
    ASSERT_EQ(model->albums.keys(), Keys{1});
    EXPECT_TRUE(model->albums.value(1)->title.isNull());
}

TEST_F(AlbumsQuery, LetsTheLastRowOfAKeyWin)
{
    database.schema.uniqueKeys = false;
    database.rows.albums = {albumRow(5), albumRow(5)};
    database.rows.albums[1].title = "Last";
    {
        // Nothing points to the first record any more.
        const ExpectedLeak replaced;
        EXPECT_EQ(query(), 1);
    }
    ASSERT_EQ(model->albums.keys(), Keys{5});
    EXPECT_EQ(model->albums.value(5)->title, QStringLiteral("Last"));
}

TEST_F(AlbumsQuery, LeavesAReplacedRecordAlive)
{
    const std::unique_ptr<Camera_Album> earlier(new Camera_Album());
    earlier->title = QStringLiteral("Earlier");
    model->albums.insert(5, earlier.get());
    database.rows.albums = {albumRow(5)};
    EXPECT_EQ(query(), 1);
    ASSERT_EQ(model->albums.keys(), Keys{5});
    EXPECT_NE(model->albums.value(5), earlier.get());
    EXPECT_EQ(earlier->title, QStringLiteral("Earlier"));
}

TEST_F(AlbumsQuery, RaisesTheHighestKeyOnly)
{
    database.rows.albums = {albumRow(9), albumRow(40), albumRow(12), albumRow(90, 1600)};
    EXPECT_EQ(query(), 1);
    EXPECT_EQ(model->maxAlbumPk, 40);
}

TEST_F(AlbumsQuery, KeepsAHigherKeyMetBefore)
{
    database.rows.albums = {albumRow(9), albumRow(40)};
    model->maxAlbumPk = 100;
    EXPECT_EQ(query(), 1);
    EXPECT_EQ(model->maxAlbumPk, 100);
}

TEST_F(AlbumsQuery, ComparesKeysAsUnsignedNumbers)
{
    database.rows.albums = {albumRow(-5), albumRow(9), albumRow(-7)};
    EXPECT_EQ(query(), 1);
    EXPECT_EQ(model->maxAlbumPk, -5);
    EXPECT_EQ(model->albums.keys(), (Keys{9, key(-7), key(-5)}));
}

TEST_F(AlbumsQuery, TakesAnErrorInTheMiddleForTheEnd)
{
    database.rows.albums = {albumRow(1), albumRow(2), albumRow(3)};
    const SqliteOwner db = database.open();
    runSql(db.get(), "DROP TABLE ZGENERICASSET");
    failAt(db.get(), "ZGENERICALBUM", 3);
    EXPECT_EQ(queryCameraAlbum(db.get(), model.get()), 1);
    EXPECT_EQ(model->albums.keys(), (Keys{1, 2}));
    expectSilence();
}

} // namespace
