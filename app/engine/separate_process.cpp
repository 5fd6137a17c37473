#include "engine/separate_process.h"

#include "base/cancel_token.h"
#include "base/unique_fd.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <new>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define PHOTOLIB_TAKES_ADDRESSES_AT_WILL
#endif

namespace {

// Bytes of the address space that this process has; -1 where the system does not tell.
qint64 ownMemory()
{
    const UniqueFd file(::open("/proc/self/statm", O_RDONLY | O_CLOEXEC));
    char text[64] = {};
    long pages = 0;
    if (::read(file.get(), text, sizeof text - 1) <= 0 || std::sscanf(text, "%ld", &pages) != 1)
        return -1;
    return qint64(pages) * ::sysconf(_SC_PAGESIZE);
}

void setLimit(__rlimit_resource_t resource, qint64 most)
{
    rlimit limit = {};
    ::getrlimit(resource, &limit);
    limit.rlim_cur = std::min(rlim_t(most), limit.rlim_max);
    ::setrlimit(resource, &limit);
}

void applyLimits(const ProcessLimits &limits, qint64 ownBytes)
{
    setLimit(RLIMIT_CORE, 0);
    setLimit(RLIMIT_CPU, limits.seconds);
#ifndef PHOTOLIB_TAKES_ADDRESSES_AT_WILL
    if (ownBytes >= 0)
        setLimit(RLIMIT_AS, ownBytes + limits.memoryBytes);
#else
    Q_UNUSED(ownBytes)
#endif
}

// In the new process, which is not to outlive the other one, nor to say anything.
[[noreturn]] void workAndExit(const ProcessLimits &limits, pid_t parent, qint64 ownBytes,
                              const std::function<void()> &work)
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent)
        ::_exit(1);
    for (const int signal : {SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL, SIGXCPU})
        std::signal(signal, SIG_DFL);
    const int nowhere = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        ::dup2(nowhere, fd);
    applyLimits(limits, ownBytes);
    try {
        work();
    } catch (...) {
        ::_exit(1);
    }
    ::_exit(0);
}

// Whether the process has ended; `*status` is how.
bool hasEnded(pid_t child, int *status)
{
    const pid_t ended = ::waitpid(child, status, WNOHANG);
    return ended == child || (ended < 0 && errno != EINTR);
}

// Kills the process at the end of the object unless it has ended.
class ChildProcess
{
public:
    explicit ChildProcess(pid_t pid) : m_pid(pid) {}

    ~ChildProcess()
    {
        if (m_hasEnded)
            return;
        ::kill(m_pid, SIGKILL);
        while (::waitpid(m_pid, &m_status, 0) < 0 && errno == EINTR) {
        }
    }

    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;

    bool isDone() const { return WIFEXITED(m_status) && WEXITSTATUS(m_status) == 0; }

    void waitUntil(const CancelToken &cancel)
    {
        constexpr int longest = 10; // milliseconds; a small picture takes that long
        for (int pause = 1; !cancel.isCancelled(); pause = std::min(longest, pause + 1)) {
            m_hasEnded = hasEnded(m_pid, &m_status);
            if (m_hasEnded)
                return;
            ::poll(nullptr, 0, pause);
        }
    }

    bool hasEndedByItself() const { return m_hasEnded; }

private:
    const pid_t m_pid;
    int m_status = 0; // stays so where the caller's parent ignores SIGCHLD: nobody is told then
    bool m_hasEnded = false;
};

} // namespace

CommonMemory::CommonMemory(size_t bytes)
    : m_bytes(bytes), m_data(::mmap(nullptr, bytes, PROT_READ | PROT_WRITE,
                                    MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0))
{
    if (m_data == MAP_FAILED)
        throw std::bad_alloc();
}

CommonMemory::~CommonMemory()
{
    ::munmap(m_data, m_bytes);
}

SeparateEnd runSeparately(const ProcessLimits &limits, const CancelToken &cancel,
                          const std::function<void()> &work)
{
    if (cancel.isCancelled())
        return SeparateEnd::Cancelled;
    const pid_t parent = ::getpid();
    const qint64 ownBytes = ownMemory();
    const pid_t pid = ::fork();
    if (pid == 0)
        workAndExit(limits, parent, ownBytes, work);
    if (pid < 0)
        return SeparateEnd::Failed;
    ChildProcess child(pid);
    child.waitUntil(cancel);
    if (!child.hasEndedByItself())
        return SeparateEnd::Cancelled;
    return child.isDone() ? SeparateEnd::Done : SeparateEnd::Failed;
}
