#include "support/export_fixture.h"
#include "support/row_name.h"
#include "support/terminal.h"

#include "base/error.h"
#include "devices/folder_file_system.h"
#include "engine/database_copy.h"
#include "host/device.h"
#include "host/plugin.h"

#include <gtest/gtest.h>

#include <QDir>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <sys/wait.h>

namespace {

void removeAll(const QByteArray &path)
{
    std::filesystem::remove_all(path.toStdString());
}

void rename(const QByteArray &from, const QByteArray &to)
{
    ASSERT_EQ(0, std::rename(from.constData(), to.constData()));
}

// A file that stays open whatever becomes of its name.
class OpenFile
{
public:
    explicit OpenFile(const QByteArray &path) : m_fd(::open(path.constData(), O_WRONLY)) {}

    /// Ends the reading of a file that is read at the moment.
    void cutTo(qint64 size) const { EXPECT_EQ(0, ::ftruncate(m_fd.get(), size)); }

private:
    const UniqueFd m_fd;
};

class VanishingDevice : public ProgramTest
{
protected:
    QByteArray out() const { return m_scratch.path("out"); }

    /// Waits until the file has `size` bytes. False when the program ends before.
    bool waitForFile(Program &program, const QByteArray &name, qint64 size = 1) const
    {
        while (m_scratch.size(name) < size) {
            if (program.waitForFinished(5) || program.state() == QProcess::NotRunning)
                return false;
        }
        return true;
    }

    void expectFailedCopy(Program &program, const QByteArray &line)
    {
        EXPECT_EQ(1, program.waitForExitCode());
        EXPECT_EQ("photolib: " + line + '\n', program.readAllStandardError());
        EXPECT_EQ(QByteArray(), program.readAllStandardOutput());
        EXPECT_FALSE(m_scratch.exists("work")); // which the program has made
    }
};

using VanishingDatabase = VanishingDevice;

// --- while the database is copied

TEST_F(VanishingDatabase, IsToldWhenItIsCutShort)
{
    m_scratch.writeEndless("device/PhotoData/Photos.sqlite");
    const OpenFile database(device() + "/PhotoData/Photos.sqlite");
    Program program(m_setup, {"info", "-d", device(), "--work-dir", m_scratch.path("work")});
    ASSERT_TRUE(waitForFile(program, "work/Photos.sqlite"));
    database.cutTo(0);
    expectFailedCopy(program, device() + "/PhotoData/Photos.sqlite: changed while it was copied");
}

TEST_F(VanishingDatabase, IsToldWhenAnotherTakesItsPlace)
{
    m_scratch.writeEndless("device/PhotoData/Photos.sqlite");
    const OpenFile database(device() + "/PhotoData/Photos.sqlite");
    Program program(m_setup, {"info", "-d", device(), "--work-dir", m_scratch.path("work")});
    ASSERT_TRUE(waitForFile(program, "work/Photos.sqlite"));
    writeDatabase(m_scratch, "other", twoPhotos());
    rename(m_scratch.path("other/PhotoData/Photos.sqlite"), device() + "/PhotoData/Photos.sqlite");
    database.cutTo(0);
    expectFailedCopy(program, device() + "/PhotoData/Photos.sqlite: changed while it was copied");
    // What it is now is read by the next run.
    EXPECT_EQ(0, run({"info", "-d", device()}).exitCode);
}

TEST_F(VanishingDatabase, IsToldWhenTheDeviceIsRemoved)
{
    writeTwoPhotos();
    m_scratch.writeEndless("device/PhotoData/Photos.sqlite-wal");
    const OpenFile log(device() + "/PhotoData/Photos.sqlite-wal");
    Program program(m_setup, {"info", "-d", device(), "--work-dir", m_scratch.path("work")});
    ASSERT_TRUE(waitForFile(program, "work/Photos.sqlite-wal"));
    removeAll(device());
    log.cutTo(0);
    expectFailedCopy(program, device() + "/PhotoData/Photos.sqlite-shm: its folder was removed");
}

// A library without its newest changes would look like the whole one.
TEST_F(VanishingDatabase, IsToldWhenItsJournalVanishes)
{
    m_scratch.writeEndless("device/PhotoData/Photos.sqlite");
    m_scratch.write("device/PhotoData/Photos.sqlite-wal", "journal");
    const OpenFile database(device() + "/PhotoData/Photos.sqlite");
    Program program(m_setup, {"info", "-d", device(), "--work-dir", m_scratch.path("work")});
    ASSERT_TRUE(waitForFile(program, "work/Photos.sqlite"));
    ASSERT_EQ(0, ::unlink((device() + "/PhotoData/Photos.sqlite-wal").constData()));
    database.cutTo(0);
    EXPECT_EQ(1, program.waitForExitCode());
    EXPECT_TRUE(program.readAllStandardError().contains("changed while it was copied"));
}

// --- while photos are exported

// a.jpg, b.mov, which takes longer than any test, and c.jpg.
class VanishingPhotos : public VanishingDevice
{
protected:
    VanishingPhotos()
    {
        PhotosDatabase database;
        for (int i = 0; i < 3; ++i) {
            database.rows.assets.push_back(photoRow(i + 1, i));
            database.rows.assets.back().fileName = fileNames[i];
        }
        writeDatabase(m_scratch, "device", database);
        m_scratch.write(folder + QByteArray("a.jpg"), "one");
        m_scratch.writeEndless(folder + QByteArray("b.mov"));
        m_scratch.write(folder + QByteArray("c.jpg"), "three");
    }

