#ifndef PHOTOLIB_ENGINE_PHOTO_EXPORT_H
#define PHOTOLIB_ENGINE_PHOTO_EXPORT_H

#include "base/atomic_file.h"
#include "devices/device_file_system.h"
#include "engine/export_report.h"

#include <QVector>

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <utility>

class CancelToken;
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
    /// What is given by reference must outlive the object.
    PhotoExport(DeviceFileSystem &files, ExportFolder &folder, QVector<ExportItem> items,
                ExportComparison comparison, ExportObserver &observer, const CancelToken &cancel);

    /// Copies until all is done, or `cancel` is cancelled; the file that it is at then is not
    /// copied. A file that cannot be read is told and in the result. Throws Error when the device
    /// is gone and when the folder cannot be written.
    void run();

    /// Of all that was dealt with, also when `run` has thrown.
    const ExportResult &result() const { return m_result; }

private:
    struct Source;
    using NamesAndSizes = std::set<std::pair<QString, qint64>>; // names as they are compared

    static NamesAndSizes alike(const QVector<ExportItem> &items);

    void handle(const ExportItem &item);
    std::optional<ItemFailure> failureOf(const ExportItem &item);
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
    void tellProgress();

    DeviceFileSystem &m_files;
    ExportFolder &m_folder;
    const QVector<ExportItem> m_items;
    const ExportComparison m_comparison;
    ExportObserver &m_observer;
    const CancelToken &m_cancel;
    const NamesAndSizes m_alike; // of several items
    QByteArray m_block;
    QByteArray m_otherBlock;

    qint64 m_handledBytes = 0;
    qint64 m_position = 0; // in the current file
    ExportProgress m_progress;
    ExportResult m_result;
};

#endif // PHOTOLIB_ENGINE_PHOTO_EXPORT_H
