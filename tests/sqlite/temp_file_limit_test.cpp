#include "cameradb/asset_queries.h"
#include "cameradb/local_copy_fixture.h"
#include "sqlite/row_allowance.h"
#include "sqlite/sqlite_connection.h"
#include "sqlite/temp_file_limit.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace {

const qint64 mebibyte = 1048576;

// Takes the place of SQLite's default VFS, as a host's own might, and looks at the temporary
// files that are opened through it.
class WatchedVfs
{
public:
    WatchedVfs() : m_real(sqlite3_vfs_find(nullptr)), m_vfs(*m_real)
    {
        m_current = this;
        m_vfs.zName = "watched";
        m_vfs.xOpen = open;
        sqlite3_vfs_register(&m_vfs, 1);
    }

    ~WatchedVfs()
    {
        sqlite3_vfs_unregister(&m_vfs);
        sqlite3_vfs_register(m_real, 1);
        m_current = nullptr;
    }

    WatchedVfs(const WatchedVfs &) = delete;
    WatchedVfs &operator=(const WatchedVfs &) = delete;

    sqlite3_vfs &vfs() { return m_vfs; }

    qint64 peakBytes = 0;
    int opened = 0;
    int kinds = 0;  ///< the flags of all temporary files
    int closed = 0; ///< temporary files
    bool refuses = false;
    bool leavesMethods = false; ///< when it refuses

    qint64 bytes() const
    {
        qint64 sum = 0;
        for (const auto &file : m_ends)
            sum += file.second;
        return sum;
    }

private:
    static int open(sqlite3_vfs *vfs, const char *name, sqlite3_file *file, int flags,
                    int *outFlags)
    {
        WatchedVfs *self = m_current;
        if (!name && self->refuses && !self->leavesMethods)
            return SQLITE_CANTOPEN;
        const int result = self->m_real->xOpen(vfs, name, file, flags, outFlags);
        if (name || result != SQLITE_OK)
            return result;
        self->watch(file, flags);
        return self->refuses ? SQLITE_CANTOPEN : SQLITE_OK;
    }

    void watch(sqlite3_file *file, int flags)
    {
        ++opened;
        kinds |= flags;
        m_ends[file] = 0;
        m_fileMethods = file->pMethods;
        m_methods = *m_fileMethods;
        m_methods.xWrite = write;
        m_methods.xClose = close;
        file->pMethods = &m_methods;
    }

    static int write(sqlite3_file *file, const void *bytes, int count, sqlite3_int64 offset)
    {
        WatchedVfs *self = m_current;
        qint64 &end = self->m_ends[file];
        end = std::max<qint64>(end, offset + count);
        self->peakBytes = std::max(self->peakBytes, self->bytes());
        return self->m_fileMethods->xWrite(file, bytes, count, offset);
    }

    static int close(sqlite3_file *file)
    {
        WatchedVfs *self = m_current;
        self->m_ends.erase(file);
        ++self->closed;
        return self->m_fileMethods->xClose(file);
    }

    static WatchedVfs *m_current;
    sqlite3_vfs *m_real;
    sqlite3_vfs m_vfs;
    const sqlite3_io_methods *m_fileMethods = nullptr;
    sqlite3_io_methods m_methods = {};
    std::map<sqlite3_file *, qint64> m_ends;
};

WatchedVfs *WatchedVfs::m_current = nullptr;

// Until its end SQLite has no VFS at all.
class NoVfs
{
public:
    NoVfs()
    {
        while (sqlite3_vfs *vfs = sqlite3_vfs_find(nullptr)) {
            sqlite3_vfs_unregister(vfs);
            m_all.push_back(vfs);
        }
    }
    ~NoVfs()
    {
        for (auto vfs = m_all.rbegin(); vfs != m_all.rend(); ++vfs)
            sqlite3_vfs_register(*vfs, 1);
    }

private:
    std::vector<sqlite3_vfs *> m_all;
};

const sqlite3_io_methods *methodsOf(sqlite3 *db, const char *name = "main",
                                    int which = SQLITE_FCNTL_FILE_POINTER)
{
    sqlite3_file *file = nullptr;
    sqlite3_file_control(db, name, which, &file);
    return file ? file->pMethods : nullptr;
}

// `count` rows x of which each counts from 1, before a select.
std::string rowsTo(int count)
{
    return "with recursive r(x) as (select 1 union all select x + 1 from r limit " +
           std::to_string(count) + ") ";
}

int run(sqlite3 *db, const std::string &sql)
{
    return sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr);
}

// --- Parses