    void SetUp() override
    {
        if (!Terminal().isOpen())
            GTEST_SKIP() << "there are no pseudo-terminals here";
    }

    /// Starts an export and, when it has the first file and is at the second one, calls `change`
    /// and lets that file end. Expects `errors`, "NAME: CAUSE" each, and the copies `names`.
    void expectExport(const std::function<void()> &change, const QByteArray &errors,
                      const QByteArray &output, const QList<QByteArray> &names, int exitCode = 0)
    {
        const OpenFile second(m_scratch.path(folder + QByteArray("b.mov")));
        Terminal terminal;
        ProgramSetup setup = m_setup;
        setup.errorFd = terminal.slave();
        Program program(setup, {"export", "-d", device(), out()});
        terminal.shownUntil("] 1 of 3 files, ");
        // A file that is cut has its new size a moment before its new time, and would seem to
        // change once more.
        const auto process = static_cast<pid_t>(program.processId());
        ASSERT_EQ(0, ::kill(process, SIGSTOP));
        siginfo_t ignored = {};
        ASSERT_EQ(0, ::waitid(P_PID, static_cast<id_t>(process), &ignored, WSTOPPED | WNOWAIT));
        change();
        second.cutTo(0);
        ASSERT_EQ(0, ::kill(process, SIGCONT));
        EXPECT_EQ(exitCode, program.waitForExitCode());
        EXPECT_EQ(errors, messagesIn(terminal));
        EXPECT_EQ(output, program.readAllStandardOutput());
        expectCopies(names);
    }

    /// What a program that has ended has told besides its progress.
    static QByteArray messagesIn(Terminal &terminal)
    {
        QByteArray messages;
        ::dprintf(terminal.slave(), "the end");
        for (const QByteArray &line :
             terminal.shownUntil("the end").replace('\r', '\n').replace("\x1b[K", "").split('\n')) {
            if (line.startsWith("photolib: "))
                messages += line + '\n';
        }
        return messages;
    }

    void expectCopies(const QList<QByteArray> &names) const
    {
        EXPECT_EQ(names, exportedFiles(m_scratch, "out"));
        EXPECT_EQ("one", m_scratch.read("out/a.jpg"));
    }

