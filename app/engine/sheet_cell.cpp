#include "engine/sheet_cell.h"

#include "base/cancel_token.h"
#include "base/printable.h"
#include "engine/classic_photos.h"
#include "engine/library_session.h"
#include "engine/taken_text.h"

#include <cmath>

namespace {

QString markOf(FileState state)
{
    if (state == FileState::There)
        return QString();
    return state == FileState::Missing ? QStringLiteral("file missing")
                                       : QStringLiteral("file unreadable");
}

QString idText(const Asset &asset)
{
    return QString::number(asset.id);
}

QString nameText(const LibrarySession &session, const Asset &asset)
{
    const QByteArray name = printable(asset.fileName);
    return name.isEmpty() && session.classicIpod() ? idText(asset) : QString::fromUtf8(name);
}

// Nobody knows the time zone of a classic iPod's clock. The day says most.
CellLabel dateLabel(const LibrarySession &session, Asset asset)
{
    if (session.classicIpod())
        asset.utcOffset = 0;
    const QString text = takenText(asset);
    return {text, text.section(QLatin1Char(' '), 0, 0)};
}

CellLabel labelOf(SheetLabel label, const LibrarySession &session, const Asset &asset)
{
    switch (label) {
    case SheetLabel::Name:
        break;
    case SheetLabel::Date:
        return dateLabel(session, asset);
    case SheetLabel::Id:
        return {idText(asset), QString()};
    }
    return {nameText(session, asset), QString()};
}

// One that the catalog does not know has nothing but its id.
Asset assetOf(const LibrarySession &session, quint64 id)
{
    const Asset *const known = session.catalog().asset(qint64(id));
    Asset asset = known ? *known : Asset();
    asset.id = qint64(id);
    return asset;
}

qint64 wholeSeconds(const Asset &asset)
{
    constexpr double longest = 1e9; // longer ones are made up
    const double seconds = asset.duration.value_or(0);
    return seconds > 0 && seconds < longest ? qint64(std::llround(seconds)) : 0;
}

} // namespace

UndrawnCell readCell(LibrarySession &session, quint64 id, const QVector<SheetLabel> &labels)
{
    const Asset asset = assetOf(session, id);
    UndrawnCell undrawn;
    SheetCell &cell = undrawn.cell;
    cell.fileMark = markOf(session.fileState(asset));
    for (const SheetLabel label : labels)
        cell.labels.append(labelOf(label, session, asset));
    cell.isVideo = asset.kind == AssetKind::Video;
    cell.seconds = wholeSeconds(asset);
    cell.isTrashed = asset.isTrashed();
    undrawn.thumbnail = storedThumbnail(session, asset);
    return undrawn;
}

FinishedCell finishedCell(const UndrawnCell &undrawn, const SheetStyle &style,
                          const CancelToken &cancel)
{
    FinishedCell finished;
    finished.cell = undrawn.cell;
    const ShownPicture picture = shownPicture(undrawn.thumbnail, &cancel, style.boxSize);
    finished.cell.placeholder = picture.absence;
    finished.faults = picture.faults;
    finished.isVideoWithout = picture.isVideoWithout;
    finished.unreadable = picture.unreadable;
    finished.name = undrawn.thumbnail.label;
    if (!picture.image.isNull() && !cancel.isCancelled())
        finished.cell.picture = picture.image.scaled(
            style.shownSize(picture.image.size()), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return finished;
}