class TempFilesOfAParse : public LocalCopyFixture
{
protected:
    // A photo with a directory of a megabyte that its attributes repeat `times` times.
    void repeatALongPhoto(int times)
    {
        database.schema.uniqueKeys = false;
        database.rows.assets = {photoRow(1, 1), videoRow(2, 2)};
        database.rows.assets[0].directory = std::string(1000000, 'd');
        database.rows.albums = {albumRow(3)};
        database.join().add(3, 2);
        database.rows.sql = {"insert into ZADDITIONALASSETATTRIBUTES (Z_PK, ZASSET) " +
                             rowsTo(times) + "select 1, 1 from r"};
    }

    // A library of `count` photos, the latest first, in pages of 512 bytes.
    QByteArray librarySortedTheOtherWay(int count)
    {
        database.rows.sql = {
            "insert into ZGENERICASSET (Z_PK, ZKIND, ZSAVEDASSETTYPE, ZDIRECTORY, ZFILENAME, "
            "ZMODIFICATIONDATE, ZUUID) " +
            rowsTo(count) +
            "select x, 0, 3, 'DCIM/100APPLE', 'IMG_' || x || '.JPG', 1000000 - x, "
            "zeroblob(16) from r"};
        host.setHostFile(local(), database.bytes());
        sqlite3 *db = nullptr;
        EXPECT_EQ(sqlite3_open(local().constData(), &db), SQLITE_OK);
        const SqliteOwner owner(db);
        runSql(db, "pragma page_size = 512; vacuum");
        watched.peakBytes = 0;
        return *host.hostFile(local());
    }

    WatchedVfs watched;
};

TEST_F(TempFilesOfAParse, StayInTheirBudgetWhateverIsSorted)
{
    repeatALongPhoto(300);
    const QByteArray bytes = database.bytes();

    EXPECT_EQ(parse(bytes), 1);

    const qint64 budget = 3 * bytes.size() + 2 * mebibyte;
    EXPECT_LE(watched.peakBytes, budget);
    EXPECT_GT(watched.peakBytes, budget - 2 * mebibyte);
    EXPECT_EQ(watched.bytes(), 0);
    EXPECT_EQ(watched.opened, watched.closed);
    RecordProperty("PeakBytes", std::to_string(watched.peakBytes));
}

TEST_F(TempFilesOfAParse, EndNoMoreThanTheSort)
{
    repeatALongPhoto(300);

    EXPECT_EQ(parse(database.bytes()), 1);

    EXPECT_EQ(host.log(), parsedLog());
    EXPECT_EQ(model->assets.keys(), QList<quint64>{2});
    EXPECT_EQ(model->videos.keys(), QList<quint64>{2});
    ASSERT_TRUE(model->albums.contains(3));
    EXPECT_EQ(model->albums.value(3)->assetKeys, QList<quint64>{2});
    expectHealthyParse();
}

TEST_F(TempFilesOfAParse, HoldAsManyRowsAsFit)
{
    repeatALongPhoto(3);

    EXPECT_EQ(parse(database.bytes()), 1);

    EXPECT_EQ(model->assets.keys(), (QList<quint64>{1, 2}));
    EXPECT_GT(watched.peakBytes, mebibyte);
}

TEST_F(TempFilesOfAParse, SortAnHonestLibrary)
{
    const QByteArray bytes = librarySortedTheOtherWay(60000);

    EXPECT_EQ(parse(bytes), 1);

    EXPECT_EQ(model->assets.size(), 60000);
    EXPECT_GT(watched.peakBytes, mebibyte);
    EXPECT_LE(watched.peakBytes, 2 * bytes.size());
    RecordProperty("PeakPerFileByte", std::to_string(double(watched.peakBytes) / bytes.size()));
}

TEST_F(TempFilesOfAParse, SortAnHonestLibraryThatIsMergedTwice)
{
    const QByteArray bytes = librarySortedTheOtherWay(60000);
    watched.opened = 0;
    sqlite_connection connection(QString::fromUtf8(local()));
    connection.m_isSettingUp = true; // lets a pragma through
    // So few pages that the sorter makes parts of 128 KB, of which it merges 16 at once.
    ASSERT_EQ(run(connection.get(), "pragma cache_size = 10"), SQLITE_OK);
    connection.m_tempFiles.m_left = 2 * databaseBytes(connection.get());

    EXPECT_EQ(queryCameraPhotos(connection.get(), model.get()), 1);

    EXPECT_EQ(model->assets.size(), 60000);
    EXPECT_GT(watched.opened, 1);
    EXPECT_LE(watched.peakBytes, 2 * bytes.size());
    RecordProperty("PeakPerFileByte", std::to_string(double(watched.peakBytes) / bytes.size()));
}

