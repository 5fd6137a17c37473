#include "engine/export_run.h"

#include "base/error.h"
#include "base/printable.h"
#include "engine/classic_photos.h"
#include "engine/library_session.h"

#include <QDateTime>
#include <QElapsedTimer>

#include <cerrno>
#include <cmath>
#include <fcntl.h>
#include <limits>
#include <set>
#include <system_error>

namespace {

constexpr std::size_t batchFiles = 64;
constexpr qint64 batchBytes = 256 << 20;
constexpr qint64 secondsTo2001 = 978307200; // from 1970
constexpr char takenName[] = "a file of another program has its name";
constexpr char changedCopy[] = "changed by somebody meanwhile: kept";
constexpr char wrongContent[] = "what was written is not what was read; removed";

// Nothing for a date that no disk holds.
std::optional<qint64> nanoseconds(LibraryDate date)
{
    constexpr double perSecond = 1e9;
    constexpr double longest = 8e9; // seconds that fit
    if (!date || !std::isfinite(*date) || std::abs(*date) > longest)
        return std::nullopt;
    return static_cast<qint64>((*date + double(secondsTo2001)) * perSecond);
}

std::string causeOf(const std::system_error &error)
{
    return error.code().message();
}

QString causeAt(const QByteArray &path, const std::system_error &error)
{
    return QString::fromUtf8(printable(path)) + QStringLiteral(": ") +
           QString::fromStdString(causeOf(error));
}

ReportedFile reportedFile(const PlannedFile &file, ReportedFile::Status status)
{
    ReportedFile reported;
    reported.id = file.asset->id;
    reported.uuid = file.asset->uuid;
    reported.role = file.source.role;
    reported.path = file.path;
    reported.status = status;
    reported.sha256 = file.sha256;
    reported.cause = file.cause;
    if (status == ReportedFile::Unchanged && !file.path.isNull())
        reported.bytes = file.size;
    if (status == ReportedFile::NotOnDevice)
        reported.path = QByteArray();
    return reported;
}

} // namespace

ExportRun::ExportRun(LibrarySession &session, const ExportPlan &plan, ExportFolder &folder,
                     ExportRecord &record, const Options &options, ExportObserver &observer,
                     const CancelToken &cancel)
    : m_session(session), m_plan(plan), m_folder(folder), m_record(record), m_options(options),
      m_observer(observer), m_cancel(cancel),
      m_copier(session.files(), options.parts, cancel, &m_doneBytes), m_reported(plan.files.size())
{
    m_progress.files = static_cast<int>(plan.files.size());
    m_progress.totalBytes = plan.bytes;
}

void ExportRun::run()
{
    tellProgress();
    m_counts.failed = static_cast<int>(m_plan.unlisted.size()); // the observer has heard of them
    m_record.add(m_plan.found);
    try {
        m_folder.storeNames(QByteArray()); // that of the record's folder, which may be new
        copyAll();
    } catch (const Error &error) {
        finishAfterFailure(error.kind() == Error::Cancelled);
        throw;
    } catch (const std::system_error &error) {
        const std::string cause = causeOf(error);
        finishAfterFailure(false);
        throw Error(m_folder.path().toStdString(), cause);
    }
}

// What ends the run is told, and not what that leads to.
void ExportRun::finishAfterFailure(bool isHurried)
{
    constexpr std::chrono::milliseconds patience(75); // for each of the two batches
    try {
        for (int batches = 0; batches < 2; ++batches) {
            if (isHurried && m_storing && !m_storing->waitFor(patience))
                m_storing->end();
            startStoring();
        }
        finishStoring();
    } catch (const Error &) {
        return;
    } catch (const std::system_error &) {
        return;
    }
}

void ExportRun::copyAll()
{
    WorkerPool pool(std::max(2, WorkerPool::threadsOfComputer()));
    Copies copies(pool);
    try {
        for (std::size_t i = 0; i < m_plan.files.size(); ++i) {
            if (m_cancel.isCancelled())
                throw Error(Error::Cancelled, "interrupted");
            if (m_plan.files[i].action == PlannedFile::Copy)
                begin(copies, i);
            else
                settle(i);
        }
        while (!copies.isEmpty())
            takeCopy(copies);
        startStoring();
        finishStoring();
    } catch (...) {
        m_copier.end();
        throw;
    }
}

