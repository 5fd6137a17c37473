#ifndef PHOTOLIB_IOS_LIBRARY_MERGE_H
#define PHOTOLIB_IOS_LIBRARY_MERGE_H

#include "cameradb/camera_db.h"

#include <vector>

/// Builds a manager's view of a freshly read model: the uuids in use, the albums shown to
/// the host, and the members of the synthetic albums. It adds to what an earlier parse
/// left in the lists, which the caller keeps. For one thread.
class library_merge
{
public:
    /// What the manager keeps of the view.
    struct view {
        QMap<QByteArray, bool> &usedUuids;
        QMap<quint64, QList<quint64>> &albumPhotos;
        QList<quint64> &albumIds;
    };

    /// Both must outlive the merge.
    library_merge(const CameraDB &model, const view &target);

    /// Enters the uuids of all albums and assets, and `photoLibraryUuid`, which is not
    /// changed.
    void collectUsedUuids(QByteArray &photoLibraryUuid);

    /// Lists the synthetic albums and fills those of videos and panoramas.
    void listSyntheticAlbums();

    /// Lists the device's albums and files their photos that are not in the Camera Roll
    /// into the photo library.
    void mergeAlbums();

    /// Files the assets that are in no album: camera pictures into the synthetic Camera
    /// Roll while there is one, all others into the photo library. Comes last.
    void mergeLooseAssets();

private:
    std::vector<const Camera_Data *> looseAssets();
    void fileCameraPicture(const Camera_Data &asset);
    void fileLooseAsset(const Camera_Data &asset);

    const CameraDB &m_model;
    view m_view;
    const Camera_Album *m_cameraRoll; // null when the device has none
    std::vector<quint64> m_members;   // of all albums outside the trash
};

#endif // PHOTOLIB_IOS_LIBRARY_MERGE_H
