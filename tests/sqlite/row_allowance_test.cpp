#include "sqlite/row_allowance.h"
#include "sqlite/sqlite_connection.h"
#include "support/photos_database.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

namespace {

class RowAllowance : public testing::Test
{
protected:
    RowAllowance() : path(folder.filePath("a.sqlite")) {}

    SqliteOwner openPlainly() const
    {
        sqlite3 *db = nullptr;
        EXPECT_EQ(sqlite3_open(path.toUtf8().constData(), &db), SQLITE_OK);
        return SqliteOwner(db);
    }

    const QTemporaryDir folder;
    const QString path;
};

TEST_F(RowAllowance, CountsTheDatabaseAndItsWriteAheadLog)
{
    const SqliteOwner db = openPlainly();
    runSql(db.get(), "pragma journal_mode=wal; create table t(x);"
                     "insert into t values (zeroblob(100000))");

    const qint64 files = QFileInfo(path).size() + QFileInfo(path + "-wal").size();
    EXPECT_EQ(files, databaseBytes(db.get()));
    EXPECT_GT(files, 100000);
}

TEST_F(RowAllowance, IsTwiceTheFilesAndAMebibyte)
{
    runSql(openPlainly().get(), "create table t(x)");
    const sqlite_connection connection(path);
    const qint64 all = 2 * QFileInfo(path).size() + 1048576;
    row_allowance allowance(connection.get());

    allowance.spend(all - 16);
    EXPECT_FALSE(allowance.isExhausted());
    allowance.spend(0);
    EXPECT_TRUE(allowance.isExhausted());
}

TEST_F(RowAllowance, LeavesTheConnectionsOfOthersAlone)
{
    for (const QString &file : {path, QStringLiteral(":memory:")}) {
        sqlite3 *db = nullptr;
        ASSERT_EQ(sqlite3_open(file.toUtf8().constData(), &db), SQLITE_OK);
        const SqliteOwner owner(db);
        runSql(db, "create table t(x)");
        row_allowance allowance(db);

        allowance.spend(qint64(1) << 40);

        EXPECT_FALSE(allowance.isExhausted());
    }
}

} // namespace
