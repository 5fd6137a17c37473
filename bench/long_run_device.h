#ifndef PHOTOLIB_BENCH_LONG_RUN_DEVICE_H
#define PHOTOLIB_BENCH_LONG_RUN_DEVICE_H

#include "bench_host.h"

#include <string>

/// The identifier in the sync lists of the devices below.
extern const char *const syncedLibrary;

/// What is wrong with a device, if anything.
enum class Flaw {
    None,
    EqualKeys,   ///< the first three assets and the first album have a second row each
    NoJournals,  ///< the database lies there alone
    NoJoinTable, ///< so that the parse fails after the records were read
};

/// A device in a folder of its own, which goes with the object: assets with the keys from 1,
/// the odd ones with packed thumbnails, the even ones with ready ones.
class LongRunDevice
{
public:
    LongRunDevice(const std::string &name, Flaw flaw);
    ~LongRunDevice();
    LongRunDevice(const LongRunDevice &) = delete;
    LongRunDevice &operator=(const LongRunDevice &) = delete;

    static constexpr int assets = 200;
    static constexpr int albums = 40;
    static constexpr int repeatedAssets = 3;
    static constexpr int repeatedAlbums = 1;

    IIPod *iPod() { return &m_iPod; }

private:
    const std::string m_folder;
    BenchDevice m_iPod;
};

#endif // PHOTOLIB_BENCH_LONG_RUN_DEVICE_H
