#include "support/watched_changes.h"

#include "base/unique_fd.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <fcntl.h>
#include <future>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr unsigned changes[] = {
    SYS_write,     SYS_writev,   SYS_pwrite64, SYS_pwritev,   SYS_ftruncate,
    SYS_fallocate, SYS_mkdirat,  SYS_linkat,   SYS_symlinkat, SYS_fsync,
    SYS_fdatasync, SYS_syncfs,   SYS_unlinkat, SYS_renameat2,
#ifdef SYS_mkdir // older computers have the older calls, too
    SYS_mkdir,     SYS_rmdir,    SYS_unlink,   SYS_link,      SYS_symlink,
    SYS_rename,    SYS_renameat,
#endif
};

bool isRemoval(int call)
{
#ifdef SYS_unlink
    if (call == SYS_unlink || call == SYS_rmdir)
        return true;
#endif
    return call == SYS_unlinkat;
}

// Offset of the lower half of an argument, on a computer whose numbers begin with it.
constexpr unsigned argument(unsigned number)
{
    return static_cast<unsigned>(offsetof(seccomp_data, args)) + number * 8;
}

std::vector<sock_filter> changesFilter()
{
    constexpr unsigned makes = O_CREAT | (O_TMPFILE & ~O_DIRECTORY);
    std::vector<sock_filter> filter = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
    for (const unsigned call : changes) {
        filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 1));
        filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF));
    }
    filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_openat, 0, 3));
    filter.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, argument(2))); // the flags
    filter.push_back(BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, makes, 0, 1));
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF));
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    return filter;
}

bool needsLinks(const seccomp_data &call)
{
    constexpr unsigned withoutName = O_TMPFILE & ~O_DIRECTORY;
#ifdef SYS_link
    if (call.nr == SYS_link)
        return true;
#endif
    return call.nr == SYS_linkat || (call.nr == SYS_openat && (call.args[2] & withoutName) != 0);
}

// A sanitizer writes to a pipe to learn which memory there is.
bool isOnDisk(const seccomp_data &call)
{
    struct stat status = {};
    return (call.nr != SYS_write && call.nr != SYS_writev) ||
           (::fstat(static_cast<int>(call.args[0]), &status) == 0 && S_ISREG(status.st_mode));
}

// Holds up the changes of the calling thread from now on, and of those that it starts. Returns what
// tells of them; not open where that cannot be.
UniqueFd holdUpChanges()
{
    std::vector<sock_filter> filter = changesFilter();
    const sock_fprog program = {static_cast<unsigned short>(filter.size()), filter.data()};
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0)
        return UniqueFd();
    return UniqueFd(static_cast<int>(::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER,
                                               SECCOMP_FILTER_FLAG_NEW_LISTENER, &program)));
}

// Waits for the next change; false when `end` can be read before.
bool waitForChange(int listener, int end)
{
    pollfd descriptors[] = {{listener, POLLIN, 0}, {end, POLLIN, 0}};
    while (::poll(descriptors, 2, -1) < 0) {
    }
    return (descriptors[1].revents & (POLLIN | POLLHUP)) == 0;
}

int judgeChanges(int listener, int end, const std::function<int(const DiskChange &)> &judge)
{
    int count = 0;
    while (waitForChange(listener, end)) {
        seccomp_notif call = {};
        if (::ioctl(listener, SECCOMP_IOCTL_NOTIF_RECV, &call) != 0)
            continue;
        seccomp_notif_resp answer = {};
        answer.id = call.id;
        if (isOnDisk(call.data))
            answer.error = -judge({++count, isRemoval(call.data.nr), needsLinks(call.data)});
        answer.flags = answer.error == 0 ? SECCOMP_USER_NOTIF_FLAG_CONTINUE : 0;
        ::ioctl(listener, SECCOMP_IOCTL_NOTIF_SEND, &answer);
    }
    return count;
}

} // namespace

std::optional<int> runWatched(const std::function<void()> &work,
                              const std::function<int(const DiskChange &change)> &judge)
{
    int ends[2] = {};
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return std::nullopt;
    const UniqueFd end(ends[0]);
    UniqueFd working(ends[1]);
    std::promise<int> listening;
    std::thread worker([&] {
        const UniqueFd listener = holdUpChanges();
        listening.set_value(listener.get());
        if (listener.isOpen())
            work();
        working = UniqueFd(); // which is no change
    });
    const int listener = listening.get_future().get();
    const int count = judgeChanges(listener, end.get(), judge);
    worker.join();
    return listener < 0 ? std::nullopt : std::optional<int>(count);
}

std::optional<bool> isKilledAt(int number, const std::function<void()> &work,
                               const std::function<int(const DiskChange &change)> &judge)
{
    constexpr int noWatch = 77;
    const pid_t process = ::fork();
    if (process == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        const auto killAt = [number, &judge](const DiskChange &change) {
            return change.number == number ? ::kill(::getpid(), SIGKILL) : judge(change);
        };
        ::_exit(runWatched(work, killAt) ? 0 : noWatch);
    }
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == noWatch)
        return std::nullopt;
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
}
