#include "boundary/photo_records.h"
#include "cameradb/camera_db_parse.h"
#include "ios/parse_fixture.h"
#include "ios/thumbnail_fixture.h"
#include "support/fake_host.h"
#include "support/photos_database.h"
#include "support/row_name.h"
#include "support/run_together.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <functional>
#include <memory>
#include <ostream>
#include <random>
#include <string>
#include <thread>
#include <vector>

// What a host may do with parsed libraries on several threads at a time: every two operations
// that may run side by side do, then eight in teams chosen by chance.

namespace {

using Ids = QList<quint64>;

const int Photos = 24; // keys 1 to 24, of which the last four are in no album
const int Assets = 28; // and four videos

Ids keysFrom(quint64 first, quint64 last)
{
    Ids keys;
    for (quint64 key = first; key <= last; ++key)
        keys.append(key);
    return keys;
}

// A device and its manager. Even keys have a ready picture, odd ones a packed one. Every
// device's contents bear its name.
class Library
{
public:
    static constexpr quint64 Roll = 101;
    static constexpr quint64 User = 102;   // members 3 to 9 and, at first, NoAsset
    static constexpr quint64 Edited = 103; // of no members, for those who edit
    static constexpr quint64 NoAsset = 999;
    static constexpr quint64 Loose = 21; // a photo that no edit takes out of the library

    Library(FakeHost &host, const char *name) : m_host(host), m_name(name)
    {
        device.path = QString::fromLatin1(name);
        device.localData = m_work.path() + QLatin1Char('/');
        host.setDeviceFile("/PhotoData/Photos.sqlite", database().bytes(), m_name);
        host.setDeviceFile("/Photos/Sync/CurrentLibraryUUID.plist",
                           "<plist version=\"1.0\"><dict><key>libraryUUID</key><string>" + m_name +
                               "</string></dict></plist>",
                           m_name);
        setPictures();
        renew();
    }

    // An unparsed manager in place of the old one.
    void renew() { manager = std::make_unique<photo_manager>(&device); }

    // Every operation tells whether its results are right.

    bool uuidIsRight() { return manager->getUUID() == QString::fromLatin1(m_name); }
    bool photoListIsRight() { return manager->photoIDs() == keysFrom(1, Assets); }
    bool albumListIsRight()
    {
        return manager->albumIDs().mid(0, 6) ==
               Ids{synthetic::Library, synthetic::Panorama, synthetic::Video, Roll, User, Edited};
    }

    bool photoIsRight(quint64 key)
    {
        photoItem item;
        return manager->getPhoto(key, &item) && item.id == key &&
               item.uuid == m_name + QByteArray::number(key) && item.fileSize == 1000 + key &&
               item.type == (key > Photos ? 2 : 3) &&
               item.path == QLatin1String("DCIM/100APPLE/") + item.name;
    }

    bool albumIsRight()
    {
        albumItem album;
        return manager->getAlbum(User, &album) && album.photoIDs == keysFrom(3, 9) &&
               album.name == QString::fromLatin1(m_name);
    }

    bool libraryAlbumIsRight()
    {
        albumItem album;
        const bool isThere = manager->getAlbum(synthetic::Library, &album);
        album.photoIDs.removeAll(NoAsset); // until an edit takes it out
        return isThere && album.photoIDs.mid(0, 8) == keysFrom(Loose, Assets);
    }

    bool readyPictureIsRight(quint64 key)
    {
        QByteArray picture("old");
        return manager->getPhotoThumbnail(key, picture) == 0 && picture == readyPicture(key);
    }

    bool packedPictureIsRight(quint64 key)
    {
        QByteArray picture;
        return manager->getPhotoThumbnail(key, picture) == 0 && picture == m_packed.value(key);
    }

    bool sourceStaysUntouched(quint64 key)
    {
        QByteArray bytes("old");
        return manager->getSourcePhoto(key, bytes) == 0 && bytes == "old";
    }

    bool takesNewPhoto()
    {
        photoItem photo;
        return manager->addPhoto2Album(&photo, Edited) == 0 && photo.id > Assets &&
               photo.uuid.size() == 16;
    }

    bool takesKnownPhoto()
    {
        photoItem photo;
        photo.id = Loose;
        albumItem album;
        album.id = Edited;
        return manager->addPhoto2Album(&photo, &album) == 0 && album.photoIDs == Ids{Loose};
    }

