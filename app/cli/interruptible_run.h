#ifndef PHOTOLIB_CLI_INTERRUPTIBLE_RUN_H
#define PHOTOLIB_CLI_INTERRUPTIBLE_RUN_H

#include <functional>

/// Runs `work` on a thread of its own and returns when it has ended; what it throws is
/// thrown to the caller. Meanwhile Ctrl-C (SIGINT), SIGTERM, SIGQUIT and the end of the
/// terminal (SIGHUP) have `cancel` called, and a second one ends the process at once, without
/// its temporary files; those that the process ignores stay ignored.
///
/// `tick` is called on the calling thread at the start, about ten times a second, and at
/// the end, and so is `cancel`, again and again, once the program is interrupted. Returns
/// whether it was. A tick that throws has the work cancelled, too; when that has ended, what
/// the tick threw is thrown to the caller.
bool runInterruptible(const std::function<void()> &work, const std::function<void()> &cancel,
                      const std::function<void()> &tick);

#endif // PHOTOLIB_CLI_INTERRUPTIBLE_RUN_H
