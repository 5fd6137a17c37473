#ifndef PHOTOLIB_TESTS_APP_SAMPLE_DEVICE_H
#define PHOTOLIB_TESTS_APP_SAMPLE_DEVICE_H

#include "sample/classic_sample.h"
#include "sample/sample_writer.h"

#include <gtest/gtest.h>

inline SampleOptions sampleOptions(int assets, bool pictures = true, quint32 seed = 1,
                                   SampleSchema schema = SampleSchema::V13)
{
    SampleOptions options;
    options.assets = assets;
    options.pictures = pictures;
    options.seed = seed;
    options.schema = schema;
    return options;
}

inline ClassicSampleOptions classicOptions(int photos, bool pictures = true, quint32 seed = 1)
{
    ClassicSampleOptions options;
    options.photos = photos;
    options.pictures = pictures;
    options.seed = seed;
    return options;
}

/// Writes a sample device or a sample classic iPod into `folder`; a failure fails the test.
inline void writeSampleTo(const QString &folder, const SampleOptions &options)
{
    QString error;
    EXPECT_TRUE(writeSample(folder, options, &error)) << error.toStdString();
}

inline void writeSampleTo(const QString &folder, const ClassicSampleOptions &options)
{
    QString error;
    EXPECT_TRUE(writeClassicSample(folder, options, &error)) << error.toStdString();
}

#endif // PHOTOLIB_TESTS_APP_SAMPLE_DEVICE_H
