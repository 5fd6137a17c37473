#ifndef PHOTOLIB_ENGINE_PHOTO_EXPORT_H
#define PHOTOLIB_ENGINE_PHOTO_EXPORT_H

#include "base/atomic_file.h"
#include "devices/device_file_system.h"

#include <QList>
#include <QVector>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <utility>

class ExportFolder;

/// A file that the program makes of what a device stores in another form.
struct MadeFile {
    QByteArray name; ///< a safe file name
    QByteArray bytes;
    std::optional<qint64> modified; ///< nanoseconds since 1970-01-01 UTC, when it is known
    FileError failure;              ///< why there is none, unless its kind is None
};

/// One file to copy off the device, or to make.
struct ExportItem {
    QString label;   ///< names it in messages
    QByteArray name; ///< for the copy: a safe file name
    QByteArray path; ///< on the device
    FileInfo info;   ///< of the file

    /// Why there is nothing to copy, unless its kind is None. NotFound where the library has a
    /// photo of which the device has no file, since that is in iCloud, say: this is no failure.
    FileError failure;

    /// Makes a file that is none of the device's, called by `PhotoExport::run` when its content
    /// is needed; null for a file of the device.
    std::function<MadeFile()> make;

    /// Whether the name, the size and the time of change above are those of the file that `make`
    /// makes. Otherwise there is no name, and the size is an estimate for the progress.
    bool isForetold = false;
};

/// What tells whether a file that is there already is the copy.
enum class ExportComparison {
    /// Its size and its time of change, so that nothing of it needs to be read. The times are
    /// compared as exactly as the target's disk holds them, which may be no more than every other
    /// second. Where the times differ or do not tell, the content decides.
    SizeAndTime,
    Content, ///< every byte
};

/// How many files an export has dealt with.
struct ExportCounts {
    int copied = 0;
    int present = 0; ///< were there already
    int absent = 0;  ///< are in the library and not on the device
    int failed = 0;
    qint64 copiedBytes = 0;

    int all() const { return copied + present + absent + failed; }

    /// "copied 40 files (12.3 MiB), 3 already there, 18 not on the device, 2 failed", the last two
    /// only where there are any.
    QString text() const;
};

/// Copies files off a device into a folder, and writes those that are made.
///
/// A file that changes while it is copied is copied once more, and fails when it changes again.
/// A copy has its content and its time of change before it gets its name, which replaces
/// nothing: a name that is taken gets a number. A file of that name that is the same counts as the
/// copy, once for each photo, so that running the export again copies only what is missing and
/// leaves the same files.
class PhotoExport
{
public:
    /// Both must outlive the object.
    PhotoExport(DeviceFileSystem &files, ExportFolder &folder, QVector<ExportItem> items,
                ExportComparison comparison = ExportComparison::SizeAndTime);

    /// Copies until all is done or cancelled. A file that can not be read is told by
    /// `takeFailures`. Throws Error when the device is gone and when the folder can
    /// not be written.
    void run();

    // The following may be called while another thread runs the export.

    /// Makes `run` return soon; the file that it is at is not copied.
    void cancel() { m_isCancelled = true; }

    ExportCounts counts() const;
    qint64 totalBytes() const { return m_totalBytes; }
    int size() const { return m_items.size(); }

    /// Bytes of the files that are dealt with, and of the part of the current one.
    qint64 doneBytes() const;

    /// Bytes that were read of the device for that: none of a file that is known to be there.
    qint64 readBytes() const { return m_readBytes; }

    /// The failures since the last call, "NAME: CAUSE" each.
    QList<QByteArray> takeFailures();

    /// The names of those that are not on the device, since the last call.
    QList<QByteArray> takeAbsent();

private:
    struct Source;
    using NamesAndSizes = std::set<std::pair<QString, qint64>>; // names as they are compared

    static NamesAndSizes alike(const QVector<ExportItem> &items);

    void handle(const ExportItem &item);
    bool tryToStore(const ExportItem &item, bool believesForetold);
    Source sourceOf(const ExportItem &item);
    static void makeNow(Source *source);
    DeviceFile &contentOf(Source &source);
    void store(Source &source);
    bool storeAs(const QByteArray &name, Source &source);
    bool isPresentAs(const QByteArray &name, Source &source);
    void copy(Source &source, AtomicFile &target);
    bool isUnchanged(const Source &source);
    bool isSameAs(const QByteArray &name, Source &source);
    bool hasTimeOf(const Source &source, qint64 modified) const;
    bool hasContentOf(Source &source, const QByteArray &name);
    qint64 readBlock(Source &source);
    void addAbsent(const ExportItem &item);
    void addFailure(const ExportItem &item, const QString &cause);
    void count(int ExportCounts::*counter);

    DeviceFileSystem &m_files;
    ExportFolder &m_folder;
    const QVector<ExportItem> m_items;
    const ExportComparison m_comparison;
    NamesAndSizes m_alike; // of several items
    qint64 m_totalBytes = 0;
    QByteArray m_block;
    QByteArray m_otherBlock;

    std::atomic<bool> m_isCancelled{false};
    std::atomic<qint64> m_doneBytes{0};
    std::atomic<qint64> m_position{0}; // in the current file
    std::atomic<qint64> m_readBytes{0};
    mutable std::mutex m_mutex; // guards the members below
    ExportCounts m_counts;
    QList<QByteArray> m_failures;
    QList<QByteArray> m_absent;
};

#endif // PHOTOLIB_ENGINE_PHOTO_EXPORT_H
