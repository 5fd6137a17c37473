#include "ios/album_fixture.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace {

const quint64 AboveThirtyTwoBits = 0x100000000;
const quint64 Key = 41;

const LogLine NoAlbum = failure("Can not get album");

using AlbumView = AlbumFixture;
using AlbumViewThreads = AlbumFixture;

// --- Before a parse.

class UnparsedAlbumView : public testing::Test
{
protected:
    FakeHost host;
    FakeIPod device;
    photo_manager manager{&device};
};

TEST_F(UnparsedAlbumView, ListsNothingAndFindsNothing)
{
    EXPECT_EQ(manager.albumCnt(), 0);
    EXPECT_EQ(manager.albumIDs(), QList<quint64>());
    for (const quint64 id : {quint64(0), quint64(1), synthetic::CameraRoll, synthetic::Video,
                             synthetic::Panorama, synthetic::Library}) {
        host.clearRecords();
        albumItem album = oldAlbum();
        EXPECT_FALSE(manager.getAlbum(id, &album)) << id;
        EXPECT_EQ(host.log(), std::vector<LogLine>{NoAlbum}) << id;
        expectAlbum(album, oldAlbum());
    }
}

// --- What is refused at once.

TEST_F(AlbumView, RefusesANullRecord)
{
    addListedAlbum(Key, {1});
    addSyntheticAlbums({2});
    const LibraryState before = state();
    for (const quint64 id : {Key, synthetic::Library, quint64(12345)}) {
        host.clearRecords();
        EXPECT_FALSE(manager.getAlbum(id, nullptr)) << id;
        EXPECT_EQ(host.log(), Log{NoAlbum}) << id;
    }
    EXPECT_TRUE(state() == before);
}

TEST_F(AlbumView, RefusesWhatIsNotListedWhateverTheMapsHold)
{
    addHiddenAlbum(Key, {1});
    manager.m_mapAlbum2Photos[synthetic::Library] = {1};
    addListedAlbum(7);
    const LibraryState before = state();
    for (const quint64 id : {Key, synthetic::Library, quint64(12345), AboveThirtyTwoBits + 7}) {
        host.clearRecords();
        albumItem album = oldAlbum();
        EXPECT_FALSE(manager.getAlbum(id, &album)) << id;
        EXPECT_EQ(host.log(), Log{NoAlbum}) << id;
        expectAlbum(album, oldAlbum());
    }
    EXPECT_TRUE(state() == before);
}

TEST_F(AlbumView, RefusesAListedKeyThatNeitherMapHoldsAndEntersIt)
{
    manager.m_listAlbumIDs = {Key};
    const LibraryState before = state();
    albumItem album = oldAlbum();
    EXPECT_FALSE(manager.getAlbum(Key, &album));
    EXPECT_EQ(host.log(), Log{NoAlbum});
    expectAlbum(album, oldAlbum());
    EXPECT_TRUE(state() == before);
}

TEST_F(AlbumView, RefusesDeviceAlbumsOnceThereIsNoModel)
{
    addListedAlbum(Key, {1});
    dropModel();
    albumItem album = oldAlbum();
    EXPECT_FALSE(manager.getAlbum(Key, &album));
    EXPECT_EQ(host.log(), Log{NoAlbum});
    expectAlbum(album, oldAlbum());
}

TEST_F(AlbumView, ShowsSyntheticAlbumsAlsoWithoutAModel)
{
    addSyntheticAlbums({5, 6});
    dropModel();
    EXPECT_EQ(fetched(synthetic::Library).photoIDs, (Ids{5, 6}));
    EXPECT_EQ(host.log(), Log());
}

// --- Synthetic albums.

struct SyntheticRow {
    const char *name;
    quint64 id;
    const char *title;
    qint32 type;
};

class SyntheticAlbumView : public AlbumFixture, public testing::WithParamInterface<SyntheticRow>
{
protected:
    albumItem expected(const Ids &photos) const
    {
        albumItem album;
        album.id = GetParam().id;
        if (album.id == synthetic::Library)
            album.uuid = QByteArray::fromHex("00000000000000000000000000000064");
        album.name = QString::fromLatin1(GetParam().title);
        album.type = GetParam().type;
        album.photoIDs = photos;
        return album;
    }
};

