#include "engine/library_export.h"

#include "base/cancel_token.h"
#include "base/error.h"
#include "base/folders.h"
#include "base/sha256.h"
#include "engine/library_session.h"
#include "support/device_folder.h"
#include "support/disk_faults.h"
#include "support/environment.h"
#include "support/watched_files.h"
#include "support/watched_stores.h"

#include <QFile>

#include <gtest/gtest.h>

#include <functional>

namespace {

class SilentOpening : public OpenObserver
{
public:
    void waiting(const QByteArray &) override {}
    void copied(qint64, qint64) override {}
};

// Keeps what it hears, and passes the progress on.
class HeardExport : public ExportObserver
{
public:
    int mostLookedFor = -1;
    int waits = 0;
    ExportProgress last;
    QStringList failures;
    QStringList missing;
    QStringList notes;
    std::function<void()> afterLook = [] {};

    void looked(int done, int total) override
    {
        EXPECT_LE(done, total);
        mostLookedFor = qMax(mostLookedFor, total);
        afterLook();
    }

    void copied(const ExportProgress &progress) override
    {
        EXPECT_LE(progress.doneFiles, progress.files);
        EXPECT_LE(last.doneBytes, progress.doneBytes);
        last = progress;
    }

    void waiting() override { ++waits; }
    void absent(const QString &label, const QString &cause) override
    {
        missing.append(label + QStringLiteral(": ") + cause);
    }
    void noted(const QString &line) override { notes.append(line); }
    void failed(const ItemFailure &failure) override { failures.append(failure.text()); }
};

// Exports of a device with some photos, without any program around them.
class LibraryExports : public testing::Test
{
protected:
    LibraryExports() : m_cache("XDG_CACHE_HOME", m_scratch.path("cache"))
    {
        m_request.folder = m_scratch.path("out");
        m_request.nameTemplate = "{name}";
    }

    /// Adds a photo to the library, without a file.
    void addRow(const std::string &name)
    {
        const int id = int(m_database.rows.assets.size()) + 1;
        m_database.rows.assets.push_back(photoRow(id));
        m_database.rows.assets.back().fileName = name;
    }

    void addPhoto(const QByteArray &name, const QByteArray &content)
    {
        addRow(name.toStdString());
        m_scratch.write(folder + name, content);
    }

    void open()
    {
        writeDatabase(m_scratch, "device", m_database);
        LibraryOptions options;
        options.device = m_scratch.path("device");
        options.plugin = PHOTOLIB_PLUGIN_FILE;
        options.files = m_files = std::make_shared<WatchedFiles>(options.device);
        SilentOpening opening;
        CancelToken cancel;
        m_session = std::make_unique<LibrarySession>(options, opening, cancel);
    }

    /// What the result says in short.
    std::string run()
    {
        const CancelToken cancel;
        m_heard.last = ExportProgress();
        m_result = ExportResult();
        exportPhotos(*m_session, m_request, m_heard, cancel, &m_result);
        return m_result.counts.text().toStdString();
    }

    /// The same for an export that is cancelled.
    std::string cancelled(const CancelToken &cancel)
    {
        try {
            exportPhotos(*m_session, m_request, m_heard, cancel, &m_result);
        } catch (const Error &error) {
            EXPECT_EQ(Error::Cancelled, error.kind());
            return error.what();
        }
        return "done";
    }

    /// Has a file of the device be longer before each of the first 64 times that anything is read.
    void growWhileRead(const QByteArray &name)
    {
        constexpr int times = 64;
        m_files->startCounting();
        m_files->beforeRead = [this, path = folder + name] {
            if (m_files->count(WatchedFiles::Read) < times)
                m_scratch.lengthen(path, 1 << 20);
        };
    }

    void addToTwoAlbums(int photo)
    {
        m_database.rows.albums = {albumRow(7), albumRow(8)};
        m_database.rows.albums[0].title = "One";
        m_database.rows.albums[1].title = "Two";
        for (const int album : {7, 8})
            m_database.join().add(album, photo);
    }

