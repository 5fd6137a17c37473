#ifndef PHOTOLIB_TESTS_SUPPORT_EXPECTED_LEAK_H
#define PHOTOLIB_TESTS_SUPPORT_EXPECTED_LEAK_H

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

/// Blocks allocated on this thread while it lives may leak: for the one call that leaves
/// a block to nobody by contract, with the reason beside it.
class ExpectedLeak
{
public:
#if defined(__SANITIZE_ADDRESS__)
    ExpectedLeak()
    {
        __lsan_disable();
    }
    ~ExpectedLeak()
    {
        __lsan_enable();
    }
#else
    ExpectedLeak() {}
    ~ExpectedLeak() {}
#endif
    ExpectedLeak(const ExpectedLeak &) = delete;
    ExpectedLeak &operator=(const ExpectedLeak &) = delete;
};

#endif // PHOTOLIB_TESTS_SUPPORT_EXPECTED_LEAK_H
