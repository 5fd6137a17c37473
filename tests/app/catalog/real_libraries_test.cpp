// Catalogs of libraries that people have had, against plain SQL of what these are known to have.

#include "support/catalog_fixture.h"
#include "support/row_name.h"

#include <QFileInfo>

namespace {

// The names that differ between the libraries.
struct RealLibrary {
    std::string name;
    std::string folder;
    std::string assets;
    std::string edited;
    std::string rendered;
    std::string importPlace;
    std::string members;
    std::string memberAlbum;
    std::string memberAsset;
    std::string keyword;
    std::string faceAsset;
    std::string facePerson;
    std::size_t assetCount;
    std::size_t albumCount;
};

const RealLibrary realLibraries[] = {
    {"Of2019", "library-a", "ZGENERICASSET", "ZHASADJUSTMENTS", "ZCUSTOMRENDEREDVALUE",
     "Z_FOK_IMPORTSESSION", "Z_26ASSETS", "Z_26ALBUMS", "Z_34ASSETS", "Z_37KEYWORDS", "ZASSET",
     "ZPERSON", 29, 41},
    {"Of2024", "library-b", "ZASSET", "ZADJUSTMENTSSTATE", "NULL", "NULL", "Z_30ASSETS",
     "Z_30ALBUMS", "Z_3ASSETS", "Z_47KEYWORDS", "ZASSETFORFACE", "ZPERSONFORFACE", 16, 25},
    {"Of2024WithMediaTypes", "library-c", "ZASSET", "ZADJUSTMENTSSTATE", "NULL", "NULL",
     "Z_30ASSETS", "Z_30ALBUMS", "Z_3ASSETS", "Z_47KEYWORDS", "ZASSETFORFACE", "ZPERSONFORFACE", 18,
     3},
};

std::string replaced(std::string text, const std::map<std::string, std::string> &names)
{
    for (const auto &[mark, name] : names) {
        for (std::size_t at; (at = text.find(mark)) != std::string::npos;)
            text.replace(at, mark.size(), name);
    }
    return text;
}

const char assetSql[] = R"(
SELECT A.Z_PK AS id,
    CASE A.ZKIND WHEN 0 THEN 'photo' ELSE 'video' END AS kind,
    ltrim(
        iif(A.ZAVALANCHEUUID <> '', ' burst', '') ||
        iif(A.ZKIND = 0 AND A.ZKINDSUBTYPE = 2, ' live', '') ||
        iif(A.ZKIND = 0 AND (A.ZKINDSUBTYPE = 1 OR {rendered} IS 6), ' panorama', '') ||
        iif(A.ZKIND = 0 AND A.ZKINDSUBTYPE = 10, ' screenshot', '') ||
        iif(A.ZKIND = 1 AND A.ZKINDSUBTYPE = 101, ' slowMotion', '') ||
        iif(A.ZKIND = 1 AND A.ZKINDSUBTYPE = 102, ' timeLapse', '') ||
        iif(A.ZKIND = 1 AND A.ZKINDSUBTYPE = 103, ' screenRecording', '')) AS types,
    CASE A.ZSAVEDASSETTYPE WHEN 3 THEN 'local' WHEN 4 THEN 'shared' WHEN 6 THEN 'cloud'
        WHEN 10 THEN 'referenced' WHEN 12 THEN 'messages' ELSE 'other' END AS source,
    upper(nullif(A.ZUUID, '')) AS uuid,
    nullif(A.ZDIRECTORY, '') AS directory,
    nullif(A.ZFILENAME, '') AS fileName,
    coalesce(nullif(A.ZDIRECTORY, '') || '/', '') || A.ZFILENAME AS path,
    nullif(T.ZORIGINALFILENAME, '') AS originalName,
    nullif(T.ZTITLE, '') AS title,
    (SELECT nullif(ZLONGDESCRIPTION, '') FROM ZASSETDESCRIPTION
        WHERE ZASSETATTRIBUTES = T.Z_PK) AS caption,
    A.ZDATECREATED AS taken,
    iif(T.ZTIMEZONEOFFSET % 60 = 0, T.ZTIMEZONEOFFSET / 60, NULL) AS utcOffset,
    A.ZMODIFICATIONDATE AS modified,
    A.ZADDEDDATE AS added,
    iif(A.ZTRASHEDSTATE = 1, A.ZTRASHEDDATE, NULL) AS trashed,
    A.ZWIDTH AS width, A.ZHEIGHT AS height, A.ZORIENTATION AS orientation,
    iif(A.ZKIND = 1, A.ZDURATION, NULL) AS duration,
    T.ZORIGINALFILESIZE AS size,
    iif(A.ZFAVORITE = 1, 'true', 'false') AS favorite,
    iif(A.ZHIDDEN = 1, 'true', 'false') AS hidden,
    iif(A.ZTRASHEDSTATE = 1, 'true', 'false') AS inTrash,
    iif(A.{edited} <> 0, 'true', 'false') AS edited,
    iif(A.ZCLOUDLOCALSTATE = 1, 'true', 'false') AS isInCloud,
    A.ZAVALANCHEUUID AS burst,
    CASE WHEN A.ZAVALANCHEUUID IS NULL THEN NULL
        WHEN A.ZVISIBILITYSTATE = 0 THEN 'true' ELSE 'false' END AS burstPicked,
    iif(A.ZLATITUDE = -180, NULL, A.ZLATITUDE) AS latitude,
    iif(A.ZLONGITUDE = -180, NULL, A.ZLONGITUDE) AS longitude,
    (SELECT group_concat(title, '|') FROM (SELECT DISTINCT K.ZTITLE AS title
        FROM Z_1KEYWORDS AS J JOIN ZKEYWORD AS K ON K.Z_PK = J.{keyword}
        WHERE J.Z_1ASSETATTRIBUTES = T.Z_PK ORDER BY K.ZTITLE)) AS keywords,
    (SELECT group_concat(name, '|') FROM (SELECT DISTINCT P.ZFULLNAME AS name
        FROM ZDETECTEDFACE AS F JOIN ZPERSON AS P ON P.Z_PK = F.{facePerson}
        WHERE F.{faceAsset} = A.Z_PK AND P.ZFULLNAME <> '' ORDER BY P.ZFULLNAME)) AS people,
    (SELECT group_concat(album, ' ') FROM (SELECT G.Z_PK AS album FROM ZGENERICALBUM AS G
        WHERE G.ZTRASHEDSTATE = 0 AND (G.ZKIND = 1506 AND G.Z_PK = A.ZIMPORTSESSION OR
            G.ZKIND IN (2, 1505, 1508) AND EXISTS (SELECT 1 FROM {members} AS J
                WHERE J.{memberAlbum} = G.Z_PK AND J.{memberAsset} = A.Z_PK))
        ORDER BY G.Z_PK)) AS albums
FROM {assets} AS A LEFT JOIN ZADDITIONALASSETATTRIBUTES AS T ON T.ZASSET = A.Z_PK
WHERE A.ZKIND IN (0, 1) ORDER BY A.Z_PK)";

