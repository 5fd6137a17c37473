#ifndef PHOTOLIB_TESTS_APP_WATCHED_CHANGES_H
#define PHOTOLIB_TESTS_APP_WATCHED_CHANGES_H

#include <functional>
#include <optional>

/// A call of the system that is about to change something on a disk.
struct DiskChange {
    int number;     ///< counted from 1
    bool isRemoval; ///< it removes a name, for which a full disk has room

    /// It makes a hard link or opens a file without a name, which memory cards have neither of.
    bool needsLinks;
};

/// Runs `work` on a thread of its own. Each call of the system by that thread and those that it
/// starts that writes, names, makes, removes or stores something on a disk is given to `judge`
/// first, one at a time and on another thread: 0 lets it go on, an error's code has it fail with
/// that. Returns how many there were, or nothing, with `work` not run, where the system does not
/// let calls be held up.
std::optional<int> runWatched(const std::function<void()> &work,
                              const std::function<int(const DiskChange &change)> &judge);

/// Has a process of its own, a copy of this one, run `work` like `runWatched`, and kills it when it
/// is about to make the `number`th change on a disk. Returns whether it came to that, or nothing
/// where the system does not let calls be held up.
std::optional<bool> isKilledAt(int number, const std::function<void()> &work,
                               const std::function<int(const DiskChange &change)> &judge);

#endif // PHOTOLIB_TESTS_APP_WATCHED_CHANGES_H
