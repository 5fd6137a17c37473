#ifndef PHOTOLIB_CLI_FILE_TARGET_H
#define PHOTOLIB_CLI_FILE_TARGET_H

#include "base/byte_sink.h"
#include "base/folders.h"

#include <QByteArray>

#include <memory>

class LibrarySession;
class Output;

/// Where a command writes files: a folder outside the device, or standard output for one file.
class FileTarget
{
public:
    /// The file name that stands for standard output.
    static constexpr char standardOutput[] = "-";

    /// Writes into `folder`, which is created if necessary; a created one that stays empty is
    /// gone at the end of the object. Throws Error when it cannot be used, or lies in the device
    /// of `session`.
    FileTarget(const LibrarySession &session, const QByteArray &folder);

    /// Writes to standard output.
    FileTarget() = default;

    bool isStandardOutput() const { return !m_folder.isOpen(); }

    /// Throws Error unless the file `path` of the folder may be written.
    void requireReplaceable(const QByteArray &path) const;

    /// Writes the file `path` of the folder whole, and replaces one that is there; or keeps the
    /// bytes for standard output. Throws Error, which names `path`.
    void write(const QByteArray &path, const QByteArray &bytes);

    /// The same for content that `write` gives piece by piece. Nothing is left of it when that
    /// throws, which is thrown to the caller.
    void write(const QByteArray &path, const std::function<void(const ByteSink &sink)> &write);

    /// Writes to `output` what is kept for it, when all has gone well.
    void finish(Output &output) const;

private:
    std::unique_ptr<EnsuredFolder> m_ensured; // what is written into the folder keeps it
    UniqueFd m_folder;
    QByteArray m_kept; // for standard output
};

#endif // PHOTOLIB_CLI_FILE_TARGET_H
