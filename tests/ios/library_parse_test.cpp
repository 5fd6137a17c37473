#include "cameradb/camera_db_parse.h"
#include "ios/parse_fixture.h"

#include <QFile>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

namespace {

class LibraryParse : public ParseFixture
{
};

using LibraryMerge = LibraryParse;

// --- The steps around the reading of the database.

TEST_F(LibraryParse, FailsSilentlyWithoutADevice)
{
    photo_manager none(nullptr);
    none.m_semParse.acquire(1); // a parse that touched it would wait for ever
    EXPECT_FALSE(none.parseLib());
    EXPECT_EQ(host.trace(), Lines());
    EXPECT_EQ(none.m_semParse.available(), 0);
    none.m_semParse.release(1);
}

TEST_F(LibraryParse, ForgetsAnEarlierCancel)
{
    manager->cancleParse();
    ASSERT_TRUE(manager->m_bCancel);
    EXPECT_TRUE(parse());
    EXPECT_FALSE(manager->m_bCancel);
}

TEST_F(LibraryParse, SucceedsOnAnEmptyDatabase)
{
    EXPECT_TRUE(parse());
    EXPECT_EQ(manager->photoCnt(), 0);
    EXPECT_EQ(manager->albumIDs(), (Ids{synthetic::CameraRoll, synthetic::Library,
                                        synthetic::Panorama, synthetic::Video}));
}

TEST_F(LibraryParse, LogsTheReadingBeforeTheMerge)
{
    addPhotos({1, 2});
    addAlbum(10, 2, {1});
    ASSERT_TRUE(parse());
    EXPECT_EQ(
        host.log(),
        (Log{notice("load ATHCameraDB"), failure("Can not open file: /PhotoData/Photos.sqlite-wal"),
             failure("Can not open file: /PhotoData/Photos.sqlite-shm"),
             notice("Parser_Ath_camera_DB"), notice("Got asset table name: Z_26ASSETS"),
             notice("Parser_Ath_camera_DB success"), notice("Parser_Ath_camera_DB extend info"),
             notice("Parser_Ath_camera_DB extend info end"), notice("load ATHCameraDB end"),
             added(1), looseCameraPhoto(2)}));
}

TEST_F(LibraryParse, AsksOnceMoreAfterTheReadingWhetherAccessIsBlocked)
{
    ASSERT_TRUE(parse());
    EXPECT_EQ(host.callCount("isAccessBlocked"), 4); // three copies before
    EXPECT_EQ(host.callCount("isIOSDevice"), 0);
    EXPECT_EQ(host.callCount("driveName"), 0);
}

TEST_F(LibraryParse, FailsWithoutADatabase)
{
    EXPECT_FALSE(manager->parseLib());
    EXPECT_EQ(host.log(), (Log{notice("load ATHCameraDB"),
                               failure("Can not open file: /PhotoData/Photos.sqlite"),
                               failure("Can not load lib"), failure("Can not parse photo lib")}));
    EXPECT_EQ(manager->m_pCameraDB, nullptr);
    EXPECT_EQ(manager->m_pVDev, nullptr);
    EXPECT_EQ(manager->albumCnt(), 0);
    EXPECT_TRUE(manager->m_mapUsedUUID.isEmpty());
    EXPECT_TRUE(manager->m_mapAlbum2Photos.isEmpty());
    EXPECT_EQ(manager->m_semParse.available(), 1);
    EXPECT_EQ(host.callCount("isAccessBlocked"), 1);
}

TEST_F(LibraryParse, FailsOnADatabaseThatDoesNotParse)
{
    database.schema.albums = false;
    EXPECT_FALSE(parse());
    EXPECT_EQ(host.log().back(), failure("Can not parse photo lib"));
    EXPECT_EQ(manager->m_pCameraDB, nullptr);
    EXPECT_EQ(manager->m_semParse.available(), 1);
}

TEST_F(LibraryParse, FailsWhenAccessIsBlockedByThenAndKeepsTheModel)
{
    addPhotos({1, 2, 3});
    host.onCall("isAccessBlocked", 4, [this] { device.accessBlocked = true; });
    EXPECT_FALSE(parse());
    EXPECT_EQ(mergeLog(), Log{failure("Can not parse photo lib")});
    EXPECT_NE(manager->m_pCameraDB, nullptr);
    EXPECT_EQ(manager->photoIDs(), (Ids{1, 2, 3}));
    EXPECT_EQ(manager->albumIDs(), Ids());
    EXPECT_TRUE(manager->m_mapUsedUUID.isEmpty());
    EXPECT_TRUE(manager->m_mapAlbum2Photos.isEmpty());
    EXPECT_EQ(manager->m_pVDev, nullptr);
    EXPECT_EQ(host.calls().back(), "isAccessBlocked() -> true");
    EXPECT_EQ(manager->m_semParse.available(), 1);
}

TEST_F(LibraryParse, ReadsAnEarlierCopyWhileAccessIsBlockedButFails)
{
    addPhotos({1});
    ASSERT_TRUE(parse());
    device.accessBlocked = true;
    host.clearRecords();
    photo_manager blocked(&device);
    EXPECT_FALSE(blocked.parseLib());
    EXPECT_EQ(blocked.photoIDs(), Ids{1});
    EXPECT_EQ(host.log().back(), failure("Can not parse photo lib"));
    EXPECT_EQ(host.fileCalls(), Lines());
}

TEST_F(LibraryParse, LosesAnEarlierModelWhenALaterParseFails)
{
    addPhotos({1});
    ASSERT_TRUE(parse());
    const Ids albums = manager->albumIDs();
    host.removeDeviceFile("/PhotoData/Photos.sqlite");
    EXPECT_FALSE(manager->parseLib());
    EXPECT_EQ(manager->m_pCameraDB, nullptr);
    EXPECT_EQ(manager->photoCnt(), 0);
    EXPECT_EQ(manager->albumIDs(), albums);
    EXPECT_EQ(manager->m_semParse.available(), 1);
}

TEST_F(LibraryParse, KeepsTheDeviceOpenUntilTheManagerIsDestroyed)
{
    host.setDeviceFile("/PhotoData/Photos.sqlite", database.bytes());
    host.setDeviceFile("/PhotoData/Photos.sqlite-wal", "");
    host.setDeviceFile("/PhotoData/Photos.sqlite-shm", "");
    {
        photo_manager parsed(&device);
        ASSERT_TRUE(parsed.parseLib());
        ASSERT_NE(parsed.m_pVDev, nullptr);
        EXPECT_EQ(host.openHandles().size(), 1U);
    }
    EXPECT_EQ(host.openHandles(), Lines());
}

// --- Uuids in use.

TEST_F(LibraryMerge, ReservesTheUuidsOfAlbumsAssetsAndThePhotoLibrary)
{
    addPhotos({1, 2});
    AssetRow video = videoRow(3);
    video.uuid = QByteArray("video\0uuid", 10);
    database.rows.assets.push_back(video);
    AlbumRow album = albumRow(10, 1001);
    album.uuid = QByteArray("album");
    album.trashedState = 1;
    database.rows.albums.push_back(album);
    ASSERT_TRUE(parse());

    QMap<QByteArray, bool> expected;
    expected["photo-1"] = true;
    expected["photo-2"] = true;
    expected[QByteArray("video\0uuid", 10)] = true;
    expected["album"] = true;
    expected[QByteArray(15, '\0') + '\x64'] = true;
    EXPECT_EQ(manager->m_mapUsedUUID, expected);
}

TEST_F(LibraryMerge, AddsToTheUuidsOfAnEarlierParse)
{
    addPhotos({1});
    ASSERT_TRUE(parse());
    database.rows.assets.clear();
    addPhotos({2});
    ASSERT_TRUE(parse());
    EXPECT_EQ(manager->m_mapUsedUUID.keys(),
              (QList<QByteArray>{QByteArray(15, '\0') + '\x64', "photo-1", "photo-2"}));
}

// --- The list of albums.

TEST_F(LibraryMerge, ListsACameraRollOfItsOwnWhenTheDeviceHasNone)
{
    addAlbum(30, 1550, {});
    addAlbum(20, 2, {});
    addAlbum(25, 1552, {});
    addAlbum(10, 1550, {});
    ASSERT_TRUE(parse());
    EXPECT_EQ(manager->albumIDs(), (Ids{synthetic::CameraRoll, synthetic::Library,
                                        synthetic::Panorama, synthetic::Video, 10, 20, 30}));
    EXPECT_EQ(manager->m_mapAlbum2Photos.keys(), (Ids{synthetic::CameraRoll, synthetic::Video,
                                                      synthetic::Panorama, synthetic::Library}));
    EXPECT_EQ(listOf(synthetic::CameraRoll), Ids());
}

TEST_F(LibraryMerge, ListsTheDevicesCameraRollAmongItsAlbums)
{
    addAlbum(30, 1550, {});
    addAlbum(20, 1000, {});
    addAlbum(10, 2, {});
    ASSERT_TRUE(parse());
    EXPECT_EQ(manager->albumIDs(),
              (Ids{synthetic::Library, synthetic::Panorama, synthetic::Video, 10, 20, 30}));
    EXPECT_EQ(manager->m_mapAlbum2Photos.keys(),
              (Ids{synthetic::Video, synthetic::Panorama, synthetic::Library}));
}

TEST_F(LibraryMerge, ListsEveryCameraRollOfTheDevice)
{
    addAlbum(20, 1000, {});
    addAlbum(10, 1000, {});
    ASSERT_TRUE(parse());
    EXPECT_EQ(manager->albumIDs(),
              (Ids{synthetic::Library, synthetic::Panorama, synthetic::Video, 10, 20}));
}

TEST_F(LibraryMerge, ListsNoAlbumInTheTrash)
{
    addAlbum(10, 2, {}, 1);
    addAlbum(11, 1550, {}, 1);
    addAlbum(12, 1550, {}, 2);
    addAlbum(13, 2, {}, -1);
    ASSERT_TRUE(parse());
    EXPECT_EQ(manager->albumIDs().mid(4), (Ids{12, 13}));
}

TEST_F(LibraryMerge, MakesNoCameraRollOfItsOwnForOneInTheTrash)
{
    addAlbum(10, 1000, {}, 1);
    ASSERT_TRUE(parse());
    EXPECT_EQ(manager->albumIDs(),
              (Ids{synthetic::Library, synthetic::Panorama, synthetic::Video}));
    EXPECT_FALSE(manager->m_mapAlbum2Photos.contains(synthetic::CameraRoll));
}

TEST_F(LibraryMerge, ListsTheSyntheticAlbumsAgainOnASecondParse)
{
    addAlbum(10, 2, {});
    ASSERT_TRUE(parse());
    ASSERT_TRUE(parse());
    const Ids once = {synthetic::CameraRoll, synthetic::Library, synthetic::Panorama,
                      synthetic::Video, 10};
    EXPECT_EQ(manager->albumIDs(), once + once);
    EXPECT_EQ(manager->albumCnt(), 10);
}

// --- Panoramas and videos.

TEST_F(LibraryMerge, ListsPanoramasAndVideosInKeyOrder)
{
    for (const int key : {9, 3, 6}) {
        AssetRow panorama = photoRow(key);
        panorama.kindSubtype = 1;
        database.rows.assets.push_back(panorama);
        database.rows.assets.push_back(videoRow(key + 1));
    }
    addPhotos({-5});
    ASSERT_TRUE(parse());
    EXPECT_EQ(listOf(synthetic::Panorama), (Ids{3, 6, 9}));
    EXPECT_EQ(listOf(synthetic::Video), (Ids{4, 7, 10}));
}

TEST_F(LibraryMerge, ReplacesTheListsOfAnEarlierParse)
{
    AssetRow panorama = photoRow(1);
    panorama.kindSubtype = 1;
    database.rows.assets = {panorama, videoRow(2)};
    addPhotos({3}, "Elsewhere");
    ASSERT_TRUE(parse());
    ASSERT_EQ(listOf(synthetic::Library), Ids{3});
    database.rows.assets.clear();
    ASSERT_TRUE(parse());
    EXPECT_EQ(listOf(synthetic::Panorama), Ids());
    EXPECT_EQ(listOf(synthetic::Video), Ids());
    EXPECT_EQ(listOf(synthetic::Library), Ids());
    EXPECT_EQ(listOf(synthetic::CameraRoll), Ids());
}

// --- Members of albums.

TEST_F(LibraryMerge, AddsTheMembersOfAlbumsToTheLibraryOnceInOrder)
{
    addPhotos({1, 2, 3, 4, 5});
    addAlbum(20, 1550, {3, 1, 3});
    addAlbum(10, 2, {5, 1});
    addAlbum(15, 1500, {4, 5, 2}); // of a kind that is not listed
    ASSERT_TRUE(parse());
    EXPECT_EQ(listOf(synthetic::Library), (Ids{5, 1, 4, 2, 3}));
    EXPECT_EQ(mergeLog(), (Log{added(5), added(1), added(4), added(2), added(3)}));
    EXPECT_EQ(listOf(synthetic::CameraRoll), Ids());
}

TEST_F(LibraryMerge, KeepsTheMembersOfTheCameraRollOutOfTheLibrary)
{
    addPhotos({1, 2, 3});
    addAlbum(10, 2, {1, 2});
    addAlbum(20, 1000, {2, 3});
    ASSERT_TRUE(parse());
    EXPECT_EQ(listOf(synthetic::Library), Ids{1});
    EXPECT_EQ(mergeLog(), Log{added(1)});
}

TEST_F(LibraryMerge, LooksOnlyIntoTheFirstOfSeveralCameraRolls)
{
    addPhotos({1, 2, 3, 4});
    addAlbum(20, 1000, {1});
    addAlbum(21, 1000, {2, 4});
    addAlbum(30, 1550, {1, 2, 3});
    ASSERT_TRUE(parse());
    EXPECT_EQ(listOf(synthetic::Library), (Ids{2, 3}));
    EXPECT_EQ(mergeLog(), (Log{added(2), added(3)}));
}

TEST_F(LibraryMerge, LooksIntoACameraRollInTheTrashButTakesItsMembersForLoose)
{
    addPhotos({1, 2, 3});
    addAlbum(20, 1000, {1, 2}, 1);
    addAlbum(30, 1550, {1, 3});
    ASSERT_TRUE(parse());
    EXPECT_EQ(listOf(synthetic::Library), (Ids{3, 2}));
    EXPECT_EQ(mergeLog(), (Log{added(3), loose(2)}));
}

TEST_F(LibraryMerge, AddsMembersThatAreNoAssetsToo)
{
    addPhotos({1});
    addAlbum(10, 2, {99, 1, -7});
    ASSERT_TRUE(parse());
    EXPECT_EQ(listOf(synthetic::Library), (Ids{99, 1, static_cast<quint64>(-7)}));
    EXPECT_EQ(mergeLog(), (Log{added(99), added(1), added(-7)}));
}

TEST_F(LibraryMerge, StoresNoListOfADeviceAlbumsOwnMembers)
{
    addPhotos({1});
    addAlbum(10, 2, {1});
    addAlbum(11, 1550, {1});
    ASSERT_TRUE(parse());
    EXPECT_FALSE(manager->m_mapAlbum2Photos.contains(10));
    EXPECT_FALSE(manager->m_mapAlbum2Photos.contains(11));
    EXPECT_EQ(manager->m_pCameraDB->albums[10]->assetKeys, Ids{1});
}

TEST_F(LibraryMerge, TakesThePhotosOfAnAlbumInTheTrashForLoose)
{
    addPhotos({1, 2});
    addAlbum(10, 1550, {1}, 1);
    addAlbum(11, 1550, {2}, 2);
    ASSERT_TRUE(parse());
    EXPECT_EQ(listOf(synthetic::Library), Ids{2});
    EXPECT_EQ(listOf(synthetic::CameraRoll), Ids{1});
    EXPECT_EQ(mergeLog(), (Log{added(2), looseCameraPhoto(1)}));
}

// --- Photos and videos in no album.

TEST_F(LibraryMerge, FilesLooseCameraPhotosUnderTheCameraRollOfItsOwn)
{
    addPhotos({5, 1});
    addPhotos({4}, "PhotoData/Sync");
    addPhotos({3}, "dcim/100APPLE");
    addPhotos({2}, "Media/DCIM");
    AssetRow video = videoRow(6);
    video.directory = "DCIM/101APPLE";
    video.uuid = QByteArray("photo-6");
    database.rows.assets.push_back(video);
    ASSERT_TRUE(parse());
    EXPECT_EQ(listOf(synthetic::CameraRoll), (Ids{1, 2, 5, 6}));
    EXPECT_EQ(listOf(synthetic::Library), (Ids{3, 4}));
    EXPECT_EQ(mergeLog(), (Log{looseCameraPhoto(1), looseCameraPhoto(2), loose(3), loose(4),
                               looseCameraPhoto(5), looseCameraPhoto(6)}));
}

TEST_F(LibraryMerge, FilesLooseCameraPhotosInTheLibraryWhenTheDeviceHasACameraRoll)
{
    addPhotos({3, 1});
    addPhotos({2}, "Elsewhere");
    addAlbum(10, 1000, {});
    ASSERT_TRUE(parse());
    EXPECT_EQ(listOf(synthetic::Library), (Ids{1, 2, 3}));
    EXPECT_EQ(mergeLog(), (Log{loose(1), loose(2), loose(3)}));
}

TEST_F(LibraryMerge, FilesNegativeKeysLastAndLogsThemSigned)
{
    addPhotos({-2, 7}, "Elsewhere");
    ASSERT_TRUE(parse());
    EXPECT_EQ(listOf(synthetic::Library), (Ids{7, static_cast<quint64>(-2)}));
    EXPECT_EQ(mergeLog(), (Log{loose(7), loose(-2)}));
}

TEST_F(LibraryMerge, LogsTheRawBytesOfAUuidUpToAZeroByte)
{
    addPhotos({1}, "Elsewhere");
    addPhotos({2});
    database.rows.assets[0].uuid = QByteArray("\xff\x01%s\xc3\n\0tail", 11);
    database.rows.assets[1].uuid = QByteArray("\0\x01", 2);
    ASSERT_TRUE(parse());
    EXPECT_EQ(mergeLog(),
              (Log{notice("Add some photo not in album: 1, uuid: \xff\x01%s\xc3\n"),
                   notice("Add some photo not in album but as Camera roll: 2, uuid: ")}));
}

// --- A first database without a camera roll, then one with.

TEST_F(LibraryMerge, GoesOnFillingTheCameraRollOfAnEarlierParse)
{
    addPhotos({1, 2});
    ASSERT_TRUE(parse());
    ASSERT_EQ(listOf(synthetic::CameraRoll), (Ids{1, 2}));

    addPhotos({3, 4});
    addPhotos({5}, "Elsewhere");
    addAlbum(10, 1000, {4});
    host.clearRecords();
    ASSERT_TRUE(parse());
    EXPECT_EQ(listOf(synthetic::CameraRoll), (Ids{1, 2, 3}));
    EXPECT_EQ(listOf(synthetic::Library), (Ids{1, 2, 5}));
    EXPECT_EQ(mergeLog(), (Log{loose(1), loose(2), looseCameraPhoto(3), loose(5)}));
    EXPECT_EQ(manager->albumIDs(),
              (Ids{synthetic::CameraRoll, synthetic::Library, synthetic::Panorama, synthetic::Video,
                   synthetic::Library, synthetic::Panorama, synthetic::Video, 10}));
}

TEST_F(LibraryMerge, StartsTheCameraRollAnewWhileTheDeviceHasNone)
{
    addPhotos({1, 2});
    ASSERT_TRUE(parse());
    database.rows.assets.erase(database.rows.assets.begin());
    host.clearRecords();
    ASSERT_TRUE(parse());
    EXPECT_EQ(listOf(synthetic::CameraRoll), Ids{2});
    EXPECT_EQ(mergeLog(), Log{looseCameraPhoto(2)});
}

TEST_F(LibraryMerge, LeavesTheModelOfAnEarlierParseAlone)
{
    addPhotos({1});
    ASSERT_TRUE(parse());
    const CameraDB *first = manager->m_pCameraDB;
    const Camera_Data *record = first->assets.value(1);
    database.rows.assets.clear();
    addPhotos({2});
    ASSERT_TRUE(parse());
    EXPECT_NE(manager->m_pCameraDB, first);
    EXPECT_EQ(manager->photoIDs(), Ids{2});
    EXPECT_EQ(first->assets.keys(), Ids{1});
    EXPECT_EQ(record->uuid, QByteArray("photo-1"));
}

// --- Threads.

class LibraryParseThreads : public ParseFixture
{
};

// Whether the thread waits in the kernel, as one does that waits for a semaphore.
bool sleeps(int threadId)
{
    QFile file(QStringLiteral("/proc/self/task/%1/stat").arg(threadId));
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray stat = file.readAll();
    return stat.mid(stat.lastIndexOf(')') + 2, 1) == "S";
}

// Another thread that cancels the manager's parse from within it.
class Canceller
{
public:
    explicit Canceller(photo_manager &manager) : m_manager(manager) {}
    ~Canceller() { join(); }
    Canceller(const Canceller &) = delete;
    Canceller &operator=(const Canceller &) = delete;

