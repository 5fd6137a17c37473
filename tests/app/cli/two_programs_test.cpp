#include "support/program_fixture.h"
#include "support/row_name.h"

#include "base/folders.h"
#include "base/unique_fd.h"

#include <gtest/gtest.h>

#include <QDir>

#include <csignal>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <sys/wait.h>

namespace {

class SeveralPrograms : public ProgramTest
{
protected:
    /// A device with as many photos as its number says.
    QByteArray writeDevice(int number)
    {
        const QByteArray name = "device" + QByteArray::number(number);
        PhotosDatabase database;
        for (int i = 1; i <= number; ++i)
            database.rows.assets.push_back(photoRow(i, 60 * i));
        writeDatabase(m_scratch, name, database);
        return m_scratch.path(name);
    }

    QByteArray work() const { return m_scratch.path("work"); }

    /// What the program says of the device when no other one runs.
    QByteArray outputAlone(const QByteArray &device)
    {
        return run({"photos", "-d", device, "--work-dir", m_scratch.path("alone")}).output;
    }

    /// Runs the program `count` times at once and expects of each what it says alone.
    void expectSame(const std::vector<QByteArray> &devices, const QList<QByteArray> &further)
    {
        std::vector<QByteArray> expected;
        for (const QByteArray &device : devices)
            expected.push_back(outputAlone(device));
        std::vector<std::unique_ptr<Program>> programs;
        for (const QByteArray &device : devices)
            programs.push_back(std::make_unique<Program>(
                m_setup, QList<QByteArray>{"photos", "-d", device} + further));
        for (size_t i = 0; i < devices.size(); ++i) {
            EXPECT_EQ(0, programs[i]->waitForExitCode()) << i;
            EXPECT_EQ(expected[i], programs[i]->readAllStandardOutput()) << i;
            const QByteArray errors = programs[i]->readAllStandardError();
            EXPECT_TRUE(errors.isEmpty() || saysThatItWaits(errors)) << i << errors.constData();
        }
    }

    /// Whether this is all that a program says.
    static bool saysThatItWaits(const QByteArray &errors)
    {
        return errors.startsWith("photolib: waiting for another program that uses ") &&
               errors.count('\n') == 1;
    }

