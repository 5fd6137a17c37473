#include "memory_use.h"

#include <cstdio>
#include <filesystem>
#include <iterator>
#include <malloc.h>
#include <unistd.h>

// There in programs with a heap that counts.
extern "C" __attribute__((weak)) long long countedHeapBytes();

namespace {

qint64 heapBytes()
{
    if (countedHeapBytes)
        return countedHeapBytes();
    const struct mallinfo2 info = mallinfo2();
    const std::size_t bytes = info.uordblks + info.hblkhd;
    return static_cast<qint64>(bytes);
}

qint64 residentBytes()
{
    long long pages = 0, resident = 0;
    if (std::FILE *statm = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(statm, "%lld %lld", &pages, &resident) != 2)
            resident = 0;
        std::fclose(statm);
    }
    return resident * sysconf(_SC_PAGESIZE);
}

int openFiles()
{
    const std::filesystem::directory_iterator files("/proc/self/fd");
    // One of them is the listing itself.
    return static_cast<int>(std::distance(begin(files), end(files))) - 1;
}

} // namespace

MemoryUse memoryUse()
{
    MemoryUse use;
    use.residentBytes = residentBytes();
    use.openFiles = openFiles();
    // Last, when what the others allocated is freed.
    use.heapBytes = heapBytes();
    return use;
}

qint64 heapBytesOf(const void *block)
{
    return static_cast<qint64>(malloc_usable_size(const_cast<void *>(block)));
}
