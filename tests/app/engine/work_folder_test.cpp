#include "engine/work_folder.h"

#include "base/error.h"
#include "support/device_folder.h"
#include "support/threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <fcntl.h>
#include <filesystem>
#include <limits>
#include <optional>
#include <sys/file.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr WorkFolder::Origin named = WorkFolder::Origin::Named;
constexpr char mark[] = "cache/work/1/.photolib-work-folder";

// A device and a place for work folders beside it.
struct Places {
    ScratchFolder scratch;
    QByteArray device = scratch.path("device");
    QByteArray work = scratch.path("cache/work/1");

    Places() { scratch.makeFolder("device"); }
};

TEST(WorkFolder, IsCreatedWithItsParentsForTheUserAlone)
{
    const Places places;
    const WorkFolder folder(places.work, places.device, named);
    EXPECT_EQ(QString::fromUtf8(places.work) + '/', folder.localDataPath());
    EXPECT_TRUE(places.scratch.exists("cache/work/1"));
}

TEST(WorkFolder, DisappearsWithAllThatItCreated)
{
    const Places places;
    {
        const WorkFolder folder(places.work, places.device, named);
        places.scratch.write("cache/work/1/Photos.sqlite", "copy");
        places.scratch.write("cache/work/1/Photos.sqlite-wal", "copy");
    }
    EXPECT_FALSE(places.scratch.exists("cache"));
}

TEST(WorkFolder, LeavesWhatWasThereBefore)
{
    const Places places;
    places.scratch.write("cache/work/1/other", "text");
    {
        const WorkFolder folder(places.work, places.device, named);
        places.scratch.write("cache/work/1/Photos.sqlite", "copy");
    }
    EXPECT_FALSE(places.scratch.exists("cache/work/1/Photos.sqlite"));
    EXPECT_EQ("text", places.scratch.read("cache/work/1/other"));
}

TEST(WorkFolder, ClearsTheCopiesOfAnEarlierParse)
{
    const Places places;
    places.scratch.write(mark, "");
    for (const char *suffix : {"", "-wal", "-shm", "-journal"})
        places.scratch.write(QByteArray("cache/work/1/Photos.sqlite") + suffix, "old");
    const WorkFolder folder(places.work, places.device, named);
    EXPECT_EQ(QList<QByteArray>{places.scratch.path(mark)},
              places.scratch.everythingIn("cache/work/1"));
}

TEST(WorkFolder, RemovesALinkAndNotWhatItNames)
{
    const Places places;
    places.scratch.write("precious", "text");
    places.scratch.write(mark, "");
    places.scratch.makeLink("cache/work/1/Photos.sqlite", places.scratch.path("precious"));
    const WorkFolder folder(places.work, places.device, named);
    EXPECT_FALSE(places.scratch.exists("cache/work/1/Photos.sqlite"));
    EXPECT_EQ("text", places.scratch.read("precious"));
}

TEST(WorkFolder, LeavesADatabaseThatIsNotItsOwn)
{
    for (const char *name : {"Photos.sqlite", "Photos.sqlite-wal", "Photos.sqlite-journal"}) {
        const Places places;
        const QByteArray path = QByteArray("cache/work/1/") + name;
        places.scratch.write(path, "precious");
        EXPECT_THROW(WorkFolder(places.work, places.device, named), Error) << name;
        EXPECT_EQ("precious", places.scratch.read(path));
        EXPECT_FALSE(places.scratch.exists(mark));
    }
}

TEST(WorkFolder, TakesNoLinkForItsMark)
{
    const Places places;
    places.scratch.write("cache/work/1/Photos.sqlite", "precious");
    places.scratch.write("file", "");
    places.scratch.makeLink(mark, places.scratch.path("file"));
    EXPECT_THROW(WorkFolder(places.work, places.device, named), Error);
    EXPECT_EQ("precious", places.scratch.read("cache/work/1/Photos.sqlite"));
}

