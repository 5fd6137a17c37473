#include "support/export_fixture.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

constexpr int taken = 585393409; // 2019-07-21T09:16:49Z, seconds since 2001

class NamesOfExports : public ExportProgramTest
{
protected:
    /// Two photos of one day, of which the second is in an album, and a video of another year.
    void writeThree()
    {
        m_database.schema = Schema::zasset();
        addPhoto("IMG_0001.JPG", "one").dateCreated = taken;
        addPhoto("IMG_0001.JPG", "two", "DCIM/101APPLE").dateCreated = taken;
        addPhoto("IMG_0002.MOV", "three").dateCreated = taken + 366 * 86400;
        m_database.rows.assets[2].kind = 1;
        m_database.rows.albums = {albumRow(7)};
        m_database.rows.albums[0].title = "Sea: day/night";
        m_database.join().add(7, 2);
        writeDevice();
    }

    QList<QByteArray> exported(const QByteArray &nameTemplate)
    {
        std::filesystem::remove_all(out().toStdString());
        const ProgramResult result = runExport({"--name", nameTemplate});
        EXPECT_EQ(0, result.exitCode) << result.errors.constData();
        return names();
    }
};

TEST_F(NamesOfExports, AreOfYearAndMonthWithTheTimeWhenThePhotoWasTaken)
{
    writeThree();
    const ProgramResult result = runExport();
    EXPECT_EQ(0, result.exitCode) << result.errors.constData();
    EXPECT_EQ((QList<QByteArray>{"2019/07/IMG_0001 (2).JPG", "2019/07/IMG_0001.JPG",
                                 "2020/07/IMG_0002.MOV"}),
              names());
    constexpr qint64 secondsTo2001 = 978307200;
    EXPECT_EQ((taken + secondsTo2001) * 1000000000, changeOf(out() + "/2019/07/IMG_0001.JPG"));
}

TEST_F(NamesOfExports, FollowTheTemplate)
{
    writeThree();
    EXPECT_EQ((QList<QByteArray>{"IMG_0001 (2).JPG", "IMG_0001.JPG", "IMG_0002.MOV"}),
              exported("{name}"));
    EXPECT_EQ((QList<QByteArray>{"1-IMG_0001.JPG", "2-IMG_0001.JPG", "3-IMG_0002.MOV"}),
              exported("{id}-{stem}{ext}"));
    EXPECT_EQ((QList<QByteArray>{"photo/2019-07-21 (2).JPG", "photo/2019-07-21.JPG",
                                 "video/2020-07-21.MOV"}),
              exported("{kind}/{taken}{ext}"));
    EXPECT_EQ((QList<QByteArray>{"Sea_ day_night/IMG_0001.JPG", "device/IMG_0001.JPG",
                                 "device/IMG_0002.MOV"}),
              exported("{album|device}/{originalName}"));
    EXPECT_EQ((QList<QByteArray>{"none/091649 (2).JPG", "none/091649.JPG", "none/091649.MOV"}),
              exported("{folder|none}/{taken:%H%M%S}{ext}"));
    EXPECT_EQ((QList<QByteArray>{"01000000-0000-0000-0000-000000000000.JPG",
                                 "02000000-0000-0000-0000-000000000000.JPG",
                                 "03000000-0000-0000-0000-000000000000.MOV"}),
              exported("{uuid}{ext}"));
}

// Also where somebody's file has what would be the name with one.
TEST_F(NamesOfExports, HaveNoExtensionWhereTheTemplateHasNone)
{
    addPhoto("a.jpg", "one");
    m_scratch.write(folder + QByteArray("a.MOV"), "film");
    writeDevice();
    m_scratch.write("out/1.jpg", "own");
    EXPECT_EQ("Copied 2 files (7 bytes), 0 unchanged\n", runExport({"--name", "{id}"}).output);
    EXPECT_EQ((QList<QByteArray>{"1", "1.MOV", "1.jpg"}), names());
    EXPECT_EQ("one", m_scratch.read("out/1"));
    EXPECT_EQ("own", m_scratch.read("out/1.jpg"));
    EXPECT_EQ("Copied 0 files (0 bytes), 2 unchanged\n", runExport({"--name", "{id}"}).output);
}

TEST_F(NamesOfExports, LeaveOutFoldersWithoutAName)
{
    addPhoto("a.jpg", "one");
    writeDevice();
    EXPECT_EQ(QList<QByteArray>{"a.jpg"}, exported("{album}/{taken:%Y}/{name}"));
    EXPECT_EQ(QList<QByteArray>{"undated/a.jpg"}, exported("{taken:%Y|undated}/{name}"));
}

