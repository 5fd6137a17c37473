#ifndef PHOTOLIB_BASE_UNIQUE_FD_H
#define PHOTOLIB_BASE_UNIQUE_FD_H

#include <unistd.h>

#include <utility>

/// Owns one file descriptor; -1 is none.
class UniqueFd
{
public:
    explicit UniqueFd(int fd = -1) : m_fd(fd) {}
    UniqueFd(UniqueFd &&other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}

    UniqueFd &operator=(UniqueFd &&other) noexcept
    {
        std::swap(m_fd, other.m_fd);
        return *this;
    }

    ~UniqueFd()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }

    bool isOpen() const { return m_fd >= 0; }
    int get() const { return m_fd; }
    int release() { return std::exchange(m_fd, -1); }

private:
    int m_fd;
};

#endif // PHOTOLIB_BASE_UNIQUE_FD_H
