#include "engine/library_export.h"

#include "base/byte_count.h"
#include "base/cancel_token.h"
#include "base/error.h"
#include "base/folders.h"
#include "engine/album_disk.h"
#include "engine/albums_ahead.h"
#include "engine/device_bounds.h"
#include "engine/export_albums.h"
#include "engine/export_run.h"
#include "engine/export_state.h"
#include "engine/exported_files.h"
#include "engine/library_session.h"
#include "engine/photo_filter.h"

#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <map>
#include <optional>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace {

void requireRoom(qint64 room, const QByteArray &folder, qint64 bytes)
{
    if (bytes <= room)
        return;
    const QString amounts = QStringLiteral(" (the files take %1, and %2 are free)")
                                .arg(byteCountText(bytes), byteCountText(room));
    throw Error(folder.toStdString(),
                std::generic_category().message(ENOSPC) + amounts.toStdString());
}

// Of the disk that the folder `path`, which is not there yet, would be made on.
qint64 roomAbove(QByteArray path)
{
    while (!isFolder(path)) {
        while (path.size() > 1 && path.endsWith('/'))
            path.chop(1);
        path = parentFolder(path);
    }
    try {
        return ExportFolder(path).room();
    } catch (const Error &) {
        return std::numeric_limits<qint64>::max(); // a folder may be made in one that has no list
    }
}

void tellCutNames(const ExportPlan &plan, ExportObserver &observer)
{
    for (const QString &name : plan.cutNames)
        observer.noted(name + QStringLiteral(": its name is too long for the disk, and was cut"));
}

void tellCutInAlbums(qint64 count, ExportObserver &observer)
{
    if (count == 0)
        return;
    const QString text =
        count == 1 ? QStringLiteral("1 name is too long for a disk, and was cut")
                   : QStringLiteral("%1 names are too long for a disk, and were cut").arg(count);
    observer.noted(QStringLiteral("Albums: ") + text);
}

void requireWritable(const ExportFolder &folder)
{
    if (::faccessat(folder.fd(), ".", W_OK, AT_EACCESS) != 0)
        throw Error(folder.path().toStdString(), std::generic_category().message(errno));
}

constexpr qint64 second = 1000000000; // nanoseconds

// Its time of change tells when the folders of albums were right, by the clock of the disk.
constexpr char albumsStamp[] = "export.sqlite-albums";

// 1 when that is not known.
qint64 albumsRightAt(int stateFolder)
{
    struct stat status = {};
    if (::fstatat(stateFolder, albumsStamp, &status, AT_SYMLINK_NOFOLLOW) != 0)
        return 1;
    return status.st_mtim.tv_sec * second + status.st_mtim.tv_nsec;
}

// Where that cannot be noted, the next export reads all copies.
void noteAlbumsRight(int stateFolder)
{
    constexpr mode_t usualMode = 0666; // less what the umask takes
    constexpr int flags = O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    const UniqueFd stamp(::openat(stateFolder, albumsStamp, flags, usualMode));
    if (stamp.isOpen())
        ::futimens(stamp.get(), nullptr); // now
}

std::map<QByteArray, QByteArray> replacedFiles(const ExportPlan &plan, const ExportContents &before)
{
    std::map<QByteArray, QByteArray> replaced;
    for (const PlannedFile &file : plan.files) {
        if (file.replaces)
            replaced[file.path];
    }
    for (const RecordedFile &file : before.files) {
        const auto found = replaced.find(file.path);
        if (found != replaced.end())
            found->second = file.sha256;
    }
    return replaced;
}

void requireNothingAt(const QByteArray &path)
{
    if (::access(path.constData(), F_OK) == 0)
        throw Error(path.toStdString(), "not a folder");
    if (errno != ENOENT)
        throw Error(path.toStdString(), std::generic_category().message(errno));
}

// Every failure that ends it tells what was done by then.
[[noreturn]] void rethrowWith(const Error &error, const ExportCounts &counts)
{
    std::string done = counts.text().toStdString();
    done[0] = 'c'; // it goes on within the sentence
    throw Error(error.kind(), error.what() + ("; " + done));
}

class Export
{
public:
    Export(LibrarySession &session, const ExportRequest &request, ExportObserver &observer,
           const CancelToken &cancel)
        : m_session(session), m_request(request), m_observer(observer), m_cancel(cancel),
          m_photos(chosenPhotos(session, request.filter)),
          m_ensured(session.folderOutside(request.folder))
    {
        refuseDeviceAsTarget(request.folder);
    }

