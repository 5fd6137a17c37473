#include "support/export_fixture.h"
#include "support/json.h"
#include "support/sample_device.h"

#include <gtest/gtest.h>

#include <QSet>

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

using ExportProgram = ExportProgramTest;
using ExportProgramOnASample = ExportProgram;
using ExportProgramOnBadInput = ExportProgram;

TEST_F(ExportProgram, CopiesFilesWithTheirTimes)
{
    addPhoto("a.jpg", "picture");
    writeDevice();
    const QByteArray source = device() + "/DCIM/100APPLE/a.jpg";
    const timespec times[] = {{0, UTIME_NOW}, {1580466030, 123456789}};
    ASSERT_EQ(0, ::utimensat(AT_FDCWD, source.constData(), times, 0));
    const ProgramResult result = runExport();
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ("Copied 1 file (7 bytes), 0 unchanged\n", result.output);
    EXPECT_EQ(QByteArray(), result.errors);
    EXPECT_EQ("picture", m_scratch.read("out/a.jpg"));
    struct stat status = {};
    ASSERT_EQ(0, ::stat((out() + "/a.jpg").constData(), &status));
    EXPECT_EQ(1580466030, status.st_mtim.tv_sec);
    EXPECT_EQ(123456789, status.st_mtim.tv_nsec);
}

TEST_F(ExportProgram, CopiesWhatIsMissingOnlyInASecondRun)
{
    for (const char *folder : {"DCIM/100APPLE", "DCIM/101APPLE", "DCIM/102APPLE"})
        addPhoto("IMG_0001.JPG", folder, folder);
    addPhoto("img_0001.jpg", "other case");
    addPhoto("IMG_0001.JPG", "DCIM/100APPLE", "DCIM/103APPLE"); // equal to the first one
    writeDevice();
    EXPECT_EQ(0, runExport().exitCode);
    const QList<QByteArray> all = names();
    EXPECT_EQ((QList<QByteArray>{"IMG_0001 (2).JPG", "IMG_0001 (3).JPG", "IMG_0001 (5).JPG",
                                 "IMG_0001.JPG", "img_0001 (4).jpg"}),
              all);
    EXPECT_EQ("DCIM/102APPLE", m_scratch.read("out/IMG_0001 (3).JPG"));
    ASSERT_EQ(0, ::unlink((out() + "/IMG_0001 (3).JPG").constData()));
    const ProgramResult second = runExport();
    EXPECT_EQ(0, second.exitCode);
    EXPECT_EQ("Copied 1 file (13 bytes), 4 unchanged\n", second.output);
    EXPECT_EQ(all, names());
    EXPECT_EQ("DCIM/102APPLE", m_scratch.read("out/IMG_0001 (3).JPG"));
}

// Of what was copied, size and time tell enough. What has only a new time is compared.
TEST_F(ExportProgram, ReadsNothingAgainThatItsRecordKnows)
{
    addPhoto("a.jpg", "one");
    writeDevice();
    EXPECT_EQ(0, runExport().exitCode);
    const QByteArray source = device() + "/DCIM/100APPLE/a.jpg";
    struct stat before = {};
    ASSERT_EQ(0, ::stat(source.constData(), &before));
    m_scratch.write("device/DCIM/100APPLE/a.jpg", "new");
    const timespec times[] = {before.st_atim, before.st_mtim};
    ASSERT_EQ(0, ::utimensat(AT_FDCWD, source.constData(), times, 0));
    for (const char *option : {"--edited=both", "--verify"})
        EXPECT_EQ("Copied 0 files (0 bytes), 1 unchanged\n", runExport({option}).output);
    const timespec later[] = {before.st_atim, {before.st_mtim.tv_sec + 1, 0}};
    ASSERT_EQ(0, ::utimensat(AT_FDCWD, source.constData(), later, 0));
    EXPECT_EQ("Copied 1 file (3 bytes), 0 unchanged\n", runExport().output);
    EXPECT_EQ("one", m_scratch.read("out/a.jpg"));
    EXPECT_EQ("new", m_scratch.read("out/a (2).jpg"));
}

