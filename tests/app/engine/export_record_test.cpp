#include "engine/export_record.h"

#include "base/error.h"
#include "support/device_folder.h"
#include "support/disk_faults.h"
#include "support/export_records.h"
#include "support/watched_stores.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <map>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <tuple>
#include <unistd.h>

namespace {

constexpr char databasePath[] = ".photolib/export.sqlite";

auto valuesOf(const RecordedFile &file)
{
    return std::make_tuple(file.photo, file.role, file.source, file.size, file.modified, file.path,
                           file.sha256, file.exported, file.isCurrent);
}

QList<QByteArray> pathsOf(const ExportContents &contents)
{
    QList<QByteArray> paths;
    for (const RecordedFile &file : contents.files)
        paths.append(file.path + (file.isCurrent ? "" : " (older)"));
    return paths;
}

QList<QByteArray> albumPathsOf(const ExportContents &contents)
{
    QList<QByteArray> paths;
    for (const RecordedAlbumFile &file : contents.albumFiles)
        paths.append(file.path);
    return paths;
}

class ExportRecordFile : public testing::Test
{
protected:
    ExportContents readRecord() const { return readExportRecord(m_scratch.root()); }

    QByteArray name() const { return m_scratch.path(databasePath); }

    /// Runs `sql` on the record as some other program would.
    void runSql(const QByteArray &sql) const
    {
        sqlite3 *database = nullptr;
        ASSERT_EQ(SQLITE_OK, sqlite3_open(name().constData(), &database));
        char *message = nullptr;
        EXPECT_EQ(SQLITE_OK, sqlite3_exec(database, sql.constData(), nullptr, nullptr, &message))
            << message;
        sqlite3_free(message);
        EXPECT_EQ(SQLITE_OK, sqlite3_close(database));
    }

    /// Every path in the folder of the record with its content.
    std::map<QByteArray, QByteArray> bytes() const
    {
        std::map<QByteArray, QByteArray> result;
        for (const QByteArray &path : m_scratch.everythingIn(".photolib")) {
            struct stat status = {};
            const bool isFile = ::stat(path.constData(), &status) == 0 && S_ISREG(status.st_mode);
            result[path] = isFile ? m_scratch.read(path) : QByteArray();
        }
        return result;
    }

    /// Expects that neither an exporter nor a reader takes the record, for this cause, and that
    /// both leave it as it is.
    void expectRefused(const QByteArray &cause, Error::Kind kind = Error::Failed)
    {
        const auto before = bytes();
        const auto expectError = [&](const std::function<void()> &use) {
            try {
                use();
                ADD_FAILURE() << "taken";
            } catch (const Error &error) {
                EXPECT_EQ(name() + ": " + cause, error.what());
                EXPECT_EQ(kind, error.kind());
            }
        };
        expectError([this] { readRecord(); });
        expectError([this] { OpenRecord(m_scratch.root()).record.contents(); });
        EXPECT_EQ(before, bytes());
    }

