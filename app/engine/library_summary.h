#ifndef PHOTOLIB_ENGINE_LIBRARY_SUMMARY_H
#define PHOTOLIB_ENGINE_LIBRARY_SUMMARY_H

#include "catalog/catalog.h"
#include "engine/file_state.h"

#include <QString>

#include <functional>
#include <map>

/// What a library holds, counted. What is in the trash and copies out of shared albums are counted
/// for themselves, and in nothing else.
struct LibrarySummary {
    int photos = 0;
    int videos = 0;
    int trashed = 0;
    int shared = 0;

    std::map<AssetType, int> types;
    std::map<AssetSource, int> sources; ///< of those whose source is known
    int bursts = 0;                     ///< groups, not the photos in them
    int favorites = 0;
    int hidden = 0;
    int edited = 0;

    int onDevice = 0;
    int onlyInCloud = 0; ///< iCloud has the original, and the device has not
    int missing = 0;     ///< neither, as far as the library knows
    int unreadable = 0;  ///< the device does not say

    qint64 bytes =
        0; ///< of the originals on the device, as the library tells; not beyond its range

    std::map<int, int> years; ///< how many were taken in which year, by the clock of their place
    int undated = 0;
    QString oldest; ///< when the first one was taken, "2019-07-27 09:16:49"; empty without any
    QString newest;

    int albums = 0;
    int folders = 0;
    int people = 0;
};

/// Counts what `catalog` has. `fileState` tells of the file of each photo and video that is neither
/// in the trash nor shared; what it throws is thrown to the caller.
LibrarySummary summaryOf(const Catalog &catalog,
                         const std::function<FileState(const Asset &)> &fileState);

#endif // PHOTOLIB_ENGINE_LIBRARY_SUMMARY_H
