#include "engine/device_listing.h"
#include "support/listed_folders.h"

#include <gtest/gtest.h>

namespace {

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
