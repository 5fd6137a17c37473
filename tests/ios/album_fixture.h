#ifndef PHOTOLIB_TESTS_IOS_ALBUM_FIXTURE_H
#define PHOTOLIB_TESTS_IOS_ALBUM_FIXTURE_H

#include "boundary/photo_records.h"
#include "ios/parse_fixture.h"
#include "ios/photo_manager.h"
#include "support/fake_host.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <tuple>
#include <vector>

/// What an album operation could change in a manager; equal when nothing was changed.
/// Assets are compared by where they lie.
struct LibraryState {
    using Album = std::tuple<const Camera_Album *, quint64, qint32, QString, QByteArray, qint32,
                             QList<quint64>>;

    explicit LibraryState(const photo_manager &manager)
        : albumPhotos(manager.m_mapAlbum2Photos), albumIds(manager.m_listAlbumIDs),
          usedUuids(manager.m_mapUsedUUID), kinds(photo_manager::m_mapAlbumKind2Type.keys())
    {
        const CameraDB *model = manager.m_pCameraDB;
        if (model == nullptr)
            return;
        for (auto at = model->albums.begin(); at != model->albums.end(); ++at) {
            const Camera_Album *album = at.value();
            albums[at.key()] = Album(album, album->pk, album->kind, album->title, album->uuid,
                                     album->trashedState, album->assetKeys);
        }
        assets = model->assets;
        videos = model->videos;
        panoramas = model->panoramas;
        maxAssetPk = model->maxAssetPk;
        maxAlbumPk = model->maxAlbumPk;
    }

    QMap<quint64, QList<quint64>> albumPhotos;
    QList<quint64> albumIds;
    QMap<QByteArray, bool> usedUuids;
    QList<int> kinds;
    QMap<quint64, Album> albums;
    QMap<quint64, Camera_Data *> assets;
    QMap<quint64, Camera_Data *> videos;
    QMap<quint64, Camera_Data *> panoramas;
    qint32 maxAssetPk = 0;
    qint32 maxAlbumPk = 0;
};

inline bool operator==(const LibraryState &left, const LibraryState &right)
{
    return left.albumPhotos == right.albumPhotos && left.albumIds == right.albumIds &&
           left.usedUuids == right.usedUuids && left.kinds == right.kinds &&
           left.albums == right.albums && left.assets == right.assets &&
           left.videos == right.videos && left.panoramas == right.panoramas &&
           left.maxAssetPk == right.maxAssetPk && left.maxAlbumPk == right.maxAlbumPk;
}

/// A manager over a model made by hand, at first without albums and assets.
class AlbumFixture : public testing::Test
{
protected:
    using Lines = std::vector<std::string>;
    using Log = std::vector<LogLine>;
    using Ids = QList<quint64>;

    AlbumFixture() : manager(&device) { manager.m_pCameraDB = new CameraDB(); }

    CameraDB &model() { return *manager.m_pCameraDB; }

    Camera_Data *addAsset(quint64 key)
    {
        auto *asset = new Camera_Data();
        asset->db = manager.m_pCameraDB;
        asset->pk = key;
        asset->uuid = "asset-" + QByteArray::number(key);
        model().assets[key] = asset;
        return asset;
    }

    void addAssets(const Ids &keys)
    {
        for (const quint64 key : keys)
            addAsset(key);
    }

    /// An album of the device that is not shown.
    Camera_Album *addHiddenAlbum(quint64 key, const Ids &members = Ids(), qint32 kind = 2,
                                 const QString &title = QStringLiteral("Album"))
    {
        auto *album = new Camera_Album();
        album->pk = key;
        album->kind = kind;
        album->title = title;
        album->uuid = "album-" + QByteArray::number(key);
        album->assetKeys = members;
        model().albums[key] = album;
        return album;
    }

    Camera_Album *addListedAlbum(quint64 key, const Ids &members = Ids(), qint32 kind = 2,
                                 const QString &title = QStringLiteral("Album"))
    {
        manager.m_listAlbumIDs.append(key);
        return addHiddenAlbum(key, members, kind, title);
    }

    void addSyntheticAlbum(quint64 key, const Ids &members)
    {
        manager.m_listAlbumIDs.append(key);
        manager.m_mapAlbum2Photos[key] = members;
    }

    /// The synthetic albums that every library has, in their order.
    void addSyntheticAlbums(const Ids &library)
    {
        addSyntheticAlbum(synthetic::Library, library);
        addSyntheticAlbum(synthetic::Panorama, Ids());
        addSyntheticAlbum(synthetic::Video, Ids());
    }

    Ids library() const { return manager.m_mapAlbum2Photos.value(synthetic::Library); }

    albumItem fetched(quint64 key)
    {
        albumItem album;
        EXPECT_TRUE(manager.getAlbum(key, &album)) << key;
        return album;
    }

    LibraryState state() const { return LibraryState(manager); }

    /// As after a parse that failed: the lists of an earlier one stay.
    void dropModel()
    {
        qDeleteAll(model().albums);
        qDeleteAll(model().assets);
        delete manager.m_pCameraDB;
        manager.m_pCameraDB = nullptr;
    }

    FakeHost host;
    FakeIPod device;
    photo_manager manager;
};

/// An album whose every field differs from what the manager writes.
inline albumItem oldAlbum()
{
    albumItem album;
    album.id = 999;
    album.uuid = "old uuid";
    album.name = QStringLiteral("old name");
    album.type = -1;
    album.photoIDs = {777, 778};
    return album;
}

inline void expectAlbum(const albumItem &album, const albumItem &expected)
{
    EXPECT_EQ(album.id, expected.id);
    EXPECT_EQ(album.uuid, expected.uuid);
    EXPECT_EQ(album.uuid.isNull(), expected.uuid.isNull());
    EXPECT_EQ(album.name, expected.name);
    EXPECT_EQ(album.type, expected.type);
    EXPECT_EQ(album.photoIDs, expected.photoIDs);
}

/// Whether another thread could take the lock at this moment.
inline bool isFreeElsewhere(QMutex &mutex)
{
    bool locked = false;
    std::thread([&] {
        locked = mutex.tryLock();
        if (locked)
            mutex.unlock();
    }).join();
    return locked;
}

#endif // PHOTOLIB_TESTS_IOS_ALBUM_FIXTURE_H
