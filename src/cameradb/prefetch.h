#ifndef PHOTOLIB_CAMERADB_PREFETCH_H
#define PHOTOLIB_CAMERADB_PREFETCH_H

/// Starts fetching the memory at `address`, which may be any address, into the cache: for
/// memory that is about to be visited in an order which the processor does not foresee.
inline void prefetch(const void *address)
{
#if defined(__GNUC__)
    __builtin_prefetch(address);
#else
    (void)address;
#endif
}

#endif // PHOTOLIB_CAMERADB_PREFETCH_H
