#include "ios/album_fixture.h"
#include "support/run_together.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <thread>
#include <vector>

namespace {

using Ids = QList<quint64>;

const quint64 Key = 41;

// A library of the assets 1 to 9; the device album `Key` is empty.
class AlbumThreads : public AlbumFixture
{
protected:
    AlbumThreads()
    {
        addAssets({1, 2, 3, 4, 5, 6, 7, 8, 9});
        addSyntheticAlbums({});
        record = addListedAlbum(Key);
        model().maxAssetPk = 100;
        model().maxAlbumPk = 200;
    }

    // Adds `count` new photos to the album `Key`; gives their ids and uuids.
    void addNewPhotos(int count, std::vector<photoItem> *added)
    {
        for (int i = 0; i < count; ++i) {
            photoItem photo;
            albumItem album;
            album.id = Key;
            // One overload and the other.
            failures += (i % 2 == 0 ? manager.addPhoto2Album(&photo, Key)
                                    : manager.addPhoto2Album(&photo, &album)) != 0;
            added->push_back(photo);
        }
    }

    // Makes albums of three photos, empties every other one and hides every fourth.
    void makeAlbums(int count, Ids *made)
    {
        for (int i = 0; i < count; ++i) {
            albumItem album;
            album.name = QStringLiteral("full");
            album.photoIDs = {1, 2, 3};
            failures += manager.addAlbum(&album) <= 0;
            made->append(album.id);
            if (i % 2 == 0) {
                album.name = QStringLiteral("empty");
                album.photoIDs.clear();
                failures += manager.updateAlbum(&album) != 0;
            }
            if (i % 4 == 0)
                failures += manager.rmAlbum(album.id) != 0;
        }
    }

    // Fetches albums that others are making; they may not be there yet, or no more.
    void fetchAlbums(int count)
    {
        for (int i = 0; i < count; ++i) {
            albumItem album;
            const quint64 key = 201 + static_cast<quint64>(i) % 40;
            if (!manager.getAlbum(key, &album))
                continue;
            const bool isFull = album.name == QLatin1String("full") && album.photoIDs.size() == 3;
            const bool isEmpty = album.name == QLatin1String("empty") && album.photoIDs.isEmpty();
            failures += !isFull && !isEmpty;
        }
    }

    // The album and the library only grow meanwhile.
    void fetchGrowingAlbums(int count)
    {
        Ids inAlbum;
        Ids inLibrary;
        for (int i = 0; i < count; ++i) {
            albumItem album;
            albumItem library;
            failures += !manager.getAlbum(Key, &album);
            failures += !manager.getAlbum(synthetic::Library, &library);
            failures += album.photoIDs.mid(0, inAlbum.size()) != inAlbum;
            failures += library.photoIDs.mid(0, inLibrary.size()) != inLibrary;
            inAlbum = album.photoIDs;
            inLibrary = library.photoIDs;
        }
    }

    void fetchPhotos(int count)
    {
        for (int i = 0; i < count; ++i) {
            photoItem photo;
            failures += !manager.getPhoto(1 + static_cast<quint64>(i) % 9, &photo);
            // A new one is there as a whole or not at all.
            if (manager.getPhoto(101 + static_cast<quint64>(i) % 80, &photo))
                failures += photo.uuid.size() != 16;
        }
    }

