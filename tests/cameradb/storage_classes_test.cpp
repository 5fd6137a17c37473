#include "cameradb/local_copy_fixture.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace {

using Keys = QList<quint64>;

const qint64 lowest = std::numeric_limits<qint64>::min();
const qint64 highest = std::numeric_limits<qint64>::max();
const double infinity = std::numeric_limits<double>::infinity();

/// One stored value, and what each way to read it yields.
struct Stored {
    const char *name;
    const char *literal;             ///< in SQL
    qint64 whole;                    ///< as a 64-bit integer
    double real;                     ///< as a double
    std::optional<QByteArray> text;  ///< up to the first zero byte; none for NULL
    std::optional<QByteArray> bytes; ///< none where SQLite has no pointer: NULL and no bytes

    /// As a 32-bit integer: the low half.
    qint32 low() const { return static_cast<qint32>(static_cast<quint32>(whole & 0xffffffff)); }
    quint64 key() const { return static_cast<quint64>(static_cast<qint64>(low())); }
    /// Whether `column = number` holds where the column has no type.
    bool equals(int number) const
    {
        return std::string(literal).find_first_of("'xN") == std::string::npos &&
               real == static_cast<double>(number);
    }
};

Stored number(const char *name, const char *literal, qint64 whole, double real,
              const QByteArray &text)
{
    return {name, literal, whole, real, text, text};
}

const std::vector<Stored> classes = {
    {"Null", "NULL", 0, 0, std::nullopt, std::nullopt},
    // SQLite stores what is no number as NULL.
    {"NotANumber", "NULL + (9e999 - 9e999)", 0, 0, std::nullopt, std::nullopt},
    {"Text", "'abc'", 0, 0, "abc", "abc"},
    {"NumericText", "'17.9xyz'", 17, 17.9, "17.9xyz", "17.9xyz"},
    {"HugeNumericText", "'99999999999999999999'", highest, 1e20, "99999999999999999999",
     "99999999999999999999"},
    {"EmptyText", "''", 0, 0, "", std::nullopt},
    {"Blob", "x'00FF41'", 0, 0, "", QByteArray("\x00\xff\x41", 3)},
    {"DigitsBlob", "x'3132'", 12, 12, "12", "12"},
    {"EmptyBlob", "x''", 0, 0, "", std::nullopt},
    number("Fraction", "2.75", 2, 2.75, "2.75"),
    number("NegativeFraction", "-2.75", -2, -2.75, "-2.75"),
    number("WholeReal", "5.0", 5, 5, "5.0"),
    number("HugeReal", "1e300", highest, 1e300, "1.0e+300"),
    number("HugeNegativeReal", "-1e300", lowest, -1e300, "-1.0e+300"),
    number("Infinity", "9e999", highest, infinity, "Inf"),
    number("NegativeInfinity", "-9e999", lowest, -infinity, "-Inf"),
    number("Zero", "0", 0, 0, "0"),
    number("MinusOne", "-1", -1, -1, "-1"),
    number("Lowest", "(-9223372036854775807 - 1)", lowest, -9223372036854775808.0,
           "-9223372036854775808"),
    number("Highest", "9223372036854775807", highest, 9223372036854775808.0, "9223372036854775807"),
    number("TwoToThe31", "2147483648", 2147483648, 2147483648.0, "2147483648"),
    number("TwoToThe32", "4294967296", 4294967296, 4294967296.0, "4294967296"),
    number("TwoToThe32And5", "4294967301", 4294967301, 4294967301.0, "4294967301"),
};

/// A table's columns with the literals of one ordinary row.
using Row = std::map<std::string, std::string>;

struct Column {
    const char *name; ///< table and column
    const char *table;
    const char *column;
};

