#include "ios/parse_fixture.h"
#include "ios/thumbnail_fixture.h"
#include "support/library_story.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

using thumbnail::Extent;

namespace {

using Lines = std::vector<std::string>;
using Log = std::vector<LogLine>;

const ThumbType Narrow = {28800, 120, 120, 120};
const ThumbType Wide = {57600, 120, 120, 120};
const QByteArray Path = "/PhotoData/Thumbnails/4031.ithmb";

const QByteArray Uuid = "A92D9C26-3A50-4197-9388-CB5F7DB9FA91";
const QByteArray UuidBytes = QByteArray::fromHex("A92D9C263A5041979388CB5F7DB9FA91");
const QByteArray OtherBytes = QByteArray::fromHex("B13F448594E041CDAF71913095D62E31");
const QByteArray NoBytes(16, '\0');

// Records of the systems that write ZASSET: the trailer begins with the uuid and ends with 0.
QByteArray namedTrailer(Extent extent, const QByteArray &uuid)
{
    QByteArray bytes = uuid;
    thumbnail::append32(bytes, static_cast<quint32>(extent.width));
    thumbnail::append32(bytes, static_cast<quint32>(extent.height));
    thumbnail::append32(bytes, 0);
    return bytes;
}

QByteArray namedRecord(const ThumbType &type, Extent extent, const QByteArray &uuid, int seed = 0)
{
    return thumbnail::framePixels(type, seed) + namedTrailer(extent, uuid);
}

QByteArray zeroedRecord(const ThumbType &type)
{
    return QByteArray(type.dataSize + 28, '\0');
}

// The rows of the image of four bytes a pixel, the bottom one first, filled up with `padding`.
QByteArray wideRows(const QByteArray &pixels, Extent extent, char padding = '\0')
{
    QByteArray rows;
    const int left = (120 - extent.width) / 2;
    const int bottom = (120 - extent.height) / 2;
    for (int y = 0; y < extent.height; ++y) {
        const int stored = 119 - bottom - y;
        for (int x = 0; x < extent.width; ++x)
            rows += pixels.mid(4 * (stored * 120 + left + x), 3);
        rows += QByteArray(static_cast<int>(thumbnail::rowBytes(extent.width)) - extent.width * 3,
                           padding);
    }
    return rows;
}

QByteArray wideImage(Extent extent, int seed = 0)
{
    return thumbnail::imageHeaders(extent) + wideRows(thumbnail::framePixels(Wide, seed), extent);
}

// A manager of a library read from ZASSET, with one photo.
class ZassetThumbnail : public ThumbnailFixture
{
protected:
    ZassetThumbnail()
    {
        manager->m_pCameraDB->hasAssetTable = true;
        photo->uuid = Uuid;
    }

    void install(const QByteArray &records) { host.setDeviceFile(Path, records); }

    void expectImage(const QByteArray &image, quint64 key = Key)
    {
        const Answer answer = request("old", key);
        EXPECT_EQ(answer.result, 0);
        EXPECT_TRUE(thumbnail::sameBytes(answer.out, "old" + image));
        EXPECT_EQ(host.log(), Log());
    }

