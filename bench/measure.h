#ifndef PHOTOLIB_BENCH_MEASURE_H
#define PHOTOLIB_BENCH_MEASURE_H

#include <functional>
#include <vector>

/// What one run of a piece of work took.
struct Cost {
    double seconds = 0;
    double peakBytes = 0; ///< growth of the resident memory, at its peak
};

/// Runs `work` in a process of its own, so that every run starts with the same memory.
/// Exits the program when the work fails (returns false) or crashes.
Cost measure(const std::function<bool()> &work);

/// The medians of several runs' times and memory, each for itself.
Cost median(const std::vector<Cost> &runs);

#endif // PHOTOLIB_BENCH_MEASURE_H
