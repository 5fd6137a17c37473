#include "sample/write_ahead_log.h"

#include "sample/sample_error.h"
#include "sample/sqlite_handle.h"

#include <QFile>
#include <QtEndian>

#include <array>

namespace sample {

namespace {

constexpr int logHeaderSize = 32;
constexpr int frameHeaderSize = 24;
constexpr int pageSize = 4096;
constexpr int versionOffset = 96; // in the first page of the database
constexpr quint32 writerVersion = 3024000;
constexpr quint32 salts[] = {0x5a3c9e17, 0x1db4e680};

/// The running checksum of a log. Its words are little-endian when the magic number in the
/// log's first four bytes is even, big-endian when it is odd.
class LogChecksum
{
public:
    explicit LogChecksum(bool bigEndian) : m_bigEndian(bigEndian) {}

    /// Adds `size` bytes, a multiple of 8.
    void add(const char *bytes, int size)
    {
        for (int i = 0; i < size; i += 8) {
            m_first += word(bytes + i) + m_second;
            m_second += word(bytes + i + 4) + m_first;
        }
    }

    void store(char *to) const
    {
        qToBigEndian(m_first, to);
        qToBigEndian(m_second, to + 4);
    }

private:
    quint32 word(const char *at) const
    {
        return m_bigEndian ? qFromBigEndian<quint32>(at) : qFromLittleEndian<quint32>(at);
    }

    bool m_bigEndian;
    quint32 m_first = 0;
    quint32 m_second = 0;
};

[[noreturn]] void fail(const QFile &file)
{
    throw SampleError(
        QStringLiteral("cannot write %1: %2").arg(file.fileName(), file.errorString()));
}

void openForChange(QFile &file)
{
    if (!file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly))
        fail(file);
}

template <std::size_t size>
void readAt(QFile &file, qint64 offset, std::array<char, size> &bytes)
{
    constexpr auto all = static_cast<qint64>(size);
    if (!file.seek(offset) || file.read(bytes.data(), all) != all)
        fail(file);
}

template <std::size_t size>
void writeAt(QFile &file, qint64 offset, const std::array<char, size> &bytes)
{
    constexpr auto all = static_cast<qint64>(size);
    if (!file.seek(offset) || file.write(bytes.data(), all) != all)
        fail(file);
}

using LogHeader = std::array<char, logHeaderSize>;
using Frame = std::array<char, frameHeaderSize + pageSize>;

void putSalts(char *at)
{
    qToBigEndian(salts[0], at);
    qToBigEndian(salts[1], at + 4);
}

LogChecksum rewriteHeader(QFile &log)
{
    LogHeader header;
    readAt(log, 0, header);
    LogChecksum checksum((header[3] & 1) != 0);
    putSalts(header.data() + 16);
    checksum.add(header.data(), logHeaderSize - 8);
    checksum.store(header.data() + logHeaderSize - 8);
    writeAt(log, 0, header);
    return checksum;
}

void rewriteFrame(Frame &frame, LogChecksum &checksum)
{
    char *page = frame.data() + frameHeaderSize;
    if (qFromBigEndian<quint32>(frame.data()) == 1)
        qToBigEndian(writerVersion, page + versionOffset);
    putSalts(frame.data() + 8);
    checksum.add(frame.data(), 8);
    checksum.add(page, pageSize);
    checksum.store(frame.data() + 16);
}

void rewriteLog(const QString &path)
{
    QFile log(path);
    openForChange(log);
    LogChecksum checksum = rewriteHeader(log);
    Frame frame;
    for (qint64 at = logHeaderSize; at < log.size(); at += static_cast<qint64>(frame.size())) {
        readAt(log, at, frame);
        rewriteFrame(frame, checksum);
        writeAt(log, at, frame);
    }
    if (!log.flush())
        fail(log);
}

void rewriteMain(const QString &path)
{
    QFile file(path);
    openForChange(file);
    std::array<char, 4> version;
    qToBigEndian(writerVersion, version.data());
    writeAt(file, versionOffset, version);
    if (!file.flush())
        fail(file);
}

} // namespace

void makeLogReproducible(const QString &path)
{
    rewriteMain(path);
    rewriteLog(path + QLatin1String("-wal"));
}

void indexLog(const QString &path)
{
    Database reader(path);
    reader.run("SELECT count(*) FROM sqlite_master");
    reader.closeKeepingLog();
}

} // namespace sample