TEST(WorkFolder, OfTheProgramsChoiceHoldsCopiesOfEarlierVersions)
{
    const Places places;
    places.scratch.write("cache/work/1/Photos.sqlite", "old");
    const WorkFolder folder(places.work, places.device, WorkFolder::Origin::Default);
    EXPECT_FALSE(places.scratch.exists("cache/work/1/Photos.sqlite"));
}

TEST(WorkFolder, MustNotBeALink)
{
    const Places places;
    places.scratch.write("other/.photolib-work-folder", "");
    places.scratch.write("other/Photos.sqlite", "precious");
    places.scratch.makeFolder("cache/work");
    places.scratch.makeLink("cache/work/1", places.scratch.path("other"));
    for (const char *end : {"", "/"}) {
        for (const auto origin : {named, WorkFolder::Origin::Default})
            EXPECT_THROW(WorkFolder(places.work + end, places.device, origin), Error);
    }
    EXPECT_EQ("precious", places.scratch.read("other/Photos.sqlite"));
}

TEST(WorkFolder, MustNotBeAnotherUsers)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only the superuser can give a folder to another user";
    const Places places;
    places.scratch.write(mark, "");
    places.scratch.write("cache/work/1/Photos.sqlite", "precious");
    ASSERT_EQ(0, ::chown(places.work.constData(), 12345, 12345));
    EXPECT_THROW(WorkFolder(places.work, places.device, named), Error);
    EXPECT_EQ("precious", places.scratch.read("cache/work/1/Photos.sqlite"));
}

TEST(WorkFolder, MustNotLieInTheDevice)
{
    const Places places;
    places.scratch.write("device/PhotoData/Photos.sqlite", "database");
    places.scratch.makeLink("link", places.scratch.path("device/PhotoData"));
    for (const char *path : {"device", "device/PhotoData", "device/PhotoData/", "device/new/work",
                             "link", "cache/../device/PhotoData"}) {
        places.scratch.makeFolder("cache");
        EXPECT_THROW(WorkFolder(places.scratch.path(path), places.device, named), Error) << path;
    }
    EXPECT_EQ("database", places.scratch.read("device/PhotoData/Photos.sqlite"));
    EXPECT_FALSE(places.scratch.exists("device/new"));
}

TEST(WorkFolder, MayLieAroundTheDeviceOrBesideIt)
{
    const Places places;
    EXPECT_NO_THROW(WorkFolder(places.scratch.root(), places.device, named));
    EXPECT_NO_THROW(WorkFolder(places.device + "-work", places.device, named));
}

TEST(WorkFolder, NeedsANameInUtf8)
{
    const Places places;
    EXPECT_THROW(WorkFolder(places.scratch.path("\xff"), places.device, named), Error);
    EXPECT_FALSE(places.scratch.exists("\xff"));
}

TEST(WorkFolder, NeedsAFolderAndNotAFile)
{
    const Places places;
    places.scratch.write("file", "text");
    EXPECT_THROW(WorkFolder(places.scratch.path("file"), places.device, named), Error);
    EXPECT_THROW(WorkFolder(places.scratch.path("file/x"), places.device, named), Error);
    EXPECT_EQ("text", places.scratch.read("file"));
}

TEST(WorkFolder, IsLockedAsLongAsItIsUsed)
{
    const Places places;
    places.scratch.makeFolder("cache/work/1");
    const UniqueFd other(::open(places.work.constData(), O_RDONLY | O_DIRECTORY));
    {
        const WorkFolder folder(places.work, places.device, named);
        EXPECT_NE(0, ::flock(other.get(), LOCK_EX | LOCK_NB));
    }
    EXPECT_EQ(0, ::flock(other.get(), LOCK_EX | LOCK_NB));
}

TEST(WorkFolder, TellsOfNoWaitWhereThereIsNone)
{
    const Places places;
    int waits = 0;
    const auto count = [&] { ++waits; };
    {
        const WorkFolder folder(places.work, places.device, named, count);
    }
    const WorkFolder again(places.work, places.device, named, count);
    EXPECT_EQ(0, waits);
}

