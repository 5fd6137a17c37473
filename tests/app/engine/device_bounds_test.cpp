#include "engine/device_bounds.h"

#include "base/error.h"
#include "support/device_folder.h"
#include "support/program_fixture.h"
#include "support/second_name.h"

#include <gtest/gtest.h>

#include <optional>

namespace {

class DeviceBounds : public testing::Test
{
protected:
    DeviceBounds()
    {
        m_scratch.makeFolder("place/device/DCIM");
        m_scratch.makeFolder("place/other");
        m_scratch.makeLink("link", m_scratch.path("place/device"));
        m_scratch.makeLink("place-link", m_scratch.path("place"));
    }

    bool isIn(const QByteArray &path, const QByteArray &device) const
    {
        return liesIn(m_scratch.path(path), m_scratch.path(device));
    }

    ScratchFolder m_scratch;
};

TEST_F(DeviceBounds, HoldTheDeviceAndAllBelowIt)
{
    for (const char *path : {"place/device", "place/device/", "place/device/DCIM",
                             "place/device/new", "place/device/new/newer/"})
        EXPECT_TRUE(isIn(path, "place/device")) << path;
}

TEST_F(DeviceBounds, LeaveOutWhatIsAroundTheDeviceAndBesideIt)
{
    for (const char *path :
         {"", "place", "place/other", "place/device-new", "none/device", "place/device/.."})
        EXPECT_FALSE(isIn(path, "place/device")) << path;
}

TEST_F(DeviceBounds, HoldForEveryNameOfTheDevice)
{
    for (const char *device :
         {"place/device", "link", "place-link/device", "place/other/../device"}) {
        for (const char *path : {"place/device/DCIM", "link/DCIM", "place-link/device/new",
                                 "place-link/other/../device"})
            EXPECT_TRUE(isIn(path, device)) << path << " in " << device;
    }
}

TEST_F(DeviceBounds, HoldAllWhenTheDeviceIsTheRoot)
{
    EXPECT_TRUE(liesIn(m_scratch.root(), "/"));
    EXPECT_TRUE(liesIn("/", "/"));
    EXPECT_TRUE(liesIn(m_scratch.path("new"), "/"));
}

TEST_F(DeviceBounds, HoldForAMountOfTheDevice)
{
    m_scratch.makeFolder("mount");
    const SecondName mount(m_scratch.path("place/device"), m_scratch.path("mount"));
    if (!mount.isThere())
        GTEST_SKIP() << "no mounts may be made here";
    EXPECT_TRUE(isIn("mount", "place/device"));
    EXPECT_TRUE(isIn("mount/DCIM/new", "place/device"));
    EXPECT_TRUE(isIn("place/device/DCIM", "mount"));
}

TEST_F(DeviceBounds, HoldForAMountOfAFolderInTheDevice)
{
    m_scratch.makeFolder("mount");
    m_scratch.makeFolder("place/device/DCIM/100APPLE");
    for (const char *folder : {"place/device/DCIM", "place/device/DCIM/100APPLE"}) {
        const SecondName mount(m_scratch.path(folder), m_scratch.path("mount"));
        if (!mount.isThere())
            GTEST_SKIP() << "no mounts may be made here";
        EXPECT_TRUE(isIn("mount", "place/device")) << folder;
        EXPECT_TRUE(isIn("mount/new", "place/device")) << folder;
    }
    EXPECT_FALSE(isIn("mount", "place/device"));
}

TEST_F(DeviceBounds, AreUnknownOfADeviceThatIsGone)
{
    EXPECT_THROW(liesIn(m_scratch.root(), m_scratch.path("none")), Error);
}

TEST_F(DeviceBounds, KeepASampleOutOfEveryDevice)
{
    m_scratch.write("place/device/PhotoData/Photos.sqlite", "database");
    EXPECT_THROW(refuseInAnyDevice(m_scratch.path("place/device/new")), Error);
    EXPECT_THROW(refuseInAnyDevice(m_scratch.path("link/DCIM")), Error);
    EXPECT_NO_THROW(refuseInAnyDevice(m_scratch.path("place/new")));
    m_scratch.write("ipod/Photos/Photo Database", "database");
    EXPECT_THROW(refuseInAnyDevice(m_scratch.path("ipod/Photos/new")), Error);
}

// --- with the program

class ProgramBesideADevice : public ProgramTest
{
protected:
    void mountDevice()
    {
        writeTwoPhotos();
        m_scratch.makeFolder("mount");
        m_mount.emplace(device(), m_scratch.path("mount"));
    }

    std::optional<SecondName> m_mount;
};

TEST_F(ProgramBesideADevice, LeavesTheDatabaseUnderASecondName)
{
    mountDevice();
    if (!m_mount->isThere())
        GTEST_SKIP() << "no mounts may be made here";
    const QByteArray work = m_scratch.path("mount/PhotoData");
    expectFailure({"info", "-d", device(), "--work-dir", work},
                  work + ": the work folder must not lie in the device");
    expectFailure({"info", "-d", m_scratch.path("mount"), "--work-dir", device() + "/PhotoData"},
                  device() + "/PhotoData: the work folder must not lie in the device");
}

TEST_F(ProgramBesideADevice, WritesNothingIntoItUnderASecondName)
{
    mountDevice();
    if (!m_mount->isThere())
        GTEST_SKIP() << "no mounts may be made here";
    const QByteArray inside = m_scratch.path("mount/DCIM");
    expectRefusalOfDevice({"export", "-d", device(), inside}, inside);
    expectRefusalOfDevice({"export", "-d", device(), inside + "/new"}, inside + "/new");
    expectRefusalOfDevice({"thumb", "-d", device(), "--all", inside}, inside);
    expectRefusalOfDevice({"thumb", "-d", device(), "1", "-o", inside + "/1.jpg"}, inside);
    expectRefusalOfDevice({"sheet", "-d", device(), "-o", inside + "/sheet.png"}, inside);
    expectRefusalOfDevice({"sample", inside + "/new"}, inside + "/new");
}

TEST_F(ProgramBesideADevice, WritesNoSampleIntoOne)
{
    writeTwoPhotos();
    for (const char *path : {"device/new", "device/DCIM/new", "device/DCIM/a/b"})
        expectRefusalOfDevice({"sample", m_scratch.path(path)}, m_scratch.path(path));
}

TEST_F(ProgramBesideADevice, LeavesADatabaseInANamedWorkFolder)
{
    writeTwoPhotos();
    m_scratch.write("work/Photos.sqlite", "precious");
    const QByteArray work = m_scratch.path("work");
    expectFailure({"info", "-d", device(), "--work-dir", work},
                  work + "/Photos.sqlite: not a copy that photolib made; name another work folder");
    EXPECT_EQ("precious", m_scratch.read("work/Photos.sqlite"));
}

} // namespace
