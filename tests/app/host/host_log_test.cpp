#include "host/host_log.h"

#include "base/log_output.h"
#include "support/threads.h"

#include <gtest/gtest.h>

namespace {

// What `body` writes to stderr with a given detail of the log.
template <class Body>
std::string errorsOf(LogDetail detail, const Body &body)
{
    setLogDetail(detail);
    testing::internal::CaptureStderr();
    body();
    setLogDetail(LogDetail::Failures);
    return testing::internal::GetCapturedStderr();
}

void logBothLevels()
{
    Log("TAG", 1, "notice %d", 1);
    Log("TAG", 2, "failure %s", "two");
}

TEST(HostLog, ShowsFailuresOnlyByDefault)
{
    EXPECT_EQ("TAG: failure two\n", errorsOf(LogDetail::Failures, logBothLevels));
}

TEST(HostLog, ShowsNoticesWhenEverythingIsAskedFor)
{
    EXPECT_EQ("TAG: notice 1\nTAG: failure two\n", errorsOf(LogDetail::Everything, logBothLevels));
}

TEST(HostLog, ShowsNothingWhenQuiet)
{
    EXPECT_EQ("", errorsOf(LogDetail::Nothing, logBothLevels));
}

TEST(HostLog, KeepsLongLinesWhole)
{
    const std::string text(100000, 'x');
    const auto log = [&text] { Log("TAG", 2, "%s!", text.c_str()); };
    EXPECT_EQ("TAG: " + text + "!\n", errorsOf(LogDetail::Failures, log));
}

TEST(HostLog, EscapesBytesThatWouldGarbleATerminal)
{
    const auto log = [] { Log("TAG", 2, "uuid: %s", "\x1b[31m\xff\n\xc3\xbc"); };
    EXPECT_EQ("TAG: uuid: \\x1b[31m\\xff\\x0a\xc3\xbc\n", errorsOf(LogDetail::Failures, log));
}

TEST(LogCapture, KeepsFailuresOffTheTerminal)
{
    QList<QByteArray> failures;
    const auto body = [&failures] {
        const LogCapture capture;
        logBothLevels();
        failures = capture.failures();
    };
    EXPECT_EQ("", errorsOf(LogDetail::Failures, body));
    EXPECT_EQ(QList<QByteArray>{"failure two"}, failures);
}

TEST(LogCapture, KeepsFailuresAlsoWhenQuiet)
{
    QList<QByteArray> failures;
    const auto body = [&failures] {
        const LogCapture capture;
        logBothLevels();
        failures = capture.failures();
    };
    EXPECT_EQ("", errorsOf(LogDetail::Nothing, body));
    EXPECT_EQ(QList<QByteArray>{"failure two"}, failures);
}

TEST(LogCapture, EndsWithItsScope)
{
    const auto body = [] {
        {
            const LogCapture capture;
            logBothLevels();
        }
        logBothLevels();
        const LogCapture next;
        EXPECT_TRUE(next.failures().isEmpty());
    };
    EXPECT_EQ("TAG: failure two\n", errorsOf(LogDetail::Failures, body));
}

TEST(HostLogThreads, KeepTheLinesOfSeveralThreadsWhole)
{
    const auto logOften = [](int) {
        for (int round = 0; round < 100; ++round)
            Log("TAG", 2, "a line of %s", "text");
    };
    const std::string errors =
        errorsOf(LogDetail::Failures, [&logOften] { runOnThreads(4, logOften); });
    std::string expected;
    for (int i = 0; i < 400; ++i)
        expected += "TAG: a line of text\n";
    EXPECT_EQ(expected, errors);
}

} // namespace
