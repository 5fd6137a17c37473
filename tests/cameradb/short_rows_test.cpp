#include "cameradb/camera_db_parse.h"
#include "cameradb/owned_model.h"
#include "support/fake_host.h"
#include "support/photos_database.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <QFileInfo>
#include <QTemporaryDir>

namespace {

// Rows without an end, of one column `x`.
const char *const endless = "with recursive r(x) as (select 1 union all select x + 1 from r) ";

// Honest tables with the shortest rows there can be.
struct ShortRows {
    const char *name;
    const char *table; ///< what follows the columns of keys
    const char *keys;  ///< of row x
};

class ShortMemberships : public testing::TestWithParam<ShortRows>
{
protected:
    ShortMemberships() : host(FakeHost::Disk::Real) { device.localData = folder.path() + '/'; }

    int parse() { return parseCameraDB(&device, model.get()); }

    QTemporaryDir folder;
    FakeHost host;
    FakeIPod device;
    PhotosDatabase database;
    OwnedModel model = emptyModel();
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

} // namespace
