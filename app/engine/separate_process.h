#ifndef PHOTOLIB_ENGINE_SEPARATE_PROCESS_H
#define PHOTOLIB_ENGINE_SEPARATE_PROCESS_H

#include <QtGlobal>

#include <cstddef>
#include <functional>

class CancelToken;

/// Memory that a process and those that it forks have in common: all zero at first, and only used
/// where it is written.
class CommonMemory
{
public:
    /// Throws std::bad_alloc.
    explicit CommonMemory(size_t bytes);
    ~CommonMemory();

    CommonMemory(const CommonMemory &) = delete;
    CommonMemory &operator=(const CommonMemory &) = delete;

    void *data() const { return m_data; }

private:
    const size_t m_bytes;
    void *m_data;
};

/// What a process may take before the system ends it.
struct ProcessLimits {
    int seconds = 1;        ///< of the processor
    qint64 memoryBytes = 0; ///< beside what the calling process has
};

/// How work in a process of its own ended.
enum class SeparateEnd {
    Done,   ///< also where the system does not tell, for SIGCHLD is ignored
    Failed, ///< it was ended by a fault or a limit, threw, or no process could be started
    Cancelled,
};

/// Runs `work` in a process of its own, which sees what this one has and leaves nothing behind but
/// what it writes to CommonMemory; waits for its end, and kills it soon after `cancel` is
/// cancelled. Decoders that are fed by a device may crash there, or never end. Locks that another
/// thread may hold are not to be taken in `work`: those of Qt's thread pool, say. Any thread.
SeparateEnd runSeparately(const ProcessLimits &limits, const CancelToken &cancel,
                          const std::function<void()> &work);

#endif // PHOTOLIB_ENGINE_SEPARATE_PROCESS_H
