#include "sample/sample_fixture.h"

#include <QSet>
#include <QtEndian>

namespace {

/// What a schema is known by.
struct Expected {
    SampleSchema schema;
    int version;
    const char *name;
    const char *assetTable;
    const char *joinTable;
    const char *joinColumns;
    const char *keywordColumns;
    const char *faceColumns; ///< of the asset and the person
    const char *editColumn;
};

const Expected schemas[] = {
    {SampleSchema::V13, 13703, "V13", "ZGENERICASSET", "Z_26ASSETS",
     "Z_26ALBUMS Z_34ASSETS Z_FOK_34ASSETS", "Z_1ASSETATTRIBUTES Z_37KEYWORDS", "ZASSET ZPERSON",
     "ZHASADJUSTMENTS"},
    {SampleSchema::V14, 14208, "V14", "ZASSET", "Z_26ASSETS", "Z_26ALBUMS Z_3ASSETS Z_FOK_3ASSETS",
     "Z_1ASSETATTRIBUTES Z_36KEYWORDS", "ZASSET ZPERSON", "ZHASADJUSTMENTS"},
    {SampleSchema::V16, 16119, "V16", "ZASSET", "Z_28ASSETS", "Z_28ALBUMS Z_3ASSETS Z_FOK_3ASSETS",
     "Z_1ASSETATTRIBUTES Z_40KEYWORDS", "ZASSETFORFACE ZPERSONFORFACE", "ZHASADJUSTMENTS"},
    {SampleSchema::V18, 18508, "V18", "ZASSET", "Z_30ASSETS", "Z_30ALBUMS Z_3ASSETS Z_FOK_3ASSETS",
     "Z_1ASSETATTRIBUTES Z_47KEYWORDS", "ZASSETFORFACE ZPERSONFORFACE", "ZADJUSTMENTSSTATE"},
    {SampleSchema::V26, 19320, "V26", "ZASSET", "Z_33ASSETS", "Z_33ALBUMS Z_3ASSETS Z_FOK_3ASSETS",
     "Z_1ASSETATTRIBUTES Z_51KEYWORDS", "ZASSETFORFACE ZPERSONFORFACE", "ZADJUSTMENTSSTATE"},
};

void PrintTo(const Expected &expected, std::ostream *out)
{
    *out << expected.name;
}

/// Statements name the tables and columns of the schema at hand in braces: {ASSET}, {JOIN},
/// {JOINALBUM}, {JOINASSET}, {KEYWORD}, {FACEASSET}, {FACEPERSON} and {EDITED}.
class SampleSchemas : public testing::TestWithParam<Expected>
{
protected:
    QByteArray statement(QByteArray sql) const
    {
        const QByteArrayList join = QByteArray(GetParam().joinColumns).split(' ');
        const QByteArrayList face = QByteArray(GetParam().faceColumns).split(' ');
        const QVector<QPair<QByteArray, QByteArray>> names = {
            {"{ASSET}", GetParam().assetTable},
            {"{JOIN}", GetParam().joinTable},
            {"{JOINALBUM}", join.at(0)},
            {"{JOINASSET}", join.at(1)},
            {"{JOINORDER}", join.at(2)},
            {"{KEYWORD}", QByteArray(GetParam().keywordColumns).split(' ').at(1)},
            {"{FACEASSET}", face.at(0)},
            {"{FACEPERSON}", face.at(1)},
            {"{EDITED}", GetParam().editColumn}};
        for (const auto &name : names)
            sql.replace(name.first, name.second);
        return sql;
    }

    QStringList column(const char *sql) const
    {
        return m_database.column(statement(sql).constData());
    }
    int number(const char *sql) const { return m_database.number(statement(sql).constData()); }
    /// The values of a column, ascending, each once.
    QString distinct(const char *value, const char *condition) const
    {
        const QByteArray sql = QByteArray("select distinct ") + value + " from {ASSET} where " +
                               condition + " order by 1";
        return column(sql.constData()).join(' ');
    }
    QString columnsOf(const char *table) const
    {
        const QByteArray sql = QByteArray("select name from pragma_table_info('") + table + "')";
        return m_database.column(sql.constData()).join(' ');
    }
    bool isGeneric() const { return GetParam().schema == SampleSchema::V13; }

