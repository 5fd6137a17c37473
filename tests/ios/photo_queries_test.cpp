#include "boundary/photo_records.h"
#include "ios/photo_manager.h"
#include "ios/time_zone.h"
#include "support/fake_host.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <string>
#include <thread>
#include <vector>

namespace {

using Lines = std::vector<std::string>;
using Log = std::vector<LogLine>;

const quint64 Key = 41;
const qint64 SecondsTo2001 = 978307200; // from 1970, UTC

// A manager over a model made by hand: one photo, DCIM/100APPLE/IMG_0001.JPG.
class PhotoQuery : public testing::Test
{
protected:
    PhotoQuery() : manager(&device)
    {
        manager.m_pCameraDB = new CameraDB();
        photo = addAsset(Key);
    }

    Camera_Data *addAsset(quint64 key)
    {
        auto *asset = new Camera_Data();
        asset->db = manager.m_pCameraDB;
        asset->pk = key;
        asset->name = QStringLiteral("Beach");
        asset->uuid = QByteArray("\x01\x00\xfe\xff", 4);
        asset->width = 4032;
        asset->height = 3024;
        asset->orientation = 6;
        asset->duration = 12;
        asset->directory = QStringLiteral("DCIM/100APPLE");
        asset->fileName = QStringLiteral("IMG_0001.JPG");
        asset->createDate = 5;
        asset->modificationDate = 7;
        asset->trashedDate = -0x123456789abc;
        asset->originalFileSize = 1234;
        asset->avalancheUUID = QStringLiteral("burst-1");
        asset->sortToken = -2.25;
        manager.m_pCameraDB->assets[key] = asset;
        return asset;
    }

    void openDevice()
    {
        manager.m_pVDev = vDevOpen(VDevDevice, FakeHost::DeviceName);
        host.clearRecords();
    }

    photoItem fetched(quint64 key = Key)
    {
        photoItem item;
        EXPECT_TRUE(manager.getPhoto(key, &item));
        return item;
    }

