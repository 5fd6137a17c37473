#include "boundary/photo_manager_int.h"
#include "boundary/photolib.h"
#include "classic/ipod_photo_manager.h"
#include "ios/photo_manager.h"
#include "support/allocation_faults.h"
#include "support/fake_host.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <vector>

namespace {

using Lines = std::vector<std::string>;
using Log = std::vector<LogLine>;

static_assert(std::has_virtual_destructor<photo_manager_int>::value, "for hosts that delete");
static_assert(std::is_base_of<photo_manager_int, photo_manager>::value, "one interface");
static_assert(std::is_convertible<photo_manager *, photo_manager_int *>::value, "public base");
static_assert(std::is_convertible<iPodPhotoManager *, photo_manager_int *>::value, "public base");
static_assert(!std::is_final<photo_manager>::value, "hosts may derive from it");
static_assert(!std::is_final<iPodPhotoManager>::value, "hosts may derive from it");

// A device whose answers allocate nothing, so that only the plug-in meets the faults.
class PlainDevice : public IIPod
{
public:
    explicit PlainDevice(bool iosDevice) : m_iosDevice(iosDevice) {}

    bool isAccessBlocked() override { return false; }
    QString devicePath() override { return QString(); }
    QString driveName() override { return QString(); }
    bool isIOSDevice() override { return m_iosDevice; }
    QString localDataPath() override { return QString(); }

private:
    const bool m_iosDevice;
};

// The manager's storage after it was freed: a living copy of its bytes, which the
// library's types allow, shows what became of the rest and frees it in the end.
template <typename Manager>
class Afterlife
{
public:
    explicit Afterlife(const Manager *manager)
    {
        std::copy_n(reinterpret_cast<const unsigned char *>(manager), sizeof m_bytes, m_bytes);
    }
    ~Afterlife() { operator->()->~Manager(); }
    Afterlife(const Afterlife &) = delete;
    Afterlife &operator=(const Afterlife &) = delete;