    bool makesChangesAndHidesAlbum()
    {
        albumItem made;
        made.photoIDs = {1, 2, 3};
        const int result = manager->addAlbum(&made);
        const bool isMade = made.id > Edited && result == static_cast<int>(made.id);
        made.name = QStringLiteral("shorter");
        made.photoIDs = {2};
        albumItem changed;
        const bool isChanged = manager->updateAlbum(&made) == 0 &&
                               manager->getAlbum(made.id, &changed) &&
                               changed.photoIDs == made.photoIDs && changed.name == made.name;
        return isMade && isChanged && manager->rmAlbum(made.id) == 0;
    }

    bool emptiesAlbum()
    {
        albumItem album;
        album.id = Edited;
        album.name = QStringLiteral("edited");
        return manager->updateAlbum(&album) == 0;
    }

    // Takes out the photos that others added meanwhile, too.
    bool takesPhotoOut()
    {
        photoItem photo;
        photo.path = QStringLiteral("/"); // is there, so that only the library decides
        albumItem library;
        library.id = synthetic::Library;
        library.photoIDs = keysFrom(Loose, Assets);
        photoItem gone;
        return manager->addPhoto2Album(&photo, synthetic::Library) == 0 &&
               manager->updateAlbum(&library) == 0 && !manager->getPhoto(photo.id, &gone);
    }

    FakeIPod device;
    std::unique_ptr<photo_manager> manager;

private:
    PhotosDatabase database() const
    {
        PhotosDatabase database;
        for (int key = 1; key <= Assets; ++key) {
            AssetRow row = key <= Photos ? photoRow(key) : videoRow(key);
            row.uuid = QByteArray(m_name + QByteArray::number(key));
            row.fileName = fileName(static_cast<quint64>(key)).toStdString();
            row.thumbnailIndex = key;
            database.rows.assets.push_back(row);
        }
        database.rows.albums = {albumRow(Roll, 1000), albumRow(User, 2), albumRow(Edited, 1550)};
        database.rows.albums[1].title = m_name.constData();
        for (int key = 1; key < static_cast<int>(Loose); ++key)
            database.join().add(int(Roll), key);
        for (const int key : {3, 4, 5, int(NoAsset), 6, 7, 8, 9})
            database.join().add(int(User), key);
        return database;
    }

    static QByteArray fileName(quint64 key)
    {
        return QByteArray::number(key) + (key > Photos ? ".MOV" : ".JPG");
    }

    QByteArray readyPicture(quint64 key) const
    {
        return "ready picture of " + m_name + QByteArray::number(key);
    }

    void setPictures()
    {
        const thumbnail::Format &format = thumbnail::smallest();
        const thumbnail::Extent extent = {31, 17};
        QByteArray records;
        for (quint64 key = 0; key <= Assets; ++key) {
            const QByteArray path = "DCIM/100APPLE/" + fileName(key);
            // Not in the database, so that the manager asks once and notes it.
            m_host.setDeviceFile(path, QByteArray(1000 + static_cast<int>(key), 's'), m_name);
            if (key % 2 == 0)
                m_host.setDeviceFile("/PhotoData/Thumbnails/V2/" + path + "/3507.JPG",
                                     readyPicture(key), m_name);
            const int seed = static_cast<int>(key) + m_name.back();
            records += thumbnail::record(format.type, extent, seed);
            m_packed[key] = thumbnail::image(format.type, extent, seed);
        }
        m_host.setDeviceFile(format.path, records, m_name);
    }

