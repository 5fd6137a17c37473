#include "cameradb/camera_db_parse.h"
#include "cameradb/owned_model.h"
#include "cameradb/read_limits.h"
#include "cameradb/sqlite_connection.h"
#include "support/fake_host.h"
#include "support/photos_database.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <QFileInfo>
#include <QTemporaryDir>

namespace {

// Rows without an end, of one column `x`.
const char *const endless = "with recursive r(x) as (select 1 union all select x + 1 from r) ";

// Databases that no device writes: a parse of them must end, and keep little.
class HostileDatabase : public testing::Test
{
protected:
    HostileDatabase() : host(FakeHost::Disk::Real) { device.localData = folder.path() + '/'; }

    // Replaces `table` by a view over endless rows.
    void replaceByEndlessRows(const std::string &table, const std::string &columns)
    {
        database.rows.sql = {"drop table " + table, "create view " + table + " as " + endless +
                                                        "select " + columns + " from r"};
        bytes = database.bytes();
        host.setDeviceFile("/PhotoData/Photos.sqlite", bytes);
    }

    int parse() { return parseCameraDB(&device, model.get()); }

    QTemporaryDir folder;
    FakeHost host;
    FakeIPod device;
    PhotosDatabase database;
    OwnedModel model = emptyModel();
    QByteArray bytes;
};

TEST_F(HostileDatabase, EndsAfterEndlessAlbums)
{
    replaceByEndlessRows(
        "ZGENERICALBUM",
        "x as Z_PK, null as ZTITLE, 2 as ZKIND, null as ZUUID, 0 as ZTRASHEDSTATE");

    EXPECT_EQ(1, parse());
    // What the files could hold at 16 bytes a row, twice, and a mebibyte.
    EXPECT_LE(model->albums.size(), bytes.size() / 8 + 65537);
    EXPECT_GT(model->albums.size(), 1000);
}

TEST_F(HostileDatabase, EndsAfterEndlessMemberships)
{
    replaceByEndlessRows("Z_26ASSETS", "1 as Z_26ALBUMS, x as Z_34ASSETS");

    EXPECT_EQ(1, parse());
}

TEST_F(HostileDatabase, KeepsNoMoreMembershipsThanItsFilesHold)
{
    database.rows.albums = {albumRow(1)};
    replaceByEndlessRows("Z_26ASSETS", "1 as Z_26ALBUMS, x as Z_34ASSETS");

    EXPECT_EQ(1, parse());
    EXPECT_LE(model->albums.value(1)->assetKeys.size(), bytes.size() / 8 + 65537);
    EXPECT_GT(model->albums.value(1)->assetKeys.size(), 65536);
}

TEST_F(HostileDatabase, EndsAfterEndlessRowsThatItPassesOver)
{
    replaceByEndlessRows("Z_METADATA", "x as Z_VERSION, null as Z_UUID");

    EXPECT_EQ(1, parse());
    EXPECT_TRUE(model->uuid.isEmpty());
}

TEST_F(HostileDatabase, KeepsNoMoreOfAnEndlessUuidThanItsFilesHold)
{
    replaceByEndlessRows("Z_METADATA", "x as Z_VERSION, zeroblob(100000) as Z_UUID");

    EXPECT_EQ(1, parse());
    EXPECT_GT(model->uuid.size(), 0);
    EXPECT_LE(model->uuid.size(), 2 * bytes.size() + 1048576 + 100000);
}

TEST_F(HostileDatabase, KeepsNoMoreTextThanItsFilesHold)
{
    replaceByEndlessRows("ZGENERICALBUM",
                         "x as Z_PK, hex(zeroblob(50000)) as ZTITLE, 2 as ZKIND, null as ZUUID, "
                         "0 as ZTRASHEDSTATE");

    EXPECT_EQ(1, parse());
    EXPECT_GT(model->albums.size(), 0);
    EXPECT_LE(qint64(model->albums.size()) * 100000, 2 * bytes.size() + 1048576 + 100000);
}

// --- Honest ones with the shortest rows there can be

struct ShortRows {
    const char *name;
    const char *table; ///< what follows the columns of keys
    const char *keys;  ///< of row x
};

class ShortMemberships : public HostileDatabase, public testing::WithParamInterface<ShortRows>
{
};

TEST_P(ShortMemberships, AreReadInFull)
{
    const int count = 200000;
    for (int album = 1; album <= 100; ++album)
        database.rows.albums.push_back(albumRow(album));
    database.joinTables.clear();
    database.rows.sql = {
        std::string("create table Z_26ASSETS (Z_26ALBUMS integer, Z_34ASSETS integer") +
            GetParam().table,
        std::string("insert into Z_26ASSETS ") + endless + "select " + GetParam().keys +
            " from r limit " + std::to_string(count)};
    // Nothing between its rows, and already in the work folder.
    const QString path = folder.filePath("Photos.sqlite");
    runSql(database.open().get(), "vacuum into '" + path.toStdString() + "'");
    device.accessBlocked = true;

    EXPECT_EQ(1, parse());

    int kept = 0;
    for (const Camera_Album *album : model->albums)
        kept += album->assetKeys.size();
    EXPECT_EQ(kept, count);
    RecordProperty("BytesPerRow", std::to_string(double(QFileInfo(path).size()) / count));
}

// Numbers 0 and 1 take no bytes of their own, those to 127 one.
INSTANTIATE_TEST_SUITE_P(
    Tables, ShortMemberships,
    testing::Values(ShortRows{"OfOnes", ")", "1, 1"}, ShortRows{"OfOneAlbum", ")", "1, x"},
                    ShortRows{"OfManyAlbums", ")", "1 + x % 100, 1 + x / 100"},
                    ShortRows{"WithoutRowids",
                              ", primary key (Z_26ALBUMS, Z_34ASSETS)) without rowid",
                              "1 + x % 100, 1 + x / 100"}),
    rowName<ShortRows>);

TEST(ReadLimits, CountTheDatabaseAndItsWriteAheadLog)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("grown.sqlite");
    sqlite_connection connection(path);
    ASSERT_TRUE(connection.isOpen());
    runSql(connection.get(), "pragma journal_mode=wal; create table t(x);"
                             "insert into t values (zeroblob(100000))");

    const qint64 files = QFileInfo(path).size() + QFileInfo(path + "-wal").size();
    EXPECT_EQ(files, databaseBytes(connection.get()));
    EXPECT_GT(files, 100000);
}

TEST(ReadLimits, LeaveADatabaseInMemoryAlone)
{
    const SqliteOwner db = PhotosDatabase().open();
    row_allowance allowance(db.get());

    allowance.spend(qint64(1) << 40);

    EXPECT_EQ(0, databaseBytes(db.get()));
    EXPECT_FALSE(allowance.isExhausted());
}

} // namespace
