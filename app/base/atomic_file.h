#ifndef PHOTOLIB_BASE_ATOMIC_FILE_H
#define PHOTOLIB_BASE_ATOMIC_FILE_H

#include "base/byte_sink.h"
#include "base/unique_fd.h"

#include <QByteArray>
#include <QtGlobal>

/// A file that is written whole before it gets its name, so that no half of one is ever
/// seen; without a name it is gone at the end of the object. Its permissions are those of
/// any new file.
///
/// Each operation throws std::system_error when the disk refuses.
class AtomicFile
{
public:
    /// How the file exists until it has its name.
    enum class Hiding {
        BestAvailable, ///< without a name, or with a temporary one where the disk lacks that
        TemporaryName, ///< always with a temporary name, which a killed program leaves behind
    };

    /// Opens a new file in the folder that the descriptor `folder` holds open, which must
    /// outlive the object.
    explicit AtomicFile(int folder, Hiding hiding = Hiding::BestAvailable);
    ~AtomicFile();

    AtomicFile(const AtomicFile &) = delete;
    AtomicFile &operator=(const AtomicFile &) = delete;

    /// Gives the file the permissions of a regular file, or one that a link leads to, that has
    /// the name `name`, if there is one.
    void takePermissionsOf(const QByteArray &name);

    void write(const char *bytes, qint64 length);

    /// Sets the time of the last change, in nanoseconds since 1970-01-01 UTC.
    void setModified(qint64 nanoseconds);

    /// Has the disk begin to store what is written so far, without waiting for it.
    void startStoring();

    /// Waits for the disk to have what is written so far. It may still be lost: that only makes
    /// `store` quick, which takes as long for many files as for one when all of them are there.
    void waitUntilWritten();

    /// Returns when the content is stored, so that it outlasts a loss of power.
    void store();

    /// Gives the file its name. False when anything, a dangling link too, has that name
    /// already; another one may be tried then. Nothing is replaced; only where the disk can
    /// neither rename without replacing nor link, the file is an empty one for a moment, which
    /// a program that is killed in it leaves behind.
    bool giveName(const QByteArray &name) { return giveName(m_folder, name); }

    /// The same in another folder of the same disk, which the descriptor `folder` holds open.
    bool giveName(int folder, const QByteArray &name);

    /// Gives the file its name and replaces a file or link that has it.
    void replace(const QByteArray &name) { replace(m_folder, name); }

    /// The same in another folder of the same disk, which the descriptor `folder` holds open.
    void replace(int folder, const QByteArray &name);

private:
    bool linkTo(int folder, const QByteArray &name);
    bool renameTo(int folder, const QByteArray &name);
    bool linkAndRemove(int folder, const QByteArray &name);
    bool replacePlaceholder(int folder, const QByteArray &name);
    void close();
    void takeTemporaryName();
    void dropTemporaryName();

    const int m_folder;
    QByteArray m_temporaryName; // empty while the file has none
    UniqueFd m_fd;
};

/// Removes the temporary names of all objects, none of which gets another one from then on.
/// For a process that ends while threads still write.
void removeTemporaryFiles();

/// Throws Error, which names `path`, unless a file may get the name `name` in the
/// folder that the descriptor `folder` holds open: when nothing has it, a regular file, or
/// a link to one. A device or pipe is not replaced, and neither is a link to an open file
/// of the process, as /dev/stdout is one.
void requireReplaceable(int folder, const QByteArray &name, const QByteArray &path);

/// Writes the file whose content `write` gives, piece by piece, and gives it its name when it is
/// whole; a file of that name is replaced and leaves it its permissions. When `write` throws, which
/// is thrown to the caller, nothing is left of the new file.
void replaceFile(int folder, const QByteArray &name,
                 const std::function<void(const ByteSink &sink)> &write);

#endif // PHOTOLIB_BASE_ATOMIC_FILE_H
