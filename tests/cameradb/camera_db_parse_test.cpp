#include "cameradb/camera_db_parse.h"

#include "cameradb/cancel_flag.h"
#include "cameradb/owned_model.h"
#include "cameradb/parse_log.h"
#include "support/fake_host.h"
#include "support/photos_database.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <filesystem>
#include <future>
#include <thread>

namespace {

using Keys = QList<quint64>;
using Lines = std::vector<std::string>;

const char *const deviceDb = "/PhotoData/Photos.sqlite";
const char *const deviceWal = "/PhotoData/Photos.sqlite-wal";
const char *const deviceShm = "/PhotoData/Photos.sqlite-shm";

// Whether this process has a file below `folder` open.
bool hasOpenFileBelow(const std::string &folder)
{
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        const std::string target = std::filesystem::read_symlink(entry.path(), error).string();
        if (target.rfind(folder, 0) == 0)
            return true;
    }
    return false;
}

// Works on the real disk, for SQLite opens the copies itself.
class CameraParse : public testing::Test
{
protected:
    CameraParse() : host(FakeHost::Disk::Real)
    {
        gbShouldQuit = false;
        work = folder.path().toUtf8() + '/';
        device.localData = QString::fromUtf8(work);
    }
    ~CameraParse() override { gbShouldQuit = false; }

    // Puts `database` on the device, without journals.
    void install() { host.setDeviceFile(deviceDb, database.bytes()); }
    void install(const PhotosFiles &files)
    {
        host.setDeviceFile(deviceDb, files.database);
        host.setDeviceFile(deviceWal, files.wal);
        host.setDeviceFile(deviceShm, files.shm);
    }
    // Journals that SQLite passes over, so that the copies of all three files succeed.
    void installJournals()
    {
        host.setDeviceFile(deviceWal, "");
        host.setDeviceFile(deviceShm, "");
    }

    int parse() { return parseCameraDB(&device, model.get()); }
    OwnedModel load() { return OwnedModel(cameraDBParse(&device)); }

    QByteArray local(const char *suffix = "") const { return work + "Photos.sqlite" + suffix; }
    QString workFolder() const { return QString::fromUtf8(work); }

    void expectClosed() const { EXPECT_FALSE(hasOpenFileBelow(folder.path().toStdString())); }

    // The log without the lines of journals that are not there.
    LogLines logWithoutJournals() const
    {
        LogLines lines;
        for (const LogLine &line : host.log()) {
            if (!line.text.startsWith("Can not open file: /PhotoData/Photos.sqlite-"))
                lines.push_back(line);
        }
        return lines;
    }

    QTemporaryDir folder;
    QByteArray work;
    FakeHost host;
    FakeIPod device;
    PhotosDatabase database;
    OwnedModel model = emptyModel();
};

// The calls that copy one file of `bytes` bytes as the `n`-th copy.
Lines copyCalls(int n, const QByteArray &source, const QByteArray &target, int bytes)
{
    const std::string dev = std::to_string(2 * n - 1);
    const std::string local = std::to_string(2 * n);
    const std::string path = target.toStdString();
    const std::string parent = target.left(target.lastIndexOf('/')).toStdString();
    const std::string count = std::to_string(bytes);
    Lines lines = {
        "isAccessBlocked() -> false",
        "devicePath() -> \"connected-device\"",
        "vDevOpen(2, \"connected-device\") -> dev" + dev,
        "vFileOpen(dev" + dev + ", \"" + source.toStdString() + "\", 0) -> file" + dev,
        "vDevOpen(0, \"\") -> dev" + local,
        "vDevCreateDir(dev" + local + ", \"" + parent + "\") -> true",
        "vFileOpen(dev" + local + ", \"" + path + "\", 1) -> file" + local,
    };
    if (bytes > 0) {
        lines.push_back("vFileRead(file" + dev + ", 4194304) -> " + count);
        lines.push_back("vFileWrite(file" + local + ", " + count + ") -> " + count);
    }
    for (const std::string &line : {"vFileRead(file" + dev + ", 4194304) -> 0",
                                    "vFileClose(file" + dev + ")", "vDevClose(dev" + dev + ")",
                                    "vFileClose(file" + local + ")", "vDevClose(dev" + local + ")"})
        lines.push_back(line);
    return lines;
}

void append(Lines &lines, const Lines &more)
{
    lines.insert(lines.end(), more.begin(), more.end());
}