const char albumSql[] = R"(
SELECT G.Z_PK AS id,
    CASE G.ZKIND WHEN 2 THEN 'album' WHEN 1505 THEN 'shared' WHEN 1506 THEN 'import'
        WHEN 1507 THEN 'smart' WHEN 1508 THEN 'project' ELSE 'folder' END AS kind,
    upper(G.ZUUID) AS uuid, nullif(G.ZTITLE, '') AS title,
    (SELECT F.Z_PK FROM ZGENERICALBUM AS F
        WHERE F.Z_PK = G.ZPARENTFOLDER AND F.ZKIND = 4000 AND F.ZTRASHEDSTATE = 0) AS parent,
    G.ZCREATIONDATE AS created,
    (SELECT group_concat(id, ' ') FROM (SELECT A.Z_PK AS id
        FROM {members} AS J JOIN {assets} AS A ON A.Z_PK = J.{memberAsset}
            JOIN ZGENERICALBUM AS H ON H.Z_PK = J.{memberAlbum}
            LEFT JOIN ZADDITIONALASSETATTRIBUTES AS T ON T.ZASSET = A.Z_PK
        WHERE J.{memberAlbum} = G.Z_PK AND A.ZKIND IN (0, 1) AND G.ZKIND <> 1506 ORDER BY
            iif(H.ZCUSTOMSORTKEY = 1 AND H.ZCUSTOMSORTASCENDING, A.ZDATECREATED, 0),
            iif(H.ZCUSTOMSORTKEY = 1 AND NOT H.ZCUSTOMSORTASCENDING, A.ZDATECREATED, 0) DESC,
            iif(H.ZCUSTOMSORTKEY = 5 AND H.ZCUSTOMSORTASCENDING, nullif(T.ZTITLE, ''), ''),
            iif(H.ZCUSTOMSORTKEY = 5 AND NOT H.ZCUSTOMSORTASCENDING, nullif(T.ZTITLE, ''), '') DESC,
            J.Z_FOK_{order} NULLS LAST, A.Z_PK)) AS members,
    (SELECT group_concat(id, ' ') FROM (SELECT A.Z_PK AS id FROM {assets} AS A
        WHERE A.ZIMPORTSESSION = G.Z_PK AND G.ZKIND = 1506 AND A.ZKIND IN (0, 1)
        ORDER BY {importPlace} NULLS LAST, A.Z_PK)) AS imported