const std::vector<Column> columns = {
    {"AssetKey", "ZGENERICASSET", "Z_PK"},
    {"AssetKind", "ZGENERICASSET", "ZKIND"},
    {"AssetSavedType", "ZGENERICASSET", "ZSAVEDASSETTYPE"},
    {"AssetHeight", "ZGENERICASSET", "ZHEIGHT"},
    {"AssetWidth", "ZGENERICASSET", "ZWIDTH"},
    {"AssetThumbnailIndex", "ZGENERICASSET", "ZTHUMBNAILINDEX"},
    {"AssetOrientation", "ZGENERICASSET", "ZORIENTATION"},
    {"AssetDirectory", "ZGENERICASSET", "ZDIRECTORY"},
    {"AssetFileName", "ZGENERICASSET", "ZFILENAME"},
    {"AssetModificationDate", "ZGENERICASSET", "ZMODIFICATIONDATE"},
    {"AssetUuid", "ZGENERICASSET", "ZUUID"},
    {"AssetKindSubtype", "ZGENERICASSET", "ZKINDSUBTYPE"},
    {"AssetTrashedDate", "ZGENERICASSET", "ZTRASHEDDATE"},
    {"AssetAvalancheUuid", "ZGENERICASSET", "ZAVALANCHEUUID"},
    {"AssetSortToken", "ZGENERICASSET", "ZSORTTOKEN"},
    {"AttributesKey", "ZADDITIONALASSETATTRIBUTES", "Z_PK"},
    {"AttributesAsset", "ZADDITIONALASSETATTRIBUTES", "ZASSET"},
    {"AttributesDuration", "ZADDITIONALASSETATTRIBUTES", "ZDURATION"},
    {"AttributesFileSize", "ZADDITIONALASSETATTRIBUTES", "ZORIGINALFILESIZE"},
    {"AlbumKey", "ZGENERICALBUM", "Z_PK"},
    {"AlbumKind", "ZGENERICALBUM", "ZKIND"},
    {"AlbumTitle", "ZGENERICALBUM", "ZTITLE"},
    {"AlbumUuid", "ZGENERICALBUM", "ZUUID"},
    {"AlbumTrashedState", "ZGENERICALBUM", "ZTRASHEDSTATE"},
    {"MemberAlbum", "Z_26ASSETS", "Z_26ALBUMS"},
    {"MemberAsset", "Z_26ASSETS", "Z_34ASSETS"},
    {"LibraryVersion", "Z_METADATA", "Z_VERSION"},
    {"LibraryUuid", "Z_METADATA", "Z_UUID"},
};

const std::map<std::string, Row> ordinaryRows = {
    {"ZGENERICASSET",
     {{"Z_PK", "7"},
      {"ZKIND", "0"},
      {"ZSAVEDASSETTYPE", "3"},
      {"ZHEIGHT", "30"},
      {"ZWIDTH", "40"},
      {"ZTHUMBNAILINDEX", "50"},
      {"ZORIENTATION", "6"},
      {"ZDIRECTORY", "'DCIM'"},
      {"ZFILENAME", "'A.JPG'"},
      {"ZMODIFICATIONDATE", "900"},
      {"ZUUID", "x'0A0B'"},
      {"ZKINDSUBTYPE", "2"},
      {"ZTRASHEDDATE", "13"},
      // The albums' column is read only where the assets have one as well.
      {"ZTRASHEDSTATE", "0"},
      {"ZAVALANCHEUUID", "'burst'"},
      {"ZSORTTOKEN", "1.5"}}},
    {"ZADDITIONALASSETATTRIBUTES",
     {{"Z_PK", "7"}, {"ZASSET", "7"}, {"ZDURATION", "2.5"}, {"ZORIGINALFILESIZE", "77"}}},
    {"ZGENERICALBUM",
     {{"Z_PK", "3"},
      {"ZKIND", "2"},
      {"ZTITLE", "'Title'"},
      {"ZUUID", "x'0C'"},
      {"ZTRASHEDSTATE", "0"}}},
    {"Z_26ASSETS", {{"Z_26ALBUMS", "3"}, {"Z_34ASSETS", "7"}}},
    {"Z_METADATA", {{"Z_VERSION", "1"}, {"Z_UUID", "x'0D0E'"}}},
};

/// What the model shall hold, starting with that of the ordinary rows.
struct Expected {
    std::optional<Camera_Data> asset;
    bool isVideo = false;
    std::optional<Camera_Album> album;
    QByteArray library = QByteArray("\x0d\x0e");
    qint32 highestAsset = 7;
    qint32 highestAlbum = 3;
};

Expected ordinary()
{
    Expected expected;
    Camera_Data asset = Camera_Data();
    asset.pk = 7;
    asset.height = 30;
    asset.width = 40;
    asset.thumbnailIndex = 50;
    asset.orientation = 6;
    asset.directory = "DCIM";
    asset.fileName = "A.JPG";
    asset.modificationDate = 900;
    asset.uuid = "\x0a\x0b";
    asset.kindSubtype = 2;
    asset.trashedDate = 13;
    asset.avalancheUUID = "burst";
    asset.sortToken = 1.5;
    asset.duration = 3;
    asset.originalFileSize = 77;
    expected.asset = asset;
    Camera_Album album = Camera_Album();
    album.pk = 3;
    album.kind = 2;
    album.title = "Title";
    album.uuid = "\x0c";
    album.assetKeys = {7};
    expected.album = album;
    return expected;
}

void dropAsset(Expected &expected)
{
    expected.asset.reset();
    expected.highestAsset = 0;
}

/// Highest keys start at 0 and are compared as unsigned numbers.
qint32 maxKeyFromZero(const Stored &key)
{
    return key.key() > 0 ? key.low() : 0;
}