std::string logText(const LogLine &line)
{
    return "Log(\"" + line.tag.toStdString() + "\", " + std::to_string(line.level) + ", \"" +
           line.text.toStdString() + "\")";
}

TEST_F(CameraParse, MakesTheseCallsAndLogsTheseLinesInThisOrder)
{
    database.rows.assets = {photoRow(1), videoRow(2)};
    PhotosRows later;
    later.albums = {albumRow(3)};
    const PhotosFiles files = database.filesWithWal(later);
    install(files);
    const OwnedModel loaded = load();
    EXPECT_TRUE(loaded);

    Lines expected = {logText(notice("load ATHCameraDB")),
                      "localDataPath() -> \"" + work.toStdString() + '"'};
    append(expected, copyCalls(1, deviceDb, local(), files.database.size()));
    append(expected, copyCalls(2, deviceWal, local("-wal"), files.wal.size()));
    append(expected, copyCalls(3, deviceShm, local("-shm"), files.shm.size()));
    for (const LogLine &line : parsedLog())
        expected.push_back(logText(line));
    expected.push_back(logText(notice("load ATHCameraDB end")));
    EXPECT_EQ(host.trace(), expected);
    EXPECT_EQ(host.openHandles(), Lines());
}

TEST_F(CameraParse, FillsAModel)
{
    database.rows.libraryUuids = {QByteArray("\x01\x00\x02", 3)};
    database.rows.assets = {photoRow(1, 5), videoRow(2, 6), photoRow(4, 5)};
    database.rows.assets[2].kindSubtype = 1;
    database.rows.attributes = {{1, 2, 2.5, 77}};
    database.rows.albums = {albumRow(3), albumRow(9, 1000)};
    database.join().add(3, 2);
    install();
    const OwnedModel loaded = load();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->assets.keys(), (Keys{1, 2, 4}));
    EXPECT_EQ(loaded->videos.keys(), Keys{2});
    EXPECT_EQ(loaded->panoramas.keys(), Keys{4});
    EXPECT_EQ(loaded->albums.keys(), (Keys{3, 9}));
    EXPECT_EQ(loaded->albums.value(3)->assetKeys, Keys{2});
    EXPECT_EQ(loaded->assets.value(2)->duration, 3);
    EXPECT_EQ(loaded->assets.value(2)->originalFileSize, 77);
    EXPECT_EQ(loaded->assets.value(4)->modificationDate, 6);
    EXPECT_EQ(loaded->assets.value(1)->db, loaded.get());
    EXPECT_EQ(loaded->device, &device);
    EXPECT_EQ(loaded->uuid, QByteArray("\x01\x00\x02", 3));
    EXPECT_EQ(loaded->maxAssetPk, 4);
    EXPECT_EQ(loaded->maxAlbumPk, 9);
    EXPECT_TRUE(loaded->hasKindSubtype);
    expectClosed();
}

TEST_F(CameraParse, YieldsAnEmptyModelOfADatabaseWithoutRows)
{
    install();
    const OwnedModel loaded = load();
    ASSERT_TRUE(loaded);
    EXPECT_TRUE(loaded->albums.isEmpty());
    EXPECT_TRUE(loaded->assets.isEmpty());
    EXPECT_TRUE(loaded->videos.isEmpty());
    EXPECT_TRUE(loaded->panoramas.isEmpty());
    EXPECT_TRUE(loaded->uuid.isEmpty());
    EXPECT_EQ(loaded->maxAssetPk, 0);
    EXPECT_EQ(loaded->maxAlbumPk, 0);
}

TEST_F(CameraParse, ReadsAnEarlySchema)
{
    database.schema = Schema::early();
    database.rows.assets = {photoRow(1, 5), videoRow(2, 6)};
    database.rows.albums = {albumRow(3)};
    install();
    EXPECT_EQ(parse(), 1);
    EXPECT_EQ(logWithoutJournals(), parsedLog());
    EXPECT_EQ(model->assets.keys(), (Keys{1, 2}));
    EXPECT_EQ(model->albums.keys(), Keys{3});
    EXPECT_FALSE(model->hasKindSubtype);
}

// Opens every connection the way an SQLite does that was built to take texts in double
// quotes for names only.
class StrictQuotes
{
public:
    StrictQuotes() { sqlite3_auto_extension(entryPoint()); }
    ~StrictQuotes() { sqlite3_cancel_auto_extension(entryPoint()); }
    StrictQuotes(const StrictQuotes &) = delete;
    StrictQuotes &operator=(const StrictQuotes &) = delete;

private:
    using EntryPoint = void (*)();