FROM ZGENERICALBUM AS G
WHERE G.ZTRASHEDSTATE = 0 AND G.ZKIND IN (2, 1505, 1506, 1507, 1508, 4000) ORDER BY G.Z_PK)";

const char peopleSql[] = R"(
SELECT P.Z_PK AS id, P.ZFULLNAME AS name, P.ZPERSONUUID AS uuid,
    (SELECT group_concat(id, ' ') FROM (SELECT DISTINCT A.Z_PK AS id
        FROM ZDETECTEDFACE AS F JOIN {assets} AS A ON A.Z_PK = F.{faceAsset}
        WHERE F.{facePerson} = P.Z_PK AND A.ZKIND IN (0, 1) ORDER BY A.Z_PK)) AS assets
FROM ZPERSON AS P WHERE P.ZFULLNAME <> '' ORDER BY P.Z_PK)";

std::string valueOf(sqlite3_stmt *stmt, int column)
{
    switch (sqlite3_column_type(stmt, column)) {
    case SQLITE_NULL:
        return "null";
    case SQLITE_FLOAT:
        return numberText(sqlite3_column_double(stmt, column));
    default:
        return reinterpret_cast<const char *>(sqlite3_column_text(stmt, column));
    }
}

class RealLibraries : public CatalogFixture, public testing::WithParamInterface<RealLibrary>
{
protected:
    void SetUp() override
    {
        const QString database = QStringLiteral(PHOTOLIB_DEVICES_DIR) + '/' +
                                 QString::fromStdString(GetParam().folder) +
                                 QStringLiteral("/PhotoData/Photos.sqlite");
        if (!QFileInfo::exists(database))
            GTEST_SKIP() << "there is no " << database.toStdString();
        for (const char *suffix : {"", "-wal"}) {
            QFile file(database + suffix);
            ASSERT_TRUE(file.open(QIODevice::ReadOnly));
            m_scratch.write(QByteArray("Photos.sqlite") + suffix, file.readAll());
        }
        m_catalog = readCatalog(QString::fromUtf8(m_scratch.path("Photos.sqlite")), m_cancel);
    }