    // Eight outings, as many as it takes to see each variant.
    WrittenSample m_sample{sampleOptions(152, false, 1, GetParam().schema)};
    SampleDatabase m_database{m_sample};
};

INSTANTIATE_TEST_SUITE_P(Of, SampleSchemas, testing::ValuesIn(schemas),
                         [](const auto &info) { return std::string(info.param.name); });

TEST_P(SampleSchemas, NameTheAssetTableAfterTheYear)
{
    EXPECT_EQ(m_database.column("select name from sqlite_master where type = 'table' and "
                                "name in ('ZASSET', 'ZGENERICASSET')"),
              QStringList{QLatin1String(GetParam().assetTable)});
    EXPECT_EQ(number("select count(*) from {ASSET}"), 160);
}

TEST_P(SampleSchemas, SayTheirModelVersion)
{
    const QByteArray plist =
        QByteArray::fromHex(m_database.value("select hex(Z_PLIST) from Z_METADATA").toLatin1());
    QByteArray twoByteInteger("\x11..");
    qToBigEndian(static_cast<quint16>(GetParam().version), twoByteInteger.data() + 1);
    EXPECT_TRUE(plist.contains(twoByteInteger));
}

TEST_P(SampleSchemas, NameTheJoinTableByTheNumbersOfTheirEntities)
{
    const auto entity = [&](const char *name) {
        const QByteArray sql =
            QByteArray("select Z_ENT from Z_PRIMARYKEY where Z_NAME = '") + name + '\'';
        return m_database.value(sql.constData());
    };
    const QString album = entity("Album");
    const QString asset = entity(isGeneric() ? "GenericAsset" : "Asset");
    EXPECT_EQ(entity("GenericAsset").isNull(), !isGeneric());
    EXPECT_EQ(QStringLiteral("Z_%1ASSETS").arg(album), QLatin1String(GetParam().joinTable));
    EXPECT_EQ(QStringLiteral("Z_%1ALBUMS Z_%2ASSETS Z_FOK_%2ASSETS").arg(album, asset),
              QLatin1String(GetParam().joinColumns));
    EXPECT_EQ(columnsOf(GetParam().joinTable), QLatin1String(GetParam().joinColumns));
    EXPECT_EQ(columnsOf("Z_1KEYWORDS"), QLatin1String(GetParam().keywordColumns));
    EXPECT_EQ(QStringLiteral("Z_1ASSETATTRIBUTES Z_%1KEYWORDS").arg(entity("Keyword")),
              QLatin1String(GetParam().keywordColumns));
    EXPECT_EQ(entity("AdditionalAssetAttributes"), QStringLiteral("1"));
}

TEST_P(SampleSchemas, GiveEveryEntityANumberOfItsOwnAndItsLargestKey)
{
    const QVector<QPair<const char *, QByteArray>> tables = {
        {isGeneric() ? "GenericAsset" : "Asset", GetParam().assetTable},
        {"AdditionalAssetAttributes", "ZADDITIONALASSETATTRIBUTES"},
        {"AssetDescription", "ZASSETDESCRIPTION"},
        {"DetectedFace", "ZDETECTEDFACE"},
        {"GenericAlbum", "ZGENERICALBUM"},
        {"Keyword", "ZKEYWORD"},
        {"Person", "ZPERSON"}};
    for (const auto &[entity, table] : tables) {
        const QByteArray largest = QByteArray("select Z_MAX from Z_PRIMARYKEY where Z_NAME = '") +
                                   entity + "' and Z_MAX = (select max(Z_PK) from " + table + ')';
        EXPECT_GT(m_database.number(largest.constData()), 0) << entity;
    }
    // Assets inherit from generic ones; all other rows bear the number of their own entity.
    EXPECT_EQ(number("select count(*) from {ASSET} where Z_ENT != "
                     "(select Z_ENT from Z_PRIMARYKEY where Z_NAME = 'Asset')"),
              0);
    EXPECT_EQ(number("select count(*) from ZKEYWORD where Z_ENT != "
                     "(select Z_ENT from Z_PRIMARYKEY where Z_NAME = 'Keyword')"),
              0);
}

TEST_P(SampleSchemas, HaveTablesAndIndexesThatResembleTheJoinTable)
{
    const QStringList alike =
        m_database.column("select name from sqlite_master where type = 'table' and "
                          "name like 'Z!_%ASSETS' escape '!'");
    EXPECT_GE(alike.size(), 3);
    EXPECT_NE(alike.first(), QLatin1String(GetParam().joinTable));
    EXPECT_TRUE(alike.contains(QLatin1String(GetParam().joinTable)));
    const bool hasKeyAssets = GetParam().schema >= SampleSchema::V18;
    EXPECT_EQ(alike.filter(QRegExp(QStringLiteral("^Z_\\d+KEYASSETS$"))).size(),
              hasKeyAssets ? 1 : 0);
    EXPECT_EQ(columnsOf("ZGENERICALBUM").contains(QLatin1String("ZKEYASSET")), !hasKeyAssets);
    const int oldNames = number("select count(*) from sqlite_master where type = 'index' and "
                                "name like 'Z!_26ASSETS!_Z!_34%' escape '!'");
    EXPECT_EQ(oldNames, isGeneric() ? 0 : 1);
}

TEST_P(SampleSchemas, StoreUuidsAsTextInAnAssetTableOfTheNewName)
{
    const char *const type = isGeneric() ? "blob" : "text";
    const int length = isGeneric() ? 16 : 36;
    for (const char *table : {"{ASSET}", "ZGENERICALBUM"}) {
        const QByteArray sql =
            QByteArray("select distinct typeof(ZUUID) || length(ZUUID) from ") + table;
        EXPECT_EQ(column(sql.constData()),
                  QStringList{QLatin1String(type) + QString::number(length)});
    }
    EXPECT_EQ(number("select count(distinct ZUUID) from {ASSET}"), 160);
    EXPECT_EQ(column("select distinct typeof(ZAVALANCHEUUID) from {ASSET} order by 1").join(' '),
              QStringLiteral("null text"));
}

TEST_P(SampleSchemas, HaveTheColumnsOfTheirYears)
{
    const QStringList asset = columnsOf(GetParam().assetTable).split(' ');
    const SampleSchema schema = GetParam().schema;
    const auto has = [&](const char *name) { return asset.contains(QLatin1String(name)); };
    EXPECT_EQ(has("ZHASADJUSTMENTS"), schema <= SampleSchema::V16);
    EXPECT_EQ(has("ZADJUSTMENTSSTATE"), schema >= SampleSchema::V18);
    EXPECT_EQ(has("ZCUSTOMRENDEREDVALUE"), schema <= SampleSchema::V14);
    EXPECT_EQ(has("Z_FOK_IMPORTSESSION"), schema <= SampleSchema::V14);
    const QStringList attributes = columnsOf("ZADDITIONALASSETATTRIBUTES").split(' ');
    EXPECT_EQ(attributes.contains(QLatin1String("ZDURATION")), isGeneric());
    EXPECT_EQ(attributes.contains(QLatin1String("ZCREATORBUNDLEID")), schema <= SampleSchema::V14);
}

TEST_P(SampleSchemas, HaveAssetsOfEveryType)
{
    EXPECT_EQ(distinct("ZKINDSUBTYPE", "ZKIND = 0"), QStringLiteral("0 1 2 10"));
    EXPECT_EQ(distinct("ZKINDSUBTYPE", "ZKIND = 1"), QStringLiteral("0 101 102 103"));
    if (GetParam().schema <= SampleSchema::V14) {
        EXPECT_EQ(number("select count(*) from {ASSET} where ZCUSTOMRENDEREDVALUE = 6 and "
                         "ZKIND = 0 and ZKINDSUBTYPE = 0"),
                  4);
    }
    // Of the three frames of each burst one is picked.
    EXPECT_EQ(number("select count(*) from {ASSET} where ZAVALANCHEUUID is not null"), 24);
    EXPECT_EQ(number("select count(*) from {ASSET} where ZAVALANCHEUUID is not null and "
                     "ZVISIBILITYSTATE = 0"),
              8);
    EXPECT_EQ(distinct("ZAVALANCHEPICKTYPE", "ZAVALANCHEUUID is not null"), QStringLiteral("2 20"));
}

TEST_P(SampleSchemas, HaveAssetsFromEverySource)
{
    EXPECT_EQ(distinct("ZSAVEDASSETTYPE", "1"), isGeneric()
                                                    ? QStringLiteral("0 1 3 4 5 6 10 12 256")
                                                    : QStringLiteral("3 4 5 6 10 12"));
    EXPECT_EQ(distinct("ZVISIBILITYSTATE", "ZSAVEDASSETTYPE = 4"), QStringLiteral("2"));
    EXPECT_EQ(distinct("ZCLOUDLOCALSTATE", "ZSAVEDASSETTYPE = 6"), QStringLiteral("1"));
    EXPECT_EQ(distinct("ZCLOUDLOCALSTATE", "ZSAVEDASSETTYPE != 6"), QStringLiteral("0"));
    // All shared copies are in the shared album.
    EXPECT_EQ(number("select count(*) from {ASSET} where ZSAVEDASSETTYPE = 4 and Z_PK not in "
                     "(select {JOINASSET} from {JOIN} join ZGENERICALBUM A on {JOINALBUM} = A.Z_PK "
                     "where A.ZKIND = 1505)"),
              0);
}

TEST_P(SampleSchemas, ListAsManyAssetsAsWereAskedFor)
{
    const char *const listed =
        isGeneric() ? "select count(*) from {ASSET} where (ZKIND = 0 and ZSAVEDASSETTYPE in "
                      "(3, 256, 1, 5)) or (ZKIND = 1 and ZSAVEDASSETTYPE in (256, 3, 0))"
                    : "select count(*) from {ASSET} where ZSAVEDASSETTYPE != 4";
    EXPECT_EQ(number(listed), 152);
}

TEST_P(SampleSchemas, KnowNamesTitlesAndCaptions)
{
    const char *const attributes = "select count(*) from ZADDITIONALASSETATTRIBUTES where ";
    const auto count = [&](const char *condition) {
        return number((QByteArray(attributes) + condition).constData());
    };
    EXPECT_GT(count("ZORIGINALFILENAME glob 'DSC*'"), 0);
    EXPECT_GT(count("ZORIGINALFILENAME like 'Straßenfest%'"), 0);
    EXPECT_GT(count("ZORIGINALFILENAME is null"), 0);
    EXPECT_GT(count("ZTITLE is null"), 0);
    EXPECT_GT(count("ZTITLE = ''"), 0);
    EXPECT_GT(count("ZTITLE = 'Zoë on the pier'"), 0);
    EXPECT_GT(number("select count(*) from ZASSETDESCRIPTION where ZLONGDESCRIPTION = ''"), 0);
    EXPECT_GT(number("select count(distinct ZLONGDESCRIPTION) from ZASSETDESCRIPTION"), 3);
    EXPECT_EQ(number("select count(*) from ZASSETDESCRIPTION D where not exists (select 1 from "
                     "ZADDITIONALASSETATTRIBUTES T where T.ZASSETDESCRIPTION = D.Z_PK and "
                     "T.Z_PK = D.ZASSETATTRIBUTES)"),
              0);
    EXPECT_EQ(count("ZASSETDESCRIPTION is not null"),
              number("select count(*) from ZASSETDESCRIPTION"));
}

TEST_P(SampleSchemas, NameFilesInAnyScriptOnlyWhereReadersExpectUtf8)
{
    const int others = number("select count(*) from {ASSET} where ZFILENAME not glob 'IMG_*'");
    EXPECT_EQ(others, isGeneric() ? 0 : 16);
    EXPECT_EQ(number("select count(distinct ZDIRECTORY || '/' || ZFILENAME) from {ASSET}"), 160);
}

TEST_P(SampleSchemas, KnowTimeZonesAndPlacesOfMostAssets)
{
    const QStringList zones = column("select distinct ZTIMEZONEOFFSET from "
                                     "ZADDITIONALASSETATTRIBUTES order by 1");
    for (const QString &zone : {QString(), QStringLiteral("-14400"), QStringLiteral("7200"),
                                QStringLiteral("20700"), QStringLiteral("1172")})
        EXPECT_TRUE(zones.contains(zone)) << zone.toStdString();
    EXPECT_EQ(m_database.value("select ZTIMEZONENAME from ZADDITIONALASSETATTRIBUTES "
                               "where ZTIMEZONEOFFSET = -14400"),
              QStringLiteral("GMT-0400"));
    EXPECT_EQ(number("select count(*) from {ASSET} where ZLATITUDE = -180 and ZLONGITUDE = -180"),
              16);
    EXPECT_EQ(number("select count(*) from {ASSET} where (ZLATITUDE = -180) != "
                     "(ZLONGITUDE = -180)"),
              0);
    EXPECT_EQ(number("select count(*) from {ASSET} where ZLATITUDE is null"), 4);
    EXPECT_GT(number("select count(*) from {ASSET} where ZLATITUDE between -90 and 0"), 0);
    EXPECT_GT(number("select count(*) from {ASSET} where ZLATITUDE > 0 and "
                     "ZLONGITUDE between -179 and 0"),
              0);
}

TEST_P(SampleSchemas, LinkKeywordsToAttributesThatExist)
{
    EXPECT_EQ(number("select count(*) from ZKEYWORD"), 24);
    EXPECT_EQ(number("select count(distinct ZTITLE) from ZKEYWORD"), 24);
    EXPECT_EQ(number("select count(distinct {KEYWORD}) from Z_1KEYWORDS"), 24);
    EXPECT_EQ(number("select count(*) from Z_1KEYWORDS where Z_1ASSETATTRIBUTES not in "
                     "(select Z_PK from ZADDITIONALASSETATTRIBUTES) or {KEYWORD} not in "
                     "(select Z_PK from ZKEYWORD)"),
              0);
    EXPECT_EQ(number("select max(n) from (select count(*) n from Z_1KEYWORDS "
                     "group by Z_1ASSETATTRIBUTES)"),
              3);
}

TEST_P(SampleSchemas, ShowPeopleOnPhotos)
{
    EXPECT_EQ(number("select count(*) from ZPERSON"), 8);
    EXPECT_EQ(number("select count(*) from ZPERSON where ZFULLNAME = ''"), 1);
    EXPECT_EQ(number("select count(distinct ZFULLNAME) from ZPERSON"), 7);
    EXPECT_GT(number("select count(*) from ZDETECTEDFACE where {FACEPERSON} is null"), 0);
    EXPECT_EQ(number("select count(*) from ZDETECTEDFACE where {FACEASSET} not in "
                     "(select Z_PK from {ASSET}) or {FACEPERSON} not in "
                     "(select Z_PK from ZPERSON)"),
              0);
    EXPECT_EQ(number("select count(*) from ZPERSON P where ZFACECOUNT = 0 or ZFACECOUNT != "
                     "(select count(*) from ZDETECTEDFACE where {FACEPERSON} = P.Z_PK)"),
              0);
    EXPECT_EQ(number("select max(n) from (select count(*) n from ZDETECTEDFACE where "
                     "{FACEPERSON} is not null group by {FACEASSET}, {FACEPERSON})"),
              1);
}

TEST_P(SampleSchemas, HaveAlbumsOfEveryKindAndOrder)
{
    const QStringList kinds = column("select distinct ZKIND from ZGENERICALBUM");
    for (const char *kind : {"2", "1505", "1506", "1507", "1508", "3998", "3999", "4000"})
        EXPECT_TRUE(kinds.contains(QLatin1String(kind))) << kind;
    EXPECT_EQ(column("select distinct ZCUSTOMSORTKEY || ':' || ZCUSTOMSORTASCENDING from "
                     "ZGENERICALBUM where ZKIND in (2, 1505) order by 1")
                  .join(' '),
              QStringLiteral("0:0 0:1 1:0 1:1 5:0 5:1"));
    EXPECT_EQ(number("select count(*) from ZGENERICALBUM where ZTRASHEDSTATE = 1"), 1);
    EXPECT_EQ(number("select count(*) from ZGENERICALBUM where ZKIND = 2 and ZTITLE is null"), 1);
    // An album in a folder in a folder below the root.
    EXPECT_EQ(number("select count(*) from ZGENERICALBUM A join ZGENERICALBUM F on "
                     "A.ZPARENTFOLDER = F.Z_PK join ZGENERICALBUM G on F.ZPARENTFOLDER = G.Z_PK "
                     "join ZGENERICALBUM R on G.ZPARENTFOLDER = R.Z_PK where A.ZKIND = 2 and "
                     "F.ZKIND = 4000 and G.ZKIND = 4000 and R.ZKIND = 3999"),
              1);
    const int sameTitle = number("select count(*) from ZGENERICALBUM where ZKIND = 2 group by "
                                 "ZTITLE having count(*) > 1");
    EXPECT_EQ(sameTitle, isGeneric() ? 0 : 2);
}

TEST_P(SampleSchemas, OrderAlbumsByHandOtherwiseThanByKey)
{
    EXPECT_GT(number("select count(*) from {JOIN} J join {JOIN} K on J.{JOINALBUM} = K.{JOINALBUM} "
                     "and J.{JOINASSET} < K.{JOINASSET} and J.{JOINORDER} > K.{JOINORDER}"),
              0);
    EXPECT_EQ(number("select count(*) from (select 1 from {JOIN} group by {JOINALBUM}, {JOINORDER} "
                     "having count(*) > 1)"),
              0);
}

TEST_P(SampleSchemas, HaveAnImportWithItsAssets)
{
    const char *const imported = "select count(*) from {ASSET} A join ZGENERICALBUM S on "
                                 "A.ZIMPORTSESSION = S.Z_PK where S.ZKIND = 1506";
    EXPECT_EQ(number(imported), 24);
    EXPECT_EQ(number("select count(*) from {ASSET} where ZIMPORTSESSION is not null"), 24);
    EXPECT_EQ(number("select ZCACHEDCOUNT from ZGENERICALBUM where ZKIND = 1506"), 24);
    const int joined = number("select count(*) from {JOIN} join ZGENERICALBUM on "
                              "{JOINALBUM} = Z_PK where ZKIND = 1506");
    EXPECT_EQ(joined, isGeneric() ? 24 : 0);
    if (GetParam().schema <= SampleSchema::V14) {
        EXPECT_EQ(number("select count(distinct Z_FOK_IMPORTSESSION) from {ASSET}"), 24);
    }
}

TEST_P(SampleSchemas, MarkWhatWasEditedHiddenLikedOrThrownAway)
{
    // A photo of each outing, and of every other one a video and a Live Photo.
    EXPECT_EQ(number("select count(*) from {ASSET} where {EDITED} != 0"), 8 + 4 + 4);
    EXPECT_EQ(number("select count(*) from {ASSET} where {EDITED} != 0 and ZKIND = 1"), 4);
    EXPECT_EQ(number("select count(*) from {ASSET} where {EDITED} != 0 and ZKINDSUBTYPE = 2"), 4);
    EXPECT_EQ(number("select count(*) from {ASSET} where ZFAVORITE = 1"), 23);
    EXPECT_EQ(number("select count(*) from {ASSET} where ZHIDDEN = 1"), 4);
    EXPECT_EQ(number("select count(*) from {ASSET} where ZTRASHEDSTATE = 1"), 8);
    EXPECT_EQ(number("select count(*) from {ASSET} where (ZTRASHEDSTATE = 1) != "
                     "(ZTRASHEDDATE is not null)"),
              0);
    EXPECT_EQ(number("select count(*) from {ASSET} where ZADDEDDATE > ZDATECREATED"), 160);
}

TEST(SampleNames, AreAsManyAsWereAskedForAndDiffer)
{
    SampleOptions options = sampleOptions(3000, false, 1, SampleSchema::V18);
    options.keywords = 1000;
    options.people = 500;
    const WrittenSample sample(options);
    const SampleDatabase database(sample);
    EXPECT_EQ(database.number("select count(distinct ZTITLE) from ZKEYWORD"), 1000);
    EXPECT_EQ(database.number("select count(distinct Z_47KEYWORDS) from Z_1KEYWORDS"), 1000);
    EXPECT_EQ(database.number("select count(*) from ZPERSON"), 500);
    EXPECT_EQ(database.number("select count(distinct ZFULLNAME) from ZPERSON"), 499);
    EXPECT_EQ(database.number("select count(distinct ZPERSONFORFACE) from ZDETECTEDFACE"), 500);
}

TEST(SampleNames, MayBeNone)
{
    SampleOptions options = sampleOptions(40, false, 1, SampleSchema::V14);
    options.keywords = options.people = 0;
    const WrittenSample sample(options);
    const SampleDatabase database(sample);
    for (const char *table : {"ZKEYWORD", "Z_1KEYWORDS", "ZPERSON"}) {
        const QByteArray sql = QByteArray("select count(*) from ") + table;
        EXPECT_EQ(database.number(sql.constData()), 0) << table;
    }
    EXPECT_EQ(database.number("select count(*) from ZDETECTEDFACE where ZPERSON is not null"), 0);
}

} // namespace