TEST_F(TempFilesOfAParse, MayBeThreeTimesAsLargeAsTheFiles)
{
    host.setHostFile(local(), database.bytes());

    const sqlite_connection connection(QString::fromUtf8(local()));

    EXPECT_GT(databaseBytes(connection.get()), 0);
    EXPECT_EQ(connection.m_tempFiles.bytesLeft(),
              2 * mebibyte + 3 * databaseBytes(connection.get()));
}

TEST_F(TempFilesOfAParse, AreNotNeededWhereThereIsNoVfs)
{
    const NoVfs none;

    EXPECT_EQ(parse(QByteArray()), -1);

    EXPECT_EQ(host.log(), LogLines{failure("Can not open sqlite db")});
}

// --- Statements of every kind

struct Writing {
    const char *name;
    int kind; ///< of the file
    const char *sql;
};

class TempFilesOfAStatement : public testing::TestWithParam<Writing>
{
protected:
    TempFilesOfAStatement()
    {
        sqlite3 *opened = nullptr;
        limit.open(":memory:", &opened);
        db.reset(opened);
        limit.m_left = budget;
    }

    int runWith(int rows) { return run(db.get(), replaced(rows)); }

    static std::string replaced(int rows)
    {
        std::string sql = GetParam().sql;
        const std::string place = "ROWS ";
        sql.replace(sql.find(place), place.size(), rowsTo(rows));
        return sql;
    }

    const qint64 budget = 16 * mebibyte;
    WatchedVfs watched;
    temp_file_limit limit;
    SqliteOwner db;
};

// Rows of 10,000 bytes each.
TEST_P(TempFilesOfAStatement, EndWithTheirBudget)
{
    EXPECT_EQ(runWith(3000), SQLITE_FULL);

    EXPECT_NE(watched.kinds & GetParam().kind, 0);
    EXPECT_LE(watched.peakBytes, budget);
    EXPECT_GT(watched.peakBytes, budget / 2);
}

TEST_P(TempFilesOfAStatement, GiveTheirBytesBack)
{
    EXPECT_EQ(runWith(300), SQLITE_OK);
    EXPECT_EQ(limit.bytesLeft(), budget - watched.bytes());
    EXPECT_GT(watched.peakBytes, 0);

    EXPECT_EQ(run(db.get(), "drop table if exists temp.kept"), SQLITE_OK);
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(runWith(300), SQLITE_OK) << i;
    db.reset();

    EXPECT_EQ(limit.bytesLeft(), budget);
    EXPECT_EQ(watched.opened, watched.closed);
}

TEST_P(TempFilesOfAStatement, MayFailToOpen)
{
    for (const bool leavesMethods : {false, true}) {
        watched.refuses = true;
        watched.leavesMethods = leavesMethods;
        EXPECT_EQ(runWith(300), SQLITE_CANTOPEN) << leavesMethods;
        EXPECT_EQ(watched.opened > 0, leavesMethods);
        EXPECT_EQ(watched.opened, watched.closed) << leavesMethods;
    }
    EXPECT_EQ(limit.bytesLeft(), budget);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, TempFilesOfAStatement,
    testing::Values(Writing{"Sort", SQLITE_OPEN_TEMP_JOURNAL,
                            "ROWS select x from r order by hex(zeroblob(5000)) || x"},
                    Writing{"DistinctRows", SQLITE_OPEN_TRANSIENT_DB,
                            "ROWS select distinct hex(zeroblob(5000)) || x from r"},
                    Writing{"TemporaryTable", SQLITE_OPEN_TEMP_DB,
                            "drop table if exists temp.kept; create temp table kept as "
                            "ROWS select hex(zeroblob(5000)) || x from r"}),
    rowName<Writing>);

// --- Files

class FilesUnderALimit : public testing::Test
{
protected:
    FilesUnderALimit() : path(folder.filePath(QString::fromLatin1("a.sqlite")))
    {
        limit.m_left = 16 * mebibyte;
    }

    SqliteOwner open(temp_file_limit &with) const
    {
        sqlite3 *db = nullptr;
        EXPECT_EQ(with.open(path.toUtf8().constData(), &db), SQLITE_OK);
        return withTemporaryFile(db);
    }

    SqliteOwner openPlainly() const
    {
        sqlite3 *db = nullptr;
        EXPECT_EQ(sqlite3_open(path.toUtf8().constData(), &db), SQLITE_OK);
        return withTemporaryFile(db);
    }

