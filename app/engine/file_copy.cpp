#include "engine/file_copy.h"

#include "base/cancel_token.h"
#include "base/error.h"
#include "base/sha256.h"
#include "devices/encoded_names.h"
#include "engine/export_source.h"
#include "engine/photo_text.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace {

// Small enough to be hashed and written from the processor's cache.
constexpr int blockSize = 256 << 10;

// What keeps one file from being copied, and not the next one.
struct FileFailure {
    QString cause;
};

// Nor can any other file be made.
class NoNewFile : public std::system_error
{
    using std::system_error::system_error;
};

std::unique_ptr<AtomicFile> newFile(int folder)
{
    try {
        return std::make_unique<AtomicFile>(folder);
    } catch (const std::system_error &error) {
        throw NoNewFile(error.code());
    }
}

// The content is worth more than a time that the disk cannot keep.
void setTime(AtomicFile &file, qint64 nanoseconds)
{
    try {
        file.setModified(nanoseconds);
    } catch (const std::system_error &error) {
        if (endsExport(error.code().value()))
            throw;
    }
}

// Throws what a failure on the device means for the export.
[[noreturn]] void failToRead(const FileError &error)
{
    if (error.kind == FileError::Disconnected)
        throw Error(Error::Disconnected, "the device: " + error.text.toStdString());
    throw FileFailure{failureText(error)};
}

bool hasNoInfo(DeviceFileSystem &files, const QByteArray &path)
{
    FileInfo info;
    FileError error;
    return !deviceFileInfo(files, path, &info, &error);
}

// The same for the file `path`. Some disks that are pulled out say of all that they have what they
// say of a bad spot.
[[noreturn]] void failToRead(DeviceFileSystem &files, const QByteArray &path,
                             const FileError &error)
{
    const QByteArray folder = path.left(qMax(path.lastIndexOf('/'), 0));
    if (error.kind == FileError::Failed && hasNoInfo(files, folder) &&
        hasNoInfo(files, QByteArray()))
        failToRead({FileError::Disconnected, error.text});
    failToRead(error);
}

} // namespace

bool endsExport(int code)
{
    constexpr int codes[] = {ENOSPC, EDQUOT, EROFS, EIO, EMFILE, ENFILE, ENOMEM};
    return std::find(std::begin(codes), std::end(codes), code) != std::end(codes);
}

FileCopier::FileCopier(DeviceFileSystem &files, int parts, const CancelToken &cancel,
                       std::atomic<qint64> *doneBytes)
    : m_files(files), m_parts(parts), m_cancel(cancel), m_doneBytes(doneBytes)
{
}

FileCopy FileCopier::copy(const ExportSource &source, std::optional<qint64> modified) const
{
    FileCopy failed;
    try {
        return source.make ? madeFile(source, modified) : copyFile(source, modified);
    } catch (const FileFailure &failure) {
        failed.failure = failure.cause;
    } catch (const NoNewFile &) {
        throw;
    } catch (const std::system_error &error) {
        if (endsExport(error.code().value()))
            throw;
        failed.failure = QString::fromStdString(error.code().message());
    }
    return failed;
}

FileCopy FileCopier::copyFile(const ExportSource &source, std::optional<qint64> modified) const
{
    constexpr int attempts = 2;
    for (int i = 0; i < attempts; ++i) {
        FileCopy copy;
        copy.file = newFile(m_parts);
        if (!readInto(&copy, source)) {
            *m_doneBytes -= copy.size;
            continue;
        }
        setTime(*copy.file, modified.value_or(copy.modified));
        copy.file->startStoring();
        return copy;
    }
    throw FileFailure{QStringLiteral("changed while it was read, twice")};
}

FileCopy FileCopier::madeFile(const ExportSource &source, std::optional<qint64> modified) const
{
    const MadeFile made = source.make();
    if (made.failure.kind != FileError::None)
        failToRead(made.failure);
    FileCopy copy;
    copy.file = newFile(m_parts);
    copy.file->write(made.bytes.constData(), made.bytes.size());
    copy.size = made.bytes.size();
    copy.sha256 = sha256Hex(made.bytes);
    copy.modified = source.info.modified;
    *m_doneBytes += copy.size;
    if (modified)
        setTime(*copy.file, *modified);
    copy.file->startStoring();
    return copy;
}

// False when the file is not all the time what the device said of it before: one that is written
// over while it is read has a part of each.
bool FileCopier::readInto(FileCopy *copy, const ExportSource &source) const
{
    FileInfo before;
    FileInfo after;
    FileError error;
    if (!deviceFileInfo(m_files, source.source, &before, &error))
        failToRead(m_files, source.source, error);
    readContent(copy, source.source, before.size);
    copy->modified = before.modified;
    if (deviceFileInfo(m_files, source.source, &after, &error))
        return copy->size == before.size && after.isSameAs(before);
    if (!error.isMissing())
        failToRead(m_files, source.source, error);
    return false;
}

// Some files never end. One that has more than `size` bytes is not read to its end.
void FileCopier::readContent(FileCopy *copy, const QByteArray &path, qint64 size) const
{
    FileError error;
    const std::unique_ptr<DeviceFile> file = openDeviceFile(m_files, path, &error);
    if (!file)
        failToRead(m_files, path, error);
    Sha256 hash;
    QByteArray block(blockSize, Qt::Uninitialized);
    while (copy->size <= size) {
        requireGoingOn();
        const qint64 count = file->read(copy->size, block.data(), block.size(), &error);
        if (count < 0)
            failToRead(m_files, path, error);
        if (count == 0)
            break;
        hash.add(block.constData(), count);
        copy->file->write(block.constData(), count);
        copy->size += count;
        *m_doneBytes += count;
    }
    copy->sha256 = hash.takeHex();
}

void FileCopier::requireGoingOn() const
{
    if (m_cancel.isCancelled() || m_isEnding)
        throw Error(Error::Cancelled, "interrupted");
}
