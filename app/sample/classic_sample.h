#ifndef PHOTOLIB_SAMPLE_CLASSIC_SAMPLE_H
#define PHOTOLIB_SAMPLE_CLASSIC_SAMPLE_H

#include "sample/sample_writer.h"

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

/// Writes a sample classic iPod, laid out as its disk, into the folder `dir.` All that is said
/// of writeSample holds here, too. Pictures take close to 1 MB a photo.
bool writeClassicSample(const QString &dir, const ClassicSampleOptions &options, QString *error,
                        const std::atomic<bool> *isCancelled = nullptr);

#endif // PHOTOLIB_SAMPLE_CLASSIC_SAMPLE_H