TEST(WorkFolder, TellsOfAWaitBeforeItWaits)
{
    const Places places;
    std::optional<WorkFolder> first;
    first.emplace(places.work, places.device, named);
    // Without the call nobody would end the wait.
    int waits = 0;
    const WorkFolder second(places.work, places.device, named, [&] {
        ++waits;
        first.reset();
    });
    EXPECT_EQ(1, waits);
    EXPECT_TRUE(places.scratch.exists("cache/work/1"));
}

TEST(WorkFolder, OfAKilledProgramIsRemoved)
{
    const Places places;
    places.scratch.write("cache/work/dead/Photos.sqlite", "copy");
    places.scratch.write("cache/work/dead/Photos.sqlite-wal", "copy");
    places.scratch.write("cache/work/dead/.photolib-work-folder", "");
    places.scratch.write("cache/work/older/Photos.sqlite", "copy");
    WorkFolder::removeDead(places.scratch.path("cache/work"));
    EXPECT_EQ(QList<QByteArray>(), places.scratch.everythingIn("cache/work"));
}

TEST(WorkFolder, OfAProgramThatLivesIsNotRemoved)
{
    const Places places;
    const WorkFolder folder(places.work, places.device, WorkFolder::Origin::Default);
    places.scratch.write("cache/work/1/Photos.sqlite", "copy");
    WorkFolder::removeDead(places.scratch.path("cache/work"));
    EXPECT_EQ("copy", places.scratch.read("cache/work/1/Photos.sqlite"));
    EXPECT_TRUE(places.scratch.exists(mark));
}

TEST(WorkFolder, IsNotRemovedThroughALinkOrWithWhatIsNotTheProgramsOwn)
{
    const Places places;
    places.scratch.write("precious/Photos.sqlite", "text");
    places.scratch.makeFolder("cache/work");
    places.scratch.makeLink("cache/work/link", places.scratch.path("precious"));
    places.scratch.write("cache/work/other/letter", "text");
    WorkFolder::removeDead(places.scratch.path("cache/work"));
    EXPECT_EQ("text", places.scratch.read("precious/Photos.sqlite"));
    EXPECT_EQ("text", places.scratch.read("cache/work/other/letter"));
}

TEST(WorkFolder, HasRoomForWhatFitsOnItsDisk)
{
    const Places places;
    const WorkFolder folder(places.work, places.device, named);
    const std::filesystem::path path = places.work.toStdString();
    // Others write to the disk, too.
    constexpr qint64 slack = qint64(64) << 30;
    const auto room = static_cast<qint64>(std::filesystem::space(path).available);
    EXPECT_NO_THROW(folder.requireRoom(0));
    EXPECT_NO_THROW(folder.requireRoom(room / 2));
    EXPECT_THROW(folder.requireRoom(room + slack), Error);
    EXPECT_THROW(folder.requireRoom(std::numeric_limits<qint64>::max()), Error);
}

// Each removes at its end what the others are about to use.
TEST(WorkFolderThreads, IsThereForTheOneThatHasIt)
{
    const Places places;
    std::atomic<int> missing{0};
    std::atomic<int> users{0};
    std::atomic<int> most{0};
    const auto use = [&](int) {
        for (int round = 0; round < 100; ++round) {
            const WorkFolder folder(places.work, places.device, named);
            most = std::max<int>(most, ++users);
            std::this_thread::yield();
            missing += places.scratch.exists("cache/work/1") ? 0 : 1;
            --users;
        }
    };
    runOnThreads(4, use);
    EXPECT_EQ(0, missing);
    EXPECT_EQ(1, most);
}

TEST(WorkFolderThreads, BelongsToOneAtATime)
{
    const Places places;
    places.scratch.makeFolder("cache/work/1");
    std::atomic<int> users{0};
    std::atomic<int> most{0};
    const auto use = [&](int) {
        for (int round = 0; round < 50; ++round) {
            const WorkFolder folder(places.work, places.device, named);
            most = std::max<int>(most, ++users);
            std::this_thread::yield();
            --users;
        }
    };
    runOnThreads(2, use);
    EXPECT_EQ(1, most);
}

} // namespace