    ScratchFolder m_scratch;
};

TEST_F(ExportRecordFile, KeepsAllValuesOfAFile)
{
    RecordedFile file = recordedFile("2020/01/IMG_0001_edited.JPG", "picture");
    file.role = ExportRole::EditedLive;
    file.size = 5000000000;
    file.modified = -5;
    file.isCurrent = false;
    writeRecord(m_scratch.root(), {file});
    const ExportContents contents = readRecord();
    ASSERT_EQ(1U, contents.files.size());
    EXPECT_EQ(valuesOf(file), valuesOf(contents.files[0]));
    OpenRecord open(m_scratch.root());
    ASSERT_EQ(1U, open.record.contents().files.size());
    EXPECT_EQ(valuesOf(file), valuesOf(open.record.contents().files[0]));
}

TEST_F(ExportRecordFile, IsStoredWithEachAddition)
{
    OpenRecord open(m_scratch.root());
    const WatchedStores stores;
    open.record.add({recordedFile("a.JPG", "picture")});
    EXPECT_TRUE(stores.has(name() + "-wal"));
}

TEST_F(ExportRecordFile, KeepsNamesInAnyBytesAndEmptyTexts)
{
    RecordedFile file = recordedFile("caf\xe9/\xff\xfe \"'%\n.JPG", "picture");
    file.photo = QByteArray();
    file.source = "\xff";
    writeRecord(m_scratch.root(), {file});
    const ExportContents contents = readRecord();
    ASSERT_EQ(1U, contents.files.size());
    EXPECT_EQ(file.path, contents.files[0].path);
    EXPECT_EQ(file.source, contents.files[0].source);
    EXPECT_EQ(QByteArray(), contents.files[0].photo);
}

TEST_F(ExportRecordFile, KeepsEachRole)
{
    std::vector<RecordedFile> files;
    for (const ExportRole role :
         {ExportRole::Original, ExportRole::Live, ExportRole::Edited, ExportRole::EditedLive,
          ExportRole::Recipe, ExportRole::Sidecar, ExportRole::Stored}) {
        files.push_back(recordedFile(QByteArray::number(int(files.size())), "bytes"));
        files.back().photo = "one";
        files.back().role = role;
    }
    writeRecord(m_scratch.root(), files);
    const ExportContents contents = readRecord();
    ASSERT_EQ(files.size(), contents.files.size());
    for (std::size_t i = 0; i < files.size(); ++i)
        EXPECT_EQ(valuesOf(files[i]), valuesOf(contents.files[i]));
}

TEST_F(ExportRecordFile, ListsFilesByPath)
{
    writeRecord(m_scratch.root(),
                {recordedFile("b", ""), recordedFile("a/z", ""), recordedFile("\xc3\xa4", ""),
                 recordedFile("B", ""), recordedFile("a", "")});
    EXPECT_EQ((QList<QByteArray>{"B", "a", "a/z", "b", "\xc3\xa4"}), pathsOf(readRecord()));
}

TEST_F(ExportRecordFile, KeepsTheOlderCopyOfASourceBesideTheLastOne)
{
    RecordedFile first = recordedFile("IMG.JPG", "first");
    RecordedFile second = recordedFile("IMG (2).JPG", "second");
    RecordedFile film = recordedFile("IMG.MOV", "film");
    second.photo = film.photo = first.photo;
    second.source = film.source = first.source;
    film.role = ExportRole::Live;
    OpenRecord open(m_scratch.root());
    open.record.add({first, film});
    open.record.add({second});
    EXPECT_EQ((QList<QByteArray>{"IMG (2).JPG", "IMG.JPG (older)", "IMG.MOV"}),
              pathsOf(open.record.contents()));
}

TEST_F(ExportRecordFile, ForgetsWhatHadThePathOfANewFile)
{
    OpenRecord open(m_scratch.root());
    open.record.setAlbumFiles({{RecordedAlbumFile::Link, "Albums/IMG.JPG", "IMG.JPG"}});
    open.record.add({recordedFile("IMG.JPG", "old")});
    RecordedFile other = recordedFile("IMG.JPG", "new");
    other.photo = "another";
    open.record.add({other, recordedFile("Albums/IMG.JPG", "file")});
    const ExportContents contents = open.record.contents();
    EXPECT_EQ((QList<QByteArray>{"Albums/IMG.JPG", "IMG.JPG"}), pathsOf(contents));
    EXPECT_EQ("another", contents.files[1].photo);
    EXPECT_EQ(0U, contents.albumFiles.size());
}

TEST_F(ExportRecordFile, TakesTheSameFileAgain)
{
    OpenRecord open(m_scratch.root());
    open.record.add({recordedFile("IMG.JPG", "old")});
    open.record.add({recordedFile("IMG.JPG", "new")});
    const ExportContents contents = open.record.contents();
    EXPECT_EQ(QList<QByteArray>{"IMG.JPG"}, pathsOf(contents));
    EXPECT_EQ(sha256Hex("new"), contents.files[0].sha256);
}

TEST_F(ExportRecordFile, ForgetsFilesByPath)
{
    OpenRecord open(m_scratch.root());
    open.record.add({recordedFile("a", ""), recordedFile("b", ""), recordedFile("c", "")});
    open.record.forget({"a", "c", "unknown"});
    EXPECT_EQ(QList<QByteArray>{"b"}, pathsOf(open.record.contents()));
}

TEST_F(ExportRecordFile, HoldsTheAlbumFilesOfTheLastTime)
{
    OpenRecord open(m_scratch.root());
    open.record.setAlbumFiles({{RecordedAlbumFile::Link, "Albums/Old/1.JPG", "1.JPG"}});
    open.record.setAlbumFiles({{RecordedAlbumFile::Copy, "Albums/New/3.JPG", "3.JPG"},
                               {RecordedAlbumFile::Link, "Albums/New/1.JPG", "1.JPG"},
                               {RecordedAlbumFile::HardLink, "Albums/New/2.JPG", "2.JPG"}});
    const ExportContents contents = open.record.contents();
    EXPECT_EQ((QList<QByteArray>{"Albums/New/1.JPG", "Albums/New/2.JPG", "Albums/New/3.JPG"}),
              albumPathsOf(contents));
    EXPECT_EQ(RecordedAlbumFile::Link, contents.albumFiles[0].kind);
    EXPECT_EQ(RecordedAlbumFile::HardLink, contents.albumFiles[1].kind);
    EXPECT_EQ(RecordedAlbumFile::Copy, contents.albumFiles[2].kind);
    EXPECT_EQ("2.JPG", contents.albumFiles[1].target);
}

TEST_F(ExportRecordFile, AddsNothingOfFilesOneOfWhichCannotBeRecorded)
{
    OpenRecord open(m_scratch.root());
    for (const QByteArray path : {"/etc/passwd", "../a", "a/../../b", "a//b", "a/", "", ".", "a/.",
                                  ".photolib", ".photolib/a", ".PhotoLib/a"}) {
        RecordedFile file = recordedFile(path, "bytes");
        EXPECT_THROW(open.record.add({recordedFile("good", ""), file}), Error) << path.constData();
        EXPECT_THROW(open.record.setAlbumFiles({{RecordedAlbumFile::Link, path, "a"}}), Error);
        EXPECT_THROW(open.record.setAlbumFiles({{RecordedAlbumFile::Link, "a", path}}), Error);
    }
    EXPECT_EQ(0U, open.record.contents().files.size());
    EXPECT_EQ(0U, open.record.contents().albumFiles.size());
}

TEST_F(ExportRecordFile, IsEmptyWhereThereIsNone)
{
    EXPECT_FALSE(hasExportRecord(m_scratch.root()));
    EXPECT_EQ(0U, readRecord().files.size());
    m_scratch.makeFolder(".photolib");
    EXPECT_FALSE(hasExportRecord(m_scratch.root()));
    EXPECT_EQ(0U, readRecord().files.size());
    EXPECT_EQ(QList<QByteArray>{m_scratch.path(".photolib")}, m_scratch.everythingIn());
}

TEST_F(ExportRecordFile, IsThereOnceAnExporterHasOpenedIt)
{
    OpenRecord(m_scratch.root());
    EXPECT_TRUE(hasExportRecord(m_scratch.root()));
    EXPECT_EQ(0U, readRecord().files.size());
    EXPECT_EQ((QList<QByteArray>{m_scratch.path(".photolib"), name()}), m_scratch.everythingIn());
}

TEST_F(ExportRecordFile, IsMadeOfAnEmptyFile)
{
    m_scratch.write(databasePath, "");
    EXPECT_EQ(0U, readRecord().files.size());
    writeRecord(m_scratch.root(), {recordedFile("a", "")});
    EXPECT_EQ(QList<QByteArray>{"a"}, pathsOf(readRecord()));
}

TEST_F(ExportRecordFile, CanBeReadWhileAnExporterIsAtWork)
{
    OpenRecord open(m_scratch.root());
    open.record.add({recordedFile("a", "")});
    const auto before = bytes();
    EXPECT_EQ(QList<QByteArray>{"a"}, pathsOf(readRecord()));
    EXPECT_EQ(before, bytes());
    open.record.add({recordedFile("b", "")});
    EXPECT_EQ((QList<QByteArray>{"a", "b"}), pathsOf(readRecord()));
}

// Each exporter adds the same number of files, so that a half of them would show, and takes the log
// into the database when it ends.
TEST_F(ExportRecordFile, IsReadAsItWasAtOneMomentWhileThreadsWriteIt)
{
    constexpr int exporters = 60;
    constexpr int batch = 50;
    std::atomic<bool> isOver{false};
    std::thread writer([&] {
        for (int i = 0; i < exporters; ++i) {
            std::vector<RecordedFile> files;
            for (int k = 0; k < batch; ++k)
                files.push_back(recordedFile(QByteArray::number(i * batch + k), "bytes"));
            OpenRecord(m_scratch.root()).record.add(files);
        }
        isOver = true;
    });
    std::size_t last = 0;
    do {
        std::size_t count = 0;
        EXPECT_NO_THROW(count = readRecord().files.size());
        EXPECT_EQ(0U, count % batch);
        EXPECT_LE(last, count);
        last = count;
    } while (!isOver);
    writer.join();
    EXPECT_EQ(std::size_t(exporters * batch), readRecord().files.size());
}

TEST_F(ExportRecordFile, CanBeReadOnADiskThatCannotBeWritten)
{
    writeRecord(m_scratch.root(), {recordedFile("a", "")});
    const QByteArray folder = m_scratch.path(".photolib");
    ASSERT_EQ(0, ::chmod(name().constData(), 0400));
    ASSERT_EQ(0, ::chmod(folder.constData(), 0500));
    const auto before = bytes();
    EXPECT_EQ(QList<QByteArray>{"a"}, pathsOf(readRecord()));
    EXPECT_EQ(before, bytes());
    ASSERT_EQ(0, ::chmod(folder.constData(), 0700));
}

// What the child has added stays, although it ends without closing anything.
TEST_F(ExportRecordFile, HoldsAllThatAKilledExporterAdded)
{
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        OpenRecord open(m_scratch.root());
        open.record.add({recordedFile("a", ""), recordedFile("b", "")});
        ::_exit(0);
    }
    int status = -1;
    ASSERT_EQ(child, ::waitpid(child, &status, 0));
    ASSERT_EQ(0, status);
    ASSERT_TRUE(m_scratch.exists(".photolib/export.sqlite-wal"));
    const auto before = bytes();
    EXPECT_EQ((QList<QByteArray>{"a", "b"}), pathsOf(readRecord()));
    EXPECT_EQ(before, bytes());
    OpenRecord open(m_scratch.root());
    open.record.add({recordedFile("c", "")});
    EXPECT_EQ((QList<QByteArray>{"a", "b", "c"}), pathsOf(open.record.contents()));
}