    /// Why a preview fails; nothing when it does not.
    std::string refusalOfPreview()
    {
        try {
            const CancelToken cancel;
            exportPreview(*m_session, m_request, m_heard, cancel);
        } catch (const Error &error) {
            return error.what();
        }
        return "";
    }

    /// The exported files, without what the program keeps for itself.
    QList<QByteArray> copied() const
    {
        QList<QByteArray> paths;
        for (const QByteArray &path : m_scratch.everythingIn("out")) {
            const QByteArray below = path.mid(m_scratch.path("out").size() + 1);
            if (!below.startsWith(".photolib") && !isFolder(path))
                paths.append(below);
        }
        return paths;
    }

    static constexpr char folder[] = "device/DCIM/100APPLE/";

    ScratchFolder m_scratch;
    Environment m_cache;
    PhotosDatabase m_database;
    std::shared_ptr<WatchedFiles> m_files;
    std::unique_ptr<LibrarySession> m_session;
    ExportRequest m_request;
    HeardExport m_heard;
    ExportResult m_result;
};

TEST_F(LibraryExports, TellWhatBecameOfEachFile)
{
    addPhoto("a.jpg", "one");
    addRow("gone.jpg");
    addRow("pipe.jpg");
    m_scratch.makePipe(folder + QByteArray("pipe.jpg"));
    open();
    EXPECT_EQ("Copied 1 file (3 bytes), 0 unchanged, 1 not on the device, 1 failed", run());
    EXPECT_EQ(QStringList{"DCIM/100APPLE/gone.jpg: missing on the device"}, m_heard.missing);
    EXPECT_EQ(QStringList{"DCIM/100APPLE/pipe.jpg: not a regular file"}, m_heard.failures);
    EXPECT_EQ(3, m_heard.mostLookedFor);
    EXPECT_EQ(3, m_heard.last.doneFiles);
    EXPECT_EQ(3, m_heard.last.files);
    EXPECT_EQ(3, m_heard.last.doneBytes);
    ASSERT_EQ(3U, m_result.files.size());
    EXPECT_EQ(ReportedFile::Copied, m_result.files[0].status);
    EXPECT_EQ("a.jpg", m_result.files[0].path);
    EXPECT_EQ(sha256Hex("one"), m_result.files[0].sha256);
    EXPECT_EQ(3, m_result.files[0].bytes);
    EXPECT_EQ(ReportedFile::NotOnDevice, m_result.files[1].status);
    EXPECT_TRUE(m_result.files[1].path.isNull());
    EXPECT_EQ(ReportedFile::Failed, m_result.files[2].status);
    EXPECT_EQ("not a regular file", m_result.files[2].cause);
}

TEST_F(LibraryExports, CopyWhatIsChosen)
{
    for (const char *name : {"a.jpg", "b.jpg", "c.jpg"})
        addPhoto(name, name);
    m_database.rows.albums = {albumRow(7)};
    m_database.join().add(7, 2);
    open();
    m_request.filter.album = "7";
    EXPECT_EQ("Copied 1 file (5 bytes), 0 unchanged", run());
    EXPECT_TRUE(m_scratch.exists("out/b.jpg"));
    m_request.filter.album.reset();
    m_request.filter.ids = {{*idRange("3"), *idRange("2"), *idRange("3")}};
    EXPECT_EQ("Copied 1 file (5 bytes), 1 unchanged", run());
    m_request.filter.ids.reset();
    EXPECT_EQ("Copied 1 file (5 bytes), 2 unchanged", run());
    m_request.filter.ids = {{*idRange("4")}};
    EXPECT_THROW(run(), Error);
}

// An empty file is there all the same.
TEST_F(LibraryExports, CopyAnEmptyFileLikeAnyOther)
{
    addPhoto("a.jpg", QByteArray());
    open();
    m_request.verify = true;
    EXPECT_EQ("Copied 1 file (0 bytes), 0 unchanged", run());
    EXPECT_EQ(0, m_scratch.size("out/a.jpg"));
    EXPECT_EQ("Copied 0 files (0 bytes), 1 unchanged", run());
}

TEST_F(LibraryExports, KeepOneStemForAllFilesOfAPhotoWhateverIsTaken)
{
    addPhoto("a.jpg", "one");
    m_scratch.write(folder + QByteArray("a.mov"), "film");
    m_scratch.write("device/PhotoData/Mutations/DCIM/100APPLE/a/Adjustments/FullSizeRender.heic",
                    "edited");
    m_scratch.write("out/a.mov", "somebody's");
    open();
    EXPECT_EQ("Copied 3 files (13 bytes), 0 unchanged", run());
    EXPECT_EQ((QList<QByteArray>{"a (2).jpg", "a (2).mov", "a (2)_edited.heic", "a.mov"}),
              copied());
    EXPECT_EQ("somebody's", m_scratch.read("out/a.mov"));
    EXPECT_EQ("Copied 0 files (0 bytes), 3 unchanged", run());
}

TEST_F(LibraryExports, GiveAFilmThatCameLaterTheStemOfItsPhoto)
{
    addPhoto("a.jpg", "one");
    m_scratch.write("out/a.jpg", "somebody's");
    open();
    EXPECT_EQ("Copied 1 file (3 bytes), 0 unchanged", run());
    m_scratch.write(folder + QByteArray("a.MOV"), "film");
    open();
    EXPECT_EQ("Copied 1 file (4 bytes), 1 unchanged", run());
    EXPECT_EQ((QList<QByteArray>{"a (2).MOV", "a (2).jpg", "a.jpg"}), copied());
}

struct Versions {
    const char *name;
    EditedChoice edited;
    LiveChoice live;
    bool recipe;
    QList<QByteArray> copied;
};

void PrintTo(const Versions &row, std::ostream *stream)
{
    *stream << row.name;
}

class VersionsOfAPhoto : public LibraryExports, public testing::WithParamInterface<Versions>
{
};

TEST_P(VersionsOfAPhoto, AreCopiedAsChosen)
{
    const QByteArray edits = "device/PhotoData/Mutations/DCIM/100APPLE/a/Adjustments/";
    addPhoto("a.jpg", "one");
    m_scratch.write(folder + QByteArray("a.MOV"), "film");
    m_scratch.write(folder + QByteArray("a.AAE"), "recipe");
    m_scratch.write(edits + "FullSizeRender.jpg", "edited");
    m_scratch.write(edits + "FullSizeRender.mov", "edited film");
    m_scratch.write(edits + "Adjustments.plist", "how");
    addPhoto("plain.jpg", "two");
    open();
    m_request.edited = GetParam().edited;
    m_request.live = GetParam().live;
    m_request.recipe = GetParam().recipe;
    run();
    EXPECT_EQ(GetParam().copied, copied());
}

const Versions versions[] = {
    {"Usually",
     EditedChoice::Both,
     LiveChoice::Both,
     false,
     {"a.MOV", "a.jpg", "a_edited.jpg", "a_edited.mov", "plain.jpg"}},
    {"OriginalsOnly",
     EditedChoice::Original,
     LiveChoice::Both,
     false,
     {"a.MOV", "a.jpg", "plain.jpg"}},
    {"EditedWhereThereIsAnEdit",
     EditedChoice::Edited,
     LiveChoice::Both,
     false,
     {"a_edited.jpg", "a_edited.mov", "plain.jpg"}},
    {"WithoutFilms",
     EditedChoice::Both,
     LiveChoice::Still,
     false,
     {"a.jpg", "a_edited.jpg", "plain.jpg"}},
    {"WithRecipes",
     EditedChoice::Original,
     LiveChoice::Still,
     true,
     {"a.AAE", "a.jpg", "a.plist", "plain.jpg"}},
};

INSTANTIATE_TEST_SUITE_P(Choices, VersionsOfAPhoto, testing::ValuesIn(versions),
                         [](const auto &row) { return std::string(row.param.name); });

TEST_F(LibraryExports, CopyAnewWhatWasEditedAndKeepTheOldCopy)
{
    addPhoto("a.jpg", "one");
    open();
    run();
    m_scratch.write(folder + QByteArray("a.jpg"), "changed");
    EXPECT_EQ("Copied 1 file (7 bytes), 0 unchanged", run());
    EXPECT_EQ("one", m_scratch.read("out/a.jpg"));
    EXPECT_EQ("changed", m_scratch.read("out/a (2).jpg"));
    EXPECT_EQ("Copied 0 files (0 bytes), 1 unchanged", run());
}

TEST_F(LibraryExports, ReplaceTheOldCopyOnRequest)
{
    addPhoto("a.jpg", "one");
    open();
    run();
    m_scratch.write(folder + QByteArray("a.jpg"), "changed");
    m_request.update = UpdateChoice::Replace;
    EXPECT_EQ("Copied 1 file (7 bytes), 0 unchanged", run());
    EXPECT_EQ(QList<QByteArray>{"a.jpg"}, copied());
    EXPECT_EQ("changed", m_scratch.read("out/a.jpg"));
}

TEST_F(LibraryExports, ReplaceNothingThatSomebodyHasChanged)
{
    addPhoto("a.jpg", "one");
    open();
    run();
    m_scratch.write("out/a.jpg", "own");
    m_scratch.write(folder + QByteArray("a.jpg"), "changed");
    m_request.update = UpdateChoice::Replace;
    EXPECT_EQ("Copied 1 file (7 bytes), 0 unchanged", run());
    EXPECT_EQ("own", m_scratch.read("out/a.jpg"));
    EXPECT_EQ("changed", m_scratch.read("out/a (2).jpg"));
}

// It takes long to copy what comes before.
TEST_F(LibraryExports, ReplaceNothingThatSomebodyChangesMeanwhile)
{
    addPhoto("a.jpg", "one");
    addPhoto("b.jpg", "two");
    m_request.sidecars = {SidecarFormat::Json};
    open();
    run();
    for (const char *name : {"a.jpg", "b.jpg"})
        m_scratch.write(folder + QByteArray(name), "changed");
    m_database.rows.assets[0].width = 40;
    open();
    m_request.update = UpdateChoice::Replace;
    m_files->beforeRead = [this] {
        m_scratch.write("out/a.jpg", "own");
        m_scratch.write("out/a.jpg.json", "own");
    };
    EXPECT_EQ("Copied 1 file (7 bytes), 1 unchanged, 2 failed", run());
    m_heard.failures.sort();
    EXPECT_EQ((QStringList{"DCIM/100APPLE/a.jpg: changed by somebody meanwhile: kept",
                           "a.jpg.json: changed by somebody meanwhile: kept"}),
              m_heard.failures);
    EXPECT_EQ("own", m_scratch.read("out/a.jpg"));
    EXPECT_EQ("own", m_scratch.read("out/a.jpg.json"));
    EXPECT_EQ("changed", m_scratch.read("out/b.jpg"));
}

TEST_F(LibraryExports, CopyAgainWhatIsGoneUnlessOnlyNewFilesAreWanted)
{
    addPhoto("a.jpg", "one");
    addPhoto("b.jpg", "two");
    open();
    run();
    ASSERT_EQ(0, ::unlink(m_scratch.path("out/a.jpg").constData()));
    m_request.onlyNew = true;
    EXPECT_EQ("Copied 0 files (0 bytes), 1 unchanged, 1 moved or deleted since", run());
    EXPECT_EQ(QList<QByteArray>{"b.jpg"}, copied());
    m_request.onlyNew = false;
    EXPECT_EQ("Copied 1 file (3 bytes), 1 unchanged", run());
    EXPECT_EQ("one", m_scratch.read("out/a.jpg"));
}

TEST_F(LibraryExports, TakeWhatIsThereAlreadyForTheCopyWhereItIsTheSame)
{
    addPhoto("a.jpg", "one");
    addPhoto("b.jpg", "two");
    m_scratch.write("out/a.jpg", "one");
    m_scratch.write("out/b.jpg", "own");
    open();
    EXPECT_EQ("Copied 1 file (3 bytes), 1 unchanged", run());
    EXPECT_EQ((QList<QByteArray>{"a.jpg", "b (2).jpg", "b.jpg"}), copied());
    EXPECT_EQ("Copied 0 files (0 bytes), 2 unchanged", run());
}

TEST_F(LibraryExports, TakeNothingElseForACopyWhereTheTemplateHasNoExtension)
{
    m_request.nameTemplate = "{stem}";
    addPhoto("a.jpg", "one");
    m_scratch.write("out/a.jpg", "own");
    m_scratch.write("out/a", "hers");
    open();
    EXPECT_EQ("Copied 1 file (3 bytes), 0 unchanged", run());
    EXPECT_EQ((QList<QByteArray>{"a", "a (2)", "a.jpg"}), copied());
    EXPECT_EQ("one", m_scratch.read("out/a (2)"));
    EXPECT_EQ("Copied 0 files (0 bytes), 1 unchanged", run());
}

TEST_F(LibraryExports, KnowAPhotoAtAnotherPlaceOfTheDevice)
{
    addPhoto("a.jpg", "one");
    open();
    run();
    m_database.rows.assets[0].directory = "DCIM/110APPLE";
    m_scratch.write("device/DCIM/110APPLE/a.jpg", "one");
    open();
    EXPECT_EQ("Copied 0 files (0 bytes), 1 unchanged", run());
    EXPECT_EQ("Copied 0 files (0 bytes), 1 unchanged", run());
    EXPECT_EQ(QList<QByteArray>{"a.jpg"}, copied());
}

TEST_F(LibraryExports, KnowWhatBecameAgainWhatItWas)
{
    addPhoto("a.jpg", "one");
    open();
    for (const char *content : {"one", "changed", "one", "changed"}) {
        m_scratch.write(folder + QByteArray("a.jpg"), content);
        run();
    }
    EXPECT_EQ((QList<QByteArray>{"a (2).jpg", "a.jpg"}), copied());
    EXPECT_EQ("Copied 0 files (0 bytes), 1 unchanged", run());
}

TEST_F(LibraryExports, CopyNothingThatWasDeletedWhenOnlyItsTimeIsNew)
{
    addPhoto("a.jpg", "one");
    open();
    run();
    ASSERT_EQ(0, ::unlink(m_scratch.path("out/a.jpg").constData()));
    m_scratch.write(folder + QByteArray("a.jpg"), "one");
    m_request.onlyNew = true;
    EXPECT_EQ("Copied 0 files (0 bytes), 0 unchanged, 1 moved or deleted since", run());
}

TEST_F(LibraryExports, TellThatTheFilmOfALivePhotoIsMissing)
{
    addPhoto("a.jpg", "one");
    m_database.rows.assets[0].kindSubtype = 2;
    open();
    EXPECT_EQ("Copied 1 file (3 bytes), 0 unchanged, 1 not on the device", run());
    EXPECT_EQ(QStringList{"DCIM/100APPLE/a.MOV: missing on the device"}, m_heard.missing);
    ASSERT_EQ(2U, m_result.files.size());
    EXPECT_EQ(ExportRole::Live, m_result.files[1].role);
    m_request.live = LiveChoice::Still;
    EXPECT_EQ("Copied 0 files (0 bytes), 1 unchanged", run());
}

TEST_F(LibraryExports, KeepASidecarThatSomebodyHasChanged)
{
    addPhoto("a.jpg", "one");
    open();
    m_request.sidecars = {SidecarFormat::Json};
    EXPECT_EQ(2, (run(), m_result.counts.copied));
    m_scratch.write("out/a.jpg.json", "my own");
    m_request.update = UpdateChoice::Replace;
    EXPECT_EQ(0, (run(), m_result.counts.copied));
    EXPECT_EQ("my own", m_scratch.read("out/a.jpg.json"));
    ASSERT_EQ(2U, m_result.files.size());
    EXPECT_EQ(6, m_result.files[1].bytes);
    EXPECT_EQ(sha256Hex("my own"), m_result.files[1].sha256);
}

TEST_F(LibraryExports, FollowNoLinkInPlaceOfAFileOrAFolder)
{
    m_request.nameTemplate = "{stem}/{name}";
    addPhoto("a.jpg", "one");
    addPhoto("b.jpg", "two");
    m_scratch.makeFolder("out/a");
    m_scratch.makeFolder("elsewhere");
    m_scratch.write("mine", "own");
    m_scratch.makeLink("out/a/a.jpg", m_scratch.path("mine"));
    m_scratch.makeLink("out/b", m_scratch.path("elsewhere"));
    open();
    EXPECT_EQ("Copied 1 file (3 bytes), 0 unchanged, 1 failed", run());
    EXPECT_EQ("own", m_scratch.read("mine"));
    EXPECT_EQ("one", m_scratch.read("out/a/a (2).jpg"));
    EXPECT_TRUE(m_scratch.everythingIn("elsewhere").isEmpty());
}

TEST_F(LibraryExports, CutNamesThatTheDiskCannotHoldAndSaySo)
{
    m_request.nameTemplate = "{album}{ext}";
    addPhoto("a.jpg", "one");
    m_database.rows.albums = {albumRow(7)};
    m_database.rows.albums[0].title = QString(200, QChar(0xe9)).toStdString();
    m_database.join().add(7, 1);
    open();
    const CancelToken cancel;
    exportPreview(*m_session, m_request, m_heard, cancel);
    EXPECT_EQ(1, m_heard.notes.size());
    m_heard.notes.clear();
    EXPECT_EQ("Copied 1 file (3 bytes), 0 unchanged", run());
    QByteArray name;
    for (int i = 0; i < 125; ++i)
        name += "\xc3\xa9";
    EXPECT_EQ(QList<QByteArray>{name + ".jpg"}, copied());
    ASSERT_EQ(1, m_heard.notes.size());
    EXPECT_TRUE(m_heard.notes[0].endsWith("its name is too long for the disk, and was cut"));
}

TEST_F(LibraryExports, SayHowManyNamesInAlbumsTheyCut)
{
    m_request.albums = RecordedAlbumFile::Copy;
    const QByteArray name = QByteArray(250, 'x') + ".jpg";
    addPhoto(name, "one");
    addPhoto("b.jpg", "two");
    m_database.rows.albums = {albumRow(7)};
    m_database.rows.albums[0].title = std::string(300, 'y');
    m_database.join().add(7, 1);
    m_database.join().add(7, 2);
    open();
    const QStringList expected = {"Albums: 2 names are too long for a disk, and were cut"};
    const CancelToken cancel;
    exportPreview(*m_session, m_request, m_heard, cancel);
    EXPECT_EQ(expected, m_heard.notes);
    m_heard.notes.clear();
    EXPECT_EQ("Copied 2 files (6 bytes), 0 unchanged", run());
    EXPECT_EQ(expected, m_heard.notes);
    m_heard.notes.clear();
    exportPreview(*m_session, m_request, m_heard, cancel); // of what is there
    EXPECT_EQ(expected, m_heard.notes);
}

// Such folders are one on a memory card, and the record would know it by two names.
TEST_F(LibraryExports, PutPhotosOfFoldersThatDifferByCaseIntoOne)
{
    m_request.nameTemplate = "Kept/{album}/{name}";
    for (const char *name : {"a.jpg", "b.jpg", "c.jpg"})
        addPhoto(name, name);
    m_database.rows.albums = {albumRow(7), albumRow(8), albumRow(9)};
    m_database.rows.albums[0].title = "trip";
    m_database.rows.albums[1].title = "Trip";
    m_database.rows.albums[2].title = "TRIP";
    for (int photo = 1; photo <= 3; ++photo)
        m_database.join().add(photo + 6, photo);
    open();
    m_request.filter.ids = {{*idRange("2")}};
    EXPECT_EQ("Copied 1 file (5 bytes), 0 unchanged", run());
    m_request.filter.ids.reset();
    EXPECT_EQ("Copied 2 files (10 bytes), 1 unchanged", run());
    EXPECT_EQ((QList<QByteArray>{"Kept/Trip/a.jpg", "Kept/Trip/b.jpg", "Kept/Trip/c.jpg"}),
              copied());
}

TEST_F(LibraryExports, MakeNoFolderWhenTheyAreCancelledBeforeTheyCopy)
{
    addPhoto("a.jpg", "one");
    open();
    CancelToken cancel;
    m_heard.afterLook = [&] { cancel.cancel(); };
    EXPECT_EQ("interrupted: nothing was copied", cancelled(cancel));
    EXPECT_FALSE(m_scratch.exists("out"));
}

TEST_F(LibraryExports, WriteNothingToTellWhatTheyWouldDo)
{
    addPhoto("a.jpg", "one");
    addRow("gone.jpg");
    open();
    const CancelToken cancel;
    const ExportPlan plan = exportPreview(*m_session, m_request, m_heard, cancel);
    EXPECT_FALSE(m_scratch.exists("out"));
    ASSERT_EQ(2U, plan.files.size());
    EXPECT_EQ(PlannedFile::Copy, plan.files[0].action);
    EXPECT_EQ("a.jpg", plan.files[0].path);
    EXPECT_EQ(3, plan.bytes);
    EXPECT_EQ(PlannedFile::Missing, plan.files[1].action);
}

TEST_F(LibraryExports, HaveTheFoldersStoredThatTheyMake)
{
    addPhoto("a.jpg", "one");
    m_request.folder = m_scratch.path("new/out");
    m_request.nameTemplate = "2020/{stem}/{name}";
    open();
    const WatchedStores stores;
    EXPECT_EQ("Copied 1 file (3 bytes), 0 unchanged", run());
    EXPECT_TRUE(stores.has(m_scratch.root()));
    for (const char *folder : {"new", "new/out", "new/out/2020", "new/out/2020/a"})
        EXPECT_TRUE(stores.has(m_scratch.path(folder))) << folder;
}

// Whose folder is new, too.
TEST_F(LibraryExports, HaveThePlaceOfTheRecordStored)
{
    addPhoto("a.jpg", "one");
    m_scratch.makeFolder("out/a");
    m_request.nameTemplate = "{stem}/{name}";
    open();
    const WatchedStores stores;
    EXPECT_EQ("Copied 1 file (3 bytes), 0 unchanged", run());
    EXPECT_TRUE(stores.has(m_scratch.path("out")));
}

TEST_F(LibraryExports, CopyFilesToADiskThatTakesNoTimes)
{
    addPhoto("a.jpg", "one");
    m_request.sidecars = {SidecarFormat::Json};
    open();
    const LackOfTimes lack;
    EXPECT_TRUE(QByteArray::fromStdString(run()).startsWith("Copied 2 files"));
    EXPECT_EQ("one", m_scratch.read("out/a.jpg"));
    EXPECT_EQ(QStringList(), m_heard.failures);
}

TEST_F(LibraryExports, DoNotReadAFileToItsEndThatHasNone)
{
    addPhoto("a.jpg", "one");
    open();
    growWhileRead("a.jpg");
    EXPECT_EQ("Copied 0 files (0 bytes), 0 unchanged, 1 failed", run());
    EXPECT_EQ(QStringList{"DCIM/100APPLE/a.jpg: changed while it was read, twice"},
              m_heard.failures);
    EXPECT_GE(10, m_files->count(WatchedFiles::Read));
    EXPECT_TRUE(copied().isEmpty());
}

TEST_F(LibraryExports, RecordWhatTheyHaveReadBackWhenTheyAreCancelled)
{
    for (const char *name : {"a.jpg", "b.jpg", "c.jpg"})
        addPhoto(name, "one");
    m_request.nameTemplate = "{stem}/{name}";
    m_request.verify = true;
    open();
    CancelToken cancel;
    const WatchedStores stores([&](const QByteArray &path) {
        if (path == m_scratch.path("out/b")) // after "a" was read back
            cancel.cancel();
    });
    EXPECT_EQ("interrupted; copied 1 file (3 bytes), 0 unchanged", cancelled(cancel));
    const ExportContents record = readExportRecord(m_request.folder);
    ASSERT_EQ(1U, record.files.size());
    EXPECT_EQ("a/a.jpg", record.files[0].path);
    EXPECT_EQ("Copied 0 files (0 bytes), 3 unchanged", run());
}

TEST_F(LibraryExports, CountTheCopiesInAlbumsAsProgress)
{
    m_request.albums = RecordedAlbumFile::Copy;
    addPhoto("a.jpg", "one");
    addPhoto("b.jpg", "alone");
    addToTwoAlbums(1);
    open();
    EXPECT_EQ("Copied 2 files (8 bytes), 0 unchanged", run());
    EXPECT_EQ(8 + 2 * 3, m_heard.last.totalBytes);
    EXPECT_EQ(8 + 2 * 3, m_heard.last.doneBytes);
    EXPECT_EQ(2, m_heard.last.doneFiles);
    EXPECT_EQ("Copied 0 files (0 bytes), 2 unchanged", run());
    EXPECT_EQ(0, m_heard.last.totalBytes);
    ASSERT_TRUE(QFile::remove(m_scratch.path("out/Albums/Two/001 a.jpg")));
    EXPECT_EQ("Copied 0 files (0 bytes), 2 unchanged", run());
    EXPECT_EQ(3, m_heard.last.totalBytes);
    EXPECT_EQ(3, m_heard.last.doneBytes);
    m_scratch.write(folder + QByteArray("a.jpg"), "edited");
    m_request.update = UpdateChoice::Replace;
    EXPECT_EQ("Copied 1 file (6 bytes), 1 unchanged", run());
    EXPECT_EQ(3 * 6, m_heard.last.totalBytes);
}

TEST_F(LibraryExports, ReplaceTheCopiesInAlbumsOfWhatTheyReplace)
{
    m_request.albums = RecordedAlbumFile::Copy;
    m_request.update = UpdateChoice::Replace;
    addPhoto("a.jpg", "one");
    addToTwoAlbums(1);
    open();
    EXPECT_EQ("Copied 1 file (3 bytes), 0 unchanged", run());
    for (const char *const version : {"two", "three"}) {
        m_scratch.write(folder + QByteArray("a.jpg"), version);
        run();
        EXPECT_EQ((QList<QByteArray>{"Albums/One/001 a.jpg", "Albums/Two/001 a.jpg", "a.jpg"}),
                  copied());
        for (const QByteArray &path : copied())
            EXPECT_EQ(version, m_scratch.read("out/" + path)) << path.constData();
    }
}

TEST_F(LibraryExports, NeedRoomForTheCopiesInAlbumsToo)
{
    addPhoto("a.jpg", "");
    const qint64 room = ExportFolder(m_scratch.root()).room();
    m_scratch.writeSparse(folder + QByteArray("a.jpg"), room / 10 * 4);
    addToTwoAlbums(1);
    open();
    EXPECT_EQ("", refusalOfPreview());
    m_request.albums = RecordedAlbumFile::Link;
    EXPECT_EQ("", refusalOfPreview());
    m_request.albums = RecordedAlbumFile::Copy;
    ASSERT_NE("", refusalOfPreview());
    EXPECT_THROW(run(), Error);
    EXPECT_FALSE(m_scratch.exists("out"));
}

TEST_F(LibraryExports, FindOutBeforehandThatAFolderWhichIsNotThereYetHasNoRoom)
{
    addPhoto("a.jpg", "");
    const qint64 room = ExportFolder(m_scratch.root()).room();
    m_scratch.writeSparse(folder + QByteArray("a.jpg"), room / 10 * 11);
    open();
    m_request.folder = m_scratch.path("new/folder/");
    const std::string refusal = refusalOfPreview();
    EXPECT_NE(std::string::npos, refusal.find("new/folder/: No space left on device (the files "))
        << refusal;
    EXPECT_FALSE(m_scratch.exists("new"));
}

TEST_F(LibraryExports, LeaveNoHalfFileWhenTheyAreCancelledWithinOne)
{
    addPhoto("a.jpg", QByteArray(1 << 20, 'x'));
    open();
    m_files->startCounting();
    CancelToken cancel;
    m_files->beforeRead = [&] {
        if (m_files->count(WatchedFiles::Read) == 2)
            cancel.cancel();
    };
    EXPECT_EQ("interrupted; copied 0 files (0 bytes), 0 unchanged", cancelled(cancel));
    EXPECT_TRUE(copied().isEmpty());
}

} // namespace
