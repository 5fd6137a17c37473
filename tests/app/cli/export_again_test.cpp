#include "base/cancel_token.h"
#include "engine/export_state.h"
#include "support/export_fixture.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <optional>

namespace {

// Exports to a folder that has something already.
class RepeatedExport : public ExportProgramTest
{
protected:
    void writeTwo()
    {
        addPhoto("a.jpg", "one");
        addPhoto("b.jpg", "two");
        writeDevice();
    }

    void edit(const QByteArray &name, const QByteArray &content) const
    {
        m_scratch.write(folder + name, content);
    }

    QByteArray output(const QList<QByteArray> &further = {})
    {
        const ProgramResult result = runExport(further);
        EXPECT_EQ(0, result.exitCode) << result.errors.constData();
        return result.output;
    }
};

TEST_F(RepeatedExport, CopiesAnewWhatWasEditedAndKeepsTheOldCopy)
{
    writeTwo();
    output();
    edit("a.jpg", "edited");
    EXPECT_EQ("Copied 1 file (6 bytes), 1 unchanged\n", output());
    EXPECT_EQ("one", m_scratch.read("out/a.jpg"));
    EXPECT_EQ("edited", m_scratch.read("out/a (2).jpg"));
    EXPECT_EQ("Copied 0 files (0 bytes), 2 unchanged\n", output({"--update", "keep"}));
    EXPECT_EQ(0, run({"verify", out()}).exitCode);
}

TEST_F(RepeatedExport, ReplacesTheOldCopyOnRequest)
{
    writeTwo();
    output();
    edit("a.jpg", "edited");
    EXPECT_EQ("Copied 1 file (6 bytes), 1 unchanged\n", output({"--update", "replace"}));
    EXPECT_EQ("edited", m_scratch.read("out/a.jpg"));
    EXPECT_EQ((QList<QByteArray>{"a.jpg", "b.jpg"}), names());
    EXPECT_EQ(0, run({"verify", out()}).exitCode);
}

TEST_F(RepeatedExport, ReplacesNothingThatIsAPersonsOwn)
{
    writeTwo();
    output();
    m_scratch.write("out/a.jpg", "own");
    edit("a.jpg", "edited");
    EXPECT_EQ("Copied 1 file (6 bytes), 1 unchanged\n", output({"--update", "replace"}));
    EXPECT_EQ("own", m_scratch.read("out/a.jpg"));
    EXPECT_EQ("edited", m_scratch.read("out/a (2).jpg"));
}

TEST_F(RepeatedExport, CopiesAgainWhatSomebodyHasMovedOrDeleted)
{
    writeTwo();
    output();
    m_scratch.makeFolder("out/mine");
    ASSERT_EQ(0, std::rename((out() + "/a.jpg").constData(), (out() + "/mine/a.jpg").constData()));
    ASSERT_EQ(0, ::unlink((out() + "/b.jpg").constData()));
    EXPECT_EQ("Copied 2 files (6 bytes), 0 unchanged\n", output());
    EXPECT_EQ((QList<QByteArray>{"a.jpg", "b.jpg", "mine/a.jpg"}), names());
}

TEST_F(RepeatedExport, CopiesOnlyWhatIsNewOnRequest)
{
    writeTwo();
    output();
    m_scratch.makeFolder("out/mine");
    ASSERT_EQ(0, std::rename((out() + "/a.jpg").constData(), (out() + "/mine/a.jpg").constData()));
    ASSERT_EQ(0, ::unlink((out() + "/b.jpg").constData()));
    addPhoto("c.jpg", "three");
    writeDevice();
    for (const char *summary :
         {"Copied 1 file (5 bytes), 0 unchanged, 2 moved or deleted since\n",
          "Copied 0 files (0 bytes), 1 unchanged, 2 moved or deleted since\n"})
        EXPECT_EQ(summary, output({"--only-new"}));
    EXPECT_EQ((QList<QByteArray>{"c.jpg", "mine/a.jpg"}), names());
    edit("b.jpg", "edited"); // which is new again
    EXPECT_EQ("Copied 1 file (6 bytes), 1 unchanged, 1 moved or deleted since\n",
              output({"--only-new"}));
    EXPECT_EQ("edited", m_scratch.read("out/b.jpg"));
}

// It could not, whatever it wanted.
TEST_F(RepeatedExport, OpensNoPhotoThatItHasExported)
{
    if (!canRespectPermissions())
        GTEST_SKIP() << "the superuser can read everything here";
    m_setup.respectsPermissions = true;
    writeTwo();
    output();
    for (const char *name : {"a.jpg", "b.jpg"})
        ASSERT_EQ(0, ::chmod(m_scratch.path(folder + QByteArray(name)).constData(), 0));
    for (const char *option : {"--verify", "--only-new", "--recipe"})
        EXPECT_EQ("Copied 0 files (0 bytes), 2 unchanged\n", output({option}));
    ASSERT_EQ(0, ::unlink((out() + "/a.jpg").constData()));
    EXPECT_EQ("photolib: DCIM/100APPLE/a.jpg: Permission denied\n", runExport().errors);
}

TEST_F(RepeatedExport, GoesOnInAFolderThatWasMoved)
{
    writeTwo();
    output();
    ASSERT_EQ(0, std::rename(out().constData(), m_scratch.path("moved").constData()));
    addPhoto("c.jpg", "three");
    writeDevice();
    EXPECT_EQ("Copied 1 file (5 bytes), 2 unchanged\n",
              run({"export", "-d", device(), m_scratch.path("moved")}).output);
    EXPECT_EQ((QList<QByteArray>{"a.jpg", "b.jpg", "c.jpg"}), exportedFiles(m_scratch, "moved"));
    EXPECT_FALSE(m_scratch.exists("out"));
    EXPECT_EQ(0, run({"verify", m_scratch.path("moved")}).exitCode);
}

TEST_F(RepeatedExport, GoesToTheFolderThatALinkLeadsTo)
{
    writeTwo();
    m_scratch.makeFolder("disk/photos");
    m_scratch.makeLink("out", "disk/photos");
    output();
    EXPECT_EQ((QList<QByteArray>{"a.jpg", "b.jpg"}), exportedFiles(m_scratch, "disk/photos"));
    EXPECT_EQ("Copied 0 files (0 bytes), 2 unchanged\n", output());
    EXPECT_EQ("Copied 0 files (0 bytes), 2 unchanged\n",
              run({"export", "-d", device(), m_scratch.path("disk/photos")}).output);
}

// A copy with another person's changes would be lost.
TEST_F(RepeatedExport, FollowsNoLinkInPlaceOfAFileOrAFolder)
{
    addPhoto("a.jpg", "one");
    addPhoto("b.jpg", "two");
    writeDevice();
    m_scratch.write("mine", "own");
    m_scratch.makeFolder("elsewhere");
    m_scratch.makeFolder("out");
    m_scratch.makeLink("out/a.jpg", m_scratch.path("mine"));
    m_scratch.makeLink("out/sub", m_scratch.path("elsewhere"));
    EXPECT_EQ(0, runExport({"1"}).exitCode);
    EXPECT_EQ("own", m_scratch.read("mine"));
    EXPECT_EQ("one", m_scratch.read("out/a (2).jpg"));
    const ProgramResult blocked = runExport({"2", "--name", "sub/{name}"});
    EXPECT_EQ(1, blocked.exitCode);
    EXPECT_EQ("photolib: DCIM/100APPLE/b.jpg: a link or a file stands in place of its folder\n",
              blocked.errors);
    EXPECT_EQ(QList<QByteArray>(), m_scratch.everythingIn("elsewhere"));
}

TEST_F(RepeatedExport, IsRefusedWhereALinkStandsInPlaceOfTheRecordsFolder)
{
    writeTwo();
    m_scratch.makeFolder("elsewhere");
    m_scratch.makeFolder("out");
    m_scratch.makeLink("out/.photolib", m_scratch.path("elsewhere"));
    expectFailure({"export", "-d", device(), out()},
                  out() + "/.photolib: a link, where a folder itself is needed");
}

// --- records that are no good

class RefusedRecord : public RepeatedExport
{
protected:
    /// Expects that neither an export nor its preview changes a byte, and that both say `cause`.
    void expectRefusal(const QByteArray &cause)
    {
        const QByteArray record = m_scratch.read("out/.photolib/export.sqlite");
        addPhoto("c.jpg", "three");
        writeDevice();
        const QByteArray line = out() + "/.photolib/export.sqlite: " + cause;
        expectFailure({"export", "-d", device(), out()}, line);
        expectFailure({"export", "-d", device(), "--dry-run", out()}, line);
        EXPECT_EQ(record, m_scratch.read("out/.photolib/export.sqlite"));
        EXPECT_FALSE(m_scratch.exists("out/c.jpg"));
    }
};

TEST_F(RefusedRecord, IsOneOfANewerVersion)
{
    writeTwo();
    output();
    sqlite3 *db = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open((out() + "/.photolib/export.sqlite").constData(), &db));
    {
        const SqliteOwner owner(db);
        runSql(db, "PRAGMA user_version = 2");
    }
    expectRefusal("was made by a newer version of photolib");
}

