#ifndef PHOTOLIB_BENCH_BENCH_HOST_H
#define PHOTOLIB_BENCH_BENCH_HOST_H

#include "host/iipod.h"

#include <string>

/// The device of a measurement: a folder laid out as a media root, whose path is also the
/// name under which the bench's file layer opens it. The log is counted and dropped.
class BenchDevice : public IIPod
{
public:
    BenchDevice(const std::string &root, const std::string &workFolder)
        : m_root(QString::fromStdString(root)), m_workFolder(QString::fromStdString(workFolder))
    {
    }

    bool isAccessBlocked() override { return false; }
    QString devicePath() override { return m_root; }
    QString driveName() override { return QString(); }
    bool isIOSDevice() override { return true; }
    QString localDataPath() override { return m_workFolder; }

private:
    QString m_root;
    QString m_workFolder;
};

/// What the handles take in the heap: of a device under its name, and of an open file.
qint64 deviceHandleBytes(IIPod &device);
qint64 fileHandleBytes();

/// Whether failures that the plug-in logs are told; they are at the start.
void tellFailures(bool told);

#endif // PHOTOLIB_BENCH_BENCH_HOST_H
