#ifndef PHOTOLIB_TESTS_SUPPORT_ALLOCATION_FAULTS_H
#define PHOTOLIB_TESTS_SUPPORT_ALLOCATION_FAULTS_H

#include <cstdint>
#include <vector>

/// The test program's own global operator new and delete, in every form without an
/// alignment, also for the libraries that it loads. They use malloc and free, so the
/// sanitizers still see every block.
///
/// Both switches below act on the thread that makes them, while they live, and do not
/// nest.

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
