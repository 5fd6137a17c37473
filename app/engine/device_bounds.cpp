#include "engine/device_bounds.h"

#include "base/error.h"
#include "base/folders.h"
#include "devices/folder_file_system.h"
#include "host/device_kind.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <set>
#include <sys/stat.h>
#include <system_error>
#include <tuple>

namespace {

constexpr int folderFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;

// What tells a folder from every other, whatever it is called.
using Identity = std::tuple<dev_t, ino_t>;

[[noreturn]] void failToTell(const QByteArray &path)
{
    throw Error(path.toStdString(), "whether it lies in the device cannot be told (" +
                                        std::generic_category().message(errno) + ")");
}

Identity identityOf(const UniqueFd &folder, const QByteArray &path)
{
    struct stat status = {};
    if (!folder.isOpen() || ::fstat(folder.get(), &status) != 0)
        failToTell(path);
    return {status.st_dev, status.st_ino};
}

UniqueFd openNearest(QByteArray path)
{
    for (;;) {
        while (path.size() > 1 && path.endsWith('/'))
            path.chop(1);
        UniqueFd folder(::open(path.constData(), folderFlags));
        if (folder.isOpen() || path == "/" || path == ".")
            return folder;
        path = parentFolder(path);
    }
}

// Whether any of the folders from `path` up to the root is one that `isMeant` says.
bool isAnyOnTheWayUp(const QByteArray &path, const std::function<bool(const UniqueFd &)> &isMeant)
{
    UniqueFd folder = openNearest(path);
    Identity identity = identityOf(folder, path);
    for (;;) {
        if (isMeant(folder))
            return true;
        UniqueFd parent(::openat(folder.get(), "..", folderFlags));
        const Identity above = identityOf(parent, path);
        if (above == identity) // the root's parent is the root
            return false;
        folder = std::move(parent);
        identity = above;
    }
}

// Adds the folders in `folder` and in those: a mount may give one of them alone another name.
void addFoldersBelow(const QByteArray &folder, std::set<Identity> *identities)
{
    namespace fs = std::filesystem;
    constexpr int deepest = 1; // below the device's root, as DCIM/100APPLE
    std::error_code error;
    fs::recursive_directory_iterator each(folder.toStdString(),
                                          fs::directory_options::skip_permission_denied, error);
    for (; !error && each != fs::recursive_directory_iterator(); each.increment(error)) {
        struct stat status = {};
        if (::lstat(each->path().c_str(), &status) != 0 || !S_ISDIR(status.st_mode))
            continue;
        identities->insert({status.st_dev, status.st_ino});
        if (each.depth() >= deepest)
            each.disable_recursion_pending();
    }
}

bool isDevice(const UniqueFd &folder)
{
    FileError error;
    DeviceKind kind = DeviceKind::None;
    const auto files =
        FolderFileSystem::openFolder("/proc/self/fd/" + QByteArray::number(folder.get()), &error);
    return files && findDeviceKind(*files, &kind, &error) && kind != DeviceKind::None;
}

[[noreturn]] void refuse(const QByteArray &named)
{
    throw Error(named.toStdString(),
                "photolib never writes to the device; choose a folder outside it");
}

} // namespace

bool liesIn(const QByteArray &path, const QByteArray &device)
{
    std::set<Identity> meant = {
        identityOf(UniqueFd(::open(device.constData(), folderFlags)), device)};
    addFoldersBelow(device, &meant);
    return isAnyOnTheWayUp(
        path, [&](const UniqueFd &folder) { return meant.count(identityOf(folder, path)) > 0; });
}

void refuseInDevice(const QByteArray &path, const QByteArray &device, const QByteArray &named)
{
    if (liesIn(path, device))
        refuse(named);
}

void refuseInAnyDevice(const QByteArray &path)
{
    if (isAnyOnTheWayUp(isFolder(path) ? path + "/.." : path, isDevice))
        refuse(path);
}

void refuseDeviceAsTarget(const QByteArray &path)
{
    if (isDevice(UniqueFd(::open(path.constData(), folderFlags))))
        throw Error(path.toStdString(), "a device, not a folder to copy to");
}
