#include "support/export_records.h"
#include "support/program_fixture.h"
#include "support/terminal.h"

#include <gtest/gtest.h>

#include <csignal>
#include <unistd.h>

namespace {

class VerifyCommand : public ProgramTest
{
protected:
    void exportFile(const QByteArray &path, const QByteArray &bytes)
    {
        m_scratch.write("out/" + path, bytes);
        m_files.push_back(recordedFile(path, bytes));
    }

    /// Two files, one of which is changed, another that is missing, and one too many.
    void exportWithFaults()
    {
        exportFile("2020/01/IMG_0001.JPG", "picture");
        exportFile("2020/01/IMG_0002.JPG", "picture");
        exportFile("2020/01/IMG_0003.JPG", "picture");
        record();
        m_scratch.write("out/2020/01/IMG_0001.JPG", "pic");
        ASSERT_EQ(0, ::unlink(m_scratch.path("out/2020/01/IMG_0003.JPG").constData()));
        m_scratch.write("out/notes\x1b[2J", "text");
    }

    void record() const { writeRecord(out(), m_files); }

    QByteArray out() const { return m_scratch.path("out"); }

    std::vector<RecordedFile> m_files;
};

TEST_F(VerifyCommand, IsDoneWhenAllFilesAreGood)
{
    exportFile("2020/01/IMG_0001.JPG", "picture");
    exportFile("2020/01/IMG_0002.JPG", "picture");
    record();
    const ProgramResult result = run({"verify", out()});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ("2 good, 0 changed, 0 missing, 0 extra\n", result.output);
    EXPECT_EQ("", result.errors);
    EXPECT_FALSE(m_scratch.exists("cache"));
}

TEST_F(VerifyCommand, FailsWithALineForEachFileThatIsNotGood)
{
    exportWithFaults();
    const ProgramResult result = run({"verify", out()});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("changed  2020/01/IMG_0001.JPG: has 3 bytes instead of 7\n"
              "missing  2020/01/IMG_0003.JPG\n"
              "extra    notes\\x1b[2J\n"
              "1 good, 1 changed, 1 missing, 1 extra\n",
              result.output);
    EXPECT_EQ("", result.errors);
}

TEST_F(VerifyCommand, FailsForEachKindOfFaultAlone)
{
    exportFile("a", "picture");
    record();
    m_scratch.write("out/a", "pictura");
    EXPECT_EQ(1, run({"verify", out()}).exitCode);
    m_scratch.write("out/a", "picture");
    EXPECT_EQ(0, run({"verify", out()}).exitCode);
    m_scratch.write("out/b", "text");
    EXPECT_EQ(1, run({"verify", out()}).exitCode);
    ASSERT_EQ(0, ::unlink(m_scratch.path("out/b").constData()));
    EXPECT_EQ(0, run({"verify", out()}).exitCode);
    ASSERT_EQ(0, ::unlink(m_scratch.path("out/a").constData()));
    EXPECT_EQ(1, run({"verify", out()}).exitCode);
}

TEST_F(VerifyCommand, PrintsJsonWithEachFileThatIsNotGood)
{
    exportWithFaults();
    const ProgramResult result = run({"verify", out(), "--json"});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ(
        R"({"good": 1, "changed": 1, "missing": 1, "extra": 1, "files": [
{"path":"2020/01/IMG_0001.JPG","state":"changed","cause":"has 3 bytes instead of 7"},
{"path":"2020/01/IMG_0003.JPG","state":"missing","cause":null},
{"path":"notes\u001b[2J","state":"extra","cause":null}
]}
)",
        result.output);
}

