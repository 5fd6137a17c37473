#include "engine/photo_filter.h"

#include "base/error.h"
#include "support/catalogs.h"

#include <gtest/gtest.h>

namespace {

constexpr PhotoFilter::Trash onlyTrash = PhotoFilter::Trash::Only;

class PhotoFilters : public testing::Test
{
protected:
    /// A photo with the next id: 1, 2, 3 and so on.
    Asset &add()
    {
        Asset asset;
        asset.id = qint64(m_catalog.assets.size()) + 1;
        m_catalog.assets.push_back(asset);
        return m_catalog.assets.back();
    }

    void addSeveral(int count)
    {
        for (int i = 0; i < count; ++i)
            add();
    }

    void ask(const std::vector<std::string> &texts)
    {
        m_filter.ids.emplace();
        for (const std::string &text : texts)
            m_filter.ids->push_back(*idRange(text));
    }

    std::vector<qint64> chosen() const
    {
        std::vector<qint64> ids;
        const auto isMissing = [this](const Asset &asset) {
            return m_missing.count(asset.id) != 0;
        };
        for (const Asset *photo : chosenPhotos(m_catalog, m_filter, "phone", isMissing))
            ids.push_back(photo->id);
        return ids;
    }

    std::string refusal() const
    {
        try {
            return std::to_string(chosen().size()) + " chosen";
        } catch (const Error &error) {
            return error.what();
        }
    }

    using Ids = std::vector<qint64>;

