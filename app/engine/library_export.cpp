#include "engine/library_export.h"

#include "base/byte_count.h"
#include "base/cancel_token.h"
#include "base/error.h"
#include "base/folders.h"
#include "engine/album_disk.h"
#include "engine/device_bounds.h"
#include "engine/export_albums.h"
#include "engine/export_run.h"
#include "engine/export_state.h"
#include "engine/exported_files.h"
#include "engine/library_session.h"
#include "engine/photo_filter.h"

#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <system_error>
#include <unistd.h>

namespace {

void requireRoom(const ExportFolder &folder, qint64 bytes)
{
    const qint64 room = folder.room();
    if (bytes <= room)
        return;
    const QString amounts = QStringLiteral(" (the files take %1, and %2 are free)")
                                .arg(byteCountText(bytes), byteCountText(room));
    throw Error(folder.path().toStdString(),
                std::generic_category().message(ENOSPC) + amounts.toStdString());
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
        const ExportPlan plan =
            plannedExport(m_session, m_request, m_photos, folder, before, m_observer, m_cancel);
        requireRoom(folder, plan.bytes);
        if (m_request.albums && !albumsAfter(plan, before, folder).empty())
            requireLinks(*m_request.albums, folder.fd());
        tellCutNames(plan, m_observer);
        if (!record)
            record.emplace(state);
        m_ensured->store();
        m_ensured->keep();
        copy(plan, folder, *record, state, result);
        if (!m_request.albums)
            return;
        try {
            makeAlbums(folder, *record, result);
        } catch (const Error &error) {
            rethrowWith(error, result->counts);
        }
    }

private:
    std::vector<PlannedAlbum> albumsAfter(const ExportPlan &plan, const ExportContents &before,
                                          ExportFolder &folder) const
    {
        const Catalog &catalog = m_session.catalog();
        return plannedAlbums(catalog,
                             filesByPhoto(catalog, shownFilesAfter(plan, before.files, folder)));
    }

    void makeAlbums(ExportFolder &folder, ExportRecord &record, ExportResult *result)
    {
        ExportContents contents = record.contents();
        AlbumsToExport albums;
        albums.catalog = &m_session.catalog();
        albums.files = filesByPhoto(m_session.catalog(), shownFiles(contents.files, folder));
        albums.kind = *m_request.albums;
        albums.recorded = std::move(contents.albumFiles);
        const AlbumsResult made = exportAlbums(albums, folder.fd(), m_cancel);
        if (albums.kind == RecordedAlbumFile::Copy)
            ::syncfs(folder.fd());
        record.setAlbumFiles(made.files);
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
    requireRoom(folder, plan.bytes);
    tellCutNames(plan, observer);
    if (request.albums) {
        const auto files = shownFilesAfter(plan, contents.files, folder);
        const Catalog &catalog = session.catalog();
        tellCutInAlbums(cutNames(plannedAlbums(catalog, filesByPhoto(catalog, files))), observer);
    }
    return plan;
}