TEST_P(SyntheticAlbumView, FillsEveryFieldAndReplacesThePhotos)
{
    addSyntheticAlbum(GetParam().id, {3, 9, 3});
    for (const albumItem &start : {albumItem(), oldAlbum()}) {
        albumItem album = start;
        ASSERT_TRUE(manager.getAlbum(GetParam().id, &album));
        expectAlbum(album, expected({3, 9, 3}));
    }
    EXPECT_EQ(host.trace(), Lines());
}

TEST_P(SyntheticAlbumView, KeepsPhotosThatDoNotExist)
{
    addAsset(3);
    addSyntheticAlbum(GetParam().id, {3, 9, 3});
    const LibraryState before = state();
    fetched(GetParam().id);
    EXPECT_EQ(fetched(GetParam().id).photoIDs, (Ids{3, 9, 3}));
    EXPECT_TRUE(state() == before);
}

TEST_P(SyntheticAlbumView, EmptiesThePhotosForAnEmptyAlbum)
{
    addSyntheticAlbum(GetParam().id, Ids());
    albumItem album = oldAlbum();
    ASSERT_TRUE(manager.getAlbum(GetParam().id, &album));
    expectAlbum(album, expected(Ids()));
}

TEST_P(SyntheticAlbumView, GoesBeforeADeviceAlbumOfTheSameKey)
{
    addHiddenAlbum(GetParam().id, {1, 2});
    addSyntheticAlbum(GetParam().id, {3});
    const LibraryState before = state();
    albumItem album = oldAlbum();
    ASSERT_TRUE(manager.getAlbum(GetParam().id, &album));
    expectAlbum(album, expected({3}));
    EXPECT_TRUE(state() == before);
}

TEST_P(SyntheticAlbumView, GivesAListOfTheCallersOwn)
{
    addSyntheticAlbum(GetParam().id, {3, 9});
    albumItem album = fetched(GetParam().id);
    album.photoIDs.append(12);
    album.photoIDs[0] = 13;
    EXPECT_EQ(fetched(GetParam().id).photoIDs, (Ids{3, 9}));
}

INSTANTIATE_TEST_SUITE_P(Albums, SyntheticAlbumView,
                         testing::Values(SyntheticRow{"CameraRoll", 1000, "Camera Roll", 1},
                                         SyntheticRow{"Video", 16777213, "Video", 3},
                                         SyntheticRow{"Panorama", 16777214, "Panorama", 2},
                                         SyntheticRow{"Library", 16777215, "Photo Library", 5}),
                         rowName<SyntheticRow>);

TEST_F(AlbumView, GivesThePhotoLibraryTheUuidOfTheManagers)
{
    addSyntheticAlbums({});
    const QByteArray uuid = photo_manager::m_photoLibUUID;
    photo_manager::m_photoLibUUID = "another";
    const albumItem album = fetched(synthetic::Library);
    photo_manager::m_photoLibUUID = uuid;
    EXPECT_EQ(album.uuid, QByteArray("another"));
}

TEST_F(AlbumView, KeepsTheCallersNameTypeAndUuidForOtherSyntheticKeys)
{
    for (const quint64 id :
         {quint64(0), quint64(5), quint64(999), quint64(1001), quint64(16777212), quint64(16777216),
          AboveThirtyTwoBits + synthetic::CameraRoll, AboveThirtyTwoBits + synthetic::Video,
          AboveThirtyTwoBits + synthetic::Library}) {
        addSyntheticAlbum(id, {3, 9});
        albumItem album = oldAlbum();
        ASSERT_TRUE(manager.getAlbum(id, &album)) << id;
        albumItem expected = oldAlbum();
        expected.id = id;
        expected.photoIDs = {3, 9};
        expectAlbum(album, expected);
    }
    EXPECT_EQ(host.log(), Log());
}

// --- Device albums of the kinds that are shown.

struct KindRow {
    const char *name;
    qint32 kind;
    qint32 type;
    const char *defaultName;
};

class AlbumKindView : public AlbumFixture, public testing::WithParamInterface<KindRow>
{
};

TEST_P(AlbumKindView, FillsEveryFieldAndAppendsThePhotos)
{
    addAssets({5, 6});
    addListedAlbum(Key, {6, 5, 6}, GetParam().kind, QStringLiteral("Holiday"));
    albumItem album = oldAlbum();
    ASSERT_TRUE(manager.getAlbum(Key, &album));
    albumItem expected;
    expected.id = Key;
    expected.uuid = "album-41";
    expected.name = QStringLiteral("Holiday");
    expected.type = GetParam().type;
    expected.photoIDs = {777, 778, 6, 5, 6};
    expectAlbum(album, expected);
    EXPECT_EQ(host.trace(), Lines());
}

