#include "sample/sample_fixture.h"

#include <QSet>

namespace {

const char *const countAssets = "select count(*) from ZGENERICASSET";
const char *const joinTables = "select name from sqlite_master where type = 'table' and "
                               "name like 'Z!_%ASSETS' escape '!' order by rowid";

class SampleTables : public testing::Test
{
protected:
    // 60 rows, three of which readers leave out.
    WrittenSample m_lateSample{sampleOptions(57, false)};
    WrittenSample m_earlySample{sampleOptions(57, false, 1, SampleSchema::Early)};
    SampleDatabase m_late{m_lateSample};
    SampleDatabase m_early{m_earlySample};

    QString definition(const SampleDatabase &database, const char *table) const
    {
        const QByteArray sql =
            QByteArray("select sql from sqlite_master where name = '") + table + '\'';
        return database.value(sql.constData());
    }
};

TEST_F(SampleTables, HaveRowsThatOnlyTheLogHolds)
{
    for (const WrittenSample *sample : {&m_lateSample, &m_earlySample}) {
        const SampleDatabase whole(*sample);
        const SampleDatabase main(*sample, SampleDatabase::MainFileOnly);
        EXPECT_EQ(whole.number(countAssets), 60);
        EXPECT_EQ(main.number(countAssets), 48);
        const char *const countAlbums = "select count(*) from ZGENERICALBUM";
        EXPECT_EQ(main.number(countAlbums), whole.number(countAlbums) - 1);
        EXPECT_EQ(whole.value("pragma journal_mode"), QStringLiteral("wal"));
        EXPECT_EQ(whole.value("pragma integrity_check"), QStringLiteral("ok"));
        EXPECT_EQ(main.value("pragma integrity_check"), QStringLiteral("ok"));
    }
}

TEST_F(SampleTables, RenameAnAlbumInTheLog)
{
    const SampleDatabase main(m_lateSample, SampleDatabase::MainFileOnly);
    const char *const title = "select ZTITLE from ZGENERICALBUM where Z_PK = 6";
    EXPECT_EQ(main.value(title), QStringLiteral("Untitled Album"));
    EXPECT_EQ(m_late.value(title), QString::fromUtf8("日本 🗾 2018"));
}

TEST_F(SampleTables, HaveTheNewerColumnsInTheLateSchemaOnly)
{
    for (const char *column :
         {"ZKINDSUBTYPE", "ZTRASHEDDATE", "ZTRASHEDSTATE", "ZAVALANCHEUUID", "ZSORTTOKEN"}) {
        EXPECT_TRUE(definition(m_late, "ZGENERICASSET").contains(QLatin1String(column)));
        EXPECT_FALSE(definition(m_early, "ZGENERICASSET").contains(QLatin1String(column)));
    }
    EXPECT_TRUE(definition(m_late, "ZGENERICALBUM").contains(QLatin1String("ZTRASHEDSTATE")));
    EXPECT_FALSE(definition(m_early, "ZGENERICALBUM").contains(QLatin1String("ZTRASHEDSTATE")));
}

TEST_F(SampleTables, HaveDecoysAroundTheJoinTableOfTheLateSchema)
{
    const QStringList late = {QStringLiteral("Z_34SUGGESTIONSBEINGREPRESENTATIVEASSETS"),
                              QStringLiteral("Z_26ASSETS"),
                              QStringLiteral("Z_34MEMORIESBEINGCURATEDASSETS")};
    EXPECT_EQ(m_late.column(joinTables), late);
    EXPECT_EQ(m_early.column(joinTables), QStringList{QStringLiteral("Z_15ASSETS")});
}

TEST_F(SampleTables, NameTheJoinTableAfterTheEntityNumbers)
{
    const char *const number = "select group_concat(Z_NAME || Z_ENT) from Z_PRIMARYKEY "
                               "where Z_NAME in ('Album', 'GenericAsset')";
    EXPECT_EQ(m_late.value(number), QStringLiteral("Album26,GenericAsset34"));
    EXPECT_EQ(m_early.value(number), QStringLiteral("Album15,GenericAsset22"));
    EXPECT_EQ(m_late.column("select name from pragma_table_info('Z_26ASSETS')").join(' '),
              QStringLiteral("Z_26ALBUMS Z_34ASSETS Z_FOK_34ASSETS"));
    EXPECT_EQ(m_early.column("select name from pragma_table_info('Z_15ASSETS')").join(' '),
              QStringLiteral("Z_15ALBUMS Z_22ASSETS Z_FOK_22ASSETS"));
}

TEST_F(SampleTables, JoinOnlyAlbumsAndAssetsThatExist)
{
    EXPECT_GT(m_late.number("select count(*) from Z_26ASSETS"), 30);
    EXPECT_EQ(m_late.number("select count(*) from Z_26ASSETS where "
                            "Z_26ALBUMS not in (select Z_PK from ZGENERICALBUM) or "
                            "Z_34ASSETS not in (select Z_PK from ZGENERICASSET)"),
              0);
}

TEST_F(SampleTables, HaveACameraRollAlbumInTheEarlySchemaOnly)
{
    EXPECT_EQ(m_late.number("select count(*) from ZGENERICALBUM where ZKIND = 1000"), 0);
    EXPECT_EQ(m_early.number("select count(*) from ZGENERICALBUM where ZKIND = 1000"), 1);
    const int inFolder =
        m_early.number("select count(*) from ZGENERICASSET where ZDIRECTORY like 'DCIM/%'");
    EXPECT_EQ(m_early.number("select count(*) from Z_15ASSETS join ZGENERICALBUM on "
                             "Z_15ALBUMS = Z_PK where ZKIND = 1000"),
              inFolder);
    EXPECT_LT(inFolder, 60);
}

TEST_F(SampleTables, HaveAlbumsOfEveryKind)
{
    for (const SampleDatabase *database : {&m_late, &m_early}) {
        const QStringList kinds = database->column("select distinct ZKIND from ZGENERICALBUM");
        for (const char *kind :
             {"2", "1505", "1506", "1507", "1550", "1552", "1612", "3571", "3998", "3999", "4000"})
            EXPECT_TRUE(kinds.contains(QLatin1String(kind))) << kind;
        const char *const users = "select count(*) from ZGENERICALBUM where ZKIND = 2 and ";
        const auto count = [&](const char *condition) {
            return database->number((QByteArray(users) + condition).constData());
        };
        EXPECT_GT(count("ZTITLE is not null"), 2);
        EXPECT_EQ(count("ZTITLE is null"), 1);
        EXPECT_EQ(count("ZCACHEDCOUNT = 0"), 1);
    }
    EXPECT_EQ(m_late.number("select count(*) from ZGENERICALBUM where ZTRASHEDSTATE = 1"), 1);
}

TEST_F(SampleTables, CountTheMembersOfEachAlbum)
{
    EXPECT_EQ(m_late.number("select count(*) from ZGENERICALBUM where ZCACHEDCOUNT != "
                            "(select count(*) from Z_26ASSETS where Z_26ALBUMS = Z_PK)"),
              0);
}

TEST_F(SampleTables, HoldUuidsAsDistinctBlobsOf16Bytes)
{
    EXPECT_EQ(m_late.number("select count(*) from ZGENERICASSET "
                            "where typeof(ZUUID) = 'blob' and length(ZUUID) = 16"),
              60);
    EXPECT_EQ(m_late.number("select count(distinct ZUUID) from ZGENERICASSET"), 60);
    EXPECT_EQ(m_late.number("select count(*) from ZGENERICALBUM "
                            "where typeof(ZUUID) != 'blob' or length(ZUUID) != 16"),
              0);
}

TEST_F(SampleTables, DescribeTheStoreInABinaryPlist)
{
    EXPECT_EQ(m_late.number("select length(Z_UUID) from Z_METADATA"), 36);
    const QString plist = m_late.value("select hex(Z_PLIST) from Z_METADATA");
    const QByteArray bytes = QByteArray::fromHex(plist.toLatin1());
    EXPECT_TRUE(bytes.startsWith("bplist00"));
    EXPECT_TRUE(bytes.contains("PLModelVersion"));
}

TEST_F(SampleTables, HavePhotosAndVideosThatReadersAdmitAndSomeThatTheyLeaveOut)
{
    const char *const admitted = "select count(*) from ZGENERICASSET where (ZKIND = 0 and "
                                 "ZSAVEDASSETTYPE in (3, 256, 1, 5)) "
                                 "or (ZKIND = 1 and ZSAVEDASSETTYPE in (256, 3, 0))";
    EXPECT_EQ(m_late.number(admitted), 57);
    EXPECT_EQ(m_late
                  .column("select distinct ZSAVEDASSETTYPE from ZGENERICASSET where ZKIND = 0 "
                          "order by 1")
                  .join(' '),
              QStringLiteral("1 3 4 5 6 256"));
    EXPECT_EQ(m_late
                  .column("select distinct ZSAVEDASSETTYPE from ZGENERICASSET where ZKIND = 1 "
                          "order by 1")
                  .join(' '),
              QStringLiteral("0 1 3 256"));
}

TEST_F(SampleTables, HavePanoramasScreenshotsAndLivePhotos)
{
    EXPECT_EQ(m_late
                  .column("select distinct ZKINDSUBTYPE from ZGENERICASSET where ZKIND = 0 "
                          "order by 1")
                  .join(' '),
              QStringLiteral("0 1 2 10"));
    EXPECT_EQ(m_late.number("select count(*) from ZGENERICASSET "
                            "where ZKINDSUBTYPE = 1 and ZWIDTH >= 3 * ZHEIGHT"),
              3);
}

TEST_F(SampleTables, GiveTheFramesOfABurstOneUuidAndRisingTokens)
{
    const QVector<SqlRow> bursts = m_late.rows(
        "select count(*), count(distinct ZSORTTOKEN), max(ZSORTTOKEN) - min(ZSORTTOKEN) "
        "from ZGENERICASSET where ZAVALANCHEUUID is not null group by ZAVALANCHEUUID");
    EXPECT_EQ(bursts.size(), 3);
    for (const SqlRow &burst : bursts) {
        EXPECT_EQ(burst.at(0), QStringLiteral("3"));
        EXPECT_EQ(burst.at(1), QStringLiteral("3"));
        EXPECT_GT(burst.at(2).toDouble(), 0.0);
    }
    EXPECT_EQ(m_late.number("select count(*) from ZGENERICASSET where ZAVALANCHEUUID is null "
                            "and ZSORTTOKEN is not null"),
              51);
}

TEST_F(SampleTables, GiveVideosADurationInBothTables)
{
    const QVector<SqlRow> films =
        m_late.rows("select T.ZDURATION, A.ZDURATION, A.ZKIND from ZADDITIONALASSETATTRIBUTES T "
                    "join ZGENERICASSET A on T.ZASSET = A.Z_PK order by A.Z_PK");
    QStringList durations;
    for (const SqlRow &film : films) {
        EXPECT_EQ(film.at(0), film.at(1));
        EXPECT_EQ(film.at(0).toDouble() > 0, film.at(2) == QLatin1String("1"));
        durations.append(film.at(0));
    }
    EXPECT_TRUE(durations.contains(QStringLiteral("2.5")));
    EXPECT_TRUE(durations.contains(QStringLiteral("2.49")));
}

TEST_F(SampleTables, PutAssetsIntoTheTrashWithADate)
{
    EXPECT_EQ(m_late.number("select count(*) from ZGENERICASSET where ZTRASHEDSTATE = 1 and "
                            "ZTRASHEDDATE > ZDATECREATED"),
              3);
    EXPECT_EQ(m_late.number("select count(*) from ZGENERICASSET where ZTRASHEDSTATE = 0 and "
                            "ZTRASHEDDATE is not null"),
              0);
}

TEST_F(SampleTables, LetPhotosShareAModificationSecond)
{
    const QStringList counts =
        m_late.column("select count(*) from ZGENERICASSET where ZKIND = 0 "
                      "group by cast(ZMODIFICATIONDATE as integer) having count(*) > 1");
    EXPECT_EQ(counts.size(), 6); // a burst and an import in each of three outings
    EXPECT_EQ(QSet<QString>(counts.begin(), counts.end()), QSet<QString>{QStringLiteral("3")});
    EXPECT_EQ(m_late
                  .column("select distinct typeof(ZMODIFICATIONDATE) from ZGENERICASSET "
                          "order by 1")
                  .join(' '),
              QStringLiteral("integer real"));
}

TEST_F(SampleTables, LeaveSomeSizesUnknown)
{
    EXPECT_GT(m_late.number("select count(*) from ZADDITIONALASSETATTRIBUTES "
                            "where ZORIGINALFILESIZE = 0"),
              0);
    EXPECT_EQ(m_late.number("select count(*) from ZGENERICASSET where Z_PK not in "
                            "(select ZASSET from ZADDITIONALASSETATTRIBUTES)"),
              1);
}

TEST_F(SampleTables, GiveAttributeRowsKeysThatAreNotAlwaysTheAssets)
{
    EXPECT_EQ(m_late.number("select count(*) from ZADDITIONALASSETATTRIBUTES "
                            "where Z_PK != ZASSET"),
              6);
    EXPECT_EQ(m_late.number("select count(*) from ZGENERICASSET A join "
                            "ZADDITIONALASSETATTRIBUTES T on T.Z_PK = A.ZADDITIONALATTRIBUTES "
                            "where T.ZASSET != A.Z_PK"),
              0);
}

TEST_F(SampleTables, KeepTheOrderOfTakingInKeysAndDates)
{
    const QStringList created =
        m_late.column("select ZDATECREATED from ZGENERICASSET order by Z_PK");
    for (int i = 1; i < created.size(); ++i)
        EXPECT_LE(created.at(i - 1).toDouble(), created.at(i).toDouble()) << i;
    EXPECT_GT(m_late.number("select max(Z_PK) from ZGENERICASSET"), 60); // keys of deleted ones
}

} // namespace
