#include "classic/photo_database.h"

#include "support/live_heap.h"
#include "support/photo_database_bytes.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <optional>

namespace {

constexpr QSysInfo::Endian byteOrders[] = {QSysInfo::LittleEndian, QSysInfo::BigEndian};

StoredPicture variant(qint32 formatId, qint32 offset, const QString &fileName)
{
    StoredPicture picture;
    picture.formatId = formatId;
    picture.offset = offset;
    picture.size = 22880;
    picture.fileName = fileName;
    picture.width = 130;
    picture.height = 88;
    picture.horizontalPadding = 3;
    picture.verticalPadding = 4;
    return picture;
}

ClassicPhoto photoWithId(quint32 id)
{
    ClassicPhoto photo;
    photo.id = id;
    photo.taken = 3206000000;
    photo.variants = {variant(1015, 0, ":Thumbs:F1015_1.ithmb")};
    return photo;
}

ClassicAlbum albumOf(quint32 id, const QString &name, int type, const QList<quint32> &photoIDs)
{
    ClassicAlbum album;
    album.id = id;
    album.name = name;
    album.type = type;
    album.photoIDs = photoIDs;
    return album;
}

/// Two photos, the first one with all that a photo can have, and two albums.
ClassicLibrary smallLibrary()
{
    ClassicPhoto photo = photoWithId(100);
    photo.originalName = ":Full Resolution:2005:08:06:a.jpg";
    photo.variants += variant(1019, 691200, QString::fromUtf8(":Thumbs:Größe_日本.ithmb"));
    return {{photo, photoWithId(101)},
            {albumOf(1, "Library", 1, {100, 101}),
             albumOf(2, QString::fromUtf8("Grün 🌄"), 2, {101, 100, 101})}};
}

struct ReadResult {
    bool isRead;
    ClassicLibrary library;
    QString error;
};

/// Reads into a library that is not empty, so that one that was left alone shows.
ReadResult readResult(const QByteArray &bytes)
{
    ReadResult result;
    result.library.albums = {albumOf(7, "of before", 2, {})};
    result.isRead = readPhotoDatabase(bytes, &result.library, &result.error);
    return result;
}

ClassicLibrary readLibrary(const QByteArray &bytes)
{
    const ReadResult result = readResult(bytes);
    EXPECT_TRUE(result.isRead) << result.error.toStdString();
    return result.library;
}

void expectDamage(const std::string &error, const QByteArray &bytes)
{
    const ReadResult result = readResult(bytes);
    EXPECT_FALSE(result.isRead);
    EXPECT_EQ(error, result.error.toStdString());
    EXPECT_EQ("album 7 'of before' type 2:\n", describe(result.library));
}

/// A database of `photos` only.
QByteArray photosOnly(const QByteArrayList &photos, const PhotoDatabaseForm &form = {})
{
    const PhotoDatabaseChunks chunks(form);
    return chunks.database({chunks.photoSection(photos)});
}

ClassicPhoto readPhoto(const QByteArray &bytes)
{
    const ClassicLibrary library = readLibrary(bytes);
    EXPECT_EQ(1, library.photos.size());
    return library.photos.value(0);
}

struct FormRow {
    const char *name;
    int longerHeaders;
    int textEncoding;
    bool albumsFirst;
    PhotoDatabaseForm::OtherChunks otherChunks;
};

class PhotoDatabaseOfAnyForm : public testing::TestWithParam<FormRow>
{
};

TEST_P(PhotoDatabaseOfAnyForm, IsReadAsItWasWritten)
{
    for (const QSysInfo::Endian order : byteOrders) {
        SCOPED_TRACE(order);
        const FormRow &row = GetParam();
        const PhotoDatabaseForm form{order, row.longerHeaders, row.textEncoding, row.albumsFirst,
                                     row.otherChunks};
        EXPECT_EQ(describe(smallLibrary()),
                  describe(readLibrary(photoDatabaseBytes(smallLibrary(), form))));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Forms, PhotoDatabaseOfAnyForm,
    testing::Values(FormRow{"Usual", 0, 1, false, PhotoDatabaseForm::None},
                    FormRow{"TextsWithoutEncoding", 0, 0, false, PhotoDatabaseForm::None},
                    FormRow{"TextsInUtf16", 0, 2, false, PhotoDatabaseForm::None},
                    FormRow{"LongerHeaders", 20, 1, false, PhotoDatabaseForm::None},
                    FormRow{"OddlyLongerHeaders", 7, 2, false, PhotoDatabaseForm::None},
                    FormRow{"AlbumsFirst", 0, 1, true, PhotoDatabaseForm::None},
                    FormRow{"UnknownChunksThatCount", 0, 1, false, PhotoDatabaseForm::Counted},
                    FormRow{"UnknownChunksThatDoNotCount", 0, 1, false,
                            PhotoDatabaseForm::Uncounted},
                    FormRow{"AllAtOnce", 64, 2, true, PhotoDatabaseForm::Counted}),
    rowName<FormRow>);

// Written out by hand, so that reader and builder cannot share a mistake.
TEST(PhotoDatabase, HasItsNumbersWhereDevicesPutThem)
{
    const QByteArray photo =
        // mhii: header 0x30, total 0xbc, 1 entry, id 0x64, ..., created 0x12345678
        QByteArray::fromHex("6d686969 30000000 bc000000 01000000 64000000 00000000 00000000"
                            "00000000 00000000 00000000 78563412 00000000") +
        // mhod: header 0x18, total 0x8c, type 2
        QByteArray::fromHex("6d686f64 18000000 8c000000 02000000 00000000 00000000") +
        // mhni: header 0x4c, total 0x74, 1 entry, format 1015, offset 0x5960, size 22880,
        // padding 4 above and 3 on the left, height 88, width 130
        QByteArray::fromHex("6d686e69 4c000000 74000000 01000000 f7030000 60590000 60590000"
                            "0400 0300 5800 8200") +
        QByteArray(0x4c - 36, '\0') +
        // mhod: header 0x18, total 0x28, type 3, padding 1, text of 3 bytes in UTF-8
        QByteArray::fromHex("6d686f64 18000000 28000000 03000001 00000000 00000000 03000000"
                            "01000000 00000000 3a546100");
    const QByteArray list =
        QByteArray::fromHex("6d686c69 0c000000 01000000") + photo; // mhli of 1 photo
    const QByteArray section = // mhsd: header 0x10, total 0xd8, type 1
        QByteArray::fromHex("6d687364 10000000 d8000000 01000000") + list;
    const QByteArray database = // mhfd: header 0x18, total 0xf0, 1 section
        QByteArray::fromHex("6d686664 18000000 f0000000 00000000 02000000 01000000") + section;
    ASSERT_EQ(0xf0, database.size());

    EXPECT_EQ("photo 100 taken 305419896 original ''\n"
              "  format 1015 ':Ta' 22880 bytes at 22880, 130 x 88, padding 3, 4\n",
              describe(readLibrary(database)));
}

TEST(PhotoDatabase, MayHoldNothing)
{
    for (const QSysInfo::Endian order : byteOrders) {
        SCOPED_TRACE(order);
        EXPECT_EQ("", describe(readLibrary(photoDatabaseBytes({}, {order}))));
        EXPECT_EQ("", describe(readLibrary(PhotoDatabaseChunks({order}).database({}))));
    }
}

TEST(PhotoDatabase, MayHaveSectionsThatAreOfNoUse)
{
    const PhotoDatabaseChunks chunks;
    const QByteArray photos = chunks.photoSection({chunks.photo(photoWithId(100))});
    const QByteArray files = chunks.section(3, chunks.chunk("mhlf", 0x5c, {{8, 4, 99}}));
    const QByteArray later = chunks.section(0x1001, "what no one knows");
    const QByteArray database = chunks.database({files, later, photos, files});
    EXPECT_EQ(describe({{photoWithId(100)}, {}}), describe(readLibrary(database)));
}

TEST(PhotoDatabase, TakesNoNoticeOfWhatFollowsIt)
{
    const QByteArray database = photoDatabaseBytes(smallLibrary());
    EXPECT_EQ(describe(smallLibrary()), describe(readLibrary(database + "mhfd or not")));
}

TEST(PhotoDatabase, HasAsManyPhotosAsItAnnounces)
{
    QByteArray database = photoDatabaseBytes(smallLibrary());
    putNumber(&database, chunkOffset(database, "mhli"), {8, 4, 1}, QSysInfo::LittleEndian);
    EXPECT_EQ(1, readLibrary(database).photos.size());
}

TEST(PhotoDatabase, HasTheFirstOfSeveralPhotosWithOneId)
{
    ClassicPhoto other = photoWithId(100);
    other.taken = 1;
    const ClassicLibrary stored{{photoWithId(100), other, photoWithId(99)}, {}};
    const ClassicLibrary expected{{photoWithId(100), photoWithId(99)}, {}};
    EXPECT_EQ(describe(expected), describe(readLibrary(photoDatabaseBytes(stored))));
}

TEST(PhotoDatabase, HasTheFirstOfSeveralAlbumsWithOneId)
{
    const ClassicAlbum first = albumOf(5, "first", 2, {1});
    const ClassicAlbum last = albumOf(4, "last", 2, {});
    const ClassicLibrary stored{{}, {first, albumOf(5, "second", 2, {2}), last}};
    EXPECT_EQ(describe({{}, {first, last}}), describe(readLibrary(photoDatabaseBytes(stored))));
}

TEST(PhotoDatabase, KeepsIdsOfAllBits)
{
    const ClassicLibrary stored{{photoWithId(0xffffffff), photoWithId(0x80000000), photoWithId(0)},
                                {albumOf(0xfffffffe, "a", 255, {0xffffffff, 0x12345678})}};
    EXPECT_EQ(describe(stored), describe(readLibrary(photoDatabaseBytes(stored))));
}

TEST(PhotoDatabase, AlbumsMayBeWithoutANameOrPhotos)
{
    const ClassicLibrary stored{{}, {albumOf(1, QString(), 1, {}), albumOf(2, "", 4, {})}};
    EXPECT_EQ(describe(stored), describe(readLibrary(photoDatabaseBytes(stored))));
}

TEST(PhotoDatabase, AnAlbumsNameIsItsFirstOneAndNoTransition)
{
    const PhotoDatabaseChunks chunks;
    const QByteArray texts =
        chunks.text(2, "Dissolve") + chunks.text(1, "Summer") + chunks.text(1, "Winter");
    const QByteArray album = chunks.chunk("mhba", 0x94, {{12, 4, 3}, {20, 4, 9}}, texts);
    const ClassicLibrary library = readLibrary(chunks.database({chunks.albumSection({album})}));
    EXPECT_EQ("album 9 'Summer' type 0:\n", describe(library));
}

struct DateRow {
    const char *name;
    quint32 created;
    quint32 digitised;
    quint32 headerLength;
    quint32 taken;
};

class PhotoDate : public testing::TestWithParam<DateRow>
{
};

TEST_P(PhotoDate, IsTheOneThatIsRecorded)
{
    const DateRow &row = GetParam();
    for (const QSysInfo::Endian order : byteOrders) {
        QByteArray photo = PhotoDatabaseChunks({order}).chunk("mhii", 0x98, {{16, 4, 100}});
        putNumber(&photo, 0, {40, 4, row.created}, order);
        putNumber(&photo, 0, {44, 4, row.digitised}, order);
        putNumber(&photo, 0, {4, 4, row.headerLength}, order);
        EXPECT_EQ(row.taken, readPhoto(photosOnly({photo}, {order})).taken);
    }
}

INSTANTIATE_TEST_SUITE_P(Dates, PhotoDate,
                         testing::Values(DateRow{"Created", 3206000000, 5, 0x98, 3206000000},
                                         DateRow{"Digitised", 0, 3206000001, 0x98, 3206000001},
                                         DateRow{"Neither", 0, 0, 0x98, 0},
                                         DateRow{"HeaderEndsBehindCreated", 0, 5, 44, 0},
                                         DateRow{"HeaderEndsWithinDigitised", 4, 5, 47, 4},
                                         DateRow{"HeaderEndsBeforeBoth", 4, 5, 40, 0}),
                         rowName<DateRow>);

TEST(PhotoOriginal, MayBeMarkedByItsFormatOnly)
{
    ClassicPhoto expected = photoWithId(100);
    expected.originalName = ":Full Resolution:x.jpg";
    const PhotoDatabaseChunks chunks;
    const QByteArray entry = chunks.picture(2, variant(1, 0, expected.originalName));
    const QByteArray database = photosOnly({chunks.photo(photoWithId(100), {entry})});
    EXPECT_EQ(describe({{expected}, {}}), describe(readLibrary(database)));
}

TEST(PhotoOriginal, IsTheFirstOneWithAName)
{
    const PhotoDatabaseChunks chunks;
    const QByteArrayList entries{chunks.picture(5, variant(1, 0, QString())),
                                 chunks.picture(5, variant(1, 0, ":first.jpg")),
                                 chunks.picture(5, variant(1, 0, ":second.jpg"))};
    const ClassicPhoto photo = readPhoto(photosOnly({chunks.photo(photoWithId(100), entries)}));
    EXPECT_EQ(":first.jpg", photo.originalName);
    EXPECT_EQ(1, photo.variants.size());
}

TEST(PhotoVariants, AreWithoutWhatIsNoPicture)
{
    const PhotoDatabaseChunks chunks;
    const QByteArray attributes = chunks.chunk("mhaf", 0x60, {});
    const QByteArrayList others{chunks.chunk("mhod", 0x18, {{12, 2, 6}}, attributes),
                                chunks.chunk("mhod", 0x18, {{12, 2, 0x202}}, "anything")};
    const ClassicPhoto photo = readPhoto(photosOnly({chunks.photo(photoWithId(100), others)}));
    EXPECT_EQ(describe({{photoWithId(100)}, {}}), describe({{photo}, {}}));
}

TEST(PhotoVariants, MayHaveNegativePadding)
{
    ClassicPhoto photo = photoWithId(100);
    photo.variants[0].horizontalPadding = -3;
    photo.variants[0].verticalPadding = -32768;
    photo.variants[0].width = 32767;
    photo.variants[0].height = -1;
    for (const QSysInfo::Endian order : byteOrders)
        EXPECT_EQ(describe({{photo}, {}}),
                  describe(readLibrary(photoDatabaseBytes({{photo}, {}}, {order}))));
}

struct UnreadableRow {
    const char *name;
    quint32 offset;
    quint32 size;
    const char *fileName;
};

class UnreadableVariant : public testing::TestWithParam<UnreadableRow>
{
};

TEST_P(UnreadableVariant, IsLeftOutAndTheOthersStay)
{
    const UnreadableRow &row = GetParam();
    const PhotoDatabaseChunks chunks;
    StoredPicture unreadable = variant(1024, static_cast<qint32>(row.offset), row.fileName);
    unreadable.size = static_cast<qint32>(row.size);
    const QByteArrayList entries{chunks.picture(2, unreadable),
                                 chunks.picture(2, variant(1036, 0x7fffffff, ":last.ithmb"))};
    const ClassicPhoto photo = readPhoto(photosOnly({chunks.photo(photoWithId(100), entries)}));
    ASSERT_EQ(2, photo.variants.size());
    EXPECT_EQ(1015, photo.variants[0].formatId);
    EXPECT_EQ(1036, photo.variants[1].formatId);
}

INSTANTIATE_TEST_SUITE_P(
    Causes, UnreadableVariant,
    testing::Values(UnreadableRow{"NoName", 0, 100, nullptr},
                    UnreadableRow{"EmptyName", 0, 100, ""},
                    UnreadableRow{"NoBytes", 0, 0, ":a.ithmb"},
                    UnreadableRow{"AByteMoreThan64MiB", 0, (64 << 20) + 1, ":a.ithmb"},
                    UnreadableRow{"TheLargestSize", 0, 0x7fffffff, ":a.ithmb"},
                    UnreadableRow{"TooLargeASize", 0, 0x80000000, ":a.ithmb"},
                    UnreadableRow{"TooLargeAnOffset", 0x80000000, 100, ":a.ithmb"},
                    UnreadableRow{"AllBitsSet", 0xffffffff, 0xffffffff, ":a.ithmb"}),
    rowName<UnreadableRow>);

struct SizeRow {
    const char *name;
    qint32 size;
};

class ReadableVariant : public testing::TestWithParam<SizeRow>
{
};

TEST_P(ReadableVariant, IsListedWithItsSize)
{
    const PhotoDatabaseChunks chunks;
    StoredPicture readable = variant(1024, 0, ":a.ithmb");
    readable.size = GetParam().size;
    const QByteArrayList entries{chunks.picture(2, readable)};
    const ClassicPhoto photo = readPhoto(photosOnly({chunks.photo(photoWithId(100), entries)}));
    ASSERT_EQ(2, photo.variants.size());
    EXPECT_EQ(GetParam().size, photo.variants[1].size);
}

INSTANTIATE_TEST_SUITE_P(Sizes, ReadableVariant,
                         testing::Values(SizeRow{"OneByte", 1},
                                         SizeRow{"AByteLessThan64MiB", (64 << 20) - 1},
                                         SizeRow{"Exactly64MiB", 64 << 20}),
                         rowName<SizeRow>);

/// A name of `length` letters.
QString nameOf(int length)
{
    return QString(length, 'a');
}

constexpr int longestName = 4096; // of a path, for the system

TEST(PhotoVariants, AreWithoutThoseWhoseFilesHaveNamesThatAreTooLong)
{
    const PhotoDatabaseChunks chunks;
    const QByteArrayList entries{chunks.picture(2, variant(1024, 0, nameOf(longestName + 1))),
                                 chunks.picture(2, variant(1036, 0, nameOf(longestName)))};
    const ClassicPhoto photo = readPhoto(photosOnly({chunks.photo(photoWithId(100), entries)}));
    ASSERT_EQ(2, photo.variants.size());
    EXPECT_EQ(nameOf(longestName), photo.variants[1].fileName);
}

TEST(PhotoOriginal, HasNoNameThatIsTooLong)
{
    const PhotoDatabaseChunks chunks;
    const QByteArrayList entries{chunks.picture(5, variant(1, 0, nameOf(longestName + 1))),
                                 chunks.picture(5, variant(1, 0, nameOf(longestName)))};
    const ClassicPhoto photo = readPhoto(photosOnly({chunks.photo(photoWithId(100), entries)}));
    EXPECT_EQ(nameOf(longestName), photo.originalName);
}

TEST(PhotoVariants, ShareTheNamesOfTheirFiles)
{
    const ClassicLibrary stored{{photoWithId(100), photoWithId(101)}, {}};
    const ClassicLibrary library = readLibrary(photoDatabaseBytes(stored));
    ASSERT_EQ(2, library.photos.size());
    EXPECT_EQ(library.photos[0].variants[0].fileName.constData(),
              library.photos[1].variants[0].fileName.constData());
}

struct TextRow {
    const char *name;
    QSysInfo::Endian order;
    int encoding;
    QByteArray stored;
    const char *text; ///< in UTF-8
};

class StoredText : public testing::TestWithParam<TextRow>
{
};

TEST_P(StoredText, IsDecoded)
{
    const TextRow &row = GetParam();
    const PhotoDatabaseChunks chunks({row.order});
    const QByteArray album =
        chunks.chunk("mhba", 0x94, {{12, 4, 1}}, chunks.storedText(1, row.encoding, row.stored));
    const ClassicLibrary library = readLibrary(chunks.database({chunks.albumSection({album})}));
    ASSERT_EQ(1, library.albums.size());
    EXPECT_EQ(row.text, library.albums[0].name.toStdString());
}

INSTANTIATE_TEST_SUITE_P(
    Texts, StoredText,
    testing::Values(
        TextRow{"Utf8", QSysInfo::LittleEndian, 1, "gr\xc3\xbcn", "gr\xc3\xbcn"},
        TextRow{"NotUtf8", QSysInfo::LittleEndian, 1, "gr\xfcn", "gr\xef\xbf\xbdn"},
        TextRow{"Utf8WithAnEnd", QSysInfo::LittleEndian, 0, QByteArray("ab\0cd", 5), "ab"},
        TextRow{"Utf16", QSysInfo::LittleEndian, 2, QByteArray("\xfc\0n\0", 4), "\xc3\xbcn"},
        TextRow{"Utf16WithAnEnd", QSysInfo::LittleEndian, 2, QByteArray("a\0\0\0b\0", 6), "a"},
        TextRow{"Utf16OfBigEndianFile", QSysInfo::BigEndian, 2, QByteArray("\0\xfc\0n", 4),
                "\xc3\xbcn"},
        TextRow{"Utf16OfBigEndianFileLeftLittleEndian", QSysInfo::BigEndian, 2,
                QByteArray("\xfc\0n\0", 4), "\xc3\xbcn"},
        TextRow{"Utf16OfBigEndianFileWithoutAscii", QSysInfo::BigEndian, 2, "\x65\xe5\x67\x2c",
                "日本"},
        TextRow{"Utf16WhoseBytesLookTurned", QSysInfo::LittleEndian, 2,
                QByteArray("\0\x30\0\x31", 4), "\xe3\x80\x80\xe3\x84\x80"}),
    rowName<TextRow>);

struct NoDatabaseRow {
    const char *name;
    QByteArray bytes;
    const char *error;
};

class NoPhotoDatabase : public testing::TestWithParam<NoDatabaseRow>
{
};

TEST_P(NoPhotoDatabase, IsRefused)
{
    expectDamage(GetParam().error, GetParam().bytes);
}

constexpr char noDatabase[] = "this is no photo database: no chunk mhfd at offset 0x0";

INSTANTIATE_TEST_SUITE_P(
    Files, NoPhotoDatabase,
    testing::Values(
        NoDatabaseRow{"Empty", "", "the file is empty"},
        NoDatabaseRow{"PartOfATag", "mhf", noDatabase},
        NoDatabaseRow{"Zeros", QByteArray(4096, '\0'), noDatabase},
        NoDatabaseRow{"Picture", "\xff\xd8\xff\xe0 JFIF and so on", noDatabase},
        NoDatabaseRow{"MusicDatabase", "mhbd and what follows", noDatabase},
        NoDatabaseRow{"OneLetterTurned", "hmfd and what follows", noDatabase},
        NoDatabaseRow{"TagOnly", "mhfd", "the file ends within the chunk at offset 0x0"},
        NoDatabaseRow{"TurnedTagOnly", "dfhm", "the file ends within the chunk at offset 0x0"},
        NoDatabaseRow{"Text", "mhfd is the tag of a photo database, which this is not",
                      "the chunk mhfd at offset 0x0 goes beyond the end of the file"}),
    rowName<NoDatabaseRow>);

/// One chunk of each kind that is read, in the database of `smallLibrary`.
struct ChunkRow {
    const char *name;
    const char *tag;
    int number; ///< how many of its tag come before it
    int offset;
    int neededHeader;
    const char *parent; ///< as messages name what it lies in
    int sizedParent;    ///< offset of the chunk that says where that ends, -1: the file
};

class EachChunk : public testing::TestWithParam<ChunkRow>
{
protected:
    /// Expects an error for the small database with `value` in the chunk's field at `at`.
    void expectDamageBy(quint32 value, int at, const std::string &error) const
    {
        for (const QSysInfo::Endian order : byteOrders) {
            SCOPED_TRACE(order);
            QByteArray database = photoDatabaseBytes(smallLibrary(), {order});
            ASSERT_EQ(GetParam().offset, chunkOffset(database, GetParam().tag, GetParam().number));
            putNumber(&database, GetParam().offset, {at, 4, value}, order);
            expectDamage(error, database);
        }
    }

    bool isList() const { return GetParam().tag[2] == 'l'; }

    std::string chunkName() const
    {
        return QString("the chunk %1 at offset %2").arg(GetParam().tag, hexOffset()).toStdString();
    }

    static QString hexOffset() { return QString("0x%1").arg(GetParam().offset, 0, 16); }
};

TEST_P(EachChunk, MayNotBeCutOffInItsFirstBytes)
{
    const std::string error =
        GetParam().parent +
        QString(" ends within the chunk at offset %1").arg(hexOffset()).toStdString();
    for (const int left : {1, 11}) {
        for (const QSysInfo::Endian order : byteOrders) {
            QByteArray database = photoDatabaseBytes(smallLibrary(), {order});
            const int end = GetParam().offset + left;
            const int parent = GetParam().sizedParent;
            if (parent < 0)
                database.truncate(std::max(end, 4));
            else
                putNumber(&database, parent, {8, 4, static_cast<quint32>(end - parent)}, order);
            expectDamage(error, database);
        }
    }
}

TEST_P(EachChunk, MayNotHaveAHeaderWithoutItsLengths)
{
    for (const quint32 length : {0u, 11u}) {
        expectDamageBy(length, 4,
                       "the header of " + chunkName() + " is too short: " + std::to_string(length) +
                           " bytes instead of 12");
    }
}

TEST_P(EachChunk, MayNotHaveAHeaderWithoutTheFieldsThatAreNeeded)
{
    const int needed = GetParam().neededHeader;
    expectDamageBy(static_cast<quint32>(needed - 1), 4,
                   "the header of " + chunkName() + " is too short: " + std::to_string(needed - 1) +
                       " bytes instead of " + std::to_string(needed));
}

TEST_P(EachChunk, MayNotBeShorterThanItsHeader)
{
    const std::string error = "the header of " + chunkName() + " is longer than the chunk";
    expectDamageBy(0xffffffff, 4, error);
    if (isList())
        return; // it has no length of its own
    for (const quint32 total : {0u, 11u, 23u})
        expectDamageBy(total, 8, error);
}

TEST_P(EachChunk, MayNotGoBeyondWhatItLiesIn)
{
    if (isList())
        return;
    for (const quint32 total : {0x2000u, 0x80000000u, 0xffffffffu})
        expectDamageBy(total, 8, chunkName() + " goes beyond the end of " + GetParam().parent);
}

TEST_P(EachChunk, MayNotBeSomethingElse)
{
    if (GetParam().sizedParent < 0)
        return; // it decides whether the file is a database at all
    const std::string error =
        GetParam().parent + QString(" has no chunk at offset %1").arg(hexOffset()).toStdString();
    for (const quint32 tag : {0u, 0x0169686du, 0x41414141u, 0xffffffffu, 0x69ff686du, 0x6969687au})
        expectDamageBy(tag, 0, error);
}

INSTANTIATE_TEST_SUITE_P(
    Chunks, EachChunk,
    testing::Values(
        ChunkRow{"Database", "mhfd", 0, 0, 24, "the file", -1},
        ChunkRow{"PhotoSection", "mhsd", 0, 0x84, 14, "the chunk mhfd at offset 0x0", 0},
        ChunkRow{"PhotoList", "mhli", 0, 0xe4, 12, "the chunk mhsd at offset 0x84", 0x84},
        ChunkRow{"Photo", "mhii", 0, 0x140, 20, "the chunk mhli at offset 0xe4", 0x84},
        ChunkRow{"Original", "mhod", 0, 0x1d8, 14, "the chunk mhii at offset 0x140", 0x140},
        ChunkRow{"OriginalImage", "mhni", 0, 0x1f0, 16, "the chunk mhod at offset 0x1d8", 0x1d8},
        ChunkRow{"OriginalName", "mhod", 1, 0x23c, 14, "the chunk mhni at offset 0x1f0", 0x1f0},
        ChunkRow{"Variant", "mhod", 2, 0x284, 14, "the chunk mhii at offset 0x140", 0x140},
        ChunkRow{"VariantImage", "mhni", 1, 0x29c, 36, "the chunk mhod at offset 0x284", 0x284},
        ChunkRow{"VariantName", "mhod", 3, 0x2e8, 14, "the chunk mhni at offset 0x29c", 0x29c},
        ChunkRow{"SecondPhoto", "mhii", 1, 0x3c8, 20, "the chunk mhli at offset 0xe4", 0x84},
        ChunkRow{"AlbumSection", "mhsd", 1, 0x500, 14, "the chunk mhfd at offset 0x0", 0},
        ChunkRow{"AlbumList", "mhla", 0, 0x560, 12, "the chunk mhsd at offset 0x500", 0x500},
        ChunkRow{"Album", "mhba", 0, 0x5bc, 31, "the chunk mhla at offset 0x560", 0x500},
        ChunkRow{"AlbumName", "mhod", 8, 0x650, 14, "the chunk mhba at offset 0x5bc", 0x5bc},
        ChunkRow{"AlbumMember", "mhia", 1, 0x6a4, 20, "the chunk mhba at offset 0x5bc", 0x5bc}),
    rowName<ChunkRow>);

struct DamageRow {
    const char *name;
    int chunk; ///< offset in the database of `smallLibrary`
    ChunkNumber number;
    const char *error;
};

class DamagedNumber : public testing::TestWithParam<DamageRow>
{
};

TEST_P(DamagedNumber, IsToldWithItsPlace)
{
    const DamageRow &row = GetParam();
    for (const QSysInfo::Endian order : byteOrders) {
        SCOPED_TRACE(order);
        QByteArray database = photoDatabaseBytes(smallLibrary(), {order});
        putNumber(&database, row.chunk, row.number, order);
        expectDamage(row.error, database);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Counts, DamagedNumber,
    testing::Values(
        DamageRow{"OneSectionTooMany",
                  0,
                  {20, 4, 3},
                  "the chunk mhfd at offset 0x0 announces 3 chunks and holds 2"},
        DamageRow{"MostSections",
                  0,
                  {20, 4, 0xffffffff},
                  "the chunk mhfd at offset 0x0 announces 4294967295 chunks and holds 2"},
        DamageRow{"OnePhotoTooMany",
                  0xe4,
                  {8, 4, 3},
                  "the chunk mhli at offset 0xe4 announces 3 chunks and holds 2"},
        DamageRow{"MostPhotos",
                  0xe4,
                  {8, 4, 0xffffffff},
                  "the chunk mhli at offset 0xe4 announces 4294967295 chunks and holds 2"},
        DamageRow{"OneVariantTooMany",
                  0x140,
                  {12, 4, 4},
                  "the chunk mhii at offset 0x140 announces 4 chunks and holds 3"},
        DamageRow{"MostVariants",
                  0x140,
                  {12, 4, 0xffffffff},
                  "the chunk mhii at offset 0x140 announces 4294967295 chunks and holds 3"},
        DamageRow{"OneAlbumTooMany",
                  0x560,
                  {8, 4, 3},
                  "the chunk mhla at offset 0x560 announces 3 chunks and holds 2"},
        DamageRow{"MostAlbums",
                  0x560,
                  {8, 4, 0xffffffff},
                  "the chunk mhla at offset 0x560 announces 4294967295 chunks and holds 2"},
        DamageRow{"OneMemberTooMany",
                  0x5bc,
                  {16, 4, 3},
                  "the chunk mhba at offset 0x5bc announces 4 chunks and holds 3"},
        DamageRow{"MostMembers",
                  0x5bc,
                  {16, 4, 0xffffffff},
                  "the chunk mhba at offset 0x5bc announces 4294967296 chunks and holds 3"},
        DamageRow{"MostTextsOfAnAlbum",
                  0x5bc,
                  {12, 4, 0xffffffff},
                  "the chunk mhba at offset 0x5bc announces 4294967297 chunks and holds 3"}),
    rowName<DamageRow>);

INSTANTIATE_TEST_SUITE_P(
    Texts, DamagedNumber,
    testing::Values(
        // The text of 33 bytes has a padding of 3.
        DamageRow{"LongerThanItsChunk",
                  0x23c,
                  {24, 4, 37},
                  "the text of the chunk mhod at offset 0x23c is longer than the chunk: "
                  "37 bytes where 36 are left"},
        DamageRow{"OfMostBytes",
                  0x2e8,
                  {24, 4, 0xffffffff},
                  "the text of the chunk mhod at offset 0x2e8 is longer than the chunk: "
                  "4294967295 bytes where 24 are left"},
        DamageRow{"AlbumNameOfMostBytes",
                  0x650,
                  {24, 4, 0x80000000},
                  "the text of the chunk mhod at offset 0x650 is longer than the chunk: "
                  "2147483648 bytes where 8 are left"},
        DamageRow{"ChunkEndsWithinItsFields",
                  0x2e8,
                  {8, 4, 35},
                  "the chunk mhod at offset 0x2e8 is too short for a text"},
        DamageRow{"ChunkEndsBehindItsHeader",
                  0x650,
                  {8, 4, 24},
                  "the chunk mhod at offset 0x650 is too short for a text"},
        DamageRow{"OriginalInAnUnknownEncoding",
                  0x23c,
                  {28, 1, 3},
                  "the text of the chunk mhod at offset 0x23c has the unknown encoding 3"},
        DamageRow{"AlbumNameInAnUnknownEncoding",
                  0x650,
                  {28, 1, 255},
                  "the text of the chunk mhod at offset 0x650 has the unknown encoding 255"},
        DamageRow{"Utf16OfOddLength",
                  0x2e8,
                  {28, 1, 2},
                  "the text of the chunk mhod at offset 0x2e8 has half a letter in its 21 bytes"}),
    rowName<DamageRow>);

constexpr quint32 otherTag = 0x7a7a686d; // "mhzz"

INSTANTIATE_TEST_SUITE_P(
    Kinds, DamagedNumber,
    testing::Values(DamageRow{"PhotoSectionWithoutPhotoList",
                              0xe4,
                              {0, 4, otherTag},
                              "the chunk mhzz at offset 0xe4 is not the list that "
                              "the chunk mhsd at offset 0x84 needs"},
                    DamageRow{"AlbumSectionWithoutAlbumList",
                              0x560,
                              {0, 4, otherTag},
                              "the chunk mhzz at offset 0x560 is not the list that "
                              "the chunk mhsd at offset 0x500 needs"},
                    DamageRow{"PhotosWhereAlbumsBelong",
                              0x84,
                              {12, 2, 2},
                              "the chunk mhli at offset 0xe4 is not the list that "
                              "the chunk mhsd at offset 0x84 needs"},
                    DamageRow{"OriginalWithoutImage",
                              0x1f0,
                              {0, 4, otherTag},
                              "the chunk mhod at offset 0x1d8 holds no image"},
                    DamageRow{"VariantWithoutImage",
                              0x29c,
                              {0, 4, otherTag},
                              "the chunk mhod at offset 0x284 holds no image"}),
    rowName<DamageRow>);

/// What a library may take at most for each byte of a damaged or strange database. A photo
/// of 20 bytes on the disk has 24 in memory, in a list that may be half empty.
constexpr std::size_t heapPerByte = 4;

/// Empty when reading `bytes` goes well or fails as it should, otherwise what is wrong.
std::string wrongWith(const QByteArray &bytes)
{
    const std::size_t before = liveHeapBytes();
    const ReadResult result = readResult(bytes);
    const std::size_t heap = liveHeapBytes() - before;
    if (heap > 4096 + heapPerByte * static_cast<std::size_t>(bytes.size()))
        return "it takes " + std::to_string(heap) + " bytes of memory";
    if (result.isRead)
        return result.error.isEmpty() ? "" : "it is read and has an error";
    if (result.library.albums.size() != 1 || !result.library.photos.isEmpty())
        return "it fails and gives a library";
    if (result.error.contains('\n') || !result.error.contains("at offset 0x"))
        return "it has the error " + result.error.toStdString();
    return "";
}

class DamagedDatabaseBytes : public testing::TestWithParam<QSysInfo::Endian>
{
protected:
    static QByteArray database(int textEncoding)
    {
        ClassicLibrary library = smallLibrary();
        library.photos.removeLast();
        library.photos[0].variants.removeLast();
        library.albums.removeFirst();
        return photoDatabaseBytes(library, {GetParam(), 0, textEncoding});
    }
};

TEST_P(DamagedDatabaseBytes, CutOffAnywhereAreAnError)
{
    const QByteArray whole = database(1);
    ASSERT_EQ("", wrongWith(whole));
    for (int size = 1; size < whole.size(); ++size) {
        ASSERT_EQ("", wrongWith(whole.left(size))) << "the first " << size << " bytes";
        ASSERT_FALSE(readResult(whole.left(size)).isRead) << size;
    }
}

TEST_P(DamagedDatabaseBytes, WithAWrongByteAreReadOrAnError)
{
    const QByteArray whole = database(2);
    for (int i = 0; i < whole.size(); ++i) {
        for (const int value : {0x00, 0x7f, 0x80, 0xff}) {
            QByteArray damaged = whole;
            damaged[i] = static_cast<char>(value);
            ASSERT_EQ("", wrongWith(damaged)) << "byte " << i << " is " << value;
        }
    }
}

TEST_P(DamagedDatabaseBytes, WithAWrongBitAreReadOrAnError)
{
    const QByteArray whole = database(1);
    for (int i = 0; i < whole.size() * 8; ++i) {
        QByteArray damaged = whole;
        damaged[i / 8] = static_cast<char>(damaged[i / 8] ^ 1 << i % 8);
        ASSERT_EQ("", wrongWith(damaged)) << "bit " << i % 8 << " of byte " << i / 8;
    }
}

INSTANTIATE_TEST_SUITE_P(ByteOrders, DamagedDatabaseBytes, testing::ValuesIn(byteOrders),
                         [](const testing::TestParamInfo<QSysInfo::Endian> &info) {
                             return info.param == QSysInfo::BigEndian ? "Big" : "Little";
                         });

TEST(PhotoDatabase, OfTheSmallestChunksTakesLittleMemory)
{
    constexpr int count = 50000;
    const PhotoDatabaseChunks chunks;
    QByteArrayList photos;
    QByteArrayList albums;
    QByteArray members;
    for (quint32 id = 0; id < count; ++id) {
        photos += chunks.chunk("mhii", 20, {{16, 4, id}});
        albums += chunks.chunk("mhba", 31, {{20, 4, id}});
        members += chunks.chunk("mhia", 20, {{16, 4, id}});
    }
    albums += chunks.chunk("mhba", 31, {{16, 4, count}, {20, 4, count}}, members);
    EXPECT_EQ("", wrongWith(chunks.database({chunks.photoSection(photos)})));
    EXPECT_EQ("", wrongWith(chunks.database({chunks.albumSection(albums)})));
}

TEST(PhotoDatabase, SkipsAnyNumberOfUnknownChunks)
{
    constexpr int count = 100000;
    const PhotoDatabaseChunks chunks;
    QByteArrayList others;
    for (int i = 0; i < count; ++i)
        others += chunks.chunk("mhzz", 12, {});
    const QByteArray image = chunks.picture(2, variant(1019, 0, ":a.ithmb")).mid(0x18);
    const QByteArray entry = chunks.chunk("mhod", 0x18, {{12, 2, 2}}, others.join() + image);
    const ClassicPhoto photo = readPhoto(photosOnly({chunks.photo(photoWithId(1), {entry})}));
    EXPECT_EQ(2, photo.variants.size());
}

} // namespace
