#ifndef PHOTOLIB_TESTS_APP_TERMINAL_H
#define PHOTOLIB_TESTS_APP_TERMINAL_H

#include "base/unique_fd.h"

#include <QByteArray>

#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

/// Both ends of a pseudo-terminal.
class Terminal
{
public:
    Terminal() : m_master(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC))
    {
        if (m_master.isOpen() && ::grantpt(m_master.get()) == 0 && ::unlockpt(m_master.get()) == 0)
            m_slave = UniqueFd(::open(::ptsname(m_master.get()), O_RDWR | O_NOCTTY | O_CLOEXEC));
    }

    bool isOpen() const { return m_slave.isOpen(); }
    int slave() const { return m_slave.get(); }

    void setColumns(unsigned short columns)
    {
        const winsize size = {24, columns, 0, 0};
        ::ioctl(m_slave.get(), TIOCSWINSZ, &size);
    }

    /// Everything shown so far, after waiting until it contains `text`, but not for ever.
    QByteArray shownUntil(const QByteArray &text)
    {
        constexpr int longestWait = 60 * 1000; // milliseconds
        pollfd descriptor = {m_master.get(), POLLIN, 0};
        char buffer[4096];
        while (!m_shown.contains(text) && ::poll(&descriptor, 1, longestWait) > 0) {
            const ssize_t count = ::read(m_master.get(), buffer, sizeof(buffer));
            if (count <= 0)
                break;
            m_shown.append(buffer, static_cast<int>(count));
        }
        return m_shown;
    }

private:
    UniqueFd m_master;
    UniqueFd m_slave;
    QByteArray m_shown;
};

#endif // PHOTOLIB_TESTS_APP_TERMINAL_H
