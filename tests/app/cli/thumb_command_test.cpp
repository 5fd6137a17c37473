#include "support/program_fixture.h"
#include "support/sample_device.h"
#include "support/terminal.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QImage>

#include <csignal>
#include <sys/stat.h>

namespace {

QByteArray jpegOf(const QImage &image)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, "JPEG"));
    return buffer.data();
}

class ThumbProgram : public ProgramTest
{
protected:
    ThumbProgram()
    {
        QImage image(30, 20, QImage::Format_RGB32);
        image.fill(Qt::red);
        m_jpeg = jpegOf(image);
    }

    /// A device with a thumbnail for the first of two photos.
    void writeDevice(const QByteArray &name = "IMG_0001.JPG")
    {
        PhotosDatabase database = twoPhotos();
        database.rows.assets[0].fileName = name.toStdString();
        database.rows.assets[1].thumbnailIndex = -1;
        writeDatabase(m_scratch, "device", database);
        m_scratch.write("device/PhotoData/Thumbnails/V2/DCIM/100APPLE/" + name + "/5005.JPG",
                        m_jpeg);
    }

    QByteArray out() const { return m_scratch.path("out"); }

    QByteArray m_jpeg;
};

using ThumbProgramOnASample = ThumbProgram;
using ThumbProgramOnBadInput = ThumbProgram;

TEST_F(ThumbProgram, WritesTheFileThatIsNamed)
{
    writeDevice();
    const ProgramResult result = run({"thumb", "-d", device(), "1", "-o", m_scratch.path("thumb")});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ("wrote 1 thumbnail to " + m_scratch.path("thumb") + '\n', result.output);
    EXPECT_EQ(QByteArray(), result.errors);
    EXPECT_EQ(m_jpeg, m_scratch.read("thumb"));
}

TEST_F(ThumbProgram, ReplacesAFileAndNotWhatALinkLeadsTo)
{
    writeDevice();
    m_scratch.write("elsewhere", "untouched");
    m_scratch.makeLink("thumb", "elsewhere");
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(0, run({"thumb", "-d", device(), "1", "-o", m_scratch.path("thumb")}).exitCode);
        EXPECT_EQ(m_jpeg, m_scratch.read("thumb"));
    }
    EXPECT_EQ("untouched", m_scratch.read("elsewhere"));
}

TEST_F(ThumbProgram, ConvertsToPngOnRequest)
{
    writeDevice();
    const QByteArray target = m_scratch.path("thumb");
    EXPECT_EQ(0, run({"thumb", "-d", device(), "1", "-o", target, "--format", "png"}).exitCode);
    QImage image;
    EXPECT_TRUE(image.loadFromData(m_scratch.read("thumb"), "PNG"));
    EXPECT_EQ(QImage::fromData(m_jpeg).convertToFormat(QImage::Format_RGB32),
              image.convertToFormat(QImage::Format_RGB32));
    EXPECT_EQ(0, run({"thumb", "-d", device(), "1", "-o", target + ".PNG"}).exitCode);
    EXPECT_EQ(m_scratch.read("thumb"), m_scratch.read("thumb.PNG"));
}

TEST_F(ThumbProgram, CreatesTheFolderOfTheFileThatIsNamed)
{
    writeDevice();
    const QByteArray png = m_scratch.path("new/folder/1.png");
    EXPECT_EQ(0, run({"thumb", "-d", device(), "1", "-o", png}).exitCode);
    EXPECT_EQ(QSize(30, 20), QImage::fromData(m_scratch.read("new/folder/1.png"), "PNG").size());
    EXPECT_EQ(0, run({"thumb", "-d", device(), "1", "-o", out() + '/'}).exitCode);
    EXPECT_EQ(m_jpeg, m_scratch.read("out/1-IMG_0001.jpg"));
}

TEST_F(ThumbProgram, LeavesNoFolderWithoutAThumbnail)
{
    writeTwoPhotos();
    for (const QByteArray &target : {m_scratch.path("new/folder/1.png"), m_scratch.path("new/")})
        EXPECT_EQ(1, run({"thumb", "-d", device(), "1", "-o", target}).exitCode);
    EXPECT_FALSE(m_scratch.exists("new"));
}