    static constexpr const char *fileNames[] = {"a.jpg", "b.mov", "c.jpg"};
    static constexpr char folder[] = "device/DCIM/100APPLE/";
};

TEST_F(VanishingPhotos, AreExportedAsTheyAreWhenOneIsCutShort)
{
    expectExport([] {}, "", "Copied 3 files (8 bytes), 0 unchanged\n", {"a.jpg", "b.mov", "c.jpg"});
    EXPECT_EQ(0, m_scratch.size("out/b.mov"));
    m_scratch.write(folder + QByteArray("b.mov"), "two");
    const ProgramResult second = run({"export", "-d", device(), out()});
    EXPECT_EQ(0, second.exitCode);
    EXPECT_EQ("Copied 1 file (3 bytes), 2 unchanged\n", second.output);
    EXPECT_EQ("two", m_scratch.read("out/b (2).mov"));
}

TEST_F(VanishingPhotos, AreExportedWithTheOneThatTakesThePlaceOfAnother)
{
    const auto replace = [this] {
        m_scratch.write("new", "two");
        rename(m_scratch.path("new"), m_scratch.path(folder + QByteArray("b.mov")));
    };
    expectExport(replace, "", "Copied 3 files (11 bytes), 0 unchanged\n",
                 {"a.jpg", "b.mov", "c.jpg"});
    EXPECT_EQ("two", m_scratch.read("out/b.mov"));
}

TEST_F(VanishingPhotos, AreAllExportedFromAFolderThatIsRenamed)
{
    const auto renameDevice = [this] { rename(device(), m_scratch.path("renamed")); };
    expectExport(renameDevice, "", "Copied 3 files (8 bytes), 0 unchanged\n",
                 {"a.jpg", "b.mov", "c.jpg"});
}

TEST_F(VanishingPhotos, EndTheExportWhenTheDeviceIsRemoved)
{
    rename(m_scratch.path("device"), m_scratch.path("kept"));
    std::filesystem::copy(m_scratch.path("kept").toStdString(), device().toStdString(),
                          std::filesystem::copy_options::recursive |
                              std::filesystem::copy_options::create_hard_links);
    expectExport([this] { removeAll(device()); },
                 "photolib: the device: its folder was removed; copied 1 file (3 bytes), 0 "
                 "unchanged\n",
                 "", {"a.jpg"}, 1);
    rename(m_scratch.path("kept"), device());
    m_scratch.write(folder + QByteArray("b.mov"), "two");
    const ProgramResult second = run({"export", "-d", device(), out()});
    EXPECT_EQ(0, second.exitCode);
    EXPECT_EQ("Copied 2 files (8 bytes), 1 unchanged\n", second.output);
    expectCopies({"a.jpg", "b.mov", "c.jpg"});
}

TEST_F(VanishingPhotos, AreToldThatAreNoFilesAnyMore)
{
    const auto replace = [this] {
        ASSERT_EQ(0, ::unlink(m_scratch.path(folder + QByteArray("b.mov")).constData()));
        m_scratch.makePipe(folder + QByteArray("b.mov"));
    };
    expectExport(replace, "photolib: DCIM/100APPLE/b.mov: not a regular file\n",
                 "Copied 2 files (8 bytes), 0 unchanged, 1 failed (see the messages above)\n",
                 {"a.jpg", "c.jpg"}, 1);
}

TEST_F(VanishingPhotos, AreToldWhenOneIsRemovedWhileItIsCopied)
{
    const auto remove = [this] {
        ASSERT_EQ(0, ::unlink(m_scratch.path(folder + QByteArray("b.mov")).constData()));
    };
    expectExport(remove, "photolib: DCIM/100APPLE/b.mov: missing on the device\n",
                 "Copied 2 files (8 bytes), 0 unchanged, 1 failed (see the messages above)\n",
                 {"a.jpg", "c.jpg"}, 1);
}

// --- at each operation on the device

// A folder of which one operation fails, or all from one on.
class FaultyFolder : public DeviceFileSystem
{
public:
    explicit FaultyFolder(const QByteArray &root)
    {
        FileError error;
        m_files = FolderFileSystem::openFolder(root, &error);
    }

    int failing = 0; ///< the operation that fails, counted from 1; 0 for none
    FileError fault;
    int operations = 0;

    std::unique_ptr<DeviceFile> open(const QByteArray &path, FileError *error) override
    {
        if (fails(error))
            return nullptr;
        std::unique_ptr<DeviceFile> file = m_files->open(path, error);
        return file ? std::make_unique<File>(*this, std::move(file)) : nullptr;
    }

    bool info(const QByteArray &path, FileInfo *info, FileError *error) override
    {
        return !fails(error) && m_files->info(path, info, error);
    }

    bool list(const QByteArray &path, QList<QByteArray> *names, FileError *error) override
    {
        return !fails(error) && m_files->list(path, names, error);
    }

    DeviceState state() override { return m_files->state(); }
    void close() override { m_files->close(); }
    QByteArray id() const override { return m_files->id(); }
    QByteArray name() const override { return m_files->name(); }

    QByteArray displayName(const QByteArray &path) const override
    {
        return m_files->displayName(path);
    }

private:
    class File : public DeviceFile
    {
    public:
        File(FaultyFolder &folder, std::unique_ptr<DeviceFile> file)
            : m_folder(folder), m_file(std::move(file))
        {
        }

