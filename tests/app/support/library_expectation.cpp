#include "support/library_expectation.h"

#include "support/device_folder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <map>

namespace {

using Json = nlohmann::ordered_json;

/// The rows of a statement, each a list of texts; NULL is "NULL".
using Rows = std::vector<std::vector<std::string>>;

// The device's database, opened from a copy.
class DatabaseCopy
{
public:
    explicit DatabaseCopy(const QByteArray &device)
    {
        for (const char *suffix : {"", "-wal"}) {
            const QByteArray name = QByteArray("Photos.sqlite") + suffix;
            QFile source(QString::fromUtf8(device + "/PhotoData/" + name));
            if (source.open(QIODevice::ReadOnly))
                m_folder.write(name, source.readAll());
        }
        sqlite3 *db = nullptr;
        EXPECT_EQ(SQLITE_OK, sqlite3_open(m_folder.path("Photos.sqlite").constData(), &db));
        m_db.reset(db);
    }

    Rows rows(const std::string &sql) const
    {
        Rows result;
        sqlite3_stmt *stmt = nullptr;
        EXPECT_EQ(SQLITE_OK, sqlite3_prepare_v2(m_db.get(), sql.c_str(), -1, &stmt, nullptr))
            << sqlite3_errmsg(m_db.get());
        while (sqlite3_step(stmt) == SQLITE_ROW)
            result.push_back(row(stmt));
        sqlite3_finalize(stmt);
        return result;
    }

    bool hasColumn(const std::string &table, const std::string &column) const
    {
        return !rows("select 1 from pragma_table_info('" + table + "') where name = '" + column +
                     "'")
                    .empty();
    }

private:
    static std::vector<std::string> row(sqlite3_stmt *stmt)
    {
        std::vector<std::string> result;
        for (int i = 0; i < sqlite3_column_count(stmt); ++i) {
            const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(stmt, i));
            result.emplace_back(text ? text : "NULL");
        }
        return result;
    }

    ScratchFolder m_folder;
    SqliteOwner m_db;
};

// The photos and videos that belong to the library, by key.
Rows admittedAssets(const DatabaseCopy &database)
{
    const auto optional = [&database](const char *column, const char *otherwise) {
        return database.hasColumn("ZGENERICASSET", column) ? "A." + std::string(column)
                                                           : std::string(otherwise);
    };
    // Real databases have no durations there; the sizes then go by the row's own key.
    const bool hasDuration = database.hasColumn("ZADDITIONALASSETATTRIBUTES", "ZDURATION");
    const std::string key = hasDuration ? "T.ZASSET" : "T.Z_PK";
    return database.rows(
        "select A.Z_PK, A.ZKIND, A.ZDIRECTORY, A.ZFILENAME, lower(hex(cast(A.ZUUID as blob))),"
        " A.ZWIDTH, A.ZHEIGHT, A.ZORIENTATION, ifnull(T.ZORIGINALFILESIZE, 0),"
        " cast(" +
        optional("ZTRASHEDDATE", "0") + " as integer), case A.ZKIND when 0 then " +
        optional("ZAVALANCHEUUID", "'0'") +
        " end from ZGENERICASSET as A"
        " left join ZADDITIONALASSETATTRIBUTES as T on " +
        key +
        " = A.Z_PK"
        " where ((A.ZKIND = 0 and A.ZSAVEDASSETTYPE in (3, 256, 1, 5))"
        "     or (A.ZKIND = 1 and A.ZSAVEDASSETTYPE in (256, 3, 0)))"
        " and A.ZDIRECTORY is not null and A.ZFILENAME is not null and A.ZUUID is not null"
        " order by A.Z_PK");
}

// The albums as the library shows them: its own ones, and then those of the device.
std::vector<quint64> expectedAlbums(const DatabaseCopy &database)
{
    std::vector<quint64> ids;
    if (database.rows("select 1 from ZGENERICALBUM where ZKIND = 1000").empty())
        ids.push_back(1000);
    ids.insert(ids.end(), {0xffffff, 0xfffffe, 0xfffffd});
    const bool hasTrash = database.hasColumn("ZGENERICALBUM", "ZTRASHEDSTATE");
    const std::string filter = hasTrash ? " and ifnull(ZTRASHEDSTATE, 0) <> 1" : "";
    for (const auto &row :
         database.rows("select Z_PK from ZGENERICALBUM where ZKIND in (2, 1000, 1550)" + filter +
                       " order by Z_PK"))
        ids.push_back(std::stoull(row[0]));
    return ids;
}

qint64 number(const std::string &text)
{
    return text == "NULL" ? 0 : std::stoll(text);
}

void expectPhoto(const std::vector<std::string> &row, const QByteArray &device, const Json &photo)
{
    SCOPED_TRACE("id " + row[0]);
    const std::string path = row[2].empty() ? row[3] : row[2] + "/" + row[3];
    const QFileInfo file(QString::fromUtf8(device) + '/' + QString::fromStdString(path));
    const bool isThere = file.isFile() && file.size() > 0;
    ASSERT_EQ(std::stoull(row[0]), photo["id"].get<quint64>());
    ASSERT_EQ(isThere, photo["ok"].get<bool>());
    if (!isThere) {
        EXPECT_EQ(2U, photo.size());
        return;
    }
    EXPECT_EQ(row[1] == "1" ? 2 : 3, photo["type"].get<int>());
    EXPECT_EQ(row[3], photo["name"].get<std::string>());
    EXPECT_EQ(path, photo["path"].get<std::string>());
    EXPECT_EQ(row[4], photo["uuid"].get<std::string>());
    EXPECT_EQ(number(row[5]), photo["width"].get<int>());
    EXPECT_EQ(number(row[6]), photo["height"].get<int>());
    EXPECT_EQ(number(row[7]), photo["orientation"].get<int>());
    EXPECT_EQ(number(row[8]) ? number(row[8]) : file.size(), photo["fileSize"].get<qint64>());
    EXPECT_EQ(number(row[9]), photo["trashedDate"].get<qint64>());
    EXPECT_EQ(row[10] == "NULL" ? "0" : row[10], photo["avalancheUUID"].get<std::string>());
}

} // namespace

void expectDumpOfDevice(const QByteArray &device, const QByteArray &dump)
{
    const DatabaseCopy database(device);
    const Rows assets = admittedAssets(database);
    const Json json = Json::parse(dump.toStdString());
    std::vector<quint64> ids;
    for (const auto &row : assets)
        ids.push_back(std::stoull(row[0]));
    EXPECT_TRUE(json["parsed"].get<bool>());
    EXPECT_EQ(assets.size(), json["photoCount"].get<std::size_t>());
    EXPECT_EQ(ids, json["photoIds"].get<std::vector<quint64>>());
    const std::vector<quint64> albums = expectedAlbums(database);
    EXPECT_EQ(albums.size(), json["albumCount"].get<std::size_t>());
    EXPECT_EQ(albums, json["albumIds"].get<std::vector<quint64>>());
    ASSERT_EQ(assets.size(), json["photos"].size());
    for (std::size_t i = 0; i < assets.size(); ++i)
        expectPhoto(assets[i], device, json["photos"][i]);
}
