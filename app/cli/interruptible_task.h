#ifndef PHOTOLIB_CLI_INTERRUPTIBLE_TASK_H
#define PHOTOLIB_CLI_INTERRUPTIBLE_TASK_H

#include "cli/reported_work.h"

#include <QString>

#include <functional>

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

    /// Writes "photolib: LINE" to stderr, soon.
    void tell(const QString &line) { m_work.tell(line); }

private:
    const QString m_name;
    const int m_steps;
    ReportedWork m_work;
    const CancelToken *m_cancel = nullptr; // while it runs
};

#endif // PHOTOLIB_CLI_INTERRUPTIBLE_TASK_H
