#include "engine/photo_export.h"

#include "base/cancel_token.h"
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

PhotoExport::PhotoExport(DeviceFileSystem &files, ExportFolder &folder, QVector<ExportItem> items,
                         ExportComparison comparison, ExportObserver &observer,
                         const CancelToken &cancel)
    : m_files(files), m_folder(folder), m_items(std::move(items)), m_comparison(comparison),
      m_observer(observer), m_cancel(cancel), m_alike(alike(m_items)), m_block(blockSize, '\0'),
      m_otherBlock(blockSize, '\0')
{
    m_progress.files = m_items.size();
    for (const ExportItem &item : m_items)
        m_progress.totalBytes = saturatedSum(m_progress.totalBytes, item.info.size);
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
    tellProgress();
    try {
        workOnEach(m_items.size(), m_observer, m_cancel, [this](int i) { handle(m_items[i]); });
    } catch (const Cancelled &) {
        return;
    }
}

void PhotoExport::handle(const ExportItem &item)
{
    const std::optional<ItemFailure> failure = failureOf(item);
    if (failure) {
        m_result.failures.append(*failure);
        ++m_result.counts.failed;
    }
    m_position = 0;
    m_handledBytes = saturatedSum(m_handledBytes, item.info.size);
    tellProgress();
    if (failure)
        throw ItemFailure(*failure);
}

// Nothing when it is dealt with.
std::optional<ItemFailure> PhotoExport::failureOf(const ExportItem &item)
{
    if (item.failure.kind == FileError::NotFound) {
        ++m_result.counts.absent;
        m_result.absent.append(item.label);
        m_observer.absent(item.label);
        return std::nullopt;
    }
    try {
        if (tryToStore(item, true) || tryToStore(item, false))
            return std::nullopt;
        return ItemFailure{item.label, QStringLiteral("changed while it was read, twice")};
    } catch (const FileFailure &failure) {
        return ItemFailure{item.label, failure.cause};
    } catch (const std::system_error &error) {
        const QString cause = QString::fromStdString(error.code().message());
        if (!concernsOneFile(error.code()))
            throw Error(m_folder.path().toStdString(), cause.toStdString());
        return ItemFailure{item.label, cause};
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
    ++m_result.counts.copied;
    m_result.counts.copiedBytes = saturatedSum(m_result.counts.copiedBytes, source.size);
    return true;
}

bool PhotoExport::isPresentAs(const QByteArray &name, Source &source)
{
    for (const QByteArray &other : m_folder.holding(name)) {
        if (isSameAs(other, source)) {
            ++m_result.counts.present;
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
    if (m_cancel.isCancelled())
        throw Cancelled();
    FileError error;
    const qint64 count = contentOf(source).read(m_position, m_block.data(), blockSize, &error);
    if (count < 0)
        failToRead(error);
    m_position += count;
    m_progress.readBytes = saturatedSum(m_progress.readBytes, count);
    tellProgress();
    return count;
}

void PhotoExport::tellProgress()
{
    m_progress.doneFiles = m_result.counts.all();
    m_progress.doneBytes = saturatedSum(m_handledBytes, m_position);
    m_observer.copied(m_progress);
}
