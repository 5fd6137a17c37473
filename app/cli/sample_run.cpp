#include "cli/sample_run.h"

#include "base/error.h"
#include "cli/interruptible_run.h"

#include <QThreadPool>

void runSampleWriter(const SampleWriter &write)
{
    // Painting uses Qt's pool of threads, which must not belong to one that ends before it.
    QThreadPool::globalInstance();
    QString error;
    bool isWritten = false;
    std::atomic<bool> isCancelled{false};
    const bool isInterrupted = runInterruptible([&] { isWritten = write(&error, &isCancelled); },
                                                [&] { isCancelled = true; }, [] {});
    if (isWritten)
        return;
    if (isInterrupted)
        throw Error(Error::Cancelled, "interrupted: no sample is written");
    throw Error(error);
}
