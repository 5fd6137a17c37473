#include "support/json.h"
#include "support/program_fixture.h"
#include "support/terminal.h"

namespace {

using ProgramSample = ProgramTest;

TEST_F(ProgramSample, ReportsTheClassicIpodThatItWrote)
{
    const QByteArray ipod = m_scratch.path("ipod");
    const ProgramResult result = run({"sample", "--classic", ipod, "--assets", "2"});
    EXPECT_EQ(0, result.exitCode) << result.errors.constData();
    EXPECT_EQ("Wrote a sample classic iPod with 2 photos to " + ipod + '\n', result.output);
    const ProgramResult info = run({"info", "-d", ipod});
    EXPECT_EQ(0, info.exitCode) << info.errors.constData();
    EXPECT_TRUE(info.output.contains("classic iPod")) << info.output.constData();
}

TEST_F(ProgramSample, CountsOneAsOne)
{
    const QByteArray ipod = m_scratch.path("ipod");
    const QByteArray phone = m_scratch.path("phone");
    EXPECT_EQ("Wrote a sample classic iPod with 1 photo to " + ipod + '\n',
              run({"sample", "--classic", ipod, "--assets", "1"}).output);
    EXPECT_EQ("Wrote a sample device with 1 asset to " + phone + '\n',
              run({"sample", phone, "--assets", "1"}).output);
}

TEST_F(ProgramSample, SaysWhyAClassicIpodCanNotBeWritten)
{
    m_scratch.write("ipod/notes.txt", "kept");
    expectFailure({"sample", "--classic", m_scratch.path("ipod")}, "cannot write the sample to " +
                                                                       m_scratch.path("ipod") +
                                                                       ": the folder is not empty");
}

TEST_F(ProgramSample, HasNoSchemaKeywordsOrPeopleOnAClassicIpod)
{
    const QByteArray hint = " (photolib sample --help shows the usage)";
    for (const QByteArray option : {"--schema", "--keywords", "--people"})
        expectFailure({"sample", m_scratch.path("ipod"), "--classic", option, "13"},
                      "--classic excludes " + option + hint, 2);
}

TEST_F(ProgramSample, NamesTheSchemasThatThereAre)
{
    expectFailure({"sample", m_scratch.path("phone"), "--schema", "15"},
                  "--schema: 15 not in {13,14,16,18,26,early} "
                  "(photolib sample --help shows the usage)",
                  2);
}

TEST_F(ProgramSample, WritesTheSchema13UnlessAnotherIsAskedFor)
{
    const char *const database = "PhotoData/Photos.sqlite";
    const auto written = [&](const QByteArray &folder, const QList<QByteArray> &schema) {
        const QByteArray phone = m_scratch.path(folder);
        EXPECT_EQ(0, run(QList<QByteArray>{"sample", phone, "--assets", "3"} + schema).exitCode);
        return m_scratch.read(folder + '/' + database);
    };
    const QByteArray usual = written("usual", {});
    EXPECT_EQ(usual, written("late", {"--schema", "late"}));
    EXPECT_TRUE(usual == written("13", {"--schema", "13"}));
    EXPECT_TRUE(usual.contains("CREATE TABLE ZGENERICASSET"));
    for (const QByteArray schema : {"14", "16", "18", "26"}) {
        const QByteArray newer = written(schema, {"--schema", schema});
        EXPECT_TRUE(newer.contains("CREATE TABLE ZASSET ")) << schema.constData();
        EXPECT_FALSE(newer.contains("ZGENERICASSET")) << schema.constData();
    }
}

TEST_F(ProgramSample, HasAsManyKeywordsAndPeopleAsItWasAskedFor)
{
    const QByteArray phone = m_scratch.path("phone");
    EXPECT_EQ(0, run({"sample", phone, "--assets", "3", "--keywords", "30", "--people", "20",
                      "--no-pictures"})
                     .exitCode);
    const QByteArray database = m_scratch.read("phone/PhotoData/Photos.sqlite");
    EXPECT_TRUE(database.contains("Birthday 2"));
    EXPECT_FALSE(database.contains("Snow 2"));
    EXPECT_TRUE(database.contains("Maria Nowak"));
    EXPECT_FALSE(database.contains("Tomás Tanaka"));
}

// How many photos and videos `info` counts, with those in the trash.
int listedIn(const QByteArray &info)
{
    int listed = 0;
    for (const QByteArray &line : info.split('\n')) {
        const QByteArray label = line.left(line.indexOf(':'));
        if (label == "Photos" || label == "Videos" || label == "In the trash")
            listed += line.mid(label.size() + 1).trimmed().toInt();
    }
    return listed;
}

TEST_F(ProgramSample, HasAsManyPhotosAndVideosAsItWasAskedFor)
{
    for (const QByteArray assets : {"0", "1", "17", "18", "19", "20", "37", "60"}) {
        for (const char *schema : {"early", "late"}) {
            const QByteArray phone = m_scratch.path("phone" + assets + schema);
            EXPECT_EQ(
                0, run({"sample", phone, "--assets", assets, "--schema", schema, "--no-pictures"})
                       .exitCode);
            // As the plug-in counts, which leaves some rows out of old libraries.
            const Json dump = Json::parse(run({"dump", "-d", phone}).output);
            EXPECT_EQ(assets.toInt(), dump["photoCount"].get<int>()) << schema;
        }
    }
}

TEST_F(ProgramSample, TakesANameInAnyBytes)
{
    m_setup.program = QStringLiteral("sh");
    const QByteArray folder = m_scratch.path("deep/caf");
    for (const char *kind : {"", "--classic"}) {
        const QByteArray script = "name=$(printf '%s\\351' " + folder + kind +
                                  ") && \"$0\" sample \"$name\" --assets 3 " + kind +
                                  " && \"$0\" info -d \"$name\"";
        const ProgramResult result = run({"-c", script, PHOTOLIB_PROGRAM});
        EXPECT_EQ(0, result.exitCode) << result.errors.constData();
        EXPECT_EQ(QByteArray(), result.errors);
        EXPECT_EQ(3, listedIn(result.output)) << result.output.constData();
    }
}

TEST_F(ProgramSample, NamesAFolderInOtherBytesThatIsNotEmpty)
{
    m_setup.program = QStringLiteral("sh");
    m_scratch.makeFolder("deep");
    const QByteArray script = "name=$(printf '%s\\351' " + m_scratch.path("deep/caf") +
                              ") && mkdir -p \"$name/in it\" && \"$0\" sample \"$name\"";
    const ProgramResult result = run({"-c", script, PHOTOLIB_PROGRAM});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("photolib: cannot write the sample to " + m_scratch.path("deep/caf\\xe9") +
                  ": the folder is not empty\n",
              result.errors);
}

TEST_F(ProgramSample, ShowsHowFarItIsOnATerminal)
{
    Terminal terminal;
    if (!terminal.isOpen())
        GTEST_SKIP() << "there are no pseudo-terminals here";
    m_setup.errorFd = terminal.slave();
    Program program(m_setup, {"sample", m_scratch.path("phone"), "--assets", "40"});
    EXPECT_TRUE(terminal.shownUntil(" of 40").contains("Writing the sample ["));
    EXPECT_EQ(0, program.waitForExitCode());
}

} // namespace
