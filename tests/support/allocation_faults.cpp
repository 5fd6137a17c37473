#include "support/allocation_faults.h"

#include <array>
#include <cstddef>
#include <cstdlib>
#include <new>

// Where the blocks come from, under the names that a definition of malloc does not hide: a
// sanitizer where there is one, or else the C library.
extern "C" {
__attribute__((weak)) void *__interceptor_malloc(std::size_t size);
__attribute__((weak)) void *__interceptor_realloc(void *block, std::size_t size);
void *__libc_malloc(std::size_t size);
void *__libc_realloc(void *block, std::size_t size);
}

// For what runs in malloc: the sanitizers call it before their own memory is there.
#define NOT_INSTRUMENTED __attribute__((no_sanitize("address", "undefined", "thread")))

namespace {

constexpr int RecordedBlocks = 64;

// Plain data, since operator new may run before any constructor of this program.
struct ThreadState {
    int untilFailure;
    int untilHeapFailure;
    bool failed;
    bool recording;
    int deletes;
    int plainDeletes;
    std::array<std::uintptr_t, RecordedBlocks> blocks;
};

thread_local ThreadState state;

NOT_INSTRUMENTED bool isPaused() noexcept
{
    return FaultPause::depth > 0;
}

// Whether the call that counts down `calls` is the one to fail.
NOT_INSTRUMENTED bool isFailing(int &calls) noexcept
{
    if (calls == 0 || isPaused() || --calls != 0)
        return false;
    state.failed = true;
    return true;
}

void *allocate(std::size_t size) noexcept
{
    if (isFailing(state.untilFailure))
        return nullptr;
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

NOT_INSTRUMENTED void *malloc(std::size_t size) noexcept
{
    if (isFailing(state.untilHeapFailure))
        return nullptr;
    return __interceptor_malloc != nullptr ? __interceptor_malloc(size) : __libc_malloc(size);
}

NOT_INSTRUMENTED void *realloc(void *block, std::size_t size) noexcept
{
    if (isFailing(state.untilHeapFailure))
        return nullptr;
    return __interceptor_realloc != nullptr ? __interceptor_realloc(block, size)
                                            : __libc_realloc(block, size);
}

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

HeapFault::HeapFault(int failing)
{
    state.failed = false;
    state.untilHeapFailure = failing;
}

HeapFault::~HeapFault()
{
    state.untilHeapFailure = 0;
}

bool HeapFault::happened() const
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
