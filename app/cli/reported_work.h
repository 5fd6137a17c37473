#ifndef PHOTOLIB_CLI_REPORTED_WORK_H
#define PHOTOLIB_CLI_REPORTED_WORK_H

#include "base/cancel_token.h"
#include "cli/progress_bar.h"
#include "engine/item_work.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>
#include <mutex>
#include <optional>

/// How far work is, for a bar.
struct WorkProgress {
    QString task;    ///< what is being done
    qint64 done = 0; ///< in whatever unit
    qint64 total = 0;
    QString amounts; ///< for a person
};

/// Work of the engine that shows on stderr how far it is and what of it fails, and that the signals
/// of `runInterruptible` cancel.
class ReportedWork : public ItemObserver
{
public:
    /// Shows no bar unless `showsProgress`.
    explicit ReportedWork(bool showsProgress);

    /// Runs `work` on a thread of its own and returns when it has ended; what it throws is thrown
    /// to the caller. Returns whether the program was interrupted, and the token cancelled.
    bool run(const std::function<void(const CancelToken &cancel)> &work);

    // The following may be called on any thread, as long as the object lives.

    /// Shows that soon, in place of what was shown before.
    void show(const WorkProgress &progress);

    /// Writes "photolib: LINE" to stderr, soon.
    void tell(const QString &line);

    void failed(const ItemFailure &failure) override { tell(failure.text()); }

private:
    void update();
    void writeLines();
    void showBar();

    const bool m_showsProgress;
    CancelToken m_cancel;
    QString m_shownTask;
    std::optional<ProgressBar> m_bar; // of that task
    std::mutex m_mutex;               // guards the members below
    QList<QByteArray> m_lines;
    WorkProgress m_progress;
};

#endif // PHOTOLIB_CLI_REPORTED_WORK_H
