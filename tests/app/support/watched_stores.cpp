#include "support/watched_stores.h"

#include <climits>
#include <mutex>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace {

struct Stores {
    std::recursive_mutex mutex; // what is called may ask what there was
    bool areWatched = false;
    std::function<void(const QByteArray &path)> beforeStore;
    QList<QByteArray> paths;
};

Stores &stores()
{
    static auto *const instance = new Stores; // outlives every thread
    return *instance;
}

QByteArray pathOf(int file)
{
    const QByteArray link = "/proc/self/fd/" + QByteArray::number(file);
    char path[PATH_MAX];
    const ssize_t length = ::readlink(link.constData(), path, sizeof path);
    return QByteArray(path, static_cast<int>(qMax<ssize_t>(length, 0)));
}

void note(int file)
{
    const std::lock_guard<std::recursive_mutex> lock(stores().mutex);
    if (!stores().areWatched)
        return;
    const QByteArray path = pathOf(file);
    stores().beforeStore(path);
    stores().paths.append(path);
}

} // namespace

// They take the place of the system library's functions in the whole test program.
#define IN_PLACE_OF_THE_SYSTEM extern "C" __attribute__((visibility("default")))

IN_PLACE_OF_THE_SYSTEM int fsync(int file)
{
    note(file);
    return static_cast<int>(::syscall(SYS_fsync, file));
}

IN_PLACE_OF_THE_SYSTEM int fdatasync(int file)
{
    note(file);
    return static_cast<int>(::syscall(SYS_fdatasync, file));
}

WatchedStores::WatchedStores(std::function<void(const QByteArray &path)> beforeStore)
{
    const std::lock_guard<std::recursive_mutex> lock(stores().mutex);
    stores().areWatched = true;
    stores().beforeStore = std::move(beforeStore);
    stores().paths.clear();
}

WatchedStores::~WatchedStores()
{
    const std::lock_guard<std::recursive_mutex> lock(stores().mutex);
    stores().areWatched = false;
}

bool WatchedStores::has(const QByteArray &path) const
{
    const std::lock_guard<std::recursive_mutex> lock(stores().mutex);
    return stores().paths.contains(path);
}