    static int refuse(sqlite3 *db, char **, const void *)
    {
        sqlite3_db_config(db, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
        sqlite3_db_config(db, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
        return SQLITE_OK;
    }
    // SQLite asks for this type and calls it back with the true one.
    static EntryPoint entryPoint() { return reinterpret_cast<EntryPoint>(refuse); }
};

TEST_F(CameraParse, NeedsNoSqliteThatTakesDoubleQuotesForTexts)
{
    database.schema = Schema::early();
    database.rows.assets = {photoRow(1, 5), videoRow(2, 6)};
    install();
    const StrictQuotes strict;
    EXPECT_EQ(parse(), 1);
    EXPECT_EQ(logWithoutJournals(), parsedLog());
    EXPECT_EQ(model->assets.keys(), (Keys{1, 2}));
    EXPECT_EQ(model->assets.value(1)->avalancheUUID, QStringLiteral("0"));
}

TEST_F(CameraParse, ReadsWhatOnlyTheWriteAheadLogHolds)
{
    database.rows.assets = {photoRow(1, 1)};
    PhotosRows later;
    later.assets = {photoRow(2, 2), videoRow(3)};
    later.albums = {albumRow(4)};
    install(database.filesWithWal(later));
    EXPECT_EQ(parse(), 1);
    EXPECT_EQ(model->assets.keys(), (Keys{1, 2, 3}));
    EXPECT_EQ(model->albums.keys(), Keys{4});
}

// --- The copies

TEST_F(CameraParse, LeavesTheCopiesInTheWorkFolder)
{
    database.rows.assets = {photoRow(1)};
    PhotosRows later;
    later.assets = {photoRow(2)};
    const PhotosFiles files = database.filesWithWal(later);
    install(files);
    EXPECT_EQ(parse(), 1);
    EXPECT_EQ(host.hostFile(local()), files.database);
    EXPECT_EQ(host.hostFile(local("-wal")), files.wal);
    EXPECT_TRUE(host.hostFile(local("-shm")));
    expectClosed();
}

TEST_F(CameraParse, LeavesACopyWithoutJournalsAsItCame)
{
    database.rows.assets = {photoRow(1)};
    install();
    EXPECT_EQ(parse(), 1);
    EXPECT_EQ(host.hostFile(local()), database.bytes());
    EXPECT_FALSE(host.hostFile(local("-wal")));
    EXPECT_FALSE(host.hostFile(local("-shm")));
}

TEST_F(CameraParse, OverwritesTheCopiesOfTheLastParse)
{
    database.rows.assets = {photoRow(1), photoRow(2, 1), photoRow(3, 2)};
    install();
    EXPECT_EQ(parse(), 1);
    database.rows.assets = {photoRow(7)};
    install();
    model = emptyModel();
    EXPECT_EQ(parse(), 1);
    EXPECT_EQ(model->assets.keys(), Keys{7});
    EXPECT_EQ(host.hostFile(local()), database.bytes());
}

TEST_F(CameraParse, GoesOnWithoutJournals)
{
    database.rows.assets = {photoRow(1)};
    install();
    EXPECT_EQ(parse(), 1);
    EXPECT_EQ(model->assets.keys(), Keys{1});
    LogLines expected = {failure("Can not open file: /PhotoData/Photos.sqlite-wal"),
                         failure("Can not open file: /PhotoData/Photos.sqlite-shm")};
    for (const LogLine &line : parsedLog())
        expected.push_back(line);
    EXPECT_EQ(host.log(), expected);
    EXPECT_EQ(host.openHandles(), (Lines{"dev3", "dev4"})) << "each failed copy leaves its device";
}

TEST_F(CameraParse, KeepsAJournalOfAnEarlierParse)
{
    database.rows.assets = {photoRow(1)};
    PhotosRows later;
    later.assets = {photoRow(2)};
    const PhotosFiles files = database.filesWithWal(later);
    install(files);
    EXPECT_EQ(parse(), 1);

    host.removeDeviceFile(deviceWal);
    host.removeDeviceFile(deviceShm);
    model = emptyModel();
    EXPECT_EQ(parse(), 1);
    EXPECT_EQ(host.hostFile(local("-wal")), files.wal);
    EXPECT_EQ(model->assets.keys(), (Keys{1, 2})) << "SQLite finds the log beside the new copy";
}

TEST_F(CameraParse, StopsWhenTheDatabaseIsNotCopied)
{
    installJournals();
    EXPECT_EQ(parse(), -1);
    const Lines expected = {
        "localDataPath() -> \"" + work.toStdString() + '"',
        "isAccessBlocked() -> false",
        "devicePath() -> \"connected-device\"",
        "vDevOpen(2, \"connected-device\") -> dev1",
        "vFileOpen(dev1, \"/PhotoData/Photos.sqlite\", 0) -> null",
        logText(failure("Can not open file: /PhotoData/Photos.sqlite")),
    };
    EXPECT_EQ(host.trace(), expected);
    EXPECT_FALSE(host.hostFile(local()));
}

TEST_F(CameraParse, LoadsNothingWhenTheDatabaseIsNotCopied)
{
    host.failDevOpen(VDevDevice);
    EXPECT_EQ(cameraDBParse(&device), nullptr);
    EXPECT_EQ(host.log(), (LogLines{notice("load ATHCameraDB"), failure("Can not open device"),
                                    failure("Can not load lib")}));
}

TEST_F(CameraParse, SurvivesATruncatedCopy)
{
    for (int pk = 1; pk <= 200; ++pk)
        database.rows.assets.push_back(photoRow(pk, pk));
    database.rows.albums = {albumRow(1)};
    install();
    installJournals();
    const int size = database.bytes().size();
    for (int kept = 0; kept < size; kept += 1501) {
        host.clearRecords();
        host.shortenWrite(local(), 1, kept);
        model = emptyModel();
        const int result = parse();
        EXPECT_TRUE(result == 0 || result == 1) << kept;
        EXPECT_EQ(host.log().front(), notice("Parser_Ath_camera_DB")) << kept;
        EXPECT_EQ(host.log().back(), notice("Parser_Ath_camera_DB extend info end")) << kept;
        EXPECT_LE(model->assets.size(), 200);
    }
}

// --- The work folder

TEST_F(CameraParse, AppendsTheNamesToAFolderWithoutSeparator)
{
    install();
    device.localData = workFolder() + QStringLiteral("phone");
    EXPECT_EQ(parse(), 1);
    EXPECT_TRUE(host.hostFile(work + "phonePhotos.sqlite"));
    EXPECT_FALSE(host.hasHostFolder(work + "phone"));
}

TEST_F(CameraParse, MakesTheFolderWithItsParents)
{
    install();
    device.localData = workFolder() + QStringLiteral("a/b/");
    EXPECT_EQ(parse(), 1);
    EXPECT_TRUE(host.hostFile(work + "a/b/Photos.sqlite"));
}

TEST_F(CameraParse, NamesTheFolderInUtf8)
{
    database.rows.assets = {photoRow(1)};
    install();
    device.localData = workFolder() + QStringLiteral("\u00e9\u96fb/");
    EXPECT_EQ(parse(), 1);
    EXPECT_EQ(model->assets.keys(), Keys{1});
    EXPECT_TRUE(host.hostFile(work + "\xc3\xa9\xe9\x9b\xbb/Photos.sqlite"));
}

// Makes the system's temporary folder another one while it lives.
class TemporaryFolder
{
public:
    explicit TemporaryFolder(const QByteArray &path) : m_before(qgetenv("TMPDIR"))
    {
        qputenv("TMPDIR", path);
    }
    ~TemporaryFolder()
    {
        if (m_before.isNull())
            qunsetenv("TMPDIR");
        else
            qputenv("TMPDIR", m_before);
    }
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

private:
    const QByteArray m_before;
};

TEST_F(CameraParse, UsesTheTemporaryFolderWithoutAFolderOfTheHost)
{
    host.addHostFolder(work + "tmp");
    const TemporaryFolder temporary(work + "tmp");
    database.rows.assets = {photoRow(1)};
    install();
    for (const QString &none : {QString(), QStringLiteral("")}) {
        host.clearRecords();
        device.localData = none;
        model = emptyModel();
        EXPECT_EQ(parse(), 1);
        EXPECT_EQ(model->assets.keys(), Keys{1});
        EXPECT_EQ(host.callCount("localDataPath"), 1);
        EXPECT_TRUE(host.hostFile(work + "tmp/Photos.sqlite"));
    }
}

TEST_F(CameraParse, ReadsTheTemporaryFolderWithoutADevice)
{
    const TemporaryFolder temporary(work);
    database.rows.assets = {photoRow(1)};
    host.setHostFile(local(), database.bytes());
    EXPECT_EQ(parseCameraDB(nullptr, model.get()), 1);
    EXPECT_EQ(model->assets.keys(), Keys{1});
    EXPECT_EQ(host.calls(), Lines());
    EXPECT_EQ(host.log(), parsedLog());
}

// --- Preconditions and access

TEST_F(CameraParse, DoesNothingWithoutADevice)
{
    EXPECT_EQ(cameraDBParse(nullptr), nullptr);
    EXPECT_EQ(host.trace(), Lines());
}

TEST_F(CameraParse, WarnsAboutAMissingModelAfterTheCopies)
{
    install();
    installJournals();
    EXPECT_EQ(parseCameraDB(&device, nullptr), -1);
    Lines expected = {"localDataPath() -> \"" + work.toStdString() + '"'};
    append(expected, copyCalls(1, deviceDb, local(), database.bytes().size()));
    append(expected, copyCalls(2, deviceWal, local("-wal"), 0));
    append(expected, copyCalls(3, deviceShm, local("-shm"), 0));
    expected.emplace_back("warning(\"int parseCameraDB(IIPod *, CameraDB *)\", \"cameradb\")");
    EXPECT_EQ(host.trace(), expected);
    EXPECT_EQ(host.warnings(), std::vector<Precondition>{precondition(
                                   "int parseCameraDB(IIPod *, CameraDB *)", "cameradb")});
    EXPECT_EQ(host.hostFile(local()), database.bytes());
}

TEST_F(CameraParse, WarnsAboutNoModelWhenTheCopyFails)
{
    EXPECT_EQ(parseCameraDB(&device, nullptr), -1);
    EXPECT_TRUE(host.warnings().empty());
}

const Lines blockedCalls = {"isAccessBlocked() -> true", "isAccessBlocked() -> true",
                            "isAccessBlocked() -> true"};

TEST_F(CameraParse, ReadsAnEarlierCopyWhileAccessIsBlocked)
{
    database.rows.assets = {photoRow(1)};
    host.setHostFile(local(), database.bytes());
    device.accessBlocked = true;
    EXPECT_EQ(parse(), 1);
    EXPECT_EQ(model->assets.keys(), Keys{1});
    Lines calls = {"localDataPath() -> \"" + work.toStdString() + '"'};
    append(calls, blockedCalls);
    EXPECT_EQ(host.calls(), calls);
    EXPECT_EQ(host.log(), parsedLog());
}

TEST_F(CameraParse, ReadsAnEmptyDatabaseWhileAccessIsBlockedAndNothingWasCopied)
{
    device.accessBlocked = true;
    EXPECT_EQ(parse(), 0);
    EXPECT_EQ(host.log(), failedLog({failure("Can not parse camera album")}));
    EXPECT_EQ(host.hostFile(local()), QByteArray(""));
    expectClosed();
}

TEST_F(CameraParse, LoadsNothingOfAnEmptyDatabase)
{
    device.accessBlocked = true;
    EXPECT_EQ(cameraDBParse(&device), nullptr);
    LogLines expected = {notice("load ATHCameraDB")};
    for (const LogLine &line : failedLog({failure("Can not parse camera album")}))
        expected.push_back(line);
    expected.push_back(failure("Can not load lib"));
    EXPECT_EQ(host.log(), expected);
}

TEST_F(CameraParse, LogsACopyThatSqliteDoesNotOpen)
{
    device.accessBlocked = true;
    device.localData = workFolder() + QStringLiteral("missing/");
    EXPECT_EQ(parse(), -1);
    EXPECT_EQ(host.log(), LogLines{failure("Can not open sqlite db")});
    host.clearRecords();
    EXPECT_EQ(cameraDBParse(&device), nullptr);
    EXPECT_EQ(host.log(), (LogLines{notice("load ATHCameraDB"), failure("Can not open sqlite db"),
                                    failure("Can not load lib")}));
}

// --- Cancel

struct CancelledCopy {
    const char *name;
    const char *operation; ///< during whose n-th call the cancel comes
    int n;
    int copies; ///< begun before the parse stops
};

class CancelledParse : public CameraParse, public testing::WithParamInterface<CancelledCopy>
{
};

TEST_P(CancelledParse, YieldsMinusOneAndCopiesNoFurther)
{
    install();
    installJournals();
    host.onCall(GetParam().operation, GetParam().n, cancleParse);
    EXPECT_EQ(parse(), -1);
    EXPECT_EQ(host.log(), LogLines());
    EXPECT_EQ(host.callCount("isAccessBlocked"), GetParam().copies);
    EXPECT_EQ(host.openHandles(), Lines());
    EXPECT_TRUE(model->assets.isEmpty());
    EXPECT_TRUE(gbShouldQuit);
}

TEST_P(CancelledParse, LoadsNothing)
{
    install();
    installJournals();
    host.onCall(GetParam().operation, GetParam().n, cancleParse);
    EXPECT_EQ(cameraDBParse(&device), nullptr);
    EXPECT_EQ(host.log(), (LogLines{notice("load ATHCameraDB"), failure("Can not load lib")}));
    EXPECT_EQ(host.callCount("isAccessBlocked"), GetParam().copies);
    EXPECT_TRUE(gbShouldQuit) << "set until the next parse";
}

INSTANTIATE_TEST_SUITE_P(Moments, CancelledParse,
                         testing::Values(CancelledCopy{"WhenTheFolderIsAsked", "localDataPath", 1,
                                                       1},
                                         CancelledCopy{"InTheFirstRead", "vFileRead", 1, 1},
                                         CancelledCopy{"InTheFirstWrite", "vFileWrite", 1, 1},
                                         CancelledCopy{"AfterTheDatabase", "vDevClose", 2, 1},
                                         CancelledCopy{"InTheSecondCopy", "isAccessBlocked", 2, 2},
                                         CancelledCopy{"AfterTheLog", "vDevClose", 4, 2},
                                         CancelledCopy{"InTheThirdCopy", "isAccessBlocked", 3, 3},
                                         CancelledCopy{"AfterTheSharedMemory", "vDevClose", 6, 3}),
                         rowName<CancelledCopy>);

TEST_F(CameraParse, ComesToItsEndOnceTheDatabaseIsOpen)
{
    database.rows.assets = {photoRow(1)};
    install();
    installJournals();
    host.onCall("Log", 1, cancleParse);
    EXPECT_EQ(parse(), 1);
    EXPECT_EQ(host.log(), parsedLog());
    EXPECT_EQ(model->assets.keys(), Keys{1});
}

TEST_F(CameraParse, ReportsACancelBeforeTheFailureOfTheCopy)
{
    host.onCall("vFileOpen", 1, cancleParse);
    EXPECT_EQ(parse(), -1);
    EXPECT_EQ(host.log(), LogLines{failure("Can not open file: /PhotoData/Photos.sqlite")});
}

TEST_F(CameraParse, ForgetsAnEarlierCancelWhenItLoads)
{
    database.rows.assets = {photoRow(1)};
    install();
    cancleParse();
    const OwnedModel loaded = load();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->assets.keys(), Keys{1});
    EXPECT_FALSE(gbShouldQuit);
}

TEST_F(CameraParse, ForgetsAnEarlierCancelEvenWithoutADevice)
{
    cancleParse();
    EXPECT_EQ(cameraDBParse(nullptr), nullptr);
    EXPECT_FALSE(gbShouldQuit);
}

TEST_F(CameraParse, HeedsAnEarlierCancelOtherwise)
{
    install();
    cancleParse();
    EXPECT_EQ(parse(), -1);
    EXPECT_EQ(host.callCount("isAccessBlocked"), 1);
    EXPECT_EQ(host.callCount("vFileRead"), 1);
    EXPECT_EQ(host.callCount("vFileWrite"), 0);
}

TEST_F(CameraParse, ParsesAgainAfterACancel)
{
    database.rows.assets = {photoRow(1)};
    install();
    host.onCall("vFileRead", 1, cancleParse);
    EXPECT_EQ(cameraDBParse(&device), nullptr);
    const OwnedModel loaded = load();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->assets.keys(), Keys{1});
}

