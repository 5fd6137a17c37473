#ifndef PHOTOLIB_ENGINE_STORED_BATCH_H
#define PHOTOLIB_ENGINE_STORED_BATCH_H

#include "engine/file_copy.h"

#include <atomic>
#include <chrono>
#include <exception>
#include <future>
#include <vector>

/// A copy that waits for its name.
struct WrittenFile {
    std::size_t index = 0; ///< of its file in the plan
    FileCopy copy;
};

/// Files that are being stored on the disk, on a thread of its own, so that they outlast a loss of
/// power. For one thread at a time.
class StoredBatch
{
public:
    /// Begins with `files`.
    explicit StoredBatch(std::vector<WrittenFile> files);

    /// Waits for the file that it is at.
    ~StoredBatch();

    StoredBatch(const StoredBatch &) = delete;
    StoredBatch &operator=(const StoredBatch &) = delete;

    /// Whether all is done within `time`.
    bool waitFor(std::chrono::milliseconds time) const;

    /// Has it stop after the file that it is at.
    void end() { m_isEnding = true; }

    /// Waits until all is done, or it has stopped, and drops what is not stored. Returns why the
    /// disk did not store a file, an std::system_error; null when it stored all that it was given
    /// the time for.
    std::exception_ptr finish();

    /// After `finish`, the files that are stored.
    std::vector<WrittenFile> &files() { return m_files; }

private:
    void storeAll();

    std::vector<WrittenFile> m_files;
    std::size_t m_stored = 0;
    std::exception_ptr m_failure;
    std::atomic<bool> m_isEnding{false};
    std::future<void> m_done; // last, for its thread uses the others
};

#endif // PHOTOLIB_ENGINE_STORED_BATCH_H
