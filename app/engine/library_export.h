#ifndef PHOTOLIB_ENGINE_LIBRARY_EXPORT_H
#define PHOTOLIB_ENGINE_LIBRARY_EXPORT_H

#include "engine/export_report.h"
#include "engine/photo_filter.h"

#include <QByteArray>

class CancelToken;
class LibrarySession;

/// What to copy off a device, and where to.
struct ExportRequest {
    PhotoFilter filter;  ///< which photos and videos
    QByteArray folder;   ///< created with its parents if necessary
    bool verify = false; ///< compare the contents of what is there, not only size and time
};

/// Copies the files of photos and videos into a folder, each once, and of a classic iPod also what
/// it stores of them, as `PhotoExport` does. What it has copied stays, whatever happens then.
///
/// Throws Error for what the filter names and the library does not have, and for a folder that
/// cannot be written, is a device or lies in one, with nothing copied; and when the device is gone
/// or the disk full, and of the kind Cancelled once `cancel` is, with a text that tells how much
/// was copied. What fails of one file is in the result. On the calling thread, which is that of
/// `session`.
ExportResult exportPhotos(LibrarySession &session, const ExportRequest &request,
                          ExportObserver &observer, const CancelToken &cancel);

#endif // PHOTOLIB_ENGINE_LIBRARY_EXPORT_H
