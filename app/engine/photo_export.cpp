#include "engine/photo_export.h"

#include "base/byte_count.h"
#include "base/error.h"
#include "base/file_names.h"
#include "devices/encoded_names.h"
#include "devices/memory_file.h"
#include "engine/export_folder.h"
#include "engine/photo_text.h"

#include <cerrno>
#include <cstring>
#include <limits>
#include <system_error>

namespace {

constexpr int blockSize = 2 << 20;

struct Cancelled {
};

// The file on the device is not what it was when its copy was begun.
struct Changed {
};

// What keeps one file from being copied, and not the next one.
struct FileFailure {
    QString cause;
};

qint64 saturatedSum(qint64 a, qint64 b)
{
    qint64 sum = 0;
    return __builtin_add_overflow(a, b, &sum) ? std::numeric_limits<qint64>::max() : sum;
}

// Throws what a failure on the device means for the export.
[[noreturn]] void failToRead(const FileError &error)
{
    if (error.kind == FileError::Disconnected)
        throw Error("the device", error.text.toStdString());
    throw FileFailure{failureText(error)};
}

// What the item makes of what the device stores.
MadeFile madeFile(const ExportItem &item)
{
    MadeFile file = item.make();
    if (file.failure.kind != FileError::None)
        failToRead(file.failure);
    return file;
}

// Whether a disk that was given the time `time` may give it back as `held`. Disks hold times in
// nanoseconds, steps of 100 of them (NTFS), microseconds, hundredths of a second (exFAT), seconds
// or every other second (FAT), and differ in how they round. What is no whole number of such a step
// comes from a disk of finer ones, where nothing else would do.
bool isHeldAs(qint64 held, qint64 time)
{
    constexpr qint64 second = 1000000000;
    qint64 difference = 0;
    if (__builtin_sub_overflow(held, time, &difference))
        return false;
    for (const qint64 step :
         {qint64(1), qint64(100), second / 1000000, second / 100, second, 2 * second}) {
        if (held % step == 0 && difference < step && difference > -step)
            return true;
    }
    return false;
}

// Whether a disk refuses the one file only, for its size or its name.
bool concernsOneFile(const std::error_code &code)
{
    const int value = code.value();
    return value == EFBIG || value == ENAMETOOLONG || value == EINVAL || value == EILSEQ;
}

} // namespace

// What is copied, and the copy of it once there is one.
struct PhotoExport::Source {
    const ExportItem &item;
    QByteArray name;
    qint64 size;
    std::optional<qint64> modified;
    bool isKnownByTime;               // of its copies
    FileInfo before;                  // of a file of the device, before it was opened
    std::unique_ptr<DeviceFile> file; // null until its content is needed
    std::optional<AtomicFile> copy = std::nullopt;
};

QString ExportCounts::text() const
{
    const QString files = copied == 1 ? QStringLiteral("file") : QStringLiteral("files");
    QString text = QStringLiteral("copied %1 %2 (%3), %4 already there")
                       .arg(QString::number(copied), files, byteCountText(copiedBytes),
                            QString::number(present));
    if (absent > 0)
        text += QStringLiteral(", %1 not on the device").arg(absent);
    if (failed > 0)
        text += QStringLiteral(", %1 failed").arg(failed);
    return text;
}

PhotoExport::PhotoExport(DeviceFileSystem &files, ExportFolder &folder, QVector<ExportItem> items,
                         ExportComparison comparison)
    : m_files(files), m_folder(folder), m_items(std::move(items)), m_comparison(comparison),
      m_alike(alike(m_items)), m_block(blockSize, '\0'), m_otherBlock(blockSize, '\0')
{
    for (const ExportItem &item : m_items)
        m_totalBytes = saturatedSum(m_totalBytes, item.info.size);
}

// Those of several items, whose times may well be the same, too: the pictures of a burst on a
// disk of coarse times, say. A file in the folder could be the copy of any of them.
PhotoExport::NamesAndSizes PhotoExport::alike(const QVector<ExportItem> &items)
{
    NamesAndSizes seen;
    NamesAndSizes alike;
    for (const ExportItem &item : items) {
        const auto nameAndSize = std::make_pair(comparedName(item.name), item.info.size);
        if (!seen.insert(nameAndSize).second)
            alike.insert(nameAndSize);
    }
    return alike;
}

void PhotoExport::run()
{
    try {
        for (const ExportItem &item : m_items) {
            handle(item);
            m_position = 0;
            m_doneBytes = saturatedSum(m_doneBytes, item.info.size);
        }
    } catch (const Cancelled &) {
        return;
    }
}

void PhotoExport::handle(const ExportItem &item)
{
    if (item.failure.kind == FileError::NotFound) {
        addAbsent(item);
        return;
    }
    try {
        if (!tryToStore(item, true) && !tryToStore(item, false))
            throw FileFailure{QStringLiteral("changed while it was read, twice")};
    } catch (const FileFailure &failure) {
        addFailure(item, failure.cause);
    } catch (const std::system_error &error) {
        const QString cause = QString::fromStdString(error.code().message());
        if (!concernsOneFile(error.code()))
            throw Error(m_folder.path().toStdString(), cause.toStdString());
        addFailure(item, cause);
    }
}

// False when the file changed meanwhile, or is not what was foretold of it.
bool PhotoExport::tryToStore(const ExportItem &item, bool believesForetold)
{
    try {
        Source source = sourceOf(item);
        if (item.make && !(item.isForetold && believesForetold))
            makeNow(&source);
        store(source);
        return true;
    } catch (const Changed &) {
        return false;
    }
}