    Catalog m_catalog;
    PhotoFilter m_filter;
    std::set<qint64> m_missing;
};

TEST_F(PhotoFilters, LeaveTheTrashAndSharedCopiesOutAtFirst)
{
    add();
    add().inTrash = true;
    add().source = AssetSource::Shared;
    add().inTrash = false;
    m_catalog.assets.push_back(m_catalog.assets[2]);
    m_catalog.assets.back().id = 5;
    m_catalog.assets.back().inTrash = true;
    EXPECT_EQ((Ids{1, 4}), chosen());
    m_filter.trash = PhotoFilter::Trash::Included;
    EXPECT_EQ((Ids{1, 2, 4}), chosen());
    m_filter.trash = onlyTrash;
    EXPECT_EQ((Ids{2}), chosen());
    m_filter.shared = true;
    EXPECT_EQ((Ids{2, 5}), chosen());
    m_filter.trash = PhotoFilter::Trash::LeftOut;
    EXPECT_EQ((Ids{1, 3, 4}), chosen());
}

TEST_F(PhotoFilters, TakeWhatIsHiddenAsAsked)
{
    add().hidden = true;
    add().hidden = false;
    add();
    EXPECT_EQ((Ids{1, 2, 3}), chosen());
    m_filter.hidden = PhotoFilter::Hidden::LeftOut;
    EXPECT_EQ((Ids{2, 3}), chosen());
    m_filter.hidden = PhotoFilter::Hidden::Only;
    EXPECT_EQ((Ids{1}), chosen());
}

TEST_F(PhotoFilters, TakeKindsAndAnyOfSeveralTypes)
{
    add().types = AssetType::Live;
    add().types = AssetType::Panorama | AssetType::Burst;
    Asset &video = add();
    video.kind = AssetKind::Video;
    video.types = AssetType::SlowMotion;
    add();
    m_filter.kind = AssetKind::Video;
    EXPECT_EQ((Ids{3}), chosen());
    m_filter.kind = AssetKind::Photo;
    EXPECT_EQ((Ids{1, 2, 4}), chosen());
    m_filter.types = AssetType::Burst | AssetType::Live | AssetType::SlowMotion;
    EXPECT_EQ((Ids{1, 2}), chosen());
    m_filter.kind.reset();
    EXPECT_EQ((Ids{1, 2, 3}), chosen());
}

TEST_F(PhotoFilters, TakeFavoritesAndEditedOnesThatAreKnownToBeSuch)
{
    add().favorite = true;
    add().edited = true;
    add();
    add().favorite = false;
    m_catalog.assets[1].favorite = true;
    m_filter.favorite = true;
    EXPECT_EQ((Ids{1, 2}), chosen());
    m_filter.edited = true;
    EXPECT_EQ((Ids{2}), chosen());
}

TEST_F(PhotoFilters, AskForFilesOfTheRestOnly)
{
    addSeveral(4);
    m_catalog.assets[3].inTrash = true;
    m_missing = {2, 4};
    m_filter.missing = true;
    EXPECT_EQ((Ids{2}), chosen());
    ask({"1-2"});
    std::vector<qint64> asked;
    chosenPhotos(m_catalog, m_filter, "phone", [&asked](const Asset &asset) {
        asked.push_back(asset.id);
        return true;
    });
    EXPECT_EQ((Ids{1, 2}), asked);
}

TEST_F(PhotoFilters, TakeDatesInTheOwnTimeOfEachPhoto)
{
    add().taken = july2019(27, 2); // the 26th, where it was taken
    m_catalog.assets[0].utcOffset = -240;
    add().taken = july2019(27, 2);
    add().taken = july2019(27, 23, 59, 59.9994);
    add().taken = july2019(27, 23, 59, 59.9996); // which is the 28th
    add();
    m_filter.from = dateSpan("2019-07-27");
    EXPECT_EQ((Ids{2, 3, 4}), chosen());
    m_filter.to = dateSpan("2019-07-27");
    EXPECT_EQ((Ids{2, 3}), chosen());
    m_filter.from.reset();
    EXPECT_EQ((Ids{1, 2, 3}), chosen());
    m_filter.to = dateSpan("2019");
    EXPECT_EQ((Ids{1, 2, 3, 4}), chosen());
    m_filter.to = dateSpan("2018");
    EXPECT_EQ((Ids{}), chosen());
}

TEST_F(PhotoFilters, TakeDatesWithAZoneAsTheSameMomentEverywhere)
{
    add().taken = july2019(27, 2);
    m_catalog.assets[0].utcOffset = -240;
    add().taken = july2019(27, 2, 0, 1);
    m_filter.from = dateSpan("2019-07-27T04:00:00+02:00");
    m_filter.to = dateSpan("2019-07-27T02:00:00Z");
    EXPECT_EQ((Ids{1}), chosen());
}

TEST_F(PhotoFilters, TakeWhatIsLargerThanASize)
{
    add().size = 999;
    add().size = 1000;
    add().size = 1001;
    add();
    m_filter.largerThan = 1000;
    EXPECT_EQ((Ids{3}), chosen());
    m_filter.largerThan = 0;
    EXPECT_EQ((Ids{1, 2, 3}), chosen());
}

TEST_F(PhotoFilters, TakePhotosWithAllKeywordsAndPeople)
{
    add().keywords = {"Beach", "Sea"};
    add().keywords = {"Sea"};
    add().keywords = {"Beach", "beach"};
    m_catalog.assets[0].people = {"Zoë"};
    m_catalog.assets[1].people = {"Ann", "Zoë"};
    m_filter.keywords = {"Sea"};
    EXPECT_EQ((Ids{1, 2}), chosen());
    m_filter.keywords = {"Sea", "Beach"};
    EXPECT_EQ((Ids{1}), chosen());
    m_filter.keywords = {"beach"};
    EXPECT_EQ((Ids{3}), chosen());
    m_filter.keywords = {"BEACH"};
    EXPECT_EQ((Ids{1, 3}), chosen());
    m_filter.people = {"ZOË"};
    EXPECT_EQ((Ids{1}), chosen());
}

TEST_F(PhotoFilters, RefuseKeywordsAndPeopleThatTheLibraryDoesNotHave)
{
    add().keywords = {"Beach"};
    Person person;
    person.name = "Zoë";
    m_catalog.people = {person};
    m_filter.keywords = {"Beech"};
    EXPECT_EQ("Beech: no photo with this keyword in phone; did you mean Beach?", refusal());
    m_filter.keywords.clear();
    m_filter.people = {"Bob"};
    EXPECT_EQ("Bob: no person of this name in phone", refusal());
    m_filter.people = {"Zoë"};
    EXPECT_EQ("0 chosen", refusal());
}

TEST_F(PhotoFilters, TakeNamedIdsWhateverTheyAreAndRangesAsAdmitted)
{
    addSeveral(5);
    m_catalog.assets[1].inTrash = true;
    m_catalog.assets[2].source = AssetSource::Shared;
    ask({"4-99", "1-2", "2"});
    EXPECT_EQ((Ids{1, 2, 4, 5}), chosen());
    ask({"3", "1-3"});
    EXPECT_EQ((Ids{1, 3}), chosen());
    ask({});
    EXPECT_EQ((Ids{}), chosen());
}

TEST_F(PhotoFilters, HoldForNamedIdsToo)
{
    addSeveral(3);
    m_catalog.assets[1].favorite = true;
    ask({"1", "2"});
    m_filter.favorite = true;
    EXPECT_EQ((Ids{2}), chosen());
    m_filter.trash = onlyTrash;
    EXPECT_EQ((Ids{}), chosen());
}

TEST_F(PhotoFilters, RefuseANamedIdThatTheLibraryDoesNotHave)
{
    addSeveral(2);
    for (const char *id : {"3", "0", "18446744073709551615", "99999999999999999999"}) {
        ask({"1", id});
        EXPECT_EQ(std::string(id) + ": no photo with this id in phone", refusal());
    }
    ask({"3-9"});
    EXPECT_EQ("0 chosen", refusal());
}

TEST_F(PhotoFilters, KeepTheOrderOfAnAlbum)
{
    addSeveral(5);
    m_catalog.assets[4].inTrash = true;
    m_catalog.albums = {album(7, "Mine", {4, 5, 1, 99, 2})};
    m_filter.album = "mine";
    EXPECT_EQ((Ids{4, 1, 2}), chosen());
    m_filter.order = PhotoOrder::Id;
    EXPECT_EQ((Ids{1, 2, 4}), chosen());
    m_filter.order.reset();
    ask({"1-4", "5"});
    EXPECT_EQ((Ids{4, 5, 1, 2}), chosen());
}

TEST_F(PhotoFilters, TakeAllAlbumsOfAFolder)
{
    addSeveral(4);
    m_catalog.albums = {folder(1, "F"), within(1, album(2, "A", {3, 1})), within(1, folder(3, "G")),
                        within(3, album(4, "B", {4, 3}))};
    m_filter.album = "F";
    EXPECT_EQ((Ids{3, 1, 4}), chosen());
}

TEST_F(PhotoFilters, RefuseASmartAlbum)
{
    m_catalog.albums = {album(1, "Best")};
    m_catalog.albums[0].kind = AlbumKind::Smart;
    m_filter.album = "Best";
    EXPECT_EQ("Best: a smart album: its photos are not stored in the library", refusal());
}

TEST_F(PhotoFilters, TakeWhatALibraryStoresOfASmartAlbum)
{
    addSeveral(2);
    m_catalog.albums = {album(1, "Best", {2})};
    m_catalog.albums[0].kind = AlbumKind::Smart;
    m_filter.album = "Best";
    EXPECT_EQ((Ids{2}), chosen());
}

TEST_F(PhotoFilters, LeaveWhatIsNotKnownLastInTheOrderTurnedRound)
{
    addSeveral(4);
    m_catalog.assets[0].taken = july2019(1);
    m_catalog.assets[2].taken = july2019(2);
    m_filter.order = PhotoOrder::Taken;
    m_filter.isReversed = true;
    EXPECT_EQ((Ids{3, 1, 4, 2}), chosen());
}

TEST_F(PhotoFilters, SortByWhatIsAskedFor)
{
    addSeveral(4);
    std::vector<Asset> &photos = m_catalog.assets;
    photos[0].taken = july2019(3);
    photos[1].taken = july2019(2);
    photos[3].taken = july2019(2);
    photos[1].modified = july2019(1);
    photos[3].modified = july2019(2);
    photos[2].size = 5;
    photos[1].size = 7;
    photos[0].size = 5;
    m_filter.order = PhotoOrder::Taken;
    EXPECT_EQ((Ids{2, 4, 1, 3}), chosen());
    m_filter.order = PhotoOrder::Modified;
    EXPECT_EQ((Ids{2, 4, 1, 3}), chosen());
    m_filter.order = PhotoOrder::Size;
    EXPECT_EQ((Ids{1, 3, 2, 4}), chosen());
    m_filter.isReversed = true;
    EXPECT_EQ((Ids{2, 3, 1, 4}), chosen());
}

TEST_F(PhotoFilters, SortNamesWithoutRegardToCaseAtFirst)
{
    for (const char *name : {"b", "B", "a", "b"})
        add().fileName = name;
    add();
    add().fileName = "Ä";
    add().fileName = "c";
    m_filter.order = PhotoOrder::Name;
    EXPECT_EQ((Ids{3, 2, 1, 4, 7, 6, 5}), chosen());
}

TEST_F(PhotoFilters, TakeTheFirstOnesOfTheOrder)
{
    addSeveral(4);
    m_filter.isReversed = true;
    m_filter.limit = 2;
    EXPECT_EQ((Ids{4, 3}), chosen());
    m_filter.limit = 0;
    EXPECT_EQ((Ids{}), chosen());
    m_filter.limit = 9;
    EXPECT_EQ((Ids{4, 3, 2, 1}), chosen());
}

} // namespace