    FakeHost host;
    FakeIPod device;
    photo_manager manager;
    Camera_Data *photo = nullptr;
};

using PhotoQueryThreads = PhotoQuery;

const char *const PhotoPath = "DCIM/100APPLE/IMG_0001.JPG";

// An item whose every field differs from what `getPhoto` writes.
photoItem oldItem()
{
    photoItem item;
    item.id = 999;
    item.uuid = "old uuid";
    item.name = QStringLiteral("old name");
    item.type = -1;
    item.path = QStringLiteral("old path");
    item.thumbPath = QStringLiteral("old thumb");
    item.orientation = -2;
    item.height = -3;
    item.width = -4;
    item.duration = -5;
    item.fileSize = 888;
    item.createDate = QDateTime(QDate(1999, 1, 1), QTime(1, 1), Qt::UTC);
    item.modifyDate = QDateTime(QDate(1998, 1, 1), QTime(1, 1), Qt::UTC);
    item.trashedDate = 777;
    item.avalancheUUID = QStringLiteral("old burst");
    item.sortToken = 6.5;
    return item;
}

void expectStartOf(const photoItem &item, const photoItem &expected)
{
    EXPECT_EQ(item.name, expected.name);
    EXPECT_EQ(item.id, expected.id);
    EXPECT_EQ(item.uuid, expected.uuid);
    EXPECT_EQ(item.height, expected.height);
    EXPECT_EQ(item.width, expected.width);
    EXPECT_EQ(item.orientation, expected.orientation);
    EXPECT_EQ(item.duration, expected.duration);
    EXPECT_EQ(item.type, expected.type);
    EXPECT_EQ(item.path, expected.path);
}

void expectRestOf(const photoItem &item, const photoItem &expected)
{
    EXPECT_EQ(item.thumbPath, expected.thumbPath);
    EXPECT_EQ(item.fileSize, expected.fileSize);
    EXPECT_EQ(item.createDate, expected.createDate);
    EXPECT_EQ(item.modifyDate, expected.modifyDate);
    EXPECT_EQ(item.trashedDate, expected.trashedDate);
    EXPECT_EQ(item.avalancheUUID, expected.avalancheUUID);
    EXPECT_EQ(item.sortToken, expected.sortToken);
}

photoItem itemOfThePhoto()
{
    photoItem item;
    item.name = QStringLiteral("Beach");
    item.id = Key;
    item.uuid = QByteArray("\x01\x00\xfe\xff", 4);
    item.height = 3024;
    item.width = 4032;
    item.orientation = 6;
    item.duration = 12;
    item.type = 3;
    item.path = QString::fromLatin1(PhotoPath);
    item.thumbPath = QString();
    item.fileSize = 1234;
    item.createDate = QDateTime(QDate(2001, 1, 1), QTime(0, 0, 5), Qt::UTC);
    item.modifyDate = QDateTime(QDate(2001, 1, 1), QTime(0, 0, 7), Qt::UTC);
    item.trashedDate = -0x123456789abc;
    item.avalancheUUID = QStringLiteral("burst-1");
    item.sortToken = -2.25;
    return item;
}

bool tryLockElsewhere(QMutex &mutex)
{
    bool locked = false;
    std::thread([&] {
        locked = mutex.tryLock();
        if (locked)
            mutex.unlock();
    }).join();
    return locked;
}

// --- Before a parse.

class UnparsedQuery : public testing::Test
{
protected:
    FakeHost host;
    FakeIPod device;
    photo_manager manager{&device};
};

TEST_F(UnparsedQuery, AnswersAsForAnEmptyLibrary)
{
    EXPECT_TRUE(manager.getUUID().isEmpty());
    EXPECT_EQ(manager.photoCnt(), 0);
    EXPECT_EQ(manager.photoIDs(), QList<quint64>());
    EXPECT_EQ(manager.albumCnt(), 0);
    EXPECT_EQ(manager.albumIDs(), QList<quint64>());
    EXPECT_EQ(host.trace(), Lines());
}

TEST_F(UnparsedQuery, HasNoUuidEvenWhenTheSyncListGaveOne)
{
    manager.m_libraryUUID = "0123";
    EXPECT_TRUE(manager.getUUID().isEmpty());
}

TEST_F(UnparsedQuery, LogsThatAPhotoIsMissingAndLeavesTheItemAlone)
{
    photoItem item = oldItem();
    EXPECT_FALSE(manager.getPhoto(Key, &item));
    EXPECT_EQ(host.log(), Log{failure("Can not get photo")});
    expectStartOf(item, oldItem());
    expectRestOf(item, oldItem());
}

TEST_F(UnparsedQuery, GivesNoSourceBytes)
{
    QByteArray data("kept");
    EXPECT_EQ(manager.getSourcePhoto(Key, data), 0);
    EXPECT_EQ(data, QByteArray("kept"));
}

// --- The library's identity.

TEST_F(PhotoQuery, NamesTheLibraryAsTheSyncListDoes)
{
    manager.m_libraryUUID = "SYNC-UUID";
    manager.m_pCameraDB->uuid = "DATABASE-UUID";
    EXPECT_EQ(manager.getUUID(), QStringLiteral("SYNC-UUID"));
}

TEST_F(PhotoQuery, NamesTheLibraryAsTheDatabaseDoesWithoutASyncList)
{
    manager.m_pCameraDB->uuid = "DATABASE-UUID";
    EXPECT_EQ(manager.getUUID(), QStringLiteral("DATABASE-UUID"));
    manager.m_pCameraDB->uuid.clear();
    EXPECT_TRUE(manager.getUUID().isEmpty());
}

TEST_F(PhotoQuery, EndsTheLibrarysNameAtAZeroByte)
{
    manager.m_pCameraDB->uuid = QByteArray("DATA\0BASE", 9);
    EXPECT_EQ(manager.getUUID(), QStringLiteral("DATA"));
    manager.m_libraryUUID = QByteArray("SY\0NC", 5);
    EXPECT_EQ(manager.getUUID(), QStringLiteral("SY"));
    manager.m_libraryUUID = QByteArray("\0NC", 3);
    EXPECT_TRUE(manager.getUUID().isEmpty());
}

TEST_F(PhotoQuery, ReadsTheLibrarysNameAsLatin1)
{
    manager.m_libraryUUID = "caf\xe9";
    EXPECT_EQ(manager.getUUID(), QString::fromLatin1("caf\xe9"));
    manager.m_libraryUUID.clear();
    manager.m_pCameraDB->uuid = "\xc3\xa9";
    EXPECT_EQ(manager.getUUID(), QString::fromLatin1("\xc3\xa9"));
}

// --- Counts and lists.

TEST_F(PhotoQuery, CountsAndListsAllAssetsInKeyOrder)
{
    manager.m_pCameraDB->videos[7] = addAsset(7);
    addAsset(static_cast<quint64>(-3));
    addAsset(1000);
    EXPECT_EQ(manager.photoCnt(), 4);
    EXPECT_EQ(manager.photoIDs(), (QList<quint64>{7, Key, 1000, static_cast<quint64>(-3)}));
    EXPECT_EQ(host.trace(), Lines());
}

TEST_F(PhotoQuery, ListsTheAlbumsAsTheyStandWithRepeats)
{
    manager.m_listAlbumIDs = {1000, 5, 1000};
    EXPECT_EQ(manager.albumCnt(), 3);
    EXPECT_EQ(manager.albumIDs(), (QList<quint64>{1000, 5, 1000}));
}

TEST_F(PhotoQuery, TakesNoLockToCountAndList)
{
    manager.m_recMutex.lock();
    std::thread([this] {
        EXPECT_EQ(manager.photoCnt(), 1);
        EXPECT_EQ(manager.photoIDs(), QList<quint64>{Key});
        EXPECT_EQ(manager.albumCnt(), 0);
        EXPECT_EQ(manager.albumIDs(), QList<quint64>());
        EXPECT_TRUE(manager.getUUID().isEmpty());
    }).join();
    manager.m_recMutex.unlock();
}

// --- getPhoto.

TEST_F(PhotoQuery, FillsEveryFieldOfAPhoto)
{
    host.setDeviceFile(PhotoPath, "bytes");
    openDevice();
    photoItem item = oldItem();
    ASSERT_TRUE(manager.getPhoto(Key, &item));
    expectStartOf(item, itemOfThePhoto());
    expectRestOf(item, itemOfThePhoto());
    EXPECT_TRUE(item.thumbPath.isEmpty());
    EXPECT_EQ(host.log(), Log());
}

TEST_F(PhotoQuery, GivesTheRequestedKeyAsId)
{
    photo->pk = 5;
    EXPECT_EQ(fetched().id, Key);
}

TEST_F(PhotoQuery, GivesTheDisplayNameAndNotTheFilesName)
{
    EXPECT_EQ(fetched().name, QStringLiteral("Beach"));
}

TEST_F(PhotoQuery, RefusesANullItem)
{
    openDevice();
    EXPECT_FALSE(manager.getPhoto(Key, nullptr));
    EXPECT_EQ(host.log(), Log{failure("Can not get photo")});
    EXPECT_EQ(host.calls(), Lines());
}

TEST_F(PhotoQuery, RefusesAnUnknownKeyAndDoesNotEnterIt)
{
    openDevice();
    photoItem item = oldItem();
    EXPECT_FALSE(manager.getPhoto(42, &item));
    EXPECT_EQ(host.log(), Log{failure("Can not get photo")});
    EXPECT_EQ(host.calls(), Lines());
    EXPECT_EQ(manager.photoIDs(), QList<quint64>{Key});
    expectStartOf(item, oldItem());
    expectRestOf(item, oldItem());
}

TEST_F(PhotoQuery, CallsOnlyKindOneAVideo)
{
    for (const qint32 kind : {0, 2, 3, -1}) {
        photo->kind = kind;
        const photoItem item = fetched();
        EXPECT_EQ(item.type, 3) << kind;
        EXPECT_TRUE(item.thumbPath.isEmpty()) << kind;
    }
    photo->kind = 1;
    EXPECT_EQ(fetched().type, 2);
}

TEST_F(PhotoQuery, GivesAFileWithoutAFolderItsBareName)
{
    photo->directory.clear();
    EXPECT_EQ(fetched().path, QStringLiteral("IMG_0001.JPG"));
    photo->fileName = QStringLiteral("/home/me/new.jpg");
    EXPECT_EQ(fetched().path, QStringLiteral("/home/me/new.jpg"));
}

// --- Where a video's still lies.

TEST_F(PhotoQuery, PointsToTheStillOfAVideo)
{
    photo->kind = 1;
    photo->fileName = QStringLiteral("IMG_0002.MOV");
    const photoItem item = fetched();
    EXPECT_EQ(item.path, QStringLiteral("DCIM/100APPLE/IMG_0002.MOV"));
    EXPECT_EQ(item.thumbPath, QStringLiteral("PhotoData/Metadata/DCIM/100APPLE/IMG_0002.JPG"));
}

TEST_F(PhotoQuery, ReplacesEveryMovInTheStillsPathAndOnlyInCapitals)
{
    photo->kind = 1;
    photo->directory = QStringLiteral("DCIM/MOVIES-mov");
    photo->fileName = QStringLiteral("MOVMOV.mov");
    EXPECT_EQ(fetched().thumbPath, QStringLiteral("PhotoData/Metadata/DCIM/JPGIES-mov/JPGJPG.mov"));
}

TEST_F(PhotoQuery, KeepsPercentSignsInTheStillsPath)
{
    photo->kind = 1;
    photo->directory.clear();
    photo->fileName = QStringLiteral("%1%2 100%.MOV");
    EXPECT_EQ(fetched().thumbPath, QStringLiteral("PhotoData/Metadata/%1%2 100%.JPG"));
}

TEST_F(PhotoQuery, GivesAPhotoNoStill)
{
    photo->fileName = QStringLiteral("IMG_0002.MOV");
    photoItem item = oldItem();
    ASSERT_TRUE(manager.getPhoto(Key, &item));
    EXPECT_TRUE(item.thumbPath.isEmpty());
}

// --- Whether the file is there, and how large.

TEST_F(PhotoQuery, AsksTheDeviceOnceForAPhotoOfKnownSize)
{
    host.setDeviceFile(PhotoPath, "bytes");
    openDevice();
    EXPECT_EQ(fetched().fileSize, 1234U);
    EXPECT_EQ(host.trace(), Lines{"vDevFileSize(dev1, \"DCIM/100APPLE/IMG_0001.JPG\") -> 5"});
    EXPECT_EQ(photo->originalFileSize, 1234);
}

TEST_F(PhotoQuery, LearnsAnUnknownSizeFromTheDeviceOnce)
{
    const std::string asked = "vDevFileSize(dev1, \"DCIM/100APPLE/IMG_0001.JPG\") -> 5";
    host.setDeviceFile(PhotoPath, "bytes");
    photo->originalFileSize = 0;
    openDevice();
    EXPECT_EQ(fetched().fileSize, 5U);
    EXPECT_EQ(host.trace(), (Lines{asked, asked}));
    EXPECT_EQ(photo->originalFileSize, 5);

    host.clearRecords();
    EXPECT_EQ(fetched().fileSize, 5U);
    EXPECT_EQ(host.trace(), Lines{asked});
}

TEST_F(PhotoQuery, KeepsSizesAboveThirtyTwoBits)
{
    host.lieInSize(PhotoPath, 0x123456789);
    photo->originalFileSize = 0;
    openDevice();
    EXPECT_EQ(fetched().fileSize, 0x123456789U);
    EXPECT_EQ(photo->originalFileSize, 0x123456789);
}

TEST_F(PhotoQuery, SeesAFileWhoseSizesLowHalfIsZeroOrNegative)
{
    openDevice();
    host.lieInSize(PhotoPath, 0x100000000);
    fetched();
    host.lieInSize(PhotoPath, 0x180000000);
    fetched();
}

TEST_F(PhotoQuery, PassesARecordedNegativeSizeOnWithoutAsking)
{
    host.setDeviceFile(PhotoPath, "bytes");
    photo->originalFileSize = -5;
    openDevice();
    EXPECT_EQ(fetched().fileSize, static_cast<quint64>(-5));
    EXPECT_EQ(host.callCount("vDevFileSize"), 1);
}

TEST_F(PhotoQuery, NamesFilesToTheDeviceInUtf8UnderALatin1Locale)
{
    photo->directory = QString::fromUtf8("DCIM/Gru\u00df");
    photo->fileName = QString::fromUtf8("\u00e9.JPG");
    ASSERT_NE(photo->fileName.toLocal8Bit(), photo->fileName.toUtf8());
    host.setDeviceFile("DCIM/Gru\xc3\x9f/\xc3\xa9.JPG", "bytes");
    photo->originalFileSize = 0;
    openDevice();
    EXPECT_EQ(fetched().fileSize, 5U);
}

TEST_F(PhotoQuery, FailsSilentlyWhenTheFileIsNowhere)
{
    openDevice();
    photoItem item = oldItem();
    EXPECT_FALSE(manager.getPhoto(Key, &item));
    EXPECT_EQ(host.trace(), Lines{"vDevFileSize(dev1, \"DCIM/100APPLE/IMG_0001.JPG\") -> 0"});
    expectStartOf(item, itemOfThePhoto());
    expectRestOf(item, oldItem());
}

TEST_F(PhotoQuery, TakesANegativeSizeForAMissingFile)
{
    host.lieInSize(PhotoPath, -1);
    photo->originalFileSize = 0;
    openDevice();
    photoItem item = oldItem();
    EXPECT_FALSE(manager.getPhoto(Key, &item));
    EXPECT_EQ(host.callCount("vDevFileSize"), 1);
    expectRestOf(item, oldItem());
    EXPECT_EQ(photo->originalFileSize, 0);
}

TEST_F(PhotoQuery, MakesAnEmptyFileOfTheDeviceCountAsMissing)
{
    host.setDeviceFile(PhotoPath, "");
    openDevice();
    photoItem item;
    EXPECT_FALSE(manager.getPhoto(Key, &item));
}

// A photo added in memory, whose file lies on the host's own disk.
class LocalPhotoQuery : public PhotoQuery
{
protected:
    LocalPhotoQuery()
    {
        path = folder.filePath(QStringLiteral("new.jpg"));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write("local"), 5);
        photo->directory.clear();
        photo->fileName = path;
        openDevice();
    }