TEST_F(ExportProgram, NeverLeadsOutOfTheFolder)
{
    addPhoto("inside.jpg", "one");
    addPhoto("x", "two");
    addPhoto("y", "three");
    addPhoto("z", "four");
    m_scratch.write("device/a\nb.jpg", "five");
    m_scratch.write("x", "own");
    const char *const paths[] = {"../../x", "..", "/etc/passwd"};
    // The path leads to a file of the device all the same, so that the copy is made.
    m_database.rows.assets[1].directory = "DCIM/100APPLE/../..";
    for (int i = 0; i < 3; ++i)
        m_database.rows.assets[size_t(i) + 1].fileName = paths[i];
    AssetRow row = photoRow(5, 5);
    row.directory = "";
    row.fileName = "a\nb.jpg";
    m_database.rows.assets.push_back(row);
    writeDevice();
    const ProgramResult result = runExport();
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ((QList<QByteArray>{"a_b.jpg", "inside.jpg"}), names());
    EXPECT_EQ("own", m_scratch.read("x"));
    EXPECT_EQ("Copied 2 files (7 bytes), 0 unchanged, 1 not on the device, 2 failed (see the "
              "messages above)\n",
              result.output);
    EXPECT_EQ(2, result.errors.count('\n'));
}

TEST_F(ExportProgram, MakesANameOfTheDeviceSafe)
{
    // A folder on the device, so that names with a "/" lead to a file.
    const std::string longName = std::string(240, 'x') + ".jpg";
    addPhoto("sub/../../z.jpg", "one", "DCIM/100APPLE");
    addPhoto(longName, "two");
    addPhoto(".hidden.jpg", "three");
    m_database.rows.assets[0].fileName = "sub/z.jpg";
    m_scratch.write("device/DCIM/100APPLE/sub/z.jpg", "one");
    writeDevice();
    const ProgramResult result = runExport();
    EXPECT_EQ(0, result.exitCode) << result.errors.constData();
    EXPECT_EQ((QList<QByteArray>{"_hidden.jpg", "sub_z.jpg", QByteArray(240, 'x') + ".jpg"}),
              names());
}

TEST_F(ExportProgram, FindsTheCopiesOfNamesThatOtherDisksRefuse)
{
    for (const char *name : {"a:b.jpg", "a?b.jpg", "...JPG"})
        addPhoto(name, name);
    writeDevice();
    EXPECT_EQ(0, runExport().exitCode);
    EXPECT_EQ((QList<QByteArray>{"__.JPG", "a_b (2).jpg", "a_b.jpg"}), names());
    EXPECT_EQ("Copied 0 files (0 bytes), 3 unchanged\n", runExport().output);
}

TEST_F(ExportProgram, CountsWhatIsNotOnTheDeviceWithoutFailing)
{
    writeTwoPhotos();
    const ProgramResult result = runExport();
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ(QByteArray(), result.errors);
    EXPECT_EQ("Copied 1 file (7 bytes), 0 unchanged, 1 not on the device\n", result.output);
    EXPECT_EQ(QList<QByteArray>{"IMG_0001.JPG"}, names());
}

