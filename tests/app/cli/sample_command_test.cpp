#include "support/program_fixture.h"

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

TEST_F(ProgramSample, HasNoSchemaOfAClassicIpod)
{
    expectFailure({"sample", m_scratch.path("ipod"), "--classic", "--schema", "early"},
                  "--classic excludes --schema (photolib sample --help shows the usage)", 2);
}

} // namespace
