#ifndef PHOTOLIB_SAMPLE_SAMPLE_WRITER_H
#define PHOTOLIB_SAMPLE_SAMPLE_WRITER_H

#include "sample/sample_options.h"

#include <QString>

/// Writes a sample device, laid out as a device's media root, into the folder `dir.`
///
/// `dir` must not exist (it is made, with its parents) or be an empty folder. The result
/// depends on `options` alone: not on the time, the locale, the process or the machine's
/// random source. Files carry the dates of their assets.
///
/// Returns true when all is written. On failure returns false, says why in `*error` (one
/// line that names the thing and the cause; must not be null), and removes everything that
/// this call made, parents of `dir` included; an empty folder that was there stays.
///
/// May be called on any thread, and on several at once for different folders.
bool writeSample(const QString &dir, const SampleOptions &options, QString *error,
                 const SampleWatch &watch = {});

#endif // PHOTOLIB_SAMPLE_SAMPLE_WRITER_H