    // A table of more than fits into the cache.
    static SqliteOwner withTemporaryFile(sqlite3 *db)
    {
        SqliteOwner owner(db);
        runSql(db, "create temp table kept as " + rowsTo(300) +
                       "select hex(zeroblob(5000)) || x from r");
        return owner;
    }

    QTemporaryDir folder;
    QString path;
    temp_file_limit limit;
};

TEST_F(FilesUnderALimit, AreTheDefaultsOwnUnlessTheyAreTemporary)
{
    const SqliteOwner plain = openPlainly();
    runSql(plain.get(), "pragma journal_mode = wal; create table t (x); insert into t values (7)");

    const SqliteOwner limited = open(limit);
    runSql(limited.get(), "insert into t values (8); select * from t");

    EXPECT_EQ(methodsOf(limited.get()), methodsOf(plain.get()));
    const int journal = SQLITE_FCNTL_JOURNAL_POINTER;
    ASSERT_NE(methodsOf(limited.get(), "main", journal), nullptr);
    EXPECT_EQ(methodsOf(limited.get(), "main", journal), methodsOf(plain.get(), "main", journal));
    ASSERT_NE(methodsOf(limited.get(), "temp"), nullptr);
    EXPECT_EQ(methodsOf(limited.get(), "temp")->iVersion, 1);
}

TEST_F(FilesUnderALimit, AreCreatedAndWrittenAsByAPlainOpen)
{
    {
        const SqliteOwner limited = open(limit);
        runSql(limited.get(), "create table t (x); begin; insert into t values (1); rollback;"
                              "insert into t values (zeroblob(100000))");
    }
    EXPECT_GT(QFileInfo(path).size(), 100000);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList(QFileInfo(path).fileName()));
    const SqliteOwner plain = openPlainly();
    EXPECT_NO_THROW(runSql(plain.get(), "select x from t"));
}

TEST_F(FilesUnderALimit, DoNotGrowByHints)
{
    const SqliteOwner limited = open(limit);
    sqlite3_file *file = nullptr;
    sqlite3_file_control(limited.get(), "temp", SQLITE_FCNTL_FILE_POINTER, &file);
    ASSERT_TRUE(file && file->pMethods);
    sqlite3_int64 before = 0;
    sqlite3_int64 after = 0;
    EXPECT_EQ(file->pMethods->xFileSize(file, &before), SQLITE_OK);

    int chunk = 1 << 20;
    sqlite3_int64 large = 1 << 30;
    EXPECT_EQ(file->pMethods->xFileControl(file, SQLITE_FCNTL_CHUNK_SIZE, &chunk), SQLITE_NOTFOUND);
    EXPECT_EQ(file->pMethods->xFileControl(file, SQLITE_FCNTL_MMAP_SIZE, &large), SQLITE_NOTFOUND);
    EXPECT_EQ(file->pMethods->xFileControl(file, SQLITE_FCNTL_SIZE_HINT, &large), SQLITE_NOTFOUND);
    int error = -1;
    EXPECT_EQ(file->pMethods->xFileControl(file, SQLITE_FCNTL_LAST_ERRNO, &error), SQLITE_OK);
    EXPECT_NE(error, -1);

    EXPECT_EQ(file->pMethods->xFileSize(file, &after), SQLITE_OK);
    EXPECT_GT(before, 0);
    EXPECT_EQ(before, after);
}

TEST_F(FilesUnderALimit, CountByTheirHighestEndOnly)
{
    limit.m_left = 2 * mebibyte;
    sqlite3 *db = nullptr;
    ASSERT_EQ(limit.open(path.toUtf8().constData(), &db), SQLITE_OK);
    const SqliteOwner limited(db);
    sqlite3_vfs *vfs = nullptr;
    sqlite3_file_control(db, "main", SQLITE_FCNTL_VFS_POINTER, &vfs);
    std::vector<qint64> memory(static_cast<std::size_t>(vfs->szOsFile) / sizeof(qint64) + 1);
    sqlite3_file *file = reinterpret_cast<sqlite3_file *>(memory.data());
    const int flags = SQLITE_OPEN_TEMP_JOURNAL | SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE |
                      SQLITE_OPEN_EXCLUSIVE | SQLITE_OPEN_DELETEONCLOSE;
    ASSERT_EQ(vfs->xOpen(vfs, nullptr, file, flags, nullptr), SQLITE_OK);

    const auto write = [&](qint64 offset) {
        return file->pMethods->xWrite(file, "abcd", 4, offset);
    };
    EXPECT_EQ(write(1000), SQLITE_OK);
    EXPECT_EQ(write(0), SQLITE_OK);
    EXPECT_EQ(limit.bytesLeft(), 2 * mebibyte - 1004);
    EXPECT_EQ(write(2 * mebibyte - 3), SQLITE_FULL);
    EXPECT_EQ(limit.bytesLeft(), 2 * mebibyte - 1004);
    EXPECT_EQ(write(2 * mebibyte - 4), SQLITE_OK);
    EXPECT_EQ(limit.bytesLeft(), 0);
    EXPECT_EQ(write(0), SQLITE_OK);

    char read[4] = {};
    EXPECT_EQ(file->pMethods->xRead(file, read, 4, 1000), SQLITE_OK);
    EXPECT_EQ(std::string(read, 4), "abcd");
    EXPECT_EQ(file->pMethods->xClose(file), SQLITE_OK);
    EXPECT_EQ(limit.bytesLeft(), 2 * mebibyte);
}

