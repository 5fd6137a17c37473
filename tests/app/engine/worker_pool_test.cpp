#include "engine/worker_pool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>

namespace {

TEST(WorkerPool, HasAtLeastOneThread)
{
    EXPECT_EQ(1, WorkerPool(0).threads());
    EXPECT_EQ(3, WorkerPool(3).threads());
    EXPECT_GE(WorkerPool::threadsOfComputer(), 1);
}

TEST(WorkerPool, WorksOnAsManyTasksAtATimeAsItHasThreads)
{
    WorkerPool pool(2);
    std::promise<void> first;
    std::promise<void> second;
    std::promise<void> done;
    pool.add([&] {
        first.set_value();
        second.get_future().wait();
        done.set_value();
    });
    pool.add([&] {
        first.get_future().wait();
        second.set_value();
    });
    done.get_future().wait();
}

// Tells that it is gone.
class LastWord
{
public:
    explicit LastWord(std::promise<void> &isGone) : m_isGone(isGone) {}
    ~LastWord() { m_isGone.set_value(); }

private:
    std::promise<void> &m_isGone;
};

TEST(WorkerPool, DropsWhatIsNotBegunAtItsEnd)
{
    std::promise<void> isDropped;
    std::atomic<bool> isBegun{false};
    {
        WorkerPool pool(1);
        pool.add([&] { isDropped.get_future().wait(); });
        const auto last = std::make_shared<LastWord>(isDropped);
        pool.add([&isBegun, last] { isBegun = true; });
    }
    EXPECT_FALSE(isBegun);
}

TEST(OrderedWork, GivesItsResultsInTheOrderInWhichItWasAdded)
{
    WorkerPool pool(2);
    std::promise<void> second;
    OrderedWork<int> work(pool);
    EXPECT_TRUE(work.isEmpty());
    work.add([&] {
        second.get_future().wait();
        return 1;
    });
    work.add([&] {
        second.set_value();
        return 2;
    });
    EXPECT_EQ(1, work.takeFirst());
    EXPECT_EQ(2, work.takeFirst());
    EXPECT_TRUE(work.isEmpty());
}

TEST(OrderedWork, ThrowsWhatAPieceThrewWhereItsResultIsTaken)
{
    WorkerPool pool(2);
    OrderedWork<int> work(pool);
    work.add([] { return 1; });
    work.add([]() -> int { throw std::runtime_error("two"); });
    work.add([] { return 3; });
    EXPECT_EQ(1, work.takeFirst());
    EXPECT_THROW(work.takeFirst(), std::runtime_error);
    EXPECT_EQ(3, work.takeFirst());
}

TEST(OrderedWork, IsFullWithAFewPiecesForEachThread)
{
    WorkerPool pool(2);
    OrderedWork<int> work(pool);
    int added = 0;
    for (; !work.isFull(); ++added)
        work.add([] { return 0; });
    EXPECT_GT(added, 2);
    EXPECT_LT(added, 20);
    work.takeFirst();
    EXPECT_FALSE(work.isFull());
}

TEST(OrderedWork, WaitsAtItsEndForWhatIsUnderWay)
{
    WorkerPool pool(1);
    std::atomic<int> done{0};
    {
        OrderedWork<void> work(pool);
        for (int i = 0; i < 5; ++i)
            work.add([&done] { ++done; });
    }
    EXPECT_EQ(5, done);
}

} // namespace
