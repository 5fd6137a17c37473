#ifndef PHOTOLIB_BASE_BLOCKED_SIGNALS_H
#define PHOTOLIB_BASE_BLOCKED_SIGNALS_H

#include <csignal>
#include <initializer_list>

/// A set of the signals `numbers`.
inline sigset_t signalSet(std::initializer_list<int> numbers)
{
    sigset_t set;
    sigemptyset(&set);
    for (const int number : numbers)
        sigaddset(&set, number);
    return set;
}

/// Keeps signals from the thread that makes it, and ends there: those that arrive meanwhile
/// come when it has ended.
class BlockedSignals
{
public:
    explicit BlockedSignals(const sigset_t &set) { ::pthread_sigmask(SIG_BLOCK, &set, &m_before); }
    ~BlockedSignals() { ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }

    BlockedSignals(const BlockedSignals &) = delete;
    BlockedSignals &operator=(const BlockedSignals &) = delete;

private:
    sigset_t m_before;
};

#endif // PHOTOLIB_BASE_BLOCKED_SIGNALS_H
