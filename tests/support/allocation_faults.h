#ifndef PHOTOLIB_TESTS_SUPPORT_ALLOCATION_FAULTS_H
#define PHOTOLIB_TESTS_SUPPORT_ALLOCATION_FAULTS_H

#include <cstdint>
#include <vector>

/// The test program's own global operator new and delete, in every form without an
/// alignment, and its own malloc and realloc, all also for the libraries that it loads. The
/// blocks come from the C library or the sanitizer, which still sees every one.
///
/// The switches below act on the thread that makes them, while they live, and do not
/// nest, neither in one of their own kind nor in another.

/// Makes one call of operator new fail: the `failing`-th from here on, counted from 1.
class AllocationFault
{
public:
    explicit AllocationFault(int failing);
    ~AllocationFault();
    AllocationFault(const AllocationFault &) = delete;
    AllocationFault &operator=(const AllocationFault &) = delete;

    /// Whether the call came and failed.
    bool happened() const;
};

/// Makes one call of malloc or realloc fail, counted like those of `AllocationFault`. Qt's
/// containers and texts come from there, and operator new does, too.
class HeapFault
{
public:
    explicit HeapFault(int failing);
    ~HeapFault();
    HeapFault(const HeapFault &) = delete;
    HeapFault &operator=(const HeapFault &) = delete;

    /// Whether the call came and failed.
    bool happened() const;
};

/// While it lives, allocations of its thread neither fail nor count: for what the fakes
/// allocate on behalf of a test. May nest.
class FaultPause
{
public:
    FaultPause() { ++depth; }
    ~FaultPause() { --depth; }
    FaultPause(const FaultPause &) = delete;
    FaultPause &operator=(const FaultPause &) = delete;

    static inline thread_local int depth = 0; ///< how many live on the thread
};

/// Notes the non-null blocks that operator delete is given, until `stop`.
class DeleteRecorder
{
public:
    DeleteRecorder();
    ~DeleteRecorder();
    DeleteRecorder(const DeleteRecorder &) = delete;
    DeleteRecorder &operator=(const DeleteRecorder &) = delete;

    void stop();

    /// The blocks' addresses, at most the first 64.
    std::vector<std::uintptr_t> deleted() const;

    /// How many blocks went through the plain operator delete(void *).
    int plainDeletes() const;
};

#endif // PHOTOLIB_TESTS_SUPPORT_ALLOCATION_FAULTS_H