TEST_F(CameraParse, IsCancelledFromAnotherThread)
{
    for (int pk = 1; pk <= 200; ++pk)
        database.rows.assets.push_back(photoRow(pk, pk));
    install();
    host.shortenReads(deviceDb, 1000);
    std::promise<void> copying;
    std::thread canceller([&] {
        copying.get_future().wait();
        cancleParse();
    });
    // The cancel comes at any moment from the third read on, and has come by the sixth.
    host.onCall("vFileRead", 3, [&] { copying.set_value(); });
    host.onCall("vFileRead", 6, [&] { canceller.join(); });
    EXPECT_EQ(cameraDBParse(&device), nullptr);
    if (canceller.joinable())
        canceller.join();
    EXPECT_EQ(host.log(), (LogLines{notice("load ATHCameraDB"), failure("Can not load lib")}));
    EXPECT_LE(host.callCount("vFileRead"), 6);
    const std::optional<QByteArray> partial = host.hostFile(local());
    ASSERT_TRUE(partial);
    EXPECT_TRUE(database.bytes().startsWith(*partial));
    EXPECT_LT(partial->size(), database.bytes().size());
}

// --- The library's identifier

struct LibraryUuid {
    const char *name;
    std::vector<SqlValue> stored;
    QByteArray uuid;
};

