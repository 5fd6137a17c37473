// Databases that are damaged or made to harm, and readings that are given up.

#include "support/catalog_fixture.h"
#include "support/raw_pages.h"

#include "base/error.h"

namespace {

constexpr int pageSize = 512;
constexpr int assetCount = 300;

// A library whose tables take many pages each. The text of a row tells its table and id.
LibraryTablesWriter largeLibrary()
{
    const LibraryVersion &version = libraryVersion("Of18");
    LibraryTablesWriter writer(version);
    for (int id = 1; id <= assetCount; ++id) {
        const std::string number = std::to_string(1000 + id);
        writer.addPhoto(id, {{"ZFILENAME", "IMG_" + number + ".JPG"}});
        writer.addAttributes(id, id, {{"ZTITLE", "Title " + number}});
        writer.add(
            "ZASSETDESCRIPTION",
            {{"Z_PK", id}, {"ZASSETATTRIBUTES", id}, {"ZLONGDESCRIPTION", "Caption " + number}});
        writer.addKeyword(id, "Keyword " + number);
        writer.addKeywordOf(id, id);
        writer.addPerson(id, "Person " + number);
        writer.addFace(id, id);
        writer.addAlbum(id, {{"ZTITLE", "Album " + number}});
        writer.addMember(id, id, id);
    }
    return writer;
}

int fieldCount(const Catalog &catalog, const std::string &field)
{
    int count = 0;
    for (const Asset &asset : catalog.assets) {
        const std::string text = fieldsOf(asset).at(field);
        count += text != "null" && !text.empty() ? 1 : 0;
    }
    return count;
}

class DamagedTables : public CatalogFixture
{
protected:
    DamagedTables()
    {
        static const QByteArray sound = inPagesOf(pageSize, largeLibrary().bytes());
        m_sound = sound;
    }

    QByteArray withoutPage(int page) const
    {
        QByteArray damaged = m_sound;
        return damaged.replace((page - 1) * pageSize, pageSize, QByteArray(pageSize, '\0'));
    }

    QByteArray withoutPageOf(const char *text) const
    {
        const int at = m_sound.indexOf(text);
        EXPECT_GT(at, 0) << text;
        return withoutPage(at / pageSize + 1);
    }

    // The last child of the inner page at which a table begins.
    int lastPageOf(const char *name) const
    {
        const int root = RawPages(m_sound).root(name);
        const QByteArray header = m_sound.mid((root - 1) * pageSize, 12);
        EXPECT_EQ(5, header[0]) << name << " has one page only";
        return static_cast<unsigned char>(header[10]) << 8 | static_cast<unsigned char>(header[11]);
    }

    // Reads a database of which `table` is damaged, and expects of the other fields that they are
    // complete.
    Catalog damagedIn(const char *table, const QByteArray &database, const std::string &field)
    {
        Catalog catalog = catalogOf(database);
        EXPECT_EQ(std::vector<std::string>{table}, unread(catalog));
        for (const UnreadTable &unread : catalog.unread)
            EXPECT_EQ("database disk image is malformed", unread.cause);
        for (const char *name : {"title", "caption", "keywords", "people", "albums"}) {
            if (field != name) {
                EXPECT_EQ(static_cast<int>(catalog.assets.size()), fieldCount(catalog, name))
                    << name;
            }
        }
        return catalog;
    }

    void expectPart(int count)
    {
        EXPECT_GT(count, 0);
        EXPECT_LT(count, assetCount);
    }

