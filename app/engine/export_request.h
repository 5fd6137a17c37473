#ifndef PHOTOLIB_ENGINE_EXPORT_REQUEST_H
#define PHOTOLIB_ENGINE_EXPORT_REQUEST_H

#include "engine/export_record.h"
#include "engine/name_template.h"
#include "engine/photo_filter.h"
#include "engine/sidecar.h"

#include <QByteArray>

#include <optional>
#include <vector>

/// Which versions of an edited photo or video to export.
enum class EditedChoice {
    Both,
    Original,
    Edited, ///< and the original of one that is not edited
};

/// What to export of a Live Photo.
enum class LiveChoice { Both, Still };

/// Which of the pictures that a classic iPod stores to export.
enum class StoredChoice {
    WithoutOriginal, ///< the largest, of photos without a full-resolution file
    Largest,
    All,
    None,
};

/// What to do with the copy of a file that has changed on the device since.
enum class UpdateChoice {
    Keep,    ///< it stays, beside the new one
    Replace, ///< the new one takes its place, unless somebody has changed it
};

/// What to export, and where to.
struct ExportRequest {
    PhotoFilter filter; ///< which photos and videos
    QByteArray folder;  ///< made with its parents if necessary
    QByteArray nameTemplate = NameTemplate::usual;
    EditedChoice edited = EditedChoice::Both;
    LiveChoice live = LiveChoice::Both;
    StoredChoice stored = StoredChoice::WithoutOriginal;
    bool recipe = false; ///< how edits were made, too
    std::vector<SidecarFormat> sidecars;
    std::optional<RecordedAlbumFile::Kind> albums; ///< without a value, no folders of albums
    UpdateChoice update = UpdateChoice::Keep;
    bool onlyNew = false; ///< what a person has moved or deleted is not copied again
    bool verify = false;  ///< read back what was written
};

#endif // PHOTOLIB_ENGINE_EXPORT_REQUEST_H
