// Libraries that lack a table or a column: what is there is listed all the same.

#include "support/catalog_fixture.h"

#include "base/error.h"

namespace {

// What lacks, and what becomes of the fields of the photo 1, the video 2 and the album 10. In the
// names "ASSETS" and so on stand for those of the version.
struct Lack {
    const char *table;
    const char *column; // null for the whole table
    FieldTexts photo;
    FieldTexts video;
    FieldTexts album;
    const char *told = nullptr; // another name than its own; empty for none
};

std::ostream &operator<<(std::ostream &stream, const Lack &lack)
{
    return stream << lack.table << (lack.column ? "." : "") << (lack.column ? lack.column : "");
}

const FieldTexts noAttributes = {{"title", "null"},     {"originalName", "null"}, {"size", "null"},
                                 {"utcOffset", "null"}, {"caption", "null"},      {"keywords", ""}};
const FieldTexts noKeywords = {{"keywords", ""}};
const FieldTexts noPeople = {{"people", ""}};
const FieldTexts noCaption = {{"caption", "null"}};
const FieldTexts noMembers = {{"assets", ""}};

const Lack lacks[] = {
    {"ASSETS", "ZKINDSUBTYPE", {{"types", "burst"}}, {{"types", ""}}, {}},
    {"ASSETS", "ZSAVEDASSETTYPE", {{"source", "null"}}, {{"source", "null"}}, {}},
    {"ASSETS", "ZUUID", {{"uuid", "null"}}, {{"uuid", "null"}}, {}},
    {"ASSETS",
     "ZDIRECTORY",
     {{"directory", "null"}, {"path", "1.JPG"}},
     {{"directory", "null"}, {"path", "2.MOV"}},
     {}},
    {"ASSETS",
     "ZFILENAME",
     {{"fileName", "null"}, {"path", "null"}},
     {{"fileName", "null"}, {"path", "null"}},
     {}},
    {"ASSETS", "ZDATECREATED", {{"taken", "null"}}, {{"taken", "null"}}, {{"assets", "1 2"}}},
    {"ASSETS", "ZMODIFICATIONDATE", {{"modified", "null"}}, {{"modified", "null"}}, {}},
    {"ASSETS", "ZADDEDDATE", {{"added", "null"}}, {{"added", "null"}}, {}},
    {"ASSETS", "ZTRASHEDDATE", {{"trashed", "null"}}, {}, {}},
    {"ASSETS",
     "ZTRASHEDSTATE",
     {{"inTrash", "null"}, {"trashed", "null"}},
     {{"inTrash", "null"}},
     {}},
    {"ASSETS", "ZWIDTH", {{"width", "null"}}, {{"width", "null"}}, {}},
    {"ASSETS", "ZHEIGHT", {{"height", "null"}}, {{"height", "null"}}, {}},
    {"ASSETS", "ZORIENTATION", {{"orientation", "null"}}, {{"orientation", "null"}}, {}},
    {"ASSETS", "ZDURATION", {}, {{"duration", "null"}}, {}},
    {"ASSETS", "ZFAVORITE", {{"favorite", "null"}}, {{"favorite", "null"}}, {}},
    {"ASSETS", "ZHIDDEN", {{"hidden", "null"}}, {{"hidden", "null"}}, {}},
    {"ASSETS",
     "EDITED",
     {{"edited", "null"}},
     {{"edited", "null"}},
     {},
     "ASSETS.ZADJUSTMENTSSTATE"},
    {"ASSETS", "RENDERED", {}, {}, {}, "ASSETS.ZCUSTOMRENDEREDVALUE"},
    {"ASSETS", "ZCLOUDLOCALSTATE", {{"isInCloud", "null"}}, {{"isInCloud", "null"}}, {}},
    {"ASSETS",
     "ZAVALANCHEUUID",
     {{"burst", "null"}, {"burstPicked", "null"}, {"types", "live"}},
     {},
     {}},
    {"ASSETS", "ZVISIBILITYSTATE", {{"burstPicked", "null"}}, {}, {}},
    {"ASSETS", "ZLATITUDE", {{"location", "null"}}, {{"location", "null"}}, {}},
    {"ASSETS", "ZLONGITUDE", {{"location", "null"}}, {{"location", "null"}}, {}},
    {"ASSETS", "ZADDITIONALATTRIBUTES", {}, {}, {}},
    {"ASSETS", "ZIMPORTSESSION", {{"albums", "10"}}, {{"albums", "10"}}, {}},

    {"ZADDITIONALASSETATTRIBUTES", nullptr, noAttributes, noAttributes, {}},
    {"ZADDITIONALASSETATTRIBUTES", "Z_PK", noAttributes, noAttributes, {}},
    {"ZADDITIONALASSETATTRIBUTES", "ZASSET", noAttributes, noAttributes, {}},
    {"ZADDITIONALASSETATTRIBUTES", "ZTITLE", {{"title", "null"}}, {{"title", "null"}}, {}},
    {"ZADDITIONALASSETATTRIBUTES",
     "ZORIGINALFILENAME",
     {{"originalName", "null"}},
     {{"originalName", "null"}},
     {}},
    {"ZADDITIONALASSETATTRIBUTES", "ZORIGINALFILESIZE", {{"size", "null"}}, {{"size", "null"}}, {}},
    {"ZADDITIONALASSETATTRIBUTES",
     "ZTIMEZONEOFFSET",
     {{"utcOffset", "null"}},
     {{"utcOffset", "null"}},
     {}},
    {"ZADDITIONALASSETATTRIBUTES", "ZASSETDESCRIPTION", {}, {}, {}},
    {"ZASSETDESCRIPTION", nullptr, noCaption, noCaption, {}},
    {"ZASSETDESCRIPTION", "Z_PK", noCaption, noCaption, {}},
    {"ZASSETDESCRIPTION", "ZASSETATTRIBUTES", {}, {}, {}},
    {"ZASSETDESCRIPTION", "ZLONGDESCRIPTION", noCaption, noCaption, {}},

    {"ZKEYWORD", nullptr, noKeywords, noKeywords, {}},
    {"ZKEYWORD", "Z_PK", noKeywords, noKeywords, {}},
    {"ZKEYWORD", "ZTITLE", noKeywords, noKeywords, {}},
    {"KEYWORDSOF", nullptr, noKeywords, noKeywords, {}},
    {"KEYWORDSOF", "ATTRIBUTES", noKeywords, noKeywords, {}},
    {"KEYWORDSOF", "KEYWORD", noKeywords, noKeywords, {}},

    {"ZPERSON", nullptr, noPeople, noPeople, {}},
    {"ZPERSON", "Z_PK", noPeople, noPeople, {}},
    {"ZPERSON", "ZFULLNAME", noPeople, noPeople, {}},
    {"ZPERSON", "ZPERSONUUID", {}, {}, {}},
    {"ZDETECTEDFACE", nullptr, noPeople, noPeople, {}},
    {"ZDETECTEDFACE", "FACEASSET", noPeople, noPeople, {}},
    {"ZDETECTEDFACE", "FACEPERSON", noPeople, noPeople, {}},

    {"ZGENERICALBUM", "ZUUID", {}, {}, {{"uuid", "null"}}},
    {"ZGENERICALBUM", "ZTITLE", {}, {}, {{"title", "null"}}},
    {"ZGENERICALBUM", "ZPARENTFOLDER", {}, {}, {{"parent", "null"}}},
    {"ZGENERICALBUM", "ZCREATIONDATE", {}, {}, {{"created", "null"}}},
    {"ZGENERICALBUM", "ZTRASHEDSTATE", {}, {}, {}},
    {"ZGENERICALBUM", "ZCUSTOMSORTKEY", {}, {}, {{"assets", "1 2"}}},
    {"ZGENERICALBUM", "ZCUSTOMSORTASCENDING", {}, {}, {}},
    {"MEMBERS", nullptr, {{"albums", "11"}}, {{"albums", "11"}}, noMembers},
    {"MEMBERS", "MEMBERALBUM", {{"albums", "11"}}, {{"albums", "11"}}, noMembers},
    {"MEMBERS", "MEMBERASSET", {{"albums", "11"}}, {{"albums", "11"}}, noMembers},
    {"MEMBERS", "MEMBERPLACE", {}, {}, {}},
};

std::string named(const std::string &name, const LibraryVersion &version)
{
    const std::map<std::string, std::string> names = {
        {"ASSETS", version.assets},
        {"EDITED", version.edited},
        {"RENDERED", version.rendered},
        {"KEYWORDSOF", version.keywordTable()},
        {"ATTRIBUTES", version.keywordAttributes()},
        {"KEYWORD", version.keywordKeyword()},
        {"FACEASSET", version.faceAsset},
        {"FACEPERSON", version.facePerson},
        {"MEMBERS", version.joinTable()},
        {"MEMBERALBUM", version.joinAlbum()},
        {"MEMBERASSET", version.joinAsset},
        {"MEMBERPLACE", version.joinPlace()},
    };
    const auto found = names.find(name);
    return found == names.end() ? name : found->second;
}

std::string toldName(const Lack &lack, const LibraryVersion &version)
{
    const std::string told = lack.told ? lack.told : "";
    if (!told.empty())
        return version.assets + told.substr(told.find('.'));
    const std::string table = named(lack.table, version);
    return lack.column ? table + '.' + named(lack.column, version) : table;
}

// Everything has a value: the photo 1 is in the trash, live and of a burst; both are in the album
// 10, sorted by date, which puts the video first, and in the import 11.
LibraryTablesWriter wholeLibrary(const LibraryVersion &version)
{
    LibraryTablesWriter writer(version);
    const TableRow both = {
        {"ZUUID", "AB"},     {"ZDIRECTORY", "DCIM"},  {"ZMODIFICATIONDATE", 3}, {"ZADDEDDATE", 4},
        {"ZWIDTH", 40},      {"ZHEIGHT", 30},         {"ZORIENTATION", 6},      {"ZFAVORITE", 1},
        {"ZHIDDEN", 1},      {"ZCLOUDLOCALSTATE", 1}, {"ZLATITUDE", 46.5},      {"ZLONGITUDE", 7.5},
        {version.edited, 1}, {"ZIMPORTSESSION", 11}};
    TableRow photo = {{"ZKINDSUBTYPE", 2},     {"ZFILENAME", "1.JPG"},      {"ZDATECREATED", 2},
                      {"ZTRASHEDSTATE", 1},    {"ZTRASHEDDATE", 9},         {"ZAVALANCHEUUID", "B"},
                      {"ZVISIBILITYSTATE", 0}, {"ZADDITIONALATTRIBUTES", 5}};
    TableRow video = {{"ZKINDSUBTYPE", 101},
                      {"ZFILENAME", "2.MOV"},
                      {"ZDATECREATED", 1},
                      {"ZDURATION", 2.5},
                      {"ZADDITIONALATTRIBUTES", 6}};
    photo.insert(both.begin(), both.end());
    video.insert(both.begin(), both.end());
    writer.addPhoto(1, photo);
    writer.addVideo(2, video);
    const TableRow attributes = {{"ZTITLE", "title"},
                                 {"ZORIGINALFILENAME", "name"},
                                 {"ZORIGINALFILESIZE", 77},
                                 {"ZTIMEZONEOFFSET", 3600}};
    writer.addKeyword(30, "keyword");
    writer.addPerson(40, "person", {{"ZPERSONUUID", "P"}});
    for (const int id : {1, 2}) {
        TableRow row = attributes;
        row["ZASSETDESCRIPTION"] = id + 20;
        writer.addAttributes(id + 4, id, row);
        writer.add(
            "ZASSETDESCRIPTION",
            {{"Z_PK", id + 20}, {"ZASSETATTRIBUTES", id + 4}, {"ZLONGDESCRIPTION", "caption"}});
        writer.addKeywordOf(id + 4, 30);
        writer.addFace(id, 40);
        writer.addMember(10, id, id);
    }
    writer.addAlbum(9, {{"ZKIND", 4000}});
    writer.addAlbum(10, {{"ZUUID", "A"},
                         {"ZTITLE", "album"},
                         {"ZPARENTFOLDER", 9},
                         {"ZCREATIONDATE", 8},
                         {"ZCUSTOMSORTKEY", 1},
                         {"ZCUSTOMSORTASCENDING", 1}});
    writer.addAlbum(11, {{"ZKIND", 1506}});
    return writer;
}

class MissingTables : public CatalogFixture, public testing::WithParamInterface<LibraryVersion>
{
protected:
    void expectFields(const Catalog &catalog, const Catalog &whole, const Lack &lack)
    {
        EXPECT_EQ(with(asset(whole, 1), lack.photo), asset(catalog, 1));
        EXPECT_EQ(with(asset(whole, 2), lack.video), asset(catalog, 2));
        EXPECT_EQ(with(album(whole, 10), lack.album), album(catalog, 10));
        EXPECT_TRUE(catalog.unread.empty());
    }
};

INSTANTIATE_TEST_SUITE_P(All, MissingTables, testing::ValuesIn(libraryVersions()),
                         [](const auto &info) { return info.param.name; });

TEST_P(MissingTables, AreNoneInALibraryThatHasAll)
{
    const Catalog catalog = catalogOf(wholeLibrary(GetParam()));
    EXPECT_EQ(std::vector<std::string>(), missing(catalog));
    for (const auto &[name, text] : asset(catalog, 1))
        EXPECT_TRUE(name == "duration" || (text != "null" && text != "false" && !text.empty()))
            << name;
    EXPECT_EQ("2 1", album(catalog, 10).at("assets"));
    EXPECT_EQ("9", album(catalog, 10).at("parent"));
}

TEST_P(MissingTables, LeaveNothingElseUnknown)
{
    const Catalog whole = catalogOf(wholeLibrary(GetParam()));
    for (const Lack &lack : lacks) {
        SCOPED_TRACE(testing::Message() << lack);
        LibraryTablesWriter writer = wholeLibrary(GetParam());
        const std::string table = named(lack.table, GetParam());
        if (lack.column)
            writer.leaveOut(table, named(lack.column, GetParam()));
        else
            writer.leaveOut(table);
        const Catalog catalog = catalogOf(writer);
        EXPECT_EQ(std::vector<std::string>{toldName(lack, GetParam())}, missing(catalog));
        expectFields(catalog, whole, lack);
    }
}

TEST_P(MissingTables, LeaveNoAlbumsWithoutTheirsOrTheirKinds)
{
    for (const char *column : {"", "Z_PK", "ZKIND"}) {
        LibraryTablesWriter writer = wholeLibrary(GetParam());
        if (*column)
            writer.leaveOut("ZGENERICALBUM", column);
        else
            writer.leaveOut("ZGENERICALBUM");
        const Catalog catalog = catalogOf(writer);
        EXPECT_TRUE(catalog.albums.empty());
        EXPECT_EQ(2U, catalog.assets.size());
        EXPECT_EQ("", asset(catalog, 1).at("albums"));
        EXPECT_EQ(
            std::vector<std::string>{std::string("ZGENERICALBUM") + (*column ? "." : "") + column},
            missing(catalog));
    }
}

TEST_P(MissingTables, AreNotPlacesOfImportsWhichNewSystemsDoNotHave)
{
    if (!GetParam().hasImportPlaces)
        return;
    LibraryTablesWriter writer = wholeLibrary(GetParam());
    writer.leaveOut(GetParam().assets, "Z_FOK_IMPORTSESSION");
    EXPECT_EQ(std::vector<std::string>(), missing(catalogOf(writer)));
}

TEST_P(MissingTables, LeaveNoLibraryWithoutIdsOrKindsOfPhotos)
{
    for (const char *column : {"Z_PK", "ZKIND"}) {
        LibraryTablesWriter writer = wholeLibrary(GetParam());
        writer.leaveOut(GetParam().assets, column);
        try {
            catalogOf(writer);
            ADD_FAILURE() << "read without " << column;
        } catch (const Error &error) {
            EXPECT_EQ(Error::Damaged, error.kind());
        }
    }
}

TEST_P(MissingTables, MayBeAllButThatOfPhotos)
{
    LibraryTablesWriter writer(GetParam());
    writer.addPhoto(1);
    for (const std::string &table :
         {std::string("ZADDITIONALASSETATTRIBUTES"), std::string("ZASSETDESCRIPTION"),
          std::string("ZKEYWORD"), std::string("ZPERSON"), std::string("ZDETECTEDFACE"),
          std::string("ZGENERICALBUM"), std::string("Z_PRIMARYKEY"), GetParam().joinTable(),
          GetParam().keywordTable()})
        writer.leaveOut(table);
    const Catalog catalog = catalogOf(writer);
    EXPECT_EQ(1U, catalog.assets.size());
    EXPECT_EQ((std::vector<std::string>{"Z_PRIMARYKEY", "ZADDITIONALASSETATTRIBUTES",
                                        "ZASSETDESCRIPTION", "Z_nKEYWORDS", "ZKEYWORD", "ZPERSON",
                                        "ZDETECTEDFACE", "ZGENERICALBUM", "Z_nASSETS"}),
              missing(catalog));
}

class NoLibrary : public CatalogFixture
{
protected:
    Error::Kind failureOf(const QByteArray &database)
    {
        try {
            catalogOf(database);
        } catch (const Error &error) {
            EXPECT_NE(std::string(), error.what());
            return error.kind();
        }
        ADD_FAILURE() << "a catalog was read";
        return Error::Failed;
    }
};

TEST_F(NoLibrary, IsAFileThatIsNoDatabase)
{
    EXPECT_EQ(Error::Damaged,
              failureOf("this is no database, but a text that is longer than a header "
                        "of one, which has a hundred bytes in all."));
}

TEST_F(NoLibrary, IsAnEmptyFile)
{
    EXPECT_EQ(Error::Damaged, failureOf(QByteArray()));
}

TEST_F(NoLibrary, IsADatabaseWithoutATableOfPhotos)
{
    LibraryTablesWriter writer(libraryVersion("Of18"));
    writer.leaveOut("ZASSET");
    EXPECT_EQ(Error::Damaged, failureOf(writer.bytes()));
}

TEST_F(NoLibrary, IsADatabaseWhoseSchemaIsDamaged)
{
    LibraryTablesWriter writer(libraryVersion("Of18"));
    QByteArray bytes = writer.bytes();
    const int behindTheHeader = 100;
    bytes.replace(behindTheHeader, 200, QByteArray(200, '\xee'));
    EXPECT_EQ(Error::Damaged, failureOf(bytes));
}

TEST_F(NoLibrary, IsADatabaseWhosePhotosAreAView)
{
    LibraryTablesWriter writer(libraryVersion("Of18"));
    writer.leaveOut("ZASSET");
    writer.addTable("REAL", {"Z_PK", "ZKIND"});
    writer.addSql("CREATE VIEW ZASSET AS SELECT * FROM REAL");
    EXPECT_EQ(Error::Damaged, failureOf(writer.bytes()));
}

} // namespace
