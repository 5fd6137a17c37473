#ifndef PHOTOLIB_ENGINE_SHEET_CELL_H
#define PHOTOLIB_ENGINE_SHEET_CELL_H

#include "engine/contact_sheet.h"

#include <QStringList>

class LibrarySession;

/// What a contact sheet shows of the photo or video `id` of the library. What is wrong with its
/// pictures is appended to `*faults`, a line each; files that cannot be read are noted in
/// `session`. Throws Error when the device is gone.
SheetCell sheetCell(LibrarySession &session, quint64 id, QStringList *faults);

#endif // PHOTOLIB_ENGINE_SHEET_CELL_H
