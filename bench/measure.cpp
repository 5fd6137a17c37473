#include "measure.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// A line of /proc/self/status, in bytes.
double statusBytes(const char *name)
{
    std::FILE *status = std::fopen("/proc/self/status", "r");
    char line[256];
    double bytes = 0;
    while (status && std::fgets(line, sizeof line, status)) {
        if (std::strncmp(line, name, std::strlen(name)) == 0)
            bytes = std::strtod(line + std::strlen(name), nullptr) * 1024;
    }
    if (status)
        std::fclose(status);
    return bytes;
}

void resetPeak()
{
    if (std::FILE *refs = std::fopen("/proc/self/clear_refs", "w")) {
        std::fputs("5", refs);
        std::fclose(refs);
    }
}

void runAndReport(const std::function<bool()> &work, int to)
{
    typedef std::chrono::steady_clock clock;
    resetPeak();
    const double before = statusBytes("VmRSS:");
    const clock::time_point start = clock::now();
    const bool isDone = work();
    Cost cost;
    cost.seconds = std::chrono::duration<double>(clock::now() - start).count();
    cost.peakBytes = statusBytes("VmHWM:") - before;
    const bool isWritten = write(to, &cost, sizeof cost) == ssize_t(sizeof cost);
    // The parsed library is not freed: its teardown is not what is measured.
    _exit(isDone && isWritten ? 0 : 1);
}

[[noreturn]] void fail(const char *what)
{
    std::fprintf(stderr, "bench: %s\n", what);
    std::exit(1);
}

double middle(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

} // namespace

Cost measure(const std::function<bool()> &work)
{
    int ends[2];
    if (pipe(ends) != 0)
        fail("no pipe");
    const pid_t child = fork();
    if (child == 0)
        runAndReport(work, ends[1]);
    close(ends[1]);
    Cost cost;
    const bool isRead = read(ends[0], &cost, sizeof cost) == ssize_t(sizeof cost);
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (!isRead || status != 0)
        fail("a measured run failed");
    return cost;
}

Cost median(const std::vector<Cost> &runs)
{
    std::vector<double> seconds, bytes;
    for (const Cost &run : runs) {
        seconds.push_back(run.seconds);
        bytes.push_back(run.peakBytes);
    }
    return {middle(seconds), middle(bytes)};
}
