#ifndef PHOTOLIB_BENCH_MEMORY_USE_H
#define PHOTOLIB_BENCH_MEMORY_USE_H

#include <QtGlobal>

/// What the process holds at one moment.
struct MemoryUse {
    /// Allocated and not freed: to the byte in a program with counted_heap.cpp, otherwise what
    /// the C library tells.
    qint64 heapBytes = 0;
    qint64 residentBytes = 0; ///< of the process in memory
    int openFiles = 0;
};

MemoryUse memoryUse();

/// The bytes of a block of the heap; 0 for null.
qint64 heapBytesOf(const void *block);

#endif // PHOTOLIB_BENCH_MEMORY_USE_H
