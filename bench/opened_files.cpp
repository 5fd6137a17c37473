#include "opened_files.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

[[noreturn]] void fail(const char *what)
{
    std::fprintf(stderr, "bench: %s\n", what);
    std::exit(1);
}

// The openings among the events in `buffer`.
int openingsIn(const char *buffer, std::size_t length)
{
    int openings = 0;
    for (std::size_t at = 0; at < length;) {
        inotify_event event;
        std::memcpy(&event, buffer + at, sizeof event);
        if (event.mask & IN_Q_OVERFLOW)
            fail("more files were opened than the kernel remembers");
        if ((event.mask & IN_OPEN) && !(event.mask & IN_ISDIR))
            ++openings;
        at += sizeof event + event.len;
    }
    return openings;
}

} // namespace

OpenedFiles::OpenedFiles(const std::vector<std::string> &folders)
    : m_fd(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
{
    for (const std::string &folder : folders) {
        if (inotify_add_watch(m_fd, folder.c_str(), IN_OPEN) < 0)
            fail("the folders of the photos cannot be watched");
    }
}

OpenedFiles::~OpenedFiles()
{
    close(m_fd);
}

int OpenedFiles::count()
{
    std::vector<char> buffer(1 << 16);
    int openings = 0;
    ssize_t length = 0;
    while ((length = read(m_fd, buffer.data(), buffer.size())) > 0)
        openings += openingsIn(buffer.data(), std::size_t(length));
    if (length < 0 && errno != EAGAIN)
        fail("the openings of files cannot be read");
    return openings;
}
