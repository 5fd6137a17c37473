#include "sample/sample_fixture.h"
#include "support/environment.h"

#include <QSet>

namespace {

TEST(SampleWriter, GivesTheSameBytesAndDatesForTheSameArguments)
{
    for (const SampleSchema schema : {SampleSchema::Early, SampleSchema::V13, SampleSchema::V18}) {
        const SampleOptions options = sampleOptions(23, true, 5, schema);
        const WrittenSample first(options);
        quint64 chance = 0;
        sqlite3_randomness(sizeof chance, &chance); // moves SQLite's own generator on
        const WrittenSample second(options);
        EXPECT_EQ(first.files(), second.files());
        EXPECT_EQ(first.contents(), second.contents());
    }
}

TEST(SampleWriter, GivesTheSameBytesInAnotherTimeZone)
{
    const SampleOptions options = sampleOptions(9, true);
    const WrittenSample here(options);
    const Environment zone("TZ", "Pacific/Kiritimati");
    const WrittenSample there(options);
    EXPECT_EQ(here.contents(), there.contents());
}

TEST(SampleWriter, GivesAnotherLibraryForAnotherSeed)
{
    const WrittenSample first(sampleOptions(9, true, 1));
    const WrittenSample second(sampleOptions(9, true, 2));
    ASSERT_EQ(first.files(), second.files());
    for (const QString &name : first.files())
        if (!name.endsWith(QLatin1String("-shm"))) { // the index of equally long logs
            EXPECT_NE(first.bytes(name), second.bytes(name)) << name.toStdString();
        }
}

TEST(SampleWriter, WritesOnlyTheDatabaseAndThePlistWithoutPictures)
{
    const WrittenSample sample(sampleOptions(29, false)); // and one that readers leave out
    const QStringList expected = {QStringLiteral("PhotoData/Photos.sqlite"),
                                  QStringLiteral("PhotoData/Photos.sqlite-shm"),
                                  QStringLiteral("PhotoData/Photos.sqlite-wal"),
                                  QStringLiteral("Photos/Sync/CurrentLibraryUUID.plist")};
    EXPECT_EQ(sample.files(), expected);
    const SampleDatabase database(sample);
    EXPECT_EQ(database.number("select count(*) from ZGENERICASSET"), 30);
    EXPECT_EQ(database.number("select count(*) from ZGENERICASSET where ZWIDTH < 1"), 0);
    EXPECT_GT(database.number("select count(*) from ZADDITIONALASSETATTRIBUTES "
                              "where ZORIGINALFILESIZE > 0"),
              20);
}

TEST(SampleWriter, WritesASyncPlistWithAUuid)
{
    const WrittenSample sample(sampleOptions(0, false));
    const QString plist =
        QString::fromUtf8(sample.bytes(QStringLiteral("Photos/Sync/CurrentLibraryUUID.plist")));
    EXPECT_TRUE(plist.startsWith(QLatin1String("<?xml")));
    const QRegExp entry(QStringLiteral("<key>libraryUUID</key>\\s*<string>"
                                       "[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}</string>"));
    EXPECT_NE(entry.indexIn(plist), -1) << plist.toStdString();
}

TEST(SampleWriter, MakesALibraryWithoutAssets)
{
    const WrittenSample sample(sampleOptions(0, true));
    const SampleDatabase database(sample);
    EXPECT_EQ(database.number("select count(*) from ZGENERICASSET"), 0);
    EXPECT_GT(database.number("select count(*) from ZGENERICALBUM"), 5);
    EXPECT_EQ(QFileInfo(sample.path(QStringLiteral("PhotoData/Thumbnails/120x120.ithmb"))).size(),
              0);
}

TEST(SampleWriter, GivesEveryAssetOfALargeLibraryAPathAndAKeyOfItsOwn)
{
    const WrittenSample sample(sampleOptions(19950, false)); // and 1050 that readers leave out
    const SampleDatabase database(sample);
    EXPECT_EQ(database.number("select count(*) from ZGENERICASSET"), 21000);
    EXPECT_EQ(database.number("select count(distinct ZDIRECTORY || '/' || ZFILENAME) "
                              "from ZGENERICASSET"),
              21000);
    EXPECT_EQ(database.number("select count(distinct ZUUID) from ZGENERICASSET"), 21000);
    EXPECT_EQ(database.value("pragma integrity_check"), QStringLiteral("ok"));
}

} // namespace
