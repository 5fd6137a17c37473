#ifndef PHOTOLIB_ENGINE_SHEET_CELL_H
#define PHOTOLIB_ENGINE_SHEET_CELL_H

#include "engine/contact_sheet.h"
#include "engine/sheet_plan.h"
#include "engine/thumbnail.h"

#include <QStringList>

class CancelToken;
class LibrarySession;

/// A cell whose picture is still as the device stores it.
struct UndrawnCell {
    SheetCell cell;
    StoredThumbnail thumbnail;
};

/// Reads what a contact sheet shows of the photo or video `id` of the library, with such labels.
/// Files that cannot be read are noted in `session`. Throws Error when the device is gone.
UndrawnCell readCell(LibrarySession &session, quint64 id, const QVector<SheetLabel> &labels);

/// A cell that is ready to be drawn.
struct FinishedCell {
    SheetCell cell;
    QStringList faults;          ///< of each picture that is damaged: what is wrong, for a message
    bool isVideoWithout = false; ///< it has no picture since it is a video
    FileError unreadable;        ///< why its original cannot be read, if that is there
    QString name;                ///< of that original, for messages
};

/// `undrawn` with its picture decoded, or made of an original, turned and scaled; soon, and without
/// one, when `cancel` is cancelled. Any thread.
FinishedCell finishedCell(const UndrawnCell &undrawn, const SheetStyle &style,
                          const CancelToken &cancel);

#endif // PHOTOLIB_ENGINE_SHEET_CELL_H
