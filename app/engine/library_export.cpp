#include "engine/library_export.h"

#include "base/byte_count.h"
#include "base/cancel_token.h"
#include "base/error.h"
#include "base/folders.h"
#include "engine/device_bounds.h"
#include "engine/export_run.h"
#include "engine/export_state.h"
#include "engine/library_session.h"
#include "engine/photo_filter.h"

#include <cerrno>
#include <system_error>

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

// Every failure that ends it tells what was done by then.
[[noreturn]] void rethrowWith(const Error &error, const ExportCounts &counts)
{
    throw Error(error.kind(), error.what() + ("; " + counts.text().toStdString()));
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
        const ExportState state(m_request.folder, m_cancel, [this] { m_observer.waiting(); });
        const ExportContents before =
            hasExportRecord(m_request.folder) ? ExportRecord(state).contents() : ExportContents();
        const ExportPlan plan =
            plannedExport(m_session, m_request, m_photos, folder, before, m_observer, m_cancel);
        requireRoom(folder, plan.bytes);
        tellCutNames(plan, m_observer);
        ExportRecord record(state);
        m_ensured->keep();
        copy(plan, folder, record, state, result);
    }

private:
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
    if (!isFolder(request.folder)) {
        ExportFolder nothing;
        return plannedExport(session, request, photos, nothing, ExportContents(), observer, cancel);
    }
    refuseDeviceAsTarget(request.folder);
    ExportFolder folder(request.folder);
    ExportPlan plan = plannedExport(session, request, photos, folder,
                                    readExportRecord(request.folder), observer, cancel);
    requireRoom(folder, plan.bytes);
    return plan;
}