TEST_P(AlbumKindView, NamesAnAlbumWithoutATitleAfterItsKind)
{
    for (const QString &title : {QString(), QStringLiteral("")}) {
        manager.m_listAlbumIDs.clear();
        qDeleteAll(model().albums);
        model().albums.clear();
        addListedAlbum(Key, {}, GetParam().kind, title);
        albumItem album = oldAlbum();
        ASSERT_TRUE(manager.getAlbum(Key, &album));
        EXPECT_EQ(album.name, QString::fromLatin1(GetParam().defaultName));
        EXPECT_EQ(album.type, GetParam().type);
        EXPECT_EQ(album.uuid, QByteArray("album-41"));
        EXPECT_EQ(album.id, Key);
    }
    EXPECT_EQ(host.log(), Log());
}

INSTANTIATE_TEST_SUITE_P(Kinds, AlbumKindView,
                         testing::Values(KindRow{"OnDevice", 2, 4, "Album in Device"},
                                         KindRow{"CameraRoll", 1000, 1, "Camera Roll"},
                                         KindRow{"Custom", 1550, 6, "Cus Album"}),
                         rowName<KindRow>);

TEST_F(AlbumView, ReadsNamesAndTypesFromTheTableOfKinds)
{
    addListedAlbum(Key, {}, 7, QString());
    const auto table = photo_manager::m_mapAlbumKind2Type;
    photo_manager::m_mapAlbumKind2Type[7] = {70, QStringLiteral("seven"), 1.0};
    const albumItem album = fetched(Key);
    photo_manager::m_mapAlbumKind2Type = table;
    EXPECT_EQ(album.name, QStringLiteral("seven"));
    EXPECT_EQ(album.type, 70);
}

TEST_F(AlbumView, TakesABlankForATitle)
{
    addListedAlbum(Key, {}, 2, QStringLiteral(" "));
    EXPECT_EQ(fetched(Key).name, QStringLiteral(" "));
}

TEST_F(AlbumView, GivesTheRequestedKeyAsId)
{
    addListedAlbum(Key)->pk = 5;
    EXPECT_EQ(fetched(Key).id, Key);
}

TEST_F(AlbumView, ShowsAlbumsWhoseKeyIsNegativeInTheDatabase)
{
    const quint64 key = 0xffffffff80000000;
    addAsset(0xffffffffffffffff);
    addListedAlbum(key, {0xffffffffffffffff, 0xffffffff});
    const albumItem album = fetched(key);
    EXPECT_EQ(album.id, key);
    EXPECT_EQ(album.photoIDs, Ids{0xffffffffffffffff});
}

TEST_F(AlbumView, PassesAMissingUuidOn)
{
    addListedAlbum(Key)->uuid = QByteArray();
    albumItem album = oldAlbum();
    ASSERT_TRUE(manager.getAlbum(Key, &album));
    EXPECT_TRUE(album.uuid.isEmpty());
}

TEST_F(AlbumView, ShowsTrashedAlbumsAndPhotosThatAreListed)
{
    addAsset(5)->trashedDate = 12;
    addListedAlbum(Key, {5})->trashedState = 1;
    EXPECT_EQ(fetched(Key).photoIDs, Ids{5});
}

TEST_F(AlbumView, ShowsAnAlbumThatIsListedTwiceAndCountsItTwice)
{
    addListedAlbum(Key);
    manager.m_listAlbumIDs.append(Key);
    EXPECT_EQ(manager.albumCnt(), 2);
    EXPECT_EQ(manager.albumIDs(), (Ids{Key, Key}));
    EXPECT_EQ(fetched(Key).id, Key);
}

TEST_F(AlbumView, GivesALibraryTheIdsInTheListsOwnOrderAsACopy)
{
    manager.m_listAlbumIDs = {synthetic::Library, 5, synthetic::Video};
    Ids ids = manager.albumIDs();
    EXPECT_EQ(ids, (Ids{synthetic::Library, 5, synthetic::Video}));
    ids.append(6);
    EXPECT_EQ(manager.albumCnt(), 3);
}

