#include "support/allocation_faults.h"

#include <QByteArray>

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

TEST(AllocationFaultTool, FailsWhatTheCHeapGivesToQt)
{
    bool thrown = false;
    bool happened = false;
    {
        const HeapFault fault(1);
        try {
            const QByteArray bytes(100, 'x');
        } catch (const std::bad_alloc &) {
            thrown = true;
        }
        happened = fault.happened();
    }
    EXPECT_TRUE(thrown);
    EXPECT_TRUE(happened);
}

TEST(AllocationFaultTool, KeepsABlockThatCanNotGrow)
{
    QByteArray bytes(100, 'x');
    bool thrown = false;
    {
        const HeapFault fault(1);
        try {
            bytes.resize(100000);
        } catch (const std::bad_alloc &) {
            thrown = true;
        }
    }
    EXPECT_TRUE(thrown);
    EXPECT_EQ(bytes, QByteArray(100, 'x'));
}

TEST(AllocationFaultTool, LeavesTheFakesAlone)
{
    void *paused = nullptr;
    void *failed = nullptr;
    bool happened = false;
    {
        const HeapFault fault(1);
        {
            const FaultPause pause;
            paused = ::operator new(1, std::nothrow);
        }
        happened = fault.happened();
        failed = ::operator new(1, std::nothrow);
    }
    EXPECT_NE(paused, nullptr);
    EXPECT_FALSE(happened);
    EXPECT_EQ(failed, nullptr);
    ::operator delete(paused);
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