        qint64 read(qint64 offset, char *buffer, qint64 length, FileError *error) override
        {
            return m_folder.fails(error) ? -1 : m_file->read(offset, buffer, length, error);
        }

        qint64 size(FileError *error) override
        {
            return m_folder.fails(error) ? -1 : m_file->size(error);
        }

    private:
        FaultyFolder &m_folder;
        const std::unique_ptr<DeviceFile> m_file;
    };

    // A device that is gone does not come back.
    bool fails(FileError *error)
    {
        ++operations;
        const bool isGone = fault.kind == FileError::Disconnected && operations > failing;
        if (failing == 0 || (operations != failing && !isGone))
            return false;
        *error = fault;
        return true;
    }

    std::unique_ptr<DeviceFileSystem> m_files;
};

struct FaultRow {
    const char *name;
    FileError fault;
};

class FaultyDatabase : public testing::TestWithParam<FaultRow>
{
protected:
    FaultyDatabase()
    {
        PhotosDatabase database = twoPhotos();
        PhotosRows later;
        later.assets = {photoRow(3, 120)};
        const PhotosFiles files = database.filesWithWal(later);
        m_scratch.write("device/PhotoData/Photos.sqlite", files.database);
        m_scratch.write("device/PhotoData/Photos.sqlite-wal", files.wal);
        m_scratch.write("device/PhotoData/Photos.sqlite-shm", files.shm);
    }

    /// Reads the library, and returns how many photos it shows, or why it cannot be read.
    QByteArray read(const std::shared_ptr<FaultyFolder> &folder) const
    {
        const QByteArray work = m_scratch.path("work/");
        removeAll(work);
        try {
            DatabaseCopy copy(*folder, work);
            Device device(folder, DeviceKind::Ios, QString::fromUtf8(work));
            const Plugin plugin(PHOTOLIB_PLUGIN_FILE);
            const std::unique_ptr<photo_manager_int> library = plugin.makeLibrary(&device);
            const TransferWatch watch(&copy);
            const bool isParsed = library->parseLib();
            copy.requireUnchanged(*folder);
            if (!copy.failure().isEmpty())
                return copy.failure();
            return isParsed ? QByteArray::number(library->photoCnt()) : "not parsed";
        } catch (const Error &error) {
            return error.what();
        }
    }

    ScratchFolder m_scratch;
};

// It is all of the library or a failure that says why, and never a part of it.
TEST_P(FaultyDatabase, IsNeverTakenForAWholeOne)
{
    const auto healthy = std::make_shared<FaultyFolder>(m_scratch.path("device"));
    ASSERT_EQ("3", read(healthy));
    int failures = 0;
    for (int n = 1; n <= healthy->operations; ++n) {
        const auto folder = std::make_shared<FaultyFolder>(m_scratch.path("device"));
        folder->failing = n;
        folder->fault = GetParam().fault;
        const QByteArray result = read(folder);
        const bool isTold = result.endsWith(GetParam().fault.text.toUtf8()) ||
                            result.endsWith("changed while it was copied");
        EXPECT_FALSE(result.endsWith("out of memory")) << n;
        EXPECT_TRUE(result == "3" || isTold) << n << ": " << result.constData();
        failures += isTold ? 1 : 0;
    }
    EXPECT_GE(failures, 10);
    EXPECT_EQ("3", read(std::make_shared<FaultyFolder>(m_scratch.path("device"))));
    std::printf("%d faults, %d failures\n", healthy->operations, failures);
}

// The plug-in has no words for it, and the files are as they were.
TEST_F(VanishingDevice, IsNotTakenForOneThatChangedWhenMemoryRunsOut)
{
    writeTwoPhotos();
    FileError error;
    const auto files = FolderFileSystem::openFolder(device(), &error);
    DatabaseCopy copy(*files, m_scratch.path("work/"));
    copy.requireUnchanged(*files);
    EXPECT_EQ(device() + "/PhotoData/Photos.sqlite: not copied: out of memory", copy.failure());
}

INSTANTIATE_TEST_SUITE_P(
    EachFault, FaultyDatabase,
    testing::Values(FaultRow{"ReadError", {FileError::Failed, "Input/output error"}},
                    FaultRow{"Locked", {FileError::Denied, "Permission denied"}},
                    FaultRow{"Gone", {FileError::Disconnected, "No such device"}},
                    FaultRow{"Missing", {FileError::NotFound, "No such file or directory"}}),
    rowName<FaultRow>);

} // namespace
