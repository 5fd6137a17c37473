#ifndef PHOTOLIB_IOS_THREAD_BUFFER_H
#define PHOTOLIB_IOS_THREAD_BUFFER_H

#include <cstddef>

/// At least `bytes` bytes that belong to the calling thread, with any content. They stay
/// the thread's until it ends, and each call gives them again: a caller uses them up to
/// the thread's next call. Throws std::bad_alloc.
char *threadBuffer(std::size_t bytes);

#endif // PHOTOLIB_IOS_THREAD_BUFFER_H