    void run(ExportResult *result)
    {
        ExportFolder folder(m_request.folder);
        requireWritable(folder);
        const ExportState state(m_request.folder, m_cancel, [this] { m_observer.waiting(); });
        std::optional<ExportRecord> record;
        if (hasExportRecord(m_request.folder))
            record.emplace(state);
        const ExportContents before = record ? record->contents() : ExportContents();
        const ExportPlan plan = possiblePlan(folder, before);
        tellCutNames(plan, m_observer);
        if (!record)
            record.emplace(state);
        m_ensured->store();
        m_ensured->keep();
        copy(plan, folder, *record, state, result);
        if (!m_request.albums)
            return;
        try {
            makeAlbums(folder, *record, state, result);
        } catch (const Error &error) {
            rethrowWith(error, result->counts);
        }
    }

private:
    // Throws where the disk cannot take all of it. Its bytes are those of albums, too, so that it
    // is told how far both are.
    ExportPlan possiblePlan(ExportFolder &folder, const ExportContents &before)
    {
        ExportPlan plan =
            plannedExport(m_session, m_request, m_photos, folder, before, m_observer, m_cancel);
        const AlbumsAhead ahead = albumsAhead(m_session.catalog(), m_request, plan, before, folder);
        m_replaced = replacedFiles(plan, before);
        const auto files = static_cast<int>(plan.files.size());
        m_progress = {files, files, plan.bytes, boundedSum(plan.bytes, ahead.bytes)};
        plan.bytes = m_progress.totalBytes;
        requireRoom(folder.room(), m_request.folder, plan.bytes);
        if (!ahead.albums.empty())
            requireLinks(*m_request.albums, folder.fd());
        return plan;
    }

    void makeAlbums(ExportFolder &folder, ExportRecord &record, const ExportState &state,
                    ExportResult *result)
    {
        ExportContents contents = record.contents();
        AlbumsToExport albums;
        albums.catalog = &m_session.catalog();
        albums.files = filesByPhoto(m_session.catalog(), shownFiles(contents.files, folder));
        albums.kind = *m_request.albums;
        albums.recorded = std::move(contents.albumFiles);
        albums.rightAt = albumsRightAt(state.fd());
        for (const RecordedFile &file : contents.files) {
            if (file.exported >= albums.rightAt / second)
                albums.newFiles.insert(file.path);
        }
        albums.replaced = m_replaced;
        const AlbumsResult made = exportAlbums(albums, folder.fd(), m_cancel, [this](qint64 bytes) {
            m_progress.doneBytes += bytes;
            m_observer.copied(m_progress);
        });
        if (albums.kind == RecordedAlbumFile::Copy)
            ::syncfs(folder.fd());
        record.setAlbumFiles(made.files);
        if (albums.kind == RecordedAlbumFile::Copy && made.isComplete && made.failures.empty())
            noteAlbumsRight(state.fd());
        tellCutInAlbums(made.cut, m_observer);
        for (const ItemFailure &failure : made.failures) {
            ++result->counts.failed;
            m_observer.failed(failure);
        }
        if (m_cancel.isCancelled())
            throw Error(Error::Cancelled, "interrupted");
    }

    void copy(const ExportPlan &plan, ExportFolder &folder, ExportRecord &record,
              const ExportState &state, ExportResult *result)
    {
        ExportRun run(m_session, plan, folder, record, {m_request.verify, state.fd()}, m_observer,
                      m_cancel);
        try {
            run.run();
        } catch (const Error &error) {
            *result = run.takeResult();
            rethrowWith(error, result->counts);
        }
        *result = run.takeResult();
    }

    LibrarySession &m_session;
    const ExportRequest &m_request;
    ExportObserver &m_observer;
    const CancelToken &m_cancel;
    const std::vector<const Asset *> m_photos;
    const std::unique_ptr<EnsuredFolder> m_ensured;
    std::map<QByteArray, QByteArray> m_replaced; // SHA-256 of what is replaced, by path
    ExportProgress m_progress;                   // once all is copied but for albums
};

} // namespace

void exportPhotos(LibrarySession &session, const ExportRequest &request, ExportObserver &observer,
                  const CancelToken &cancel, ExportResult *result)
{
    Export(session, request, observer, cancel).run(result);
}

ExportPlan exportPreview(LibrarySession &session, const ExportRequest &request,
                         ExportObserver &observer, const CancelToken &cancel)
{
    const std::vector<const Asset *> photos = chosenPhotos(session, request.filter);
    session.refuseInDevice(request.folder);
    const bool isThere = isFolder(request.folder);
    if (isThere)
        refuseDeviceAsTarget(request.folder);
    else
        requireNothingAt(request.folder);
    ExportFolder folder = isThere ? ExportFolder(request.folder) : ExportFolder();
    const ExportContents contents = isThere ? readExportRecord(request.folder) : ExportContents();
    ExportPlan plan = plannedExport(session, request, photos, folder, contents, observer, cancel);
    const AlbumsAhead ahead = albumsAhead(session.catalog(), request, plan, contents, folder);
    const qint64 room = isThere ? folder.room() : roomAbove(request.folder);
    requireRoom(room, request.folder, boundedSum(plan.bytes, ahead.bytes));
    tellCutNames(plan, observer);
    tellCutInAlbums(cutNames(ahead.albums), observer);
    return plan;
}
