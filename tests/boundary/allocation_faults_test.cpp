#include "boundary/allocation_faults.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

constexpr int RecordedBlocks = 64;

// Plain data, since operator new may run before any constructor of this program.
struct ThreadState {
    int untilFailure;
    bool failed;
    bool recording;
    int deletes;
    int plainDeletes;
    std::array<std::uintptr_t, RecordedBlocks> blocks;
};

thread_local ThreadState state;

// Null when this call is the one to fail.
void *allocate(std::size_t size) noexcept
{
    if (state.untilFailure > 0 && --state.untilFailure == 0) {
        state.failed = true;
        return nullptr;
    }
    return std::malloc(size != 0 ? size : 1);
}

void *allocateOrThrow(std::size_t size)
{
    void *block = allocate(size);
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}

void record(const void *block, bool plain) noexcept
{
    if (!state.recording || block == nullptr)
        return;
    if (state.deletes < RecordedBlocks)
        state.blocks[static_cast<std::size_t>(state.deletes)] =
            reinterpret_cast<std::uintptr_t>(block);
    ++state.deletes;
    if (plain)
        ++state.plainDeletes;
}

void release(void *block, bool plain) noexcept
{
    record(block, plain);
    std::free(block);
}

} // namespace

void *operator new(std::size_t size)
{
    return allocateOrThrow(size);
}

void *operator new[](std::size_t size)
{
    return allocateOrThrow(size);
}

void *operator new(std::size_t size, const std::nothrow_t &) noexcept
{
    return allocate(size);
}

void *operator new[](std::size_t size, const std::nothrow_t &) noexcept
{
    return allocate(size);
}

void operator delete(void *block) noexcept
{
    release(block, true);
}

void operator delete[](void *block) noexcept
{
    release(block, false);
}

void operator delete(void *block, std::size_t) noexcept
{
    release(block, false);
}

void operator delete[](void *block, std::size_t) noexcept
{
    release(block, false);
}

void operator delete(void *block, const std::nothrow_t &) noexcept
{
    release(block, false);
}

void operator delete[](void *block, const std::nothrow_t &) noexcept
{
    release(block, false);
}

AllocationFault::AllocationFault(int failing)
{
    state.failed = false;
    state.untilFailure = failing;
}

AllocationFault::~AllocationFault()
{
    state.untilFailure = 0;
}

bool AllocationFault::happened() const
{
    return state.failed;
}

DeleteRecorder::DeleteRecorder()
{
    state.deletes = 0;
    state.plainDeletes = 0;
    state.recording = true;
}

DeleteRecorder::~DeleteRecorder()
{
    state.recording = false;
}

void DeleteRecorder::stop()
{
    state.recording = false;
}

std::vector<std::uintptr_t> DeleteRecorder::deleted() const
{
    const ThreadState seen = state;
    const int kept = seen.deletes < RecordedBlocks ? seen.deletes : RecordedBlocks;
    return {seen.blocks.begin(), seen.blocks.begin() + kept};
}

int DeleteRecorder::plainDeletes() const
{
    return state.plainDeletes;
}

namespace {

TEST(AllocationFaultTool, FailsExactlyTheChosenCall)
{
    bool happened = false;
    void *first = nullptr;
    void *second = nullptr;
    void *third = nullptr;
    {
        const AllocationFault fault(2);
        first = ::operator new(1, std::nothrow);
        second = ::operator new(1, std::nothrow);
        third = ::operator new(1, std::nothrow);
        happened = fault.happened();
    }
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(second, nullptr);
    EXPECT_NE(third, nullptr);
    EXPECT_TRUE(happened);
    ::operator delete(first);
    ::operator delete(third);
}

TEST(AllocationFaultTool, ThrowsWhereTheCallMayThrow)
{
    bool thrown = false;
    {
        const AllocationFault fault(1);
        try {
            ::operator delete(::operator new(1));
        } catch (const std::bad_alloc &) {
            thrown = true;
        }
    }
    EXPECT_TRUE(thrown);
}

TEST(AllocationFaultTool, RecordsTheBlocksThatAreDeleted)
{
    void *plain = ::operator new(1);
    int *array = new int[1];
    const std::vector<std::uintptr_t> blocks = {reinterpret_cast<std::uintptr_t>(plain),
                                                reinterpret_cast<std::uintptr_t>(array)};
    DeleteRecorder recorder;
    ::operator delete(plain);
    delete[] array;
    recorder.stop();
    EXPECT_EQ(recorder.plainDeletes(), 1);
    EXPECT_EQ(recorder.deleted(), blocks);
}

} // namespace