    QTemporaryDir folder;
    QString path;
};

TEST_F(LocalPhotoQuery, FindsAFileOfTheHostsOwnDisk)
{
    const photoItem item = fetched();
    EXPECT_EQ(item.path, path);
    EXPECT_EQ(item.fileSize, 1234U);
    EXPECT_EQ(host.callCount("vDevFileSize"), 1);
    EXPECT_EQ(host.trace().size(), 1U);
}

TEST_F(LocalPhotoQuery, AsksTheDeviceForTheSizeEachTimeWhileItKnowsNone)
{
    photo->originalFileSize = 0;
    EXPECT_EQ(fetched().fileSize, 0U);
    EXPECT_EQ(host.callCount("vDevFileSize"), 2);
    EXPECT_EQ(fetched().fileSize, 0U);
    EXPECT_EQ(host.callCount("vDevFileSize"), 4);
    EXPECT_EQ(photo->originalFileSize, 0);
}

TEST_F(LocalPhotoQuery, StoresWhateverSizeTheDeviceAnswers)
{
    photo->originalFileSize = 0;
    host.lieInSize(path.toUtf8(), -1);
    EXPECT_EQ(fetched().fileSize, std::numeric_limits<quint64>::max());
    EXPECT_EQ(photo->originalFileSize, -1);
    EXPECT_EQ(host.callCount("vDevFileSize"), 2);
    fetched();
    EXPECT_EQ(host.callCount("vDevFileSize"), 3);
}

