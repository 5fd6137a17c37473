#ifndef PHOTOLIB_HOST_DEVICE_HANDLES_H
#define PHOTOLIB_HOST_DEVICE_HANDLES_H

#include "devices/local_file.h"

#include <QByteArray>

#include <memory>
#include <mutex>
#include <unordered_map>

struct VDev;

/// An open file, for one thread at a time; owned by its file system.
struct VFile {
    VDev *dev = nullptr;
    std::unique_ptr<DeviceFile> file;
    LocalFile *writable = nullptr; ///< `file` when it is open for writing, else null
    QByteArray name;               ///< as a person knows it
    qint64 position = 0;           ///< bytes from the start
};

/// A file system with its open files, for any number of threads. There is one for the host
/// computer and one for each registered device; opening and closing it does nothing, so
/// that a handle that the plug-in forgets is no leak.
struct VDev {
    /// `deviceFiles` is null for the host computer's own files.
    explicit VDev(std::shared_ptr<DeviceFileSystem> deviceFiles) : files(std::move(deviceFiles)) {}

    const std::shared_ptr<DeviceFileSystem> files;

    /// Takes over `file` and returns it as a handle.
    VFile *add(std::unique_ptr<VFile> file);

    /// Closes `file`, which this file system opened.
    void close(VFile *file);

private:
    std::mutex m_mutex; // guards the map, not the files in it
    std::unordered_map<VFile *, std::unique_ptr<VFile>> m_openFiles;
};

/// The host computer's file system.
VDev *hostFileSystem();

/// The device registered as `name`; null when there is none.
VDev *registeredDevice(const QByteArray &name);

#endif // PHOTOLIB_HOST_DEVICE_HANDLES_H