// --- Photos that are gone.

TEST_F(AlbumView, DropsPhotosThatAreGoneFromTheRecordForGood)
{
    addAssets({5, 12});
    const Camera_Album *record = addListedAlbum(Key, {5, 9, 5, 12});
    albumItem album = oldAlbum();
    ASSERT_TRUE(manager.getAlbum(Key, &album));
    EXPECT_EQ(album.photoIDs, (Ids{777, 778, 5, 5, 12}));
    EXPECT_EQ(record->assetKeys, (Ids{5, 5, 12}));

    EXPECT_EQ(fetched(Key).photoIDs, (Ids{5, 5, 12}));
    EXPECT_EQ(record->assetKeys, (Ids{5, 5, 12}));
    EXPECT_EQ(host.trace(), Lines());
}

struct StaleRow {
    const char *name;
    QList<quint64> members;
    QList<quint64> kept;
};

class StalePhotos : public AlbumFixture, public testing::WithParamInterface<StaleRow>
{
};

TEST_P(StalePhotos, LeaveTheRecordAndTheOthersTheirOrder)
{
    addAssets({1, 2, 3});
    const Camera_Album *record = addListedAlbum(Key, GetParam().members);
    const Camera_Album *other = addListedAlbum(Key + 1, GetParam().members);
    EXPECT_EQ(fetched(Key).photoIDs, GetParam().kept);
    EXPECT_EQ(record->assetKeys, GetParam().kept);
    EXPECT_EQ(other->assetKeys, GetParam().members);
    EXPECT_EQ(host.log(), Log());
}

TEST_P(StalePhotos, LeaveAnAlbumOfALargeLibraryToo)
{
    addAssets({1, 2, 3});
    for (quint64 key = 1000; key < 1200; ++key)
        addAsset(key);
    const Camera_Album *record = addListedAlbum(Key, GetParam().members);
    EXPECT_EQ(fetched(Key).photoIDs, GetParam().kept);
    EXPECT_EQ(record->assetKeys, GetParam().kept);
}

INSTANTIATE_TEST_SUITE_P(
    Lists, StalePhotos,
    testing::Values(StaleRow{"None", {3, 1, 3, 2}, {3, 1, 3, 2}}, StaleRow{"NoMembers", {}, {}},
                    StaleRow{"All", {9, 8, 9}, {}},
                    StaleRow{"EveryRepeat", {9, 3, 9, 9, 1, 9}, {3, 1}},
                    StaleRow{"Several", {9, 3, 8, 2, 9, 2, 8, 7}, {3, 2, 2}},
                    StaleRow{"AmongNeighbours", {1, 2, 3, 4, 2, 3, 0, 1, 2}, {1, 2, 3, 2, 3, 1, 2}},
                    StaleRow{"TheKeyZero", {0, 1, 0}, {1}},
                    StaleRow{"AKeyThatIsOneInThirtyTwoBits", {AboveThirtyTwoBits + 1, 1}, {1}}),
    rowName<StaleRow>);

TEST_F(AlbumView, FindsMembersBesideTheLastPhotoOfALargeLibrary)
{
    for (quint64 key = 1; key <= 100; ++key)
        addAsset(key);
    addListedAlbum(Key, {100, 101, 100, 1, 99, 100, 200});
    EXPECT_EQ(fetched(Key).photoIDs, (Ids{100, 100, 1, 99, 100}));
}

TEST_F(AlbumView, LeavesAListThatTheCallerGotBeforeAlone)
{
    addAssets({5, 9});
    addListedAlbum(Key, {5, 9});
    const albumItem before = fetched(Key);
    delete model().assets.take(9);
    EXPECT_EQ(fetched(Key).photoIDs, Ids{5});
    EXPECT_EQ(before.photoIDs, (Ids{5, 9}));
}

TEST_F(AlbumView, ChangesNothingButTheStaleKeys)
{
    addAssets({5});
    addSyntheticAlbums({5, 9});
    Camera_Album *record = addListedAlbum(Key, {5, 9});
    const Ids members = record->assetKeys;
    const LibraryState before = state();
    fetched(Key);
    record->assetKeys = members;
    EXPECT_TRUE(state() == before);
}