TEST_F(VerifyCommand, PrintsJsonWithoutFilesWhenAllAreGood)
{
    exportFile("a", "picture");
    record();
    const ProgramResult result = run({"verify", out(), "--json"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ("{\"good\": 1, \"changed\": 0, \"missing\": 0, \"extra\": 0, \"files\": []}\n",
              result.output);
}

TEST_F(VerifyCommand, PrintsOnlyFaultsWhenQuiet)
{
    exportWithFaults();
    const QByteArray output = run({"verify", out(), "-q"}).output;
    EXPECT_EQ(3, output.count('\n'));
    EXPECT_FALSE(output.contains("good"));
    m_scratch.makeFolder("other");
    writeRecord(m_scratch.path("other"), {});
    EXPECT_EQ("", run({"verify", m_scratch.path("other"), "-q"}).output);
}

TEST_F(VerifyCommand, NeedsAFolderWithARecord)
{
    expectFailure({"verify", out()}, out() + ": No such file or directory");
    m_scratch.write("out/a", "picture");
    expectFailure({"verify", out()}, out() + ": has no record of an export");
    m_scratch.write("out/.photolib/export.sqlite", QByteArray(5000, 'x'));
    expectFailure({"verify", out()},
                  out() + "/.photolib/export.sqlite: is damaged: file is not a database");
}

TEST_F(VerifyCommand, NeedsAnArgument)
{
    const QByteArray hint = " (photolib verify --help shows the usage)";
    expectFailure({"verify"}, "DIR is required" + hint, 2);
    expectFailure({"verify", ""}, "DIR: the name is empty" + hint, 2);
    expectFailure({"verify", "a", "b"}, "b: unexpected argument" + hint, 2);
}

TEST_F(VerifyCommand, TellsWhatMayNotBeRead)
{
    m_setup.respectsPermissions = true;
    if (!canRespectPermissions())
        GTEST_SKIP() << "the superuser can read everything here";
    exportFile("2020/a", "picture");
    exportFile("2021/b", "picture");
    exportFile("c", "picture");
    record();
    const QByteArray folder = m_scratch.path("out/2021");
    ASSERT_EQ(0, ::chmod(m_scratch.path("out/2020/a").constData(), 0));
    ASSERT_EQ(0, ::chmod(folder.constData(), 0));
    const ProgramResult result = run({"verify", out()});
    ASSERT_EQ(0, ::chmod(folder.constData(), 0700));
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("changed  2020/a: Permission denied\n"
              "extra    2021: Permission denied\n"
              "changed  2021/b: Permission denied\n"
              "1 good, 2 changed, 0 missing, 1 extra\n",
              result.output);
}

TEST_F(VerifyCommand, VerifiesAFolderThatCannotBeWritten)
{
    m_setup.respectsPermissions = true;
    if (!canRespectPermissions())
        GTEST_SKIP() << "the superuser can write everything here";
    exportFile("a", "picture");
    record();
    const QByteArray state = m_scratch.path("out/.photolib");
    ASSERT_EQ(0, ::chmod((state + "/export.sqlite").constData(), 0400));
    ASSERT_EQ(0, ::chmod(state.constData(), 0500));
    ASSERT_EQ(0, ::chmod(out().constData(), 0500));
    const ProgramResult result = run({"verify", out()});
    ASSERT_EQ(0, ::chmod(out().constData(), 0700));
    ASSERT_EQ(0, ::chmod(state.constData(), 0700));
    EXPECT_EQ("1 good, 0 changed, 0 missing, 0 extra\n", result.output);
    EXPECT_EQ("", result.errors);
}

TEST_F(VerifyCommand, EndsInTheMiddleOfAFileWhenItIsInterrupted)
{
    Terminal terminal;
    if (!terminal.isOpen())
        GTEST_SKIP() << "there are no pseudo-terminals here";
    exportFile("film", "");
    constexpr qint64 endless = qint64(1) << 38; // reading it takes minutes
    m_scratch.writeSparse("out/film", endless);
    m_files[0].size = endless;
    record();
    m_setup.errorFd = terminal.slave();
    Program program(m_setup, {"verify", out()});
    EXPECT_TRUE(terminal.shownUntil("0 of 1 files, ").contains("Verifying ["));
    ASSERT_EQ(0, ::kill(static_cast<pid_t>(program.processId()), SIGINT));
    EXPECT_TRUE(terminal.shownUntil(" verified\r\n")
                    .endsWith("photolib: interrupted: 0 of 1 files verified\r\n"));
    EXPECT_EQ(130, program.waitForExitCode());
    EXPECT_EQ(QByteArray(), program.readAllStandardOutput());
}

} // namespace
