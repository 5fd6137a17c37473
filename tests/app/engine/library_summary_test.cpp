#include "engine/library_summary.h"

#include <gtest/gtest.h>

namespace {

LibrarySummary summaryOf(const Catalog &catalog, FileState state = FileState::There)
{
    return summaryOf(catalog, [state](const Asset &) { return state; });
}

Asset assetWith(qint64 id)
{
    Asset asset;
    asset.id = id;
    return asset;
}

TEST(LibrarySummary, CountsPhotosAndVideos)
{
    Catalog catalog;
    catalog.assets = {assetWith(1), assetWith(2), assetWith(3)};
    catalog.assets[1].kind = AssetKind::Video;
    const LibrarySummary summary = summaryOf(catalog);
    EXPECT_EQ(2, summary.photos);
    EXPECT_EQ(1, summary.videos);
    EXPECT_EQ(3, summary.onDevice);
}

TEST(LibrarySummary, CountsTheTrashAndSharedCopiesForThemselves)
{
    Catalog catalog;
    catalog.assets = {assetWith(1), assetWith(2), assetWith(3)};
    catalog.assets[0].inTrash = true;
    catalog.assets[0].favorite = true;
    catalog.assets[1].source = AssetSource::Shared;
    const LibrarySummary summary = summaryOf(catalog);
    EXPECT_EQ(1, summary.photos);
    EXPECT_EQ(1, summary.trashed);
    EXPECT_EQ(1, summary.shared);
    EXPECT_EQ(0, summary.favorites);
    EXPECT_TRUE(summary.sources.empty());
}

TEST(LibrarySummary, CountsEachTypeOfAPhoto)
{
    Catalog catalog;
    catalog.assets = {assetWith(1), assetWith(2)};
    catalog.assets[0].types = AssetTypes(AssetType::Live) | AssetType::Burst;
    catalog.assets[1].types = AssetType::Live;
    const LibrarySummary summary = summaryOf(catalog);
    EXPECT_EQ((std::map<AssetType, int>{{AssetType::Burst, 1}, {AssetType::Live, 2}}),
              summary.types);
}

TEST(LibrarySummary, CountsSourcesThatAreKnown)
{
    Catalog catalog;
    catalog.assets = {assetWith(1), assetWith(2)};
    catalog.assets[1].source = AssetSource::Cloud;
    EXPECT_EQ((std::map<AssetSource, int>{{AssetSource::Cloud, 1}}), summaryOf(catalog).sources);
}

TEST(LibrarySummary, CountsABurstOnce)
{
    Catalog catalog;
    catalog.assets = {assetWith(1), assetWith(2), assetWith(3)};
    catalog.assets[0].burst = "B";
    catalog.assets[1].burst = "B";
    EXPECT_EQ(1, summaryOf(catalog).bursts);
}

TEST(LibrarySummary, TellsWhatIsOnlyInTheCloudFromWhatIsMissing)
{
    Catalog catalog;
    catalog.assets = {assetWith(1), assetWith(2), assetWith(3)};
    catalog.assets[0].source = AssetSource::Cloud;
    catalog.assets[1].isInCloud = true;
    const LibrarySummary summary = summaryOf(catalog, FileState::Missing);
    EXPECT_EQ(2, summary.onlyInCloud);
    EXPECT_EQ(1, summary.missing);
    EXPECT_EQ(0, summary.onDevice);
}

TEST(LibrarySummary, TakesNothingForMissingThatTheDeviceDoesNotTell)
{
    Catalog catalog;
    catalog.assets = {assetWith(1)};
    catalog.assets[0].isInCloud = true;
    const LibrarySummary summary = summaryOf(catalog, FileState::Unreadable);
    EXPECT_EQ(1, summary.unreadable);
    EXPECT_EQ(0, summary.onlyInCloud + summary.missing);
}

TEST(LibrarySummary, AddsUpTheSizesOfFilesOnTheDevice)
{
    Catalog catalog;
    catalog.assets = {assetWith(1), assetWith(2), assetWith(3)};
    catalog.assets[0].size = 1000;
    catalog.assets[2].size = 234;
    EXPECT_EQ(1234, summaryOf(catalog).bytes);
    EXPECT_EQ(0, summaryOf(catalog, FileState::Missing).bytes);
}

TEST(LibrarySummary, KeepsASumOfSizesWithinItsRange)
{
    Catalog catalog;
    catalog.assets = {assetWith(1), assetWith(2), assetWith(3)};
    catalog.assets[0].size = std::numeric_limits<qint64>::max();
    catalog.assets[1].size = 1;
    catalog.assets[2].size = -5;
    EXPECT_EQ(std::numeric_limits<qint64>::max(), summaryOf(catalog).bytes);
}

TEST(LibrarySummary, CountsYearsByTheClockOfThePlace)
{
    Catalog catalog;
    catalog.assets = {assetWith(1), assetWith(2), assetWith(3)};
    catalog.assets[0].taken = -1.0; // 2000-12-31 23:59:59 UTC
    catalog.assets[1].taken = -1.0;
    catalog.assets[1].utcOffset = 60;
    const LibrarySummary summary = summaryOf(catalog);
    EXPECT_EQ((std::map<int, int>{{2000, 1}, {2001, 1}}), summary.years);
    EXPECT_EQ(1, summary.undated);
}

TEST(LibrarySummary, TellsWhenTheFirstAndTheLastWereTaken)
{
    Catalog catalog;
    catalog.assets = {assetWith(1), assetWith(2), assetWith(3)};
    catalog.assets[0].taken = 86400.0;
    catalog.assets[1].taken = 0.0;
    catalog.assets[2].taken = 172800.0;
    const LibrarySummary summary = summaryOf(catalog);
    EXPECT_EQ("2001-01-01 00:00:00", summary.oldest.toStdString());
    EXPECT_EQ("2001-01-03 00:00:00", summary.newest.toStdString());
}

TEST(LibrarySummary, TellsFoldersFromAlbums)
{
    Catalog catalog;
    catalog.albums.resize(3);
    catalog.albums[1].kind = AlbumKind::Folder;
    const LibrarySummary summary = summaryOf(catalog);
    EXPECT_EQ(2, summary.albums);
    EXPECT_EQ(1, summary.folders);
}

} // namespace
