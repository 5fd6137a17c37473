#ifndef PHOTOLIB_ENGINE_EXPORT_RUN_H
#define PHOTOLIB_ENGINE_EXPORT_RUN_H

#include "base/cancel_token.h"
#include "engine/export_plan.h"
#include "engine/export_report.h"
#include "engine/file_copy.h"
#include "engine/stored_batch.h"
#include "engine/worker_pool.h"

#include <optional>

class ExportRecord;

/// Copies the files of a plan, several at a time, and records them.
///
/// Copies get their names in batches: when all files of a batch are stored on the disk, each gets
/// its name, the folders are stored, and then the record. So whatever ends the program, the record
/// tells of no file that is not whole in the folder. The next batch is copied meanwhile.
class ExportRun
{
public:
    /// How a run works, besides its plan.
    struct Options {
        bool verifies = false; ///< reads back what was written
        int parts = -1;        ///< descriptor of the folder for files without a name
    };

    /// What is given by reference must outlive the object.
    ExportRun(LibrarySession &session, const ExportPlan &plan, ExportFolder &folder,
              ExportRecord &record, const Options &options, ExportObserver &observer,
              const CancelToken &cancel);

    /// Does all that is planned. Throws Error when the device is gone and when the disk cannot be
    /// written, after the files that are whole by then got their names and were recorded; and of
    /// the kind Cancelled soon after the token is, likewise, but what is not stored on the disk
    /// soon is dropped, and what has its name and is not read back yet is not recorded.
    void run();

    /// Of all that was dealt with, also when `run` has thrown.
    ExportResult takeResult();

private:
    using Written = WrittenFile;
    using Copies = OrderedWork<FileCopy>;

    void copyAll();
    void begin(Copies &copies, std::size_t index);
    void takeCopy(Copies &copies);
    void addWritten(std::size_t index, FileCopy copy);
    void startStoring();
    void finishStoring();
    void finishAfterFailure(bool isHurried);
    void nameAll(std::vector<Written> &batch);
    bool giveName(Written &written);
    void storeNames(const std::vector<const Written *> &named);
    void storeEach(const std::vector<const Written *> &named, std::vector<const Written *> *sound);
    void record(const std::vector<const Written *> &sound);
    bool isVerified(const Written &written);
    RecordedFile recordOf(const Written &written) const;
    void settle(std::size_t index);
    void settleAsCopied(const Written &written);
    void settleAsFailed(std::size_t index, const QString &cause);
    void report(std::size_t index, ReportedFile::Status status);
    std::optional<qint64> timeOf(const PlannedFile &file) const;
    void tellDone();
    void tellProgress();

    LibrarySession &m_session;
    const ExportPlan &m_plan;
    ExportFolder &m_folder;
    ExportRecord &m_record;
    const Options m_options;
    ExportObserver &m_observer;
    const CancelToken &m_cancel;
    std::atomic<qint64> m_doneBytes{0};
    FileCopier m_copier;
    std::vector<std::size_t> m_begun; // what is being copied, in order
    std::size_t m_taken = 0;          // how many of these have ended
    std::vector<Written> m_batch;
    qint64 m_batchBytes = 0;
    std::unique_ptr<StoredBatch> m_storing; // the batch before; null when there is none
    ExportProgress m_progress;
    ExportCounts m_counts;
    std::vector<std::optional<ReportedFile>> m_reported; // by the plan's order
};

#endif // PHOTOLIB_ENGINE_EXPORT_RUN_H