TEST_F(AlbumView, TakesPhotosOfTheVideosAndPanoramasAloneForGone)
{
    const Camera_Album *record = addListedAlbum(Key, {9});
    Camera_Data video = Camera_Data();
    model().videos[9] = &video;
    model().panoramas[9] = &video;
    EXPECT_EQ(fetched(Key).photoIDs, Ids());
    EXPECT_EQ(record->assetKeys, Ids());
}

// --- Device albums of other kinds.

class UnknownKind : public AlbumFixture, public testing::WithParamInterface<qint32>
{
};

TEST_P(UnknownKind, FailsWithTwoLinesForAnAlbumWithATitle)
{
    addAssets({5});
    addListedAlbum(Key, {5, 9}, GetParam(), QStringLiteral("Faces"));
    const LibraryState before = state();
    albumItem album = oldAlbum();
    EXPECT_FALSE(manager.getAlbum(Key, &album));
    EXPECT_EQ(host.log(), (Log{failure("Got a unknown album type. title: Faces, kind: " +
                                       QByteArray::number(GetParam())),
                               NoAlbum}));
    albumItem expected = oldAlbum();
    expected.id = Key;
    expected.uuid = "album-41";
    expected.name = QStringLiteral("Faces");
    expectAlbum(album, expected);
    EXPECT_TRUE(state() == before);
}

TEST_P(UnknownKind, FailsWithOneLineForAnAlbumWithoutATitle)
{
    addAssets({5});
    addListedAlbum(Key, {5, 9}, GetParam(), QString());
    const quint64 empty = Key + 1;
    addListedAlbum(empty, {5, 9}, GetParam(), QStringLiteral(""));
    const LibraryState before = state();
    for (const quint64 key : {Key, empty}) {
        host.clearRecords();
        albumItem album = oldAlbum();
        EXPECT_FALSE(manager.getAlbum(key, &album));
        EXPECT_EQ(host.log(), Log{failure("Meet a album, kind: " + QByteArray::number(GetParam()) +
                                          ", title is null")});
        albumItem expected = oldAlbum();
        expected.id = key;
        expected.uuid = "album-" + QByteArray::number(key);
        expectAlbum(album, expected);
    }
    EXPECT_TRUE(state() == before);
}

INSTANTIATE_TEST_SUITE_P(Kinds, UnknownKind,
                         testing::Values(5, 0, 1, 3, -2, 1001, 1549, 1551, 1599,
                                         std::numeric_limits<qint32>::min(),
                                         std::numeric_limits<qint32>::max()));

TEST_F(AlbumView, LogsTitlesInTheLocalEncodingAndAsTheyAre)
{
    const QString title = QString::fromUtf8("100%s Gr\u00fc\u00dfe %n");
    ASSERT_NE(title.toLocal8Bit(), title.toUtf8());
    addListedAlbum(Key, {}, 5, title);
    albumItem album;
    EXPECT_FALSE(manager.getAlbum(Key, &album));
    EXPECT_EQ(host.log(),
              (Log{failure("Got a unknown album type. title: 100%s Gr\xfc\xdf\x65 %n, kind: 5"),
                   NoAlbum}));
    EXPECT_EQ(album.name, title);
}

// --- Keys that lie in the record being filled.

TEST_F(AlbumView, ReadsItsKeyFromTheRecordThatItFills)
{
    addAssets({5});
    addListedAlbum(Key, {5});
    addSyntheticAlbums({6});
    for (const quint64 id : {Key, synthetic::Library}) {
        albumItem album;
        album.id = id;
        EXPECT_TRUE(manager.getAlbum(album.id, &album));
        EXPECT_EQ(album.id, id);
    }
}

TEST_F(AlbumView, ReadsItsKeyFromTheListThatItReplacesOrGrows)
{
    addAssets({5});
    addListedAlbum(Key, {5, 9, 5, 5, 5, 5, 5, 5, 5, 5, 5, 5});
    addSyntheticAlbums({6, 7});
    for (const quint64 id : {Key, synthetic::Library, synthetic::Video}) {
        const albumItem expected = fetched(id);
        albumItem album;
        album.photoIDs = {id};
        const quint64 &key = album.photoIDs.first();
        EXPECT_TRUE(manager.getAlbum(key, &album));
        EXPECT_EQ(album.id, id);
        EXPECT_EQ(album.name, expected.name);
        EXPECT_EQ(album.type, expected.type);
        EXPECT_EQ(album.photoIDs, id == Key ? Ids{id} + expected.photoIDs : expected.photoIDs);
    }
}

