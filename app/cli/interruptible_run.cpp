#include "cli/interruptible_run.h"

#include "cli/new_file.h"
#include "devices/unique_fd.h"

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

// While it lives, the signals that ask the program to end arrive at a descriptor instead.
class InterruptSignals
{
public:
    InterruptSignals()
    {
        sigemptyset(&m_signals);
        for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
            if (!isIgnored(signal))
                sigaddset(&m_signals, signal);
        }
        ::pthread_sigmask(SIG_BLOCK, &m_signals, &m_before);
        m_fd = orThrow(::signalfd(-1, &m_signals, SFD_CLOEXEC | SFD_NONBLOCK));
    }

    ~InterruptSignals() { ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }

    InterruptSignals(const InterruptSignals &) = delete;
    InterruptSignals &operator=(const InterruptSignals &) = delete;

    int fd() const { return m_fd.get(); }

    // The signal that has arrived, or 0.
    int take() const
    {
        signalfd_siginfo info = {};
        const bool hasOne = ::read(m_fd.get(), &info, sizeof(info)) == sizeof(info);
        return hasOne ? static_cast<int>(info.ssi_signo) : 0;
    }

private:
    sigset_t m_signals = {};
    sigset_t m_before = {};
    UniqueFd m_fd;
};

// The work on its own thread, which must not inherit unblocked signals: they are the
// waiting thread's to handle.
class WorkThread
{
public:
    explicit WorkThread(const std::function<void()> &work)
        : m_ended(orThrow(::eventfd(0, EFD_CLOEXEC))), m_thread([this, &work] {
              try {
                  work();
              } catch (...) {
                  m_failure = std::current_exception();
              }
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

// A person who asks twice does not want to wait for a slow device. A handler that tidies up
// first is left in place: it ends the process all the same.
[[noreturn]] void dieOf(int signal)
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, signal);
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
    for (bool hasEnded = false; !hasEnded;) {
        tick();
        hasEnded = waitForEnd(thread, signals);
        const int signal = signals.take();
        if (signal && isInterrupted)
            dieOf(signal);
        isInterrupted = isInterrupted || signal;
        if (isInterrupted)
            cancel();
    }
    tick();
    thread.join();
    return isInterrupted;
}
