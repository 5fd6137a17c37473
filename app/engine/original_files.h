#ifndef PHOTOLIB_ENGINE_ORIGINAL_FILES_H
#define PHOTOLIB_ENGINE_ORIGINAL_FILES_H

#include <QByteArray>
#include <QList>

class LibrarySession;
struct Asset;

/// The files that a thumbnail of a photo or video can be made of.
struct OriginalFiles {
    QList<QByteArray> paths; ///< on the device, the best first
    bool isVideo = false;    ///< of which no thumbnail is made; then there are no paths
};

/// Those of `asset`: its edited version before its original, or the full-resolution file of a
/// classic iPod's photo. Not all of them need to be on the device.
OriginalFiles originalFiles(LibrarySession &session, const Asset &asset);

#endif // PHOTOLIB_ENGINE_ORIGINAL_FILES_H
