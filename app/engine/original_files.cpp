#include "engine/original_files.h"

#include "base/file_names.h"
#include "catalog/asset.h"
#include "engine/classic_photos.h"
#include "engine/device_listing.h"
#include "engine/library_session.h"
#include "host/classic_ipod.h"

namespace {

bool isRendered(const QByteArray &name)
{
    return nameStem(name).toLower() == "fullsizerender" && !name.toLower().endsWith(".mov");
}

// The pictures that edits of `asset` were rendered to.
QList<QByteArray> renderedFiles(LibrarySession &session, const Asset &asset)
{
    const QByteArray directory = asset.directory.isEmpty() ? "" : asset.directory + '/';
    const QByteArray folder =
        "PhotoData/Mutations/" + directory + nameStem(asset.fileName) + "/Adjustments";
    QList<QByteArray> paths;
    for (const QByteArray &name : session.listing().folder(folder).names) {
        if (isRendered(name))
            paths.append(folder + '/' + name);
    }
    return paths;
}

QList<QByteArray> fullResolutionFile(LibrarySession &session, const Asset &asset)
{
    const ClassicPhoto *const photo = classicPhoto(session, quint64(asset.id));
    if (!photo || !hasOriginal(*photo))
        return {};
    return {session.classicIpod()->originalPath(*photo)};
}

} // namespace

OriginalFiles originalFiles(LibrarySession &session, const Asset &asset)
{
    OriginalFiles files;
    files.isVideo = asset.kind == AssetKind::Video;
    if (files.isVideo)
        return files;
    if (session.classicIpod()) {
        files.paths = fullResolutionFile(session, asset);
        return files;
    }
    if (asset.edited.value_or(false))
        files.paths = renderedFiles(session, asset);
    if (!asset.fileName.isEmpty())
        files.paths.append(asset.path());
    return files;
}
