#ifndef PHOTOLIB_TESTS_APP_UNREAD_PIPE_H
#define PHOTOLIB_TESTS_APP_UNREAD_PIPE_H

#include "base/unique_fd.h"

#include <QByteArray>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

/// The reading end of the named pipe `path`, which keeps whoever writes to it waiting.
class UnreadPipe
{
public:
    explicit UnreadPipe(const QByteArray &path)
        : m_fd(::open(path.constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC))
    {
    }

    /// Whether the next byte that is written has to wait.
    bool isFull() const
    {
        pollfd descriptor = {m_fd.get(), POLLOUT, 0};
        return ::poll(&descriptor, 1, 0) == 0;
    }

    /// What was written, and makes room.
    QByteArray readAll() const
    {
        QByteArray bytes(1 << 20, '\0');
        const ssize_t count = ::read(m_fd.get(), bytes.data(), size_t(bytes.size()));
        return bytes.left(int(count));
    }

private:
    const UniqueFd m_fd;
};

#endif // PHOTOLIB_TESTS_APP_UNREAD_PIPE_H