TEST_F(ThumbProgram, WritesOneToStandardOutput)
{
    writeDevice();
    const ProgramResult stored = run({"thumb", "-d", device(), "1", "-o", "-"});
    EXPECT_EQ(0, stored.exitCode);
    EXPECT_EQ(QByteArray(), stored.errors);
    EXPECT_EQ(m_jpeg, stored.output) << "nothing else is among it";
    const ProgramResult png = run({"thumb", "-d", device(), "1", "-o", "-", "--format", "png"});
    EXPECT_EQ(QSize(30, 20), QImage::fromData(png.output, "PNG").size());
    const ProgramResult none = run({"thumb", "-d", device(), "2", "-o", "-"});
    EXPECT_EQ(1, none.exitCode);
    EXPECT_EQ(QByteArray(), none.output);
    EXPECT_EQ("photolib: DCIM/100APPLE/IMG_0002.JPG: no thumbnail\n", none.errors);
}

TEST_F(ThumbProgramOnBadInput, WritesNoPictureToATerminal)
{
    writeDevice();
    Terminal terminal;
    if (!terminal.isOpen())
        GTEST_SKIP() << "there are no pseudo-terminals here";
    m_setup.outputFd = terminal.slave();
    expectFailure({"thumb", "-d", device(), "1", "-o", "-"},
                  "--output: a terminal cannot show pictures; redirect standard output, or name a "
                  "file (photolib thumb --help shows the usage)",
                  2);
}

TEST_F(ThumbProgramOnBadInput, WritesOneOnlyToStandardOutput)
{
    writeDevice();
    expectFailure({"thumb", "-d", device(), "1", "2", "-o", "-"},
                  "standard output takes one thumbnail; name a folder for 2", 2);
}

TEST_F(ThumbProgram, HasHelpThatFillsTheTerminal)
{
    Terminal terminal;
    if (!terminal.isOpen())
        GTEST_SKIP() << "there are no pseudo-terminals here";
    terminal.setColumns(400);
    m_setup.outputFd = terminal.slave();
    Program program(m_setup, {"thumb", "--help"});
    const QByteArray text(
        "Existing files are replaced. In a folder, thumbnails are named \"42-IMG_0041.jpg\", or "
        "\"42.bmp\" for a photo without a name.\r\n");
    EXPECT_TRUE(terminal.shownUntil("Examples:").contains(text));
    EXPECT_EQ(0, program.waitForExitCode());
}

TEST_F(ThumbProgram, ReportsAPhotoWithoutOneAndGoesOn)
{
    writeDevice();
    const ProgramResult result = run({"thumb", "-d", device(), "2", "1", "-o", out()});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("photolib: DCIM/100APPLE/IMG_0002.JPG: no thumbnail\n", result.errors);
    EXPECT_EQ("wrote 1 thumbnail to " + out() + ", 1 failed\n", result.output);
    EXPECT_EQ(QList<QByteArray>{out() + "/1-IMG_0001.jpg"}, m_scratch.everythingIn("out"));
}

TEST_F(ThumbProgram, WritesWhatIsNamedTwiceOnce)
{
    writeDevice();
    m_scratch.makeFolder("out");
    for (const QByteArray &target : {out(), m_scratch.path("thumb.jpg")}) {
        const ProgramResult result = run({"thumb", "-d", device(), "1", "1", "-o", target});
        EXPECT_EQ(0, result.exitCode);
        EXPECT_EQ("wrote 1 thumbnail to " + target + '\n', result.output);
    }
    EXPECT_EQ(QList<QByteArray>{out() + "/1-IMG_0001.jpg"}, m_scratch.everythingIn("out"));
    EXPECT_EQ(m_jpeg, m_scratch.read("thumb.jpg"));
}

TEST_F(ThumbProgram, TellsNothingInThePlugInsWords)
{
    writeTwoPhotos();
    const ProgramResult result = run({"thumb", "-d", device(), "1", "-o", out()});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("photolib: DCIM/100APPLE/IMG_0001.JPG: no thumbnail\n", result.errors);
    EXPECT_FALSE(m_scratch.exists("out"));
}

TEST_F(ThumbProgram, ReportsContentThatIsNoPicture)
{
    m_jpeg = "text";
    writeDevice();
    const ProgramResult result = run({"thumb", "-d", device(), "1", "-o", out()});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("photolib: DCIM/100APPLE/IMG_0001.JPG: a thumbnail that is neither JPEG nor BMP\n",
              result.errors);
    EXPECT_FALSE(m_scratch.exists("out"));
}

TEST_F(ThumbProgram, ConvertsNoDamagedPicture)
{
    m_jpeg.truncate(m_jpeg.size() / 2);
    writeDevice();
    EXPECT_EQ(0, run({"thumb", "-d", device(), "1", "-o", out()}).exitCode); // as it is
    const ProgramResult result = run({"thumb", "-d", device(), "1", "-o", out() + ".png"});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("photolib: DCIM/100APPLE/IMG_0001.JPG: a damaged thumbnail\n", result.errors);
    EXPECT_FALSE(m_scratch.exists("out.png"));
}

