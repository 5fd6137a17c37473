#include "cli/output.h"

#include "base/error.h"

#include <cerrno>
#include <poll.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace {

constexpr int bufferSize = 1 << 16;

[[noreturn]] void fail(int code)
{
    if (code == EPIPE)
        throw ReaderGone();
    throw Error("standard output", std::generic_category().message(code));
}

// A pipe that another program has set not to wait is waited for all the same.
void waitForReader()
{
    pollfd descriptor = {STDOUT_FILENO, POLLOUT, 0};
    ::poll(&descriptor, 1, -1);
}

} // namespace

void Output::write(const QByteArray &text)
{
    m_buffer += text;
    if (m_buffer.size() >= bufferSize)
        flush();
}

void Output::flush()
{
    if (const std::function<void()> beforeFirst = std::exchange(m_beforeFirst, nullptr))
        beforeFirst();
    for (int done = 0; done < m_buffer.size();) {
        const auto left = static_cast<size_t>(m_buffer.size() - done);
        const ssize_t count = ::write(STDOUT_FILENO, m_buffer.constData() + done, left);
        if (count < 0 && errno == EAGAIN)
            waitForReader();
        else if (count < 0 && errno != EINTR)
            fail(errno);
        if (count > 0)
            done += static_cast<int>(count);
    }
    m_buffer.clear();
}
