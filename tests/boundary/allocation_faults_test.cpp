#include "support/allocation_faults.h"

#include <gtest/gtest.h>

#include <new>

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
