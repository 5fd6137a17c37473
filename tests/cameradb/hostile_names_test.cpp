#include "boundary/photo_records.h"
#include "cameradb/local_copy_fixture.h"
#include "ios/photo_manager.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <ctime>
#include <string>
#include <vector>

namespace {

using Keys = QList<quint64>;

const std::clock_t longestParse = 10 * CLOCKS_PER_SEC;
const int manyLetters = 128 * 1024;

// --- Titles, directories, file names and uuids

struct Name {
    const char *name;
    std::string stored;
    QString title; ///< read as UTF-8
    QString file;  ///< read as Latin-1
};

std::string bytesOf(const char *text, std::size_t length)
{
    return {text, length};
}

QString replacements(int count)
{
    return QString(count, QChar(QChar::ReplacementCharacter));
}

const std::vector<Name> names = {
    {"Empty", "", QStringLiteral(""), QStringLiteral("")},
    {"ZeroByte", bytesOf("ab\0cd", 5), QStringLiteral("ab"), QStringLiteral("ab")},
    {"ZeroByteFirst", bytesOf("\0ab", 3), QStringLiteral(""), QStringLiteral("")},
    {"ManyLetters", std::string(manyLetters, 'x'), QString(manyLetters, QLatin1Char('x')),
     QString(manyLetters, QLatin1Char('x'))},
    {"ReplacementCharacter", "\xef\xbf\xbd", replacements(1), QStringLiteral("\u00ef\u00bf\u00bd")},
    {"RightToLeft", "\xe2\x80\xae\xd7\x90", QStringLiteral("\u202e\u05d0"),
     QString::fromLatin1("\xe2\x80\xae\xd7\x90")},
    {"BeyondTheBasicPlane", "\xf0\x9f\x93\xb7", QStringLiteral("\U0001f4f7"),
     QString::fromLatin1("\xf0\x9f\x93\xb7")},
    {"Directives", "%s%n%1%d", QStringLiteral("%s%n%1%d"), QStringLiteral("%s%n%1%d")},
    {"Controls", "a\x1b[2Jb\r\n\t", QStringLiteral("a\u001b[2Jb\r\n\t"),
     QStringLiteral("a\u001b[2Jb\r\n\t")},
    {"Path", "../../etc/passwd", QStringLiteral("../../etc/passwd"),
     QStringLiteral("../../etc/passwd")},
};

// One row of every kind whose name is `stored`.
PhotosDatabase databaseOf(const std::string &stored)
{
    PhotosDatabase database;
    AssetRow photo = photoRow(1, 1);
    photo.directory = stored;
    photo.fileName = stored;
    photo.avalancheUuid = stored;
    photo.uuid = "u" + stored;
    AlbumRow album = albumRow(3);
    album.title = stored;
    album.uuid = stored;
    database.rows.assets = {photo, videoRow(2, 2)};
    database.rows.albums = {album};
    database.rows.libraryUuids = {stored};
    database.join().add(3, 1);
    return database;
}

class HostileName : public LocalCopyFixture, public testing::WithParamInterface<Name>
{
protected:
    void expectNames() const
    {
        const Camera_Data *photo = model->assets.value(1);
        ASSERT_NE(photo, nullptr);
        EXPECT_TRUE(photo->directory == GetParam().file);
        EXPECT_TRUE(photo->fileName == GetParam().file);
        EXPECT_TRUE(photo->name == GetParam().file);
        EXPECT_TRUE(photo->avalancheUUID == GetParam().file);
        EXPECT_TRUE(model->albums.value(3)->title == GetParam().title);
        EXPECT_EQ(model->albums.value(3)->assetKeys, Keys{1});
    }
};

TEST_P(HostileName, IsReadFromADatabaseInUtf8)
{
    EXPECT_EQ(parse(databaseOf(GetParam().stored).bytes()), 1);
    EXPECT_EQ(host.log(), parsedLog());
    expectNames();
    const QByteArray stored = QByteArray::fromStdString(GetParam().stored);
    EXPECT_TRUE(model->assets.value(1)->uuid == "u" + stored);
    EXPECT_TRUE(model->albums.value(3)->uuid == stored);
    EXPECT_TRUE(model->uuid == stored);
    expectHealthyParse();
}

// The same through SQLite's UTF-16, where a uuid that is a text has the bytes of UTF-16.
TEST_P(HostileName, IsReadFromADatabaseInUtf16)
{
    database = databaseOf(GetParam().stored);
    database.schema.utf16 = true;

    EXPECT_EQ(parse(database.bytes()), 1);

    EXPECT_EQ(host.log(), parsedLog());
    expectNames();
    expectHealthyParse();
}

TEST_P(HostileName, IsHandedToTheHost)
{
    host.setDeviceFile("/PhotoData/Photos.sqlite", databaseOf(GetParam().stored).bytes());
    device.accessBlocked = false;
    photo_manager manager(&device);
    ASSERT_TRUE(manager.parseLib());
    albumItem album;
    EXPECT_TRUE(manager.getAlbum(3, &album));
    EXPECT_TRUE(album.name == (GetParam().title.isEmpty() ? QStringLiteral("Album in Device")
                                                          : GetParam().title));
    EXPECT_EQ(album.photoIDs, Keys{1});
    photoItem photo;
    manager.getPhoto(1, &photo);
    EXPECT_TRUE(photo.name == GetParam().file);
}

INSTANTIATE_TEST_SUITE_P(Names, HostileName, testing::ValuesIn(names), rowName<Name>);

// How a decoder replaces broken UTF-8 differs between releases of Qt.
struct Broken {
    const char *name;
    std::string stored;
};

class BrokenUtf8 : public LocalCopyFixture, public testing::WithParamInterface<Broken>
{
};

TEST_P(BrokenUtf8, IsATitleThatTheDecoderMakesOfItAndLatin1Elsewhere)
{
    EXPECT_EQ(parse(databaseOf(GetParam().stored).bytes()), 1);
    EXPECT_EQ(host.log(), parsedLog());
    const QByteArray stored = QByteArray::fromStdString(GetParam().stored);
    EXPECT_EQ(model->albums.value(3)->title, QString::fromUtf8(stored));
    EXPECT_TRUE(model->albums.value(3)->title.contains(QChar(QChar::ReplacementCharacter)));
    EXPECT_EQ(model->assets.value(1)->fileName, QString::fromLatin1(stored));
    expectHealthyParse();
}

INSTANTIATE_TEST_SUITE_P(Sequences, BrokenUtf8,
                         testing::Values(Broken{"Overlong", "a\xc0\xaf"},
                                         Broken{"OverlongZero", "a\xc0\x80"
                                                                "b"},
                                         Broken{"Surrogate", "a\xed\xa0\x80"},
                                         Broken{"Truncated", "a\xe9\x9b"},
                                         Broken{"TruncatedFour", "a\xf0\x9f\x93"},
                                         Broken{"LoneContinuation", "a\xbf"},
                                         Broken{"BeyondUnicode", "a\xf4\x90\x80\x80"},
                                         Broken{"NoByteOfUtf8", "a\xff\xfe"}),
                         rowName<Broken>);

// --- Join tables

class HostileJoinTable : public LocalCopyFixture
{
protected:
    HostileJoinTable()
    {
        database.rows.assets = {photoRow(1, 1)};
        database.rows.albums = {albumRow(3)};
        database.joinTables.clear();
    }

