#include "support/classic_fixture.h"

namespace {

class ProgramOnAKindOfDevice : public ClassicProgramTest
{
protected:
    void setVariable(const char *name, const QByteArray &value)
    {
        m_setup.environment.append(qMakePair(QString::fromLatin1(name), QString::fromUtf8(value)));
    }

    // What `info` says of the device's kind.
    QByteArray kind(const QList<QByteArray> &options)
    {
        const ProgramResult result = run(QList<QByteArray>{"info", "-d", device()} + options);
        EXPECT_EQ(0, result.exitCode) << result.errors.constData();
        for (const QByteArray &line : result.output.split('\n')) {
            if (line.startsWith("Kind:"))
                return line.mid(5).trimmed();
        }
        return "none";
    }
};

TEST_F(ProgramOnAKindOfDevice, ReadsTheDatabaseThatIsThere)
{
    writeThreePhotos();
    EXPECT_EQ("classic iPod (folder)", kind({}));
    EXPECT_EQ("classic iPod (folder)", kind({"--kind", "classic"}));
}

TEST_F(ProgramOnAKindOfDevice, ReadsTheIosDatabaseOfTwo)
{
    writeThreePhotos();
    writeTwoPhotos();
    EXPECT_EQ("iOS device (folder)", kind({}));
    EXPECT_EQ("iOS device (folder)", kind({"--kind", "ios"}));
}

TEST_F(ProgramOnAKindOfDevice, ReadsTheDatabaseThatIsAskedForOfTwo)
{
    writeThreePhotos();
    writeTwoPhotos();
    EXPECT_EQ("classic iPod (folder)", kind({"--kind", "classic"}));
}

TEST_F(ProgramOnAKindOfDevice, FindsADatabaseInOtherCase)
{
    m_scratch.write("device/PHOTOS/PHOTO DATABASE", photoDatabaseBytes(m_library));
    EXPECT_EQ("classic iPod (folder)", kind({}));
}

TEST_F(ProgramOnAKindOfDevice, NamesTheDatabasesThatAreMissing)
{
    m_scratch.makeFolder("device");
    const QByteArray line = device() + ": no photo database in it ";
    expectFailure({"info", "-d", device()},
                  line + "(PhotoData/Photos.sqlite or Photos/Photo Database)");
    expectFailure({"info", "-d", device(), "--kind", "ios"}, line + "(PhotoData/Photos.sqlite)");
    expectFailure({"info", "-d", device(), "--kind", "classic"}, line + "(Photos/Photo Database)");
}

TEST_F(ProgramOnAKindOfDevice, DoesNotTakeTheOneDatabaseForTheOther)
{
    writeThreePhotos();
    expectFailure({"info", "-d", device(), "--kind", "ios"},
                  device() + ": no photo database in it (PhotoData/Photos.sqlite)");
}

TEST_F(ProgramOnAKindOfDevice, RefusesAnotherKind)
{
    const ProgramResult result = run({"info", "-d", device(), "--kind", "nano"});
    EXPECT_EQ(2, result.exitCode);
    EXPECT_TRUE(result.errors.contains("nano")) << result.errors.constData();
}

TEST_F(ProgramOnAKindOfDevice, TellsWhatIsWrongWithADamagedDatabaseInOneLine)
{
    m_scratch.write("device/PHOTOS/Photo Database", "mhfd");
    expectFailure({"info", "-d", device()},
                  device() + "/PHOTOS/Photo Database: not readable as a photo library: "
                             "the file ends within the chunk at offset 0x0");
}

TEST_F(ProgramOnAKindOfDevice, NamesADatabaseThatIsALinkToAnotherPlace)
{
    m_scratch.write("elsewhere", photoDatabaseBytes(m_library));
    m_scratch.makeFolder("device/Photos");
    m_scratch.makeLink("device/Photos/Photo Database", m_scratch.path("elsewhere"));
    const QByteArray line =
        device() + "/Photos/Photo Database: a link that leads out of the device";
    expectFailure({"info", "-d", device()}, line);
    expectFailure({"info", "-d", device(), "--kind", "classic"}, line);
}

TEST_F(ProgramOnAKindOfDevice, TellsThatTheDriveCanNotBeNamed)
{
    writeThreePhotos();
    setVariable("TMPDIR", "/no/such/folder");
    expectFailure({"info", "-d", device()},
                  "cannot make a temporary folder in /no/such/folder: No such file or directory");
}

TEST_F(ProgramOnAKindOfDevice, LeavesNothingBesideTheDevice)
{
    writeThreePhotos();
    m_scratch.makeFolder("tmp");
    setVariable("TMPDIR", m_scratch.path("tmp"));
    const QList<QByteArray> before = m_scratch.everythingIn();
    EXPECT_EQ(0, run({"dump", "-d", device()}).exitCode);
    EXPECT_EQ(before, m_scratch.everythingIn());
}

TEST_F(ProgramOnAKindOfDevice, RemovesTheLinksThatAKilledProgramLeft)
{
    writeDatabase(m_scratch, "device", twoPhotos());
    m_scratch.makeFolder("tmp/photolib-drive-abcdef/iPod:/Photos");
    m_scratch.makeLink("tmp/photolib-drive-abcdef/iPod:/Photos/0", "/proc/self/fd/5");
    setVariable("TMPDIR", m_scratch.path("tmp"));
    EXPECT_EQ(0, run({"info", "-d", device()}).exitCode);
    EXPECT_EQ(QList<QByteArray>(), m_scratch.everythingIn("tmp"));
}

} // namespace
