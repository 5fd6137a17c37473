#include "engine/separate_process.h"

#include "base/cancel_token.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <new>
#include <sched.h>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

class SeparateProcess : public testing::Test
{
protected:
    SeparateEnd run(const std::function<void()> &work)
    {
        return runSeparately(m_limits, m_cancel, work);
    }

    CancelToken m_cancel;
    ProcessLimits m_limits = {5, qint64(64) << 20};
    const CommonMemory m_memory{sizeof(std::atomic<int>)};
    std::atomic<int> &m_number = *new (m_memory.data()) std::atomic<int>(0);
};

using SeparateProcessAndThreads = SeparateProcess;

TEST_F(SeparateProcess, HandsOverWhatItWritesToCommonMemoryOnly)
{
    int own = 1;
    EXPECT_EQ(SeparateEnd::Done, run([&] {
                  m_number = 42;
                  own = 2;
              }));
    EXPECT_EQ(42, m_number);
    EXPECT_EQ(1, own);
}

TEST_F(SeparateProcess, FailsAlone)
{
    EXPECT_EQ(SeparateEnd::Failed, run([] { throw std::runtime_error("thrown"); }));
    EXPECT_EQ(SeparateEnd::Failed, run([] { std::raise(SIGKILL); }));
    EXPECT_EQ(SeparateEnd::Failed, run([] { std::abort(); }));
}

TEST_F(SeparateProcess, EndsWhenItsTimeIsUp)
{
    m_limits.seconds = 1;
    EXPECT_EQ(SeparateEnd::Failed, run([this] {
                  for (;;)
                      ++m_number;
              }));
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(SeparateProcess, GetsNoMoreMemoryThanItMayTake)
{
    const auto take = [this](size_t bytes) {
        const std::vector<char> memory(bytes, 'a');
        m_number = memory[bytes / 2];
    };
    EXPECT_EQ(SeparateEnd::Done, run([&] { take(size_t(16) << 20); }));
    EXPECT_EQ('a', m_number);
    EXPECT_EQ(SeparateEnd::Failed, run([&] { take(size_t(128) << 20); }));
}
#endif

TEST_F(SeparateProcess, IsNotStartedOnceItIsCancelled)
{
    m_cancel.cancel();
    EXPECT_EQ(SeparateEnd::Cancelled, run([this] { m_number = 1; }));
    EXPECT_EQ(0, m_number);
}

TEST_F(SeparateProcessAndThreads, IsKilledWhenItIsCancelled)
{
    std::thread other([this] {
        while (m_number == 0)
            ::sched_yield();
        m_cancel.cancel();
    });
    EXPECT_EQ(SeparateEnd::Cancelled, run([this] {
                  m_number = 1;
                  for (;;)
                      ::sched_yield();
              }));
    other.join();
}

} // namespace
