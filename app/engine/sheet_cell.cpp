#include "engine/sheet_cell.h"

#include "base/printable.h"
#include "engine/classic_photos.h"
#include "engine/library_session.h"
#include "engine/photo_text.h"
#include "engine/thumbnail.h"
#include "engine/type_codes.h"

namespace {

QString markOf(FileState state)
{
    if (state == FileState::There)
        return QString();
    return state == FileState::Missing ? QStringLiteral("file missing")
                                       : QStringLiteral("file unreadable");
}

QString caption(const LibrarySession &session, const photoItem &item)
{
    const QString name = printable(fileName(session, item));
    return name.isEmpty() && session.classicIpod() ? QString::number(item.id) : name;
}

} // namespace

SheetCell sheetCell(LibrarySession &session, quint64 id, QStringList *faults)
{
    photoItem item;
    SheetCell cell;
    session.library().getPhoto(id, &item); // false also for an empty file
    cell.fileMark = markOf(session.fileState(item));
    cell.name = caption(session, item);
    cell.isVideo = item.type == videoType;
    cell.seconds = item.duration;
    cell.isTrashed = item.trashedDate != 0;
    const ShownPicture picture = shownPicture(session, item);
    cell.picture = picture.image;
    cell.placeholder = picture.absence;
    *faults += picture.faults;
    return cell;
}
