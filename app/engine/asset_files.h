#ifndef PHOTOLIB_ENGINE_ASSET_FILES_H
#define PHOTOLIB_ENGINE_ASSET_FILES_H

#include "catalog/asset.h"
#include "devices/device_file_system.h"
#include "engine/asset_file.h"
#include "engine/asset_folder.h"

#include <QByteArray>

#include <map>
#include <vector>

class DeviceListing;
struct Catalog;

/// Which files of a device belong to each photo and video of its library. Learnt by listing
/// folders, each once: that of the originals, that of the edits made to them, and one more for
/// each photo that has been edited.
///
/// A file beside an original that is none itself belongs to the photo of the same name but for the
/// extension; where there is none, to the photo of that name in another case. Edits are found by
/// the name likewise. Each such file belongs to one photo or video only. Where several have the
/// name, "IMG_1.JPG" and "IMG_1.PNG", it is
/// - for a film beside the originals a photo rather than a video, then what the library calls a
///   Live Photo;
/// - for a rendered picture a photo rather than a video, then what the library calls edited;
/// - for a rendered film what the library calls edited, then a video or Live Photo;
/// - for other files made by editing what the library calls edited;
/// and then what is not in the trash, then the one with the lowest id. A photo has one live film;
/// further films are other files. An original that the library names twice is that of both.
///
/// For one thread at a time.
class AssetFiles
{
public:
    /// Of the photos and videos of `catalog`. Both must outlive the object.
    AssetFiles(const Catalog &catalog, DeviceListing &listing);

    /// What the device has of `asset`, one of the catalog, by role and then by path, each path
    /// once. Without the pictures that the device makes for itself. None for one without a name,
    /// or whose path leads out of the device.
    std::vector<AssetFile> of(const Asset &asset);

    /// The stills and thumbnails of `asset`, likewise. Lists a folder for each one asked for.
    /// Photos of one name in one folder have one still.
    std::vector<AssetFile> madeByDevice(const Asset &asset);

    /// The folders that are there but could not be listed, by path, and why: what they hold is
    /// missing from all that was told so far. A device that is gone has them all here.
    const std::map<QByteArray, FileError> &unlistedFolders() const { return m_unlisted; }

private:
    const QList<QByteArray> &namesIn(const QByteArray &folderPath);
    const AssetFolder &folder(const QByteArray &path);
    void addEdits(const QByteArray &folderPath, const AssetName &asset,
                  std::vector<AssetFile> *files);
    QByteArray adjustmentsIn(const QByteArray &path);
    bool hasOriginals(const QByteArray &folderPath) const;

    DeviceListing &m_listing;
    // Sorted: names from a device can make hashes slow.
    std::map<QByteArray, std::vector<AssetName>> m_assets; // by folder
    std::map<QByteArray, AssetFolder> m_folders;
    std::map<QByteArray, FileError> m_unlisted;
};

#endif // PHOTOLIB_ENGINE_ASSET_FILES_H
