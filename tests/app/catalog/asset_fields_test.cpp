// What one stored value makes of a field, in the libraries of all years.

#include "support/catalog_fixture.h"
#include "support/row_name.h"

namespace {

const QByteArray uuidBytes = QByteArray::fromHex("0123456789abcdef0123456789abcdef");
const char uuidText[] = "01234567-89AB-CDEF-0123-456789ABCDEF";

// Columns of the asset's row, and the fields that they make.
struct AssetCase {
    const char *name;
    TableRow row;
    FieldTexts fields;
};

class AssetField : public CatalogFixture,
                   public testing::WithParamInterface<std::tuple<LibraryVersion, AssetCase>>
{
};

std::string caseName(const testing::TestParamInfo<std::tuple<LibraryVersion, AssetCase>> &info)
{
    return std::get<0>(info.param).name + std::get<1>(info.param).name;
}

TEST_P(AssetField, IsMadeOfItsColumns)
{
    const auto &[version, tested] = GetParam();
    TableRow row = tested.row;
    for (auto &[column, name] :
         {std::pair{"EDITED", version.edited}, {"RENDERED", version.rendered}}) {
        if (auto found = row.extract(column)) {
            found.key() = name;
            row.insert(std::move(found));
        }
    }
    LibraryTablesWriter writer(version);
    writer.addPhoto(1, row);
    const Catalog catalog = catalogOf(writer);
    ASSERT_EQ(1U, catalog.assets.size());
    const FieldTexts fields = asset(catalog, 1);
    for (const auto &[name, text] : tested.fields)
        EXPECT_EQ(text, fields.at(name)) << name;
    EXPECT_TRUE(catalog.missing.empty()) << catalog.missing[0].constData();
    EXPECT_TRUE(catalog.unread.empty()) << catalog.unread[0].cause.constData();
}

const double infinity = std::numeric_limits<double>::infinity();

const AssetCase assetCases[] = {
    {"KindOfAPhoto", {{"ZKIND", 0}}, {{"id", "1"}, {"kind", "photo"}}},
    {"KindOfAVideo", {{"ZKIND", 1}}, {{"kind", "video"}}},

    {"UuidAsAText",
     {{"ZUUID", "A1DD1F98-2ECD-431F-9AC9-5AFEFE2D3A5C"}},
     {{"uuid", "A1DD1F98-2ECD-431F-9AC9-5AFEFE2D3A5C"}}},
    {"UuidInLowerCase",
     {{"ZUUID", "a1dd1f98-2ecd-431f-9ac9-5afefe2d3a5c"}},
     {{"uuid", "A1DD1F98-2ECD-431F-9AC9-5AFEFE2D3A5C"}}},
    {"UuidAsSixteenBytes", {{"ZUUID", uuidBytes}}, {{"uuid", uuidText}}},
    {"UuidAsABlobOfItsText", {{"ZUUID", QByteArray("a1dd1f98-2ecd")}}, {{"uuid", "A1DD1F98-2ECD"}}},
    {"UuidOfSixteenLetters", {{"ZUUID", "abcdefghijklmnop"}}, {{"uuid", "ABCDEFGHIJKLMNOP"}}},
    {"UuidThatIsNoAscii", {{"ZUUID", "\xc3\xa9z"}}, {{"uuid", "\xc3\xa9Z"}}},
    {"UuidThatIsEmpty", {{"ZUUID", ""}}, {{"uuid", "null"}}},
    {"UuidThatIsNull", {}, {{"uuid", "null"}}},

    {"NameAndFolder",
     {{"ZDIRECTORY", "DCIM/100APPLE"}, {"ZFILENAME", "IMG_1.JPG"}},
     {{"directory", "DCIM/100APPLE"},
      {"fileName", "IMG_1.JPG"},
      {"path", "DCIM/100APPLE/IMG_1.JPG"}}},
    {"NameWithoutAFolder",
     {{"ZFILENAME", "IMG_1.JPG"}},
     {{"directory", "null"}, {"fileName", "IMG_1.JPG"}, {"path", "IMG_1.JPG"}}},
    {"NameInAnEmptyFolder",
     {{"ZDIRECTORY", ""}, {"ZFILENAME", "IMG_1.JPG"}},
     {{"directory", "null"}, {"path", "IMG_1.JPG"}}},
    {"FolderWithoutAName",
     {{"ZDIRECTORY", "DCIM"}},
     {{"directory", "DCIM"}, {"fileName", "null"}, {"path", "null"}}},
    {"NameInUtf8", {{"ZFILENAME", "Fr\xc3\xadtest.jpg"}}, {{"fileName", "Fr\xc3\xadtest.jpg"}}},
    {"NameThatIsNoUtf8", {{"ZFILENAME", "\xff\xfe.jpg"}}, {{"fileName", "\xff\xfe.jpg"}}},
    {"NameWithAZero",
     {{"ZFILENAME", std::string("a\0b", 3)}},
     {{"fileName", std::string("a\0b", 3)}}},
    {"NameAsABlob", {{"ZFILENAME", QByteArray("IMG_1.JPG")}}, {{"fileName", "IMG_1.JPG"}}},

    {"DatesAsRealNumbers",
     {{"ZDATECREATED", 559856399.008}, {"ZMODIFICATIONDATE", 1.5}, {"ZADDEDDATE", -2.25}},
     {{"taken", numberText(559856399.008)}, {"modified", "1.5"}, {"added", "-2.25"}}},
    {"DatesAsIntegers",
     {{"ZDATECREATED", 559856399}, {"ZMODIFICATIONDATE", 0}, {"ZADDEDDATE", -1}},
     {{"taken", "559856399"}, {"modified", "0"}, {"added", "-1"}}},
    {"DatesThatAreNull", {}, {{"taken", "null"}, {"modified", "null"}, {"added", "null"}}},
    {"DatesThatAreTexts",
     {{"ZDATECREATED", "5"}, {"ZMODIFICATIONDATE", QByteArray("6")}},
     {{"taken", "null"}, {"modified", "null"}}},
    {"DatesWithoutEnd",
     {{"ZDATECREATED", infinity}, {"ZADDEDDATE", -infinity}},
     {{"taken", "null"}, {"added", "null"}}},
    {"DateFarBeyondTheCalendar",
     {{"ZDATECREATED", 123456789012345.0}},
     {{"taken", "123456789012345"}}},

    {"InTheTrash",
     {{"ZTRASHEDSTATE", 1}, {"ZTRASHEDDATE", 7.5}},
     {{"inTrash", "true"}, {"trashed", "7.5"}}},
    {"InTheTrashByAnotherNumber",
     {{"ZTRASHEDSTATE", 2}, {"ZTRASHEDDATE", 7.5}},
     {{"inTrash", "true"}, {"trashed", "7.5"}}},
    {"InTheTrashWithoutADate", {{"ZTRASHEDSTATE", 1}}, {{"inTrash", "true"}, {"trashed", "null"}}},
    {"NotInTheTrash",
     {{"ZTRASHEDSTATE", 0}, {"ZTRASHEDDATE", 7.5}},
     {{"inTrash", "false"}, {"trashed", "null"}}},
    {"TrashUnknown",
     {{"ZTRASHEDSTATE", {}}, {"ZTRASHEDDATE", 7.5}},
     {{"inTrash", "false"}, {"trashed", "null"}}},

    {"Size",
     {{"ZWIDTH", 4032}, {"ZHEIGHT", 3024}, {"ZORIENTATION", 6}},
     {{"width", "4032"}, {"height", "3024"}, {"orientation", "6"}}},
    {"SizeAsRealNumbers",
     {{"ZWIDTH", 4032.0}, {"ZHEIGHT", 0.5}, {"ZORIENTATION", 1e30}},
     {{"width", "4032"}, {"height", "null"}, {"orientation", "null"}}},
    {"SizeThatIsNull", {}, {{"width", "null"}, {"height", "null"}, {"orientation", "null"}}},
    {"SizeBeyondAnInt",
     {{"ZWIDTH", qint64(1) << 40}, {"ZHEIGHT", std::numeric_limits<qint64>::min()}},
     {{"width", "1099511627776"}, {"height", "-9223372036854775808"}}},
    {"DurationOfAPhoto", {{"ZDURATION", 2.5}}, {{"duration", "null"}}},
    {"DurationOfAVideo",
     {{"ZKIND", 1}, {"ZDURATION", 2.863333333333333}},
     {{"duration", numberText(2.863333333333333)}}},
    {"DurationOfWholeSeconds", {{"ZKIND", 1}, {"ZDURATION", 3}}, {{"duration", "3"}}},
    {"DurationThatIsNull", {{"ZKIND", 1}}, {{"duration", "null"}}},
    {"DurationWithoutEnd", {{"ZKIND", 1}, {"ZDURATION", infinity}}, {{"duration", "null"}}},

    {"Favorite", {{"ZFAVORITE", 1}, {"ZHIDDEN", 0}}, {{"favorite", "true"}, {"hidden", "false"}}},
    {"Hidden", {{"ZFAVORITE", 0}, {"ZHIDDEN", 1}}, {{"favorite", "false"}, {"hidden", "true"}}},
    {"FlagsThatAreNull",
     {},
     {{"favorite", "false"}, {"hidden", "false"}, {"edited", "false"}, {"isInCloud", "false"}}},
    {"FlagsThatAreTexts", {{"ZFAVORITE", "yes"}}, {{"favorite", "false"}}},
    {"Edited", {{"EDITED", 1}}, {{"edited", "true"}}},
    {"EditedByAnotherNumber", {{"EDITED", 3}}, {{"edited", "true"}}},
    {"NotEdited", {{"EDITED", 0}}, {{"edited", "false"}}},
    {"InTheCloud", {{"ZCLOUDLOCALSTATE", 1}}, {{"isInCloud", "true"}}},
    {"NotInTheCloud", {{"ZCLOUDLOCALSTATE", 0}}, {{"isInCloud", "false"}}},
    {"InAnUnknownStateOfTheCloud", {{"ZCLOUDLOCALSTATE", 2}}, {{"isInCloud", "false"}}},

    {"PlainPhoto", {{"ZKINDSUBTYPE", 0}}, {{"types", ""}}},
    {"Live", {{"ZKINDSUBTYPE", 2}}, {{"types", "live"}}},
    {"Panorama", {{"ZKINDSUBTYPE", 1}}, {{"types", "panorama"}}},
    {"Screenshot", {{"ZKINDSUBTYPE", 10}}, {{"types", "screenshot"}}},
    {"PhotoOfAVideosSubtype", {{"ZKINDSUBTYPE", 101}}, {{"types", ""}}},
    {"PlainVideo", {{"ZKIND", 1}, {"ZKINDSUBTYPE", 0}}, {{"types", ""}}},
    {"SharedVideo", {{"ZKIND", 1}, {"ZKINDSUBTYPE", 100}}, {{"types", ""}}},
    {"SlowMotion", {{"ZKIND", 1}, {"ZKINDSUBTYPE", 101}}, {{"types", "slowMotion"}}},
    {"TimeLapse", {{"ZKIND", 1}, {"ZKINDSUBTYPE", 102}}, {{"types", "timeLapse"}}},
    {"ScreenRecording", {{"ZKIND", 1}, {"ZKINDSUBTYPE", 103}}, {{"types", "screenRecording"}}},
    {"VideoOfAPhotosSubtype", {{"ZKIND", 1}, {"ZKINDSUBTYPE", 2}}, {{"types", ""}}},
    {"PanoramaFilm", {{"ZKIND", 1}, {"ZKINDSUBTYPE", 1}}, {{"types", "panorama"}}},
    {"ScreenshotFilm", {{"ZKIND", 1}, {"ZKINDSUBTYPE", 10}}, {{"types", "screenshot"}}},
    {"SubtypeThatIsNull", {}, {{"types", ""}}},

    {"PickedOfABurst",
     {{"ZAVALANCHEUUID", "d4e4B3D1"}, {"ZVISIBILITYSTATE", 0}},
     {{"types", "burst"}, {"burst", "d4e4B3D1"}, {"burstPicked", "true"}}},
    {"OthersOfABurst",
     {{"ZAVALANCHEUUID", "D4E4B3D1"}, {"ZVISIBILITYSTATE", 2}},
     {{"types", "burst"}, {"burst", "D4E4B3D1"}, {"burstPicked", "false"}}},
    {"BurstThatIsNotSaidToBeShown",
     {{"ZAVALANCHEUUID", "D4E4B3D1"}},
     {{"types", "burst"}, {"burst", "D4E4B3D1"}, {"burstPicked", "false"}}},
    {"BurstAsSixteenBytes",
     {{"ZAVALANCHEUUID", uuidBytes}, {"ZVISIBILITYSTATE", 0}},
     {{"types", "burst"}, {"burst", uuidText}, {"burstPicked", "true"}}},
    {"NoBurst",
     {{"ZAVALANCHEUUID", ""}, {"ZVISIBILITYSTATE", 0}},
     {{"types", ""}, {"burst", "null"}, {"burstPicked", "null"}}},
    {"LiveInABurst", {{"ZAVALANCHEUUID", "D4"}, {"ZKINDSUBTYPE", 2}}, {{"types", "burst live"}}},

    {"Place", {{"ZLATITUDE", 46.5}, {"ZLONGITUDE", -7}}, {{"location", "46.5 -7"}}},
    {"PlaceAtTheOrigin", {{"ZLATITUDE", 0.0}, {"ZLONGITUDE", 0.0}}, {{"location", "0 0"}}},
    {"NoPlace", {{"ZLATITUDE", -180.0}, {"ZLONGITUDE", -180.0}}, {{"location", "null"}}},
    {"NoPlaceInIntegers", {{"ZLATITUDE", -180}, {"ZLONGITUDE", -180}}, {{"location", "null"}}},
    {"PlaceAtTheDateLine",
     {{"ZLATITUDE", -17.0}, {"ZLONGITUDE", -180.0}},
     {{"location", "-17 -180"}}},
    {"HalfAPlace", {{"ZLATITUDE", 46.5}}, {{"location", "null"}}},
    {"PlaceInTexts", {{"ZLATITUDE", "46.5"}, {"ZLONGITUDE", 7.0}}, {{"location", "null"}}},
    {"PlaceWithoutEnd", {{"ZLATITUDE", infinity}, {"ZLONGITUDE", 7.0}}, {{"location", "null"}}},

    {"FromTheDevice", {{"ZSAVEDASSETTYPE", 3}}, {{"source", "local"}}},
    {"FromASharedAlbum", {{"ZSAVEDASSETTYPE", 4}}, {{"source", "shared"}}},
    {"FromTheCloud", {{"ZSAVEDASSETTYPE", 6}}, {{"source", "cloud"}}},
    {"Referenced", {{"ZSAVEDASSETTYPE", 10}}, {{"source", "referenced"}}},
    {"FromMessages", {{"ZSAVEDASSETTYPE", 12}}, {{"source", "messages"}}},
    {"FromElsewhere", {{"ZSAVEDASSETTYPE", 5}}, {{"source", "other"}}},
    {"FromNowhere", {{"ZSAVEDASSETTYPE", {}}}, {{"source", "other"}}},
};

INSTANTIATE_TEST_SUITE_P(All, AssetField,
                         testing::Combine(testing::ValuesIn(libraryVersions()),
                                          testing::ValuesIn(assetCases)),
                         caseName);

class AssetFields : public CatalogFixture
{
};

TEST_F(AssetFields, TellPanoramasByWhatTheCameraDidUntil2019)
{
    LibraryTablesWriter writer(libraryVersion("Of13"));
    writer.addPhoto(1, {{"ZCUSTOMRENDEREDVALUE", 6}});
    writer.addPhoto(2, {{"ZCUSTOMRENDEREDVALUE", 3}});
    writer.addVideo(3, {{"ZCUSTOMRENDEREDVALUE", 6}});
    const Catalog catalog = catalogOf(writer);
    EXPECT_EQ("panorama", asset(catalog, 1).at("types"));
    EXPECT_EQ("", asset(catalog, 2).at("types"));
    EXPECT_EQ("panorama", asset(catalog, 3).at("types"));
}

TEST_F(AssetFields, TellAnEditByEitherColumn)
{
    LibraryTablesWriter writer(libraryVersion("Of16"));
    writer.addTable("ZASSET", {"Z_PK", "ZKIND", "ZHASADJUSTMENTS", "ZADJUSTMENTSSTATE"});
    writer.addPhoto(1, {{"ZHASADJUSTMENTS", 1}, {"ZADJUSTMENTSSTATE", 0}});
    writer.addPhoto(2, {{"ZHASADJUSTMENTS", 0}, {"ZADJUSTMENTSSTATE", 2}});
    writer.addPhoto(3, {{"ZHASADJUSTMENTS", 0}, {"ZADJUSTMENTSSTATE", {}}});
    const Catalog catalog = catalogOf(writer);
    EXPECT_EQ("true", asset(catalog, 1).at("edited"));
    EXPECT_EQ("true", asset(catalog, 2).at("edited"));
    EXPECT_EQ("false", asset(catalog, 3).at("edited"));
}

TEST_F(AssetFields, AreThoseOfPhotosAndVideosOnlyByTheirIds)
{
    LibraryTablesWriter writer(libraryVersion("Of18"));
    writer.addPhoto(9);
    writer.addPhoto(4, {{"ZKIND", 2}});
    writer.addPhoto(5, {{"ZKIND", {}}});
    writer.addPhoto(6, {{"ZKIND", "0"}});
    writer.addVideo(2);
    writer.addPhoto(7, {{"ZTRASHEDSTATE", 1}});
    writer.addPhoto(8, {{"ZSAVEDASSETTYPE", 4}});
    std::vector<qint64> ids;
    for (const Asset &asset : catalogOf(writer).assets)
        ids.push_back(asset.id);
    EXPECT_EQ((std::vector<qint64>{2, 7, 8, 9}), ids);
}

TEST_F(AssetFields, HoldIdsOfAllSixtyFourBits)
{
    LibraryTablesWriter writer(libraryVersion("Of18"));
    for (const qint64 id :
         {std::numeric_limits<qint64>::min(), qint64(-1), std::numeric_limits<qint64>::max() - 1,
          std::numeric_limits<qint64>::max()}) {
        writer.addPhoto(0, {{"Z_PK", id}});
        writer.addAttributes(0, 0, {{"Z_PK", id}, {"ZASSET", id}, {"ZTITLE", std::to_string(id)}});
    }
    const Catalog catalog = catalogOf(writer);
    ASSERT_EQ(4U, catalog.assets.size());
    for (const Asset &asset : catalog.assets)
        EXPECT_EQ(QByteArray::number(asset.id), asset.title);
}

TEST_F(AssetFields, OfADatabaseInUtf16AreInUtf8)
{
    LibraryTablesWriter writer(libraryVersion("Of18"));
    writer.useUtf16();
    writer.addPhoto(1, {{"ZFILENAME", "Fr\xc3\xadtest.jpg"}, {"ZUUID", "ab"}});
    const Catalog catalog = catalogOf(writer);
    EXPECT_EQ("Fr\xc3\xadtest.jpg", asset(catalog, 1).at("fileName"));
    EXPECT_EQ("AB", asset(catalog, 1).at("uuid"));
}

TEST_F(AssetFields, OfOneFolderShareItsName)
{
    LibraryTablesWriter writer(libraryVersion("Of18"));
    writer.addPhoto(1, {{"ZDIRECTORY", "DCIM/100APPLE"}});
    writer.addPhoto(2, {{"ZDIRECTORY", "DCIM/100APPLE"}});
    writer.addPhoto(3, {{"ZDIRECTORY", "DCIM/101APPLE"}});
    const Catalog catalog = catalogOf(writer);
    EXPECT_EQ(catalog.assets[0].directory.constData(), catalog.assets[1].directory.constData());
    EXPECT_EQ("DCIM/101APPLE", asset(catalog, 3).at("directory"));
}

// The rows of the additional attributes and of descriptions, each of the asset 1.
struct AttributesCase {
    const char *name;
    TableRow row;
    FieldTexts fields;
};

class AttributesField
    : public CatalogFixture,
      public testing::WithParamInterface<std::tuple<LibraryVersion, AttributesCase>>
{
};

TEST_P(AttributesField, IsMadeOfItsColumn)
{
    const auto &[version, tested] = GetParam();
    LibraryTablesWriter writer(version);
    writer.addPhoto(1);
    writer.addAttributes(5, 1, tested.row);
    const FieldTexts fields = asset(catalogOf(writer), 1);
    for (const auto &[name, text] : tested.fields)
        EXPECT_EQ(text, fields.at(name)) << name;
}

const AttributesCase attributesCases[] = {
    {"OriginalName", {{"ZORIGINALFILENAME", "Pumpkins.jpg"}}, {{"originalName", "Pumpkins.jpg"}}},
    {"OriginalNameThatIsEmpty", {{"ZORIGINALFILENAME", ""}}, {{"originalName", "null"}}},
    {"OriginalNameThatIsNull", {}, {{"originalName", "null"}}},
    {"Title", {{"ZTITLE", "Pumpkin heads"}}, {{"title", "Pumpkin heads"}}},
    {"TitleThatIsEmpty", {{"ZTITLE", ""}}, {{"title", "null"}}},
    {"Size", {{"ZORIGINALFILESIZE", 5000000000}}, {{"size", "5000000000"}}},
    {"SizeThatIsNull", {}, {{"size", "null"}}},
    {"OffsetInTheWest", {{"ZTIMEZONEOFFSET", -14400}}, {{"utcOffset", "-240"}}},
    {"OffsetOfHalfAnHour", {{"ZTIMEZONEOFFSET", 34200}}, {{"utcOffset", "570"}}},
    {"OffsetOfNothing", {{"ZTIMEZONEOFFSET", 0}}, {{"utcOffset", "0"}}},
    {"OffsetInReal", {{"ZTIMEZONEOFFSET", 3600.0}}, {{"utcOffset", "60"}}},
    {"OffsetThatIsNull", {}, {{"utcOffset", "null"}}},
    {"OffsetOfNoWholeMinute", {{"ZTIMEZONEOFFSET", 3601}}, {{"utcOffset", "null"}}},
    {"OffsetOfAlmostADay", {{"ZTIMEZONEOFFSET", 86340}}, {{"utcOffset", "1439"}}},
    {"OffsetOfADay", {{"ZTIMEZONEOFFSET", 86400}}, {{"utcOffset", "null"}}},
    {"OffsetOfAlmostADayInTheWest", {{"ZTIMEZONEOFFSET", -86340}}, {{"utcOffset", "-1439"}}},
    {"OffsetOfADayInTheWest", {{"ZTIMEZONEOFFSET", -86400}}, {{"utcOffset", "null"}}},
    {"OffsetAsAText", {{"ZTIMEZONEOFFSET", "3600"}}, {{"utcOffset", "null"}}},
};

INSTANTIATE_TEST_SUITE_P(All, AttributesField,
                         testing::Combine(testing::ValuesIn(libraryVersions()),
                                          testing::ValuesIn(attributesCases)),
                         [](const auto &info) {
                             return std::get<0>(info.param).name + std::get<1>(info.param).name;
                         });

class Attributes : public CatalogFixture
{
};

TEST_F(Attributes, AreThoseThatNameTheAsset)
{
    LibraryTablesWriter writer(libraryVersion("Of18"));
    writer.addPhoto(1);
    writer.addPhoto(2);
    writer.addAttributes(1, 2, {{"ZTITLE", "second"}});
    writer.addAttributes(2, 1, {{"ZTITLE", "first"}});
    writer.addAttributes(3, 77, {{"ZTITLE", "nobody's"}});
    const Catalog catalog = catalogOf(writer);
    EXPECT_EQ("first", asset(catalog, 1).at("title"));
    EXPECT_EQ("second", asset(catalog, 2).at("title"));
}

TEST_F(Attributes, OfSeveralAreTheFirst)
{
    LibraryTablesWriter writer(libraryVersion("Of18"));
    writer.addPhoto(1);
    writer.addAttributes(6, 1, {{"ZTITLE", "later"}, {"ZORIGINALFILESIZE", 6}});
    writer.addAttributes(5, 1, {{"ZTITLE", "earlier"}});
    const FieldTexts fields = asset(catalogOf(writer), 1);
    EXPECT_EQ("earlier", fields.at("title"));
    EXPECT_EQ("null", fields.at("size"));
}

TEST_F(Attributes, OfSeveralAreThoseThatTheAssetNames)
{
    LibraryTablesWriter writer(libraryVersion("Of18"));
    writer.addPhoto(1, {{"ZADDITIONALATTRIBUTES", 6}});
    for (const int id : {5, 6, 7})
        writer.addAttributes(id, 1, {{"ZTITLE", std::to_string(id)}});
    EXPECT_EQ("6", asset(catalogOf(writer), 1).at("title"));
}

TEST_F(Attributes, ThatNameAnotherAssetAreNotTakenForTheAssetsOwn)
{
    LibraryTablesWriter writer(libraryVersion("Of18"));
    writer.addPhoto(1, {{"ZADDITIONALATTRIBUTES", 6}});
    writer.addPhoto(2);
    writer.addAttributes(5, 1, {{"ZTITLE", "own"}});
    writer.addAttributes(6, 2, {{"ZTITLE", "other"}});
    EXPECT_EQ("own", asset(catalogOf(writer), 1).at("title"));
}

class Captions : public CatalogFixture
{
protected:
    // A photo whose attributes have the id 5.
    Captions() : writer(libraryVersion("Of18")) { writer.addPhoto(1); }

