#ifndef PHOTOLIB_TESTS_SUPPORT_RUN_TOGETHER_H
#define PHOTOLIB_TESTS_SUPPORT_RUN_TOGETHER_H

#include <functional>
#include <thread>
#include <vector>

/// Runs each of `works` on a thread of its own and returns when all have ended.
inline void runTogether(const std::vector<std::function<void()>> &works)
{
    std::vector<std::thread> threads;
    threads.reserve(works.size());
    for (const auto &work : works)
        threads.emplace_back(work);
    for (std::thread &thread : threads)
        thread.join();
}

#endif // PHOTOLIB_TESTS_SUPPORT_RUN_TOGETHER_H
