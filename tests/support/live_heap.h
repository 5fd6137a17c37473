#ifndef PHOTOLIB_TESTS_SUPPORT_LIVE_HEAP_H
#define PHOTOLIB_TESTS_SUPPORT_LIVE_HEAP_H

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// GCC installs no header with it.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#else
#include <malloc.h>
#endif

/// Bytes that the process has allocated and not freed. Unlike the size of the process it
/// does not hold what a sanitizer keeps of freed blocks.
inline std::size_t liveHeapBytes()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return __sanitizer_get_current_allocated_bytes();
#else
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
#endif
}

#endif // PHOTOLIB_TESTS_SUPPORT_LIVE_HEAP_H
