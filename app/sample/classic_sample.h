#ifndef PHOTOLIB_SAMPLE_CLASSIC_SAMPLE_H
#define PHOTOLIB_SAMPLE_CLASSIC_SAMPLE_H

#include "sample/sample_options.h"

#include <QString>

/// Writes a sample classic iPod, laid out as its disk, into the folder `dir.` All that is said
/// of writeSample holds here, too. Pictures take close to 1 MB a photo.
bool writeClassicSample(const QString &dir, const ClassicSampleOptions &options, QString *error,
                        const SampleWatch &watch = {});

#endif // PHOTOLIB_SAMPLE_CLASSIC_SAMPLE_H
