#include "support/library_expectation.h"

#include "support/album_expectation.h"
#include "support/device_sql.h"
#include "support/json.h"
#include "support/thumbnail_expectation.h"

#include <gtest/gtest.h>

#include <QCryptographicHash>
#include <QFileInfo>

namespace {

using Keys = std::vector<quint64>;

// The photos and videos that belong to the library, by key.
std::vector<SqlTexts> admittedAssets(const DeviceSql &database)
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
        optional("ZAVALANCHEUUID", "'0'") + " end, A.ZTHUMBNAILINDEX, " +
        optional("ZKINDSUBTYPE", "0") +
        " from ZGENERICASSET as A"
        " left join ZADDITIONALASSETATTRIBUTES as T on " +
        key +
        " = A.Z_PK"
        " where ((A.ZKIND = 0 and A.ZSAVEDASSETTYPE in (3, 256, 1, 5))"
        "     or (A.ZKIND = 1 and A.ZSAVEDASSETTYPE in (256, 3, 0)))"
        " and A.ZDIRECTORY is not null and A.ZFILENAME is not null and A.ZUUID is not null"
        " order by A.Z_PK");
}

qint64 number(const std::string &text)
{
    return text == "NULL" ? 0 : std::stoll(text);
}

void expectPhoto(const SqlTexts &row, const QByteArray &device, const Json &photo)
{
    SCOPED_TRACE("id " + row[0]);
    const std::string path = row[2].empty() ? row[3] : row[2] + "/" + row[3];
    const QFileInfo file(QString::fromUtf8(device) + '/' + QString::fromStdString(path));
    const bool isThere = file.isFile() && file.size() > 0;
    ASSERT_EQ(std::stoull(row[0]), photo["id"].get<quint64>());
    ASSERT_EQ(isThere, photo["ok"].get<bool>());
    EXPECT_EQ(row[1] == "1" ? 2 : 3, photo["type"].get<int>());
    EXPECT_EQ(row[3], photo["name"].get<std::string>());
    EXPECT_EQ(path, photo["path"].get<std::string>());
    EXPECT_EQ(row[4], photo["uuid"].get<std::string>());
    EXPECT_EQ(number(row[5]), photo["width"].get<int>());
    EXPECT_EQ(number(row[6]), photo["height"].get<int>());
    EXPECT_EQ(number(row[7]), photo["orientation"].get<int>());
    if (!isThere) {
        EXPECT_EQ(10U, photo.size()) << photo.text();
        return;
    }
    EXPECT_EQ("null", photo["createDate"].text());
    EXPECT_EQ(number(row[8]) ? number(row[8]) : file.size(), photo["fileSize"].get<qint64>());
    EXPECT_EQ(number(row[9]), photo["trashedDate"].get<qint64>());
    EXPECT_EQ(row[10] == "NULL" ? "0" : row[10], photo["avalancheUUID"].get<std::string>());
}

std::vector<ExpectedMember> membersFrom(const std::vector<SqlTexts> &assets)
{
    std::vector<ExpectedMember> members;
    for (const auto &row : assets) {
        const bool isVideo = row[1] == "1";
        members.push_back({std::stoull(row[0]), isVideo, !isVideo && row[12] == "1",
                           row[2].find("DCIM") != std::string::npos});
    }
    return members;
}

void expectAlbum(const ExpectedAlbum &album, const Json &json)
{
    SCOPED_TRACE("album " + std::to_string(album.id));
    EXPECT_TRUE(json["ok"].get<bool>());
    EXPECT_EQ(album.id, json["id"].get<quint64>());
    EXPECT_EQ(album.uuid, json["uuid"].get<std::string>());
    EXPECT_EQ(album.name, json["name"].get<std::string>());
    EXPECT_EQ(album.type, json["type"].get<int>());
    EXPECT_EQ(album.photos, json["photoIds"].get<Keys>());
}

void expectAlbums(const std::vector<ExpectedAlbum> &albums, const Json &json)
{
    Keys ids;
    for (const ExpectedAlbum &album : albums)
        ids.push_back(album.id);
    EXPECT_EQ(albums.size(), json["albumCount"].get<std::size_t>());
    EXPECT_EQ(ids, json["albumIds"].get<Keys>());
    ASSERT_EQ(albums.size(), json["albums"].size());
    for (std::size_t i = 0; i < albums.size(); ++i)
        expectAlbum(albums[i], json["albums"][i]);
}

void expectThumbnail(const SqlTexts &row, const QByteArray &device, const Json &json)
{
    SCOPED_TRACE("thumbnail of id " + row[0]);
    const QByteArray path = QByteArray::fromStdString(row[2] + '/' + row[3]);
    const ExpectedThumbnail expected =
        thumbnailInFolder(device, path, static_cast<int>(number(row[11])));
    const QByteArray hash = QCryptographicHash::hash(expected.bytes, QCryptographicHash::Sha256);
    EXPECT_EQ(std::stoull(row[0]), json["id"].get<quint64>());
    EXPECT_EQ(expected.result, json["result"].get<int>());
    EXPECT_EQ(expected.bytes.size(), json["bytes"].get<int>());
    EXPECT_EQ(hash.toHex().toStdString(), json["sha256"].get<std::string>());
}

} // namespace

void expectDumpOfDevice(const QByteArray &device, const QByteArray &dump)
{
    const DeviceSql database(device);
    const std::vector<SqlTexts> assets = admittedAssets(database);
    const std::vector<ExpectedMember> members = membersFrom(assets);
    Keys ids;
    for (const ExpectedMember &member : members)
        ids.push_back(member.id);
    const Json json = Json::parse(dump);
    EXPECT_TRUE(json["parsed"].get<bool>());
    EXPECT_EQ(assets.size(), json["photoCount"].get<std::size_t>());
    EXPECT_EQ(ids, json["photoIds"].get<Keys>());
    ASSERT_EQ(assets.size(), json["photos"].size());
    ASSERT_EQ(assets.size(), json["thumbnails"].size());
    for (std::size_t i = 0; i < assets.size(); ++i) {
        expectPhoto(assets[i], device, json["photos"][i]);
        expectThumbnail(assets[i], device, json["thumbnails"][i]);
    }
    expectAlbums(expectedAlbums(database, members), json);
}
