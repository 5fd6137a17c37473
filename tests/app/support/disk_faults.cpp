#include "support/disk_faults.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

std::atomic<bool> lacksLinks{false};
std::atomic<bool> lacksRenames{false};

int failWith(int code)
{
    errno = code;
    return -1;
}

} // namespace

// They take the place of the system library's functions in the whole test program.
#define IN_PLACE_OF_THE_SYSTEM extern "C" __attribute__((visibility("default")))

IN_PLACE_OF_THE_SYSTEM int renameat2(int fromFolder, const char *from, int toFolder, const char *to,
                                     unsigned int flags) noexcept
{
    if (lacksLinks && flags != 0)
        return failWith(EINVAL);
    return static_cast<int>(::syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags));
}

IN_PLACE_OF_THE_SYSTEM int renameat(int fromFolder, const char *from, int toFolder,
                                    const char *to) noexcept
{
    if (lacksRenames)
        return failWith(EIO);
    return static_cast<int>(::syscall(SYS_renameat2, fromFolder, from, toFolder, to, 0));
}

IN_PLACE_OF_THE_SYSTEM int linkat(int fromFolder, const char *from, int toFolder, const char *to,
                                  int flags) noexcept
{
    if (lacksLinks)
        return failWith(EPERM);
    return static_cast<int>(::syscall(SYS_linkat, fromFolder, from, toFolder, to, flags));
}

LackOfLinks::LackOfLinks()
{
    lacksLinks = true;
}

LackOfLinks::~LackOfLinks()
{
    lacksLinks = false;
}

LackOfRenames::LackOfRenames()
{
    lacksRenames = true;
}

LackOfRenames::~LackOfRenames()
{
    lacksRenames = false;
}