TEST_F(LocalPhotoQuery, FailsSilentlyOnceTheFileIsDeleted)
{
    ASSERT_TRUE(QFile::remove(path));
    photoItem item = oldItem();
    EXPECT_FALSE(manager.getPhoto(Key, &item));
    EXPECT_EQ(host.log(), Log());
    EXPECT_EQ(item.path, path);
    expectRestOf(item, oldItem());
}

TEST_F(PhotoQuery, SucceedsWithoutADeviceHandleAndAsksNothing)
{
    photo->originalFileSize = 0;
    photoItem item = oldItem();
    EXPECT_TRUE(manager.getPhoto(Key, &item));
    photoItem expected = itemOfThePhoto();
    expected.fileSize = 0;
    expectStartOf(item, expected);
    expectRestOf(item, expected);
    EXPECT_EQ(host.trace(), Lines());
}

// --- Dates.

TEST_F(PhotoQuery, CountsDatesInSecondsFrom2001InUtcWhateverTheZone)
{
    const TimeZone local("WEST8");
    for (const qint32 seconds : {0, 1, -1, 500000000, std::numeric_limits<qint32>::max(),
                                 std::numeric_limits<qint32>::min()}) {
        photo->createDate = seconds;
        photo->modificationDate = -(seconds / 2);
        const photoItem item = fetched();
        EXPECT_EQ(item.createDate.timeSpec(), Qt::UTC) << seconds;
        EXPECT_EQ(item.createDate.toSecsSinceEpoch(), SecondsTo2001 + seconds) << seconds;
        EXPECT_EQ(item.modifyDate.timeSpec(), Qt::UTC) << seconds;
        EXPECT_EQ(item.modifyDate.toSecsSinceEpoch(), SecondsTo2001 - seconds / 2) << seconds;
    }
}