class ParsedLibraryUuid : public CameraParse, public testing::WithParamInterface<LibraryUuid>
{
};

TEST_P(ParsedLibraryUuid, IsWhatTheRowsHoldTogether)
{
    database.rows.libraryUuids = GetParam().stored;
    install();
    EXPECT_EQ(parse(), 1);
    EXPECT_EQ(model->uuid, GetParam().uuid);
    EXPECT_EQ(logWithoutJournals(), parsedLog());
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ParsedLibraryUuid,
    testing::Values(LibraryUuid{"None", {}, ""},
                    LibraryUuid{
                        "Blob", {QByteArray("\x00\xff\x00", 3)}, QByteArray("\x00\xff\x00", 3)},
                    LibraryUuid{"Text", {"0A1B-\xc3\xa9"}, "0A1B-\xc3\xa9"},
                    LibraryUuid{"Null", {nullptr}, ""},
                    LibraryUuid{"Three", {QByteArray("ab"), nullptr, "cd"}, "abcd"}),
    rowName<LibraryUuid>);

TEST_F(CameraParse, GoesOnSilentlyWithoutAnIdentifier)
{
    database.schema.metadata = false;
    install();
    EXPECT_EQ(parse(), 1);
    EXPECT_TRUE(model->uuid.isEmpty());
    EXPECT_EQ(logWithoutJournals(), parsedLog());
}