TEST_F(RefusedRecord, IsOneThatIsDamaged)
{
    writeTwo();
    output();
    const QByteArray record = m_scratch.read("out/.photolib/export.sqlite");
    m_scratch.write("out/.photolib/export.sqlite",
                    record.left(100) + QByteArray(record.size() - 100, 'x'));
    addPhoto("c.jpg", "three");
    writeDevice();
    const QByteArray damaged = m_scratch.read("out/.photolib/export.sqlite");
    const ProgramResult result = runExport();
    EXPECT_EQ(1, result.exitCode);
    EXPECT_TRUE(
        result.errors.startsWith("photolib: " + out() + "/.photolib/export.sqlite: is damaged"))
        << result.errors.constData();
    EXPECT_EQ(damaged, m_scratch.read("out/.photolib/export.sqlite"));
    EXPECT_EQ((QList<QByteArray>{"a.jpg", "b.jpg"}), names());
}

TEST_F(RefusedRecord, IsAnotherDatabase)
{
    writeTwo();
    m_scratch.write("out/.photolib/export.sqlite", PhotosDatabase().bytes());
    expectRefusal("is not the record of an export");
}

// --- two exporters

TEST_F(RepeatedExport, WaitsForAnotherExporterAndSaysSo)
{
    writeTwo();
    m_scratch.makeFolder("out");
    const CancelToken cancel;
    std::optional<ExportState> other(std::in_place, out(), cancel, [] {});
    Program program(m_setup, {"export", "-d", device(), out()});
    program.setReadChannel(QProcess::StandardError);
    ASSERT_TRUE(program.waitForReadyRead(60 * 1000));
    EXPECT_EQ("photolib: waiting for another program that exports to " + out() + '\n',
              program.readLine());
    EXPECT_FALSE(m_scratch.exists("out/a.jpg"));
    other.reset();
    EXPECT_EQ(0, program.waitForExitCode());
    EXPECT_EQ("Copied 2 files (6 bytes), 0 unchanged\n", program.readAllStandardOutput());
    EXPECT_EQ(QByteArray(), program.readAllStandardError());
}

TEST_F(RepeatedExport, CanBeInterruptedWhileItWaits)
{
    writeTwo();
    m_scratch.makeFolder("out");
    const CancelToken cancel;
    const ExportState other(out(), cancel, [] {});
    Program program(m_setup, {"export", "-d", device(), out()});
    program.setReadChannel(QProcess::StandardError);
    ASSERT_TRUE(program.waitForReadyRead(60 * 1000));
    program.readLine();
    program.terminate();
    EXPECT_EQ(130, program.waitForExitCode());
    EXPECT_EQ("photolib: interrupted: nothing was copied\n", program.readAllStandardError());
    EXPECT_EQ(QList<QByteArray>(), names());
}

} // namespace