void ExportRun::begin(Copies &copies, std::size_t index)
{
    const PlannedFile &file = m_plan.files[index];
    const std::optional<qint64> time = timeOf(file);
    if (file.source.make)
        return addWritten(index, m_copier.copy(file.source, time));
    while (copies.isFull())
        takeCopy(copies);
    m_begun.push_back(index);
    copies.add([this, &file, time] { return m_copier.copy(file.source, time); });
}

void ExportRun::takeCopy(Copies &copies)
{
    constexpr std::chrono::milliseconds tick(100);
    while (!copies.waitForFirst(tick))
        tellProgress();
    FileCopy copy = copies.takeFirst();
    addWritten(m_begun[m_taken++], std::move(copy));
}

void ExportRun::addWritten(std::size_t index, FileCopy copy)
{
    tellDone();
    if (!copy.file)
        return settleAsFailed(index, copy.failure);
    m_batchBytes += copy.size;
    WrittenFile written;
    written.index = index;
    written.copy = std::move(copy);
    m_batch.push_back(std::move(written));
    if (m_batch.size() >= batchFiles || m_batchBytes >= batchBytes)
        startStoring();
}

// Waits for the batch before, so that there are never more than two.
void ExportRun::startStoring()
{
    finishStoring();
    m_batchBytes = 0;
    if (m_batch.empty())
        return;
    m_storing = std::make_unique<StoredBatch>(std::move(m_batch));
    m_batch.clear(); // what was moved from is anything
}

// When the disk refuses, those that are stored by then get their names before that is thrown.
void ExportRun::finishStoring()
{
    if (!m_storing)
        return;
    const std::unique_ptr<StoredBatch> storing = std::move(m_storing);
    const std::exception_ptr failure = storing->finish();
    nameAll(storing->files());
    if (failure)
        std::rethrow_exception(failure);
}

void ExportRun::nameAll(std::vector<Written> &batch)
{
    std::exception_ptr failure;
    std::vector<const Written *> named;
    try {
        for (Written &written : batch) {
            if (giveName(written))
                named.push_back(&written);
        }
    } catch (const std::system_error &) {
        failure = std::current_exception();
    }
    storeNames(named);
    if (failure)
        std::rethrow_exception(failure);
}

// False for a failure of this file alone, which is noted.
bool ExportRun::giveName(Written &written)
{
    const PlannedFile &file = m_plan.files[written.index];
    const QByteArray name = file.path.mid(file.path.lastIndexOf('/') + 1);
    try {
        if (file.replaces && !m_folder.entry(file.path).isSameAs(file.replaced))
            return settleAsFailed(written.index, QString::fromLatin1(changedCopy)), false;
        const int folder = m_folder.folderFor(file.path);
        if (file.replaces)
            written.copy.file->replace(folder, name);
        else if (!written.copy.file->giveName(folder, name))
            return settleAsFailed(written.index, QString::fromLatin1(takenName)), false;
    } catch (const std::system_error &error) {
        if (endsExport(error.code().value()))
            throw;
        settleAsFailed(written.index, causeAt(file.path, error));
        return false;
    }
    written.copy.file.reset(); // so many files need not be open
    return true;
}

// When it is cancelled, those that are read back by then are recorded before that is thrown.
void ExportRun::storeNames(const std::vector<const Written *> &named)
{
    std::exception_ptr cancelled;
    std::vector<const Written *> sound;
    try {
        storeEach(named, &sound);
    } catch (const Error &) {
        cancelled = std::current_exception();
    }
    record(sound);
    if (cancelled)
        std::rethrow_exception(cancelled);
}