    Camera_Album *record = nullptr;
    std::atomic<int> failures{0};
};

Ids sorted(Ids ids)
{
    std::sort(ids.begin(), ids.end());
    return ids;
}

Ids keysFrom(quint64 first, int count)
{
    Ids keys;
    for (int i = 0; i < count; ++i)
        keys.append(first + static_cast<quint64>(i));
    return keys;
}

TEST_F(AlbumThreads, EditAndReadOneLibrary)
{
    const int photos = 40;
    const int albums = 20;
    std::vector<photoItem> added[2];
    Ids made[2];
    runTogether({[&] { addNewPhotos(photos, &added[0]); }, [&] { addNewPhotos(photos, &added[1]); },
                 [&] { makeAlbums(albums, &made[0]); }, [&] { makeAlbums(albums, &made[1]); },
                 [&] { fetchAlbums(200); }, [&] { fetchGrowingAlbums(60); },
                 [&] { fetchPhotos(200); }});

    EXPECT_EQ(failures, 0);
    QMap<QByteArray, bool> uuids;
    Ids ids;
    for (const auto &mine : added) {
        for (const photoItem &photo : mine) {
            ids.append(photo.id);
            uuids[photo.uuid] = true;
        }
    }
    EXPECT_EQ(sorted(ids), keysFrom(101, 2 * photos));
    EXPECT_EQ(uuids.size(), 2 * photos);
    EXPECT_EQ(sorted(record->assetKeys), keysFrom(101, 2 * photos));
    EXPECT_EQ(library(), record->assetKeys);
    EXPECT_EQ(sorted(made[0] + made[1]), keysFrom(201, 2 * albums));
    EXPECT_EQ(manager.albumCnt(), 4 + 2 * albums - 2 * albums / 4);
    EXPECT_EQ(manager.m_mapUsedUUID.size(), 2 * (photos + albums));
}

TEST_F(AlbumThreads, MayTakePhotosOutOfTheLibraryWhileOthersReadThem)
{
    manager.m_mapAlbum2Photos[synthetic::Library] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    record->assetKeys = library();
    const auto takeOut = [&] {
        for (int left = 8; left >= 0; --left) {
            albumItem library;
            library.id = synthetic::Library;
            library.photoIDs = keysFrom(1, left);
            failures += manager.updateAlbum(&library) != 0;
        }
    };
    const auto read = [&] {
        for (int i = 0; i < 50; ++i) {
            albumItem album;
            photoItem photo;
            failures += !manager.getAlbum(Key, &album);
            failures += album.photoIDs != keysFrom(1, album.photoIDs.size());
            manager.getPhoto(9 - static_cast<quint64>(i) % 9, &photo);
        }
    };
    runTogether({takeOut, read, read});
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(fetched(Key).photoIDs, Ids());
    EXPECT_EQ(manager.photoCnt(), 0);
}

TEST_F(AlbumThreads, MakeUuidsAlsoBesideEdits)
{
    std::vector<photoItem> added;
    QList<QByteArray> made;
    const auto makeUuids = [&] {
        for (int i = 0; i < 40; ++i)
            made.append(manager.makeNewUID());
    };
    runTogether({makeUuids, [&] { addNewPhotos(40, &added); }});
    QMap<QByteArray, bool> uuids;
    for (const QByteArray &uuid : made)
        uuids[uuid] = true;
    for (const photoItem &photo : added)
        uuids[photo.uuid] = true;
    EXPECT_EQ(uuids.size(), 80);
    EXPECT_EQ(manager.m_mapUsedUUID, uuids);
}

TEST_F(AlbumThreads, HoldTheRecordLockWhileAnEditWaitsForItsUuid)
{
    std::atomic<bool> done{false};
    albumItem album;
    manager.m_mutex.lock();
    std::thread edit([&] {
        manager.addAlbum(&album);
        done = true;
    });
    // The edit holds the record lock before it asks for the other one, and keeps it.
    while (!done && manager.m_recMutex.tryLock()) {
        manager.m_recMutex.unlock();
        std::this_thread::yield();
    }
    for (int i = 0; i < 1000 && !done; ++i) {
        EXPECT_FALSE(manager.m_recMutex.tryLock());
        std::this_thread::yield();
    }
    EXPECT_FALSE(done);
    manager.m_mutex.unlock();
    edit.join();
    EXPECT_EQ(album.id, 201U);
}

TEST_F(AlbumThreads, WaitForTheRecordLockToEditAndRead)
{
    photoItem photo;
    photo.id = 5;
    albumItem byRecord;
    byRecord.id = Key;
    albumItem fetchedHere;
    albumItem made;
    const std::vector<std::function<void()>> operations = {
        [&] { manager.addPhoto2Album(&photo, Key); },
        [&] { manager.addPhoto2Album(&photo, &byRecord); },
        [&] { manager.addAlbum(&made); },
        [&] { manager.updateAlbum(&byRecord); },
        [&] { manager.rmAlbum(Key); },
        [&] { manager.getAlbum(Key, &fetchedHere); },
    };
    for (const auto &operation : operations) {
        std::atomic<bool> started{false};
        std::atomic<bool> done{false};
        manager.m_recMutex.lock();
        std::thread other([&] {
            started = true;
            operation();
            done = true;
        });
        for (int i = 0; i < 1000 || !started; ++i)
            std::this_thread::yield();
        EXPECT_FALSE(done);
        manager.m_recMutex.unlock();
        other.join();
    }
}

} // namespace
