#include "engine/device_listing.h"

#include <QMap>

#include <gtest/gtest.h>

namespace {

// Folders in memory that count how often they are listed.
class ListedFolders : public DeviceFileSystem
{
public:
    QMap<QByteArray, QList<QByteArray>> folders;
    FileError fault; ///< of every listing, unless its kind is None
    int listings = 0;

    bool list(const QByteArray &path, QList<QByteArray> *names, FileError *error) override
    {
        ++listings;
        *error = fault;
        if (fault.kind == FileError::None && !folders.contains(path))
            error->kind = FileError::NotFound;
        if (error->kind != FileError::None)
            return false;
        *names = folders[path];
        return true;
    }

    std::unique_ptr<DeviceFile> open(const QByteArray &, FileError *) override
    {
        ADD_FAILURE() << "asks for a file";
        return nullptr;
    }

    bool info(const QByteArray &, FileInfo *, FileError *) override
    {
        ADD_FAILURE() << "asks about a file";
        return false;
    }

    DeviceState state() override { return DeviceState::Ready; }
    void close() override {}
    QByteArray id() const override { return "memory"; }
    QByteArray name() const override { return "memory"; }
    QByteArray displayName(const QByteArray &path) const override { return path; }
};

TEST(DeviceListing, ListsAFolderOnceForAllItsFiles)
{
    ListedFolders device;
    device.folders["DCIM/100APPLE"] = {"IMG_0001.JPG", "IMG_0003.JPG"};
    DeviceListing listing(device);
    FileError error;
    EXPECT_TRUE(listing.has("DCIM/100APPLE/IMG_0001.JPG", &error));
    EXPECT_FALSE(listing.has("DCIM/100APPLE/IMG_0002.JPG", &error));
    EXPECT_EQ(FileError::NotFound, error.kind);
    EXPECT_TRUE(listing.has("DCIM/100APPLE/IMG_0003.JPG", &error));
    EXPECT_EQ(1, device.listings);
}

TEST(DeviceListing, FindsAFileInTheRoot)
{
    ListedFolders device;
    device.folders[""] = {"IMG_0001.JPG"};
    DeviceListing listing(device);
    FileError error;
    EXPECT_TRUE(listing.has("IMG_0001.JPG", &error));
}

TEST(DeviceListing, ListsAMissingFolderOnce)
{
    ListedFolders device;
    DeviceListing listing(device);
    FileError error;
    EXPECT_FALSE(listing.has("DCIM/IMG_0001.JPG", &error));
    EXPECT_EQ(FileError::NotFound, error.kind);
    EXPECT_FALSE(listing.has("DCIM/IMG_0002.JPG", &error));
    EXPECT_EQ(1, device.listings);
}

TEST(DeviceListing, TellsWhyAFolderCannotBeListed)
{
    ListedFolders device;
    device.fault = {FileError::Denied, QStringLiteral("Permission denied")};
    DeviceListing listing(device);
    FileError error;
    EXPECT_FALSE(listing.has("DCIM/IMG_0001.JPG", &error));
    EXPECT_EQ(FileError::Denied, error.kind);
    EXPECT_EQ("Permission denied", error.text.toStdString());
    EXPECT_TRUE(listing.folder("DCIM").names.isEmpty());
}

TEST(DeviceListing, HasNoFileWithoutAName)
{
    ListedFolders device;
    device.folders["DCIM"] = {"IMG_0001.JPG"};
    DeviceListing listing(device);
    FileError error;
    EXPECT_FALSE(listing.has("DCIM/", &error));
}

} // namespace
