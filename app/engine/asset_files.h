#ifndef PHOTOLIB_ENGINE_ASSET_FILES_H
#define PHOTOLIB_ENGINE_ASSET_FILES_H

#include "catalog/asset.h"

#include <QByteArray>

#include <vector>

class DeviceListing;

/// What a file of the device is to the photo or video that it belongs to.
enum class AssetFileRole {
    Original,
    LiveVideo, ///< the film of a Live Photo
    Sidecar,   ///< how the camera app has edited it
    Edit,      ///< its latest edit: the picture or film, and how it was made
    Still,     ///< the picture that stands for it while the original is in iCloud, or for a video
    Thumbnail,
};

/// A file that belongs to a photo or video.
struct AssetFile {
    AssetFileRole role = AssetFileRole::Original;
    QByteArray path; ///< below the device's root
};

/// The files that the device has of `asset`, the original first, by role and then by name; none
/// for one without a file name. Learnt by listing folders.
std::vector<AssetFile> filesOf(const Asset &asset, DeviceListing &listing);

#endif // PHOTOLIB_ENGINE_ASSET_FILES_H
