#include "engine/album_choice.h"

#include "base/error.h"
#include "engine/album_tree.h"
#include "support/catalogs.h"

#include <gtest/gtest.h>

namespace {

class AlbumChoices : public testing::Test
{
protected:
    qint64 chosen(const std::string &text) const
    {
        return chosenAlbum(m_catalog, text, "phone").id;
    }

    std::string refusal(const std::string &text) const
    {
        try {
            return "chose " + std::to_string(chosen(text));
        } catch (const Error &error) {
            return error.what();
        }
    }

    Catalog m_catalog;
};

TEST_F(AlbumChoices, AreMadeByIdBeforeTitle)
{
    m_catalog.albums = {album(7, "12"), album(12, "Seven"), album(20, "2019")};
    EXPECT_EQ(7, chosen("7"));
    EXPECT_EQ(12, chosen("12"));
    EXPECT_EQ(12, chosen("Seven"));
    EXPECT_EQ(20, chosen("2019"));
    EXPECT_EQ("13: no album with this id in phone", refusal("13"));
    EXPECT_EQ("99999999999999999999: no album with this id in phone",
              refusal("99999999999999999999"));
}

TEST_F(AlbumChoices, GoByCaseOnlyWhereItTellsTheTitlesApart)
{
    m_catalog.albums = {album(1, "rome"), album(2, "Rome"), album(3, "ÅRHUS"),
                        album(4, "Cafe\xcc\x81")};
    EXPECT_EQ(1, chosen("rome"));
    EXPECT_EQ(2, chosen("Rome"));
    EXPECT_EQ(3, chosen("århus"));
    EXPECT_EQ(4, chosen("CAF\xc3\x89"));
    EXPECT_EQ("ROME: several albums have this name: 1 (rome), 2 (Rome); name one by its id",
              refusal("ROME"));
}

TEST_F(AlbumChoices, TakeTheFoldersTitles)
{
    m_catalog.albums = {folder(1, "Trips"), within(1, folder(2, "Italy")), within(2, album(3, "A")),
                        within(1, album(4, "A")), album(5, "A")};
    EXPECT_EQ(3, chosen("Trips/Italy/A"));
    EXPECT_EQ(3, chosen("Italy/A"));
    EXPECT_EQ(4, chosen("Trips/A"));
    EXPECT_EQ(4, chosen("trips/a"));
    EXPECT_EQ(2, chosen("Trips/Italy"));
    EXPECT_EQ("A: several albums have this name: 3 (Trips/Italy/A), 4 (Trips/A), 5 (A); name one "
              "by its id",
              refusal("A"));
    EXPECT_EQ("rips/A: no album of this name in phone", refusal("rips/A"));
}

TEST_F(AlbumChoices, FindATitleWithASlashBeforeAPath)
{
    m_catalog.albums = {album(1, "Trips/A"), folder(2, "Trips"), within(2, album(3, "A")),
                        within(2, album(4, "B/C"))};
    EXPECT_EQ(1, chosen("Trips/A"));
    EXPECT_EQ(3, chosen("A"));
    EXPECT_EQ(4, chosen("B/C"));
    EXPECT_EQ(4, chosen("Trips/B/C"));
}

TEST_F(AlbumChoices, PreferAWholePathToTheEndOfOne)
{
    m_catalog.albums = {folder(1, "X"), within(1, folder(2, "Trips")), within(2, album(3, "A")),
                        folder(4, "Trips"), within(4, album(5, "A"))};
    EXPECT_EQ(5, chosen("Trips/A"));
    EXPECT_EQ(3, chosen("X/Trips/A"));
}

TEST_F(AlbumChoices, SuggestTheTitleThatWasMeant)
{
    m_catalog.albums = {album(1, "Summer"), album(2, "")};
    EXPECT_EQ("Sumer: no album of this name in phone; did you mean Summer?", refusal("Sumer"));
    EXPECT_EQ(": no album of this name in phone", refusal(""));
}

std::string text(const std::vector<AlbumTree::Line> &lines)
{
    std::string text;
    for (const AlbumTree::Line &line : lines)
        text.append(line.depth, '>').append(std::to_string(line.album->id)).push_back(' ');
    return text;
}

TEST(AlbumTrees, HaveFoldersBeforeWhatIsInThem)
{
    Catalog catalog;
    catalog.albums = {album(1, "a"),
                      within(5, album(2, "b")),
                      within(6, album(3, "c")),
                      within(5, folder(4, "d")),
                      folder(5, "e"),
                      within(4, folder(6, "f")),
                      within(99, album(7, "g"))};
    EXPECT_EQ("1 5 >2 >4 >>6 >>>3 7 ", text(AlbumTree(catalog).lines()));
}

TEST(AlbumTrees, GiveTheAssetsOfAFolderOnce)
{
    Catalog catalog;
    catalog.albums = {folder(1, "all"), within(1, album(2, "a", {7, 3})), within(1, folder(3, "b")),
                      within(3, album(4, "c", {3, 9, 7})), album(5, "d", {1})};
    const AlbumTree tree(catalog);
    EXPECT_EQ((std::vector<qint64>{7, 3, 9}), tree.assetsOf(catalog.albums[0]));
    EXPECT_EQ((std::vector<qint64>{3, 9, 7}), tree.assetsOf(catalog.albums[2]));
    EXPECT_EQ((std::vector<qint64>{1}), tree.assetsOf(catalog.albums[4]));
}

TEST(AlbumTrees, EndWhereFoldersLieInEachOther)
{
    Catalog catalog;
    catalog.albums = {within(2, folder(1, "a")), within(1, folder(2, "b")),
                      within(3, folder(3, "c")), within(2, album(4, "d", {8}))};
    const AlbumTree tree(catalog);
    EXPECT_EQ("1 >2 >>4 3 ", text(tree.lines()));
    EXPECT_EQ("b/a", tree.pathOf(catalog.albums[0]));
    EXPECT_EQ("c", tree.pathOf(catalog.albums[2]));
    EXPECT_EQ((std::vector<qint64>{8}), tree.assetsOf(catalog.albums[0]));
}

TEST(AlbumTrees, OfAnyDepthTakeNoLongerThanFlatOnes)
{
    constexpr int count = 100 * 1000;
    Catalog catalog;
    for (int id = 1; id <= count; ++id)
        catalog.albums.push_back(within(id + 1, folder(id, "f")));
    const AlbumTree tree(catalog);
    const std::vector<AlbumTree::Line> lines = tree.lines();
    ASSERT_EQ(std::size_t(count), lines.size());
    EXPECT_EQ(64, lines.back().depth);
    EXPECT_EQ(65 + 64, tree.pathOf(catalog.albums[0]).size());
    EXPECT_EQ(1, chosenAlbum(catalog, "1", "phone").id);
}

} // namespace
