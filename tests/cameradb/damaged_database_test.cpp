#include "cameradb/local_copy_fixture.h"
#include "support/raw_pages.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include <cstdio>
#include <random>
#include <set>
#include <unistd.h>
#include <vector>

namespace {

const int pageSize = 512;
const unsigned seed = 20260601;

class DamagedDatabase : public LocalCopyFixture
{
protected:
    DamagedDatabase()
    {
        for (int pk = 1; pk <= 12; ++pk) {
            database.rows.assets.push_back(pk % 4 == 0 ? videoRow(pk, pk) : photoRow(pk, pk));
            database.rows.attributes.push_back({pk, pk, 1.5, 100});
            database.join().add(20, pk);
        }
        database.rows.albums = {albumRow(20), albumRow(21, 1000)};
        database.rows.albums[0].title = std::string(1200, 't');
        database.rows.libraryUuids = {QByteArray(16, 'u')};
        // Its tables have inner pages and overflow.
        sound = inPagesOf(pageSize, database.bytes());
    }

    void expectContractOf(const QByteArray &damaged)
    {
        expectContract(parse(damaged));
        ++cases;
    }

    // Each of the bits of `offset`, or one of them.
    void flip(int offset, int bit)
    {
        SCOPED_TRACE(testing::Message() << "byte " << offset << ", bit " << bit);
        QByteArray damaged = sound;
        damaged[offset] = static_cast<char>(damaged[offset] ^ (1 << bit));
        expectContractOf(damaged);
    }

    void report(const char *what)
    {
        RecordProperty(what, cases);
        std::printf("%s: %d\n", what, cases);
        expectHealthyParse();
    }

