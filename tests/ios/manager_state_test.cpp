#include "cameradb/cancel_flag.h"
#include "ios/photo_manager.h"
#include "ios/time_zone.h"
#include "support/allocation_faults.h"
#include "support/fake_host.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

// The manager as debuggers and older hosts know it: the table pointer, then these.
struct ManagerLayout {
    void *table;
    IIPod *m_pIPod;
    VDev *m_pVDev;
    VFile *m_pThmbFile;
    ThumbType m_thmbType;
    CameraDB *m_pCameraDB;
    QMap<QByteArray, bool> m_mapUsedUUID;
    QMap<quint64, QList<quint64>> m_mapAlbum2Photos;
    QList<quint64> m_listAlbumIDs;
    QMutex m_mutex;
    QMutex m_recMutex;
    QByteArray m_libraryUUID;
    QDateTime m_refDate;
    QSemaphore m_semParse{0};
    bool m_bCancel;
};

static_assert(std::is_aggregate<ThumbType>::value, "four numbers");
static_assert(std::is_same<decltype(ThumbType::dataSize), qint32>::value, "signed 32 bits");
static_assert(std::is_same<decltype(ThumbType::rowPixels), qint32>::value, "signed 32 bits");
static_assert(std::is_same<decltype(ThumbType::height), qint32>::value, "signed 32 bits");
static_assert(std::is_same<decltype(ThumbType::width), qint32>::value, "signed 32 bits");
static_assert(sizeof(ThumbType) == 16, "four numbers");
static_assert(offsetof(ThumbType, dataSize) == 0, "order");
static_assert(offsetof(ThumbType, rowPixels) == 4, "order");
static_assert(offsetof(ThumbType, height) == 8, "order");
static_assert(offsetof(ThumbType, width) == 12, "order");

using Property = photo_manager::AlbumKindProp;
static_assert(std::is_same<decltype(Property::type), qint32>::value, "signed 32 bits");
static_assert(std::is_same<decltype(Property::name), QString>::value, "a text");
static_assert(std::is_same<decltype(Property::version), double>::value, "a double");
static_assert(offsetof(Property, type) < offsetof(Property, name), "order");
static_assert(offsetof(Property, name) < offsetof(Property, version), "order");
static_assert(sizeof(Property) == 8 + sizeof(QString) + sizeof(double), "three fields");

template <typename Object, typename Member>
std::ptrdiff_t placeOf(const Object &object, const Member &member)
{
    return reinterpret_cast<const char *>(&member) - reinterpret_cast<const char *>(&object);
}