TEST_F(ExportRecordFile, OfANewerVersionIsRefusedAndLeftAsItIs)
{
    writeRecord(m_scratch.root(), {recordedFile("a", "")});
    runSql("PRAGMA user_version = 2; CREATE TABLE more(a)");
    expectRefused("was made by a newer version of photolib");
}

// The number of the newer version stands in the write-ahead log only.
TEST_F(ExportRecordFile, OfANewerVersionIsRefusedAndLeftAsItIsWithItsLog)
{
    writeRecord(m_scratch.root(), {recordedFile("a", "")});
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        runSql("PRAGMA journal_mode = WAL");
        sqlite3 *database = nullptr;
        sqlite3_open(name().constData(), &database);
        sqlite3_exec(database, "PRAGMA user_version = 2", nullptr, nullptr, nullptr);
        ::_exit(0);
    }
    int status = -1;
    ASSERT_EQ(child, ::waitpid(child, &status, 0));
    ASSERT_GT(m_scratch.size(".photolib/export.sqlite-wal"), 0);
    expectRefused("was made by a newer version of photolib");
}

TEST_F(ExportRecordFile, OfAnotherProgramIsRefusedAndLeftAsItIs)
{
    m_scratch.makeFolder(".photolib");
    runSql("CREATE TABLE notes(text); INSERT INTO notes VALUES('mine')");
    expectRefused("is not the record of an export");
    runSql("PRAGMA application_id = 7");
    expectRefused("is not the record of an export");
}