TEST_F(ThumbProgram, MakesNamesOfTheDeviceSafe)
{
    writeDevice("a\nb.c.jpg");
    m_scratch.makeFolder("out");
    EXPECT_EQ(0, run({"thumb", "-d", device(), "1", "-o", out()}).exitCode);
    EXPECT_EQ(QList<QByteArray>{out() + "/1-a_b.c.jpg"}, m_scratch.everythingIn("out"));
}

TEST_F(ThumbProgramOnBadInput, NamesWhereItCanNotWrite)
{
    writeDevice();
    expectFailure({"thumb", "-d", device(), "1", "-o", device() + "/a"},
                  device() + ": photolib never writes to the device; choose a folder outside it");
    m_scratch.write("file", "text");
    expectFailure({"thumb", "-d", device(), "1", "-o", m_scratch.path("file/a.jpg")},
                  m_scratch.path("file") + ": not a folder");
    expectFailure({"thumb", "-d", device(), "1", "2", "-o", m_scratch.path("file")},
                  m_scratch.path("file") + ": not a folder");
    expectFailure({"thumb", "-d", device(), "--all", m_scratch.path("file/sub")},
                  m_scratch.path("file") + ": not a folder");
}

TEST_F(ThumbProgramOnBadInput, GivesNoPictureTheNameOfAnotherFormat)
{
    writeDevice();
    for (const char *name : {"a.bmp", "a.GIF", "a.tiff", "a.heic"})
        expectFailure({"thumb", "-d", device(), "1", "-o", m_scratch.path(name)},
                      m_scratch.path(name) + ": the thumbnail is a JPEG picture");
    expectFailure({"thumb", "-d", device(), "1", "-o", m_scratch.path("a.jpg"), "--format", "png"},
                  m_scratch.path("a.jpg") + ": the thumbnail is a PNG picture");
    for (const char *name : {"a.JPEG", "a.1", "a", "gif"}) {
        EXPECT_EQ(0, run({"thumb", "-d", device(), "1", "-o", m_scratch.path(name)}).exitCode)
            << name;
        EXPECT_EQ(m_jpeg, m_scratch.read(name)) << name;
    }
}

TEST_F(ThumbProgramOnBadInput, WritesNothingIntoADevice)
{
    writeDevice();
    for (const QByteArray &path : {device(), device() + "/new/folder"})
        expectRefusalOfDevice({"thumb", "-d", device(), "--all", path}, path);
    expectRefusalOfDevice({"thumb", "-d", device(), "1", "-o", device() + "/a"}, device());
    expectRefusalOfDevice({"thumb", "-d", device(), "1", "-o", device() + "/new/a"},
                          device() + "/new");
}

TEST_F(ThumbProgramOnBadInput, ReplacesNoDeviceOrPipe)
{
    writeDevice();
    m_scratch.makePipe("pipe");
    m_scratch.makeFolder("folder");
    m_scratch.makePipe("folder/1-IMG_0001.jpg");
    m_scratch.makeLink("toPipe", "pipe");
    m_scratch.makeLink("toDevice", "/dev/null");
    for (const char *name : {"pipe", "toPipe", "toDevice"})
        expectFailure({"thumb", "-d", device(), "1", "-o", m_scratch.path(name)},
                      m_scratch.path(name) + ": not a regular file");
    expectFailure({"thumb", "-d", device(), "--all", m_scratch.path("folder")},
                  m_scratch.path("folder/1-IMG_0001.jpg: not a regular file"));
    struct stat status = {};
    ASSERT_EQ(0, ::stat(m_scratch.path("toPipe").constData(), &status));
    EXPECT_TRUE(S_ISFIFO(status.st_mode));
    ASSERT_EQ(0, ::stat(m_scratch.path("toDevice").constData(), &status));
    EXPECT_TRUE(S_ISCHR(status.st_mode));
}

TEST_F(ThumbProgramOnBadInput, LeavesALinkToStandardOutput)
{
    writeDevice();
    m_scratch.makeLink("stdout", "/proc/self/fd/1");
    m_setup.output = QString::fromUtf8(m_scratch.path("output")); // a regular file
    const ProgramResult result =
        run({"thumb", "-d", device(), "1", "-o", m_scratch.path("stdout")});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("photolib: " + m_scratch.path("stdout") + ": not a regular file\n", result.errors);
    struct stat status = {};
    ASSERT_EQ(0, ::lstat(m_scratch.path("stdout").constData(), &status));
    EXPECT_TRUE(S_ISLNK(status.st_mode));
    EXPECT_EQ(QByteArray(), m_scratch.read("output"));
}

