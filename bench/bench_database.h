#ifndef PHOTOLIB_BENCH_BENCH_DATABASE_H
#define PHOTOLIB_BENCH_BENCH_DATABASE_H

#include <string>

/// What a measured library holds.
struct Library {
    int assets = 0;
    bool hasCameraRoll = true; ///< an album of kind 1000 with every asset
    bool hasOneDate = false;   ///< all photos bear one modification date
    int userAlbums = 40;
    int members = 0; ///< of each user album; 0 for half of the assets in all, some of them in two
    bool isZasset = false; ///< the assets are in ZASSET, as since iOS 14
};

/// Writes PhotoData/Photos.sqlite with a write-ahead log below `root`. Exits the program
/// with a message on any error: there is nothing to measure then.
void writeLibrary(const std::string &root, const Library &library);

#endif // PHOTOLIB_BENCH_BENCH_DATABASE_H