    QByteArray sound;
    int cases = 0;
};

TEST_F(DamagedDatabase, IsReadWhileItIsSound)
{
    EXPECT_EQ(parse(sound), 1);
    EXPECT_EQ(model->assets.size(), 12);
    EXPECT_EQ(model->albums.value(20)->assetKeys.size(), 12);
    EXPECT_GT(sound.size() / pageSize, 10);
}

TEST_F(DamagedDatabase, KeepsTheContractAtEveryTruncation)
{
    std::set<int> lengths = {0, 1, 99, 100, 101, 511, 512};
    for (int border = pageSize; border < sound.size(); border += pageSize)
        lengths.insert({border - 1, border, border + 1});
    std::mt19937 random(seed);
    for (int i = 0; i < 60; ++i)
        lengths.insert(static_cast<int>(random() % static_cast<unsigned>(sound.size())));
    for (const int length : lengths) {
        SCOPED_TRACE(length);
        expectContractOf(sound.left(length));
        expectHealthyParse();
    }
    report("truncations");
}

TEST_F(DamagedDatabase, TakesAnEmptyFileForADatabaseWithoutTables)
{
    EXPECT_EQ(parse(QByteArray()), 0);
    EXPECT_EQ(host.log(), failedLog({failure("Can not parse camera album")}));
    expectHealthyParse();
}

// One bit a test, so that the tests may run side by side.
class FlippedBit : public DamagedDatabase, public testing::WithParamInterface<int>
{
};

TEST_P(FlippedBit, OfTheFileHeaderKeepsTheContract)
{
    for (int offset = 0; offset < 100; ++offset)
        flip(offset, GetParam());
    report("flips of the file header");
}

TEST_P(FlippedBit, OfAPageHeaderKeepsTheContract)
{
    for (int page = 0; page < sound.size(); page += pageSize) {
        const int header = page == 0 ? 100 : page;
        for (int offset = header; offset < header + 12; ++offset)
            flip(offset, GetParam());
    }
    report("flips of page headers");
}

TEST_P(FlippedBit, OfAnyOtherByteKeepsTheContract)
{
    std::mt19937 random(seed + static_cast<unsigned>(GetParam()));
    for (int i = 0; i < 150; ++i)
        flip(100 + static_cast<int>(random() % static_cast<unsigned>(sound.size() - 100)),
             GetParam());
    report("flips elsewhere");
}

INSTANTIATE_TEST_SUITE_P(Bits, FlippedBit, testing::Range(0, 8));

// --- What looks encrypted

QByteArray randomBytes(int size)
{
    std::mt19937 random(seed);
    QByteArray bytes(size, '\0');
    for (char &byte : bytes)
        byte = static_cast<char>(random() & 0xff);
    return bytes;
}

const LogLine noDatabase = failure("master sql error #26: file is not a database");

TEST_F(DamagedDatabase, IsNoneWhenItLooksEncrypted)
{
    for (const int size : {100, 511, 512, 4096, 65536, 1000000}) {
        SCOPED_TRACE(size);
        EXPECT_EQ(parse(randomBytes(size)), 0);
        EXPECT_EQ(host.log(), failedLog({noDatabase}));
        expectHealthyParse();
    }
}

TEST_F(DamagedDatabase, IsNoneWhenItLooksEncryptedBehindTheMagic)
{
    const QByteArray magic("SQLite format 3", 16);
    EXPECT_EQ(parse(magic + randomBytes(65536)), 0);
    EXPECT_EQ(host.log(), failedLog({noDatabase}));
    expectHealthyParse();
}

TEST_F(DamagedDatabase, KeepsTheContractWhenAllBehindTheHeaderLooksEncrypted)
{
    expectContractOf(sound.left(100) + randomBytes(sound.size() - 100));
    for (int kept = pageSize; kept < sound.size(); kept += pageSize)
        expectContractOf(sound.left(kept) + randomBytes(sound.size() - kept));
    report("files encrypted from a page on");
}

// --- Journals

QByteArray withChangedByte(QByteArray bytes, int offset)
{
    bytes[offset] = static_cast<char>(bytes[offset] ^ 0x55);
    return bytes;
}

struct Journal {
    const char *name;
    PhotosFiles (*change)(PhotosFiles files, const PhotosFiles &other);
    QList<quint64> assets; ///< 1 is in the file, 2 in its log, 8 in the other's log
};

class MismatchedJournal : public LocalCopyFixture, public testing::WithParamInterface<Journal>
{
};

TEST_P(MismatchedJournal, IsReplayedAsFarAsItIsSound)
{
    database.rows.assets = {photoRow(1, 1)};
    PhotosRows later;
    later.assets = {photoRow(2, 2)};
    PhotosRows others;
    others.assets = {photoRow(8, 8)};
    const PhotosFiles files =
        GetParam().change(database.filesWithWal(later), database.filesWithWal(others));
    host.setHostFile(local("-wal"), files.wal);
    host.setHostFile(local("-shm"), files.shm);

    EXPECT_EQ(parse(files.database), 1);

    EXPECT_EQ(host.log(), parsedLog());
    EXPECT_EQ(model->assets.keys(), GetParam().assets);
    QFile::remove(QString::fromUtf8(local("-wal")));
    expectHealthyParse();
}

using Files = PhotosFiles;

// A header of 32 bytes, then frames of a header of 24 bytes and a page of 4096.
INSTANTIATE_TEST_SUITE_P(
    Journals, MismatchedJournal,
    testing::Values(Journal{"Sound", [](Files files, const Files &) { return files; }, {1, 2}},
                    Journal{"SharedMemoryOfAnother",
                            [](Files files, const Files &other) {
                                files.shm = other.shm;
                                return files;
                            },
                            {1, 2}},
                    Journal{"SharedMemoryOfGarbage",
                            [](Files files, const Files &) {
                                files.shm = randomBytes(32768);
                                return files;
                            },
                            {1, 2}},
                    Journal{"LogOfAnother",
                            [](Files files, const Files &other) {
                                files.wal = other.wal;
                                return files;
                            },
                            {1, 8}},
                    Journal{"LogOfGarbage",
                            [](Files files, const Files &) {
                                files.wal = randomBytes(100000);
                                return files;
                            },
                            {1}},
                    Journal{"WrongSalt",
                            [](Files files, const Files &) {
                                files.wal = withChangedByte(files.wal, 16);
                                return files;
                            },
                            {1}},
                    Journal{"WrongSaltOfAFrame",
                            [](Files files, const Files &) {
                                files.wal = withChangedByte(files.wal, 32 + 8);
                                return files;
                            },
                            {1}},
                    Journal{"WrongChecksumOfAPage",
                            [](Files files, const Files &) {
                                files.wal = withChangedByte(files.wal, 32 + 24 + 100);
                                return files;
                            },
                            {1}},
                    Journal{"HalfAHeader",
                            [](Files files, const Files &) {
                                files.wal.truncate(31);
                                return files;
                            },
                            {1}},
                    Journal{"HalfAFrame",
                            [](Files files, const Files &) {
                                files.wal.truncate(32 + 2000);
                                return files;
                            },
                            {1}}),
    rowName<Journal>);

TEST_F(DamagedDatabase, KeepsTheContractWithTheLogOfAnotherPageSize)
{
    PhotosRows later;
    later.assets = {photoRow(30, 1)};
    host.setHostFile(local("-wal"), database.filesWithWal(later).wal);
    expectContractOf(sound);
    QFile::remove(QString::fromUtf8(local("-wal")));
    expectHealthyParse();
}

TEST_F(DamagedDatabase, KeepsTheContractAtEveryTruncationOfItsLog)
{
    PhotosRows later;
    later.assets = {photoRow(30, 1), photoRow(31, 2)};
    const PhotosFiles files = database.filesWithWal(later);
    for (int length = 0; length <= files.wal.size(); length += 515) {
        host.setHostFile(local("-wal"), files.wal.left(length));
        host.setHostFile(local("-shm"), files.shm);
        EXPECT_EQ(parse(files.database), 1) << length;
        const int assets = model->assets.size();
        EXPECT_TRUE(assets == 12 || assets == 14) << length << ": " << assets;
        ++cases;
    }
    QFile::remove(QString::fromUtf8(local("-wal")));
    report("truncations of a log");
}

// A database in the middle of a change that was never finished, and the journal that
// takes it back.
TEST_F(DamagedDatabase, IsRestoredFromAJournalBesideIt)
{
    const QTemporaryDir other;
    const QByteArray path = QFile::encodeName(other.filePath(QStringLiteral("hot.sqlite")));
    host.setHostFile(path, sound);
    sqlite3 *opened = nullptr;
    ASSERT_EQ(sqlite3_open(path.constData(), &opened), SQLITE_OK);
    const SqliteOwner writer(opened);
    runSql(opened, "PRAGMA cache_size = 1; PRAGMA cache_spill = 1; BEGIN; DELETE FROM "
                   "ZGENERICASSET; DELETE FROM ZGENERICALBUM; CREATE TABLE filler (x); INSERT INTO "
                   "filler WITH n (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 200) "
                   "SELECT zeroblob(600) FROM n");
    const QByteArray journal = host.hostFile(path + "-journal").value_or(QByteArray());
    const QByteArray changed = host.hostFile(path).value_or(QByteArray());
    ASSERT_NE(changed, sound);

    host.setHostFile(local("-journal"), journal);
    EXPECT_EQ(parse(changed), 1);
    EXPECT_EQ(model->assets.size(), 12);

    host.setHostFile(local("-journal"), randomBytes(5000));
    EXPECT_EQ(parse(sound), 1);
    EXPECT_EQ(model->assets.size(), 12);
    runSql(opened, "ROLLBACK");
    QFile::remove(QString::fromUtf8(local("-journal")));
    expectHealthyParse();
}

// --- Access

TEST_F(DamagedDatabase, IsNotReadWhileAnotherConnectionLocksIt)
{
    host.setHostFile(local(), sound);
    sqlite3 *opened = nullptr;
    ASSERT_EQ(sqlite3_open(local().constData(), &opened), SQLITE_OK);
    const SqliteOwner locker(opened);
    runSql(opened, "BEGIN EXCLUSIVE");

    EXPECT_EQ(parseLocal(), 0);
    EXPECT_EQ(host.log(), failedLog({failure("master sql error #5: database is locked")}));
    host.clearRecords();
    EXPECT_EQ(cameraDBParse(&device), nullptr);
    EXPECT_EQ(host.log().back(), failure("Can not load lib"));

    runSql(opened, "COMMIT");
    EXPECT_EQ(parseLocal(), 1);
    EXPECT_EQ(model->assets.size(), 12);
}

TEST_F(DamagedDatabase, IsReadWhileAnotherConnectionReadsIt)
{
    host.setHostFile(local(), sound);
    sqlite3 *opened = nullptr;
    ASSERT_EQ(sqlite3_open(local().constData(), &opened), SQLITE_OK);
    const SqliteOwner reader(opened);
    runSql(opened, "BEGIN; SELECT count(*) FROM ZGENERICASSET");

    EXPECT_EQ(parseLocal(), 1);
    EXPECT_EQ(model->assets.size(), 12);
}

TEST_F(DamagedDatabase, IsNotOpenedWhereAFolderHasItsName)
{
    ASSERT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("Photos.sqlite")));
    EXPECT_EQ(parseLocal(), -1);
    EXPECT_EQ(host.log(), LogLines{failure("Can not open sqlite db")});
    ASSERT_TRUE(QDir(folder.path()).rmdir(QStringLiteral("Photos.sqlite")));
    expectHealthyParse();
}

TEST_F(DamagedDatabase, IsReadWithoutThePermissionToWrite)
{
    host.setHostFile(local(), sound);
    QFile::setPermissions(QString::fromUtf8(local()), QFile::ReadOwner);
    EXPECT_EQ(parseLocal(), 1);
    QFile::setPermissions(QString::fromUtf8(local()), QFile::ReadOwner | QFile::WriteOwner);
    expectHealthyParse();
}

TEST_F(DamagedDatabase, IsNotOpenedWithoutThePermissionToRead)
{
    if (geteuid() == 0)
        GTEST_SKIP() << "root may read every file";
    host.setHostFile(local(), sound);
    QFile::setPermissions(QString::fromUtf8(local()), QFile::Permissions());
    EXPECT_EQ(parseLocal(), -1);
    EXPECT_EQ(host.log(), LogLines{failure("Can not open sqlite db")});
    QFile::setPermissions(QString::fromUtf8(local()), QFile::ReadOwner | QFile::WriteOwner);
    expectHealthyParse();
}

} // namespace
