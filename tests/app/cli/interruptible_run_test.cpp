#include "cli/interruptible_run.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <system_error>
#include <thread>

namespace {

// The numbers of the signals that the thread blocks.
std::string blockedSignals()
{
    sigset_t set;
    ::pthread_sigmask(SIG_BLOCK, nullptr, &set);
    std::string result;
    for (int signal = 1; signal < SIGRTMIN; ++signal) {
        if (sigismember(&set, signal) == 1)
            result += std::to_string(signal) + ' ';
    }
    return result;
}

// Nothing can be opened while it lives.
class NoFreeDescriptor
{
public:
    NoFreeDescriptor()
    {
        ::getrlimit(RLIMIT_NOFILE, &m_before);
        const rlimit none = {0, m_before.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoFreeDescriptor() { ::setrlimit(RLIMIT_NOFILE, &m_before); }

    NoFreeDescriptor(const NoFreeDescriptor &) = delete;
    NoFreeDescriptor &operator=(const NoFreeDescriptor &) = delete;

private:
    rlimit m_before = {};
};

TEST(InterruptibleRun, LeavesTheSignalsAsTheyWereWhenItCanNotBegin)
{
    const std::string before = blockedSignals();
    bool hasBegun = false;
    {
        const NoFreeDescriptor none;
        EXPECT_THROW(runInterruptible([&] { hasBegun = true; }, [] {}, [] {}), std::system_error);
    }
    EXPECT_FALSE(hasBegun);
    EXPECT_EQ(before, blockedSignals());
}

TEST(InterruptibleRunThreads, GivesTheWorkThreadNoSignalsAndTakesThemBack)
{
    const std::string before = blockedSignals();
    std::string during;
    EXPECT_FALSE(runInterruptible([&] { during = blockedSignals(); }, [] {}, [] {}));
    EXPECT_NE(before, during);
    EXPECT_EQ(before, blockedSignals());
}

// What a run throws whose tick number `failing` throws, and whose work waits to be cancelled
// more than once and then throws `fromWork`.
std::string thrownBy(int failing, const char *fromWork, bool endsByItself = false)
{
    std::atomic<int> cancels{0};
    int ticks = 0;
    try {
        runInterruptible(
            [&] {
                while (!endsByItself && cancels < 2)
                    std::this_thread::yield();
                if (*fromWork)
                    throw std::runtime_error(fromWork);
            },
            [&] { ++cancels; },
            [&] {
                if (++ticks == failing)
                    throw std::runtime_error("tick");
            });
    } catch (const std::runtime_error &error) {
        return error.what();
    }
    return "nothing";
}

TEST(InterruptibleRunThreads, CancelsTheWorkWhenATickThrows)
{
    EXPECT_EQ("tick", thrownBy(1, ""));
    EXPECT_EQ("tick", thrownBy(2, ""));
}

TEST(InterruptibleRunThreads, ThrowsWhatTheTickThrewBeforeWhatTheWorkDid)
{
    EXPECT_EQ("tick", thrownBy(1, "work"));
    EXPECT_EQ("work", thrownBy(-1, "work", true));
    EXPECT_EQ("nothing", thrownBy(-1, "", true));
}

} // namespace