TEST_F(ExportRecordFile, ThatIsNoDatabaseIsRefusedAndLeftAsItIs)
{
    m_scratch.write(databasePath, QByteArray(5000, 'x'));
    expectRefused("is damaged: file is not a database", Error::Damaged);
}

TEST_F(ExportRecordFile, ThatIsCutShortIsRefusedAndLeftAsItIs)
{
    std::vector<RecordedFile> files;
    for (int i = 0; i < 1000; ++i)
        files.push_back(recordedFile(QByteArray::number(i), "bytes"));
    writeRecord(m_scratch.root(), files);
    const QByteArray whole = m_scratch.read(databasePath);
    for (const int size : {whole.size() / 2, 8192, 4096}) {
        m_scratch.write(databasePath, whole.left(size));
        expectRefused("is damaged: database disk image is malformed", Error::Damaged);
    }
}

TEST_F(ExportRecordFile, WithOverwrittenPagesIsRefusedAndLeftAsItIs)
{
    std::vector<RecordedFile> files;
    for (int i = 0; i < 1000; ++i)
        files.push_back(recordedFile(QByteArray::number(i), "bytes"));
    writeRecord(m_scratch.root(), files);
    const QByteArray whole = m_scratch.read(databasePath);
    m_scratch.write(databasePath, whole.left(4096) + QByteArray(whole.size() - 4096, '\x55'));
    expectRefused("is damaged: database disk image is malformed", Error::Damaged);
}

