#ifndef PHOTOLIB_ENGINE_EXPORT_ROLE_H
#define PHOTOLIB_ENGINE_EXPORT_ROLE_H

#include <QByteArray>

#include <optional>

/// What an exported file is to the photo or video that it belongs to.
enum class ExportRole {
    Original,
    Live,       ///< the film of a Live Photo
    Edited,     ///< the latest edit, rendered
    EditedLive, ///< the film of an edited Live Photo
    Recipe,     ///< how the edit was made
    Sidecar,    ///< what the library tells of the photo, written beside it
    Stored,     ///< a picture that a classic iPod stores for its screen
};

/// "original", "live", "edited", "editedLive", "recipe", "sidecar" or "stored", as reports and
/// records of exports have it.
const char *wordFor(ExportRole role);

/// The role that `wordFor` gives this word for; nothing for any other one.
std::optional<ExportRole> exportRoleOf(const QByteArray &word);

#endif // PHOTOLIB_ENGINE_EXPORT_ROLE_H
