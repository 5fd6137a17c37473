#ifndef PHOTOLIB_SAMPLE_SAMPLE_OPTIONS_H
#define PHOTOLIB_SAMPLE_SAMPLE_OPTIONS_H

#include <QtGlobal>

#include <atomic>

/// The generation of database that a sample device holds, older ones first; but for the first,
/// by the year's system that writes it.
enum class SampleSchema {
    Early, ///< no subtype, trash or burst columns; a Camera Roll album; join table Z_15ASSETS
    V13,   ///< the last with ZGENERICASSET; join table Z_26ASSETS among decoys
    V14,   ///< the first with ZASSET
    V16,
    V18,
    V26,
};

/// What a sample device holds. Equal options give equal files, byte for byte.
struct SampleOptions {
    /// Photos and videos that readers list, 0 to maxSampleAssets. About one more row in twenty of
    /// the asset table is of a kind that they leave out.
    int assets = 60;
    quint32 seed = 1;
    SampleSchema schema = SampleSchema::V13;
    /// Without pictures only the database and the sync plist are written: the database still
    /// names and sizes the files that are not there.
    bool pictures = true;
    /// How many keywords and people the library knows, 0 to maxSampleNames. The assets share
    /// them out among themselves. An early database has neither.
    int keywords = 24;
    int people = 8;
};

/// The largest number of keywords, and of people, that a sample can have.
constexpr int maxSampleNames = 100000;

/// The largest number of assets that a sample can have.
constexpr int maxSampleAssets = 5000000;

/// What a sample classic iPod holds. Equal options give equal files, byte for byte.
struct ClassicSampleOptions {
    int photos = SampleOptions().assets; ///< 0 to maxClassicSamplePhotos
    quint32 seed = SampleOptions().seed;
    /// Without pictures the database and the device's description are all that is written:
    /// the database still names and sizes the files that are not there.
    bool pictures = true;
};

/// The largest number of photos that a sample classic iPod can have, four times as many as
/// such a device takes.
constexpr int maxClassicSamplePhotos = 100000;

/// What the writing of a sample and other threads tell each other meanwhile. Either may be null.
struct SampleWatch {
    const std::atomic<bool> *isCancelled = nullptr; ///< set to have the writing fail soon
    std::atomic<int> *written = nullptr;            ///< how many assets or photos are written
};

#endif // PHOTOLIB_SAMPLE_SAMPLE_OPTIONS_H
