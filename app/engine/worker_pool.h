#ifndef PHOTOLIB_ENGINE_WORKER_POOL_H
#define PHOTOLIB_ENGINE_WORKER_POOL_H

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

/// Threads that work through tasks, begun in the order in which they are added.
class WorkerPool
{
public:
    /// As many as the computer works on at a time.
    static int threadsOfComputer();

    /// Starts `threads` threads, at least one, with the caller's signal mask; fewer where the
    /// system allows no more. Throws std::system_error when it allows none.
    explicit WorkerPool(int threads);

    /// Drops the tasks that are not begun, and waits for the others.
    ~WorkerPool();

    WorkerPool(const WorkerPool &) = delete;
    WorkerPool &operator=(const WorkerPool &) = delete;

    int threads() const { return int(m_threads.size()); }

    /// Has one of the threads call `task`, which throws nothing and waits for no other task. Any
    /// thread.
    void add(std::function<void()> task);

private:
    void startThread();
    void work();

    std::mutex m_mutex; // guards the members up to the threads
    std::condition_variable m_hasChanged;
    std::deque<std::function<void()>> m_tasks;
    bool m_isEnding = false;
    std::vector<std::thread> m_threads;
};

/// Work on a pool whose results are taken in the order in which it was added. For one thread at a
/// time.
template <class Result>
class OrderedWork
{
public:
    /// `pool` must outlive the object.
    explicit OrderedWork(WorkerPool &pool) : m_pool(pool) {}

    /// Waits for all that is under way.
    ~OrderedWork()
    {
        for (const std::future<Result> &result : m_results)
            result.wait();
    }

    OrderedWork(const OrderedWork &) = delete;
    OrderedWork &operator=(const OrderedWork &) = delete;

    bool isEmpty() const { return m_results.empty(); }

    /// Whether enough is added to keep every thread at work while one result is taken. More would
    /// only take memory.
    bool isFull() const { return m_results.size() >= 2 * size_t(m_pool.threads()) + 1; }

    void add(std::function<Result()> work)
    {
        const auto task = std::make_shared<std::packaged_task<Result()>>(std::move(work));
        m_results.push_back(task->get_future());
        m_pool.add([task] { (*task)(); });
    }

    /// Whether the first result that is not taken yet, of which there must be one, is there within
    /// `time`.
    bool waitForFirst(std::chrono::milliseconds time) const
    {
        return m_results.front().wait_for(time) == std::future_status::ready;
    }

    /// Waits for the first result that is not taken yet; there must be one. Throws what its work
    /// threw.
    Result takeFirst()
    {
        std::future<Result> result = std::move(m_results.front());
        m_results.pop_front();
        return result.get();
    }

private:
    WorkerPool &m_pool;
    std::deque<std::future<Result>> m_results;
};

#endif // PHOTOLIB_ENGINE_WORKER_POOL_H