    void addTable(const std::string &name, int asset = 1)
    {
        JoinTable table;
        table.name = name;
        table.add(3, asset);
        database.joinTables.push_back(table);
    }

    // Gives a table a name that no quoting lets through.
    void addTableNamed(const std::string &name)
    {
        addTable("plain");
        std::string hex;
        for (const char byte : QByteArray::fromStdString(name).toHex())
            hex.push_back(byte);
        database.rows.sql.push_back("PRAGMA writable_schema = ON");
        std::string update = "UPDATE sqlite_master SET tbl_name = CAST(x'";
        update.append(hex)
            .append("' AS TEXT), name = CAST(x'")
            .append(hex)
            .append("' AS TEXT), sql = 'CREATE TABLE \"' || replace(CAST(x'");
        update.append(hex).append("' AS TEXT), '\"', '\"\"') || '\" (Z_26ALBUMS, Z_34ASSETS, "
                                  "Z_FOK_34ASSETS)' WHERE name = 'plain'");
        database.rows.sql.push_back(update);
    }

    int parseInBounds()
    {
        const QByteArray bytes = database.bytes();
        const std::clock_t start = std::clock();
        const int result = parse(bytes);
        EXPECT_LT(std::clock() - start, longestParse);
        return result;
    }
};

struct TableName {
    const char *name;
    std::string table;
    QByteArray reason; ///< empty when the table is read
};

class HostileTableName : public HostileJoinTable, public testing::WithParamInterface<TableName>
{
};

TEST_P(HostileTableName, GoesIntoTheStatementAsItStands)
{
    addTableNamed(GetParam().table);
    const LogLine named =
        notice("Got asset table name: " + QByteArray::fromStdString(GetParam().table));
    const bool fails = !GetParam().reason.isEmpty();

    EXPECT_EQ(parseInBounds(), fails ? 0 : 1);

    if (fails)
        EXPECT_EQ(host.log(),
                  failedLog({named, failure("Can not parse camera photos: " + GetParam().reason)}));
    else
        EXPECT_EQ(host.log()[1], named);
    EXPECT_EQ(model->albums.value(3)->assetKeys, fails ? Keys() : Keys{1});
    EXPECT_EQ(model->assets.keys(), Keys{1});
    expectHealthyParse();
}

INSTANTIATE_TEST_SUITE_P(
    Names, HostileTableName,
    testing::Values(TableName{"Apostrophe", "Z_1'ASSETS", "unrecognized token: \"'ASSETS\""},
                    TableName{"Quote", "Z_1\"ASSETS", "unrecognized token: \"\"ASSETS\""},
                    TableName{"Backquote", "Z_1`ASSETS", "unrecognized token: \"`ASSETS\""},
                    TableName{"Bracket", "Z_1[ASSETS", "unrecognized token: \"[ASSETS\""},
                    TableName{"ClosingBracket", "Z_1]ASSETS", "unrecognized token: \"]\""},
                    TableName{"Semicolon", "Z_1;ASSETS", "no such table: Z_1"},
                    TableName{"Comment", "Z_1--ASSETS", "no such table: Z_1"},
                    TableName{"LongComment", "Z_1/*ASSETS", "no such table: Z_1"},
                    TableName{"Percent", "Z_1%ASSETS", "near \"%\": syntax error"},
                    TableName{"Directives", "Z_%s%n%d%ASSETS", "near \"%\": syntax error"},
                    TableName{"Blank", "Z_1 ASSETS", "no such table: Z_1"},
                    TableName{"Newline", "Z_1\nASSETS", "no such table: Z_1"},
                    TableName{"Star", "Z_1*ASSETS", "near \"*\": syntax error"},
                    TableName{"NotAscii",
                              "Z_\xc3\xa9\xe9\x9b\xbb"
                              "ASSETS",
                              ""},
                    TableName{"NoUtf8",
                              "Z_\xff\xc0"
                              "ASSETS",
                              ""}),
    rowName<TableName>);

// Longer texts are not compared with patterns.
const int longestSought = 16384;

// "select * from " and a zero byte leave 1009 of the statement's 1024 bytes to the name.
const int longestName = 1009;

std::string nameOfLength(int length)
{
    return "Z_" + std::string(static_cast<std::size_t>(length) - 8, 'n') + "ASSETS";
}

TEST_F(HostileJoinTable, IsReadWhenItsNameFillsTheStatement)
{
    for (const int length : {longestName - 1, longestName}) {
        database.joinTables.clear();
        addTable(nameOfLength(length));
        EXPECT_EQ(parseInBounds(), 1) << length;
        EXPECT_EQ(host.log(), parsedLog(QByteArray::fromStdString(nameOfLength(length))));
        EXPECT_EQ(model->albums.value(3)->assetKeys, Keys{1}) << length;
    }
    expectHealthyParse();
}

TEST_F(HostileJoinTable, IsSoughtUnderTheNameThatFitsTheStatement)
{
    for (const int length : {longestName + 1, 1024, 5000, longestSought}) {
        const std::string name = nameOfLength(length);
        database.joinTables.clear();
        addTable(name);
        EXPECT_EQ(parseInBounds(), 0) << length;
        const QByteArray cut = QByteArray::fromStdString(name.substr(0, longestName));
        const LogLines expected =
            failedLog({notice("Got asset table name: " + QByteArray::fromStdString(name)),
                       failure("Can not parse camera photos: no such table: " + cut)});
        EXPECT_TRUE(host.log() == expected) << length;
        expectHealthyParse();
    }
}

TEST_F(HostileJoinTable, IsAnotherTableWhoseNameIsTheFirstPartOfItsOwn)
{
    const std::string name = nameOfLength(longestName + 1);
    addTable(name, 7);
    addTable(name.substr(0, longestName), 1);
    EXPECT_EQ(parseInBounds(), 1);
    EXPECT_EQ(model->albums.value(3)->assetKeys, Keys{1});
}

TEST_F(HostileJoinTable, IsNotSoughtUnderALongerName)
{
    addTable("Z_" + std::string(longestSought, '1') + "ASSETS");
    EXPECT_EQ(parseInBounds(), 0);
    EXPECT_EQ(host.log(), failedLog({failure("Can not get the proper assets table name")}));
    expectHealthyParse();
}

TEST_F(HostileJoinTable, IsFoundAmongTenThousand)
{
    addTable("Z_26ASSETS");
    // All share one page, which spares the making of so many.
    database.rows.sql = {"PRAGMA writable_schema = ON",
                         "WITH n (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 10000) "
                         "INSERT INTO sqlite_master SELECT 'table', 'Z_' || i || 'KEYASSETS', 'Z_' "
                         "|| i || 'KEYASSETS', (SELECT rootpage FROM sqlite_master WHERE name = "
                         "'Z_METADATA'), 'CREATE TABLE Z_' || i || 'KEYASSETS (a)' FROM n"};
    EXPECT_EQ(parseInBounds(), 1);
    EXPECT_EQ(host.log(), parsedLog());
    EXPECT_EQ(model->albums.value(3)->assetKeys, Keys{1});
}

TEST_F(HostileJoinTable, MayHaveAnyNumberOfColumns)
{
    for (const int count : {1, 2, 3, 1000, 2000}) {
        JoinTable table;
        table.columns.clear();
        for (int i = 0; i < count - 2; ++i)
            table.columns.push_back("c" + std::to_string(i));
        table.columns.emplace_back("Z_26ALBUMS");
        if (count > 1)
            table.columns.emplace_back("Z_34ASSETS");
        std::vector<SqlValue> row(table.columns.size());
        row[count > 1 ? row.size() - 2 : 0] = 3;
        if (count > 1)
            row.back() = 1;
        table.rows = {row};
        database.joinTables = {table};
        EXPECT_EQ(parseInBounds(), 1) << count;
        EXPECT_EQ(model->albums.value(3)->assetKeys, count > 1 ? Keys{1} : Keys()) << count;
    }
    expectHealthyParse();
}

TEST_F(HostileJoinTable, MayHaveColumnsOfAnyName)
{
    JoinTable table;
    table.columns = {"%s%n",         "'\"`;--",    "a\nb",      std::string(60000, 'c'),
                     "\xc3\xa9\xff", "Z_26ALBUMS", "Z_34ASSETS"};
    table.rows = {{0, 0, 0, 0, 0, 3, 1}};
    database.joinTables = {table};
    EXPECT_EQ(parseInBounds(), 1);
    EXPECT_EQ(model->albums.value(3)->assetKeys, Keys{1});
    expectHealthyParse();
}

} // namespace
