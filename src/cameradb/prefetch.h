#ifndef PHOTOLIB_CAMERADB_PREFETCH_H
#define PHOTOLIB_CAMERADB_PREFETCH_H

/// Starts fetching the memory at `address`, which may be any address, into the cache.
/// Records lie in the order of their dates and are mostly visited in that of their keys:
/// in a large library each visit would wait for the memory.
inline void prefetch(const void *address)
{
#if defined(__GNUC__)
    __builtin_prefetch(address);
#else
    (void)address;
#endif
}

#endif // PHOTOLIB_CAMERADB_PREFETCH_H
