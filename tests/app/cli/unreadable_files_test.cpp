#include "support/program_fixture.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

// A device whose photos may not be read, as a phone's that is locked.
class UnreadableFiles : public ProgramTest
{
protected:
    UnreadableFiles()
    {
        m_setup.respectsPermissions = true;
        writeTwoPhotos();
        setMode("device/DCIM", 0);
    }
    ~UnreadableFiles() override { setMode("device/DCIM", 0700); }

    void SetUp() override
    {
        if (!canRespectPermissions())
            GTEST_SKIP() << "the superuser can read everything here";
    }

    void setMode(const QByteArray &path, mode_t mode) const
    {
        ASSERT_EQ(0, ::chmod(m_scratch.path(path).constData(), mode));
    }

    // The output; expects a failure that counts `files`.
    QByteArray expectTold(const QList<QByteArray> &arguments, const QByteArray &files)
    {
        const ProgramResult result = run(arguments);
        EXPECT_EQ(1, result.exitCode) << arguments[0].constData();
        EXPECT_TRUE(result.errors.contains("Permission denied")) << result.errors.constData();
        EXPECT_TRUE(result.errors.endsWith("; " + files + " cannot be read\n"))
            << result.errors.constData();
        EXPECT_EQ(1, result.errors.count('\n')) << result.errors.constData();
        return result.output;
    }
};

TEST_F(UnreadableFiles, AreNotCountedAsMissing)
{
    const QByteArray output = expectTold({"info", "-d", device()}, "2 files");
    EXPECT_TRUE(output.contains("Missing:      0 without a file on the device\n"));
    EXPECT_TRUE(output.contains("Unreadable:   2\n")) << output.constData();
}

TEST_F(UnreadableFiles, AreListedAsSuch)
{
    const QByteArray output = expectTold({"photos", "-d", device()}, "2 files");
    EXPECT_EQ(2, output.count("unreadable")) << output.constData();
    EXPECT_FALSE(output.contains("missing"));
}

TEST_F(UnreadableFiles, AreShownAsSuch)
{
    const QByteArray output = expectTold({"show", "1", "-d", device()}, "1 file");
    EXPECT_TRUE(output.contains("File:        unreadable\n")) << output.constData();
}

TEST_F(UnreadableFiles, AreToldOfEdits)
{
    setMode("device/DCIM", 0700);
    m_scratch.makeFolder("device/PhotoData/Mutations");
    setMode("device/PhotoData/Mutations", 0);
    const ProgramResult result = run({"show", "1", "-d", device()});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_TRUE(result.errors.contains("PhotoData/Mutations/DCIM/100APPLE: Permission denied"))
        << result.errors.constData();
    setMode("device/PhotoData/Mutations", 0700);
}

TEST_F(UnreadableFiles, AreToldByADumpAndASheet)
{
    EXPECT_EQ(2, expectTold({"dump", "-d", device()}, "2 files").count("\"ok\":false"));
    expectTold({"sheet", "-d", device(), "-o", m_scratch.path("sheet.png")}, "2 files");
    EXPECT_TRUE(m_scratch.exists("sheet.png"));
}

// The folder too: nobody knows which films are in it.
TEST_F(UnreadableFiles, AreToldOneByOneByAnExport)
{
    const ProgramResult result = run({"export", "-d", device(), m_scratch.path("out")});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("photolib: DCIM/100APPLE: Permission denied\n"
              "photolib: DCIM/100APPLE/IMG_0001.JPG: Permission denied\n"
              "photolib: DCIM/100APPLE/IMG_0002.JPG: Permission denied\n",
              result.errors);
    EXPECT_TRUE(result.output.endsWith(" 3 failed (see the messages above)\n"))
        << result.output.constData();
}

TEST_F(UnreadableFiles, AreToldOfThumbnails)
{
    setMode("device/DCIM", 0700);
    m_scratch.makeFolder("device/PhotoData/Thumbnails");
    setMode("device/PhotoData/Thumbnails", 0);
    const ProgramResult result = run({"thumb", "-d", device(), "1", "-o", m_scratch.path("1.jpg")});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_TRUE(result.errors.contains("no thumbnail (Permission denied)"))
        << result.errors.constData();
    expectTold({"sheet", "-d", device(), "-o", m_scratch.path("sheet.png")}, "2 files");
    setMode("device/PhotoData/Thumbnails", 0700);
}

TEST_F(UnreadableFiles, AreToldOfOriginalsThatThumbnailsAreMadeOf)
{
    setMode("device/DCIM", 0700);
    setMode("device/DCIM/100APPLE/IMG_0001.JPG", 0);
    const QByteArray line = "no thumbnail (Permission denied)";
    const ProgramResult thumb = run({"thumb", "-d", device(), "1", "-o", m_scratch.path("1.jpg")});
    EXPECT_EQ(1, thumb.exitCode);
    EXPECT_TRUE(thumb.errors.contains(line)) << thumb.errors.constData();
    const ProgramResult sheet = run({"sheet", "-d", device(), "-o", m_scratch.path("sheet.png")});
    EXPECT_EQ(1, sheet.exitCode);
    EXPECT_EQ("photolib: DCIM/100APPLE/IMG_0001.JPG: Permission denied; 1 file cannot be read\n",
              sheet.errors);
}

TEST_F(UnreadableFiles, MakeNoErrorOfWhatIsMissing)
{
    setMode("device/DCIM", 0700);
    EXPECT_TRUE(run({"photos", "-d", device()}).output.contains("  missing  "));
    m_scratch.makeFolder("device/DCIM/100APPLE/IMG_0002.JPG");
    for (const char *command : {"info", "photos", "dump"})
        EXPECT_EQ(0, run({command, "-d", device()}).exitCode) << command;
}

} // namespace