    /// Waits until the program has the file or folder open. False when it ends before.
    static bool waitForOpen(Program &program, const QByteArray &path)
    {
        const QDir files(QStringLiteral("/proc/%1/fd").arg(program.processId()));
        for (;;) {
            for (const QString &name : files.entryList(QDir::AllEntries | QDir::System)) {
                if (QFile::symLinkTarget(files.filePath(name)) == QString::fromUtf8(path))
                    return true;
            }
            if (program.waitForFinished(5) || program.state() == QProcess::NotRunning)
                return false;
        }
    }
};

TEST_F(SeveralPrograms, ReadDifferentDevicesInOneWorkFolder)
{
    std::vector<QByteArray> devices;
    for (int number = 1; number <= 8; ++number)
        devices.push_back(writeDevice(number));
    expectSame(devices, {"--work-dir", work()});
}

TEST_F(SeveralPrograms, ReadOneDeviceInOneWorkFolder)
{
    expectSame(std::vector<QByteArray>(2, writeDevice(3)), {"--work-dir", work()});
    expectSame(std::vector<QByteArray>(8, writeDevice(3)), {});
}

TEST_F(SeveralPrograms, MakeOneSampleForAllOfThem)
{
    std::vector<std::unique_ptr<Program>> programs;
    for (int i = 0; i < 4; ++i)
        programs.push_back(std::make_unique<Program>(m_setup, QList<QByteArray>{"info"}));
    QList<QByteArray> outputs;
    int makers = 0;
    for (const auto &program : programs) {
        const int code = program->waitForExitCode();
        const QByteArray errors = program->readAllStandardError();
        EXPECT_EQ(0, code) << errors.constData();
        outputs.append(program->readAllStandardOutput());
        makers += errors.contains("made a sample") ? 1 : 0;
    }
    EXPECT_EQ(1, makers);
    EXPECT_EQ(outputs.size(), outputs.count(outputs.first()));
    EXPECT_FALSE(m_scratch.exists("cache/photolib/sample.partial"));
}

// Takes the folder away from under those that wait for it.
TEST_F(SeveralPrograms, GoOnWhenTheFirstOneFailsAndRemovesTheFolder)
{
    m_scratch.writeEndless("endless/PhotoData/Photos.sqlite");
    const QByteArray device = writeDevice(2);
    const QByteArray expected = outputAlone(device);
    Program first(m_setup, {"photos", "-d", m_scratch.path("endless"), "--work-dir", work()});
    ASSERT_TRUE(waitForOpen(first, work() + "/Photos.sqlite"));
    std::vector<std::unique_ptr<Program>> others;
    for (int i = 0; i < 2; ++i) {
        others.push_back(std::make_unique<Program>(
            m_setup, QList<QByteArray>{"photos", "-d", device, "--work-dir", work()}));
        ASSERT_TRUE(waitForOpen(*others.back(), work()));
    }
    ASSERT_EQ(0, ::truncate(m_scratch.path("endless/PhotoData/Photos.sqlite").constData(), 0));
    EXPECT_EQ(1, first.waitForExitCode());
    for (const auto &program : others) {
        EXPECT_EQ(0, program->waitForExitCode());
        EXPECT_EQ(expected, program->readAllStandardOutput());
        EXPECT_EQ("photolib: waiting for another program that uses " + work() + '\n',
                  program->readAllStandardError());
    }
}

TEST_F(SeveralPrograms, SayNothingOfAWaitWhenTheyAreToBeQuiet)
{
    const QByteArray device = writeDevice(2);
    m_scratch.makeFolder("work");
    std::optional<LockedFolder> lock(work());
    Program program(m_setup, {"photos", "-d", device, "--work-dir", work(), "--quiet"});
    ASSERT_TRUE(waitForOpen(program, work()));
    lock.reset();
    EXPECT_EQ(0, program.waitForExitCode());
    EXPECT_EQ(QByteArray(), program.readAllStandardError());
}

TEST_F(SeveralPrograms, AreNotHeldUpByOneThatWasKilled)
{
    m_scratch.writeEndless("endless/PhotoData/Photos.sqlite");
    m_scratch.write("endless/PhotoData/Photos.sqlite-wal", "a log of another device");
    const QByteArray device = writeDevice(2);
    const QByteArray expected = outputAlone(device);
    for (const bool hasLog : {false, true}) {
        Program first(m_setup, {"photos", "-d", m_scratch.path("endless"), "--work-dir", work()});
        ASSERT_TRUE(waitForOpen(first, work() + "/Photos.sqlite"));
        ASSERT_EQ(0, ::kill(static_cast<pid_t>(first.processId()), SIGKILL));
        EXPECT_EQ(-1, first.waitForExitCode());
        EXPECT_GE(m_scratch.size("work/Photos.sqlite"), 0);
        if (hasLog)
            m_scratch.write("work/Photos.sqlite-wal", "left");
        const ProgramResult result = run({"photos", "-d", device, "--work-dir", work()});
        EXPECT_EQ(0, result.exitCode);
        EXPECT_EQ(expected, result.output);
        EXPECT_EQ(QByteArray(), result.errors);
    }
}

TEST_F(SeveralPrograms, CompleteAnExportOfWhichOneWasKilled)
{
    writeTwoPhotos();
    m_scratch.writeEndless("device/DCIM/100APPLE/IMG_0002.JPG");
    Program first(m_setup, {"export", "-d", device(), m_scratch.path("out")});
    ASSERT_TRUE(waitForOpen(first, device() + "/DCIM/100APPLE/IMG_0002.JPG"));
    ASSERT_EQ(0, ::kill(static_cast<pid_t>(first.processId()), SIGKILL));
    EXPECT_EQ(-1, first.waitForExitCode());
    m_scratch.write("device/DCIM/100APPLE/IMG_0002.JPG", "second");
    EXPECT_EQ(0, run({"export", "-d", device(), m_scratch.path("out")}).exitCode);
    EXPECT_EQ("picture", m_scratch.read("out/IMG_0001.JPG"));
    EXPECT_EQ("second", m_scratch.read("out/IMG_0002.JPG"));
}

// --- locked databases

TEST_F(SeveralPrograms, ReadADatabaseThatAnotherProgramHasLocked)
{
    const QByteArray device = writeDevice(2);
    const QByteArray expected = outputAlone(device);
    sqlite3 *db = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open((device + "/PhotoData/Photos.sqlite").constData(), &db));
    const SqliteOwner owner(db);
    runSql(db, "BEGIN EXCLUSIVE");
    const ProgramResult result = run({"photos", "-d", device, "--work-dir", work()});
    EXPECT_EQ(0, result.exitCode) << result.errors.constData();
    EXPECT_EQ(expected, result.output);
}

// Between the copying and the reading of it, while a log is copied that takes a moment.
TEST_F(SeveralPrograms, AreToldThatTheCopyIsLocked)
{
    constexpr qint64 logSize = qint64(256) << 20;
    const QByteArray device = writeDevice(2);
    m_scratch.writeSparse("device2/PhotoData/Photos.sqlite-wal", logSize);
    Program program(m_setup, {"photos", "-d", device, "--work-dir", work()});
    ASSERT_TRUE(program.waitForStarted());
    const auto process = static_cast<pid_t>(program.processId());
    while (!m_scratch.exists("work/Photos.sqlite-wal"))
        ASSERT_EQ(0, ::kill(process, 0));
    ASSERT_EQ(0, ::kill(process, SIGSTOP));
    siginfo_t ignored = {};
    ASSERT_EQ(0, ::waitid(P_PID, static_cast<id_t>(process), &ignored, WSTOPPED | WNOWAIT));
    const bool isCopying = m_scratch.size("work/Photos.sqlite-wal") < logSize;
    const UniqueFd copy(::open((work() + "/Photos.sqlite").constData(), O_RDWR | O_CLOEXEC));
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = 0x40000000; // where SQLite's own locks are
    lock.l_len = 512;
    const bool isLocked = ::fcntl(copy.get(), F_SETLK, &lock) == 0;
    ASSERT_EQ(0, ::kill(process, SIGCONT));
    if (!isCopying || !isLocked)
        GTEST_SKIP() << "the log was copied before anybody could lock the database";
    EXPECT_EQ(1, program.waitForExitCode());
    EXPECT_EQ("photolib: " + device +
                  "/PhotoData/Photos.sqlite: not readable as a photo library: its tables "
                  "cannot be read\n",
              program.readAllStandardError());
    EXPECT_FALSE(m_scratch.exists("work"));
}

} // namespace
