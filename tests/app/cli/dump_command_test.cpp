#include "support/classic_fixture.h"
#include "support/json.h"
#include "support/terminal.h"
#include "support/unread_pipe.h"

#include <gtest/gtest.h>

#include <QJsonDocument>

#include <csignal>

namespace {

class DumpProgram : public ProgramTest
{
protected:
    Json dump(const QList<QByteArray> &further = {})
    {
        const ProgramResult result = run(QList<QByteArray>{"dump", "-d", device()} + further);
        EXPECT_EQ(0, result.exitCode) << result.errors.constData();
        EXPECT_EQ(QByteArray(), result.errors);
        return Json::parse(result.output);
    }
};

class ClassicDump : public ClassicProgramTest
{
};

using Keys = std::vector<std::string>;

TEST_F(DumpProgram, HasNoCreateDateWhereThePlugInGivesNone)
{
    writeTwoPhotos();
    EXPECT_EQ("null", dump()["photos"][0]["createDate"].text());
}

TEST_F(ClassicDump, HasTheDatesThatThePlugInGives)
{
    writeThreePhotos();
    const ProgramResult result = run({"dump", "-d", device()});
    const Json photos = Json::parse(result.output)["photos"];
    EXPECT_EQ("\"2005-08-06T10:20:30Z\"", photos[0]["createDate"].text());
    EXPECT_EQ("null", photos[1]["createDate"].text());
    EXPECT_EQ("null", photos[0]["modifyDate"].text());
}

TEST_F(DumpProgram, ShowsWhatThePlugInFilledOfAPhotoThatItRefused)
{
    writeTwoPhotos();
    const Json photos = dump()["photos"];
    EXPECT_TRUE(photos[0]["ok"].get<bool>());
    const Json refused = photos[1];
    EXPECT_EQ((Keys{"id", "ok", "uuid", "name", "type", "path", "orientation", "height", "width",
                    "duration"}),
              refused.keys());
    EXPECT_FALSE(refused["ok"].get<bool>());
    EXPECT_EQ("IMG_0002.JPG", refused["name"].get<std::string>());
    EXPECT_EQ("DCIM/100APPLE/IMG_0002.JPG", refused["path"].get<std::string>());
    EXPECT_EQ(3024, refused["height"].get<int>());
}

TEST_F(DumpProgram, HasThumbnailsOnRequestOnly)
{
    writeTwoPhotos();
    m_scratch.write("device/PhotoData/Thumbnails/V2/DCIM/100APPLE/IMG_0001.JPG/5003.JPG", "abc");
    const Keys keys = {"parsed",     "libraryUuid", "photoCount", "photoIds",
                       "albumCount", "albumIds",    "photos",     "albums"};
    EXPECT_EQ(keys, dump().keys());
    const Json whole = dump({"--thumbnails"});
    Keys withThumbnails = keys;
    withThumbnails.push_back("thumbnails");
    EXPECT_EQ(withThumbnails, whole.keys());
    EXPECT_EQ(2U, whole["thumbnails"].size());
    EXPECT_EQ(3, whole["thumbnails"][0]["bytes"].get<int>());
}

TEST_F(DumpProgram, HasHelpThatFillsTheTerminal)
{
    Terminal terminal;
    if (!terminal.isOpen())
        GTEST_SKIP() << "there are no pseudo-terminals here";
    terminal.setColumns(400);
    m_setup.outputFd = terminal.slave();
    Program program(m_setup, {"dump", "--help"});
    const QByteArray text("\"ok\": false and the fields that the plug-in did fill. A date that the "
                          "plug-in does not give is null.\r\n");
    EXPECT_TRUE(terminal.shownUntil("Examples:").contains(text));
    EXPECT_EQ(0, program.waitForExitCode());
}

TEST_F(DumpProgram, DescribesTheOptionForThumbnails)
{
    EXPECT_TRUE(run({"dump", "--help"}).output.contains("\n  --thumbnails "));
}

// A library whose JSON is larger than what a pipe and the program hold, and a pipe that nobody
// reads: the program is not done before the test wants it to be.
class InterruptedDump : public ProgramTest
{
protected:
    InterruptedDump()
    {
        PhotosDatabase database;
        for (int i = 1; i <= 2000; ++i)
            database.rows.assets.push_back(photoRow(i, i));
        writeDatabase(m_scratch, "device", database);
        m_scratch.makePipe("pipe");
        m_setup.output = QString::fromUtf8(m_scratch.path("pipe"));
    }
};

TEST_F(InterruptedDump, EndsAtOnceAndCannotBeTakenForAWholeOne)
{
    for (const int signal : {SIGINT, SIGTERM}) {
        Terminal terminal;
        if (!terminal.isOpen())
            GTEST_SKIP() << "there are no pseudo-terminals here";
        m_setup.errorFd = terminal.slave();
        const UnreadPipe pipe(m_scratch.path("pipe"));
        Program program(m_setup, {"dump", "-d", device()});
        EXPECT_TRUE(terminal.shownUntil(" of 2004").contains("Reading the library ["));
        while (!pipe.isFull())
            ASSERT_FALSE(program.waitForFinished(10));
        ASSERT_EQ(0, ::kill(static_cast<pid_t>(program.processId()), signal));
        EXPECT_EQ(130, program.waitForExitCode());
        const QByteArray line = "photolib: interrupted: the JSON is not complete\r\n";
        EXPECT_TRUE(terminal.shownUntil(line).endsWith("\r\x1b[K" + line));
        EXPECT_TRUE(QJsonDocument::fromJson(pipe.readAll()).isNull());
    }
}

TEST_F(DumpProgram, DrawsNoBarAmongItsOwnLinesOnATerminal)
{
    writeTwoPhotos();
    Terminal terminal;
    if (!terminal.isOpen())
        GTEST_SKIP() << "there are no pseudo-terminals here";
    m_setup.errorFd = terminal.slave();
    m_setup.outputFd = terminal.slave();
    Program program(m_setup, {"dump", "-d", device()});
    EXPECT_EQ(0, program.waitForExitCode());
    EXPECT_FALSE(terminal.shownUntil("\r\n]\r\n}\r\n").contains("Reading the library"));
}

} // namespace