    // Starts the thread, and returns when it waits, or has come back already.
    void start()
    {
        m_thread = std::thread([this] {
            m_threadId = gettid();
            m_manager.cancleParse();
            photosSeen = m_manager.photoCnt();
            albumsSeen = m_manager.albumCnt();
            returned = true;
        });
        while (!returned && !(m_threadId != 0 && sleeps(m_threadId)))
            std::this_thread::yield();
    }

    void join()
    {
        if (m_thread.joinable())
            m_thread.join();
    }

    std::atomic<bool> returned{false};
    int photosSeen = -1;
    int albumsSeen = -1;

private:
    photo_manager &m_manager;
    std::atomic<int> m_threadId{0};
    std::thread m_thread;
};

TEST_F(LibraryParseThreads, MakeACancelWaitForTheEndOfARunningParseWhichItDoesNotStop)
{
    addPhotos({1, 2, 3});
    Canceller canceller(*manager);
    bool waited = false;
    host.onCall("vFileRead", 1, [&] {
        canceller.start();
        waited = !canceller.returned;
    });
    EXPECT_TRUE(parse());
    canceller.join();
    EXPECT_TRUE(waited);
    EXPECT_TRUE(canceller.returned);
    EXPECT_EQ(canceller.photosSeen, 3);
    EXPECT_EQ(canceller.albumsSeen, 4);
    EXPECT_EQ(manager->m_semParse.available(), 1);
    EXPECT_TRUE(manager->m_bCancel);
}

TEST_F(LibraryParseThreads, MakeACancelWaitAlsoWhileTheSyncListIsRead)
{
    host.setDeviceFile("/Photos/Sync/CurrentLibraryUUID.plist", "no list");
    Canceller canceller(*manager);
    bool waited = false;
    host.onCall("isAccessBlocked", 4, [&] {
        host.onCall("vFileClose", host.callCount("vFileClose") + 1, [&] {
            canceller.start();
            waited = !canceller.returned;
        });
    });
    EXPECT_TRUE(parse());
    canceller.join();
    EXPECT_TRUE(waited);
    EXPECT_EQ(canceller.albumsSeen, 4);
}

TEST_F(LibraryParseThreads, MakeACancelWaitForAParseThatFails)
{
    Canceller canceller(*manager);
    bool waited = false;
    host.onCall("vDevOpen", 1, [&] {
        canceller.start();
        waited = !canceller.returned;
    });
    EXPECT_FALSE(manager->parseLib());
    canceller.join();
    EXPECT_TRUE(waited);
    EXPECT_EQ(canceller.photosSeen, 0);
    EXPECT_EQ(manager->m_semParse.available(), 1);
}

TEST_F(LibraryParseThreads, HoldTheSemaphoreForTheWholeParse)
{
    host.setDeviceFile("/Photos/Sync/CurrentLibraryUUID.plist", "no list");
    std::vector<int> available;
    const auto look = [&] { available.push_back(manager->m_semParse.available()); };
    host.onCall("localDataPath", 1, look);
    host.onCall("isAccessBlocked", 4, look);
    host.onCall("vFileRead", 3, look); // of the sync list
    EXPECT_TRUE(parse());
    EXPECT_EQ(available, (std::vector<int>{0, 0, 0}));
}

TEST_F(LibraryParseThreads, StopACopyByTheFreeCancelFromAnotherThread)
{
    addPhotos({1});
    host.onCall("vFileRead", 1, [] { std::thread(&::cancleParse).join(); });
    EXPECT_FALSE(parse());
    EXPECT_EQ(host.log(), (Log{notice("load ATHCameraDB"), failure("Can not load lib"),
                               failure("Can not parse photo lib")}));
    EXPECT_EQ(manager->m_semParse.available(), 1);

    host.onCall("vFileRead", 1, nullptr);
    EXPECT_TRUE(parse());
    EXPECT_EQ(manager->photoIDs(), Ids{1});
}

TEST_F(LibraryParseThreads, ParseOnAThreadOfTheirOwn)
{
    addPhotos({1, 2});
    addAlbum(10, 2, {1});
    bool parsed = false;
    std::thread([&] { parsed = parse(); }).join();
    EXPECT_TRUE(parsed);
    EXPECT_EQ(manager->photoIDs(), (Ids{1, 2}));
    EXPECT_EQ(manager->albumCnt(), 5);
}

} // namespace