// Reading would not notice: the files are all there.
TEST_F(ExportRecordFile, WithAnIndexThatLacksAFileIsRefusedAndLeftAsItIs)
{
    writeRecord(m_scratch.root(), {recordedFile("a", "")});
    const QByteArray whole = m_scratch.read(databasePath);
    const QByteArray photo = "photo of a";
    const int first = whole.indexOf(photo);
    ASSERT_GE(first, 0);
    ASSERT_NE(first, whole.lastIndexOf(photo));
    m_scratch.write(databasePath, QByteArray(whole).replace(first, 1, "q"));
    expectRefused("is damaged: database disk image is malformed", Error::Damaged);
}

TEST_F(ExportRecordFile, IsAsItWasWhenTheDiskIsFullWhileFilesAreAdded)
{
    writeRecord(m_scratch.root(), {recordedFile("a", "")});
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        constexpr rlim_t most = 65536;
        const rlimit limit = {most, most};
        OpenRecord open(m_scratch.root());
        std::signal(SIGXFSZ, SIG_IGN);
        if (::setrlimit(RLIMIT_FSIZE, &limit) != 0)
            ::_exit(2);
        std::vector<RecordedFile> files;
        for (int i = 0; i < 2000; ++i)
            files.push_back(recordedFile(QByteArray::number(i), ""));
        try {
            open.record.add(files);
            ::_exit(3);
        } catch (const Error &) {
            ::_exit(open.record.contents().files.size() == 1 ? 0 : 4);
        }
    }
    int status = -1;
    ASSERT_EQ(child, ::waitpid(child, &status, 0));
    ASSERT_EQ(0, WEXITSTATUS(status));
    EXPECT_EQ(QList<QByteArray>{"a"}, pathsOf(readRecord()));
    writeRecord(m_scratch.root(), {recordedFile("b", "")});
    EXPECT_EQ((QList<QByteArray>{"a", "b"}), pathsOf(readRecord()));
}

TEST_F(ExportRecordFile, IsReadNoFurtherOnceThatIsCancelled)
{
    writeRecord(m_scratch.root(), {recordedFile("a", "")});
    CancelToken cancel;
    cancel.cancel();
    try {
        readExportRecord(m_scratch.root(), cancel);
        ADD_FAILURE() << "not cancelled";
    } catch (const Error &error) {
        EXPECT_EQ(Error::Cancelled, error.kind());
    }
}

TEST_F(ExportRecordFile, IsWrittenOnADiskWithoutLocks)
{
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        if (!takeLocksAway())
            ::_exit(77);
        try {
            writeRecord(m_scratch.root(), {recordedFile("a", "")});
            writeRecord(m_scratch.root(), {recordedFile("b", "")});
            ::_exit(readRecord().files.size() == 2 ? 0 : 2);
        } catch (const Error &) {
            ::_exit(1);
        }
    }
    int status = -1;
    ASSERT_EQ(child, ::waitpid(child, &status, 0));
    if (WEXITSTATUS(status) == 77)
        GTEST_SKIP() << "locks cannot be taken away here";
    ASSERT_EQ(0, status);
    EXPECT_EQ((QList<QByteArray>{"a", "b"}), pathsOf(readRecord()));
}

TEST_F(ExportRecordFile, WithOtherTablesIsRefused)
{
    for (const QByteArray sql :
         {"CREATE TABLE more(a)", "CREATE VIEW seen AS SELECT path FROM files",
          "CREATE TRIGGER gone AFTER INSERT ON files BEGIN DELETE FROM files; END",
          "DROP INDEX files_current", "ALTER TABLE files ADD COLUMN note"}) {
        writeRecord(m_scratch.root(), {recordedFile("a", "")});
        runSql(sql);
        expectRefused("is damaged: its tables are not those of a record", Error::Damaged);
        for (const QByteArray &path : m_scratch.everythingIn(".photolib"))
            ASSERT_EQ(0, ::unlink(path.constData()));
    }
}

TEST_F(ExportRecordFile, WithStatisticsOfADatabaseToolIsTaken)
{
    writeRecord(m_scratch.root(), {recordedFile("a", "")});
    runSql("ANALYZE");
    EXPECT_EQ(QList<QByteArray>{"a"}, pathsOf(readRecord()));
    EXPECT_EQ(QList<QByteArray>{"a"}, pathsOf(OpenRecord(m_scratch.root()).record.contents()));
}

struct DamagedRow {
    const char *name;
    const char *sql;
    const char *cause;
};