TEST_F(PhotoQuery, CountsDatesInUtcForAManagerMadeOffUtc)
{
    const TimeZone local("EAST-9");
    photo_manager eastern(&device);
    eastern.m_pCameraDB = new CameraDB();
    eastern.m_pCameraDB->assets[1] = new Camera_Data();
    photoItem item;
    ASSERT_TRUE(eastern.getPhoto(1, &item));
    EXPECT_EQ(item.createDate.toString(Qt::ISODate), QStringLiteral("2001-01-01T00:00:00Z"));
    EXPECT_EQ(item.modifyDate.toString(Qt::ISODate), QStringLiteral("2001-01-01T00:00:00Z"));
}

TEST_F(PhotoQuery, CountsDatesFromItsOwnReference)
{
    manager.m_refDate = QDateTime(QDate(2010, 2, 3), QTime(4, 5, 6), Qt::UTC);
    EXPECT_EQ(fetched().createDate, QDateTime(QDate(2010, 2, 3), QTime(4, 5, 11), Qt::UTC));
}

// --- Source files.

TEST_F(PhotoQuery, LeavesTheSourceFileToTheHost)
{
    host.setDeviceFile(PhotoPath, "bytes");
    openDevice();
    QByteArray data("kept");
    EXPECT_EQ(manager.getSourcePhoto(Key, data), 0);
    EXPECT_EQ(manager.getSourcePhoto(12345, data), 0);
    EXPECT_EQ(data, QByteArray("kept"));
    EXPECT_EQ(host.trace(), Lines());
}

