#ifndef PHOTOLIB_TESTS_APP_THREADS_H
#define PHOTOLIB_TESTS_APP_THREADS_H

#include <functional>
#include <thread>
#include <vector>

/// Runs `body` on `count` threads at a time, with the numbers from 0 to `count` - 1, and
/// returns when all have ended.
inline void runOnThreads(int count, const std::function<void(int)> &body)
{
    std::vector<std::thread> threads;
    threads.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        threads.emplace_back(body, i);
    for (std::thread &thread : threads)
        thread.join();
}

#endif // PHOTOLIB_TESTS_APP_THREADS_H
