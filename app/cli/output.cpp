#include "cli/output.h"

#include "base/error.h"

#include <algorithm>
#include <cerrno>
#include <climits>
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

// Whether something can be written without waiting, after at most `milliseconds`; negative for no
// limit.
bool waitForReader(int milliseconds)
{
    pollfd descriptor = {STDOUT_FILENO, POLLOUT, 0};
    return ::poll(&descriptor, 1, milliseconds) > 0;
}

} // namespace

bool Output::isTerminal()
{
    return ::isatty(STDOUT_FILENO) != 0;
}

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
    for (int done = 0; done < m_buffer.size();)
        done += writeSome(done);
    m_buffer.clear();
}

// Writes a part of the buffer, and returns how much.
int Output::writeSome(int from)
{
    constexpr int checkMilliseconds = 100;
    int length = m_buffer.size() - from;
    if (m_whileWaiting) {
        while (!waitForReader(checkMilliseconds))
            m_whileWaiting();
        length = std::min(length, PIPE_BUF); // a pipe that takes more would wait for it
    }
    const ssize_t count =
        ::write(STDOUT_FILENO, m_buffer.constData() + from, static_cast<size_t>(length));
    // A pipe that another program has set not to wait is waited for all the same.
    if (count < 0 && errno == EAGAIN)
        waitForReader(-1);
    else if (count < 0 && errno != EINTR)
        fail(errno);
    return count > 0 ? static_cast<int>(count) : 0;
}
