#include "cli/album_lists.h"

#include "cli/output.h"
#include "engine/json_writer.h"
#include "support/catalogs.h"

#include <gtest/gtest.h>

namespace {

Catalog catalogWithPhotos(int count)
{
    Catalog catalog;
    for (int id = 1; id <= count; ++id) {
        Asset asset;
        asset.id = id;
        catalog.assets.push_back(asset);
    }
    return catalog;
}

std::string jsonOf(const Catalog &catalog, const Album &album)
{
    JsonWriter json;
    writeAlbum(catalog, album, json);
    return json.taken().toStdString();
}

std::string tableOf(const Catalog &catalog)
{
    testing::internal::CaptureStdout();
    Output output;
    writeAlbumsAsTable(catalog, output);
    output.flush();
    return testing::internal::GetCapturedStdout();
}

TEST(AlbumLists, TellAllOfAnAlbumInJson)
{
    const Catalog catalog = catalogWithPhotos(9);
    Album trip = within(4, album(7, "Grüße \"aus\"\n日本", {3, 1}));
    trip.uuid = "U";
    trip.created = july2019(27, 13, 16, 49.5);
    EXPECT_EQ(R"({"id":7,"uuid":"U","kind":"album","title":"Grüße \"aus\"\u000a日本","parent":4,)"
              R"("created":"2019-07-27T13:16:49.500Z","photos":[3,1]})",
              jsonOf(catalog, trip));
    EXPECT_EQ(R"({"id":8,"uuid":null,"kind":"album","title":null,"parent":null,"created":null,)"
              R"("photos":[]})",
              jsonOf(catalog, album(8, "")));
}

TEST(AlbumLists, NameTheKinds)
{
    const std::pair<AlbumKind, std::string> words[] = {
        {AlbumKind::Album, "album"}, {AlbumKind::Shared, "shared"},   {AlbumKind::Import, "import"},
        {AlbumKind::Smart, "smart"}, {AlbumKind::Project, "project"}, {AlbumKind::Folder, "folder"},
    };
    for (const auto &word : words) {
        Album of = album(1, "a");
        of.kind = word.first;
        EXPECT_NE(std::string::npos, jsonOf(Catalog(), of).find("\"kind\":\"" + word.second + '"'));
    }
}

TEST(AlbumLists, HaveTheTrashButNoSharedCopies)
{
    Catalog catalog = catalogWithPhotos(4);
    catalog.assets[1].inTrash = true;
    catalog.assets[2].source = AssetSource::Shared;
    const std::string json = jsonOf(catalog, album(7, "a", {4, 3, 2, 99, 1}));
    EXPECT_NE(std::string::npos, json.find("\"photos\":[4,2,1]")) << json;
}

TEST(AlbumLists, ShowFoldersWithWhatIsInThem)
{
    Catalog catalog = catalogWithPhotos(5);
    catalog.albums = {folder(1, "Trips"),
                      within(1, folder(2, "Italy")),
                      within(2, album(3, "Rome", {1, 2})),
                      album(10, "A\x1b[2J", {1}),
                      within(1, album(11, "Paris", {2, 3})),
                      album(12, "Best")};
    catalog.albums[5].kind = AlbumKind::Smart;
    EXPECT_EQ("ID  NAME      KIND    PHOTOS\n"
              " 1  Trips     folder       3\n"
              " 2    Italy   folder       2\n"
              " 3      Rome  album        2\n"
              "11    Paris   album        2\n"
              "10  A\\x1b[2J  album        1\n"
              "12  Best      smart\n",
              tableOf(catalog));
}

} // namespace