// --- The process around it

TEST_F(FilesUnderALimit, LeaveNoVfsToOthers)
{
    sqlite3_vfs *const standard = sqlite3_vfs_find(nullptr);
    const SqliteOwner limited = open(limit);

    EXPECT_EQ(sqlite3_vfs_find(limit.m_name), nullptr);
    EXPECT_EQ(sqlite3_vfs_find(nullptr), standard);
    temp_file_limit other;
    EXPECT_STRNE(limit.m_name, other.m_name);
}

TEST_F(FilesUnderALimit, AreThoseOfAHostWithASimpleVfsOfItsOwn)
{
    WatchedVfs watched;
    sqlite3_vfs &simple = watched.vfs();
    simple.iVersion = 1;
    simple.xDlOpen = nullptr;
    simple.xDlError = nullptr;
    simple.xDlSym = nullptr;
    simple.xDlClose = nullptr;
    simple.xGetLastError = nullptr;
    temp_file_limit between;
    between.m_left = 16 * mebibyte;
    {
        const SqliteOwner limited = open(between);
        sqlite3_vfs *vfs = nullptr;
        sqlite3_file_control(limited.get(), "main", SQLITE_FCNTL_VFS_POINTER, &vfs);
        ASSERT_TRUE(vfs);
        EXPECT_EQ(vfs->xDlOpen, nullptr);
        EXPECT_EQ(vfs->xGetLastError, nullptr);
        EXPECT_EQ(vfs->iVersion, 1);
        EXPECT_NO_THROW(runSql(limited.get(), "create table t as select julianday('now') d;"
                                              "insert into t values (random())"));
        EXPECT_GT(watched.bytes(), 0);
    }
    EXPECT_EQ(watched.opened, watched.closed);
}

TEST_F(FilesUnderALimit, AreNotLimitedWhereNothingCanStandBetween)
{
    limit.m_default = nullptr;
    limit.m_left = 0;

    const SqliteOwner limited = open(limit);

    ASSERT_NE(methodsOf(limited.get(), "temp"), nullptr);
    EXPECT_EQ(methodsOf(limited.get(), "temp"), methodsOf(openPlainly().get(), "temp"));
}

TEST(TempFileLimit, GrowsWithTheDatabase)
{
    temp_file_limit limit;
    EXPECT_EQ(limit.bytesLeft(), 2 * mebibyte);

    limit.allowFor(1000);

    EXPECT_EQ(limit.bytesLeft(), 2 * mebibyte + 3000);
}

TEST(TempFileLimitThreads, HoldsForASorterWithThreadsOfItsOwn)
{
    temp_file_limit limit;
    sqlite3 *opened = nullptr;
    ASSERT_EQ(limit.open(":memory:", &opened), SQLITE_OK);
    const SqliteOwner db(opened);
    sqlite3_limit(db.get(), SQLITE_LIMIT_WORKER_THREADS, 4);
    const std::string sort = " select x from r order by hex(zeroblob(5000)) || x";
    ASSERT_EQ(run(db.get(), "pragma threads = 4"), SQLITE_OK);
    const qint64 budget = 16 * mebibyte;
    limit.m_left = budget;

    EXPECT_EQ(run(db.get(), rowsTo(3000) + sort), SQLITE_FULL);
    EXPECT_EQ(limit.bytesLeft(), budget);
    EXPECT_EQ(run(db.get(), rowsTo(600) + sort), SQLITE_OK);
    EXPECT_EQ(limit.bytesLeft(), budget);
}

} // namespace