TEST_F(CameraParse, AppendsTheIdentifierToTheModels)
{
    database.rows.libraryUuids = {QByteArray("cd")};
    install();
    model->uuid = "ab";
    EXPECT_EQ(parse(), 1);
    EXPECT_EQ(model->uuid, QByteArray("abcd"));
}

// --- The schema probe

TEST_F(CameraParse, KnowsAKindSubtypeByItsExactCase)
{
    database.schema.kindSubtype = false;
    database.schema.furtherAssetColumns = {"zkindsubtype INTEGER"};
    install();
    EXPECT_EQ(parse(), 1);
    EXPECT_FALSE(model->hasKindSubtype);
}

TEST_F(CameraParse, LooksForAKindSubtypeInTheTableNotInItsIndexes)
{
    database.schema.kindSubtype = false;
    database.rows.sql = {"CREATE INDEX ZKINDSUBTYPE_INDEX ON ZGENERICASSET (ZKIND)"};
    install();
    EXPECT_EQ(parse(), 1);
    EXPECT_FALSE(model->hasKindSubtype);
}

TEST_F(CameraParse, FindsAKindSubtypeBehindAnIndex)
{
    database.schema.kindSubtype = false;
    database.rows.sql = {"CREATE INDEX A ON ZGENERICASSET (ZKIND)",
                         "ALTER TABLE ZGENERICASSET ADD COLUMN ZKINDSUBTYPE INTEGER"};
    install();
    EXPECT_EQ(parse(), 1);
    EXPECT_TRUE(model->hasKindSubtype);
}

