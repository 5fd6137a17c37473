#ifndef PHOTOLIB_ENGINE_SIDECAR_H
#define PHOTOLIB_ENGINE_SIDECAR_H

#include <QByteArray>

struct Asset;
struct Catalog;

/// A sidecar is a small file beside an exported photo or video that holds what the library tells of
/// it. Only what the library tells counts: the same photo gives the same bytes at any time.
enum class SidecarFormat {
    Json, ///< for programs that read lists of photos, too
    Xmp,  ///< for programs that show and sort photos
};

/// ".json" or ".xmp". A sidecar's name is the whole name of its photo with this at the end,
/// "IMG_0001.JPG.xmp", so that photos whose names differ by the extension have one each.
QByteArray sidecarSuffix(SidecarFormat format);

/// The object that docs/json.md describes for one photo or video, on one line.
QByteArray jsonSidecar(const Asset &asset);

/// XMP with title, caption, keywords, people, albums, favourite, place, time of capture and
/// original name of `asset`, which is one of `catalog`; what is not known is left out. Any thread
/// may call it; they take turns. Throws Error, and std::bad_alloc.
QByteArray xmpSidecar(const Asset &asset, const Catalog &catalog);

#endif // PHOTOLIB_ENGINE_SIDECAR_H