PhotoExport::Source PhotoExport::sourceOf(const ExportItem &item)
{
    FileError error = item.failure;
    FileInfo info = item.info;
    if (error.kind != FileError::None ||
        (!item.make && !deviceFileInfo(m_files, item.path, &info, &error)))
        failToRead(error);
    const bool isAlone = m_alike.count({comparedName(item.name), info.size}) == 0;
    return {item, item.name, info.size, info.modified, isAlone, info, nullptr};
}

// Whatever was foretold of it.
void PhotoExport::makeNow(Source *source)
{
    const MadeFile file = madeFile(source->item);
    source->name = file.name;
    source->size = file.bytes.size();
    source->modified = file.modified;
    source->isKnownByTime = false; // its content is at hand
    source->file = std::make_unique<MemoryFile>(file.bytes);
}

DeviceFile &PhotoExport::contentOf(Source &source)
{
    FileError error;
    if (!source.file && source.item.make) {
        const MadeFile file = madeFile(source.item);
        if (file.name != source.name || file.bytes.size() != source.size)
            throw Changed();
        source.file = std::make_unique<MemoryFile>(file.bytes);
    }
    if (!source.file)
        source.file = openDeviceFile(m_files, source.item.path, &error);
    if (!source.file)
        failToRead(error);
    return *source.file;
}

void PhotoExport::store(Source &source)
{
    for (int number = m_folder.firstUnclaimed(source.name);; ++number) {
        const QByteArray name = numberedName(source.name, number);
        if (m_folder.isClaimed(name) || !storeAs(name, source))
            continue;
        m_folder.claim(name);
        return;
    }
}

// False when something else has the name.
bool PhotoExport::storeAs(const QByteArray &name, Source &source)
{
    if (isPresentAs(name, source))
        return true;
    if (!m_folder.holding(name).isEmpty())
        return false;
    if (!source.copy) {
        source.copy.emplace(m_folder.fd());
        copy(source, *source.copy);
    }
    if (!source.copy->giveName(name))
        return isPresentAs(name, source); // of another export that is running, say
    count(&ExportCounts::copied);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_counts.copiedBytes += source.size;
    return true;
}

bool PhotoExport::isPresentAs(const QByteArray &name, Source &source)
{
    for (const QByteArray &other : m_folder.holding(name)) {
        if (isSameAs(other, source)) {
            count(&ExportCounts::present);
            return true;
        }
    }
    return false;
}

void PhotoExport::copy(Source &source, AtomicFile &target)
{
    FileError error;
    m_position = 0;
    while (const qint64 count = readBlock(source))
        target.write(m_block.constData(), count);
    if (m_position != source.size || !isUnchanged(source))
        throw Changed();
    if (source.modified)
        target.setModified(*source.modified);
}

// A file that is written over while it is read has a part of each.
bool PhotoExport::isUnchanged(const Source &source)
{
    if (source.item.make)
        return true;
    FileInfo info;
    FileError error;
    if (deviceFileInfo(m_files, source.item.path, &info, &error))
        return info.isSameAs(source.before);
    if (!error.isMissing())
        failToRead(error);
    return false;
}

bool PhotoExport::isSameAs(const QByteArray &name, Source &source)
{
    FileInfo other;
    if (!m_folder.info(name, &other) || other.size != source.size)
        return false;
    return hasTimeOf(source, other.modified) || hasContentOf(source, name);
}

bool PhotoExport::hasTimeOf(const Source &source, qint64 modified) const
{
    return m_comparison == ExportComparison::SizeAndTime && source.isKnownByTime &&
           source.modified && isHeldAs(modified, *source.modified);
}

bool PhotoExport::hasContentOf(Source &source, const QByteArray &name)
{
    FileError error;
    const std::unique_ptr<DeviceFile> other = m_folder.open(name);
    if (!other)
        return false;
    m_position = 0;
    while (const qint64 count = readBlock(source)) {
        const qint64 otherCount =
            other->read(m_position - count, m_otherBlock.data(), count, &error);
        const auto length = static_cast<size_t>(count);
        const char *const own = m_otherBlock.constData();
        if (otherCount != count || std::memcmp(m_block.constData(), own, length) != 0)
            return false;
    }
    return m_position == source.size;
}

// The bytes read into the block; 0 at the end of the file.
qint64 PhotoExport::readBlock(Source &source)
{
    if (m_isCancelled)
        throw Cancelled();
    FileError error;
    const qint64 count = contentOf(source).read(m_position, m_block.data(), blockSize, &error);
    if (count < 0)
        failToRead(error);
    m_position += count;
    m_readBytes += count;
    return count;
}

void PhotoExport::count(int ExportCounts::*counter)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++(m_counts.*counter);
}

void PhotoExport::addAbsent(const ExportItem &item)
{
    count(&ExportCounts::absent);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_absent.append(item.label.toUtf8());
}

void PhotoExport::addFailure(const ExportItem &item, const QString &cause)
{
    count(&ExportCounts::failed);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_failures.append((item.label + QLatin1String(": ") + cause).toUtf8());
}

qint64 PhotoExport::doneBytes() const
{
    return saturatedSum(m_doneBytes, m_position);
}

ExportCounts PhotoExport::counts() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_counts;
}

QList<QByteArray> PhotoExport::takeFailures()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    QList<QByteArray> failures;
    failures.swap(m_failures);
    return failures;
}

QList<QByteArray> PhotoExport::takeAbsent()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::exchange(m_absent, {});
}