    Manager *operator->() { return reinterpret_cast<Manager *>(m_bytes); }

private:
    alignas(Manager) unsigned char m_bytes[sizeof(Manager)];
};

class Factory : public testing::Test
{
protected:
    FakeHost host;
    FakeIPod device;
};

using FactoryRelease = Factory;
using FactoryOutOfMemory = Factory;

TEST_F(Factory, MakesThePhotoManagerForAnIosDevice)
{
    const std::unique_ptr<photo_manager_int> manager(getPhotolib(&device));
    ASSERT_NE(manager, nullptr);
    EXPECT_EQ(typeid(*manager), typeid(photo_manager));
    const auto *made = dynamic_cast<photo_manager *>(manager.get());
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(dynamic_cast<iPodPhotoManager *>(manager.get()), nullptr);
    EXPECT_EQ(made->m_pIPod, &device);
}

TEST_F(Factory, MakesTheClassicManagerForAnyOtherDevice)
{
    device.iosDevice = false;
    const std::unique_ptr<photo_manager_int> manager(getPhotolib(&device));
    ASSERT_NE(manager, nullptr);
    EXPECT_EQ(typeid(*manager), typeid(iPodPhotoManager));
    const auto *made = dynamic_cast<iPodPhotoManager *>(manager.get());
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(dynamic_cast<photo_manager *>(manager.get()), nullptr);
    EXPECT_EQ(made->m_pIPod, &device);
}

TEST_F(Factory, MakesTheClassicManagerWhateverElseTheDeviceReports)
{
    device.iosDevice = false;
    device.accessBlocked = true;
    device.drive.clear();
    device.localData = QStringLiteral("/work/");
    host.setDeviceFile("/PhotoData/Photos.sqlite", "SQLite format 3");
    const std::unique_ptr<photo_manager_int> manager(getPhotolib(&device));
    ASSERT_NE(manager, nullptr);
    EXPECT_EQ(typeid(*manager), typeid(iPodPhotoManager));
}

TEST_F(Factory, AsksTheDeviceForItsKindOnceAndTheHostForNothing)
{
    const std::unique_ptr<photo_manager_int> ios(getPhotolib(&device));
    EXPECT_EQ(host.trace(), Lines{"isIOSDevice() -> true"});

    host.clearRecords();
    device.iosDevice = false;
    const std::unique_ptr<photo_manager_int> classic(getPhotolib(&device));
    EXPECT_EQ(host.trace(), Lines{"isIOSDevice() -> false"});
}

TEST_F(Factory, MakesAManagerOfItsOwnForEachCall)
{
    const std::unique_ptr<photo_manager_int> first(getPhotolib(&device));
    const std::unique_ptr<photo_manager_int> second(getPhotolib(&device));
    EXPECT_NE(first, second);
}

TEST_F(FactoryRelease, IgnoresNullPointers)
{
    releasePhotolib(nullptr);
    photo_manager_int *none = nullptr;
    releasePhotolib(&none);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(host.trace(), Lines());
}

TEST_F(FactoryRelease, FreesTheStorageWithThePlainDeleteAndNothingElse)
{
    for (const bool iosDevice : {true, false}) {
        device.iosDevice = iosDevice;
        photo_manager_int *manager = getPhotolib(&device);
        const auto storage = reinterpret_cast<std::uintptr_t>(manager);
        std::unique_ptr<Afterlife<photo_manager>> ios;
        if (iosDevice)
            ios.reset(new Afterlife<photo_manager>(static_cast<photo_manager *>(manager)));
        host.clearRecords();

        DeleteRecorder recorder;
        releasePhotolib(&manager);
        recorder.stop();

        EXPECT_EQ(manager, nullptr);
        EXPECT_EQ(recorder.deleted(), std::vector<std::uintptr_t>{storage});
        EXPECT_EQ(recorder.plainDeletes(), 1);
        EXPECT_EQ(host.trace(), Lines());
    }
}

TEST_F(FactoryRelease, LeavesTheLibraryAndTheDeviceHandleOfAManagerAlone)
{
    photo_manager_int *manager = getPhotolib(&device);
    auto *ios = static_cast<photo_manager *>(manager);
    ios->m_pVDev = vDevOpen(VDevDevice, FakeHost::DeviceName);
    ios->m_pCameraDB = new CameraDB();
    ios->m_pCameraDB->assets[9] = new Camera_Data();
    ios->m_listAlbumIDs = {1000, 5};
    Afterlife<photo_manager> remains(ios);

    releasePhotolib(&manager);

    EXPECT_EQ(host.callCount("vDevClose"), 0);
    EXPECT_EQ(host.openHandles(), Lines{"dev1"});
    EXPECT_EQ(remains->photoIDs(), QList<quint64>{9});
    EXPECT_EQ(remains->albumIDs(), (QList<quint64>{1000, 5}));
    EXPECT_EQ(remains->m_semParse.available(), 1);
}

TEST_F(FactoryRelease, IsNotTheVirtualDeleteWhichClosesTheDevice)
{
    photo_manager_int *manager = getPhotolib(&device);
    static_cast<photo_manager *>(manager)->m_pVDev = vDevOpen(VDevDevice, FakeHost::DeviceName);
    delete manager;
    EXPECT_EQ(host.callCount("vDevClose"), 1);
    EXPECT_EQ(host.openHandles(), Lines());
}

// A derived class's destructor would run in a delete, whatever the base's does.
class WatchedManager : public iPodPhotoManager
{
public:
    WatchedManager(IIPod *iPod, bool *destroyed) : iPodPhotoManager(iPod), m_destroyed(destroyed) {}
    ~WatchedManager() { *m_destroyed = true; }

private:
    bool *m_destroyed;
};

TEST_F(FactoryRelease, RunsNoDestructor)
{
    bool destroyed = false;
    photo_manager_int *manager = new WatchedManager(&device, &destroyed);
    releasePhotolib(&manager);
    EXPECT_EQ(manager, nullptr);
    EXPECT_FALSE(destroyed);
}

TEST_F(FactoryOutOfMemory, LogsAndReturnsNullForEitherKindOfManager)
{
    for (const bool iosDevice : {true, false}) {
        PlainDevice plain(iosDevice);
        photo_manager_int *manager = nullptr;
        host.clearRecords();
        {
            const AllocationFault fault(1);
            EXPECT_NO_THROW(manager = getPhotolib(&plain));
            EXPECT_TRUE(fault.happened());
        }
        EXPECT_EQ(manager, nullptr);
        EXPECT_EQ(host.log(), Log{failure("Can not malloc photo manager")});
        delete manager;
    }
}

// Makes a manager with the `failing`-th allocation missing; whether it came so far.
bool makeWithFault(FakeHost &host, int failing)
{
    PlainDevice plain(true);
    photo_manager_int *manager = nullptr;
    bool thrown = false;
    bool happened = false;
    host.clearRecords();
    {
        const AllocationFault fault(failing);
        try {
            manager = getPhotolib(&plain);
        } catch (...) {
            thrown = true;
        }
        happened = fault.happened();
    }
    EXPECT_FALSE(thrown) << "allocation " << failing;
    EXPECT_EQ(manager == nullptr, happened) << "allocation " << failing;
    EXPECT_EQ(host.log(), happened ? Log{failure("Can not malloc photo manager")} : Log())
        << "allocation " << failing;
    delete manager;
    return happened;
}

TEST_F(FactoryOutOfMemory, LogsAndReturnsNullWhereverTheConstructorFails)
{
    // The first manager of a program also fills the static table.
    photo_manager::m_mapAlbumKind2Type.clear();
    photo_manager::m_photoLibUUID.clear();
    int failing = 1;
    while (failing < 1000 && makeWithFault(host, failing))
        ++failing;
    EXPECT_GT(failing, 2) << "the constructor allocates its locks";

    EXPECT_EQ(photo_manager::m_mapAlbumKind2Type.keys(), (QList<int>{2, 1000, 1550}));
    EXPECT_EQ(photo_manager::m_photoLibUUID, QByteArray(15, '\0') + '\x64');
}

} // namespace