/// Half a second is added and the rest cut off; beyond the range any number will do.
qint32 seconds(double duration)
{
    const double rounded = duration + 0.5;
    if (rounded >= 2147483647.0)
        return std::numeric_limits<qint32>::max();
    if (rounded <= -2147483648.0)
        return std::numeric_limits<qint32>::min();
    return static_cast<qint32>(rounded);
}

using Effect = void (*)(Expected &expected, const Stored &stored);

/// Texts and the uuid: nothing to read rejects the row.
void setText(Expected &expected, QString Camera_Data::*field, const Stored &stored)
{
    if (stored.text)
        (*expected.asset).*field = QString::fromLatin1(*stored.text);
    else
        dropAsset(expected);
}

const std::map<std::string, Effect> effects = {
    {"AssetKey",
     [](Expected &e, const Stored &s) {
         e.asset->pk = s.key();
         e.highestAsset = maxKeyFromZero(s);
         // The attributes and the join table go on naming asset 7.
         e.asset->duration = 0;
         e.asset->originalFileSize = 0;
     }},
    {"AssetKind",
     [](Expected &e, const Stored &s) {
         if (!s.equals(0))
             dropAsset(e);
     }},
    {"AssetSavedType",
     [](Expected &e, const Stored &s) {
         if (!s.equals(3) && !s.equals(256) && !s.equals(1) && !s.equals(5))
             dropAsset(e);
     }},
    {"AssetHeight", [](Expected &e, const Stored &s) { e.asset->height = s.low(); }},
    {"AssetWidth", [](Expected &e, const Stored &s) { e.asset->width = s.low(); }},
    {"AssetThumbnailIndex",
     [](Expected &e, const Stored &s) { e.asset->thumbnailIndex = s.low(); }},
    {"AssetOrientation", [](Expected &e, const Stored &s) { e.asset->orientation = s.low(); }},
    {"AssetDirectory",
     [](Expected &e, const Stored &s) { setText(e, &Camera_Data::directory, s); }},
    {"AssetFileName", [](Expected &e, const Stored &s) { setText(e, &Camera_Data::fileName, s); }},
    {"AssetModificationDate",
     [](Expected &e, const Stored &s) { e.asset->modificationDate = s.low(); }},
    {"AssetUuid",
     [](Expected &e, const Stored &s) {
         if (s.bytes)
             e.asset->uuid = *s.bytes;
         else
             dropAsset(e);
     }},
    {"AssetKindSubtype", [](Expected &e, const Stored &s) { e.asset->kindSubtype = s.low(); }},
    {"AssetTrashedDate", [](Expected &e, const Stored &s) { e.asset->trashedDate = s.whole; }},
    {"AssetAvalancheUuid",
     [](Expected &e, const Stored &s) {
         e.asset->avalancheUUID = QString::fromLatin1(s.text.value_or("0"));
         if (!s.text)
             e.asset->sortToken = 0;
     }},
    {"AssetSortToken", [](Expected &e, const Stored &s) { e.asset->sortToken = s.real; }},
    // The extended query finds the asset by its other column.
    {"AttributesKey", [](Expected &, const Stored &) {}},
    {"AttributesAsset",
     [](Expected &e, const Stored &) {
         // The join by the keys has read the size before.
         e.asset->duration = 0;
     }},
    {"AttributesDuration",
     [](Expected &e, const Stored &s) { e.asset->duration = seconds(s.real); }},
    {"AttributesFileSize",
     [](Expected &e, const Stored &s) { e.asset->originalFileSize = s.whole; }},
    {"AlbumKey",
     [](Expected &e, const Stored &s) {
         e.album->pk = s.key();
         e.album->assetKeys.clear();
         e.highestAlbum = maxKeyFromZero(s);
     }},
    {"AlbumKind",
     [](Expected &e, const Stored &) {
         // None of the classes is one of the kinds.
         e.album.reset();
         e.highestAlbum = 0;
     }},
    {"AlbumTitle",
     [](Expected &e, const Stored &s) {
         e.album->title = s.text ? QString::fromUtf8(*s.text) : QString();
     }},
    {"AlbumUuid",
     [](Expected &e, const Stored &s) { e.album->uuid = s.bytes.value_or(QByteArray()); }},
    {"AlbumTrashedState", [](Expected &e, const Stored &s) { e.album->trashedState = s.low(); }},
    {"MemberAlbum", [](Expected &e, const Stored &) { e.album->assetKeys.clear(); }},
    {"MemberAsset",
     [](Expected &e, const Stored &s) {
         e.album->assetKeys.clear();
         if (s.whole != 0)
             e.album->assetKeys.append(static_cast<quint64>(s.whole));
     }},
    {"LibraryVersion", [](Expected &, const Stored &) {}},
    {"LibraryUuid",
     [](Expected &e, const Stored &s) { e.library = s.bytes.value_or(QByteArray()); }},
};

