// The heap of a program that counts its bytes: every block carries the number of bytes that were
// asked for. What the C library says of its heap is not exact, for it gives out larger blocks
// where a smaller one would leave a useless rest, and keeps freed ones at hand.

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstring>

// What the C library's own allocations are made of.
extern "C" {
void *__libc_malloc(std::size_t bytes);
void *__libc_memalign(std::size_t alignment, std::size_t bytes);
void __libc_free(void *block);
}

namespace {

// Lies before each block.
struct Header {
    std::size_t bytes;
    std::size_t offset; // of the block in what was allocated for it
};

std::atomic<long long> liveBytes{0};

Header *headerOf(void *block)
{
    return static_cast<Header *>(block) - 1;
}

void *counted(void *allocated, std::size_t offset, std::size_t bytes)
{
    if (!allocated)
        return nullptr;
    void *const block = static_cast<char *>(allocated) + offset;
    *headerOf(block) = Header{bytes, offset};
    liveBytes += static_cast<long long>(bytes);
    return block;
}

} // namespace

extern "C" {

long long countedHeapBytes()
{
    return liveBytes;
}

void *malloc(std::size_t bytes)
{
    if (bytes + sizeof(Header) < bytes) {
        errno = ENOMEM;
        return nullptr;
    }
    return counted(__libc_malloc(bytes + sizeof(Header)), sizeof(Header), bytes);
}

void free(void *block)
{
    if (!block)
        return;
    const Header header = *headerOf(block);
    liveBytes -= static_cast<long long>(header.bytes);
    __libc_free(static_cast<char *>(block) - header.offset);
}

void *calloc(std::size_t count, std::size_t size)
{
    std::size_t bytes = 0;
    if (__builtin_mul_overflow(count, size, &bytes)) {
        errno = ENOMEM;
        return nullptr;
    }
    // Cleared byte by byte: what the compiler makes of memset here may be a call of calloc.
    char *const block = static_cast<char *>(malloc(bytes));
    for (volatile char *byte = block; block && byte < block + bytes; ++byte)
        *byte = 0;
    return block;
}

void *realloc(void *block, std::size_t bytes)
{
    if (!block)
        return malloc(bytes);
    void *const moved = malloc(bytes);
    if (!moved)
        return nullptr;
    const std::size_t before = headerOf(block)->bytes;
    std::memcpy(moved, block, before < bytes ? before : bytes);
    free(block);
    return moved;
}

void *memalign(std::size_t alignment, std::size_t bytes)
{
    const std::size_t offset = alignment < sizeof(Header) ? sizeof(Header) : alignment;
    return counted(__libc_memalign(offset, bytes + offset), offset, bytes);
}

void *aligned_alloc(std::size_t alignment, std::size_t bytes)
{
    return memalign(alignment, bytes);
}

int posix_memalign(void **block, std::size_t alignment, std::size_t bytes)
{
    *block = memalign(alignment, bytes);
    return *block ? 0 : ENOMEM;
}

std::size_t malloc_usable_size(void *block)
{
    return block ? headerOf(block)->bytes : 0;
}
}
