#ifndef PHOTOLIB_BASE_CANCEL_TOKEN_H
#define PHOTOLIB_BASE_CANCEL_TOKEN_H

#include <atomic>
#include <functional>
#include <mutex>
#include <utility>

/// Tells work on one thread that another thread wants it to end. What is cancelled once stays so.
///
/// Any thread may call each operation; the token outlives the work and its hooks.
class CancelToken
{
public:
    CancelToken() = default;
    CancelToken(const CancelToken &) = delete;
    CancelToken &operator=(const CancelToken &) = delete;

    /// Ends the work soon. Runs the hook, if there is one; may be called again and again.
    void cancel()
    {
        m_isCancelled = true;
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_hook)
            m_hook();
    }

    bool isCancelled() const { return m_isCancelled; }

    /// For work that looks at a flag by itself.
    const std::atomic<bool> *flag() const { return &m_isCancelled; }

private:
    friend class CancelHook;

    std::atomic<bool> m_isCancelled{false};
    std::mutex m_mutex; // guards the hook, also while it runs
    std::function<void()> m_hook;
};

/// Has `hook` run for each `cancel` during its lifetime, and at once when the token is cancelled
/// already: for work that waits where it sees no flag. One hook for a token at a time. The hook
/// runs on the thread that cancels and never after the end of the object.
class CancelHook
{
public:
    CancelHook(CancelToken &token, std::function<void()> hook) : m_token(token)
    {
        const std::lock_guard<std::mutex> lock(m_token.m_mutex);
        m_token.m_hook = std::move(hook);
        if (m_token.isCancelled())
            m_token.m_hook();
    }

    ~CancelHook()
    {
        const std::lock_guard<std::mutex> lock(m_token.m_mutex);
        m_token.m_hook = nullptr;
    }

    CancelHook(const CancelHook &) = delete;
    CancelHook &operator=(const CancelHook &) = delete;

private:
    CancelToken &m_token;
};

#endif // PHOTOLIB_BASE_CANCEL_TOKEN_H
