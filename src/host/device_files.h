#ifndef PHOTOLIB_HOST_DEVICE_FILES_H
#define PHOTOLIB_HOST_DEVICE_FILES_H

#include <QtGlobal>

/// The device file layer: how the plug-in reaches files on the device and on the host
/// computer. The host defines these functions; the loaded plug-in finds them in the
/// process.
///
/// Paths are UTF-8 and end with a NUL. No function may throw. The plug-in uses a `VFile`
/// from one thread at a time, but one `VDev` from several. It closes what it opened except
/// where an operation of the plug-in says otherwise; a host that wants those handles back
/// closes what is left open of a device when it lets the device go.

/// An open file system: the device's, or the host computer's. Opaque to the plug-in.
struct VDev;

/// An open file with its own position. Opaque to the plug-in.
struct VFile;

/// Which file system `vDevOpen` opens.
enum VDevType : int {
    VDevHost = 0,  ///< the host computer's own file system, with an empty path
    VDevDevice = 2 ///< the connected device named by `IIPod::devicePath`
};

/// Opens a file system. `path` is the device's name for `VDevDevice` and "" for
/// `VDevHost`. Returns a handle for `vDevClose`, or null on failure.
VDev *vDevOpen(VDevType type, const char *path);

/// Closes a file system that `vDevOpen` opened.
void vDevClose(VDev *dev);

/// Creates the folder `path` with any missing parents. The plug-in ignores the
/// result: an existing folder is as good.
bool vDevCreateDir(VDev *dev, const char *path);

/// The size of the file `path` in bytes; 0 when there is no such file.
qint64 vDevFileSize(VDev *dev, const char *path);

/// Opens the file `path`. Mode 0 reads, mode 1 writes and creates or truncates.
/// Returns a handle at position 0 for `vFileClose`, or null on failure.
VFile *vFileOpen(VDev *dev, const char *path, int mode);

/// Reads up to `len` bytes at the position into `buf` and moves the position.
/// Returns the number of bytes read, 0 at the end, less than 0 on an error; never
/// more than `len`.
int vFileRead(VFile *file, char *buf, int len);

/// Writes `len` bytes of `buf` at the position and moves it. Returns the number of
/// bytes written; fewer than `len` on a failure.
int vFileWrite(VFile *file, const char *buf, int len);

/// Moves the position to `offset` bytes from the start (`whence` 0) or from the end
/// (`whence` 2). Returns the new position from the start, or less than 0 on failure.
qint64 vFileSeek(VFile *file, qint64 offset, int whence);

/// The position in bytes from the start; after a seek to the end, the file's size.
qint64 vFileTell(VFile *file);

/// Closes a file that `vFileOpen` opened.
void vFileClose(VFile *file);

#endif // PHOTOLIB_HOST_DEVICE_FILES_H
