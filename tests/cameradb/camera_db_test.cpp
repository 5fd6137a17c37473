#include "cameradb/camera_db.h"

#include "cameradb/owned_model.h"
#include "support/fake_host.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>

namespace {

template <class Record>
constexpr bool isPlainRecord()
{
    return std::is_aggregate<Record>::value && std::is_standard_layout<Record>::value &&
           !std::is_polymorphic<Record>::value;
}
static_assert(isPlainRecord<CameraDB>(), "public fields, no constructor of its own");
static_assert(isPlainRecord<Camera_Data>(), "public fields, no constructor of its own");
static_assert(isPlainRecord<Camera_Album>(), "public fields, no constructor of its own");

static_assert(std::is_same<struct _Camera_DB, CameraDB>::value, "both names");
static_assert(std::is_same<struct _Camera_Data, Camera_Data>::value, "both names");
static_assert(std::is_same<struct _Camera_Album, Camera_Album>::value, "both names");

// What the fields of the records have to be, for sizes and offsets.
struct ModelLayout {
    QMap<quint64, Camera_Album *> albums;
    QMap<quint64, Camera_Data *> assets;
    QMap<quint64, Camera_Data *> videos;
    QMap<quint64, Camera_Data *> panoramas;
    IIPod *device;
    QByteArray uuid;
    qint32 maxAssetPk;
    qint32 maxAlbumPk;
    bool hasKindSubtype;
};

struct AssetLayout {
    CameraDB *db;
    quint64 pk;
    qint32 kind;
    qint32 kindSubtype;
    QString name;
    QByteArray uuid;
    qint32 createDate;
    qint32 width;
    qint32 height;
    qint32 reserved1;
    qint32 reserved2;
    qint32 reserved3;
    qint32 thumbnailIndex;
    qint32 orientation;
    QString directory;
    QString fileName;
    qint32 duration;
    qint32 modificationDate;
    qint64 trashedDate;
    qint64 originalFileSize;
    QString avalancheUUID;
    double sortToken;
};

struct AlbumLayout {
    quint64 pk;
    qint32 kind;
    qint32 reserved1;
    qint32 reserved2;
    QString title;
    QByteArray uuid;
    qint32 reserved3;
    qint32 trashedState;
    QList<quint64> assetKeys;
};

#define EXPECT_SAME_PLACE(Record, Layout, field)                                                   \
    static_assert(std::is_same<decltype(Record::field), decltype(Layout::field)>::value, "type");  \
    EXPECT_EQ(offsetof(Record, field), offsetof(Layout, field)) << #field

TEST(CameraDatabaseModel, HoldsItsNineFieldsInOrderAndNothingElse)
{
    EXPECT_SAME_PLACE(CameraDB, ModelLayout, albums);
    EXPECT_SAME_PLACE(CameraDB, ModelLayout, assets);
    EXPECT_SAME_PLACE(CameraDB, ModelLayout, videos);
    EXPECT_SAME_PLACE(CameraDB, ModelLayout, panoramas);
    EXPECT_SAME_PLACE(CameraDB, ModelLayout, device);
    EXPECT_SAME_PLACE(CameraDB, ModelLayout, uuid);
    EXPECT_SAME_PLACE(CameraDB, ModelLayout, maxAssetPk);
    EXPECT_SAME_PLACE(CameraDB, ModelLayout, maxAlbumPk);
    EXPECT_SAME_PLACE(CameraDB, ModelLayout, hasKindSubtype);
    EXPECT_EQ(sizeof(CameraDB), sizeof(ModelLayout));
}

TEST(CameraAssetRecord, HoldsItsTwentyTwoFieldsInOrderAndNothingElse)
{
    EXPECT_SAME_PLACE(Camera_Data, AssetLayout, db);
    EXPECT_SAME_PLACE(Camera_Data, AssetLayout, pk);
    EXPECT_SAME_PLACE(Camera_Data, AssetLayout, kind);
    EXPECT_SAME_PLACE(Camera_Data, AssetLayout, kindSubtype);
    EXPECT_SAME_PLACE(Camera_Data, AssetLayout, name);
    EXPECT_SAME_PLACE(Camera_Data, AssetLayout, uuid);
    EXPECT_SAME_PLACE(Camera_Data, AssetLayout, createDate);
    EXPECT_SAME_PLACE(Camera_Data, AssetLayout, width);
    EXPECT_SAME_PLACE(Camera_Data, AssetLayout, height);
    EXPECT_SAME_PLACE(Camera_Data, AssetLayout, reserved1);
    EXPECT_SAME_PLACE(Camera_Data, AssetLayout, reserved2);
    EXPECT_SAME_PLACE(Camera_Data, AssetLayout, reserved3);
    EXPECT_SAME_PLACE(Camera_Data, AssetLayout, thumbnailIndex);
    EXPECT_SAME_PLACE(Camera_Data, AssetLayout, orientation);
    EXPECT_SAME_PLACE(Camera_Data, AssetLayout, directory);
    EXPECT_SAME_PLACE(Camera_Data, AssetLayout, fileName);
    EXPECT_SAME_PLACE(Camera_Data, AssetLayout, duration);
    EXPECT_SAME_PLACE(Camera_Data, AssetLayout, modificationDate);
    EXPECT_SAME_PLACE(Camera_Data, AssetLayout, trashedDate);
    EXPECT_SAME_PLACE(Camera_Data, AssetLayout, originalFileSize);
    EXPECT_SAME_PLACE(Camera_Data, AssetLayout, avalancheUUID);
    EXPECT_SAME_PLACE(Camera_Data, AssetLayout, sortToken);
    EXPECT_EQ(sizeof(Camera_Data), sizeof(AssetLayout));
}

TEST(CameraAlbumRecord, HoldsItsNineFieldsInOrderAndNothingElse)
{
    EXPECT_SAME_PLACE(Camera_Album, AlbumLayout, pk);
    EXPECT_SAME_PLACE(Camera_Album, AlbumLayout, kind);
    EXPECT_SAME_PLACE(Camera_Album, AlbumLayout, reserved1);
    EXPECT_SAME_PLACE(Camera_Album, AlbumLayout, reserved2);
    EXPECT_SAME_PLACE(Camera_Album, AlbumLayout, title);
    EXPECT_SAME_PLACE(Camera_Album, AlbumLayout, uuid);
    EXPECT_SAME_PLACE(Camera_Album, AlbumLayout, reserved3);
    EXPECT_SAME_PLACE(Camera_Album, AlbumLayout, trashedState);
    EXPECT_SAME_PLACE(Camera_Album, AlbumLayout, assetKeys);
    EXPECT_EQ(sizeof(Camera_Album), sizeof(AlbumLayout));
}

TEST(CameraDatabaseModel, StartsEmpty)
{
    const OwnedModel model = emptyModel();
    EXPECT_TRUE(model->albums.isEmpty());
    EXPECT_TRUE(model->assets.isEmpty());
    EXPECT_TRUE(model->videos.isEmpty());
    EXPECT_TRUE(model->panoramas.isEmpty());
    EXPECT_TRUE(model->uuid.isEmpty());
}

TEST(CameraAssetRecord, StartsWithoutTextsAndUuid)
{
    const Camera_Data asset = Camera_Data();
    EXPECT_TRUE(asset.name.isNull());
    EXPECT_TRUE(asset.directory.isNull());
    EXPECT_TRUE(asset.fileName.isNull());
    EXPECT_TRUE(asset.avalancheUUID.isNull());
    EXPECT_TRUE(asset.uuid.isEmpty());
}

TEST(CameraAlbumRecord, StartsWithoutTitleUuidAndMembers)
{
    const Camera_Album album = Camera_Album();
    EXPECT_TRUE(album.title.isNull());
    EXPECT_TRUE(album.uuid.isEmpty());
    EXPECT_TRUE(album.assetKeys.isEmpty());
}

TEST(CameraDatabaseModel, IteratesNegativeKeysLast)
{
    QMap<quint64, Camera_Data *> assets;
    for (const qint32 key : {7, -5, 3, -1})
        assets.insert(static_cast<quint64>(static_cast<qint64>(key)), nullptr);
    const QList<quint64> inOrder = {3, 7, 0xfffffffffffffffb, 0xffffffffffffffff};
    EXPECT_EQ(assets.keys(), inOrder);
}

Camera_Data *addAsset(CameraDB *model, quint64 pk)
{
    Camera_Data *record = new Camera_Data();
    record->db = model;
    record->pk = pk;
    record->fileName = QStringLiteral("IMG_%1.JPG").arg(pk);
    model->assets.insert(pk, record);
    return record;
}

// The sanitizers see a record that is freed too early, twice or never.
TEST(CameraDatabaseModel, LeavesItsRecordsAliveWhenItIsDeleted)
{
    std::unique_ptr<CameraDB> model(new CameraDB());
    const std::unique_ptr<Camera_Data> photo(addAsset(model.get(), 1));
    const std::unique_ptr<Camera_Data> video(addAsset(model.get(), 2));
    model->videos.insert(2, video.get());
    const std::unique_ptr<Camera_Album> album(new Camera_Album());
    album->assetKeys = {1, 2};
    model->albums.insert(3, album.get());

    model.reset();
    EXPECT_EQ(photo->fileName, QStringLiteral("IMG_1.JPG"));
    EXPECT_EQ(video->fileName, QStringLiteral("IMG_2.JPG"));
    EXPECT_EQ(album->assetKeys, (QList<quint64>{1, 2}));
}

TEST(CameraDatabaseModel, FreesEverythingOnceThroughItsAssets)
{
    CameraDB *model = new CameraDB();
    for (const quint64 pk : {1U, 2U, 3U})
        addAsset(model, pk);
    model->videos.insert(2, model->assets.value(2));
    model->panoramas.insert(3, model->assets.value(3));

    for (const Camera_Data *record : qAsConst(model->assets))
        delete record;
    delete model;
}

TEST(CameraDatabaseModel, LeavesTheDeviceAlone)
{
    FakeHost host;
    FakeIPod device;
    std::unique_ptr<CameraDB> model(new CameraDB());
    model->device = &device;
    model.reset();
    EXPECT_TRUE(host.trace().empty());
    EXPECT_EQ(device.devicePath(), QString::fromLatin1(FakeHost::DeviceName));
}

} // namespace
