#ifndef PHOTOLIB_ENGINE_SAMPLE_DEVICE_H
#define PHOTOLIB_ENGINE_SAMPLE_DEVICE_H

#include "sample/sample_options.h"

#include <QByteArray>

/// Writes a sample device into the folder `path`, a name in any bytes, which must not exist, or be
/// empty. It is written as a whole or not at all; what had to be made for it goes again with it.
/// Throws Error, also, without writing anything, when the folder lies in a device.
void writeSampleDevice(const QByteArray &path, const SampleOptions &options,
                       const SampleWatch &watch);

/// The same for a sample classic iPod.
void writeSampleIpod(const QByteArray &path, const ClassicSampleOptions &options,
                     const SampleWatch &watch);

#endif // PHOTOLIB_ENGINE_SAMPLE_DEVICE_H
