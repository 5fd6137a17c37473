#ifndef PHOTOLIB_TESTS_SUPPORT_LIVE_HEAP_H
#define PHOTOLIB_TESTS_SUPPORT_LIVE_HEAP_H

#include <cstddef>

#include <malloc.h>

// There in programs with a sanitizer that has a heap of its own; GCC installs no header.
extern "C" __attribute__((weak)) std::size_t __sanitizer_get_current_allocated_bytes();

/// Bytes that the process has allocated and not freed. Unlike the size of the process it
/// does not hold what a sanitizer keeps of freed blocks.
inline std::size_t liveHeapBytes()
{
    if (__sanitizer_get_current_allocated_bytes != nullptr)
        return __sanitizer_get_current_allocated_bytes();
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

#endif // PHOTOLIB_TESTS_SUPPORT_LIVE_HEAP_H
