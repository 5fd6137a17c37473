#include "cli/interruptible_run.h"

#include "base/atomic_file.h"
#include "base/blocked_signals.h"
#include "base/unique_fd.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <system_error>
#include <thread>

namespace {

constexpr int tickMilliseconds = 100;

UniqueFd orThrow(int fd)
{
    if (fd < 0)
        throw std::system_error(errno, std::generic_category());
    return UniqueFd(fd);
}

bool isIgnored(int signal)
{
    struct sigaction action = {};
    return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

// Those that ask the program to end.
sigset_t interruptSignals()
{
    sigset_t signals = signalSet({});
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
        if (!isIgnored(signal))
            sigaddset(&signals, signal);
    }
    return signals;
}

// While it lives, these signals arrive at a descriptor instead.
class InterruptSignals
{
public:
    InterruptSignals()
        : m_signals(interruptSignals()), m_blocked(m_signals),
          m_fd(orThrow(::signalfd(-1, &m_signals, SFD_CLOEXEC | SFD_NONBLOCK)))
    {
    }

    int fd() const { return m_fd.get(); }

    // The signal that has arrived, or 0.
    int take() const
    {
        signalfd_siginfo info = {};
        const bool hasOne = ::read(m_fd.get(), &info, sizeof(info)) == sizeof(info);
        return hasOne ? static_cast<int>(info.ssi_signo) : 0;
    }

private:
    const sigset_t m_signals;
    const BlockedSignals m_blocked;
    const UniqueFd m_fd;
};

// Null when it goes well.
std::exception_ptr failureOf(const std::function<void()> &function)
{
    try {
        function();
        return nullptr;
    } catch (...) {
        return std::current_exception();
    }
}

// The work on its own thread, which must not inherit unblocked signals: they are the
// waiting thread's to handle.
class WorkThread
{
public:
    explicit WorkThread(const std::function<void()> &work)
        : m_ended(orThrow(::eventfd(0, EFD_CLOEXEC))), m_thread([this, &work] {
              m_failure = failureOf(work);
              ::eventfd_write(m_ended.get(), 1);
          })
    {
    }

    ~WorkThread()
    {
        if (m_thread.joinable())
            m_thread.join();
    }

    WorkThread(const WorkThread &) = delete;
    WorkThread &operator=(const WorkThread &) = delete;

    int endedFd() const { return m_ended.get(); }

    // Throws what the work threw.
    void join()
    {
        m_thread.join();
        if (m_failure)
            std::rethrow_exception(m_failure);
    }

private:
    std::exception_ptr m_failure;
    const UniqueFd m_ended;
    std::thread m_thread; // last, for it uses the others
};

// Whether the thread ended, after waiting for at most one tick.
bool waitForEnd(const WorkThread &thread, const InterruptSignals &signals)
{
    pollfd descriptors[] = {{thread.endedFd(), POLLIN, 0}, {signals.fd(), POLLIN, 0}};
    return ::poll(descriptors, 2, tickMilliseconds) > 0 && (descriptors[0].revents & POLLIN);
}

// A person who asks twice does not want to wait for a slow device.
[[noreturn]] void dieOf(int signal)
{
    const sigset_t signals = signalSet({signal});
    removeTemporaryFiles();
    ::raise(signal);
    ::pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    std::abort();
}

} // namespace

bool runInterruptible(const std::function<void()> &work, const std::function<void()> &cancel,
                      const std::function<void()> &tick)
{
    const InterruptSignals signals;
    WorkThread thread(work);
    bool isInterrupted = false;
    std::exception_ptr failure; // of a tick
    for (bool hasEnded = false; !hasEnded;) {
        if (!failure)
            failure = failureOf(tick);
        hasEnded = waitForEnd(thread, signals);
        const int signal = signals.take();
        if (signal && isInterrupted)
            dieOf(signal);
        isInterrupted = isInterrupted || signal;
        if (isInterrupted || failure)
            cancel();
    }
    if (failure)
        std::rethrow_exception(failure); // what the work throws then comes of the cancel
    tick();
    thread.join();
    return isInterrupted;
}
