#include "base/byte_count.h"
#include "support/export_fixture.h"
#include "support/terminal.h"

#include <gtest/gtest.h>

#include <csignal>

namespace {

// A device with a file that is longer than any test, after a short one.
class InterruptedExport : public ExportProgramTest
{
protected:
    InterruptedExport()
    {
        addPhoto("a.jpg", "one");
        addRow("b.mov");
        m_size = m_scratch.writeEndless(folder + QByteArray("b.mov"));
        writeDevice();
    }

    void SetUp() override
    {
        if (!m_terminal.isOpen())
            GTEST_SKIP() << "there are no pseudo-terminals here";
        m_setup.errorFd = m_terminal.slave();
    }

    QList<QByteArray> arguments() const { return {"export", "-d", device(), out()}; }

    void interrupt(Program &program, int signal = SIGINT)
    {
        ASSERT_EQ(0, ::kill(static_cast<pid_t>(program.processId()), signal));
        EXPECT_EQ(130, program.waitForExitCode());
    }

    Terminal m_terminal;
    qint64 m_size = 0; // of the long file
};

TEST_F(InterruptedExport, SaysWhatWasDoneAndLeavesNoHalfFile)
{
    for (const int signal : {SIGINT, SIGTERM}) {
        Terminal terminal;
        m_setup.errorFd = terminal.slave();
        Program program(m_setup, arguments());
        // However much of the second file is read by then.
        const QByteArray shown = terminal.shownUntil("] 1 of 2 files, ");
        EXPECT_TRUE(shown.contains("\rCopying [")) << shown.constData();
        interrupt(program, signal);
        const QByteArray done = signal == SIGINT ? "copied 1 file (3 bytes), 0 unchanged"
                                                 : "copied 0 files (0 bytes), 1 unchanged";
        const QByteArray line = "photolib: interrupted; " + done + "\r\n";
        EXPECT_TRUE(terminal.shownUntil(" unchanged\r\n").endsWith("\r\x1b[K" + line))
            << terminal.shownUntil("\n").constData();
        EXPECT_EQ(QByteArray(), program.readAllStandardOutput());
        EXPECT_EQ(QList<QByteArray>{"a.jpg"}, names());
    }
    m_scratch.write(folder + QByteArray("b.mov"), "film");
    EXPECT_EQ("Copied 1 file (4 bytes), 1 unchanged\n", run(arguments()).output);
}

// Of another program, of which nobody knows whether it is whole.
TEST_F(InterruptedExport, SaysThatNothingWasDoneWhileItComparesWhatIsThere)
{
    constexpr qint64 longest = qint64(1) << 40;
    m_scratch.writeSparse(folder + QByteArray("b.mov"), longest);
    m_scratch.writeSparse("out/b.mov", longest);
    Program program(m_setup, arguments());
    m_terminal.shownUntil("\rLooking at the files [");
    m_terminal.shownUntil("] 1 of 2");
    interrupt(program);
    const QByteArray shown = m_terminal.shownUntil("copied\r\n");
    EXPECT_TRUE(shown.endsWith("\r\x1b[Kphotolib: interrupted: nothing was copied\r\n"))
        << shown.constData();
    EXPECT_EQ(QList<QByteArray>{out() + "/b.mov"}, m_scratch.everythingIn("out"));
}

TEST_F(InterruptedExport, TellsTheTimeLeft)
{
    Program program(m_setup, arguments());
    const QByteArray shown = m_terminal.shownUntil(" left");
    EXPECT_TRUE(shown.contains(" of " + byteCountText(m_size + 3).toUtf8() + ", "))
        << shown.constData();
    EXPECT_TRUE(shown.contains("iB/s, ")) << shown.constData();
    interrupt(program);
}

TEST_F(InterruptedExport, KeepsItsBarOnOneLineOfTheTerminal)
{
    m_terminal.setColumns(60);
    Program program(m_setup, arguments());
    QByteArray shown = m_terminal.shownUntil(" left");
    interrupt(program);
    const QByteArray total = " of " + byteCountText(m_size + 3).toUtf8();
    int longest = 0;
    for (const QByteArray &line : shown.replace("\x1b[K", "").split('\r')) {
        longest = qMax(longest, line.size());
        if (line.startsWith("Copying")) {
            EXPECT_EQ(line.contains(" of 2 files"), line.contains(total)) << line.constData();
        }
    }
    EXPECT_LE(longest, 59);
}

} // namespace
