#include "support/disk_faults.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

std::atomic<bool> lacksLinks{false};
std::atomic<bool> lacksRenames{false};
std::atomic<bool> lacksTimes{false};

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

IN_PLACE_OF_THE_SYSTEM int futimens(int file, const timespec times[2]) noexcept
{
    if (lacksTimes)
        return failWith(EPERM);
    return static_cast<int>(::syscall(SYS_utimensat, file, nullptr, times, 0));
}

IN_PLACE_OF_THE_SYSTEM int symlinkat(const char *target, int folder, const char *name) noexcept
{
    if (lacksLinks)
        return failWith(EPERM);
    return static_cast<int>(::syscall(SYS_symlinkat, target, folder, name));
}

namespace {

// Offset of the lower half of an argument, on a computer whose numbers begin with it.
constexpr unsigned argument(unsigned number)
{
    return static_cast<unsigned>(offsetof(seccomp_data, args)) + number * 8;
}

constexpr unsigned refuse(unsigned code)
{
    return SECCOMP_RET_ERRNO | code;
}

constexpr unsigned filesWithoutName = O_TMPFILE & ~O_DIRECTORY;

template <std::size_t length>
bool install(sock_filter (&filter)[length])
{
    const sock_fprog program = {length, filter};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

} // namespace

bool takeLinksAway()
{
    sock_filter filter[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_linkat, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, refuse(EPERM)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_renameat2, 0, 3),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, argument(4)), // the flags
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, 0, 5, 0),
        BPF_STMT(BPF_RET | BPF_K, refuse(EINVAL)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_openat, 0, 3),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, argument(2)), // the flags
        BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, filesWithoutName, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, refuse(EOPNOTSUPP)),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    return install(filter);
}

bool takeLocksAway()
{
    sock_filter filter[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_flock, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, refuse(ENOLCK)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_fcntl, 0, 4),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, argument(1)), // what it is to do
        BPF_JUMP(BPF_JMP | BPF_JGE | BPF_K, F_GETLK, 0, 2),
        BPF_JUMP(BPF_JMP | BPF_JGT | BPF_K, F_SETLKW, 1, 0),
        BPF_STMT(BPF_RET | BPF_K, refuse(ENOLCK)),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    return install(filter);
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

LackOfTimes::LackOfTimes()
{
    lacksTimes = true;
}

LackOfTimes::~LackOfTimes()
{
    lacksTimes = false;
}