// What was added since is not to take the name of what was there.
TEST_F(NamesOfExports, StayWhatTheyAreOverRuns)
{
    for (const char *directory : {"DCIM/103APPLE", "DCIM/102APPLE", "DCIM/101APPLE"})
        addPhoto("IMG_0001.JPG", directory, directory);
    writeDevice();
    EXPECT_EQ(0, runExport({"2"}).exitCode);
    EXPECT_EQ(0, runExport({"3"}).exitCode);
    EXPECT_EQ(0, runExport().exitCode);
    EXPECT_EQ("DCIM/102APPLE", m_scratch.read("out/IMG_0001.JPG"));
    EXPECT_EQ("DCIM/101APPLE", m_scratch.read("out/IMG_0001 (2).JPG"));
    EXPECT_EQ("DCIM/103APPLE", m_scratch.read("out/IMG_0001 (3).JPG"));
    for (const char *gone : {"out/IMG_0001.JPG", "out/IMG_0001 (2).JPG"})
        ASSERT_EQ(0, ::unlink(m_scratch.path(gone).constData()));
    EXPECT_EQ("Copied 2 files (26 bytes), 1 unchanged\n", runExport({"--reverse"}).output);
    EXPECT_EQ("DCIM/102APPLE", m_scratch.read("out/IMG_0001.JPG"));
    EXPECT_EQ("DCIM/101APPLE", m_scratch.read("out/IMG_0001 (2).JPG"));
}

// Nothing is copied twice for it.
TEST_F(NamesOfExports, StayWhatTheyAreUnderAnotherTemplate)
{
    addPhoto("a.jpg", "one");
    writeDevice();
    EXPECT_EQ(0, runExport().exitCode);
    EXPECT_EQ("Copied 0 files (0 bytes), 1 unchanged\n", runExport({"--name", "{id}{ext}"}).output);
    EXPECT_EQ(QList<QByteArray>{"a.jpg"}, names());
}

// 256 bytes of two-byte letters: too long by one, and no half letter is left.
TEST_F(NamesOfExports, AreCutAtAWholeCharacterAndSaySo)
{
    addPhoto("a.jpg", "one");
    writeDevice();
    const QByteArray letters = QByteArray("\xc3\xa9").repeated(126);
    const ProgramResult result = runExport({"--name", letters + "{ext}"});
    EXPECT_EQ(0, result.exitCode);
    const QByteArray cut = QByteArray("\xc3\xa9").repeated(125);
    EXPECT_EQ(QList<QByteArray>{cut + ".jpg"}, names());
    EXPECT_EQ("photolib: " + cut + ": its name is too long for the disk, and was cut\n",
              result.errors);
    EXPECT_EQ("Copied 1 file (3 bytes), 0 unchanged\n", result.output);
    EXPECT_EQ("Copied 0 files (0 bytes), 1 unchanged\n",
              runExport({"--name", letters + "{ext}"}).output);
}

struct WrongTemplate {
    const char *name;
    const char *text;
    const char *cause;
};

class WrongNames : public NamesOfExports, public testing::WithParamInterface<WrongTemplate>
{
};

TEST_P(WrongNames, AreWrongUsageAndWriteNothing)
{
    addPhoto("a.jpg", "one");
    writeDevice();
    const QByteArray text = GetParam().text;
    expectFailure({"export", "-d", device(), "--name", text, out()},
                  "--name: \"" + text + "\": " + GetParam().cause +
                      " (photolib export --help shows the usage)",
                  2);
    EXPECT_FALSE(m_scratch.exists("out"));
}

const WrongTemplate wrongTemplates[] = {
    {"UnknownField", "{takn:%Y}/{name}",
     "there is no field \"takn\"; did you mean taken? (fields: taken, modified, added, name, stem, "
     "ext, originalName, originalStem, id, uuid, kind, album, folder, device)"},
    {"Out", "../{name}", "no folder or file can have the name \"..\""},
    {"OutOnTheWay", "{album}/../{name}", "no folder or file can have the name \"..\""},
    {"OutInPlaceOfAField", "{album|..}/{name}", "no folder or file can have the name \"..\""},
    {"FromTheRoot", "/tmp/{name}", "the path begins with \"/\", and is to be one in the folder"},
    {"InTheRecord", ".photolib/{name}", "the program keeps its record in \".photolib\""},
    {"Empty", "", "it is empty"},
    {"OpenBrace", "{name", "a \"{\" has no \"}\"; \"{{\" stands for one in a name"},
};

INSTANTIATE_TEST_SUITE_P(EachTemplate, WrongNames, testing::ValuesIn(wrongTemplates),
                         rowName<WrongTemplate>);

} // namespace