// --- Threads.

TEST_F(PhotoQueryThreads, HoldTheRecordLockWhileTheDeviceIsAsked)
{
    host.setDeviceFile(PhotoPath, "bytes");
    photo->originalFileSize = 0;
    openDevice();
    std::vector<bool> freeElsewhere;
    const auto look = [&] { freeElsewhere.push_back(tryLockElsewhere(manager.m_recMutex)); };
    host.onCall("vDevFileSize", 1, look);
    host.onCall("vDevFileSize", 2, look);
    fetched();
    EXPECT_EQ(freeElsewhere, (std::vector<bool>{false, false}));
}

TEST_F(PhotoQueryThreads, ReleaseTheRecordLockOnEveryPath)
{
    photoItem item;
    openDevice();
    EXPECT_FALSE(manager.getPhoto(Key, &item)); // no file
    EXPECT_TRUE(tryLockElsewhere(manager.m_recMutex));
    EXPECT_FALSE(manager.getPhoto(Key, nullptr));
    EXPECT_TRUE(tryLockElsewhere(manager.m_recMutex));
    EXPECT_FALSE(manager.getPhoto(12345, &item));
    EXPECT_TRUE(tryLockElsewhere(manager.m_recMutex));
    host.setDeviceFile(PhotoPath, "bytes");
    EXPECT_TRUE(manager.getPhoto(Key, &item));
    EXPECT_TRUE(tryLockElsewhere(manager.m_recMutex));
}

TEST_F(PhotoQueryThreads, MayHoldTheRecordLockAlready)
{
    photoItem item;
    manager.m_recMutex.lock();
    EXPECT_TRUE(manager.getPhoto(Key, &item));
    manager.m_recMutex.unlock();
}

TEST_F(PhotoQueryThreads, ShareOneLibraryAndEachSizeIsLearntOnce)
{
    constexpr int Assets = 50;
    constexpr int Threads = 4;
    for (quint64 key = 1; key <= Assets; ++key) {
        Camera_Data *asset = manager.m_pCameraDB->assets.contains(key) ? photo : addAsset(key);
        asset->fileName = QStringLiteral("%1.JPG").arg(key);
        asset->originalFileSize = 0;
        host.lieInSize("DCIM/100APPLE/" + QByteArray::number(key) + ".JPG",
                       static_cast<qint64>(1000 + key));
    }
    openDevice();

    std::atomic<int> right{0};
    const auto fetchAll = [&] {
        for (quint64 key = 1; key <= Assets; ++key) {
            photoItem item;
            if (manager.getPhoto(key, &item) && item.id == key && item.fileSize == 1000 + key)
                ++right;
        }
    };
    std::vector<std::thread> threads;
    threads.reserve(Threads);
    for (int i = 0; i < Threads; ++i)
        threads.emplace_back(fetchAll);
    for (std::thread &thread : threads)
        thread.join();

    EXPECT_EQ(right, Assets * Threads);
    EXPECT_EQ(host.callCount("vDevFileSize"), Assets * Threads + Assets);
}

} // namespace
