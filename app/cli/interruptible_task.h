#ifndef PHOTOLIB_CLI_INTERRUPTIBLE_TASK_H
#define PHOTOLIB_CLI_INTERRUPTIBLE_TASK_H

#include "cli/progress_bar.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <atomic>
#include <functional>
#include <mutex>

/// Work in many steps that shows its progress on stderr, and that the signals of
/// `runInterruptible` end between two of them.
class InterruptibleTask
{
public:
    /// Shows no progress unless `showsProgress`. `name` says what is being done.
    InterruptibleTask(bool showsProgress, const QString &name, int steps);

    /// Runs `work` on a thread of its own and returns when it has ended; what it throws is
    /// thrown to the caller. Returns whether the program was interrupted.
    bool run(const std::function<void()> &work);

    // The following are for the work.

    /// Tells how many steps are done, before the next one. Ends the work, by an exception
    /// that reaches no caller, once the program is interrupted.
    void setDone(int done);

    /// Writes a line to stderr, soon.
    void tell(const QByteArray &line);

private:
    void update();
    void writeLines();

    const int m_steps;
    ProgressBar m_bar;
    std::atomic<bool> m_isInterrupted{false};
    std::atomic<int> m_done{0};
    std::mutex m_mutex; // guards m_lines
    QList<QByteArray> m_lines;
};

#endif // PHOTOLIB_CLI_INTERRUPTIBLE_TASK_H
