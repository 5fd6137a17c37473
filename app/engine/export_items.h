#ifndef PHOTOLIB_ENGINE_EXPORT_ITEMS_H
#define PHOTOLIB_ENGINE_EXPORT_ITEMS_H

#include "engine/photo_export.h"

class LibrarySession;
struct Asset;

/// The files to export of `photo`, at least one: its file on an iOS device; of a classic iPod the
/// full-resolution file, if the database names one, and then the largest picture that is stored, so
/// that the former gets the name that both would like. `session` must outlive them.
QVector<ExportItem> exportItems(LibrarySession &session, const Asset &photo);

#endif // PHOTOLIB_ENGINE_EXPORT_ITEMS_H
