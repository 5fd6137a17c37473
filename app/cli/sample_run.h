#ifndef PHOTOLIB_CLI_SAMPLE_RUN_H
#define PHOTOLIB_CLI_SAMPLE_RUN_H

#include <QString>

#include <atomic>
#include <functional>

/// Writes a sample, as `writeSample` does: false and `*error` filled on failure, which setting
/// `*isCancelled` brings about.
using SampleWriter = std::function<bool(QString *error, const std::atomic<bool> *isCancelled)>;

/// Runs `write`, which the signals of `runInterruptible` end. Throws Error when the
/// sample is not written; nothing is left of it then.
void runSampleWriter(const SampleWriter &write);

#endif // PHOTOLIB_CLI_SAMPLE_RUN_H