    FakeHost &m_host;
    const QByteArray m_name;
    QTemporaryDir m_work;
    QMap<quint64, QByteArray> m_packed;
};

// What decides which operations may run side by side.
enum class Kind {
    Free,       // touches nothing that another one changes
    Read,       // takes no lock, so that no edit may run meanwhile
    PackedRead, // moves the position of the one packed file as well
    LockedRead, // takes the record lock
    Edit,       // takes the record lock
};

struct Operation {
    const char *name;
    Kind kind;
    bool (*isRight)(Library &library, quint64 round);
};

void PrintTo(const Operation &operation, std::ostream *out)
{
    *out << operation.name;
}

bool takesNoLock(const Operation &operation)
{
    return operation.kind == Kind::Read || operation.kind == Kind::PackedRead;
}

bool mayRunTogether(const Operation &one, const Operation &other)
{
    if (one.kind == Kind::PackedRead && other.kind == Kind::PackedRead)
        return false;
    return !(takesNoLock(one) && other.kind == Kind::Edit) &&
           !(takesNoLock(other) && one.kind == Kind::Edit);
}

quint64 assetKey(quint64 round)
{
    return 1 + round % Assets;
}

const std::vector<Operation> &operations()
{
    static const std::vector<Operation> all = {
        {"GetUuid", Kind::Free, [](Library &it, quint64) { return it.uuidIsRight(); }},
        {"GetSourcePhoto", Kind::Free,
         [](Library &it, quint64 round) { return it.sourceStaysUntouched(assetKey(round)); }},
        {"CancelNothing", Kind::Free,
         [](Library &it, quint64) {
             it.manager->cancleParse();
             return true;
         }},
        {"PhotoCount", Kind::Read,
         [](Library &it, quint64) { return it.manager->photoCnt() == Assets; }},
        {"PhotoList", Kind::Read, [](Library &it, quint64) { return it.photoListIsRight(); }},
        {"AlbumCount", Kind::Read,
         [](Library &it, quint64) { return it.manager->albumCnt() == 6; }},
        {"AlbumList", Kind::Read, [](Library &it, quint64) { return it.albumListIsRight(); }},
        {"GetReadyThumbnail", Kind::Read,
         [](Library &it, quint64 round) {
             return it.readyPictureIsRight(2 + round * 2 % (Assets - 2));
         }},
        {"GetPackedThumbnail", Kind::PackedRead,
         [](Library &it, quint64 round) {
             return it.packedPictureIsRight(1 + round * 2 % (Assets - 2));
         }},
        {"GetPhoto", Kind::LockedRead,
         [](Library &it, quint64 round) { return it.photoIsRight(assetKey(round)); }},
        {"GetAlbum", Kind::LockedRead, [](Library &it, quint64) { return it.albumIsRight(); }},
        {"GetSyntheticAlbum", Kind::LockedRead,
         [](Library &it, quint64) { return it.libraryAlbumIsRight(); }},
        {"AddNewPhoto", Kind::Edit, [](Library &it, quint64) { return it.takesNewPhoto(); }},
        {"AddKnownPhoto", Kind::Edit, [](Library &it, quint64) { return it.takesKnownPhoto(); }},
        {"MakeChangeAndHideAlbum", Kind::Edit,
         [](Library &it, quint64) { return it.makesChangesAndHidesAlbum(); }},
        {"EmptyAlbum", Kind::Edit, [](Library &it, quint64) { return it.emptiesAlbum(); }},
        {"TakePhotoOut", Kind::Edit, [](Library &it, quint64) { return it.takesPhotoOut(); }},
    };
    return all;
}

using Works = std::vector<std::function<void()>>;

class LibraryUse : public testing::Test
{
protected:
    // Operations that may all run together.
    std::vector<Operation> team(std::size_t size)
    {
        std::vector<Operation> chosen;
        while (chosen.size() < size) {
            const Operation &one = operations()[m_random() % operations().size()];
            if (std::all_of(chosen.begin(), chosen.end(),
                            [&](const Operation &other) { return mayRunTogether(one, other); }))
                chosen.push_back(one);
        }
        return chosen;
    }

    // Each runs some times and tells of results that are wrong.
    static void addWorks(Library &library, const std::vector<Operation> &team, Works *works)
    {
        std::string names;
        for (const Operation &operation : team)
            names += std::string(" ") + operation.name;
        for (const Operation &operation : team) {
            works->emplace_back([&library, operation, names] {
                int wrong = 0;
                for (quint64 round = 0; round < 12; ++round)
                    wrong += operation.isRight(library, round) ? 0 : 1;
                EXPECT_EQ(wrong, 0) << operation.name << " among" << names;
            });
        }
    }

