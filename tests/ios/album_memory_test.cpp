#include "ios/album_fixture.h"
#include "support/allocation_faults.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <exception>
#include <set>
#include <thread>
#include <vector>

namespace {

using Ids = QList<quint64>;

const quint64 Key = 41;

// A library with records for one operation. All is shared with copies that the host keeps,
// as after a query, so that a change has to copy first.
class Attempt
{
public:
    Attempt() : manager(&device)
    {
        manager.m_pCameraDB = new CameraDB();
        CameraDB &model = *manager.m_pCameraDB;
        model.maxAssetPk = 9;
        model.maxAlbumPk = Key;
        for (quint64 key = 1; key <= 9; ++key) {
            auto *asset = new Camera_Data();
            asset->pk = key;
            model.assets[key] = asset;
            model.videos[key] = asset;
        }
        model.albums[Key] = new Camera_Album();
        model.albums[Key]->kind = 2;
        model.albums[Key]->assetKeys = {1, 20, 2, 21, 3};
        manager.m_mapAlbum2Photos[synthetic::Library] = {7, 8, 9};
        manager.m_listAlbumIDs = {synthetic::Library, Key};
        album.id = Key;
        album.name = QStringLiteral("name");
        album.photoIDs = {1, 2};
        library.id = synthetic::Library;
        library.photoIDs = {8};
        existing.id = 5;
        keepCopies();
    }

    FakeIPod device;
    photo_manager manager;
    albumItem album;
    albumItem library;
    photoItem existing;
    photoItem added;

    // What holds after every operation: the maps point to the same assets, each of which is
    // there once, and the host's records name what the library has.
    void expectSound() const
    {
        const CameraDB &model = *manager.m_pCameraDB;
        std::set<const Camera_Data *> records;
        for (auto at = model.assets.begin(); at != model.assets.end(); ++at) {
            ASSERT_NE(at.value(), nullptr);
            EXPECT_EQ(at.value()->pk, at.key());
            EXPECT_TRUE(records.insert(at.value()).second) << at.key();
        }
        for (const Camera_Data *video : model.videos)
            EXPECT_EQ(records.count(video), 1U);
        for (const quint64 key : model.albums.keys())
            EXPECT_NE(model.albums.value(key), nullptr) << key;
        // A host that tries again passes what it was left with.
        EXPECT_TRUE(added.id == 0 || model.assets.contains(added.id)) << added.id;
        EXPECT_TRUE(manager.m_listAlbumIDs.contains(album.id) || album.id == Key) << album.id;
    }

private:
    void keepCopies()
    {
        m_members = manager.m_pCameraDB->albums.value(Key)->assetKeys;
        m_inLibrary = manager.m_mapAlbum2Photos.value(synthetic::Library);
        m_listed = manager.m_listAlbumIDs;
        m_requested = album.photoIDs;
    }

    Ids m_members;
    Ids m_inLibrary;
    Ids m_listed;
    Ids m_requested;
};

struct Operation {
    const char *name;
    bool (*run)(Attempt &attempt);
};

class AlbumOutOfMemory : public testing::TestWithParam<Operation>
{
protected:
    // Runs the operation with the `failing`-th allocation missing; whether it came so far.
    static bool runWithFault(int failing)
    {
        Attempt attempt;
        bool done = false;
        bool thrown = false;
        bool happened = false;
        {
            const HeapFault fault(failing);
            try {
                done = GetParam().run(attempt);
            } catch (const std::exception &) {
                thrown = true;
            }
            happened = fault.happened();
        }
        EXPECT_FALSE(thrown) << "allocation " << failing;
        EXPECT_EQ(done, !happened) << "allocation " << failing;
        attempt.expectSound();
        EXPECT_TRUE(isFreeElsewhere(attempt.manager.m_recMutex)) << "allocation " << failing;
        EXPECT_TRUE(isFreeElsewhere(attempt.manager.m_mutex)) << "allocation " << failing;
        EXPECT_TRUE(GetParam().run(attempt)) << "once there is memory again";
        attempt.expectSound();
        return happened;
    }

    FakeHost host;
};

TEST_P(AlbumOutOfMemory, FailsAndLeavesASoundLibraryWhereverMemoryRunsOut)
{
    // The first run of a thread sets Qt's generator up.
    Attempt first;
    ASSERT_TRUE(GetParam().run(first));
    int failing = 1;
    while (failing < 1000 && runWithFault(failing))
        ++failing;
    EXPECT_GT(failing, 1) << "the operation allocates nothing";
    EXPECT_LT(failing, 1000);
    EXPECT_EQ(host.log(), std::vector<LogLine>());
}

INSTANTIATE_TEST_SUITE_P(
    Operations, AlbumOutOfMemory,
    testing::Values(
        Operation{"GetDeviceAlbum",
                  [](Attempt &attempt) { return attempt.manager.getAlbum(Key, &attempt.album); }},
        Operation{"GetSyntheticAlbum",
                  [](Attempt &attempt) {
                      return attempt.manager.getAlbum(synthetic::Library, &attempt.album);
                  }},
        Operation{"AddNewPhotoByKey",
                  [](Attempt &attempt) {
                      return attempt.manager.addPhoto2Album(&attempt.added, Key) == 0;
                  }},
        Operation{"AddNewPhotoByRecord",
                  [](Attempt &attempt) {
                      return attempt.manager.addPhoto2Album(&attempt.added, &attempt.album) == 0;
                  }},
        Operation{"AddExistingPhotoByKey",
                  [](Attempt &attempt) {
                      return attempt.manager.addPhoto2Album(&attempt.existing, Key) == 0;
                  }},
        Operation{"AddExistingPhotoByRecord",
                  [](Attempt &attempt) {
                      return attempt.manager.addPhoto2Album(&attempt.existing, &attempt.album) == 0;
                  }},
        Operation{"AddAlbum",
                  [](Attempt &attempt) { return attempt.manager.addAlbum(&attempt.album) > 0; }},
        Operation{
            "UpdateDeviceAlbum",
            [](Attempt &attempt) { return attempt.manager.updateAlbum(&attempt.album) == 0; }},
        Operation{
            "UpdateLibrary",
            [](Attempt &attempt) { return attempt.manager.updateAlbum(&attempt.library) == 0; }},
        Operation{"RemoveAlbum",
                  [](Attempt &attempt) { return attempt.manager.rmAlbum(Key) == 0; }}),
    rowName<Operation>);

// --- The first uuid of a thread.

TEST(NewUuidOutOfMemoryThreads, FailOnceWhereTheGeneratorIsSetUp)
{
    const FakeHost host;
    for (int failing = 1; failing <= 6; ++failing) {
        Attempt attempt;
        bool isFailure = false;
        bool happened = false;
        std::thread([&] {
            const HeapFault fault(failing);
            isFailure = attempt.manager.addAlbum(&attempt.album) < 0;
            happened = fault.happened();
        }).join();
        EXPECT_EQ(isFailure, happened) << failing;
        attempt.expectSound();
    }
}

} // namespace
