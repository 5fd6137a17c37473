// Albums, what they hold and in which order.

#include "support/catalog_fixture.h"
#include "support/row_name.h"

namespace {

std::vector<qint64> idsOf(const std::vector<Album> &albums)
{
    std::vector<qint64> ids;
    for (const Album &album : albums)
        ids.push_back(album.id);
    return ids;
}

class Albums : public CatalogFixture, public testing::WithParamInterface<LibraryVersion>
{
protected:
    Albums() : writer(GetParam()) {}

    void addPhotos(std::initializer_list<int> ids)
    {
        for (const int id : ids)
            writer.addPhoto(id);
    }

    std::string membersOf(qint64 id) { return album(catalogOf(writer), id).at("assets"); }

    LibraryTablesWriter writer;
};

INSTANTIATE_TEST_SUITE_P(All, Albums, testing::ValuesIn(libraryVersions()),
                         [](const auto &info) { return info.param.name; });

TEST_P(Albums, AreThoseOfTheKindsThatAPersonKnows)
{
    const std::pair<int, const char *> kinds[] = {{2, "album"},      {1505, "shared"},
                                                  {1506, "import"},  {1507, "smart"},
                                                  {1508, "project"}, {4000, "folder"}};
    for (const auto &[kind, name] : kinds)
        writer.addAlbum(kind, {{"ZKIND", kind}});
    for (const int kind : {0, 1000, 1509, 1510, 1552, 1600, 1642, 3571, 3998, 3999, 4001, 4006})
        writer.addAlbum(kind, {{"ZKIND", kind}});
    writer.addAlbum(1, {{"ZKIND", {}}});
    const Catalog catalog = catalogOf(writer);
    EXPECT_EQ((std::vector<qint64>{2, 1505, 1506, 1507, 1508, 4000}), idsOf(catalog.albums));
    for (const auto &[kind, name] : kinds)
        EXPECT_EQ(name, album(catalog, kind).at("kind"));
}

TEST_P(Albums, AreNotThoseInTheTrash)
{
    addPhotos({1});
    writer.addAlbum(3, {{"ZTRASHEDSTATE", 1}});
    writer.addAlbum(4, {{"ZTRASHEDSTATE", {}}});
    writer.addMember(3, 1);
    const Catalog catalog = catalogOf(writer);
    EXPECT_EQ(std::vector<qint64>{4}, idsOf(catalog.albums));
    EXPECT_EQ("", asset(catalog, 1).at("albums"));
}

TEST_P(Albums, TellTheirOwnFields)
{
    writer.addAlbum(3, {{"ZUUID", "ab-1"},
                        {"ZTITLE", "Fr\xc3\xbchst\xc3\xbc"
                                   "ck"},
                        {"ZCREATIONDATE", 585926353.5}});
    writer.addAlbum(4, {{"ZTITLE", ""}});
    writer.addAlbum(5, {{"ZUUID", QByteArray::fromHex("0123456789abcdef0123456789abcdef")}});
    const Catalog catalog = catalogOf(writer);
    EXPECT_EQ((FieldTexts{{"id", "3"},
                          {"kind", "album"},
                          {"uuid", "AB-1"},
                          {"title", "Fr\xc3\xbchst\xc3\xbc"
                                    "ck"},
                          {"parent", "null"},
                          {"created", "585926353.5"},
                          {"assets", ""}}),
              album(catalog, 3));
    EXPECT_EQ("null", album(catalog, 4).at("title"));
    EXPECT_EQ("null", album(catalog, 4).at("uuid"));
    EXPECT_EQ("null", album(catalog, 4).at("created"));
    EXPECT_EQ("01234567-89AB-CDEF-0123-456789ABCDEF", album(catalog, 5).at("uuid"));
}

TEST_P(Albums, LieInListedFoldersOnly)
{
    writer.addAlbum(1, {{"ZKIND", 4000}});
    writer.addAlbum(2, {{"ZKIND", 3999}});
    writer.addAlbum(3, {{"ZKIND", 4000}, {"ZTRASHEDSTATE", 1}});
    int id = 10;
    for (const int parent : {1, 2, 3, 10, 99})
        writer.addAlbum(id++, {{"ZPARENTFOLDER", parent}});
    const Catalog catalog = catalogOf(writer);
    EXPECT_EQ("1", album(catalog, 10).at("parent"));
    for (const qint64 other : {11, 12, 13, 14})
        EXPECT_EQ("null", album(catalog, other).at("parent")) << other;
}

TEST_P(Albums, ThatLieInEachOtherLieNowhere)
{
    const auto folder = [&](int id, int parent) {
        writer.addAlbum(id, {{"ZKIND", 4000}, {"ZPARENTFOLDER", parent}});
    };
    folder(1, 1);
    folder(2, 4);
    folder(3, 2);
    folder(4, 3);
    folder(5, 3);
    folder(6, 5);
    folder(7, 8);
    folder(8, 99);
    const Catalog catalog = catalogOf(writer);
    for (const qint64 inACircle : {1, 2, 3, 4})
        EXPECT_EQ("null", album(catalog, inACircle).at("parent")) << inACircle;
    EXPECT_EQ("3", album(catalog, 5).at("parent"));
    EXPECT_EQ("5", album(catalog, 6).at("parent"));
    EXPECT_EQ("8", album(catalog, 7).at("parent"));
}

TEST_P(Albums, HoldListedPhotosEachOnceAlsoThoseInTheTrash)
{
    writer.addPhoto(1, {{"ZTRASHEDSTATE", 1}});
    writer.addPhoto(2, {{"ZSAVEDASSETTYPE", 4}});
    writer.addPhoto(3, {{"ZKIND", 2}});
    writer.addVideo(4);
    writer.addAlbum(10);
    for (const int asset : {4, 3, 2, 1, 99})
        writer.addMember(10, asset, 100 - asset);
    writer.addMember(10, 2, 1);
    writer.addMember(10, 4, 500);
    writer.addMember(77, 4, 1);
    EXPECT_EQ("2 4 1", membersOf(10));
}

TEST_P(Albums, AreToldOfEachPhotoByTheirIds)
{
    addPhotos({1, 2});
    for (const int album : {12, 10, 11})
        writer.addAlbum(album);
    writer.addAlbum(13, {{"ZKIND", 1505}});
    writer.addAlbum(14, {{"ZKIND", 1508}});
    for (const int album : {12, 10, 14, 13})
        writer.addMember(album, 1, 1);
    writer.addMember(10, 1, 2);
    writer.addMember(11, 2, 1);
    const Catalog catalog = catalogOf(writer);
    EXPECT_EQ("10 12 13 14", asset(catalog, 1).at("albums"));
    EXPECT_EQ("11", asset(catalog, 2).at("albums"));
}

TEST_P(Albums, ThatAreFoldersHoldNone)
{
    addPhotos({1});
    writer.addAlbum(11, {{"ZKIND", 4000}});
    writer.addMember(11, 1, 1);
    const Catalog catalog = catalogOf(writer);
    EXPECT_EQ("", album(catalog, 11).at("assets"));
    EXPECT_EQ("", asset(catalog, 1).at("albums"));
}

TEST_P(Albums, ThatAreSmartHoldWhatTheLibraryStores)
{
    addPhotos({1});
    writer.addAlbum(10, {{"ZKIND", 1507}});
    writer.addAlbum(11, {{"ZKIND", 1507}});
    writer.addMember(10, 1, 1);
    const Catalog catalog = catalogOf(writer);
    EXPECT_EQ("1", album(catalog, 10).at("assets"));
    EXPECT_EQ("", album(catalog, 11).at("assets"));
    EXPECT_EQ("10", asset(catalog, 1).at("albums"));
}

TEST_P(Albums, OfImportsHoldWhatNamesThem)
{
    const bool hasPlaces = GetParam().hasImportPlaces;
    const std::pair<int, SqlValue> places[] = {{1, {}}, {2, 30}, {3, 10}, {4, 20}, {5, 20}};
    for (const auto &[id, place] : places)
        writer.addPhoto(
            id, {{"ZIMPORTSESSION", 10}, {"Z_FOK_IMPORTSESSION", place}, {"ZDATECREATED", -id}});
    writer.addPhoto(6, {{"ZIMPORTSESSION", 11}});
    writer.addPhoto(7, {{"ZIMPORTSESSION", 12}});
    writer.addAlbum(10, {{"ZKIND", 1506}, {"ZCUSTOMSORTKEY", 1}});
    writer.addAlbum(11, {{"ZKIND", 1506}});
    writer.addAlbum(12);
    writer.addMember(10, 6, 1);
    const Catalog catalog = catalogOf(writer);
    EXPECT_EQ(hasPlaces ? "3 4 5 2 1" : "1 2 3 4 5", album(catalog, 10).at("assets"));
    EXPECT_EQ("6", album(catalog, 11).at("assets"));
    EXPECT_EQ("", album(catalog, 12).at("assets"));
    EXPECT_EQ("10", asset(catalog, 3).at("albums"));
    EXPECT_EQ("", asset(catalog, 7).at("albums"));
}

TEST_P(Albums, WithoutPlacesAreInTheOrderOfIds)
{
    addPhotos({1, 2, 3});
    writer.addAlbum(10);
    for (const int asset : {3, 1, 2})
        writer.addMember(10, asset, asset * -1);
    writer.leaveOut(GetParam().joinTable(), GetParam().joinPlace());
    EXPECT_EQ("1 2 3", membersOf(10));
}

// The photos are, by date as by title, 3 and 5 without any, then 2, 4 and 6 with one, then 1.
struct OrderCase {
    const char *name;
    SqlValue key;
    SqlValue ascending;
    const char *members;
};

class AlbumOrder : public CatalogFixture, public testing::WithParamInterface<OrderCase>
{
};

TEST_P(AlbumOrder, IsThatOfItsKey)
{
    LibraryTablesWriter writer(libraryVersion("Of18"));
    const std::pair<SqlValue, const char *> values[] = {{9.5, "b"}, {7, "B"},      {{}, ""},
                                                        {7.0, "B"}, {{}, nullptr}, {7, "B"}};
    for (int id = 1; id <= 6; ++id) {
        const auto &[date, title] = values[id - 1];
        writer.addPhoto(id, {{"ZDATECREATED", date}});
        writer.addAttributes(10 - id, id, {{"ZTITLE", title ? SqlValue(title) : SqlValue()}});
    }
    writer.addAlbum(
        10, {{"ZCUSTOMSORTKEY", GetParam().key}, {"ZCUSTOMSORTASCENDING", GetParam().ascending}});
    const std::pair<int, SqlValue> places[] = {{1, 1}, {2, {}}, {3, 50}, {4, 40}, {5, 30}, {6, 40}};
    for (const auto &[asset, place] : places)
        writer.addMember(10, asset, place);
    EXPECT_EQ(GetParam().members, album(catalogOf(writer), 10).at("assets"));
}

INSTANTIATE_TEST_SUITE_P(All, AlbumOrder,
                         testing::Values(OrderCase{"Manual", 0, 1, "1 5 4 6 3 2"},
                                         OrderCase{"ManualIsNeverTurnedOver", 0, 0, "1 5 4 6 3 2"},
                                         OrderCase{"Unknown", 3, 0, "1 5 4 6 3 2"},
                                         OrderCase{"None", {}, 1, "1 5 4 6 3 2"},
                                         OrderCase{"ByDate", 1, 1, "5 3 4 6 2 1"},
                                         OrderCase{"ByDateTheNewestFirst", 1, 0, "1 4 6 2 5 3"},
                                         OrderCase{"ByDateWithoutADirection", 1, {}, "5 3 4 6 2 1"},
                                         OrderCase{"ByTitle", 5, 1, "5 3 4 6 2 1"},
                                         OrderCase{"ByTitleTheLastFirst", 5, 0, "1 4 6 2 5 3"}),
                         rowName<OrderCase>);

TEST(AlbumTitles, AreInOrderByCodePoint)
{
    class Titles : public CatalogFixture
    {
        void TestBody() override {}

    public:
        std::string order()
        {
            LibraryTablesWriter writer(libraryVersion("Of18"));
            writer.addAlbum(10, {{"ZCUSTOMSORTKEY", 5}, {"ZCUSTOMSORTASCENDING", 1}});
            const std::string titles[] = {"\xf0\x9f\x98\x80",   "\xef\xbc\xa1", "a", "B", "Bb",
                                          std::string("B\0", 2)};
            int id = 0;
            for (const std::string &title : titles) {
                writer.addPhoto(++id);
                writer.addAttributes(id, id, {{"ZTITLE", title}});
                writer.addMember(10, id, 1);
            }
            return album(catalogOf(writer), 10).at("assets");
        }
    };
    EXPECT_EQ("4 6 5 3 2 1", Titles().order());
}

class JoinTables : public CatalogFixture
{
protected:
    // A library with a photo in the album 10 that has a keyword.
    static LibraryTablesWriter library(const LibraryVersion &version)
    {
        LibraryTablesWriter writer(version);
        writer.addPhoto(1);
        writer.addAttributes(5, 1);
        writer.addKeyword(7, "keyword");
        writer.addKeywordOf(5, 7);
        writer.addAlbum(10);
        writer.addMember(10, 1, 1);
        return writer;
    }

