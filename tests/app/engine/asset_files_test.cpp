#include "devices/folder_file_system.h"
#include "engine/asset_files.h"
#include "engine/device_listing.h"
#include "support/device_folder.h"

#include <gtest/gtest.h>

namespace {

class AssetFiles : public testing::Test
{
protected:
    AssetFiles()
    {
        m_scratch.makeFolder("phone");
        m_asset.directory = "DCIM/100APPLE";
        m_asset.fileName = "IMG_0001.HEIC";
    }

    void have(const QByteArray &path) { m_scratch.write("phone/" + path, "x"); }

    // "ROLE PATH" of each file.
    QStringList found()
    {
        FileError error;
        const auto files = FolderFileSystem::openFolder(m_scratch.path("phone"), &error);
        DeviceListing listing(*files);
        static const char *const roles[] = {"original", "live",  "sidecar",
                                            "edit",     "still", "thumbnail"};
        QStringList lines;
        for (const AssetFile &file : filesOf(m_asset, listing))
            lines.append(QString::fromUtf8(QByteArray(roles[int(file.role)]) + ' ' + file.path));
        return lines;
    }

    ScratchFolder m_scratch;
    Asset m_asset;
};

TEST_F(AssetFiles, AreNoneOnAnEmptyDevice)
{
    EXPECT_EQ(QStringList(), found());
}

TEST_F(AssetFiles, AreNoneOfAPhotoWithoutAName)
{
    have("DCIM/100APPLE/IMG_0001.HEIC");
    m_asset.fileName = QByteArray();
    EXPECT_EQ(QStringList(), found());
}

TEST_F(AssetFiles, BeginWithTheOriginal)
{
    have("DCIM/100APPLE/IMG_0001.HEIC");
    have("DCIM/100APPLE/IMG_0001.AAE");
    have("DCIM/100APPLE/IMG_0002.AAE");
    have("PhotoData/Metadata/DCIM/100APPLE/IMG_0001.JPG");
    have("PhotoData/Mutations/DCIM/100APPLE/IMG_0001/Adjustments/FullSizeRender.jpg");
    have("PhotoData/Mutations/DCIM/100APPLE/IMG_0001/Adjustments/Adjustments.plist");
    have("PhotoData/Thumbnails/V2/DCIM/100APPLE/IMG_0001.HEIC/5005.JPG");
    EXPECT_EQ(QStringList({
                  "original DCIM/100APPLE/IMG_0001.HEIC",
                  "sidecar DCIM/100APPLE/IMG_0001.AAE",
                  "edit PhotoData/Mutations/DCIM/100APPLE/IMG_0001/Adjustments/Adjustments.plist",
                  "edit PhotoData/Mutations/DCIM/100APPLE/IMG_0001/Adjustments/FullSizeRender.jpg",
                  "still PhotoData/Metadata/DCIM/100APPLE/IMG_0001.JPG",
                  "thumbnail PhotoData/Thumbnails/V2/DCIM/100APPLE/IMG_0001.HEIC/5005.JPG",
              }),
              found());
}

TEST_F(AssetFiles, HoldTheFilmOfALivePhotoOnly)
{
    have("DCIM/100APPLE/IMG_0001.MOV");
    EXPECT_EQ(QStringList(), found());
    m_asset.types = AssetType::Live;
    EXPECT_EQ(QStringList("live DCIM/100APPLE/IMG_0001.MOV"), found());
}

TEST_F(AssetFiles, HoldTheFilmInEitherCase)
{
    have("DCIM/100APPLE/IMG_0001.mov");
    m_asset.types = AssetType::Live;
    EXPECT_EQ(QStringList("live DCIM/100APPLE/IMG_0001.mov"), found());
}

TEST_F(AssetFiles, AreFoundWithoutADirectory)
{
    m_asset.directory = QByteArray();
    have("IMG_0001.HEIC");
    have("PhotoData/Mutations/IMG_0001/Adjustments/FullSizeRender.jpg");
    EXPECT_EQ(QStringList({"original IMG_0001.HEIC",
                           "edit PhotoData/Mutations/IMG_0001/Adjustments/FullSizeRender.jpg"}),
              found());
}

TEST_F(AssetFiles, AreNoneOutsideTheDevice)
{
    m_scratch.write("IMG_0001.HEIC", "x");
    m_asset.directory = "..";
    EXPECT_EQ(QStringList(), found());
}

} // namespace
