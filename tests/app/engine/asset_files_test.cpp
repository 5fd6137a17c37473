#include "catalog/catalog.h"
#include "devices/folder_file_system.h"
#include "engine/asset_files.h"
#include "engine/device_listing.h"
#include "support/device_folder.h"
#include "support/listed_folders.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

namespace {

const char *wordFor(AssetFileRole role)
{
    static const char *const words[] = {"original", "live",  "edited", "editedLive",
                                        "recipe",   "other", "still",  "thumbnail"};
    return words[int(role)];
}

Asset assetOf(qint64 id, const QByteArray &directory, const QByteArray &fileName)
{
    Asset asset;
    asset.id = id;
    asset.directory = directory;
    asset.fileName = fileName;
    return asset;
}

Asset photo(qint64 id, const QByteArray &fileName)
{
    return assetOf(id, "D", fileName);
}

Asset video(qint64 id, const QByteArray &fileName)
{
    Asset asset = photo(id, fileName);
    asset.kind = AssetKind::Video;
    return asset;
}

Asset live(Asset asset)
{
    asset.types |= AssetType::Live;
    return asset;
}

Asset edited(Asset asset)
{
    asset.edited = true;
    return asset;
}

Asset trashed(Asset asset)
{
    asset.inTrash = true;
    return asset;
}

using Lines = std::vector<std::string>;

Lines linesOf(const Asset &asset, const std::vector<AssetFile> &files)
{
    Lines lines;
    for (const AssetFile &file : files)
        lines.push_back(std::to_string(asset.id) + ' ' + wordFor(file.role) + ' ' +
                        file.path.toStdString());
    return lines;
}

// "ID ROLE PATH" of what belongs to each photo and video.
Lines allFiles(const Catalog &catalog, DeviceFileSystem &device)
{
    DeviceListing listing(device);
    AssetFiles files(catalog, listing);
    Lines lines;
    for (const Asset &asset : catalog.assets) {
        const Lines own = linesOf(asset, files.of(asset));
        lines.insert(lines.end(), own.begin(), own.end());
    }
    return lines;
}

// "M" in front of a path stands for "PhotoData/Mutations".
struct FileRow {
    std::string name;
    std::vector<Asset> assets;
    std::vector<QByteArray> device;
    Lines files;
};

QByteArray withoutShortening(const QByteArray &path)
{
    return path.startsWith("M/") ? "PhotoData/Mutations" + path.mid(1) : path;
}

class FilesOfAssets : public testing::TestWithParam<FileRow>
{
};

TEST_P(FilesOfAssets, AreThoseOfTheDeviceByRole)
{
    ListedFolders device;
    for (const QByteArray &path : GetParam().device)
        device.addFile(withoutShortening(path));
    Catalog catalog;
    catalog.assets = GetParam().assets;
    Lines expected;
    for (const std::string &line : GetParam().files) {
        const std::size_t path = line.rfind(' ') + 1;
        expected.push_back(
            line.substr(0, path) +
            withoutShortening(QByteArray::fromStdString(line.substr(path))).toStdString());
    }
    EXPECT_EQ(expected, allFiles(catalog, device));
}

const FileRow originals[] = {
    {"NoneOnAnEmptyDevice", {photo(1, "A.JPG")}, {}, {}},
    {"TheOriginal", {photo(1, "A.JPG")}, {"D/A.JPG", "D/B.JPG"}, {"1 original D/A.JPG"}},
    {"NoneWithoutAName", {photo(1, QByteArray())}, {"D/A.JPG"}, {}},
    {"NoneWithAnEmptyName", {photo(1, "")}, {"D/A.JPG", "D.JPG"}, {}},
    {"TheOriginalWithoutADirectory",
     {assetOf(1, QByteArray(), "A.JPG")},
     {"A.JPG", "A.AAE", "M/A/Adjustments/FullSizeRender.jpg"},
     {"1 original A.JPG", "1 edited M/A/Adjustments/FullSizeRender.jpg", "1 recipe A.AAE"}},
    {"OneOriginalForTwoRows",
     {photo(1, "A.JPG"), photo(2, "A.JPG")},
     {"D/A.JPG", "D/A.MOV"},
     {"1 original D/A.JPG", "1 live D/A.MOV", "2 original D/A.JPG"}},
    {"WhatIsLeftWithoutTheOriginal",
     {photo(1, "A.HEIC")},
     {"D/A.MOV", "D/A.AAE"},
     {"1 live D/A.MOV", "1 recipe D/A.AAE"}},
    {"EachFolderForItself",
     {photo(1, "A.JPG"), assetOf(2, "E", "A.JPG")},
     {"D/A.JPG", "E/A.JPG", "E/A.MOV", "M/E/A/Adjustments/FullSizeRender.jpg"},
     {"1 original D/A.JPG", "2 original E/A.JPG", "2 live E/A.MOV",
      "2 edited M/E/A/Adjustments/FullSizeRender.jpg"}},
    {"OneFolderWrittenInTwoWays",
     {photo(1, "A.JPG"), assetOf(2, "./D//", "A.PNG")},
     {"D/A.AAE", "M/D/A/Adjustments/FullSizeRender.jpg"},
     {"1 edited M/D/A/Adjustments/FullSizeRender.jpg", "1 recipe D/A.AAE"}},
    {"AFolderInTheName",
     {assetOf(1, "D", "E/A.JPG")},
     {"D/E/A.JPG", "D/E/A.MOV", "M/D/E/A/Adjustments/FullSizeRender.jpg"},
     {"1 original D/E/A.JPG", "1 live D/E/A.MOV",
      "1 edited M/D/E/A/Adjustments/FullSizeRender.jpg"}},
};

const FileRow films[] = {
    {"WhateverTheLibrarySays",
     {photo(1, "A.JPG")},
     {"D/A.JPG", "D/A.MOV"},
     {"1 original D/A.JPG", "1 live D/A.MOV"}},
    {"WithALowerCaseExtension",
     {live(photo(1, "A.HEIC"))},
     {"D/A.HEIC", "D/A.mov"},
     {"1 original D/A.HEIC", "1 live D/A.mov"}},
    {"WithTheNameInAnotherCase", {photo(1, "Img_1.HEIC")}, {"D/IMG_1.MoV"}, {"1 live D/IMG_1.MoV"}},
    {"WithAccentsInAnotherCase",
     {photo(1, "\xc3\x89t\xc3\xa9.HEIC")},
     {"D/\xc3\xa9t\xc3\xa9.mov"},
     {"1 live D/\xc3\xa9t\xc3\xa9.mov"}},
    {"NotOfAnotherNameThatIsNoText", {photo(1, "\xff.HEIC")}, {"D/\xfe.mov"}, {}},
    {"RatherWithTheNameInThisCase",
     {photo(1, "a.HEIC")},
     {"D/A.MOV", "D/a.mov"},
     {"1 live D/a.mov", "1 other D/A.MOV"}},
    {"OfThePhotoWithTheNameInThatCase",
     {photo(1, "a.HEIC"), photo(2, "A.HEIC")},
     {"D/A.MOV", "D/a.MOV"},
     {"1 live D/a.MOV", "2 live D/A.MOV"}},
    {"OneOnly",
     {photo(1, "A.HEIC")},
     {"D/A.MOV", "D/A.mov"},
     {"1 live D/A.MOV", "1 other D/A.mov"}},
    {"UnlessAVideoItself",
     {photo(1, "A.HEIC"), video(2, "A.MOV")},
     {"D/A.HEIC", "D/A.MOV"},
     {"1 original D/A.HEIC", "2 original D/A.MOV"}},
    {"NotOfAVideo",
     {video(1, "A.MP4")},
     {"D/A.MP4", "D/A.MOV"},
     {"1 original D/A.MP4", "1 other D/A.MOV"}},
    {"OfThePhotoRatherThanTheVideo",
     {video(1, "A.MP4"), photo(2, "A.HEIC")},
     {"D/A.MOV"},
     {"2 live D/A.MOV"}},
    {"OfTheLowestId", {photo(1, "A.PNG"), photo(2, "A.JPG")}, {"D/A.MOV"}, {"1 live D/A.MOV"}},
    {"OfTheLivePhoto",
     {photo(1, "A.PNG"), live(photo(2, "A.JPG"))},
     {"D/A.MOV", "D/A.AAE"},
     {"1 recipe D/A.AAE", "2 live D/A.MOV"}},
    {"NotInTheTrash",
     {trashed(photo(1, "A.PNG")), photo(2, "A.JPG")},
     {"D/A.MOV", "D/A.AAE"},
     {"2 live D/A.MOV", "2 recipe D/A.AAE"}},
};

const FileRow others[] = {
    {"TheRecipeInAnyCase",
     {photo(1, "A.JPG")},
     {"D/A.AAE", "D/A.aae", "D/a.Aae"},
     {"1 recipe D/A.AAE", "1 recipe D/A.aae", "1 recipe D/a.Aae"}},
    {"ARawBesideAJpeg",
     {photo(1, "A.JPG")},
     {"D/A.DNG", "D/A.JPG", "D/A.xmp", "D/AB.DNG", "D/A.1.DNG"},
     {"1 original D/A.JPG", "1 other D/A.DNG", "1 other D/A.xmp"}},
    {"NoOtherOriginal",
     {photo(1, "A.JPG"), photo(2, "A.DNG")},
     {"D/A.DNG", "D/A.JPG"},
     {"1 original D/A.JPG", "2 original D/A.DNG"}},
    {"ANameWithoutAnExtension",
     {photo(1, "A")},
     {"D/A", "D/A.AAE"},
     {"1 original D/A", "1 recipe D/A.AAE"}},
    {"EachOnce",
     {photo(1, "A.JPG"), photo(2, "A.PNG"), photo(3, "A.GIF")},
     {"D/A.AAE", "D/A.DNG", "D/A.JPG", "D/A.PNG"},
     {"1 original D/A.JPG", "1 recipe D/A.AAE", "1 other D/A.DNG", "2 original D/A.PNG"}},
};

const FileRow edits[] = {
    {"OfAPhoto",
     {photo(1, "A.JPG")},
     {"D/A.JPG", "M/D/A/Adjustments/Adjustments.plist", "M/D/A/Adjustments/FullSizeRender.jpg"},
     {"1 original D/A.JPG", "1 edited M/D/A/Adjustments/FullSizeRender.jpg",
      "1 recipe M/D/A/Adjustments/Adjustments.plist"}},
    {"OfALivePhoto",
     {live(photo(1, "A.HEIC"))},
     {"M/D/A/Adjustments/FullSizeRender.heic", "M/D/A/Adjustments/FullSizeRender.mov"},
     {"1 edited M/D/A/Adjustments/FullSizeRender.heic",
      "1 editedLive M/D/A/Adjustments/FullSizeRender.mov"}},
    {"OfAVideo",
     {video(1, "A.MOV")},
     {"M/D/A/Adjustments/FullSizeRender.mov", "M/D/A/Adjustments/FullSizeRender.jpg"},
     {"1 edited M/D/A/Adjustments/FullSizeRender.mov",
      "1 other M/D/A/Adjustments/FullSizeRender.jpg"}},
    {"OfAVideoAsMp4",
     {video(1, "A.MOV")},
     {"M/D/A/Adjustments/FullSizeRender.MP4"},
     {"1 edited M/D/A/Adjustments/FullSizeRender.MP4"}},
    {"InSeveralFormats",
     {photo(1, "A.HEIC")},
     {"M/D/A/Adjustments/FullSizeRender.heic", "M/D/A/Adjustments/FullSizeRender.jpg"},
     {"1 edited M/D/A/Adjustments/FullSizeRender.heic",
      "1 edited M/D/A/Adjustments/FullSizeRender.jpg"}},
    {"InAnyCase",
     {live(photo(1, "A.JPG"))},
     {"M/D/a/ADJUSTMENTS/adjustments.PLIST", "M/D/a/ADJUSTMENTS/fullsizerender.JPG",
      "M/D/a/ADJUSTMENTS/FULLSIZERENDER.Mov"},
     {"1 edited M/D/a/ADJUSTMENTS/fullsizerender.JPG",
      "1 editedLive M/D/a/ADJUSTMENTS/FULLSIZERENDER.Mov",
      "1 recipe M/D/a/ADJUSTMENTS/adjustments.PLIST"}},
    {"RatherInThisCase",
     {photo(1, "a.JPG")},
     {"M/D/A/Adjustments/FullSizeRender.jpg", "M/D/a/Adjustments/FullSizeRender.jpg"},
     {"1 edited M/D/a/Adjustments/FullSizeRender.jpg"}},
    {"WithOtherFiles",
     {photo(1, "A.JPG")},
     {"M/D/A/Adjustments/AdjustmentsSecondary.data",
      "M/D/A/Adjustments/PenultimateFullSizeRender.jpg", "M/D/A/Other/FullSizeRender.jpg"},
     {"1 other M/D/A/Adjustments/AdjustmentsSecondary.data",
      "1 other M/D/A/Adjustments/PenultimateFullSizeRender.jpg"}},
    {"OfTheOneThatIsEdited",
     {photo(1, "A.JPG"), edited(photo(2, "A.PNG"))},
     {"M/D/A/Adjustments/Adjustments.plist", "M/D/A/Adjustments/FullSizeRender.jpg"},
     {"2 edited M/D/A/Adjustments/FullSizeRender.jpg",
      "2 recipe M/D/A/Adjustments/Adjustments.plist"}},
    {"OfTheLowestIdWhereBothAre",
     {edited(photo(1, "A.JPG")), edited(photo(2, "A.PNG"))},
     {"M/D/A/Adjustments/Adjustments.plist", "M/D/A/Adjustments/FullSizeRender.jpg"},
     {"1 edited M/D/A/Adjustments/FullSizeRender.jpg",
      "1 recipe M/D/A/Adjustments/Adjustments.plist"}},
    {"OfAPhotoAndAVideo",
     {edited(video(1, "A.MOV")), edited(photo(2, "A.PNG"))},
     {"M/D/A/Adjustments/FullSizeRender.jpg", "M/D/A/Adjustments/FullSizeRender.mov"},
     {"1 edited M/D/A/Adjustments/FullSizeRender.mov",
      "2 edited M/D/A/Adjustments/FullSizeRender.jpg"}},
    {"UnlessOriginalsThemselves",
     {photo(1, "A.JPG"), assetOf(2, "PhotoData/Mutations/D/A/Adjustments", "FullSizeRender.jpg")},
     {"M/D/A/Adjustments/Adjustments.plist", "M/D/A/Adjustments/FullSizeRender.jpg"},
     {"2 original M/D/A/Adjustments/FullSizeRender.jpg"}},
};

const FileRow hostileNames[] = {
    {"AParentAsDirectory", {assetOf(1, "..", "A.JPG")}, {"../A.JPG", "A.JPG"}, {}},
    {"AParentInTheDirectory", {assetOf(1, "D/../E", "A.JPG")}, {"E/A.JPG", "D/../E/A.JPG"}, {}},
    {"AParentAsName", {photo(1, "..")}, {"M/D/../Adjustments/FullSizeRender.jpg"}, {}},
    {"AFolderAsName", {photo(1, ".")}, {"D/..AAE", "M/D/./Adjustments/FullSizeRender.jpg"}, {}},
    {"AParentInTheName", {photo(1, "../A.JPG")}, {"A.JPG", "A.AAE"}, {}},
    {"ASlashAsName", {photo(1, "/")}, {"D/A.JPG"}, {}},
    {"AnExtensionAsName", {photo(1, ".JPG")}, {"D/.AAE", "D/A.MOV"}, {}},
};

INSTANTIATE_TEST_SUITE_P(Originals, FilesOfAssets, testing::ValuesIn(originals), rowName<FileRow>);
INSTANTIATE_TEST_SUITE_P(LiveFilms, FilesOfAssets, testing::ValuesIn(films), rowName<FileRow>);
INSTANTIATE_TEST_SUITE_P(OfOneName, FilesOfAssets, testing::ValuesIn(others), rowName<FileRow>);
INSTANTIATE_TEST_SUITE_P(Edits, FilesOfAssets, testing::ValuesIn(edits), rowName<FileRow>);
INSTANTIATE_TEST_SUITE_P(HostileNames, FilesOfAssets, testing::ValuesIn(hostileNames),
                         rowName<FileRow>);

TEST(AssetFilesOnADevice, ListFoldersOnceAndThoseOfEditedPhotosOnly)
{
    constexpr int photos = 1000;
    constexpr int folders = 2; // of originals, each with one for edits
    ListedFolders device;
    Catalog catalog;
    for (int i = 0; i < photos; ++i) {
        const QByteArray stem = "IMG_" + QByteArray::number(i);
        const QByteArray directory = i % folders ? "DCIM/101APPLE" : "DCIM/100APPLE";
        catalog.assets.push_back(assetOf(i + 1, directory, stem + ".HEIC"));
        device.folders[directory].append(stem + ".HEIC");
    }
    for (QList<QByteArray> &names : device.folders)
        std::sort(names.begin(), names.end());
    device.addFile("PhotoData/Mutations/DCIM/100APPLE/IMG_0/Adjustments/FullSizeRender.jpg");
    device.addFile("PhotoData/Mutations/DCIM/101APPLE/IMG_1/Adjustments/FullSizeRender.jpg");
    device.addFile("PhotoData/Mutations/DCIM/101APPLE/of no photo/Adjustments/FullSizeRender.jpg");
    EXPECT_EQ(std::size_t(photos + 2), allFiles(catalog, device).size());
    EXPECT_EQ(2 * folders + 2, device.listings);
}

// Names of one stem would have each photo look at the files of all the others.
TEST(AssetFilesOnADevice, TakeAsLongForNamesThatAreAlikeAsForOthers)
{
    constexpr int count = 100000;
    ListedFolders device;
    Catalog catalog;
    QList<QByteArray> &names = device.folders["D"];
    for (int i = 0; i < count; ++i) {
        const QByteArray number = QByteArray::number(count + i);
        catalog.assets.push_back(photo(i + 1, "A.p" + number));
        names.append("A.n" + number);
    }
    device.addFile("D/A.MOV");
    device.addFile("PhotoData/Mutations/D/A/Adjustments/FullSizeRender.jpg");
    const Lines lines = allFiles(catalog, device);
    EXPECT_EQ(std::size_t(count + 2), lines.size());
    EXPECT_EQ("1 live D/A.MOV", lines.front());
}

TEST(AssetFilesOnADevice, AreNotKnownOfFoldersThatCannotBeListed)
{
    ListedFolders device;
    device.fault = {FileError::Denied, QStringLiteral("Permission denied")};
    Catalog catalog;
    catalog.assets = {photo(1, "A.JPG")};
    DeviceListing listing(device);
    AssetFiles files(catalog, listing);
    EXPECT_TRUE(files.of(catalog.assets[0]).empty());
    Lines unlisted;
    for (const auto &[path, error] : files.unlistedFolders())
        unlisted.push_back(path.toStdString() + ": " + error.text.toStdString());
    EXPECT_EQ(Lines({"D: Permission denied", "PhotoData/Mutations/D: Permission denied"}),
              unlisted);
}

TEST(AssetFilesOnADevice, AreAllKnownWithoutFoldersThatAreNotThere)
{
    ListedFolders device;
    device.addFile("D/A.JPG");
    Catalog catalog;
    catalog.assets = {photo(1, "A.JPG")};
    DeviceListing listing(device);
    AssetFiles files(catalog, listing);
    files.of(catalog.assets[0]);
    files.madeByDevice(catalog.assets[0]);
    EXPECT_TRUE(files.unlistedFolders().empty());
}

TEST(AssetFilesOnADevice, AreNoneOutsideOfIt)
{
    ScratchFolder scratch;
    scratch.write("A.JPG", "x");
    scratch.write("phone/A.txt", "x");
    scratch.write("edits/Adjustments/FullSizeRender.jpg", "x");
    scratch.makeFolder("phone/PhotoData/Mutations/D");
    scratch.makeLink("phone/PhotoData/Mutations/D/A", "../../../../edits");
    Catalog catalog;
    catalog.assets = {assetOf(1, "..", "A.JPG"), assetOf(2, "../phone/..", "A.JPG"),
                      assetOf(3, scratch.root(), "A.JPG"), photo(4, "A.JPG")};
    FileError error;
    const auto device = FolderFileSystem::openFolder(scratch.path("phone"), &error);
    EXPECT_EQ(Lines(), allFiles(catalog, *device));
}

class PicturesMadeByADevice : public testing::Test
{
protected:
    Lines madeFor(const Asset &asset)
    {
        m_catalog.assets = {asset};
        DeviceListing listing(m_device);
        AssetFiles files(m_catalog, listing);
        return linesOf(asset, files.madeByDevice(asset));
    }

