#include "base/byte_count.h"

#include "support/device_folder.h"
#include "support/program_fixture.h"
#include "support/program_run.h"
#include "support/terminal.h"
#include "support/unread_pipe.h"

#include <gtest/gtest.h>

#include <csignal>
#include <unistd.h>

namespace {

// A device whose database is copied for as long as nobody stops it.
class InterruptedProgram : public testing::Test
{
protected:
    InterruptedProgram()
    {
        m_setup.cacheFolder = QString::fromUtf8(m_scratch.path("cache"));
        m_size = byteCountText(m_scratch.writeEndless("device/PhotoData/Photos.sqlite")).toUtf8();
    }

    QList<QByteArray> arguments() const
    {
        return {"info", "-d", m_scratch.path("device"), "--work-dir", m_scratch.path("work")};
    }

    /// Waits until the copying has begun. False when the program ends before.
    bool waitForCopy(Program &program) const
    {
        while (m_scratch.size("work/Photos.sqlite") <= 0) {
            if (program.waitForFinished(10) || program.state() == QProcess::NotRunning)
                return false;
        }
        return true;
    }

    /// What the program says of the copy.
    QByteArray report() const { return " of " + m_size + " of the database copied\n"; }

    ScratchFolder m_scratch;
    ProgramSetup m_setup;
    QByteArray m_size; ///< of the database, as it is told
};

TEST_F(InterruptedProgram, StopsCopyingAndLeavesNoPartOfTheCopy)
{
    for (const int signal : {SIGINT, SIGTERM}) {
        Program program(m_setup, arguments());
        ASSERT_TRUE(waitForCopy(program));
        ASSERT_EQ(0, ::kill(static_cast<pid_t>(program.processId()), signal));
        EXPECT_EQ(130, program.waitForExitCode());
        const QByteArray errors = program.readAllStandardError();
        EXPECT_TRUE(errors.startsWith("photolib: interrupted: ")) << errors.constData();
        EXPECT_TRUE(errors.endsWith(report())) << errors.constData();
        EXPECT_EQ(1, errors.count('\n'));
        EXPECT_EQ(QByteArray(), program.readAllStandardOutput());
        EXPECT_FALSE(m_scratch.exists("work"));
    }
}

TEST_F(InterruptedProgram, ShowsTheBytesOfTheTotalOnATerminal)
{
    Terminal terminal;
    if (!terminal.isOpen())
        GTEST_SKIP() << "there are no pseudo-terminals here";
    m_setup.errorFd = terminal.slave();
    Program program(m_setup, arguments());
    EXPECT_TRUE(terminal.shownUntil("iB of " + m_size).contains("\rCopying the database ["));
    ASSERT_EQ(0, ::kill(static_cast<pid_t>(program.processId()), SIGINT));
    // The bar is off its line before the report is on it.
    EXPECT_TRUE(terminal.shownUntil(" copied\r\n").contains("\r\x1b[Kphotolib: interrupted: "));
    EXPECT_EQ(130, program.waitForExitCode());
}

TEST_F(InterruptedProgram, ShowsNoProgressWhenQuiet)
{
    Terminal terminal;
    if (!terminal.isOpen())
        GTEST_SKIP() << "there are no pseudo-terminals here";
    m_setup.errorFd = terminal.slave();
    Program program(m_setup, arguments() + QList<QByteArray>{"--quiet"});
    ASSERT_TRUE(waitForCopy(program));
    ASSERT_EQ(0, ::kill(static_cast<pid_t>(program.processId()), SIGINT));
    EXPECT_TRUE(terminal.shownUntil("\n").startsWith("photolib: interrupted: "));
    EXPECT_EQ(130, program.waitForExitCode());
}

class InterruptedList : public ProgramTest
{
protected:
    void writePhotos(int count)
    {
        PhotosDatabase database;
        for (int i = 1; i <= count; ++i)
            database.rows.assets.push_back(photoRow(i, i));
        writeDatabase(m_scratch, "device", database);
    }
};

TEST_F(InterruptedList, EndsThoughNobodyReadsItAndLeavesNoCopyOfTheDatabase)
{
    writePhotos(3000);
    m_scratch.makePipe("pipe");
    m_setup.output = QString::fromUtf8(m_scratch.path("pipe"));
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        const UnreadPipe pipe(m_scratch.path("pipe"));
        Program program(m_setup, {"photos", "-d", device()});
        while (!pipe.isFull())
            ASSERT_FALSE(program.waitForFinished(10));
        ASSERT_EQ(0, ::kill(static_cast<pid_t>(program.processId()), signal));
        EXPECT_EQ(130, program.waitForExitCode());
        EXPECT_EQ("photolib: interrupted\n", program.readAllStandardError());
        EXPECT_TRUE(pipe.readAll().startsWith("  ID  NAME"));
        for (const QByteArray &path : m_scratch.everythingIn("cache"))
            EXPECT_FALSE(path.contains("Photos.sqlite")) << path.constData();
    }
}

} // namespace