TEST_F(CameraParse, LogsASchemaThatCanNotBeRead)
{
    host.setDeviceFile(deviceDb, QByteArray(8192, 'x'));
    EXPECT_EQ(parse(), 0);
    EXPECT_EQ(logWithoutJournals(),
              failedLog({failure("master sql error #26: file is not a database")}));
    expectClosed();
}

// --- Failing queries

struct BrokenQuery {
    const char *name;
    void (*breakIt)(PhotosDatabase &database);
    LogLines logged;
    int albums; ///< filed before the failure
    int assets;
    qint32 duration; ///< of asset 1, when it was filed
};

class FailedQuery : public CameraParse, public testing::WithParamInterface<BrokenQuery>
{
protected:
    FailedQuery()
    {
        database.rows.assets = {photoRow(1), videoRow(2)};
        database.rows.albums = {albumRow(3)};
        database.rows.attributes = {{1, 1, 7.0, 70}};
        GetParam().breakIt(database);
        install();
    }
};

TEST_P(FailedQuery, YieldsZeroAndStillAddsTheExtendedInformation)
{
    EXPECT_EQ(parse(), 0);
    EXPECT_EQ(logWithoutJournals(), failedLog(GetParam().logged));
    EXPECT_EQ(model->albums.size(), GetParam().albums);
    EXPECT_EQ(model->assets.size(), GetParam().assets);
    if (GetParam().assets > 0) {
        EXPECT_EQ(model->assets.first()->duration, GetParam().duration);
        EXPECT_EQ(model->assets.first()->originalFileSize, 70);
    }
    expectClosed();
}

