#ifndef PHOTOLIB_TESTS_SUPPORT_TEST_TIME_LIMIT_H
#define PHOTOLIB_TESTS_SUPPORT_TEST_TIME_LIMIT_H

#include <gtest/gtest.h>

#include <unistd.h>

/// Ends the process by SIGALRM when one test takes longer than some seconds: such a test hangs.
/// The last line of the output then names it.
class TestTimeLimit : public testing::EmptyTestEventListener
{
public:
    explicit TestTimeLimit(unsigned seconds) : m_seconds(seconds) {}

    void OnTestStart(const testing::TestInfo &) override { ::alarm(m_seconds); }
    void OnTestEnd(const testing::TestInfo &) override { ::alarm(0); }

private:
    unsigned m_seconds;
};

#endif // PHOTOLIB_TESTS_SUPPORT_TEST_TIME_LIMIT_H