    ListedFolders m_device;
    Catalog m_catalog;
};

TEST_F(PicturesMadeByADevice, AreTheStillAndTheThumbnails)
{
    m_device.addFile("D/A.MOV");
    m_device.addFile("PhotoData/Metadata/D/A.JPG");
    m_device.addFile("PhotoData/Thumbnails/V2/D/A.MOV/5003.JPG");
    m_device.addFile("PhotoData/Thumbnails/V2/D/A.MOV/5005.JPG");
    EXPECT_EQ(Lines({"1 still PhotoData/Metadata/D/A.JPG",
                     "1 thumbnail PhotoData/Thumbnails/V2/D/A.MOV/5003.JPG",
                     "1 thumbnail PhotoData/Thumbnails/V2/D/A.MOV/5005.JPG"}),
              madeFor(video(1, "A.MOV")));
}

TEST_F(PicturesMadeByADevice, AreNoneForAHostileName)
{
    m_device.addFile("PhotoData/Thumbnails/V2/D/A.JPG/5005.JPG");
    m_device.folders["PhotoData/Thumbnails/V2/D/.."] = {"D"};
    for (const char *name : {"..", ".", "", "/", "../A.JPG"})
        EXPECT_EQ(Lines(), madeFor(photo(1, name))) << name;
}

TEST_F(PicturesMadeByADevice, AreNotLookedForWithWhatBelongsToAPhoto)
{
    m_device.addFile("D/A.JPG");
    m_device.addFile("PhotoData/Thumbnails/V2/D/A.JPG/5005.JPG");
    m_catalog.assets = {photo(1, "A.JPG")};
    EXPECT_EQ(Lines({"1 original D/A.JPG"}), allFiles(m_catalog, m_device));
    EXPECT_EQ(2, m_device.listings); // of the originals and of the edits
}

} // namespace