void dropAlbums(PhotosDatabase &database)
{
    database.schema.albums = false;
    database.rows.albums.clear();
}
void dropAssets(PhotosDatabase &database)
{
    database.schema.assets = false;
    database.rows.assets.clear();
}
void makeTheVideosKindAmbiguous(PhotosDatabase &database)
{
    database.rows.sql = {"ALTER TABLE ZADDITIONALASSETATTRIBUTES ADD COLUMN ZKIND INTEGER"};
}
void dropJoinTable(PhotosDatabase &database)
{
    database.schema.joinTables = false;
}
void giveTheJoinTableAnOddName(PhotosDatabase &database)
{
    database.join().name = "Z_-ASSETS";
}

INSTANTIATE_TEST_SUITE_P(
    Queries, FailedQuery,
    testing::Values(
        BrokenQuery{"Albums", dropAlbums, {failure("Can not parse camera album")}, 0, 0, 0},
        BrokenQuery{"Photos",
                    dropAssets,
                    {failure("photo sql error #1: no such table: ZGENERICASSET")},
                    1,
                    0,
                    0},
        BrokenQuery{
            "Videos", makeTheVideosKindAmbiguous, {failure("Can not parse camera video")}, 1, 1, 7},
        BrokenQuery{"NoJoinTable",
                    dropJoinTable,
                    {failure("Can not get the proper assets table name")},
                    1,
                    2,
                    7},
        BrokenQuery{"JoinTable",
                    giveTheJoinTableAnOddName,
                    {notice("Got asset table name: Z_-ASSETS"),
                     failure("Can not parse camera photos: near \"-\": syntax error")},
                    1,
                    2,
                    7}),
    rowName<BrokenQuery>);

TEST_F(CameraParse, LoadsNothingWhenAQueryFails)
{
    dropAlbums(database);
    install();
    EXPECT_EQ(cameraDBParse(&device), nullptr);
    LogLines expected = {notice("load ATHCameraDB")};
    for (const LogLine &line : failedLog({failure("Can not parse camera album")}))
        expected.push_back(line);
    expected.push_back(failure("Can not load lib"));
    EXPECT_EQ(logWithoutJournals(), expected);
    expectClosed();
}

TEST_F(CameraParse, IgnoresAFailureOfTheExtendedInformation)
{
    database.schema.attributesDuration = false;
    database.rows.assets = {photoRow(1)};
    install();
    EXPECT_EQ(parse(), 1);
    EXPECT_EQ(logWithoutJournals(), parsedLog());
    EXPECT_EQ(model->assets.keys(), Keys{1});
}

// --- What a device can do to the reader

TEST_F(CameraParse, ReadsAllRowsOfALargeLibrary)
{
    const int count = 10000;
    for (int pk = 1; pk <= count; ++pk) {
        database.rows.assets.push_back(photoRow(pk, pk));
        database.join().add(1, pk);
    }
    database.rows.albums = {albumRow(1)};
    install();
    EXPECT_EQ(parse(), 1);
    EXPECT_EQ(model->assets.size(), count);
    ASSERT_EQ(model->albums.keys(), Keys{1});
    EXPECT_EQ(model->albums.value(1)->assetKeys.size(), count);
}

TEST_F(CameraParse, ComesToAnEndWithEndlessRows)
{
    database.schema.albums = false;
    database.rows.sql = {"CREATE VIEW ZGENERICALBUM AS "
                         "WITH RECURSIVE n (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) "
                         "SELECT i AS Z_PK, 2 AS ZKIND, 'x' AS ZTITLE, x'01' AS ZUUID, "
                         "0 AS ZTRASHEDSTATE FROM n"};
    install();
    EXPECT_NE(parse(), -1);
    EXPECT_LT(model->albums.size(), 100000);
}

} // namespace