void ExportRun::storeEach(const std::vector<const Written *> &named,
                          std::vector<const Written *> *sound)
{
    std::set<QByteArray> folders;
    for (const Written *written : named) {
        const QByteArray &path = m_plan.files[written->index].path;
        if (folders.insert(path.left(path.lastIndexOf('/') + 1)).second)
            m_folder.storeNames(path);
        if (!m_options.verifies || isVerified(*written))
            sound->push_back(written);
        else
            settleAsFailed(written->index, QString::fromLatin1(wrongContent));
    }
}

void ExportRun::record(const std::vector<const Written *> &sound)
{
    std::vector<RecordedFile> records;
    records.reserve(sound.size());
    for (const Written *written : sound)
        records.push_back(recordOf(*written));
    m_record.add(records);
    for (const Written *written : sound)
        settleAsCopied(*written);
}

// Reads the file from the disk, and removes one that is not what it should be.
bool ExportRun::isVerified(const Written &written)
{
    const QByteArray &path = m_plan.files[written.index].path;
    const UniqueFd file = m_folder.open(path);
    if (file.isOpen())
        ::posix_fadvise(file.get(), 0, 0, POSIX_FADV_DONTNEED); // not from memory
    if (file.isOpen() && sha256OfFile(file.get(), m_cancel) == written.copy.sha256)
        return true;
    m_folder.remove(path);
    return false;
}

RecordedFile ExportRun::recordOf(const Written &written) const
{
    const PlannedFile &file = m_plan.files[written.index];
    RecordedFile record;
    record.photo = recordKey(*file.asset);
    record.role = file.source.role;
    record.source = file.source.source;
    record.size = written.copy.size;
    record.modified = written.copy.modified;
    record.path = file.path;
    record.sha256 = written.copy.sha256;
    record.exported = QDateTime::currentSecsSinceEpoch();
    return record;
}

// What needs no copying.
void ExportRun::settle(std::size_t index)
{
    const PlannedFile &file = m_plan.files[index];
    tellDone();
    switch (file.action) {
    case PlannedFile::Copy:
        break;
    case PlannedFile::Keep:
        ++m_counts.unchanged;
        report(index, ReportedFile::Unchanged);
        break;
    case PlannedFile::Skip:
        ++m_counts.moved;
        report(index, ReportedFile::Unchanged);
        break;
    case PlannedFile::Missing:
        ++(file.source.isInCloud ? m_counts.inCloud : m_counts.absent);
        report(index, ReportedFile::NotOnDevice);
        m_observer.absent(file.source.label, file.cause);
        break;
    case PlannedFile::Fail:
        settleAsFailed(index, file.cause);
        break;
    }
}

void ExportRun::settleAsCopied(const Written &written)
{
    ++m_counts.copied;
    m_counts.copiedBytes += written.copy.size;
    report(written.index, ReportedFile::Copied);
    m_reported[written.index]->bytes = written.copy.size;
    m_reported[written.index]->sha256 = written.copy.sha256;
}

void ExportRun::settleAsFailed(std::size_t index, const QString &cause)
{
    ++m_counts.failed;
    report(index, ReportedFile::Failed);
    m_reported[index]->path = QByteArray();
    m_reported[index]->cause = cause;
    m_observer.failed({m_plan.files[index].source.label, cause});
}

void ExportRun::report(std::size_t index, ReportedFile::Status status)
{
    m_reported[index] = reportedFile(m_plan.files[index], status);
}

std::optional<qint64> ExportRun::timeOf(const PlannedFile &file) const
{
    const LibraryDate taken = file.asset->taken;
    if (!m_session.classicIpod() || !taken)
        return nanoseconds(taken);
    return fileTimeOf(QDateTime::fromSecsSinceEpoch(qint64(*taken) + secondsTo2001, Qt::UTC));
}

void ExportRun::tellDone()
{
    ++m_progress.doneFiles;
    tellProgress();
}

void ExportRun::tellProgress()
{
    m_progress.doneBytes = m_doneBytes;
    m_observer.copied(m_progress);
}

ExportResult ExportRun::takeResult()
{
    ExportResult result;
    result.counts = m_counts;
    for (std::optional<ReportedFile> &file : m_reported) {
        if (file)
            result.files.push_back(std::move(*file));
    }
    return result;
}