// --- Threads.

TEST_F(AlbumViewThreads, HoldTheRecordLockWhileAFailureIsLogged)
{
    addListedAlbum(1, {}, 5);
    addListedAlbum(2, {}, 5, QString());
    manager.m_listAlbumIDs.append(3);
    for (const quint64 id : {1, 2, 3, 4}) {
        host.clearRecords();
        std::vector<bool> freeThen;
        const auto look = [&] { freeThen.push_back(isFreeElsewhere(manager.m_recMutex)); };
        host.onCall("Log", 1, look);
        host.onCall("Log", 2, look);
        albumItem album;
        EXPECT_FALSE(manager.getAlbum(id, &album));
        EXPECT_EQ(freeThen, std::vector<bool>(id == 1 ? 2 : 1, false)) << id;
        EXPECT_TRUE(isFreeElsewhere(manager.m_recMutex)) << id;
    }
}

TEST_F(AlbumViewThreads, ReleaseTheRecordLockAfterASuccess)
{
    addListedAlbum(Key, {9});
    addSyntheticAlbums({6});
    for (const quint64 id : {Key, synthetic::Library}) {
        fetched(id);
        EXPECT_TRUE(isFreeElsewhere(manager.m_recMutex)) << id;
    }
}

TEST_F(AlbumViewThreads, MayHoldTheRecordLockAlready)
{
    addListedAlbum(Key);
    manager.m_recMutex.lock();
    fetched(Key);
    EXPECT_FALSE(isFreeElsewhere(manager.m_recMutex));
    manager.m_recMutex.unlock();
}

TEST_F(AlbumViewThreads, TakeNoLockToCountAndList)
{
    manager.m_listAlbumIDs = {Key};
    manager.m_recMutex.lock();
    std::thread([this] {
        EXPECT_EQ(manager.albumCnt(), 1);
        EXPECT_EQ(manager.albumIDs(), Ids{Key});
    }).join();
    manager.m_recMutex.unlock();
}

// --- After a real parse.

class ParsedAlbumView : public ParseFixture
{
protected:
    albumItem fetched(quint64 key)
    {
        albumItem album;
        EXPECT_TRUE(manager->getAlbum(key, &album)) << key;
        return album;
    }
};

TEST_F(ParsedAlbumView, ShowsEveryListedAlbumOfTheDevice)
{
    addPhotos({3, 4, 7});
    database.rows.assets.push_back(videoRow(8));
    addAlbum(10, 2, {3, 4});
    addAlbum(11, 1550, {7, 5, 7});
    addAlbum(12, 1000, {3});
    ASSERT_TRUE(parse());
    host.clearRecords();
    EXPECT_EQ(fetched(10).photoIDs, (Ids{3, 4}));
    EXPECT_EQ(fetched(10).type, 4);
    EXPECT_EQ(fetched(11).photoIDs, (Ids{7, 7}));
    EXPECT_EQ(fetched(11).type, 6);
    EXPECT_EQ(fetched(12).photoIDs, Ids{3});
    EXPECT_EQ(fetched(12).type, 1);
    EXPECT_EQ(fetched(synthetic::Video).photoIDs, Ids{8});
    albumItem library = oldAlbum();
    EXPECT_TRUE(manager->getAlbum(synthetic::Library, &library));
    EXPECT_EQ(library.photoIDs, listOf(synthetic::Library));
    EXPECT_EQ(host.trace(), Lines());
}

TEST_F(ParsedAlbumView, SurvivesASecondParseThatFailed)
{
    addPhotos({3, 4});
    addAlbum(10, 2, {3, 9, 4});
    ASSERT_TRUE(parse());
    const Ids listed = manager->albumIDs();
    const Ids library = listOf(synthetic::Library);
    host.removeDeviceFile("/PhotoData/Photos.sqlite");
    ASSERT_FALSE(manager->parseLib());
    ASSERT_EQ(manager->m_pCameraDB, nullptr);
    ASSERT_EQ(manager->albumIDs(), listed);
    host.clearRecords();

    albumItem album = oldAlbum();
    EXPECT_FALSE(manager->getAlbum(10, &album));
    EXPECT_EQ(host.log(), Log{NoAlbum});
    expectAlbum(album, oldAlbum());
    EXPECT_EQ(fetched(synthetic::Library).photoIDs, library);
}

} // namespace