TEST_F(ExportProgram, ListsWhatIsNotOnTheDeviceWhenItIsVerbose)
{
    writeTwoPhotos();
    const ProgramResult result = runExport({"-v"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_TRUE(
        result.errors.contains("\nphotolib: DCIM/100APPLE/IMG_0002.JPG: missing on the device\n"))
        << result.errors.constData();
    EXPECT_EQ(1, result.errors.count(": missing on the device\n"));
}

TEST_F(ExportProgram, ReportsWhatCanNotBeRead)
{
    if (!canRespectPermissions())
        GTEST_SKIP() << "the superuser can read everything here";
    m_setup.respectsPermissions = true;
    addPhoto("a.jpg", "one");
    addPhoto("b.jpg", "two");
    writeDevice();
    ASSERT_EQ(0, ::chmod((device() + "/DCIM/100APPLE/a.jpg").constData(), 0));
    const ProgramResult result = runExport();
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("photolib: DCIM/100APPLE/a.jpg: Permission denied\n", result.errors);
    EXPECT_EQ(QList<QByteArray>{"b.jpg"}, names());
}

TEST_F(ExportProgram, CopiesNoFolderLinkOrPipe)
{
    m_scratch.write("secret", "secret");
    addPhoto("a.jpg", "one");
    for (const char *name : {"folder", "link", "pipe"}) {
        AssetRow row = photoRow(int(m_database.rows.assets.size()) + 1, 9);
        row.fileName = name;
        m_database.rows.assets.push_back(row);
    }
    m_scratch.makeFolder("device/DCIM/100APPLE/folder");
    m_scratch.makeLink("device/DCIM/100APPLE/link", m_scratch.path("secret"));
    m_scratch.makePipe("device/DCIM/100APPLE/pipe");
    writeDevice();
    const ProgramResult result = runExport();
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ(3, result.errors.count('\n')) << result.errors.constData();
    EXPECT_EQ(QList<QByteArray>{"a.jpg"}, names());
}

TEST_F(ExportProgram, CopiesNamesBeyondAscii)
{
    addPhoto("grün 日本.jpg", "picture");
    writeDevice();
    EXPECT_EQ(0, runExport().exitCode);
    EXPECT_EQ(QList<QByteArray>{"grün 日本.jpg"}, names());
}

TEST_F(ExportProgram, CopiesTheIdsThatAreNamedOnce)
{
    for (const char *name : {"a.jpg", "b.jpg", "c.jpg"})
        addPhoto(name, name);
    writeDevice();
    EXPECT_EQ(0, runExport({"3", "1", "3"}).exitCode);
    EXPECT_EQ((QList<QByteArray>{"a.jpg", "c.jpg"}), names());
}

TEST_F(ExportProgram, CopiesAnAlbum)
{
    for (const char *name : {"a.jpg", "b.jpg", "c.jpg"})
        addPhoto(name, name);
    m_database.rows.albums = {albumRow(7)};
    m_database.join().add(7, 2);
    writeDevice();
    EXPECT_EQ(0, runExport({"--album", "7"}).exitCode);
    EXPECT_EQ(QList<QByteArray>{"b.jpg"}, names());
}

TEST_F(ExportProgram, CopiesWhatAnIncompleteRunLeft)
{
    addPhoto("a.jpg", "one");
    addPhoto("b.jpg", QByteArray(100000, 'x'));
    addPhoto("c.jpg", "three");
    writeDevice();
    m_setup.largestFile = quint64(m_scratch.size("device/PhotoData/Photos.sqlite")) + 1000;
    ASSERT_LT(m_setup.largestFile, 100000U);
    const ProgramResult first = runExport();
    EXPECT_EQ(1, first.exitCode);
    EXPECT_EQ("photolib: DCIM/100APPLE/b.jpg: File too large\n", first.errors);
    EXPECT_EQ((QList<QByteArray>{"a.jpg", "c.jpg"}), names());
    m_setup.largestFile = ProgramSetup().largestFile;
    EXPECT_EQ("Copied 1 file (97.7 KiB), 2 unchanged\n", runExport().output);
}

// As many a disk has none that is mounted by another program.
TEST_F(ExportProgram, CopiesToADiskWithoutLinks)
{
    m_setup.lacksLinks = true;
    addPhoto("a.jpg", "one");
    addPhoto("b.jpg", "two");
    writeDevice();
    m_scratch.write("out/a.jpg", "my own");
    const ProgramResult first = runExport();
    if (first.exitCode == 77)
        GTEST_SKIP() << "no system calls can be taken away here";
    EXPECT_EQ(0, first.exitCode) << first.errors.constData();
    EXPECT_EQ("Copied 2 files (6 bytes), 0 unchanged\n", first.output);
    EXPECT_EQ((QList<QByteArray>{"a (2).jpg", "a.jpg", "b.jpg"}), names());
    EXPECT_EQ("my own", m_scratch.read("out/a.jpg"));
    EXPECT_EQ("one", m_scratch.read("out/a (2).jpg"));
    EXPECT_EQ("Copied 0 files (0 bytes), 2 unchanged\n", runExport().output);
}

TEST_F(ExportProgram, SaysNothingWhenQuiet)
{
    addPhoto("a.jpg", "one");
    writeDevice();
    const ProgramResult result = runExport({"--quiet"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ(QByteArray(), result.output + result.errors);
}

TEST_F(ExportProgramOnBadInput, StopsWhereItMayNotWrite)
{
    if (!canRespectPermissions())
        GTEST_SKIP() << "the superuser can write everywhere here";
    m_setup.respectsPermissions = true;
    addPhoto("a.jpg", "one");
    addPhoto("b.jpg", "two");
    writeDevice();
    m_scratch.makeFolder("out");
    ASSERT_EQ(0, ::chmod(out().constData(), 0555));
    const ProgramResult result = runExport();
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("photolib: " + out() + ": Permission denied\n", result.errors);
    EXPECT_EQ(QByteArray(), result.output);
    EXPECT_EQ(QList<QByteArray>(), m_scratch.everythingIn("out"));
}

TEST_F(ExportProgramOnBadInput, GoesOnWhereItMayNotWriteToOneFolder)
{
    if (!canRespectPermissions())
        GTEST_SKIP() << "the superuser can write everywhere here";
    m_setup.respectsPermissions = true;
    for (const char *name : {"a.jpg", "b.jpg", "c.jpg"})
        addPhoto(name, name);
    writeDevice();
    for (const char *folder : {"out/a", "out/b"})
        m_scratch.makeFolder(folder);
    ASSERT_EQ(0, ::chmod(m_scratch.path("out/a").constData(), 0555));
    const ProgramResult result = runExport({"--name", "{stem}/{stem}/{name}"});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("photolib: DCIM/100APPLE/a.jpg: a/a/a.jpg: Permission denied\n", result.errors);
    EXPECT_TRUE(result.output.startsWith("Copied 2 files (10 bytes), 0 unchanged, 1 failed"));
    EXPECT_EQ("b.jpg", m_scratch.read("out/b/b/b.jpg"));
    EXPECT_EQ("c.jpg", m_scratch.read("out/c/c/c.jpg"));
}

// A small disk that only the program sees.
class ExportToASmallDisk : public ExportProgramTest
{
protected:
    /// Runs a script with the disk mounted at "$2", which exports with "$0" from "$1". The exit
    /// code is 77 where no disk can be mounted.
    ProgramResult runOnDisk(const QByteArray &size, const QByteArray &script)
    {
        m_scratch.makeFolder("out");
        const QByteArray mount =
            "mount -t tmpfs -o size=" + size + " tmpfs \"$2\" 2>/dev/null || exit 77\n";
        m_setup.program = QStringLiteral("unshare");
        ProgramResult result =
            run({"-Urm", "sh", "-c", mount + script, PHOTOLIB_PROGRAM, device(), out()});
        if (result.exitCode == -1 || result.errors.startsWith("unshare"))
            result.exitCode = 77;
        return result;
    }
};

TEST_F(ExportToASmallDisk, IsRefusedBeforeTheFirstByte)
{
    addPhoto("a.jpg", "one");
    addPhoto("b.jpg", QByteArray(300000, 'x'));
    writeDevice();
    const ProgramResult result =
        runOnDisk("100k", "\"$0\" export -d \"$1\" \"$2\"; code=$?; ls -A \"$2\"; exit $code");
    if (result.exitCode == 77)
        GTEST_SKIP() << "no disk can be mounted here";
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("photolib: " + out() +
                  ": No space left on device (the files take 293.0 KiB, and 100.0 KiB are free)\n",
              result.errors);
    EXPECT_EQ(QByteArray(), result.output);
}

// Many small files take more room than they have bytes.
TEST_F(ExportToASmallDisk, StopsWhenItIsFullAndGoesOnWhenItIsNot)
{
    constexpr int photos = 200;
    for (int i = 0; i < photos; ++i)
        addPhoto("IMG_" + std::to_string(i) + ".jpg", QByteArray::number(i));
    writeDevice();
    const ProgramResult result = runOnDisk(
        "600k", "\"$0\" export -d \"$1\" \"$2\"; echo $?\n"
                "for file in \"$2\"/*; do cmp \"$file\" \"$1/DCIM/100APPLE/${file##*/}\"; done\n"
                "ls \"$2\"/.photolib | grep -v '^export.sqlite'\n"
                "mount -o remount,size=9m \"$2\"\n"
                "\"$0\" export -q -d \"$1\" \"$2\"; code=$?; ls \"$2\" | wc -l\n"
                "diff -r -x .photolib \"$1/DCIM/100APPLE\" \"$2\"; exit $code");
    if (result.exitCode == 77)
        GTEST_SKIP() << "no disk can be mounted here";
    EXPECT_EQ(0, result.exitCode);
    EXPECT_TRUE(result.errors.contains("No space left on device; copied ") ||
                result.errors.contains("database or disk is full"))
        << result.errors.constData();
    EXPECT_EQ(1, result.errors.count('\n')) << result.errors.constData();
    EXPECT_EQ("1\n200\n", result.output);
}

TEST_F(ExportProgramOnBadInput, NamesADeviceInPlaceOfTheFolder)
{
    writeTwoPhotos();
    writeDatabase(m_scratch, "other", twoPhotos());
    for (const char *other : {"other", "new/../other"})
        expectFailure({"export", "-d", device(), m_scratch.path(other)},
                      m_scratch.path(other) + ": a device, not a folder to copy to");
    // The last one would be made on the way through a new folder that is none of it.
    for (const QByteArray &path : {device(), device() + "/new/folder", device() + "/DCIM/new",
                                   out() + "/new/../../device/DCIM/new"})
        expectRefusalOfDevice({"export", "-d", device(), path}, path);
}

TEST_F(ExportProgramOnBadInput, NamesAFileInPlaceOfTheFolder)
{
    writeTwoPhotos();
    m_scratch.write("out", "text");
    expectFailure({"export", "-d", device(), out()}, out() + ": not a folder");
}

TEST_F(ExportProgramOnBadInput, NamesAnUnknownId)
{
    writeTwoPhotos();
    expectFailure({"export", "-d", device(), "1", "9", out()},
                  "9: no photo with this id in " + device());
    expectFailure({"export", "-d", device(), "--album", "9", out()},
                  "9: no album with this id in " + device());
}

TEST_F(ExportProgramOnBadInput, ExitsWithTwoForWrongUsage)
{
    const QByteArray hint = " (photolib export --help shows the usage)";
    expectFailure({"export"}, "DIR is required" + hint, 2);
    expectFailure({"export", ""}, "DIR: the name is empty" + hint, 2);
    expectFailure({"export", "42"},
                  "no folder to copy to was named; if 42 is the folder, write ./42" + hint, 2);
    expectFailure({"export", "a", "b", "c", "d"}, "a: not an id; name the device with -d" + hint,
                  2);
    for (const QByteArray word : {"3-9", "-"})
        expectFailure({"export", "42", word},
                      "no folder to copy to was named; if " + word + " is the folder, write ./" +
                          word + hint,
                      2);
}

TEST_F(ExportProgramOnASample, CopiesEveryFileAndLeavesTheDeviceAlone)
{
    writeSampleTo(QString::fromUtf8(device()), sampleOptions(30));
    const QList<QByteArray> before = m_scratch.everythingIn("device");
    const Json plan = Json::parse(runExport({"--dry-run", "--json"}).output);
    const ProgramResult result = runExport();
    EXPECT_EQ(0, result.exitCode) << result.errors.constData();
    EXPECT_TRUE(result.output.endsWith(", 0 unchanged, 1 not on the device\n"))
        << result.output.constData();
    EXPECT_EQ(before, m_scratch.everythingIn("device"));
    QList<QByteArray> planned;
    for (const Json &file : plan["files"].elements()) {
        if (file["action"].get<std::string>() != "copy")
            continue;
        planned.append(QByteArray::fromStdString(file["path"].get<std::string>()));
        const QByteArray source = QByteArray::fromStdString(file["source"].get<std::string>());
        EXPECT_EQ(m_scratch.read("device/" + source), m_scratch.read("out/" + planned.last()))
            << planned.last().constData();
    }
    std::sort(planned.begin(), planned.end());
    EXPECT_EQ(planned, names());
    EXPECT_GT(planned.size(), 20);
}

// Whatever the library makes of it.
TEST_F(ExportProgramOnASample, LeavesNoPictureOfTheDeviceBehindWhenAllAreWanted)
{
    writeSampleTo(QString::fromUtf8(device()), sampleOptions(30));
    EXPECT_EQ(0, runExport({"--all", "--shared", "--recipe"}).exitCode);
    QSet<QByteArray> saved;
    for (const QByteArray &name : names())
        saved.insert(m_scratch.read("out/" + name));
    int files = 0;
    for (const QByteArray &path : m_scratch.everythingIn("device/DCIM")) {
        if (isFolder(path))
            continue;
        ++files;
        EXPECT_TRUE(saved.contains(m_scratch.read(path.mid(m_scratch.root().size() + 1))))
            << path.constData();
    }
    EXPECT_GT(files, 20);
}

TEST_F(ExportProgramOnASample, CopiesEveryFileOnceInTwoRunsAtATime)
{
    writeSampleTo(QString::fromUtf8(device()), sampleOptions(30));
    EXPECT_EQ(0, run({"export", "-d", device(), m_scratch.path("alone")}).exitCode);
    const auto arguments = [this](const char *workFolder) {
        return QList<QByteArray>{"export", "-d",         device(),
                                 out(),    "--work-dir", m_scratch.path(workFolder)};
    };
    Program first(m_setup, arguments("work1"));
    Program second(m_setup, arguments("work2"));
    EXPECT_EQ(0, first.waitForExitCode());
    EXPECT_EQ(0, second.waitForExitCode());
    const QList<QByteArray> outputs = {first.readAllStandardOutput(),
                                       second.readAllStandardOutput()};
    EXPECT_TRUE(outputs[0].startsWith("Copied 0 files") || outputs[1].startsWith("Copied 0 files"));
    EXPECT_EQ(exportedFiles(m_scratch, "alone"), names());
}

} // namespace
