#ifndef PHOTOLIB_HOST_TRANSFER_MONITOR_H
#define PHOTOLIB_HOST_TRANSFER_MONITOR_H

#include "devices/device_file_system.h"

/// Hears what the plug-in does with files, of which it tells its caller little: how far a
/// copy is, and why an operation failed. Called on the thread that uses the plug-in, so
/// implementations must be quick and guard what they share.
class TransferObserver
{
public:
    virtual ~TransferObserver() {}

    /// `count` more bytes have been written to a file of the host computer.
    virtual void bytesWritten(qint64 count) = 0;

    /// Opening, reading, seeking or writing the file `name` failed, or, where the error is
    /// Damaged, the unpacking of a picture from it.
    virtual void failed(const QByteArray &name, const FileError &error) = 0;
};

/// Has `observer` told of every transfer on the thread that makes the object, until the end of the
/// scope. Objects may be nested, and the innermost one has its observer told.
class TransferWatch
{
public:
    explicit TransferWatch(TransferObserver *observer);
    ~TransferWatch();

    TransferWatch(const TransferWatch &) = delete;
    TransferWatch &operator=(const TransferWatch &) = delete;

private:
    TransferObserver *const m_outer;
};

/// The calling thread's observer, or one that ignores everything.
TransferObserver &transferObserver();

#endif // PHOTOLIB_HOST_TRANSFER_MONITOR_H