    QByteArray m_sound;
};

TEST_F(DamagedTables, AreNoneInASoundDatabase)
{
    const Catalog catalog = catalogOf(m_sound);
    EXPECT_TRUE(catalog.unread.empty());
    EXPECT_EQ(std::size_t(assetCount), catalog.assets.size());
    for (const char *name : {"title", "caption", "keywords", "people", "albums"})
        EXPECT_EQ(assetCount, fieldCount(catalog, name)) << name;
}

TEST_F(DamagedTables, GiveThePhotosBeforeTheDamage)
{
    const Catalog catalog = damagedIn("ZASSET", withoutPageOf("IMG_1200.JPG"), "");
    expectPart(static_cast<int>(catalog.assets.size()));
    EXPECT_GT(catalog.assets.size(), 100U);
    EXPECT_EQ("IMG_1100.JPG", asset(catalog, 100).at("fileName"));
}

TEST_F(DamagedTables, GiveTheAttributesBeforeTheDamage)
{
    const QByteArray damaged = withoutPageOf("Title 1200");
    const Catalog catalog = catalogOf(damaged);
    EXPECT_EQ(std::vector<std::string>{"ZADDITIONALASSETATTRIBUTES"}, unread(catalog));
    EXPECT_EQ(std::size_t(assetCount), catalog.assets.size());
    expectPart(fieldCount(catalog, "title"));
    EXPECT_EQ("Title 1100", asset(catalog, 100).at("title"));
}

TEST_F(DamagedTables, GiveTheCaptionsBeforeTheDamage)
{
    const Catalog catalog =
        damagedIn("ZASSETDESCRIPTION", withoutPageOf("Caption 1200"), "caption");
    expectPart(fieldCount(catalog, "caption"));
}

TEST_F(DamagedTables, GiveTheKeywordsBeforeTheDamage)
{
    expectPart(
        fieldCount(damagedIn("ZKEYWORD", withoutPageOf("Keyword 1200"), "keywords"), "keywords"));
    expectPart(fieldCount(
        damagedIn("Z_1KEYWORDS", withoutPage(lastPageOf("Z_1KEYWORDS")), "keywords"), "keywords"));
}

TEST_F(DamagedTables, GiveThePeopleBeforeTheDamage)
{
    const Catalog catalog = damagedIn("ZPERSON", withoutPageOf("Person 1200"), "people");
    expectPart(fieldCount(catalog, "people"));
    expectPart(static_cast<int>(catalog.people.size()));
    expectPart(fieldCount(
        damagedIn("ZDETECTEDFACE", withoutPage(lastPageOf("ZDETECTEDFACE")), "people"), "people"));
}

TEST_F(DamagedTables, GiveTheAlbumsBeforeTheDamage)
{
    const Catalog catalog = damagedIn("ZGENERICALBUM", withoutPageOf("Album 1200"), "albums");
    expectPart(static_cast<int>(catalog.albums.size()));
    expectPart(fieldCount(damagedIn("Z_30ASSETS", withoutPage(lastPageOf("Z_30ASSETS")), "albums"),
                          "albums"));
}

TEST_F(DamagedTables, AreNotMetByDamagedIndexes)
{
    LibraryTablesWriter writer = largeLibrary();
    for (const char *index :
         {"ZASSET (ZKIND, ZFILENAME)", "ZADDITIONALASSETATTRIBUTES (ZASSET)",
          "ZGENERICALBUM (ZKIND)", "Z_30ASSETS (Z_30ALBUMS, Z_3ASSETS, Z_FOK_3ASSETS)",
          "ZKEYWORD (Z_PK, ZTITLE)"}) {
        const std::string columns = index;
        writer.addSql("CREATE INDEX by" + columns.substr(0, columns.find(' ')) + " ON " + columns);
    }
    QByteArray database = inPagesOf(pageSize, writer.bytes());
    const RawPages pages(database);
    for (const char *index : {"byZASSET", "byZADDITIONALASSETATTRIBUTES", "byZGENERICALBUM",
                              "byZ_30ASSETS", "byZKEYWORD"})
        database.replace((pages.root(index) - 1) * pageSize, pageSize, QByteArray(pageSize, '\0'));
    const Catalog catalog = catalogOf(database);
    EXPECT_TRUE(catalog.unread.empty());
    EXPECT_EQ(std::size_t(assetCount), catalog.assets.size());
    EXPECT_EQ(assetCount, fieldCount(catalog, "albums"));
}

TEST_F(DamagedTables, ThatAreNotPlainOnesAreUnread)
{
    LibraryTablesWriter writer = largeLibrary();
    writer.leaveOut("ZKEYWORD");
    writer.addSql(
        "CREATE TABLE ZKEYWORD (Z_PK INTEGER PRIMARY KEY, ZTITLE, CHECK (ZTITLE <> 'x'))");
    const Catalog catalog = catalogOf(writer);
    EXPECT_EQ(std::vector<std::string>{"ZKEYWORD"}, unread(catalog));
    EXPECT_EQ(std::vector<std::string>(), missing(catalog));
    EXPECT_EQ(std::size_t(assetCount), catalog.assets.size());
    EXPECT_EQ(assetCount, fieldCount(catalog, "people"));
}

// --- Rows that share their bytes

class SharedRows : public CatalogFixture
{
protected:
    // The library with millions of times the same rows in `table`.
    static QByteArray withRows(const char *table, const std::vector<RawValue> &row, int rows,
                               const QByteArray &overflow = QByteArray())
    {
        static const QByteArray sound = inPagesOf(65536, largeLibrary().bytes());
        RawPages pages(sound);
        const int start = overflow.isEmpty() ? 0 : pages.addOverflow(overflow);
        const int leaf = pages.add();
        pages.fillLeaf(leaf, row, rows, start);
        const int inner = pages.add();
        pages.fillInner(inner, leaf);
        pages.fillInner(pages.root(table), inner);
        return pages.bytes();
    }

