#include "library_bytes.h"

#include "host/device_files.h"
#include "memory_use.h"

#include <functional>
#include <numeric>
#include <set>

namespace {

qint64 freedBy(const std::function<void()> &work)
{
    const qint64 before = memoryUse().heapBytes;
    work();
    return before - memoryUse().heapBytes;
}

void deleteRecords(CameraDB *model)
{
    qDeleteAll(model->assets);
    qDeleteAll(model->albums);
}

// Blocks, each counted once.
class BlockSet
{
public:
    void add(const void *block)
    {
        // The empty texts of Qt lie in no heap.
        if (block != QArrayData::sharedNull() && block != QByteArray("").data_ptr() &&
            block != QString::fromLatin1("").data_ptr() && block != &QListData::shared_null)
            m_blocks.insert(block);
    }

    qint64 heapBytes() const
    {
        return std::accumulate(
            m_blocks.begin(), m_blocks.end(), qint64(0),
            [](qint64 sum, const void *block) { return sum + ::heapBytesOf(block); });
    }

private:
    std::set<const void *> m_blocks;
};

} // namespace

qint64 sumOf(const std::vector<NamedBytes> &parts)
{
    return std::accumulate(parts.begin(), parts.end(), qint64(0),
                           [](qint64 sum, const NamedBytes &part) { return sum + part.bytes; });
}

qint64 recordBytes(const QList<Camera_Data *> &assets, const QList<Camera_Album *> &albums,
                   bool withMembers)
{
    BlockSet blocks;
    for (Camera_Data *asset : assets) {
        blocks.add(asset);
        blocks.add(asset->uuid.data_ptr());
        blocks.add(asset->fileName.data_ptr());
        blocks.add(asset->name.data_ptr());
        blocks.add(asset->directory.data_ptr());
        blocks.add(asset->avalancheUUID.data_ptr());
    }
    for (Camera_Album *album : albums) {
        blocks.add(album);
        blocks.add(album->uuid.data_ptr());
        blocks.add(album->title.data_ptr());
        if (withMembers)
            blocks.add(album->assetKeys.d);
    }
    return blocks.heapBytes();
}

std::vector<NamedBytes> takeApart(std::unique_ptr<photo_manager> manager)
{
    photo_manager &it = *manager;
    CameraDB *const model = it.m_pCameraDB;
    std::vector<NamedBytes> parts;
    // Those first that share their bytes with the records.
    parts.push_back({"set of uuids in use", freedBy([&] { it.m_mapUsedUUID.clear(); })});
    parts.push_back({"records", freedBy([&] { deleteRecords(model); })});
    parts.push_back({"model", freedBy([&] { delete model; })});
    it.m_pCameraDB = nullptr;
    parts.push_back({"lists of synthetic albums", freedBy([&] { it.m_mapAlbum2Photos.clear(); })});
    parts.push_back({"list of albums", freedBy([&] { it.m_listAlbumIDs.clear(); })});
    parts.push_back({"library's uuid", freedBy([&] { it.m_libraryUUID.clear(); })});
    parts.push_back({"device handle", freedBy([&] { vDevClose(it.m_pVDev); })});
    it.m_pVDev = nullptr;
    const qint64 storage = heapBytesOf(manager.get());
    parts.push_back({"locks", freedBy([&] { manager.reset(); }) - storage});
    return parts;
}
