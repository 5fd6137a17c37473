#include "engine/worker_pool.h"

#include <algorithm>
#include <system_error>
#include <utility>

int WorkerPool::threadsOfComputer()
{
    return std::max(1, int(std::thread::hardware_concurrency()));
}

WorkerPool::WorkerPool(int threads)
{
    m_threads.reserve(size_t(std::max(1, threads)));
    while (m_threads.size() < m_threads.capacity()) {
        try {
            startThread();
        } catch (const std::system_error &) {
            if (m_threads.empty())
                throw;
            return;
        }
    }
}

WorkerPool::~WorkerPool()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isEnding = true;
        m_tasks.clear();
    }
    m_hasChanged.notify_all();
    for (std::thread &thread : m_threads)
        thread.join();
}

void WorkerPool::startThread()
{
    m_threads.emplace_back([this] { work(); });
}

void WorkerPool::add(std::function<void()> task)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_tasks.push_back(std::move(task));
    }
    m_hasChanged.notify_one();
}

void WorkerPool::work()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_hasChanged.wait(lock, [this] { return m_isEnding || !m_tasks.empty(); });
        if (m_isEnding)
            return;
        const std::function<void()> task = std::move(m_tasks.front());
        m_tasks.pop_front();
        lock.unlock();
        task();
        lock.lock();
    }
}