    void expectUnread(const char *table, const QByteArray &database)
    {
        const Catalog catalog = catalogOf(database);
        EXPECT_EQ(std::vector<std::string>{table}, unread(catalog));
        EXPECT_FALSE(catalog.assets.empty());
    }
};

TEST_F(SharedRows, OfPhotosAreNotReadWithoutEnd)
{
    // Z_PK, Z_ENT, ZKIND: a row's own key counts for the first.
    expectUnread(
        "ZASSET",
        withRows("ZASSET", {RawValue::null(), RawValue::null(), RawValue::number(0)}, 5000));
}

TEST_F(SharedRows, OfLongNamesAreNotReadWithoutEnd)
{
    std::vector<RawValue> row(7, RawValue::null());
    row[2] = RawValue::number(0);
    row.push_back({13 + 2 * 1000000, ""}); // ZFILENAME
    expectUnread("ZASSET", withRows("ZASSET", row, 7, QByteArray(1000000, 'n')));
}

TEST_F(SharedRows, OfOtherTablesAreNotReadWithoutEnd)
{
    const std::vector<RawValue> pair = {RawValue::number(1), RawValue::number(1)};
    const std::vector<RawValue> keyedPair = {RawValue::null(), RawValue::number(1),
                                             RawValue::number(1)};
    const std::vector<RawValue> named = {RawValue::null(), RawValue::text("a name")};
    expectUnread("Z_30ASSETS", withRows("Z_30ASSETS", pair, 5000));
    expectUnread("Z_1KEYWORDS", withRows("Z_1KEYWORDS", pair, 5000));
    expectUnread("ZDETECTEDFACE", withRows("ZDETECTEDFACE", keyedPair, 5000));
    expectUnread("ZADDITIONALASSETATTRIBUTES",
                 withRows("ZADDITIONALASSETATTRIBUTES", keyedPair, 5000));
    expectUnread("ZPERSON", withRows("ZPERSON", named, 5000));
    expectUnread("ZKEYWORD", withRows("ZKEYWORD", named, 5000));
    expectUnread("ZASSETDESCRIPTION", withRows("ZASSETDESCRIPTION", keyedPair, 5000));
    expectUnread(
        "ZGENERICALBUM",
        withRows("ZGENERICALBUM", {RawValue::null(), RawValue::null(), RawValue::number(2)}, 5000));
}

TEST_F(SharedRows, AreNotToldOfAnHonestLibraryOfFewBytes)
{
    LibraryTablesWriter writer(libraryVersion("Of18"));
    writer.leaveOut("ZASSET");
    writer.addTable("ZASSET", {"Z_PK", "ZKIND"});
    for (int id = 1; id <= 10000; ++id)
        writer.addPhoto(id);
    const Catalog catalog = catalogOf(writer);
    EXPECT_EQ(10000U, catalog.assets.size());
    EXPECT_TRUE(catalog.unread.empty());
}

// --- Cancelling

// Cancels when a statement that reads from `table` starts.
class CancelAt
{
public:
    CancelAt(CancelToken &cancel, const std::string &table) : m_cancel(cancel), m_table(table)
    {
        s_current = this;
        sqlite3_auto_extension(reinterpret_cast<void (*)()>(watch));
    }

    ~CancelAt()
    {
        sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(watch));
        s_current = nullptr;
    }

    CancelAt(const CancelAt &) = delete;
    CancelAt &operator=(const CancelAt &) = delete;

private:
    static int watch(sqlite3 *db, const char **, const sqlite3_api_routines *)
    {
        return sqlite3_trace_v2(db, SQLITE_TRACE_STMT, started, nullptr);
    }

    static int started(unsigned, void *, void *, void *sql)
    {
        if (std::string(static_cast<const char *>(sql)).find("FROM " + s_current->m_table + ' ') !=
            std::string::npos)
            s_current->m_cancel.cancel();
        return 0;
    }

    static CancelAt *s_current;
    CancelToken &m_cancel;
    const std::string m_table;
};

CancelAt *CancelAt::s_current = nullptr;

class CancelledReading : public CatalogFixture
{
protected:
    void expectCancelled(const QByteArray &database)
    {
        try {
            catalogOf(database);
            ADD_FAILURE() << "not cancelled";
        } catch (const Error &error) {
            EXPECT_EQ(Error::Cancelled, error.kind());
            EXPECT_STREQ("interrupted", error.what());
        }
    }
};

TEST_F(CancelledReading, ReadsNothing)
{
    m_cancel.cancel();
    expectCancelled(largeLibrary().bytes());
}

class CancelledTable : public CancelledReading, public testing::WithParamInterface<const char *>
{
};

TEST_P(CancelledTable, EndsTheReading)
{
    const CancelAt cancelling(m_cancel, GetParam());
    expectCancelled(largeLibrary().bytes());
}

INSTANTIATE_TEST_SUITE_P(All, CancelledTable,
                         testing::Values("sqlite_master", "ZASSET", "ZADDITIONALASSETATTRIBUTES",
                                         "ZASSETDESCRIPTION", "Z_PRIMARYKEY", "ZKEYWORD",
                                         "Z_1KEYWORDS", "ZPERSON", "ZDETECTEDFACE", "ZGENERICALBUM",
                                         "Z_30ASSETS"),
                         [](const auto &info) { return std::string(info.param); });

TEST_F(CancelledReading, MayBeDoneAgainByAnother)
{
    m_cancel.cancel();
    expectCancelled(largeLibrary().bytes());
    CancelToken another;
    EXPECT_EQ(
        std::size_t(assetCount),
        readCatalog(QString::fromUtf8(m_scratch.path("Photos.sqlite")), another).assets.size());
}

} // namespace
