#ifndef PHOTOLIB_CAMERADB_CANCEL_FLAG_H
#define PHOTOLIB_CAMERADB_CANCEL_FLAG_H

#include <atomic>

/// Set by `cancleParse`, cleared when a parse starts, and polled while files are
/// copied. Use relaxed loads and stores: nothing is ordered by it, a cancel only has to
/// be seen at last.
extern std::atomic<bool> gbShouldQuit;

#endif // PHOTOLIB_CAMERADB_CANCEL_FLAG_H