#define EXPECT_SAME_PLACE(manager, layout, member)                                                 \
    static_assert(                                                                                 \
        std::is_same<decltype(photo_manager::member), decltype(ManagerLayout::member)>::value,     \
        #member);                                                                                  \
    EXPECT_EQ(placeOf(manager, (manager).member), placeOf(layout, (layout).member)) << #member

class ManagerState : public testing::Test
{
protected:
    FakeHost host;
    FakeIPod device;
};

using ManagerDestruction = ManagerState;
using ManagerCancel = ManagerState;
using ManagerLocksThreads = ManagerState;

void expectKind(int kind, qint32 type, const QString &name)
{
    ASSERT_TRUE(photo_manager::m_mapAlbumKind2Type.contains(kind)) << kind;
    const Property property = photo_manager::m_mapAlbumKind2Type.value(kind);
    EXPECT_EQ(property.type, type);
    EXPECT_EQ(property.name, name);
    EXPECT_EQ(property.version, 8.0);
}

void expectStaticTables()
{
    EXPECT_EQ(photo_manager::m_mapAlbumKind2Type.size(), 3);
    expectKind(1000, 1, QStringLiteral("Camera Roll"));
    expectKind(2, 4, QStringLiteral("Album in Device"));
    expectKind(1550, 6, QStringLiteral("Cus Album"));
    EXPECT_EQ(photo_manager::m_photoLibUUID,
              QByteArray::fromHex("00000000000000000000000000000064"));
}

TEST_F(ManagerState, HoldsItsMembersInOrderAndNoOther)
{
    const photo_manager manager(&device);
    const ManagerLayout layout{};
    EXPECT_SAME_PLACE(manager, layout, m_pIPod);
    EXPECT_SAME_PLACE(manager, layout, m_pVDev);
    EXPECT_SAME_PLACE(manager, layout, m_pThmbFile);
    EXPECT_SAME_PLACE(manager, layout, m_thmbType);
    EXPECT_SAME_PLACE(manager, layout, m_pCameraDB);
    EXPECT_SAME_PLACE(manager, layout, m_mapUsedUUID);
    EXPECT_SAME_PLACE(manager, layout, m_mapAlbum2Photos);
    EXPECT_SAME_PLACE(manager, layout, m_listAlbumIDs);
    EXPECT_SAME_PLACE(manager, layout, m_mutex);
    EXPECT_SAME_PLACE(manager, layout, m_recMutex);
    EXPECT_SAME_PLACE(manager, layout, m_libraryUUID);
    EXPECT_SAME_PLACE(manager, layout, m_refDate);
    EXPECT_SAME_PLACE(manager, layout, m_semParse);
    EXPECT_SAME_PLACE(manager, layout, m_bCancel);
    EXPECT_EQ(sizeof(photo_manager), sizeof(ManagerLayout));
}

TEST_F(ManagerState, StartsWithoutAModelOrHandles)
{
    const photo_manager manager(&device);
    EXPECT_EQ(manager.m_pIPod, &device);
    EXPECT_EQ(manager.m_pVDev, nullptr);
    EXPECT_EQ(manager.m_pThmbFile, nullptr);
    EXPECT_EQ(manager.m_pCameraDB, nullptr);
    EXPECT_TRUE(manager.m_mapUsedUUID.isEmpty());
    EXPECT_TRUE(manager.m_mapAlbum2Photos.isEmpty());
    EXPECT_TRUE(manager.m_listAlbumIDs.isEmpty());
    EXPECT_TRUE(manager.m_libraryUUID.isEmpty());
    EXPECT_EQ(manager.m_semParse.available(), 1);
    EXPECT_FALSE(manager.m_bCancel);
}

TEST_F(ManagerState, TakesANullDevice)
{
    const photo_manager manager(nullptr);
    EXPECT_EQ(manager.m_pIPod, nullptr);
}

TEST_F(ManagerState, AsksNothingOfTheHostWhenMadeAndDestroyed)
{
    {
        const photo_manager manager(&device);
    }
    EXPECT_EQ(host.trace(), Lines());
}

TEST_F(ManagerState, FillsTheStaticTablesWithTheFirstManager)
{
    for (const QByteArray &before : {QByteArray(), QByteArray("stale")}) {
        photo_manager::m_mapAlbumKind2Type.clear();
        photo_manager::m_photoLibUUID = before;
        const photo_manager manager(&device);
        expectStaticTables();
    }
}

TEST_F(ManagerState, KeepsTheStaticTablesWithASecondManager)
{
    const photo_manager first(&device);
    const photo_manager second(&device);
    expectStaticTables();
}

TEST_F(ManagerState, LeavesTheStaticTablesAloneOnceTheyAreFilled)
{
    const photo_manager first(&device);
    const auto table = photo_manager::m_mapAlbumKind2Type;
    const QByteArray uuid = photo_manager::m_photoLibUUID;
    photo_manager::m_mapAlbumKind2Type = {{7, Property{70, QStringLiteral("seven"), 1.0}}};
    photo_manager::m_photoLibUUID = "mine";

    const photo_manager second(&device);
    EXPECT_EQ(photo_manager::m_mapAlbumKind2Type.keys(), QList<int>{7});
    EXPECT_EQ(photo_manager::m_photoLibUUID, QByteArray("mine"));

    photo_manager::m_mapAlbumKind2Type = table;
    photo_manager::m_photoLibUUID = uuid;
}

TEST_F(ManagerState, CountsDatesFromTheFirstInstantOf2001InUtcWhateverTheZone)
{
    for (const char *zone : {"UTC0", "EAST-9", "WEST8", "HALF-5:30"}) {
        const TimeZone local(zone);
        const photo_manager manager(&device);
        EXPECT_EQ(manager.m_refDate.timeSpec(), Qt::UTC) << zone;
        EXPECT_EQ(manager.m_refDate.date(), QDate(2001, 1, 1)) << zone;
        EXPECT_EQ(manager.m_refDate.time(), QTime(0, 0)) << zone;
        EXPECT_EQ(manager.m_refDate.addSecs(0).toString(Qt::ISODate),
                  QStringLiteral("2001-01-01T00:00:00Z"))
            << zone;
        EXPECT_EQ(manager.m_refDate.toSecsSinceEpoch(), 978307200) << zone;
    }
}

TEST_F(ManagerState, LocksTheRecordsRecursivelyAndUuidsNot)
{
    photo_manager manager(&device);
    EXPECT_TRUE(manager.m_recMutex.isRecursive());
    EXPECT_FALSE(manager.m_mutex.isRecursive());
}

bool tryLockElsewhere(QMutex &mutex)
{
    bool locked = false;
    std::thread([&] {
        locked = mutex.tryLock();
        if (locked)
            mutex.unlock();
    }).join();
    return locked;
}

TEST_F(ManagerLocksThreads, StartUnlocked)
{
    photo_manager manager(&device);
    EXPECT_TRUE(tryLockElsewhere(manager.m_recMutex));
    EXPECT_TRUE(tryLockElsewhere(manager.m_mutex));
}

// A model whose records share the bytes of one uuid, so that every living record counts.
class CountedModel
{
public:
    CountedModel() : model(new CameraDB()), m_marker("counted", 7) {}

    Camera_Album *addAlbum(quint64 key)
    {
        auto *album = new Camera_Album();
        album->uuid = m_marker;
        model->albums[key] = album;
        m_albums.push_back(addressOf(album));
        return album;
    }

    Camera_Data *addAsset(quint64 key)
    {
        auto *asset = new Camera_Data();
        asset->uuid = m_marker;
        model->assets[key] = asset;
        m_assets.push_back(addressOf(asset));
        return asset;
    }

    // The albums, then the assets, in key order when they were added so, then the model.
    std::vector<std::uintptr_t> blocks() const
    {
        std::vector<std::uintptr_t> all = m_albums;
        all.insert(all.end(), m_assets.begin(), m_assets.end());
        all.push_back(addressOf(model));
        return all;
    }

    int livingRecords() { return m_marker.data_ptr()->ref.atomic.loadRelaxed() - 1; }

    CameraDB *model;

private:
    template <typename Record>
    static std::uintptr_t addressOf(const Record *record)
    {
        return reinterpret_cast<std::uintptr_t>(record);
    }

    QByteArray m_marker;
    std::vector<std::uintptr_t> m_albums;
    std::vector<std::uintptr_t> m_assets;
};

// Those of `wanted` in the order in which they were deleted.
std::vector<std::uintptr_t> among(const std::vector<std::uintptr_t> &deleted,
                                  const std::vector<std::uintptr_t> &wanted)
{
    std::vector<std::uintptr_t> found;
    std::copy_if(deleted.begin(), deleted.end(), std::back_inserter(found),
                 [&](std::uintptr_t block) {
                     return std::find(wanted.begin(), wanted.end(), block) != wanted.end();
                 });
    return found;
}

TEST_F(ManagerDestruction, FreesAlbumsThenAssetsThenTheModelEachOnce)
{
    auto manager = std::make_unique<photo_manager>(&device);
    CountedModel counted;
    counted.addAlbum(1);
    counted.addAlbum(2);
    counted.addAsset(3);
    counted.model->videos[4] = counted.addAsset(4);
    counted.model->panoramas[5] = counted.addAsset(5);
    manager->m_pCameraDB = counted.model;
    ASSERT_EQ(counted.livingRecords(), 5);
    const std::vector<std::uintptr_t> expected = counted.blocks();

    DeleteRecorder recorder;
    manager.reset();
    recorder.stop();

    EXPECT_EQ(counted.livingRecords(), 0);
    EXPECT_EQ(among(recorder.deleted(), expected), expected);
}

TEST_F(ManagerDestruction, SkipsNullRecords)
{
    auto manager = std::make_unique<photo_manager>(&device);
    CountedModel counted;
    counted.model->albums[1] = nullptr;
    counted.addAlbum(2);
    counted.model->assets[3] = nullptr;
    counted.model->videos[3] = nullptr;
    counted.addAsset(4);
    manager->m_pCameraDB = counted.model;
    manager.reset();
    EXPECT_EQ(counted.livingRecords(), 0);
}

TEST_F(ManagerDestruction, ClosesTheDeviceOnceAndKeepsTheThumbnailFileOpen)
{
    host.setDeviceFile("/PhotoData/Thumbnails/3309.ithmb", "records");
    auto manager = std::make_unique<photo_manager>(&device);
    manager->m_pVDev = vDevOpen(VDevDevice, FakeHost::DeviceName);
    manager->m_pThmbFile = vFileOpen(manager->m_pVDev, "/PhotoData/Thumbnails/3309.ithmb", 0);
    ASSERT_EQ(host.openHandles(), (Lines{"dev1", "file1"}));
    host.clearRecords();

    manager.reset();
    EXPECT_EQ(host.trace(), Lines{"vDevClose(dev1)"});
    EXPECT_EQ(host.openHandles(), Lines{"file1"});
}

TEST_F(ManagerDestruction, ClosesTheDeviceAfterTheModelIsFreed)
{
    auto manager = std::make_unique<photo_manager>(&device);
    CountedModel counted;
    counted.addAlbum(1);
    counted.addAsset(2);
    manager->m_pCameraDB = counted.model;
    manager->m_pVDev = vDevOpen(VDevDevice, FakeHost::DeviceName);
    int livingAtClose = -1;
    host.onCall("vDevClose", 1, [&] { livingAtClose = counted.livingRecords(); });
    manager.reset();
    EXPECT_EQ(livingAtClose, 0);
}

TEST_F(ManagerCancel, ReturnsAtOnceWhenNoParseRunsAndKeepsTheFlag)
{
    photo_manager manager(&device);
    manager.cancleParse();
    EXPECT_TRUE(manager.m_bCancel);
    EXPECT_EQ(manager.m_semParse.available(), 1);
    EXPECT_EQ(host.trace(), Lines());
}

TEST_F(ManagerCancel, DoesNotTouchTheFlagThatStopsACopy)
{
    const bool before = gbShouldQuit.load();
    photo_manager manager(&device);
    gbShouldQuit = false;
    manager.cancleParse();
    EXPECT_FALSE(gbShouldQuit.load());
    gbShouldQuit = true;
    manager.cancleParse();
    EXPECT_TRUE(gbShouldQuit.load());
    gbShouldQuit = before;
}

TEST_F(ManagerCancel, IsForgottenByTheNextParseAlsoWithoutADevice)
{
    photo_manager manager(nullptr);
    manager.cancleParse();
    EXPECT_FALSE(manager.parseLib());
    EXPECT_FALSE(manager.m_bCancel);
}

} // namespace