    void expectNone(quint64 key = Key)
    {
        host.clearRecords();
        const Answer answer = request("old", key);
        EXPECT_EQ(answer.result, -1);
        EXPECT_EQ(answer.out, QByteArray("old"));
        EXPECT_EQ(host.log(), Log{failure("Can not read ithmb info")});
        host.clearRecords();
    }
};

TEST_F(ZassetThumbnail, HasFourBytesAPixelInRecordsOf57600Bytes)
{
    for (const Extent extent : {Extent{120, 120}, {120, 90}, {90, 120}, {119, 61}, {1, 1}}) {
        SCOPED_TRACE(testing::Message() << extent.width << " x " << extent.height);
        manager->m_pThmbFile = nullptr;
        install(namedRecord(Wide, extent, UuidBytes));
        expectImage(wideImage(extent));
    }
}

TEST_F(ZassetThumbnail, HasTwoBytesAPixelInRecordsOf28800Bytes)
{
    const Extent extent = {120, 90};
    install(namedRecord(Narrow, extent, UuidBytes) + zeroedRecord(Narrow));
    expectImage(thumbnail::image(Narrow, extent));
}

TEST_F(ZassetThumbnail, IsFoundInAnyRecordOfEitherLayout)
{
    for (const ThumbType &type : {Narrow, Wide}) {
        SCOPED_TRACE(type.dataSize);
        manager->m_pThmbFile = nullptr;
        QByteArray records;
        for (int i = 0; i < 5; ++i)
            records += namedRecord(type, {60 + i, 50}, i == 3 ? UuidBytes : OtherBytes, i);
        for (int i = 0; i < 64; ++i)
            records += zeroedRecord(type);
        install(records);
        photo->thumbnailIndex = 3;
        expectImage(type == Wide ? wideImage({63, 50}, 3) : thumbnail::image(type, {63, 50}, 3));
    }
}

TEST_F(ZassetThumbnail, IsReadInOneSeekAndTwoReadsOnceTheLayoutIsKnown)
{
    const Extent extent = {120, 90};
    for (const ThumbType &type : {Narrow, Wide}) {
        manager->m_pThmbFile = nullptr;
        install(namedRecord(type, extent, UuidBytes));
        request();
        host.clearRecords();
        request();
        const Lines calls = host.fileCalls();
        ASSERT_EQ(calls.size(), readySearch().size() + 3) << type.dataSize;
        EXPECT_EQ(calls[calls.size() - 2].substr(0, 9), "vFileRead");
        EXPECT_NE(calls[calls.size() - 2].find("-> " + std::to_string(type.dataSize)),
                  std::string::npos);
    }
}

TEST_F(ZassetThumbnail, IsNoneInARecordOfAnotherAsset)
{
    for (const ThumbType &type : {Narrow, Wide}) {
        manager->m_pThmbFile = nullptr;
        install(namedRecord(type, {120, 90}, OtherBytes));
        expectNone();
    }
}

TEST_F(ZassetThumbnail, IsNoneInARecordOfAnotherAssetAlsoWhenTheLayoutIsKnown)
{
    for (const ThumbType &type : {Narrow, Wide}) {
        manager->m_pThmbFile = nullptr;
        install(namedRecord(type, {120, 90}, UuidBytes) + namedRecord(type, {120, 90}, OtherBytes));
        photo->thumbnailIndex = 0;
        EXPECT_EQ(request().result, 0);
        photo->thumbnailIndex = 1;
        expectNone();
    }
}

TEST_F(ZassetThumbnail, IsNoneInARecordThatIsNotInUseYet)
{
    for (const ThumbType &type : {Narrow, Wide}) {
        manager->m_pThmbFile = nullptr;
        install(zeroedRecord(type) + zeroedRecord(type));
        expectNone();
    }
}

TEST_F(ZassetThumbnail, IsNoneInARecordOfAnotherAssetInEveryPackedFile)
{
    for (const thumbnail::Format &format : thumbnail::formats()) {
        SCOPED_TRACE(format.name);
        manager->m_pThmbFile = nullptr;
        host.setDeviceFile(format.path, namedRecord(format.type, {20, 10}, OtherBytes));
        expectNone();
        host.setDeviceFile(format.path, namedRecord(format.type, {20, 10}, UuidBytes));
        manager->m_pThmbFile = nullptr;
        expectImage(thumbnail::image(format.type, {20, 10}));
        host.removeDeviceFile(format.path);
    }
}

TEST_F(ZassetThumbnail, OfTheOlderTableIsWhateverTheRecordHolds)
{
    manager->m_pCameraDB->hasAssetTable = false;
    install(namedRecord(Narrow, {120, 90}, OtherBytes));
    expectImage(thumbnail::image(Narrow, {120, 90}));

    manager->m_pThmbFile = nullptr;
    const QByteArray zeros = zeroedRecord(Narrow);
    install(zeros);
    expectImage(thumbnail::imageHeaders({0, 0}));

    // The record of four bytes a pixel is read as two of two.
    manager->m_pThmbFile = nullptr;
    const QByteArray narrowPart = namedRecord(Narrow, {100, 80}, OtherBytes);
    const QByteArray rest = QByteArray(57600 - narrowPart.size(), '\7');
    install(narrowPart + rest + namedTrailer({120, 90}, UuidBytes));
    expectImage(thumbnail::image(Narrow, {100, 80}));
}

TEST_F(ZassetThumbnail, BelongsToTheUuidInEitherFormAndCase)
{
    install(namedRecord(Wide, {50, 40}, UuidBytes));
    for (const QByteArray &uuid : {Uuid, Uuid.toLower(), UuidBytes}) {
        photo->uuid = uuid;
        expectImage(wideImage({50, 40}));
    }
    photo->uuid = Uuid;
    photo->uuid[0] = 'B';
    expectNone();
}

// --- Records that do not tell whose they are

TEST_F(ZassetThumbnail, HasTwoBytesAPixelWhereNothingTells)
{
    install(namedRecord(Narrow, {120, 90}, NoBytes));
    expectImage(thumbnail::image(Narrow, {120, 90}));
}

TEST_F(ZassetThumbnail, TakesTheLayoutWhoseTrailerDescribesAPicture)
{
    photo->uuid = "no uuid";
    install(namedRecord(Wide, {120, 90}, OtherBytes));
    expectImage(wideImage({120, 90}));
    install(namedRecord(Narrow, {120, 90}, OtherBytes));
    expectImage(thumbnail::image(Narrow, {120, 90}));
}

TEST_F(ZassetThumbnail, TakesTwoBytesAPixelWhereBothTrailersDescribeAPicture)
{
    const QByteArray narrow = namedRecord(Narrow, {100, 80}, NoBytes);
    install(narrow + QByteArray(57600 - narrow.size(), '\7') + namedTrailer({120, 90}, NoBytes));
    expectImage(thumbnail::image(Narrow, {100, 80}));
}

TEST_F(ZassetThumbnail, TrustsTheAssetsOwnUuidMoreThanAPictureOfNobody)
{
    QByteArray wide = namedRecord(Wide, {120, 90}, UuidBytes);
    const QByteArray nobody = namedTrailer({100, 80}, NoBytes);
    wide.replace(28800, nobody.size(), nobody);
    install(wide);
    const Answer answer = request();
    EXPECT_EQ(answer.result, 0);
    EXPECT_EQ(answer.out,
              thumbnail::imageHeaders({120, 90}) + wideRows(wide.left(57600), {120, 90}));
}

struct OddSize {
    const char *name;
    Extent extent;
};

class OddTrailer : public ZassetThumbnail, public testing::WithParamInterface<OddSize>
{
};

TEST_P(OddTrailer, OfNobodyIsNoThumbnail)
{
    for (const ThumbType &type : {Narrow, Wide}) {
        manager->m_pThmbFile = nullptr;
        install(namedRecord(type, GetParam().extent, NoBytes));
        expectNone();
    }
}

TEST_P(OddTrailer, OfTheAssetReadsNothingOutsideTheRecord)
{
    for (const ThumbType &type : {Narrow, Wide}) {
        manager->m_pThmbFile = nullptr;
        install(namedRecord(type, GetParam().extent, UuidBytes));
        const Answer answer = request();
        if (answer.result == 0) {
            EXPECT_EQ(answer.out, thumbnail::imageHeaders(GetParam().extent));
        } else {
            EXPECT_TRUE(answer.out.isEmpty());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, OddTrailer,
                         testing::Values(OddSize{"NoWidth", {0, 5}}, OddSize{"NoHeight", {5, 0}},
                                         OddSize{"TooWide", {60000, 5}},
                                         OddSize{"TooHigh", {5, 60000}},
                                         OddSize{"NegativeWidth", {-1, 5}},
                                         OddSize{"NegativeHeight", {5, -1}},
                                         OddSize{"Largest", {2147483647, 2147483647}}),
                         rowName<OddSize>);

// --- Files that are cut short, and devices that fail

TEST_F(ZassetThumbnail, IsNoneWhereTheWideRecordIsCutShort)
{
    const QByteArray whole = namedRecord(Wide, {120, 90}, UuidBytes);
    for (const int length : {57627, 57601, 57600, 57599, 28828}) {
        manager->m_pThmbFile = nullptr;
        install(whole.left(length));
        expectNone();
    }
}

TEST_F(ZassetThumbnail, SaysWhatIsCutShortBeforeTheFirstTrailer)
{
    install(namedRecord(Wide, {120, 90}, UuidBytes).left(28800));
    EXPECT_EQ(request().result, -1);
    EXPECT_EQ(host.log(), Log{failure("Can not read ithmb info")});
    host.clearRecords();
    install(namedRecord(Wide, {120, 90}, UuidBytes).left(28799));
    EXPECT_EQ(request().result, -1);
    EXPECT_EQ(host.log(), Log{failure("Can not read ithmb data")});
}

TEST_F(ZassetThumbnail, IsAskedForAtTheHighestIndexWithoutHarm)
{
    install(namedRecord(Wide, {120, 90}, UuidBytes));
    for (const qint32 index : {74530, 148990, 2147483647}) {
        photo->thumbnailIndex = index;
        const Answer answer = request("old");
        EXPECT_EQ(answer.result, -1) << index;
        EXPECT_EQ(answer.out, QByteArray("old"));
    }
}

TEST_F(ZassetThumbnail, IsWholeOrNoneWhicheverCallFails)
{
    const Extent extent = {120, 90};
    install(namedRecord(Wide, extent, UuidBytes));
    EXPECT_EQ(request().result, 0);
    const Lines calls = host.fileCalls();
    for (std::size_t i = 0; i < calls.size(); ++i) {
        for (const CallFault &fault : story::waysToFail(calls[i])) {
            // Half of the bytes are read as if it were all: nobody can say what comes of it.
            if (fault.way == CallFault::Way::Feigned || fault.way == CallFault::Way::Lied)
                continue;
            SCOPED_TRACE(testing::Message() << calls[i] << " instead " << fault);
            manager->m_pThmbFile = nullptr;
            std::size_t made = 0;
            host.planFaults([&](const CountedCall &) {
                return made++ == i ? std::make_optional(fault) : std::nullopt;
            });
            const Answer answer = request("old");
            host.planFaults([](const CountedCall &) { return std::nullopt; });
            if (answer.result == 0) {
                EXPECT_TRUE(thumbnail::sameBytes(answer.out, "old" + wideImage(extent)));
            } else {
                EXPECT_EQ(answer.result, -1);
                EXPECT_EQ(answer.out, QByteArray("old"));
            }
            EXPECT_TRUE(thumbnail::sameBytes(request().out, wideImage(extent))) << "the next one";
        }
    }
}

TEST_F(ZassetThumbnail, SurvivesADeviceThatLies)
{
    install(namedRecord(Wide, {120, 90}, UuidBytes));
    EXPECT_EQ(request().result, 0);
    const Lines calls = host.fileCalls();
    for (std::size_t i = 0; i < calls.size(); ++i) {
        for (const CallFault &fault : story::waysToFail(calls[i])) {
            SCOPED_TRACE(testing::Message() << calls[i] << " instead " << fault);
            manager->m_pThmbFile = nullptr;
            std::size_t made = 0;
            host.planFaults([&](const CountedCall &) {
                return made++ == i ? std::make_optional(fault) : std::nullopt;
            });
            const Answer answer = request("old");
            host.planFaults([](const CountedCall &) { return std::nullopt; });
            if (answer.result != 0) {
                EXPECT_EQ(answer.out, QByteArray("old"));
            }
        }
    }
}

// --- The pixels alone

TEST_F(ZassetThumbnail, ConvertsNoByteBesideThePicture)
{
    for (const Extent extent : {Extent{120, 120}, {119, 1}, {1, 119}, {7, 5}, {0, 5}, {5, 0}}) {
        TightBlock pixels(thumbnail::framePixels(Wide), 1);
        TightBlock out(static_cast<std::size_t>(thumbnail::rowBytes(extent.width) * extent.height),
                       3, 0xee);
        const QByteArray info = namedTrailer(extent, UuidBytes);
        PhotoThumb thumb = PhotoThumb();
        thumb.data = pixels.data();
        std::memcpy(thumb.info, info.constData(), sizeof thumb.info);
        ThumbType type = Wide;
        manager->convertThmb2BMP(&thumb, &type, out.data());
        if (extent.width > 0 && extent.height > 0) {
            EXPECT_TRUE(thumbnail::sameBytes(
                out.bytes(), wideRows(thumbnail::framePixels(Wide), extent, '\xee')));
        }
    }
}

// --- Behind a parse

class ThumbnailBehindAParse : public ParseFixture
{
protected:
    QByteArray thumbnailOf(quint64 key)
    {
        QByteArray out;
        manager->getPhotoThumbnail(key, out);
        return out;
    }
};

TEST_F(ThumbnailBehindAParse, HasFourBytesAPixelOnlyWhereTheAssetsAreInZasset)
{
    const Extent extent = {64, 48};
    database.rows.assets = {photoRow(5)};
    database.rows.assets[0].uuid = Uuid.constData();
    host.setDeviceFile(Path, namedRecord(Wide, extent, UuidBytes));
    ASSERT_TRUE(parse());
    EXPECT_NE(thumbnailOf(5), wideImage(extent)) << "the pixels are taken for a trailer";

    renewManager();
    database.schema = Schema::zasset();
    ASSERT_TRUE(parse());
    EXPECT_TRUE(thumbnail::sameBytes(thumbnailOf(5), wideImage(extent)));
}

} // namespace
