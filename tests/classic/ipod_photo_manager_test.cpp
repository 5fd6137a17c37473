#include "boundary/photo_records.h"
#include "classic/ipod_photo_manager.h"
#include "support/fake_host.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <sys/stat.h>

namespace {

using Lines = std::vector<std::string>;
using Log = std::vector<LogLine>;

const quint64 AboveThirtyTwoBits = quint64(1) << 32;

itdb_photo variant(const QString &fileName, qint32 offset, qint32 size)
{
    itdb_photo photo;
    photo.fileName = fileName;
    photo.offset = offset;
    photo.size = size;
    return photo;
}

photoItem oldItem()
{
    photoItem item;
    item.id = 999;
    item.uuid = "old uuid";
    item.name = QStringLiteral("old name");
    item.type = 2;
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

// The fields that a classic library knows nothing of.
void expectUnknownFieldsKept(const photoItem &item)
{
    EXPECT_EQ(item.uuid, oldItem().uuid);
    EXPECT_EQ(item.name, oldItem().name);
    EXPECT_EQ(item.fileSize, oldItem().fileSize);
    EXPECT_EQ(item.trashedDate, oldItem().trashedDate);
    EXPECT_EQ(item.avalancheUUID, oldItem().avalancheUUID);
    EXPECT_EQ(item.sortToken, oldItem().sortToken);
}

void expectUntouched(const photoItem &item)
{
    expectUnknownFieldsKept(item);
    EXPECT_EQ(item.id, oldItem().id);
    EXPECT_EQ(item.type, oldItem().type);
    EXPECT_EQ(item.path, oldItem().path);
    EXPECT_EQ(item.thumbPath, oldItem().thumbPath);
    EXPECT_EQ(item.orientation, oldItem().orientation);
    EXPECT_EQ(item.height, oldItem().height);
    EXPECT_EQ(item.width, oldItem().width);
    EXPECT_EQ(item.duration, oldItem().duration);
    EXPECT_EQ(item.createDate, oldItem().createDate);
    EXPECT_EQ(item.modifyDate, oldItem().modifyDate);
}

albumItem oldAlbum()
{
    albumItem album;
    album.id = 998;
    album.uuid = "old album uuid";
    album.name = QStringLiteral("old album");
    album.type = 1;
    album.photoIDs = {70, 71};
    return album;
}

void expectUntouched(const albumItem &album)
{
    EXPECT_EQ(album.id, oldAlbum().id);
    EXPECT_EQ(album.uuid, oldAlbum().uuid);
    EXPECT_EQ(album.name, oldAlbum().name);
    EXPECT_EQ(album.type, oldAlbum().type);
    EXPECT_EQ(album.photoIDs, oldAlbum().photoIDs);
}

// A manager, and a database with two photos and one album.
class ClassicLibrary : public testing::Test
{
protected:
    ClassicLibrary() : manager(std::make_unique<iPodPhotoManager>(&device))
    {
        device.iosDevice = false;
        itdb_trk item;
        item.timeStamp = 1400000000;
        item.texts[0] = QStringLiteral("unread");
        database.library.addPhoto(5, item);
        database.library.addPhoto(0xfffffff0, itdb_trk());
        itdb_pl album;
        album.name = QStringLiteral("Holidays");
        album.photoIDs = {5, 0xfffffff0, 5};
        database.library.addAlbum(8, album);
        host.setPhotoDatabase(&database);
    }

    void parse()
    {
        ASSERT_TRUE(manager->parseLib());
        host.clearRecords();
    }

    void expectEmptyAnswers()
    {
        photoItem item = oldItem();
        albumItem album = oldAlbum();
        QByteArray data("kept");
        EXPECT_EQ(manager->photoCnt(), 0);
        EXPECT_EQ(manager->photoIDs(), QList<quint64>());
        EXPECT_FALSE(manager->getPhoto(5, &item));
        EXPECT_EQ(manager->getPhotoThumbnail(5, data), 0);
        EXPECT_EQ(manager->getSourcePhoto(5, data), 0);
        EXPECT_EQ(manager->albumCnt(), 0);
        EXPECT_EQ(manager->albumIDs(), QList<quint64>());
        EXPECT_FALSE(manager->getAlbum(8, &album));
        EXPECT_TRUE(manager->getUUID().isNull());
        expectUntouched(item);
        expectUntouched(album);
        EXPECT_EQ(data, QByteArray("kept"));
    }

    FakeHost host;
    FakeIPod device;
    FakePhotoDB database;
    std::unique_ptr<iPodPhotoManager> manager;
};

using ClassicParse = ClassicLibrary;
using ClassicPhoto = ClassicLibrary;
using ClassicAlbum = ClassicLibrary;
using ClassicEdits = ClassicLibrary;

// --- The object.

TEST_F(ClassicLibrary, IsItsThreeMembersInOrder)
{
    const auto *words = reinterpret_cast<const char *>(manager.get());
    EXPECT_EQ(reinterpret_cast<const char *>(&manager->m_pIPod) - words, 8);
    EXPECT_EQ(reinterpret_cast<const char *>(&manager->m_pPhotoDB) - words, 16);
    EXPECT_EQ(reinterpret_cast<const char *>(&manager->m_pPhotoLib) - words, 24);
    EXPECT_EQ(sizeof(iPodPhotoManager), 32U);
}

TEST_F(ClassicLibrary, StartsWithItsDeviceOnly)
{
    EXPECT_EQ(manager->m_pIPod, &device);
    EXPECT_EQ(manager->m_pPhotoDB, nullptr);
    EXPECT_EQ(manager->m_pPhotoLib, nullptr);
    EXPECT_EQ(host.trace(), Lines());
}

TEST_F(ClassicLibrary, AnswersEmptyBeforeAParseAndAsksTheHostNothing)
{
    expectEmptyAnswers();
    EXPECT_EQ(host.trace(), Lines());
}

TEST_F(ClassicLibrary, ReleasesNothingWhenDestroyed)
{
    parse();
    manager.reset();
    EXPECT_EQ(host.trace(), Lines());
    EXPECT_FALSE(database.isReleased());
}

TEST_F(ClassicLibrary, HasANullUuidEvenWhenParsed)
{
    parse();
    EXPECT_TRUE(manager->getUUID().isNull());
    EXPECT_EQ(host.trace(), Lines());
}

TEST_F(ClassicLibrary, DoesNothingOnACancel)
{
    manager->cancleParse();
    parse();
    manager->cancleParse();
    EXPECT_EQ(host.trace(), Lines());
    EXPECT_EQ(manager->photoCnt(), 2);
}

// --- parseLib.

TEST_F(ClassicParse, AsksForTheDevicesDatabaseParsesItAndTakesItsLibrary)
{
    EXPECT_TRUE(manager->parseLib());
    EXPECT_EQ(host.trace(), (Lines{"getPhotoDBInt() -> db", "iitdb::parse() -> 0",
                                   "iitdb::photoLib() -> library"}));
    EXPECT_EQ(host.databaseDevice(), &device);
    EXPECT_EQ(manager->m_pPhotoDB, &database);
    EXPECT_EQ(manager->m_pPhotoLib, &database.library);
}

TEST_F(ClassicParse, FailsWithoutADatabase)
{
    host.setPhotoDatabase(nullptr);
    EXPECT_FALSE(manager->parseLib());
    EXPECT_EQ(host.log(), Log{failure("can not parse photo db in ipod")});
    EXPECT_EQ(host.trace(), (Lines{"getPhotoDBInt() -> null",
                                   "Log(\"PHOTOLIB\", 2, \"can not parse photo db in ipod\")",
                                   "releaseITunesDBInt()"}));
    EXPECT_EQ(manager->m_pPhotoDB, nullptr);
    EXPECT_EQ(manager->m_pPhotoLib, nullptr);
    expectEmptyAnswers();
}

TEST_F(ClassicParse, FailsAndReleasesADatabaseThatDoesNotParse)
{
    for (const int result : {1, -1}) {
        FakePhotoDB broken;
        broken.parseResult = result;
        host.setPhotoDatabase(&broken);
        host.clearRecords();
        EXPECT_FALSE(manager->parseLib());
        EXPECT_EQ(host.trace(),
                  (Lines{"getPhotoDBInt() -> db", "iitdb::parse() -> " + std::to_string(result),
                         "Log(\"PHOTOLIB\", 2, \"can not parse photo db in ipod\")",
                         "releaseITunesDBInt()"}));
        EXPECT_TRUE(broken.isReleased());
        EXPECT_EQ(manager->m_pPhotoDB, nullptr);
        EXPECT_EQ(manager->m_pPhotoLib, nullptr);
        expectEmptyAnswers();
    }
}

TEST_F(ClassicParse, ForgetsAReleasedDatabaseAlsoWhenTheHostKeepsThePointer)
{
    host.setReleaseClears(false);
    database.parseResult = 1;
    EXPECT_FALSE(manager->parseLib());
    EXPECT_EQ(manager->m_pPhotoDB, nullptr);
}

TEST_F(ClassicParse, ReleasesTheOldDatabaseBeforeItAsksForANewOne)
{
    for (const bool clears : {true, false}) {
        host.setReleaseClears(clears);
        FakePhotoDB first;
        FakePhotoDB second;
        second.library.addPhoto(77, itdb_trk());
        host.setPhotoDatabase(&first);
        iPodPhotoManager again(&device);
        ASSERT_TRUE(again.parseLib());
        host.clearRecords();
        host.onCall("getPhotoDBInt", 1, [&] {
            EXPECT_EQ(again.m_pPhotoDB, nullptr);
            host.setPhotoDatabase(&second);
        });

        EXPECT_TRUE(again.parseLib());
        EXPECT_EQ(host.trace(), (Lines{"releaseITunesDBInt()", "getPhotoDBInt() -> db",
                                       "iitdb::parse() -> 0", "iitdb::photoLib() -> library"}));
        EXPECT_TRUE(first.isReleased());
        EXPECT_FALSE(second.isReleased());
        EXPECT_EQ(again.photoIDs(), QList<quint64>{77});
        host.onCall("getPhotoDBInt", 1, nullptr);
    }
}

TEST_F(ClassicParse, IsEmptyAgainAfterASecondOneThatFails)
{
    parse();
    host.onCall("getPhotoDBInt", 1, [&] { host.setPhotoDatabase(nullptr); });
    EXPECT_FALSE(manager->parseLib());
    EXPECT_EQ(host.trace(), (Lines{"releaseITunesDBInt()", "getPhotoDBInt() -> null",
                                   "Log(\"PHOTOLIB\", 2, \"can not parse photo db in ipod\")",
                                   "releaseITunesDBInt()"}));
    EXPECT_TRUE(database.isReleased());
    expectEmptyAnswers();
}

TEST_F(ClassicParse, AnswersEmptyForADatabaseWithoutALibrary)
{
    database.hasLibrary = false;
    EXPECT_TRUE(manager->parseLib());
    EXPECT_EQ(host.log(), Log());
    expectEmptyAnswers();
}

// --- Counts and lists.

TEST_F(ClassicLibrary, CountsAndListsPhotosInTheDatabasesOrder)
{
    database.library.photoOrder = {0xfffffff0, 5, 5};
    parse();
    EXPECT_EQ(manager->photoCnt(), 3);
    EXPECT_EQ(manager->photoIDs(), (QList<quint64>{0xfffffff0, 5, 5}));
    EXPECT_EQ(host.trace(), (Lines{"iphotolib::photoIDs()", "iphotolib::photoIDs()"}));
}

TEST_F(ClassicLibrary, CountsAndListsAlbumsInTheDatabasesOrder)
{
    database.library.albumOrder = {0x80000000, 8};
    parse();
    EXPECT_EQ(manager->albumCnt(), 2);
    EXPECT_EQ(manager->albumIDs(), (QList<quint64>{0x80000000, 8}));
    EXPECT_EQ(host.trace(), (Lines{"iphotolib::albumIDs()", "iphotolib::albumIDs()"}));
}

// --- getPhoto.

TEST_F(ClassicPhoto, FillsWhatTheDatabaseKnowsAndKeepsTheRest)
{
    parse();
    photoItem item = oldItem();
    ASSERT_TRUE(manager->getPhoto(5, &item));
    EXPECT_EQ(item.id, 5U);
    EXPECT_EQ(item.type, 3);
    EXPECT_EQ(item.path, QStringLiteral("thmb"));
    EXPECT_EQ(item.thumbPath, QStringLiteral("thmb"));
    EXPECT_EQ(item.orientation, 3);
    EXPECT_EQ(item.height, 0);
    EXPECT_EQ(item.width, 0);
    EXPECT_EQ(item.duration, 0);
    EXPECT_EQ(item.createDate.toSecsSinceEpoch(), 1400000000);
    EXPECT_TRUE(item.modifyDate.isNull());
    expectUnknownFieldsKept(item);
    EXPECT_EQ(host.trace(), Lines{"iphotolib::getPhoto(5) -> 0"});
}

TEST_F(ClassicPhoto, ReadsTimeStampsAsUnsigned)
{
    database.library.photos[5].timeStamp = 0xffffffff;
    parse();
    photoItem item;
    ASSERT_TRUE(manager->getPhoto(5, &item));
    EXPECT_EQ(item.createDate.toUTC(), QDateTime(QDate(2106, 2, 7), QTime(6, 28, 15), Qt::UTC));
    ASSERT_TRUE(manager->getPhoto(0xfffffff0, &item));
    EXPECT_EQ(item.createDate.toSecsSinceEpoch(), 0);
    EXPECT_TRUE(item.createDate.isValid());
}

TEST_F(ClassicPhoto, IsFoundByTheLowHalfOfItsKeyAndKeepsTheWholeKey)
{
    parse();
    photoItem item;
    ASSERT_TRUE(manager->getPhoto(AboveThirtyTwoBits + 5, &item));
    EXPECT_EQ(item.id, AboveThirtyTwoBits + 5);
    EXPECT_EQ(item.createDate.toSecsSinceEpoch(), 1400000000);
    EXPECT_EQ(host.trace(), Lines{"iphotolib::getPhoto(5) -> 0"});
}

TEST_F(ClassicPhoto, IsLeftAloneAndSilentlyRefusedWhenUnknown)
{
    parse();
    photoItem item = oldItem();
    EXPECT_FALSE(manager->getPhoto(6, &item));
    expectUntouched(item);
    EXPECT_EQ(host.trace(), Lines{"iphotolib::getPhoto(6) -> -1"});
}

TEST_F(ClassicPhoto, IsRefusedForANullItem)
{
    parse();
    EXPECT_FALSE(manager->getPhoto(5, nullptr));
    EXPECT_EQ(host.log(), Log());
}

// --- getAlbum.

TEST_F(ClassicAlbum, TakesItsNameAndAppendsItsPhotos)
{
    parse();
    albumItem album = oldAlbum();
    ASSERT_TRUE(manager->getAlbum(8, &album));
    EXPECT_EQ(album.id, 8U);
    EXPECT_EQ(album.name, QStringLiteral("Holidays"));
    EXPECT_EQ(album.type, 6);
    EXPECT_EQ(album.photoIDs, (QList<quint64>{70, 71, 5, 0xfffffff0, 5}));
    EXPECT_EQ(album.uuid, oldAlbum().uuid);
    EXPECT_EQ(host.trace(), Lines{"iphotolib::getAlbum(8) -> 0"});
}

TEST_F(ClassicAlbum, TakesAnEmptyNameToo)
{
    database.library.albums[8].name.clear();
    parse();
    albumItem album = oldAlbum();
    ASSERT_TRUE(manager->getAlbum(8, &album));
    EXPECT_TRUE(album.name.isEmpty());
}

TEST_F(ClassicAlbum, IsFoundByTheLowHalfOfItsKeyAndKeepsTheWholeKey)
{
    parse();
    albumItem album;
    ASSERT_TRUE(manager->getAlbum(3 * AboveThirtyTwoBits + 8, &album));
    EXPECT_EQ(album.id, 3 * AboveThirtyTwoBits + 8);
    EXPECT_EQ(host.trace(), Lines{"iphotolib::getAlbum(8) -> 0"});
}

TEST_F(ClassicAlbum, IsLeftAloneAndSilentlyRefusedWhenUnknown)
{
    parse();
    albumItem album = oldAlbum();
    EXPECT_FALSE(manager->getAlbum(9, &album));
    expectUntouched(album);
    EXPECT_EQ(host.trace(), Lines{"iphotolib::getAlbum(9) -> -1"});
}

TEST_F(ClassicAlbum, IsRefusedForANullItem)
{
    parse();
    EXPECT_FALSE(manager->getAlbum(8, nullptr));
    EXPECT_EQ(host.log(), Log());
}

// --- Edits.

TEST_F(ClassicEdits, SucceedAndChangeNothing)
{
    for (const bool parsed : {false, true}) {
        if (parsed)
            parse();
        photoItem photo = oldItem();
        albumItem album = oldAlbum();
        const quint64 key = 8;
        EXPECT_EQ(manager->addPhoto2Album(&photo, key), 0);
        EXPECT_EQ(manager->addPhoto2Album(&photo, &album), 0);
        EXPECT_EQ(manager->addAlbum(&album), 0);
        EXPECT_EQ(manager->rmAlbum(key), 0);
        EXPECT_EQ(manager->updateAlbum(&album), 0);
        expectUntouched(photo);
        expectUntouched(album);
        EXPECT_EQ(host.trace(), Lines());
    }
    EXPECT_EQ(manager->albumIDs(), QList<quint64>{8});
    EXPECT_EQ(manager->photoIDs(), (QList<quint64>{5, 0xfffffff0}));
}

TEST_F(ClassicEdits, TakeAnyArgument)
{
    for (const bool parsed : {false, true}) {
        if (parsed)
            parse();
        EXPECT_EQ(manager->addPhoto2Album(nullptr, quint64(12345)), 0);
        EXPECT_EQ(manager->addPhoto2Album(nullptr, static_cast<albumItem *>(nullptr)), 0);
        EXPECT_EQ(manager->addAlbum(nullptr), 0);
        EXPECT_EQ(manager->rmAlbum(12345), 0);
        EXPECT_EQ(manager->updateAlbum(nullptr), 0);
        EXPECT_EQ(host.trace(), Lines());
    }
}

// --- Images. The iPod's disk is the folder "E:" of a temporary one.

class ClassicImage : public ClassicLibrary
{
protected:
    ClassicImage()
    {
        device.drive = disk.filePath(QStringLiteral("E"));
        host.setUnpacked("image");
    }

    // A file below the Photos folder, whose n-th byte is n modulo 251.
    void writeFile(const QString &path, int size)
    {
        const QString whole = device.drive + QStringLiteral(":/Photos") + path;
        ASSERT_TRUE(QDir().mkpath(QFileInfo(whole).path()));
        QFile file(whole);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(content(0, size)), size);
    }

    static QByteArray content(int offset, int size)
    {
        QByteArray bytes(size, '\0');
        for (int i = 0; i < size; ++i)
            bytes[i] = static_cast<char>((offset + i) % 251);
        return bytes;
    }

    void setVariants(const QList<itdb_photo> &variants)
    {
        database.library.photos[5].thumbs = variants;
    }

    QByteArray thumbnail(quint64 id = 5)
    {
        QByteArray data("kept");
        EXPECT_EQ(manager->getPhotoThumbnail(id, data), 0);
        return data;
    }

    QByteArray source(quint64 id = 5)
    {
        QByteArray data("kept");
        EXPECT_EQ(manager->getSourcePhoto(id, data), 0);
        return data;
    }

    // The offset of the one variant that was unpacked since the last look, or -1.
    int unpackedOffset()
    {
        const std::vector<FakeHost::Unpacking> unpackings = host.unpackings();
        host.clearRecords();
        EXPECT_LE(unpackings.size(), 1U);
        return unpackings.size() == 1 ? unpackings[0].photo.offset : -1;
    }

    QTemporaryDir disk;
};

const QString OneFile = QStringLiteral(":A:B.ithmb");

TEST_F(ClassicImage, IsReadBelowThePhotosFolderOfTheIpodsDrive)
{
    writeFile(QStringLiteral("/A/B.ithmb"), 100);
    setVariants({variant(OneFile, 10, 20)});
    parse();
    EXPECT_EQ(thumbnail(), QByteArray("image"));
    const std::string drive = device.drive.toStdString();
    EXPECT_EQ(host.trace(), (Lines{"iphotolib::getPhoto(5) -> 0",
                                   "driveName() -> \"" + drive + "\"", "unpackiThmb(20) -> 0"}));

    host.clearRecords();
    EXPECT_EQ(source(), QByteArray("image"));
    EXPECT_EQ(host.trace(), (Lines{"iphotolib::getPhoto(5) -> 0",
                                   "driveName() -> \"" + drive + "\"", "unpackiThmb(20) -> 0"}));
}

TEST_F(ClassicImage, IsUnpackedFromItsBytesWithTheWholeEntry)
{
    writeFile(QStringLiteral("/A/B.ithmb"), 100);
    itdb_photo entry = variant(OneFile, 10, 20);
    entry.formatId = 1019;
    entry.width = 720;
    entry.height = 480;
    entry.horizontalPadding = 3;
    entry.verticalPadding = 4;
    setVariants({entry});
    parse();
    thumbnail();

    ASSERT_EQ(host.unpackings().size(), 1U);
    const FakeHost::Unpacking unpacking = host.unpackings()[0];
    EXPECT_EQ(unpacking.iPod, &device);
    EXPECT_EQ(unpacking.raw, content(10, 20));
    EXPECT_EQ(unpacking.outBefore, QByteArray("kept"));
    EXPECT_EQ(unpacking.photo.fileName, OneFile);
    EXPECT_EQ(unpacking.photo.offset, 10);
    EXPECT_EQ(unpacking.photo.size, 20);
    EXPECT_EQ(unpacking.photo.formatId, 1019);
    EXPECT_EQ(unpacking.photo.width, 720);
    EXPECT_EQ(unpacking.photo.height, 480);
    EXPECT_EQ(unpacking.photo.horizontalPadding, 3);
    EXPECT_EQ(unpacking.photo.verticalPadding, 4);
}

TEST_F(ClassicImage, HasEveryColonOfItsFileNameReplaced)
{
    writeFile(QStringLiteral("/A/B/C/100%1.ithmb"), 10);
    setVariants({variant(QStringLiteral(":A:B:C:100%1.ithmb"), 0, 10)});
    parse();
    EXPECT_EQ(thumbnail(), QByteArray("image"));
}

TEST_F(ClassicImage, IsTheFirstOfTheSmallestForAThumbnailAndTheLargestForASource)
{
    writeFile(QStringLiteral("/A/B.ithmb"), 70000);
    setVariants({variant(OneFile, 1, 9000), variant(OneFile, 2, 2000), variant(OneFile, 3, 2000),
                 variant(OneFile, 4, 60000)});
    parse();
    thumbnail();
    EXPECT_EQ(unpackedOffset(), 2);
    source();
    EXPECT_EQ(unpackedOffset(), 4);
}

TEST_F(ClassicImage, IsTheFirstOfTheLargestForASource)
{
    writeFile(QStringLiteral("/A/B.ithmb"), 100);
    setVariants({variant(OneFile, 1, 10), variant(OneFile, 2, 30), variant(OneFile, 3, 30),
                 variant(OneFile, 4, 20)});
    parse();
    source();
    EXPECT_EQ(unpackedOffset(), 2);
    thumbnail();
    EXPECT_EQ(unpackedOffset(), 1);
}

TEST_F(ClassicImage, IsUntouchedWithoutVariantsOrForAnUnknownPhoto)
{
    parse();
    EXPECT_EQ(thumbnail(5), QByteArray("kept"));
    EXPECT_EQ(source(5), QByteArray("kept"));
    EXPECT_EQ(thumbnail(6), QByteArray("kept"));
    EXPECT_EQ(source(6), QByteArray("kept"));
    EXPECT_EQ(host.trace(),
              (Lines{"iphotolib::getPhoto(5) -> 0", "iphotolib::getPhoto(5) -> 0",
                     "iphotolib::getPhoto(6) -> -1", "iphotolib::getPhoto(6) -> -1"}));
}

TEST_F(ClassicImage, IsFoundByTheLowHalfOfItsKey)
{
    writeFile(QStringLiteral("/A/B.ithmb"), 100);
    setVariants({variant(OneFile, 10, 20)});
    parse();
    EXPECT_EQ(thumbnail(AboveThirtyTwoBits + 5), QByteArray("image"));
    EXPECT_EQ(source(7 * AboveThirtyTwoBits + 5), QByteArray("image"));
}

TEST_F(ClassicImage, MayEndWithItsFileButNotBehindIt)
{
    writeFile(QStringLiteral("/A/B.ithmb"), 100);
    setVariants({variant(OneFile, 80, 20)});
    parse();
    EXPECT_EQ(thumbnail(), QByteArray("image"));
    EXPECT_EQ(unpackedOffset(), 80);

    setVariants({variant(OneFile, 80, 21)});
    EXPECT_EQ(thumbnail(), QByteArray("kept"));
    EXPECT_EQ(source(), QByteArray("kept"));
    EXPECT_EQ(unpackedOffset(), -1);
    EXPECT_EQ(host.log(), Log());
}

TEST_F(ClassicImage, IsUntouchedWhenItLiesBehindTheEndOfItsFile)
{
    writeFile(QStringLiteral("/A/B.ithmb"), 100);
    setVariants({variant(OneFile, 1000, 20)});
    parse();
    EXPECT_EQ(thumbnail(), QByteArray("kept"));
    EXPECT_EQ(unpackedOffset(), -1);
}

TEST_F(ClassicImage, IsUntouchedWhenItsOffsetCannotBeReached)
{
    writeFile(QStringLiteral("/A/B.ithmb"), 100);
    setVariants({variant(OneFile, -1, 20)});
    parse();
    EXPECT_EQ(thumbnail(), QByteArray("kept"));
    EXPECT_EQ(source(), QByteArray("kept"));
    EXPECT_EQ(host.unpackings().size(), 0U);
    EXPECT_EQ(host.log(), Log());
}

TEST_F(ClassicImage, IsUntouchedWithoutItsFile)
{
    setVariants({variant(OneFile, 0, 20)});
    parse();
    EXPECT_EQ(thumbnail(), QByteArray("kept"));
    EXPECT_EQ(source(), QByteArray("kept"));
    EXPECT_EQ(host.unpackings().size(), 0U);
    EXPECT_EQ(host.log(), Log());
}

// Nobody writes to the pipe: to open it would not end.
TEST_F(ClassicImage, IsUntouchedWhereItsFileIsAPipe)
{
    const QString folder = device.drive + QStringLiteral(":/Photos/A");
    ASSERT_TRUE(QDir().mkpath(folder));
    ASSERT_EQ(::mkfifo(QFile::encodeName(folder + QStringLiteral("/B.ithmb")).constData(), 0600),
              0);
    setVariants({variant(OneFile, 0, 0)});
    parse();
    EXPECT_EQ(thumbnail(), QByteArray("kept"));
    EXPECT_EQ(source(), QByteArray("kept"));
    EXPECT_EQ(host.unpackings().size(), 0U);
}

TEST_F(ClassicImage, OfNoBytesIsUnpackedFromNoBytes)
{
    writeFile(QStringLiteral("/A/B.ithmb"), 100);
    setVariants({variant(OneFile, 10, 0), variant(OneFile, 20, 5)});
    parse();
    EXPECT_EQ(thumbnail(), QByteArray("image"));
    EXPECT_EQ(host.unpackings().at(0).raw, QByteArray());
    EXPECT_EQ(unpackedOffset(), 10);
}

TEST_F(ClassicImage, OfNoBytesIsUnpackedAlsoWhenItsOffsetCannotBeReached)
{
    writeFile(QStringLiteral("/A/B.ithmb"), 100);
    setVariants({variant(OneFile, -1, 0)});
    parse();
    EXPECT_EQ(thumbnail(), QByteArray("image"));
    ASSERT_EQ(host.unpackings().size(), 1U);
    EXPECT_EQ(host.unpackings()[0].raw, QByteArray());
}

TEST_F(ClassicImage, OfNegativeSizeIsTheSmallestAndGivesNothing)
{
    writeFile(QStringLiteral("/A/B.ithmb"), 100);
    setVariants({variant(OneFile, 10, 5), variant(OneFile, 20, -1)});
    parse();
    EXPECT_EQ(thumbnail(), QByteArray("kept"));
    EXPECT_EQ(unpackedOffset(), -1);
    EXPECT_EQ(source(), QByteArray("image"));
    EXPECT_EQ(unpackedOffset(), 10);
}

TEST_F(ClassicImage, IsUntouchedWhenNoVariantBeatsTheStartingSize)
{
    writeFile(QStringLiteral("/A/B.ithmb"), 100);
    setVariants({variant(OneFile, 0, 0), variant(OneFile, 0, -7)});
    parse();
    EXPECT_EQ(source(), QByteArray("kept"));

    setVariants({variant(OneFile, 0, std::numeric_limits<qint32>::max())});
    EXPECT_EQ(thumbnail(), QByteArray("kept"));
    EXPECT_EQ(host.unpackings().size(), 0U);
}

TEST_F(ClassicImage, OfAHugeSizeIsAShortRead)
{
    writeFile(QStringLiteral("/A/B.ithmb"), 100);
    setVariants({variant(OneFile, 0, std::numeric_limits<qint32>::max() - 1)});
    parse();
    EXPECT_EQ(thumbnail(), QByteArray("kept"));
    EXPECT_EQ(source(), QByteArray("kept"));
    EXPECT_EQ(host.unpackings().size(), 0U);
}

TEST_F(ClassicImage, SucceedsAlsoWhenItDoesNotUnpack)
{
    writeFile(QStringLiteral("/A/B.ithmb"), 100);
    setVariants({variant(OneFile, 10, 20)});
    host.setUnpacked("image", -1);
    parse();
    EXPECT_EQ(thumbnail(), QByteArray("kept"));
    EXPECT_EQ(source(), QByteArray("kept"));
    EXPECT_EQ(host.unpackings().size(), 2U);
    EXPECT_EQ(host.log(), Log());
}

TEST_F(ClassicImage, UsesPlainFilesAndNotTheDeviceFileLayer)
{
    writeFile(QStringLiteral("/A/B.ithmb"), 100);
    setVariants({variant(OneFile, 10, 20)});
    parse();
    thumbnail();
    source();
    EXPECT_EQ(host.fileCalls(), Lines());
}

} // namespace
