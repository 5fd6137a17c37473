#ifndef PHOTOLIB_ENGINE_ASSET_FILE_H
#define PHOTOLIB_ENGINE_ASSET_FILE_H

#include <QByteArray>

/// What a file of the device is to the photo or video that it belongs to.
enum class AssetFileRole {
    Original,
    LiveFilm,   ///< the film of a Live Photo
    Edited,     ///< its latest edit, rendered: the picture of a photo, the film of a video
    EditedFilm, ///< the film of an edited Live Photo
    Recipe,     ///< how the edit was made
    Other,      ///< anything else of its name, a RAW beside a JPEG, say, or beside its edit
    Still,      ///< the picture that stands for it while the original is in iCloud, or for a video
    Thumbnail,
};

/// A file that belongs to a photo or video.
struct AssetFile {
    AssetFileRole role = AssetFileRole::Original;
    QByteArray path; ///< below the device's root
};

#endif // PHOTOLIB_ENGINE_ASSET_FILE_H