    std::vector<FieldTexts> rows(const char *sql) const
    {
        const RealLibrary &library = GetParam();
        const std::string known = replaced(sql, {{"{assets}", library.assets},
                                                 {"{edited}", library.edited},
                                                 {"{rendered}", library.rendered},
                                                 {"{importPlace}", library.importPlace},
                                                 {"{members}", library.members},
                                                 {"{memberAlbum}", library.memberAlbum},
                                                 {"{memberAsset}", library.memberAsset},
                                                 {"{order}", library.memberAsset.substr(2)},
                                                 {"{keyword}", library.keyword},
                                                 {"{faceAsset}", library.faceAsset},
                                                 {"{facePerson}", library.facePerson}});
        sqlite3 *opened = nullptr;
        sqlite3_open(m_scratch.path("Photos.sqlite").constData(), &opened);
        const SqliteOwner db(opened);
        sqlite3_stmt *stmt = nullptr;
        EXPECT_EQ(SQLITE_OK, sqlite3_prepare_v2(opened, known.c_str(), -1, &stmt, nullptr))
            << sqlite3_errmsg(opened);
        std::vector<FieldTexts> rows;
        while (sqlite3_step(stmt) == SQLITE_ROW) {
            rows.emplace_back();
            for (int column = 0; column < sqlite3_column_count(stmt); ++column)
                rows.back()[sqlite3_column_name(stmt, column)] = valueOf(stmt, column);
        }
        EXPECT_EQ(SQLITE_OK, sqlite3_finalize(stmt));
        return rows;
    }

    Catalog m_catalog;
};

// Lists are empty, not null.
void emptyLists(FieldTexts &fields, std::initializer_list<const char *> names)
{
    for (const char *name : names) {
        if (fields.at(name) == "null")
            fields.at(name).clear();
    }
}

TEST_P(RealLibraries, ListEveryFieldOfEveryPhotoAsSqlDoes)
{
    std::vector<FieldTexts> expected = rows(assetSql);
    ASSERT_EQ(GetParam().assetCount, m_catalog.assets.size());
    ASSERT_EQ(expected.size(), m_catalog.assets.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        FieldTexts &fields = expected[i];
        emptyLists(fields, {"keywords", "people", "albums"});
        const std::string latitude = fields.at("latitude");
        fields["location"] =
            latitude == "null" ? latitude : latitude + ' ' + fields.at("longitude");
        fields.erase("latitude");
        fields.erase("longitude");
        EXPECT_EQ(fields, fieldsOf(m_catalog.assets[i]));
    }
}

TEST_P(RealLibraries, ListEveryAlbumAsSqlDoes)
{
    std::vector<FieldTexts> expected = rows(albumSql);
    ASSERT_EQ(GetParam().albumCount, m_catalog.albums.size());
    ASSERT_EQ(expected.size(), m_catalog.albums.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        FieldTexts &fields = expected[i];
        emptyLists(fields, {"members", "imported"});
        fields["assets"] = fields.at("members") + fields.at("imported");
        fields.erase("members");
        fields.erase("imported");
        EXPECT_EQ(fields, fieldsOf(m_catalog.albums[i]));
    }
}

TEST_P(RealLibraries, ListEverybodyAsSqlDoes)
{
    std::vector<FieldTexts> expected = rows(peopleSql);
    ASSERT_EQ(expected.size(), m_catalog.people.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const Person &person = m_catalog.people[i];
        std::string assets;
        for (const qint64 id : person.assets)
            assets += (assets.empty() ? "" : " ") + std::to_string(id);
        emptyLists(expected[i], {"assets"});
        EXPECT_EQ(expected[i], (FieldTexts{{"id", std::to_string(person.id)},
                                           {"name", person.name.toStdString()},
                                           {"uuid", person.uuid.toStdString()},
                                           {"assets", assets}}));
    }
}

TEST_P(RealLibraries, HaveEveryTableAndColumn)
{
    EXPECT_EQ(std::vector<std::string>(), missing(m_catalog));
    EXPECT_EQ(std::vector<std::string>(), unread(m_catalog));
}

INSTANTIATE_TEST_SUITE_P(All, RealLibraries, testing::ValuesIn(realLibraries),
                         rowName<RealLibrary>);

} // namespace
