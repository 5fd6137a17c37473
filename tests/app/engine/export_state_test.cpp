#include "engine/export_state.h"

#include "base/cancel_token.h"
#include "base/error.h"
#include "support/device_folder.h"
#include "support/disk_faults.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <future>
#include <optional>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>

namespace {

void expectNoWait()
{
    ADD_FAILURE() << "waits for another exporter";
}

class ExportStateFolder : public testing::Test
{
protected:
    ExportState makeState() { return ExportState(m_scratch.root(), m_cancel, expectNoWait); }

    /// The text of the error that making one ends with; empty when there is none.
    std::string failure()
    {
        try {
            ExportState state(m_scratch.root(), m_cancel, expectNoWait);
            return {};
        } catch (const Error &error) {
            return error.what();
        }
    }

    std::string stateFolder() const { return m_scratch.path(".photolib").toStdString(); }

    ScratchFolder m_scratch;
    CancelToken m_cancel;
};

TEST_F(ExportStateFolder, IsMadeAndRemovedAgainWhenItStaysEmpty)
{
    {
        const ExportState state = makeState();
        EXPECT_EQ(m_scratch.path(".photolib"), state.path());
        struct stat opened = {};
        struct stat named = {};
        ASSERT_EQ(0, ::fstat(state.fd(), &opened));
        ASSERT_EQ(0, ::lstat(state.path().constData(), &named));
        EXPECT_EQ(named.st_ino, opened.st_ino);
    }
    EXPECT_FALSE(m_scratch.exists(".photolib"));
}

TEST_F(ExportStateFolder, StaysWhenItHoldsAFile)
{
    {
        const ExportState state = makeState();
        m_scratch.write(".photolib/export.sqlite", "record");
    }
    EXPECT_EQ("record", m_scratch.read(".photolib/export.sqlite"));
}

TEST_F(ExportStateFolder, StaysWhenItWasThereBefore)
{
    m_scratch.makeFolder(".photolib");
    makeState();
    EXPECT_TRUE(m_scratch.exists(".photolib"));
}

TEST_F(ExportStateFolder, LosesPartFilesThatAKilledExporterLeftAndNothingElse)
{
    m_scratch.write(".photolib/.photolib-1a2b.part", "half");
    m_scratch.write(".photolib/export.sqlite", "record");
    m_scratch.write(".photolib/notes.part", "text");
    m_scratch.write(".photolib/.photolib-notes", "text");
    m_scratch.makeFolder(".photolib/.photolib-folder.part");
    m_scratch.makeLink(".photolib/.photolib-link.part", m_scratch.path(".photolib/notes.part"));
    m_scratch.write(".photolib-elsewhere.part", "text");
    const QByteArray part = m_scratch.path(".photolib/.photolib-1a2b.part");
    QList<QByteArray> expected = m_scratch.everythingIn();
    ASSERT_TRUE(expected.removeOne(part));
    makeState();
    EXPECT_EQ(expected, m_scratch.everythingIn());
}

TEST_F(ExportStateFolder, MustNotBeALink)
{
    m_scratch.write("precious/.photolib-1.part", "text");
    m_scratch.makeLink(".photolib", m_scratch.path("precious"));
    EXPECT_EQ(stateFolder() + ": a link, where a folder itself is needed", failure());
    EXPECT_EQ("text", m_scratch.read("precious/.photolib-1.part"));
}

TEST_F(ExportStateFolder, MustNotBeADanglingLink)
{
    m_scratch.makeLink(".photolib", m_scratch.path("nowhere"));
    EXPECT_EQ(stateFolder() + ": a link, where a folder itself is needed", failure());
    EXPECT_FALSE(m_scratch.exists("nowhere"));
}

TEST_F(ExportStateFolder, MustNotBeAFile)
{
    m_scratch.write(".photolib", "text");
    EXPECT_EQ(stateFolder() + ": not a folder", failure());
    EXPECT_EQ("text", m_scratch.read(".photolib"));
}

TEST_F(ExportStateFolder, NeedsTheFolderOfTheExport)
{
    const QByteArray missing = m_scratch.path("missing");
    try {
        const ExportState state(missing, m_cancel, expectNoWait);
        ADD_FAILURE() << "made in a folder that is not there";
    } catch (const Error &error) {
        EXPECT_EQ(missing.toStdString() + "/.photolib: No such file or directory",
                  std::string(error.what()));
    }
}

TEST_F(ExportStateFolder, LetsASecondExporterWaitUntilTheFirstHasEnded)
{
    std::optional<ExportState> first(std::in_place, m_scratch.root(), m_cancel, expectNoWait);
    m_scratch.write(".photolib/.photolib-1.part", "of the first one");
    std::promise<void> waits;
    std::promise<void> mayEnd;
    std::atomic<bool> firstHasEnded{false};
    int callsBeforeWait = 0;
    std::thread second([&] {
        const ExportState state(m_scratch.root(), m_cancel, [&] {
            ++callsBeforeWait;
            waits.set_value();
            mayEnd.get_future().wait(); // the first is still at work
        });
        EXPECT_TRUE(firstHasEnded);
        EXPECT_FALSE(m_scratch.exists(".photolib/.photolib-1.part"));
    });
    waits.get_future().wait();
    EXPECT_EQ("of the first one", m_scratch.read(".photolib/.photolib-1.part"));
    mayEnd.set_value();
    firstHasEnded = true;
    first.reset();
    second.join();
    EXPECT_EQ(1, callsBeforeWait);
}

TEST_F(ExportStateFolder, IsMadeAnewByAnExporterThatWaitedForOneThatRemovesIt)
{
    std::optional<ExportState> first(std::in_place, m_scratch.root(), m_cancel, expectNoWait);
    const ExportState second(m_scratch.root(), m_cancel, [&] { first.reset(); });
    struct stat opened = {};
    struct stat named = {};
    ASSERT_EQ(0, ::fstat(second.fd(), &opened));
    ASSERT_EQ(0, ::lstat(second.path().constData(), &named));
    EXPECT_EQ(named.st_ino, opened.st_ino);
}

TEST_F(ExportStateFolder, IsWaitedForNoLongerOnceThatIsCancelled)
{
    const ExportState first = makeState();
    try {
        const ExportState second(m_scratch.root(), m_cancel, [this] { m_cancel.cancel(); });
        ADD_FAILURE() << "two exporters have the folder";
    } catch (const Error &error) {
        EXPECT_EQ(Error::Cancelled, error.kind());
    }
    EXPECT_TRUE(m_scratch.exists(".photolib"));
}

// Nothing tells there whether the exporter that writes a part file is still alive.
TEST_F(ExportStateFolder, IsHadWithoutALockOnADiskThatHasNoneAndKeepsItsPartFiles)
{
    m_scratch.write(".photolib/.photolib-1.part", "maybe of another exporter");
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        if (!takeLocksAway())
            ::_exit(77);
        const ExportState state(m_scratch.root(), m_cancel, [] { ::_exit(1); });
        ::_exit(0);
    }
    int status = -1;
    ASSERT_EQ(child, ::waitpid(child, &status, 0));
    if (WEXITSTATUS(status) == 77)
        GTEST_SKIP() << "locks cannot be taken away here";
    EXPECT_EQ(0, status);
    EXPECT_TRUE(m_scratch.exists(".photolib/.photolib-1.part"));
}

// The child holds the folder until it is killed, without a chance to clean up.
TEST_F(ExportStateFolder, IsFreeWhenTheExporterThatHadItIsKilled)
{
    int ready[2] = {};
    ASSERT_EQ(0, ::pipe(ready));
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const ExportState state(m_scratch.root(), m_cancel, [] { ::_exit(1); });
        if (::write(ready[1], "!", 1) != 1)
            ::_exit(1);
        for (;;)
            ::pause();
    }
    char told = 0;
    ASSERT_EQ(1, ::read(ready[0], &told, 1));
    int tries = 0;
    const ExportState state(m_scratch.root(), m_cancel, [&] {
        ++tries;
        ASSERT_EQ(0, ::kill(child, SIGKILL));
    });
    EXPECT_EQ(1, tries);
    int status = 0;
    EXPECT_EQ(child, ::waitpid(child, &status, 0));
    EXPECT_TRUE(WIFSIGNALED(status));
    ::close(ready[0]);
    ::close(ready[1]);
}

} // namespace