/// Columns without types, so that SQLite changes no value on its way in.
std::vector<std::string> statementsFor(const std::string &table, const Row &row)
{
    std::string names;
    std::string values;
    for (const auto &[column, literal] : row) {
        names += (names.empty() ? "" : ", ") + column;
        values += (values.empty() ? "" : ", ") + literal;
    }
    std::string create = "CREATE TABLE ";
    std::string insert = "INSERT INTO ";
    create.append(table).append(" (").append(names).append(")");
    insert.append(table).append(" VALUES (").append(values).append(")");
    return {create, insert};
}

class StorageClasses : public LocalCopyFixture, public testing::WithParamInterface<Column>
{
protected:
    StorageClasses()
    {
        Schema &schema = database.schema;
        schema.assets = schema.albums = schema.attributes = false;
        schema.metadata = schema.joinTables = false;
    }

    void store(const Column &column, const Stored &stored)
    {
        database.rows.sql.clear();
        for (const auto &[table, ordinaryRow] : ordinaryRows) {
            Row row = ordinaryRow;
            if (table == column.table)
                row[column.column] = stored.literal;
            for (const std::string &sql : statementsFor(table, row))
                database.rows.sql.push_back(sql);
        }
    }

    void expectModel(const Expected &expected) const
    {
        EXPECT_EQ(model->uuid, expected.library);
        EXPECT_EQ(model->maxAssetPk, expected.highestAsset);
        EXPECT_EQ(model->maxAlbumPk, expected.highestAlbum);
        EXPECT_TRUE(model->videos.isEmpty());
        ASSERT_EQ(model->assets.size(), expected.asset ? 1 : 0);
        ASSERT_EQ(model->albums.size(), expected.album ? 1 : 0);
        if (expected.asset)
            expectAsset(*model->assets.first(), *expected.asset);
        if (expected.album)
            expectAlbum(*model->albums.first(), *expected.album);
    }

private:
    void expectAsset(const Camera_Data &read, const Camera_Data &expected) const
    {
        EXPECT_EQ(model->assets.firstKey(), expected.pk);
        EXPECT_EQ(read.pk, expected.pk);
        EXPECT_EQ(read.kind, 0);
        EXPECT_EQ(read.height, expected.height);
        EXPECT_EQ(read.width, expected.width);
        EXPECT_EQ(read.thumbnailIndex, expected.thumbnailIndex);
        EXPECT_EQ(read.orientation, expected.orientation);
        EXPECT_EQ(read.directory, expected.directory);
        EXPECT_EQ(read.fileName, expected.fileName);
        EXPECT_EQ(read.name, expected.fileName);
        EXPECT_EQ(read.modificationDate, expected.modificationDate);
        EXPECT_EQ(read.uuid, expected.uuid);
        EXPECT_EQ(read.kindSubtype, expected.kindSubtype);
        EXPECT_EQ(read.trashedDate, expected.trashedDate);
        EXPECT_EQ(read.avalancheUUID, expected.avalancheUUID);
        EXPECT_EQ(read.sortToken, expected.sortToken);
        EXPECT_EQ(read.duration, expected.duration);
        EXPECT_EQ(read.originalFileSize, expected.originalFileSize);
    }

    void expectAlbum(const Camera_Album &read, const Camera_Album &expected) const
    {
        EXPECT_EQ(model->albums.firstKey(), expected.pk);
        EXPECT_EQ(read.pk, expected.pk);
        EXPECT_EQ(read.kind, expected.kind);
        EXPECT_EQ(read.title, expected.title);
        EXPECT_EQ(read.title.isNull(), expected.title.isNull());
        EXPECT_EQ(read.uuid, expected.uuid);
        EXPECT_EQ(read.trashedState, expected.trashedState);
        EXPECT_EQ(read.assetKeys, expected.assetKeys);
    }
};

TEST_P(StorageClasses, AreReadAsTheColumnsReaderReadsThem)
{
    for (const Stored &stored : classes) {
        SCOPED_TRACE(stored.name);
        store(GetParam(), stored);
        Expected expected = ordinary();
        effects.at(GetParam().name)(expected, stored);

        EXPECT_EQ(parse(database.bytes()), 1);

        EXPECT_EQ(host.log(), parsedLog());
        expectModel(expected);
    }
    RecordProperty("values", static_cast<int>(classes.size()));
    expectHealthyParse();
}

INSTANTIATE_TEST_SUITE_P(Columns, StorageClasses, testing::ValuesIn(columns),
                         [](const testing::TestParamInfo<Column> &info) {
                             return std::string(info.param.name);
                         });

} // namespace
