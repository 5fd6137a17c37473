#include "support/catalog_fixture.h"

namespace {

class Keywords : public CatalogFixture, public testing::WithParamInterface<LibraryVersion>
{
};

INSTANTIATE_TEST_SUITE_P(All, Keywords, testing::ValuesIn(libraryVersions()),
                         [](const auto &info) { return info.param.name; });

TEST_P(Keywords, AreInOrderByCodePointEachOnce)
{
    LibraryTablesWriter writer(GetParam());
    writer.addPhoto(1);
    writer.addPhoto(2);
    writer.addAttributes(5, 2);
    writer.addAttributes(6, 1);
    const SqlValue titles[] = {"wedding", "Kids", "\xf0\x9f\x98\x80", "\xef\xbc\xa1", "", {},
                               "Kids",    "kids"};
    int id = 20;
    for (const SqlValue &title : titles) {
        writer.addKeyword(++id, title);
        writer.addKeywordOf(6, id);
    }
    writer.addKeywordOf(6, 21);
    writer.addKeywordOf(5, 28);
    writer.addKeywordOf(5, 99);
    writer.addKeywordOf(77, 21);
    const Catalog catalog = catalogOf(writer);
    EXPECT_EQ("Kids|kids|wedding|\xef\xbc\xa1|\xf0\x9f\x98\x80", asset(catalog, 1).at("keywords"));
    EXPECT_EQ("kids", asset(catalog, 2).at("keywords"));
}

TEST_P(Keywords, ShareTheirTexts)
{
    LibraryTablesWriter writer(GetParam());
    writer.addKeyword(7, "keyword");
    for (const int id : {1, 2}) {
        writer.addPhoto(id);
        writer.addAttributes(id, id);
        writer.addKeywordOf(id, 7);
    }
    const Catalog catalog = catalogOf(writer);
    EXPECT_EQ(catalog.assets[0].keywords.at(0).constData(),
              catalog.assets[1].keywords.at(0).constData());
}

class People : public CatalogFixture, public testing::WithParamInterface<LibraryVersion>
{
};

INSTANTIATE_TEST_SUITE_P(All, People, testing::ValuesIn(libraryVersions()),
                         [](const auto &info) { return info.param.name; });

TEST_P(People, OfAPhotoAreTheirFullNamesInOrderEachOnce)
{
    LibraryTablesWriter writer(GetParam());
    writer.addPhoto(1);
    writer.addPhoto(2);
    writer.addPerson(3, "Suzy");
    writer.addPerson(4, "Katie");
    writer.addPerson(5, "Suzy");
    writer.addPerson(6, "", {{"ZDISPLAYNAME", "nobody"}});
    writer.addPerson(7, {}, {{"ZDISPLAYNAME", "nobody"}});
    for (const int person : {3, 5, 4, 3, 6, 7, 99})
        writer.addFace(1, person);
    writer.addFace(2, {});
    writer.addFace({}, 3);
    writer.addFace(88, 3);
    const Catalog catalog = catalogOf(writer);
    EXPECT_EQ("Katie|Suzy", asset(catalog, 1).at("people"));
    EXPECT_EQ("", asset(catalog, 2).at("people"));
}

TEST_P(People, AreThoseWithANameAndTheirPhotos)
{
    LibraryTablesWriter writer(GetParam());
    for (const int id : {1, 2, 3})
        writer.addPhoto(id);
    writer.addPerson(9, "Maria", {{"ZPERSONUUID", "ab/1"}});
    writer.addPerson(4, "Katie");
    writer.addPerson(5, "");
    for (const int asset : {3, 1, 3})
        writer.addFace(asset, 9);
    writer.addFace(2, 5);
    const Catalog catalog = catalogOf(writer);
    ASSERT_EQ(2U, catalog.people.size());
    EXPECT_EQ(4, catalog.people[0].id);
    EXPECT_EQ("Katie", catalog.people[0].name);
    EXPECT_TRUE(catalog.people[0].uuid.isNull());
    EXPECT_TRUE(catalog.people[0].assets.empty());
    EXPECT_EQ(9, catalog.people[1].id);
    EXPECT_EQ("ab/1", catalog.people[1].uuid);
    EXPECT_EQ((std::vector<qint64>{1, 3}), catalog.people[1].assets);
}

class Faces : public CatalogFixture
{
protected:
    // Who is seen when the columns of the faces have these names, one for each of two people.
    std::string seen(const std::vector<std::string> &columns)
    {
        LibraryTablesWriter writer(libraryVersion("Of18"));
        writer.leaveOut("ZDETECTEDFACE");
        writer.addTable("ZDETECTEDFACE", columns);
        writer.addPhoto(1);
        writer.addPerson(3, "newer");
        writer.addPerson(4, "older");
        writer.add("ZDETECTEDFACE",
                   {{"ZASSETFORFACE", 1}, {"ZPERSONFORFACE", 3}, {"ZASSET", 1}, {"ZPERSON", 4}});
        const Catalog catalog = catalogOf(writer);
        m_missing = missing(catalog);
        return asset(catalog, 1).at("people");
    }

    std::vector<std::string> m_missing;
};

TEST_F(Faces, AreReadByThePairOfColumnsThatIsComplete)
{
    EXPECT_EQ("newer", seen({"ZASSETFORFACE", "ZPERSONFORFACE"}));
    EXPECT_EQ("older", seen({"ZASSET", "ZPERSON"}));
    EXPECT_EQ("older", seen({"ZASSET", "ZPERSON", "ZASSETFORFACE"}));
    EXPECT_EQ("newer", seen({"ZPERSON", "ZPERSONFORFACE", "ZASSETFORFACE"}));
    EXPECT_EQ("newer", seen({"ZASSET", "ZPERSON", "ZASSETFORFACE", "ZPERSONFORFACE"}));
    EXPECT_EQ(std::vector<std::string>(), m_missing);
}

TEST_F(Faces, OfNoCompletePairAreToldAsMissing)
{
    EXPECT_EQ("", seen({"ZASSET", "ZPERSONFORFACE"}));
    EXPECT_EQ(std::vector<std::string>{"ZDETECTEDFACE.ZASSETFORFACE"}, m_missing);
    EXPECT_EQ("", seen({"ZASSET"}));
    EXPECT_EQ(std::vector<std::string>{"ZDETECTEDFACE.ZPERSON"}, m_missing);
    EXPECT_EQ("", seen({"Z_PK"}));
    EXPECT_EQ(
        (std::vector<std::string>{"ZDETECTEDFACE.ZASSETFORFACE", "ZDETECTEDFACE.ZPERSONFORFACE"}),
        m_missing);
}

} // namespace