void PrintTo(const DamagedRow &row, std::ostream *out)
{
    *out << row.sql;
}

class ExportRecordWith : public ExportRecordFile, public testing::WithParamInterface<DamagedRow>
{
};

TEST_P(ExportRecordWith, IsDamaged)
{
    writeRecord(m_scratch.root(), {recordedFile("a", "")},
                {{RecordedAlbumFile::Link, "Albums/a", "a"}});
    runSql(GetParam().sql);
    expectRefused(QByteArray("is damaged: ") + GetParam().cause, Error::Damaged);
}

constexpr char outside[] = "a path leads out of the folder";
constexpr char wrongType[] = "a value is of the wrong type";
constexpr char noSum[] = "a SHA-256 is none";

INSTANTIATE_TEST_SUITE_P(
    , ExportRecordWith,
    testing::Values(
        DamagedRow{"AnAbsolutePath", "UPDATE files SET path = '/etc/passwd'", outside},
        DamagedRow{"APathThatLeadsOut", "UPDATE files SET path = 'a/../../b'", outside},
        DamagedRow{"APathIntoTheRecord", "UPDATE files SET path = '.photolib/a'", outside},
        DamagedRow{"AnEmptyPath", "UPDATE files SET path = ''", outside},
        DamagedRow{"AZeroByteInAPath", "UPDATE files SET path = CAST(x'610062' AS TEXT)", outside},
        DamagedRow{"APathOfAnotherType", "UPDATE files SET path = x'61'", wrongType},
        DamagedRow{"AShortSum", "UPDATE files SET sha256 = 'abc'", noSum},
        DamagedRow{"ASumInCapitals", "UPDATE files SET sha256 = upper(sha256)", noSum},
        DamagedRow{"ANegativeSize", "UPDATE files SET size = -1", "a size is negative"},
        DamagedRow{"ASizeThatIsText", "UPDATE files SET size = 'much'", wrongType},
        DamagedRow{"AnUnknownRole", "UPDATE files SET role = 'else'", "a role is unknown"},
        DamagedRow{"AnAlbumPathThatLeadsOut", "UPDATE album_files SET path = '../a'", outside},
        DamagedRow{"AnAlbumTargetThatLeadsOut", "UPDATE album_files SET target = '/a'", outside},
        DamagedRow{"AnUnknownKind", "UPDATE album_files SET kind = 'else'",
                   "a kind of file is unknown"}),
    [](const testing::TestParamInfo<DamagedRow> &info) { return std::string(info.param.name); });

TEST_F(ExportRecordFile, MustNotBeALink)
{
    writeRecord(m_scratch.root(), {recordedFile("a", "")});
    const QByteArray elsewhere = m_scratch.path("elsewhere.sqlite");
    ASSERT_EQ(0, ::rename(name().constData(), elsewhere.constData()));
    const QByteArray before = m_scratch.read(elsewhere);
    m_scratch.makeLink(databasePath, elsewhere);
    expectRefused("not a regular file");
    EXPECT_EQ(before, m_scratch.read(elsewhere));
}

TEST_F(ExportRecordFile, MustHaveNoLinkForALog)
{
    writeRecord(m_scratch.root(), {recordedFile("a", "")});
    m_scratch.write("precious", "text");
    m_scratch.makeLink(".photolib/export.sqlite-wal", m_scratch.path("precious"));
    expectRefused("not a regular file");
    EXPECT_EQ("text", m_scratch.read("precious"));
}

TEST_F(ExportRecordFile, IsNotReadThroughALinkInPlaceOfItsFolder)
{
    writeRecord(m_scratch.path("."), {recordedFile("a", "")});
    m_scratch.makeFolder("other");
    m_scratch.makeLink("other/.photolib", m_scratch.path(".photolib"));
    EXPECT_THROW(readExportRecord(m_scratch.path("other")), Error);
    EXPECT_THROW(hasExportRecord(m_scratch.path("other")), Error);
}

TEST_F(ExportRecordFile, MayBeReachedThroughALinkToTheFolderOfTheExport)
{
    m_scratch.makeFolder("real");
    m_scratch.makeLink("link", m_scratch.path("real"));
    writeRecord(m_scratch.path("link"), {recordedFile("a", "")});
    EXPECT_EQ(QList<QByteArray>{"a"}, pathsOf(readExportRecord(m_scratch.path("real"))));
    EXPECT_EQ(QList<QByteArray>{"a"}, pathsOf(readExportRecord(m_scratch.path("link/"))));
}

} // namespace