    FakeHost host{FakeHost::Disk::Real};
    std::mt19937 m_random{1};
};

// --- Pairs.

class LibraryPairThreads : public LibraryUse, public testing::WithParamInterface<Operation>
{
};

TEST_P(LibraryPairThreads, RunBesideAllThatMayRunBesideThem)
{
    int pairs = 0;
    for (const Operation &other : operations()) {
        if (!mayRunTogether(GetParam(), other))
            continue;
        Library library(host, "phone-a");
        ASSERT_TRUE(library.manager->parseLib());
        Works works;
        addWorks(library, {GetParam(), other}, &works);
        runTogether(works);
        ++pairs;
    }
    RecordProperty("pairs", pairs);
    std::printf("%s ran beside %d operations\n", GetParam().name, pairs);
}

INSTANTIATE_TEST_SUITE_P(Operations, LibraryPairThreads, testing::ValuesIn(operations()),
                         rowName<Operation>);

// --- Teams.

using LibraryTeamThreads = LibraryUse;

TEST_F(LibraryTeamThreads, OfEightUseOneLibrary)
{
    const int teams = 24;
    for (int i = 0; i < teams; ++i) {
        Library library(host, "phone-a");
        ASSERT_TRUE(library.manager->parseLib());
        Works works;
        addWorks(library, team(8), &works);
        runTogether(works);
    }
    RecordProperty("teams", teams);
    std::printf("%d teams of 8 threads\n", teams);
}

TEST_F(LibraryTeamThreads, UseTwoDevicesAtOnce)
{
    const int teams = 12;
    for (int i = 0; i < teams; ++i) {
        Library first(host, "phone-a");
        Library second(host, "phone-b");
        ASSERT_TRUE(first.manager->parseLib() && second.manager->parseLib());
        Works works;
        addWorks(first, team(4), &works);
        addWorks(second, team(4), &works);
        runTogether(works);
    }
    RecordProperty("teams", teams);
    std::printf("%d teams of 4 and 4 threads\n", teams);
}

TEST_F(LibraryTeamThreads, UseOneDeviceWhileAnotherIsParsed)
{
    for (int i = 0; i < 6; ++i) {
        Library used(host, "phone-a");
        Library parsed(host, "phone-b");
        ASSERT_TRUE(used.manager->parseLib());
        Works works;
        addWorks(used, team(7), &works);
        bool isParsed = false;
        works.emplace_back([&] { isParsed = parsed.manager->parseLib(); });
        runTogether(works);
        EXPECT_TRUE(isParsed);
        EXPECT_TRUE(parsed.photoListIsRight() && parsed.albumListIsRight());
        EXPECT_TRUE(parsed.uuidIsRight() && parsed.albumIsRight());
    }
}

TEST_F(LibraryTeamThreads, UseOneDeviceWhileTheParseOfAnotherIsCancelled)
{
    Library used(host, "phone-a");
    Library cancelled(host, "phone-b");
    ASSERT_TRUE(used.manager->parseLib());
    host.clearRecords();
    std::atomic<bool> isBegun{false};
    std::atomic<bool> isCancelled{false};
    host.onCall("localDataPath", 1, [&] {
        isBegun = true;
        while (!isCancelled)
            std::this_thread::yield();
    });
    bool isParsed = true;
    int photosSeen = -1;
    Works works;
    addWorks(used, team(6), &works);
    works.emplace_back([&] { isParsed = cancelled.manager->parseLib(); });
    works.emplace_back([&] {
        while (!isBegun)
            std::this_thread::yield();
        ::cancleParse();
        isCancelled = true;
        cancelled.manager->cancleParse();
        photosSeen = cancelled.manager->photoCnt();
    });
    runTogether(works);
    EXPECT_FALSE(isParsed);
    EXPECT_EQ(photosSeen, 0);
    EXPECT_TRUE(cancelled.manager->parseLib()) << "the next parse";
    EXPECT_TRUE(cancelled.photoListIsRight() && cancelled.albumIsRight());
}

TEST_F(LibraryTeamThreads, OfManyWaitForOneParse)
{
    Library library(host, "phone-a");
    std::atomic<int> arrived{0};
    std::atomic<int> early{0};
    const int waiters = 7;
    const auto waitForTheEnd = [&] {
        ++arrived;
        library.manager->cancleParse();
        if (!library.photoListIsRight() || !library.uuidIsRight())
            ++early;
    };
    std::vector<std::thread> threads;
    host.onCall("isAccessBlocked", 1, [&] {
        for (int i = 0; i < waiters; ++i)
            threads.emplace_back(waitForTheEnd);
        while (arrived < waiters)
            std::this_thread::yield();
    });
    EXPECT_TRUE(library.manager->parseLib());
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(threads.size(), std::size_t(waiters));
    EXPECT_EQ(early, 0) << "came back before the end of the parse";
    EXPECT_EQ(library.manager->m_semParse.available(), 1);
}

} // namespace