    void describe(int id, const SqlValue &attributes, const SqlValue &text)
    {
        writer.add("ZASSETDESCRIPTION",
                   {{"Z_PK", id}, {"ZASSETATTRIBUTES", attributes}, {"ZLONGDESCRIPTION", text}});
    }

    std::string caption() { return asset(catalogOf(writer), 1).at("caption"); }

    LibraryTablesWriter writer;
};

TEST_F(Captions, AreThoseThatTheAttributesName)
{
    writer.addAttributes(5, 1, {{"ZASSETDESCRIPTION", 8}});
    describe(7, 5, "other");
    describe(8, 6, "named");
    EXPECT_EQ("named", caption());
}

TEST_F(Captions, AreThoseThatNameTheAttributesWhereTheseNameNone)
{
    writer.addAttributes(5, 1);
    describe(7, 5, "first");
    describe(8, 5, "second");
    EXPECT_EQ("first", caption());
}

TEST_F(Captions, AreThoseThatNameTheAttributesWhereTheNamedOneIsGone)
{
    writer.addAttributes(5, 1, {{"ZASSETDESCRIPTION", 9}});
    describe(7, 5, "there");
    EXPECT_EQ("there", caption());
}

TEST_F(Captions, AreThoseThatNameTheAttributesWhereTheseCannotNameAny)
{
    writer.leaveOut("ZADDITIONALASSETATTRIBUTES", "ZASSETDESCRIPTION");
    writer.addAttributes(5, 1);
    describe(7, 5, "there");
    EXPECT_EQ("there", caption());
}

TEST_F(Captions, ThatAreEmptyAreNone)
{
    writer.addAttributes(5, 1, {{"ZASSETDESCRIPTION", 7}});
    describe(7, 5, "");
    EXPECT_EQ("null", caption());
}

} // namespace
