#include "cameradb/local_copy_fixture.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <QFile>

#include <string>
#include <unistd.h>

namespace {

using Keys = QList<quint64>;

struct Library {
    const char *name;
    const char *folder;
};

// Libraries of real systems since iOS 14, read by a parse and by plain SQL.
class RealLibrary : public LocalCopyFixture, public testing::WithParamInterface<Library>
{
protected:
    static std::string deviceFile(const char *suffix)
    {
        return std::string(PHOTOLIB_DEVICES_DIR) + "/" + GetParam().folder +
               "/PhotoData/Photos.sqlite" + suffix;
    }

    // A copy, for opening a database changes the files beside it.
    void copy(const char *suffix)
    {
        QFile file(QString::fromStdString(deviceFile(suffix)));
        if (file.open(QIODevice::ReadOnly))
            host.setHostFile(local(suffix), file.readAll());
    }

    void openPlain()
    {
        sqlite3 *opened = nullptr;
        ASSERT_EQ(sqlite3_open(local().constData(), &opened), SQLITE_OK);
        plain.reset(opened);
    }

    qint64 number(const std::string &sql)
    {
        sqlite3_stmt *stmt = nullptr;
        EXPECT_EQ(sqlite3_prepare_v2(plain.get(), sql.c_str(), -1, &stmt, nullptr), SQLITE_OK)
            << sqlite3_errmsg(plain.get());
        EXPECT_EQ(sqlite3_step(stmt), SQLITE_ROW) << sql;
        const qint64 result = sqlite3_column_int64(stmt, 0);
        sqlite3_finalize(stmt);
        return result;
    }

    void expectLikeItsRow(const Camera_Data &asset)
    {
        const std::string ofAsset = " from ZASSET where Z_PK = " + std::to_string(asset.pk);
        EXPECT_EQ(asset.duration, number("select cast(ZDURATION + 0.5 as integer)" + ofAsset));
        // One of these libraries has a photo of millions of years hence.
        EXPECT_EQ(asset.createDate,
                  static_cast<qint32>(number("select cast(ZDATECREATED as integer)" + ofAsset)));
        EXPECT_EQ(asset.kind, number("select ZKIND" + ofAsset));
        EXPECT_EQ(asset.width, number("select ZWIDTH" + ofAsset));
        EXPECT_EQ(asset.uuid.size(), 36);
        EXPECT_EQ(
            asset.originalFileSize,
            number("select ZORIGINALFILESIZE from ZADDITIONALASSETATTRIBUTES where ZASSET = " +
                   std::to_string(asset.pk)));
        EXPECT_EQ(1,
                  number("select ZFILENAME = '" + asset.fileName.toStdString() +
                         "' and ZDIRECTORY = '" + asset.directory.toStdString() + "'" + ofAsset));
    }

    SqliteOwner plain;
};

TEST_P(RealLibrary, IsReadAsPlainSqlReadsIt)
{
    if (::access(deviceFile("").c_str(), R_OK) != 0)
        GTEST_SKIP() << "there is no " << deviceFile("");
    for (const char *suffix : {"", "-wal", "-shm"})
        copy(suffix);
    ASSERT_EQ(parseLocal(), 1);
    openPlain();
    ASSERT_GT(model->assets.size(), 0);
    EXPECT_EQ(model->assets.size(), number("select count(*) from ZASSET where ZKIND in (0, 1) and "
                                           "ZSAVEDASSETTYPE is not 4"));
    EXPECT_EQ(model->videos.size(),
              number("select count(*) from ZASSET where ZKIND = 1 and ZSAVEDASSETTYPE is not 4"));
    EXPECT_EQ(model->panoramas.size(), number("select count(*) from ZASSET where ZKIND = 0 and "
                                              "ZKINDSUBTYPE = 1 and ZSAVEDASSETTYPE is not 4"));
    EXPECT_EQ(model->albums.size(), number("select count(*) from ZGENERICALBUM where ZKIND = 2 or "
                                           "ZKIND between 1000 and 1599"));
    for (const Camera_Data *asset : qAsConst(model->assets)) {
        SCOPED_TRACE(asset->pk);
        expectLikeItsRow(*asset);
    }
    for (const Camera_Album *album : qAsConst(model->albums)) {
        const std::string key = std::to_string(album->pk);
        EXPECT_EQ(album->assetKeys.size(),
                  number("select count(*) from Z_30ASSETS where Z_30ALBUMS = " + key))
            << key;
    }
}

INSTANTIATE_TEST_SUITE_P(Libraries, RealLibrary,
                         testing::Values(Library{"Of2025", "library-b"},
                                         Library{"Of2026", "library-c"}),
                         rowName<Library>);

} // namespace