    void expectFound(const LibraryTablesWriter &writer)
    {
        const Catalog catalog = catalogOf(writer);
        EXPECT_EQ("1", album(catalog, 10).at("assets"));
        EXPECT_EQ("keyword", asset(catalog, 1).at("keywords"));
    }
};

TEST_F(JoinTables, AreFoundByTheirNumbersAmongOthersOfTheirForm)
{
    for (const LibraryVersion &version : libraryVersions()) {
        SCOPED_TRACE(version.name);
        LibraryTablesWriter writer = library(version);
        writer.addTable("Z_7ASSETS", {"Z_7ALBUMS", "Z_3ASSETS"});
        writer.add("Z_7ASSETS", {{"Z_7ALBUMS", 10}, {"Z_3ASSETS", 99}});
        writer.addTable("Z_7KEYWORDS", {"Z_7ASSETATTRIBUTES", "Z_36KEYWORDS"});
        expectFound(writer);
        EXPECT_EQ(std::vector<std::string>(), missing(catalogOf(writer)));
    }
}

TEST_F(JoinTables, AreFoundByTheirFormWhereNumbersAreMissing)
{
    for (const LibraryVersion &version : libraryVersions()) {
        SCOPED_TRACE(version.name);
        LibraryTablesWriter writer = library(version);
        writer.leaveOut("Z_PRIMARYKEY");
        expectFound(writer);
        EXPECT_EQ(std::vector<std::string>{"Z_PRIMARYKEY"}, missing(catalogOf(writer)));
    }
}

TEST_F(JoinTables, AreFoundByTheirFormWhereNumbersLeadNowhere)
{
    LibraryVersion wrong = libraryVersion("Of18");
    LibraryTablesWriter writer = library(wrong);
    writer.leaveOut("Z_PRIMARYKEY");
    writer.addTable("Z_PRIMARYKEY", {"Z_ENT", "Z_NAME"});
    for (const char *name : {"Album", "Asset", "Keyword", "AdditionalAssetAttributes"})
        writer.add("Z_PRIMARYKEY", {{"Z_NAME", name}, {"Z_ENT", 99}});
    expectFound(writer);
}

TEST_F(JoinTables, AreNotGuessedAmongSeveral)
{
    LibraryTablesWriter writer = library(libraryVersion("Of18"));
    writer.leaveOut("Z_PRIMARYKEY");
    writer.addTable("Z_7ASSETS", {"Z_7ALBUMS", "Z_3ASSETS"});
    writer.addTable("Z_7KEYWORDS", {"Z_7ASSETATTRIBUTES", "Z_36KEYWORDS"});
    const Catalog catalog = catalogOf(writer);
    EXPECT_EQ("", album(catalog, 10).at("assets"));
    EXPECT_EQ("", asset(catalog, 1).at("keywords"));
    EXPECT_EQ((std::vector<std::string>{"Z_PRIMARYKEY", "Z_nKEYWORDS", "Z_nASSETS"}),
              missing(catalog));
}

TEST_F(JoinTables, NameThePhotosByTheOlderOfTwoNumbersIn2019)
{
    LibraryTablesWriter writer = library(libraryVersion("Of13"));
    writer.leaveOut("Z_26ASSETS");
    writer.addTable("Z_26ASSETS", {"Z_26ALBUMS", "Z_34ASSETS", "Z_35ASSETS", "Z_FOK_34ASSETS"});
    writer.add("Z_26ASSETS", {{"Z_26ALBUMS", 10}, {"Z_34ASSETS", 1}, {"Z_35ASSETS", 2}});
    expectFound(writer);
}

TEST_F(JoinTables, AreNotThoseWhoseNamesOnlyLookAlike)
{
    LibraryTablesWriter writer = library(libraryVersion("Of18"));
    writer.leaveOut("Z_30ASSETS");
    for (const char *name : {"Z_30KEYASSETS", "Z_ASSETS", "Z_30ASSETSX", "XZ_30ASSETS"}) {
        writer.addTable(name, {"Z_30ALBUMS", "Z_3ASSETS"});
        writer.add(name, {{"Z_30ALBUMS", 10}, {"Z_3ASSETS", 1}});
    }
    const Catalog catalog = catalogOf(writer);
    EXPECT_EQ("", album(catalog, 10).at("assets"));
    EXPECT_EQ(std::vector<std::string>{"Z_30ASSETS"}, missing(catalog));
}

} // namespace
