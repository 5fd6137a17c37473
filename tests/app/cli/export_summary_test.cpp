#include "support/program_fixture.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

// Exports with a report from a device of which something cannot be read.
class SummaryOfAFailure : public ProgramTest
{
protected:
    SummaryOfAFailure()
    {
        m_setup.respectsPermissions = true;
        writeTwoPhotos();
        m_scratch.makeFolder("device/PhotoData/Mutations");
    }
    ~SummaryOfAFailure() override { setMode(0700); }

    void SetUp() override
    {
        if (!canRespectPermissions())
            GTEST_SKIP() << "the superuser can read everything here";
    }

    void setMode(mode_t mode) { EXPECT_EQ(0, ::chmod(m_locked.constData(), mode)); }

    // The last words of what is printed.
    QByteArray placeToLookAt(const QByteArray &locked)
    {
        m_locked = m_scratch.path(locked);
        setMode(0);
        const ProgramResult result =
            run({"export", "-d", device(), "--report", report(), m_scratch.path("out")});
        EXPECT_EQ(1, result.exitCode);
        EXPECT_TRUE(result.errors.contains("Permission denied")) << result.errors.constData();
        EXPECT_TRUE(result.output.contains(" 1 failed (see ")) << result.output.constData();
        return result.output.mid(result.output.indexOf(" failed (see "));
    }

    QByteArray report() const { return m_scratch.path("report.jsonl"); }

    QByteArray m_locked;
};

TEST_F(SummaryOfAFailure, PointsToTheReportWhereThatTellsOfEachFailure)
{
    EXPECT_EQ(" failed (see " + report() + ")\n", placeToLookAt(twoPhotosPath));
    EXPECT_TRUE(m_scratch.read("report.jsonl").contains("\"status\":\"failed\""));
}

TEST_F(SummaryOfAFailure, PointsToTheMessagesWhereNotAFileHasFailedButAFolder)
{
    EXPECT_EQ(" failed (see the messages above)\n", placeToLookAt("device/PhotoData/Mutations"));
    EXPECT_FALSE(m_scratch.read("report.jsonl").contains("\"status\":\"failed\""));
}

} // namespace
