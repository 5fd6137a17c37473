#include "engine/library_export.h"

#include "base/cancel_token.h"
#include "base/error.h"
#include "engine/device_bounds.h"
#include "engine/export_folder.h"
#include "engine/export_items.h"
#include "engine/library_session.h"
#include "engine/photo_export.h"
#include "engine/photo_filter.h"

namespace {

QVector<ExportItem> itemsFor(LibrarySession &session, const std::vector<const Asset *> &photos,
                             ExportObserver &observer, const CancelToken &cancel)
{
    QVector<ExportItem> items;
    const auto count = static_cast<int>(photos.size());
    items.reserve(count);
    for (int i = 0; i < count; ++i) {
        observer.looked(i, count);
        if (cancel.isCancelled())
            throw Error(Error::Cancelled, "interrupted: nothing was copied");
        items += exportItems(session, *photos[static_cast<std::size_t>(i)]);
    }
    return items;
}

// Every failure that ends it tells what was done by then.
void run(PhotoExport &photos, const CancelToken &cancel)
{
    const auto done = [&photos] { return photos.result().counts.text().toStdString(); };
    try {
        photos.run();
    } catch (const Error &error) {
        throw Error(Error::Failed, error.what() + ("; " + done()));
    }
    if (cancel.isCancelled())
        throw Error(Error::Cancelled, "interrupted: " + done());
}

} // namespace

ExportResult exportPhotos(LibrarySession &session, const ExportRequest &request,
                          ExportObserver &observer, const CancelToken &cancel)
{
    const QVector<ExportItem> items =
        itemsFor(session, chosenPhotos(session, request.filter), observer, cancel);
    const std::unique_ptr<EnsuredFolder> ensured = session.folderOutside(request.folder);
    refuseDeviceAsTarget(request.folder);
    ExportFolder folder(request.folder);
    const ExportComparison comparison =
        request.verify ? ExportComparison::Content : ExportComparison::SizeAndTime;
    PhotoExport photos(session.files(), folder, items, comparison, observer, cancel);
    run(photos, cancel);
    ensured->keep();
    return photos.result();
}