TEST_F(ThumbProgramOnBadInput, WritesNothingWhenAnIdIsUnknown)
{
    writeDevice();
    expectFailure({"thumb", "-d", device(), "1", "9", "-o", out()},
                  "9: no photo with this id in " + device());
}

TEST_F(ThumbProgramOnBadInput, ExitsWithTwoForWrongUsage)
{
    const QByteArray hint = " (photolib thumb --help shows the usage)";
    expectFailure({"thumb"}, "name the ids, or use --all DIR for all photos and videos" + hint, 2);
    expectFailure({"thumb", "--all", ""}, "--all: name the folder to write to" + hint, 2);
    expectFailure({"thumb", "1"}, "name the file or folder to write to with -o" + hint, 2);
    expectFailure({"thumb", "1", "--all", "a"}, "--all: cannot be combined with ids" + hint, 2);
    const ProgramResult result = run({"thumb", "1", "-o", "a", "--format", "gif"});
    EXPECT_EQ(2, result.exitCode);
}

TEST_F(ThumbProgramOnASample, WritesAllAsTheDeviceHasThem)
{
    writeSampleTo(QString::fromUtf8(device()), sampleOptions(24));
    const ProgramResult result = run({"thumb", "-d", device(), "--all", out()});
    EXPECT_EQ(0, result.exitCode) << result.errors.constData();
    int jpegs = 0;
    int bmps = 0;
    for (const QByteArray &path : m_scratch.everythingIn("out")) {
        const QByteArray bytes = m_scratch.read("out" + path.mid(out().size()));
        EXPECT_FALSE(QImage::fromData(bytes).isNull()) << path.constData();
        jpegs += path.endsWith(".jpg") && bytes.startsWith("\xff\xd8");
        bmps += path.endsWith(".bmp") && bytes.startsWith("BM");
    }
    EXPECT_EQ("wrote " + QByteArray::number(jpegs + bmps) + " thumbnails to " + out() + '\n',
              result.output);
    EXPECT_GT(jpegs, 10);
    EXPECT_GT(bmps, 4);
    EXPECT_EQ(m_scratch.read("device/PhotoData/Thumbnails/V2/DCIM/100APPLE/IMG_0001.JPG/5005.JPG"),
              m_scratch.read("out/1-IMG_0001.jpg"));
}

// A device with thumbnails that take their time to convert.
class InterruptedThumb : public ThumbProgram
{
protected:
    static constexpr int count = 200;

    InterruptedThumb()
    {
        QImage image(2000, 1500, QImage::Format_RGB32);
        image.fill(Qt::red);
        const QByteArray jpeg = jpegOf(image);
        PhotosDatabase database;
        for (int i = 1; i <= count; ++i) {
            const QByteArray name = QByteArray::number(i) + ".jpg";
            database.rows.assets.push_back(photoRow(i, i));
            database.rows.assets.back().fileName = name.toStdString();
            m_scratch.write("device/PhotoData/Thumbnails/V2/DCIM/100APPLE/" + name + "/5005.JPG",
                            jpeg);
        }
        writeDatabase(m_scratch, "device", database);
    }
};

TEST_F(InterruptedThumb, LeavesWholeFilesAndNoEmptyFolder)
{
    for (const int signal : {SIGINT, SIGTERM}) {
        Terminal terminal;
        if (!terminal.isOpen())
            GTEST_SKIP() << "there are no pseudo-terminals here";
        m_setup.errorFd = terminal.slave();
        const QByteArray folder = "out" + QByteArray::number(signal);
        Program program(
            m_setup, {"thumb", "-d", device(), "--all", m_scratch.path(folder), "--format", "png"});
        terminal.shownUntil("Reading thumbnails [");
        ASSERT_EQ(0, ::kill(static_cast<pid_t>(program.processId()), signal));
        EXPECT_EQ(130, program.waitForExitCode());
        EXPECT_EQ(QByteArray(), program.readAllStandardOutput());
        const QList<QByteArray> files = m_scratch.everythingIn(folder);
        EXPECT_EQ(!files.isEmpty(), m_scratch.exists(folder));
        EXPECT_LT(files.size(), count);
        const QByteArray things = files.size() == 1 ? " thumbnail to " : " thumbnails to ";
        const QByteArray line = "photolib: interrupted: wrote " + QByteArray::number(files.size()) +
                                things + m_scratch.path(folder) + "\r\n";
        EXPECT_TRUE(terminal.shownUntil(line).endsWith("\r\x1b[K" + line));
        for (const QByteArray &path : files)
            EXPECT_FALSE(QImage(QString::fromUtf8(path)).isNull()) << path.constData();
    }
}

} // namespace
