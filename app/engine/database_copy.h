#ifndef PHOTOLIB_ENGINE_DATABASE_COPY_H
#define PHOTOLIB_ENGINE_DATABASE_COPY_H

#include "host/transfer_monitor.h"

#include <QByteArray>
#include <QList>
#include <QMap>

#include <atomic>
#include <mutex>

/// The files of a device's photo database: which of them there are, how much there is to
/// copy, and how the copying goes.
///
/// The observer's operations are called on the thread that parses, the others from any.
class DatabaseCopy : public TransferObserver
{
public:
    /// Looks at the files of an iOS device. Throws Error when one of them is there
    /// but cannot be read; `workFolder` is where the copies go, with a closing "/".
    DatabaseCopy(DeviceFileSystem &files, const QByteArray &workFolder);

    /// Bytes of all files together.
    qint64 total() const { return m_total; }

    /// Bytes copied so far.
    qint64 done() const { return m_done; }

    /// The database itself on the device, as a person knows it.
    QByteArray deviceDatabase() const { return m_deviceDatabase; }

    /// The local copy of it.
    QByteArray localDatabase() const;

    /// Notes a failure when the files have changed since the object was made: the copies
    /// are then of no one moment, and may be read as a library that never was. A journal
    /// may have grown. To be called when the copying is over.
    void requireUnchanged(DeviceFileSystem &files);

    /// Why a file that is there was not copied as it is, "NAME: CAUSE"; empty when all is
    /// well.
    QByteArray failure() const;

    void bytesWritten(qint64 count) override { m_done += count; }
    void failed(const QByteArray &name, const FileError &error) override;

private:
    void look(DeviceFileSystem &files, const QByteArray &path);
    void fail(const QByteArray &name, const FileError &error);
    bool concerns(const QByteArray &name) const;

    const QByteArray m_workFolder;
    const QByteArray m_deviceDatabase;
    QList<QByteArray> m_missing;        // paths on the device
    QList<QByteArray> m_foundNames;     // as a person knows them
    QMap<QByteArray, FileInfo> m_found; // by path on the device
    qint64 m_total = 0;
    std::atomic<qint64> m_done{0};
    mutable std::mutex m_mutex; // guards the failure
    QByteArray m_failure;
};

#endif // PHOTOLIB_ENGINE_DATABASE_COPY_H
