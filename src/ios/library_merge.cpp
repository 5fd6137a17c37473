#include "ios/library_merge.h"

#include "cameradb/prefetch.h"
#include "host/host_log.h"
#include "ios/key_lists.h"
#include "ios/synthetic_albums.h"
#include "ios/uuid_order.h"

#include <algorithm>
#include <iterator>

namespace {

typedef QMap<quint64, Camera_Album *> album_map;
typedef QMap<quint64, Camera_Data *> asset_map;

// The first one counts, in the trash or not.
const Camera_Album *firstCameraRoll(const album_map &albums)
{
    for (const Camera_Album *album : albums) {
        if (album->kind == cameraRollKind)
            return album;
    }
    return nullptr;
}

bool isListed(const Camera_Album &album)
{
    return album.kind == cameraRollKind || album.kind == customAlbumKind ||
           album.kind == userAlbumKind;
}

bool isCameraPicture(const Camera_Data &asset)
{
    return asset.directory.indexOf(QLatin1String("DCIM")) >= 0;
}

} // namespace

library_merge::library_merge(const CameraDB &model, const view &target)
    : m_model(model), m_view(target), m_cameraRoll(firstCameraRoll(model.albums))
{
}

void library_merge::collectUsedUuids(QByteArray &photoLibraryUuid)
{
    // The videos are among the assets.
    uuid_order uuids(m_model.albums.size() + m_model.assets.size() + 1);
    for (Camera_Album *album : m_model.albums)
        uuids.add(album->uuid);
    for (Camera_Data *asset : m_model.assets)
        uuids.add(asset->uuid);
    uuids.add(photoLibraryUuid);
    uuids.insertInto(m_view.usedUuids);
}

void library_merge::listSyntheticAlbums()
{
    if (!m_cameraRoll) {
        m_view.albumIds.append(cameraRollKey);
        m_view.albumPhotos[cameraRollKey] = QList<quint64>();
    }
    m_view.albumIds << photoLibraryKey << panoramaAlbumKey << videoAlbumKey;
    m_view.albumPhotos[photoLibraryKey] = QList<quint64>();
    m_view.albumPhotos[panoramaAlbumKey] = m_model.panoramas.keys();
    m_view.albumPhotos[videoAlbumKey] = m_model.videos.keys();
}

void library_merge::mergeAlbums()
{
    const key_set cameraRoll(m_cameraRoll ? m_cameraRoll->assetKeys : QList<quint64>());
    std::vector<quint64> outsideCameraRoll;
    for (const Camera_Album *album : m_model.albums) {
        if (album->trashedState == 1)
            continue;
        m_members.insert(m_members.end(), album->assetKeys.begin(), album->assetKeys.end());
        if (isListed(*album))
            m_view.albumIds.append(album->pk);
        if (album->kind == cameraRollKind)
            continue;
        std::copy_if(album->assetKeys.begin(), album->assetKeys.end(),
                     std::back_inserter(outsideCameraRoll),
                     [&](quint64 key) { return !cameraRoll.contains(key); });
    }
    QList<quint64> &library = m_view.albumPhotos[photoLibraryKey];
    for (quint64 key : firstOccurrences(outsideCameraRoll)) {
        Log("PHOTOLIB", 1, "To add a photo: %lld", static_cast<long long>(key));
        library.append(key);
    }
}

// In key order, as the assets and the sorted members are.
std::vector<const Camera_Data *> library_merge::looseAssets()
{
    std::sort(m_members.begin(), m_members.end());
    std::vector<const Camera_Data *> loose;
    std::vector<quint64>::const_iterator member = m_members.begin();
    for (asset_map::const_iterator asset = m_model.assets.begin(); asset != m_model.assets.end();
         ++asset) {
        while (member != m_members.end() && *member < asset.key())
            ++member;
        if (member == m_members.end() || *member != asset.key())
            loose.push_back(asset.value());
    }
    return loose;
}

void library_merge::mergeLooseAssets()
{
    // There is a synthetic Camera Roll also where an earlier parse made and filled one.
    const bool hasCameraRoll = m_view.albumPhotos.contains(cameraRollKey);
    const key_set earlier(m_view.albumPhotos.value(cameraRollKey));
    const std::size_t stepsAhead = 8;
    const std::vector<const Camera_Data *> loose = looseAssets();
    for (std::size_t i = 0; i < loose.size(); ++i) {
        if (i + stepsAhead < loose.size()) {
            prefetch(&loose[i + stepsAhead]->uuid);
            prefetch(&loose[i + stepsAhead]->directory);
        }
        const Camera_Data &asset = *loose[i];
        if (hasCameraRoll && isCameraPicture(asset) && !earlier.contains(asset.pk))
            fileCameraPicture(asset);
        else
            fileLooseAsset(asset);
    }
}

// Both lines carry the uuid's bytes as they are: hosts search their logs for them.

void library_merge::fileCameraPicture(const Camera_Data &asset)
{
    Log("PHOTOLIB", 1, "Add some photo not in album but as Camera roll: %lld, uuid: %s",
        static_cast<long long>(asset.pk), asset.uuid.constData());
    m_view.albumPhotos[cameraRollKey].append(asset.pk);
}

// The library does not hold the asset yet, for what it holds is in an album.
void library_merge::fileLooseAsset(const Camera_Data &asset)
{
    Log("PHOTOLIB", 1, "Add some photo not in album: %lld, uuid: %s",
        static_cast<long long>(asset.pk), asset.uuid.constData());
    m_view.albumPhotos[photoLibraryKey].append(asset.pk);
}
