#ifndef PHOTOLIB_ENGINE_CLASSIC_SOURCES_H
#define PHOTOLIB_ENGINE_CLASSIC_SOURCES_H

#include "engine/export_request.h"
#include "engine/export_source.h"

#include <vector>

class LibrarySession;

/// The files of `asset`, a photo of a classic iPod, that may be exported: the full-resolution file
/// that the database names, and of the pictures that the iPod stores those that `choice` asks for,
/// made into image files. `session` must outlive them. Throws Error when the device is gone.
std::vector<ExportSource> classicSources(LibrarySession &session, StoredChoice choice,
                                         const Asset &asset);

#endif // PHOTOLIB_ENGINE_CLASSIC_SOURCES_H
