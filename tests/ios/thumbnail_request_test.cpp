#include "ios/parse_fixture.h"
#include "ios/thumbnail_fixture.h"
#include "support/allocation_faults.h"
#include "support/live_heap.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

using thumbnail::Extent;
using thumbnail::Format;
using thumbnail::formats;

namespace {

using Lines = std::vector<std::string>;
using Log = std::vector<LogLine>;

const QByteArray Old = "old";
const qint32 Most = std::numeric_limits<qint32>::max();
const qint32 Least = std::numeric_limits<qint32>::min();

// Devices with one packed file, of the smallest format unless a test says otherwise.
class ThumbnailRequest : public ThumbnailFixture
{
protected:
    void addRecord(Extent extent, const Format &format = thumbnail::smallest())
    {
        host.setDeviceFile(format.path, thumbnail::record(format.type, extent));
    }

    // One request, whose answer is a failure that leaves the buffer and logs the line.
    void expectFailure(const LogLine &line)
    {
        host.clearRecords();
        const Answer answer = request(Old);
        EXPECT_EQ(answer.result, -1);
        EXPECT_EQ(answer.out, Old);
        EXPECT_EQ(host.log(), Log{line});
    }

    void expectImage(const Answer &answer, Extent extent, const Format &format, int seed = 0)
    {
        EXPECT_EQ(answer.result, 0);
        EXPECT_TRUE(thumbnail::sameBytes(answer.out, thumbnail::image(format.type, extent, seed)));
    }

    // The calls that look for the packed file and find it as `handle`.
    static Lines fileSearch(const Format &found, const std::string &handle)
    {
        Lines lines;
        for (const Format &format : formats()) {
            const bool isFound = format.path == found.path;
            lines.push_back(openLine(format.path, isFound ? handle : "null"));
            if (isFound)
                break;
        }
        return lines;
    }
};

Lines operator+(Lines left, const Lines &right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

// --- What is asked for.

TEST_F(ThumbnailRequest, IsAnsweredWithNothingBeforeAParse)
{
    photo_manager unparsed(&device);
    QByteArray out = Old;
    EXPECT_EQ(unparsed.getPhotoThumbnail(Key, out), 0);
    EXPECT_EQ(out, Old);
    EXPECT_EQ(host.trace(), Lines());
}

TEST_F(ThumbnailRequest, IsAnsweredWithNothingForAnUnknownKey)
{
    addRecord({4, 2});
    for (const quint64 key : {quint64(0), Key + 1, Key + (quint64(1) << 32), ~quint64(0)}) {
        const Answer answer = request(Old, key);
        EXPECT_EQ(answer.result, 0) << key;
        EXPECT_EQ(answer.out, Old) << key;
    }
    EXPECT_EQ(manager->m_pCameraDB->assets.size(), 1) << "asking adds nothing";
    EXPECT_EQ(host.trace(), Lines());
    EXPECT_EQ(manager->m_pThmbFile, nullptr);
}

TEST_F(ThumbnailRequest, TakesKeysOf64Bits)
{
    addRecord({4, 2});
    const auto key = static_cast<quint64>(-7);
    addAsset(key, 0);
    expectImage(request(QByteArray(), key), {4, 2}, thumbnail::smallest());
}

TEST_F(ThumbnailRequest, LeavesSourceFilesToTheHost)
{
    addRecord({4, 2});
    host.setDeviceFile(readyPath("5005.JPG"), "jpeg");
    for (const quint64 key : {Key, Key + 1}) {
        QByteArray out = Old;
        EXPECT_EQ(manager->getSourcePhoto(key, out), 0);
        EXPECT_EQ(out, Old);
    }
    EXPECT_EQ(host.trace(), Lines());
}

// --- The order of the calls.

TEST_F(ThumbnailRequest, OpensThePackedFileOnceAndReadsARecordInTwoReads)
{
    addRecord({4, 2});
    expectImage(request(), {4, 2}, thumbnail::smallest());
    const Lines reading = {"vFileSeek(file1, 0, 0) -> 0", "vFileRead(file1, 8192) -> 8192",
                           "vFileRead(file1, 28) -> 28"};
    EXPECT_EQ(host.trace(), readySearch() + fileSearch(thumbnail::smallest(), "file1") + reading);

    host.clearRecords();
    expectImage(request(), {4, 2}, thumbnail::smallest());
    EXPECT_EQ(host.trace(), readySearch() + reading);
}

TEST_F(ThumbnailRequest, LooksForNoPackedFileWhenTheReadyOneIsThere)
{
    addRecord({4, 2});
    host.setDeviceFile(readyPath("5005.JPG"), "jpeg");
    const Answer answer = request(Old);
    EXPECT_EQ(answer.result, 0);
    EXPECT_EQ(answer.out, QByteArray("jpeg")) << "the file replaces what the buffer held";
    EXPECT_EQ(host.trace(),
              (Lines{openLine(readyPath("5005.JPG"), "file1"), "vFileSeek(file1, 0, 2) -> 4",
                     "vFileTell(file1) -> 4", "vFileSeek(file1, 0, 0) -> 0",
                     "vFileRead(file1, 4) -> 4", "vFileClose(file1)"}));
    EXPECT_EQ(manager->m_pThmbFile, nullptr);
}

TEST_F(ThumbnailRequest, EmptiesTheBufferForAnEmptyReadyFile)
{
    addRecord({4, 2});
    host.setDeviceFile(readyPath("3507.JPG"), "");
    const Answer answer = request(Old);
    EXPECT_EQ(answer.result, 0);
    EXPECT_TRUE(answer.out.isEmpty());
}

TEST_F(ThumbnailRequest, GivesAReadyFileForAPhotoWithoutARecord)
{
    photo->thumbnailIndex = -1;
    host.setDeviceFile(readyPath("3505.JPG"), "jpeg");
    const Answer answer = request(Old);
    EXPECT_EQ(answer.result, 0);
    EXPECT_EQ(answer.out, QByteArray("jpeg"));
    EXPECT_EQ(host.log(), Log());
}

TEST_F(ThumbnailRequest, LooksForAReadyFileEachTime)
{
    addRecord({4, 2});
    expectImage(request(), {4, 2}, thumbnail::smallest());
    host.setDeviceFile(readyPath("5003.JPG"), "jpeg");
    EXPECT_EQ(request().out, QByteArray("jpeg"));
    host.removeDeviceFile(readyPath("5003.JPG"));
    expectImage(request(), {4, 2}, thumbnail::smallest());
}

// --- Failures.

TEST_F(ThumbnailRequest, FailsForAPhotoAddedInMemory)
{
    addRecord({4, 2});
    for (const qint32 index : {-1, -2, Least}) {
        photo->thumbnailIndex = index;
        expectFailure(notice("This is a newly added photo?"));
        EXPECT_EQ(host.fileCalls(), readySearch()) << index;
        EXPECT_EQ(manager->m_pThmbFile, nullptr) << index;
    }
}

TEST_F(ThumbnailRequest, FailsForAPhotoAddedInMemoryAlsoWithAPackedFileOpen)
{
    addRecord({4, 2});
    request();
    photo->thumbnailIndex = -1;
    expectFailure(notice("This is a newly added photo?"));
    EXPECT_EQ(host.fileCalls(), readySearch());
}

TEST_F(ThumbnailRequest, FailsWithoutAPackedFileAndLooksAgainTheNextTime)
{
    Lines search;
    for (const Format &format : formats())
        search.push_back(openLine(format.path));
    for (int i = 0; i < 2; ++i) {
        expectFailure(failure("Can not decide teh iThmb file"));
        EXPECT_EQ(host.fileCalls(), readySearch() + search);
        EXPECT_EQ(manager->m_pThmbFile, nullptr);
    }
    addRecord({4, 2});
    expectImage(request(), {4, 2}, thumbnail::smallest());
}

TEST_F(ThumbnailRequest, FailsWithoutADevice)
{
    addRecord({4, 2});
    host.setDeviceFile(readyPath("5005.JPG"), "jpeg");
    closeDevice();
    expectFailure(failure("Can not decide teh iThmb file"));
    EXPECT_EQ(host.fileCalls(), Lines());
}

TEST_F(ThumbnailRequest, NamesANewPhotoSoAlsoWithoutADevice)
{
    photo->thumbnailIndex = -1;
    closeDevice();
    expectFailure(notice("This is a newly added photo?"));
}

TEST_F(ThumbnailRequest, NeedsNoDeviceOnceThePackedFileIsOpen)
{
    addRecord({4, 2});
    request();
    closeDevice();
    expectImage(request(), {4, 2}, thumbnail::smallest());
    EXPECT_EQ(host.callCount("vFileOpen"), 0);
}

struct SeekRow {
    std::string name;
    std::function<void(FakeHost &host, const QByteArray &path)> spoil; ///< for the offset 8220
};

std::ostream &operator<<(std::ostream &out, const SeekRow &row)
{
    return out << row.name;
}

SeekRow seekThatAnswers(const std::string &name, qint64 result)
{
    return {name,
            [result](FakeHost &host, const QByteArray &path) { host.lieInSeek(path, result); }};
}

class BadThumbnailSeek : public ThumbnailRequest, public testing::WithParamInterface<SeekRow>
{
};

const std::vector<SeekRow> seekRows = {
    {"Fails", [](FakeHost &host, const QByteArray &path) { host.failSeek(path); }},
    {"StaysAtTheStart", [](FakeHost &host, const QByteArray &path) { host.failSeek(path, 0); }},
    seekThatAnswers("OneTooFar", 8221),
    seekThatAnswers("OneTooNear", 8219),
    seekThatAnswers("RightModulo32Bits", Q_INT64_C(0x100000000) + 8220),
    seekThatAnswers("RightButNegative", -8220),
};

INSTANTIATE_TEST_SUITE_P(Seeks, BadThumbnailSeek, testing::ValuesIn(seekRows), rowName<SeekRow>);

TEST_P(BadThumbnailSeek, FailsTheRequestBeforeAnyRead)
{
    const Format &format = thumbnail::smallest();
    const QByteArray record = thumbnail::record(format.type, {4, 2});
    host.setDeviceFile(format.path, record + record);
    GetParam().spoil(host, format.path);
    photo->thumbnailIndex = 1;
    expectFailure(failure("Can seek to offset 8220 while getting ithmb"));
    EXPECT_EQ(host.callCount("vFileSeek"), 1);
    EXPECT_EQ(host.callCount("vFileRead"), 0);
    EXPECT_EQ(host.openHandles(), (Lines{"dev1", "file1"}));
}

struct ReadRow {
    std::string name;
    std::function<void(FakeHost &host, const QByteArray &path)> spoil;
    const char *message;
    int reads;
};

std::ostream &operator<<(std::ostream &out, const ReadRow &row)
{
    return out << row.name;
}

const char *const NoData = "Can not read ithmb data";
const char *const NoInfo = "Can not read ithmb info";

class BadThumbnailRead : public ThumbnailRequest, public testing::WithParamInterface<ReadRow>
{
};

const std::vector<ReadRow> readRows = {
    {"DataShortByOne",
     [](FakeHost &host, const QByteArray &path) { host.shortenRead(path, 1, 8191); }, NoData, 1},
    {"NoData", [](FakeHost &host, const QByteArray &path) { host.shortenRead(path, 1, 0); }, NoData,
     1},
    {"DataOfNegativeCount", [](FakeHost &host, const QByteArray &path) { host.failRead(path, 1); },
     NoData, 1},
    {"DataOfLeastCount",
     [](FakeHost &host, const QByteArray &path) { host.failRead(path, 1, Least); }, NoData, 1},
    {"TrailerShortByOne",
     [](FakeHost &host, const QByteArray &path) { host.shortenRead(path, 2, 27); }, NoInfo, 2},
    {"NoTrailer", [](FakeHost &host, const QByteArray &path) { host.shortenRead(path, 2, 0); },
     NoInfo, 2},
    {"TrailerOfNegativeCount",
     [](FakeHost &host, const QByteArray &path) { host.failRead(path, 2); }, NoInfo, 2},
    {"TrailerOfTooMany",
     [](FakeHost &host, const QByteArray &path) { host.lieInRead(path, 2, 29); }, NoInfo, 2},
};

INSTANTIATE_TEST_SUITE_P(Reads, BadThumbnailRead, testing::ValuesIn(readRows), rowName<ReadRow>);

TEST_P(BadThumbnailRead, FailsTheRequestButNotTheNextOne)
{
    addRecord({4, 2});
    GetParam().spoil(host, thumbnail::smallest().path);
    expectFailure(failure(GetParam().message));
    EXPECT_EQ(host.callCount("vFileRead"), GetParam().reads);
    EXPECT_EQ(host.callCount("vFileClose"), 0);

    expectImage(request(), {4, 2}, thumbnail::smallest());
}

TEST_F(ThumbnailRequest, FailsForARecordThatTheFileEndsBeforeOrIn)
{
    const Format &format = thumbnail::smallest();
    const QByteArray record = thumbnail::record(format.type, {4, 2});
    photo->thumbnailIndex = 1;
    host.setDeviceFile(format.path, record);
    expectFailure(failure(NoData));
    host.setDeviceFile(format.path, record + record.left(8191));
    expectFailure(failure(NoData));
    host.setDeviceFile(format.path, record + record.left(8192));
    expectFailure(failure(NoInfo));
    host.setDeviceFile(format.path, record + record.left(8219));
    expectFailure(failure(NoInfo));
    host.setDeviceFile(format.path, record + record);
    expectImage(request(), {4, 2}, format);
}

// --- Which record is read.

TEST_F(ThumbnailRequest, GivesEachPhotoItsRecord)
{
    const Format &format = thumbnail::smallest();
    QByteArray file;
    for (int index = 0; index < 5; ++index) {
        file += thumbnail::record(format.type, {10 + index, 20 - index}, index);
        addAsset(static_cast<quint64>(100 + index), index);
    }
    host.setDeviceFile(format.path, file);
    for (const int index : {4, 0, 3, 3, 1, 2}) {
        expectImage(request(QByteArray(), static_cast<quint64>(100 + index)),
                    {10 + index, 20 - index}, format, index);
    }
}

struct OffsetRow {
    std::string name;
    qint32 index;
    qint64 offset; ///< of the record in a file of the largest format
};

std::ostream &operator<<(std::ostream &out, const OffsetRow &row)
{
    return out << row.name;
}

class ThumbnailOffset : public ThumbnailRequest, public testing::WithParamInterface<OffsetRow>
{
};

const std::vector<OffsetRow> offsetRows = {
    {"First", 0, 0},
    {"Second", 1, 223132},
    {"Beyond31Bits", 9625, 2147645500},
    {"LastBeforeTheWrap", 19248, 4294844736},
    {"FirstAfterTheWrap", 19249, 100572},
    {"SecondAfterTheWrap", 19250, 323704},
    {"AfterASecondWrap", 38498, 201144},
    {"LastIndex", 2147483647, 4294744164},
};

INSTANTIATE_TEST_SUITE_P(Records, ThumbnailOffset, testing::ValuesIn(offsetRows),
                         rowName<OffsetRow>);

TEST_P(ThumbnailOffset, IsThatOfTheRecordModulo32Bits)
{
    const Format &format = thumbnail::largest();
    host.setDeviceFile(format.path, "");
    host.failSeek(format.path, -5);
    photo->thumbnailIndex = GetParam().index;
    const std::string offset = std::to_string(GetParam().offset);
    expectFailure(failure("Can seek to offset " + QByteArray::fromStdString(offset) +
                          " while getting ithmb"));
    EXPECT_EQ(host.fileCalls().back(), "vFileSeek(file1, " + offset + ", 0) -> -5");
}

TEST_F(ThumbnailRequest, ReadsAtTheWrappedOffset)
{
    const Format &format = thumbnail::largest();
    host.setDeviceFile(format.path,
                       QByteArray(100572, '\x55') + thumbnail::record(format.type, {332, 332}, 3));
    photo->thumbnailIndex = 19249;
    expectImage(request(), {332, 332}, format, 3);
    photo->thumbnailIndex = 19248;
    expectFailure(failure(NoData));
}

// --- The image.

// Numbers as the headers hold them, in hexadecimal, the lowest byte first.
struct HeaderRow {
    std::string name;
    std::size_t format;
    Extent extent;
    const char *fileSize;
    const char *width;
    const char *height;
    const char *imageSize;
};

std::ostream &operator<<(std::ostream &out, const HeaderRow &row)
{
    return out << row.name;
}

QByteArray headersOf(const HeaderRow &row)
{
    const QByteArray nothing = "00000000";
    const QByteArray fileHeader = QByteArray("424d") + row.fileSize + nothing + "36000000";
    const QByteArray sizes = QByteArray("28000000") + row.width + row.height;
    return fileHeader + sizes + "0100" + "1800" + nothing + row.imageSize + nothing.repeated(4);
}

class ThumbnailHeaders : public ThumbnailRequest, public testing::WithParamInterface<HeaderRow>
{
};

const std::vector<HeaderRow> headerRows = {
    {"Small", 7, {64, 64}, "36300000", "40000000", "40000000", "00300000"},
    {"LowPicture", 4, {120, 90}, "c67e0000", "78000000", "5a000000", "907e0000"},
    {"Large", 0, {332, 332}, "e60b0500", "4c010000", "4c010000", "b00b0500"},
    {"RowsFilledUp", 7, {5, 3}, "66000000", "05000000", "03000000", "30000000"},
    {"OnePixel", 7, {1, 1}, "3a000000", "01000000", "01000000", "04000000"},
    {"NegativeHeight", 7, {64, -1}, "76ffffff", "40000000", "ffffffff", "40ffffff"},
    {"NoHeight", 7, {64, 0}, "36000000", "40000000", "00000000", "00000000"},
};

INSTANTIATE_TEST_SUITE_P(Pictures, ThumbnailHeaders, testing::ValuesIn(headerRows),
                         rowName<HeaderRow>);

TEST_P(ThumbnailHeaders, AreThoseOfABmpFile)
{
    addRecord(GetParam().extent, formats()[GetParam().format]);
    const Answer answer = request();
    EXPECT_EQ(answer.result, 0);
    EXPECT_EQ(answer.out.left(54).toHex(), headersOf(GetParam()));
}

TEST_F(ThumbnailRequest, GivesAnImageOfTheHeadersAndTheRows)
{
    for (const Extent extent :
         {Extent{120, 90}, Extent{120, 120}, Extent{119, 1}, Extent{1, 119}}) {
        addRecord(extent, thumbnail::middle());
        const Answer answer = request();
        EXPECT_EQ(answer.out.size(), 54 + thumbnail::rowBytes(extent.width) * extent.height);
        expectImage(answer, extent, thumbnail::middle());
    }
}

TEST_F(ThumbnailRequest, AppendsTheImageToWhatTheBufferHolds)
{
    addRecord({5, 3});
    const QByteArray image = thumbnail::image(thumbnail::smallest().type, {5, 3});
    Answer answer = request(Old);
    EXPECT_EQ(answer.result, 0);
    EXPECT_TRUE(thumbnail::sameBytes(answer.out, Old + image));
    answer = request(answer.out);
    EXPECT_EQ(answer.result, 0);
    EXPECT_TRUE(thumbnail::sameBytes(answer.out, Old + image + image));
}

TEST_F(ThumbnailRequest, FillsRowsUpWithZeros)
{
    addRecord({5, 3});
    QByteArray out;
    out.reserve(1000);
    out.resize(1000);
    out.fill('\xaa');
    out.resize(3); // keeps the memory and what it holds
    EXPECT_EQ(manager->getPhotoThumbnail(Key, out), 0);
    EXPECT_TRUE(thumbnail::sameBytes(
        out, QByteArray(3, '\xaa') + thumbnail::image(thumbnail::smallest().type, {5, 3})));
}

TEST_F(ThumbnailRequest, LeavesCopiesOfTheBufferAlone)
{
    addRecord({5, 3});
    static const char constant[] = "constant";
    const QByteArray image = thumbnail::image(thumbnail::smallest().type, {5, 3});
    QByteArray out("shared");
    const QByteArray copy = out;
    EXPECT_EQ(manager->getPhotoThumbnail(Key, out), 0);
    EXPECT_EQ(out, "shared" + image);
    EXPECT_EQ(copy, QByteArray("shared"));

    out = QByteArray::fromRawData(constant, 8);
    EXPECT_EQ(manager->getPhotoThumbnail(Key, out), 0);
    EXPECT_EQ(out, "constant" + image);
}

TEST_F(ThumbnailRequest, TakesNothingOverFromAnEarlierPicture)
{
    photo_manager other(&device);
    other.m_pCameraDB = new CameraDB();
    other.m_pCameraDB->assets[Key] = new Camera_Data();
    other.m_pVDev = vDevOpen(VDevDevice, FakeHost::DeviceName);
    addRecord({64, 64});
    expectImage(request(), {64, 64}, thumbnail::smallest());
    addRecord({331, 332}, thumbnail::largest());
    const QByteArray image = thumbnail::image(thumbnail::largest().type, {331, 332});
    for (int i = 0; i < 3; ++i) {
        QByteArray out;
        EXPECT_EQ(other.getPhotoThumbnail(Key, out), 0);
        EXPECT_TRUE(thumbnail::sameBytes(out, image));
        expectImage(request(), {64, 64}, thumbnail::smallest());
    }
}

// --- Trailers that no sound device has.

struct TrailerRow {
    std::string name;
    std::size_t format;
    Extent extent;
};

std::ostream &operator<<(std::ostream &out, const TrailerRow &row)
{
    return out << row.name << ", " << row.extent.width << " x " << row.extent.height;
}

class ThumbnailTrailer : public ThumbnailRequest, public testing::WithParamInterface<TrailerRow>
{
};

class BadThumbnailTrailer : public ThumbnailTrailer
{
};

const std::vector<TrailerRow> badTrailers = {
    {"WidthMinusOne", 7, {-1, 1}},
    {"LeastWidth", 7, {Least, 1}},
    {"BothMinusOne", 7, {-1, -1}},
    {"BothLeast", 7, {Least, Least}},
    {"NegativeWidthWithoutHeight", 7, {-1, 0}},
    {"LeastWidthWithoutHeight", 7, {Least, 0}},
    {"LeastWidthOfGreatestHeight", 7, {Least, Most}},
    {"SmallNegativeWidth", 7, {-3, 5}},
    {"GreatestWidth", 7, {Most, 1}},
    {"GreatestHeight", 7, {1, Most}},
    {"BothGreatest", 7, {Most, Most}},
    {"SizeWraps32Bits", 7, {65536, 65536}},
    {"RowWraps32Bits", 7, {1431655766, 1}},
    {"RowAndSizeWrap32Bits", 7, {0x40000000, 4}},
    {"OnePixelAfterTheLast", 7, {65, 64}},
    {"OnePixelAfterTheLastOfFewRows", 7, {65, 63}},
    {"OnePixelBeforeTheFirst", 0, {334, 332}},
    {"OnePixelAfterTheLastOfWiderRows", 0, {341, 331}},
    {"OneRowBeforeTheFirst", 7, {1, 65}},
    {"OneRowBeyondEachEnd", 7, {1, 66}},
    {"OneRowBeforeTheFirstOfWiderRows", 0, {332, 333}},
    {"FarTooHigh", 5, {100, 2000}},
};

INSTANTIATE_TEST_SUITE_P(Trailers, BadThumbnailTrailer, testing::ValuesIn(badTrailers),
                         rowName<TrailerRow>);

TEST_P(BadThumbnailTrailer, FailsTheRequestButNotTheNextOne)
{
    const Format &format = formats()[GetParam().format];
    addRecord(GetParam().extent, format);
    expectFailure(failure(NoInfo));
    EXPECT_EQ(host.callCount("vFileRead"), 2);
    addRecord({4, 2}, format);
    expectImage(request(), {4, 2}, format);
}

class WideThumbnailTrailer : public ThumbnailTrailer
{
};

const std::vector<TrailerRow> wideTrailers = {
    {"OneWiderThanTheFrame", 0, {333, 332}},
    {"OneWiderInTheMiddleRows", 7, {65, 62}},
    {"TwoWiderFromTheRowBefore", 0, {334, 331}},
    {"UpToTheLastPixel", 0, {340, 331}},
    {"FarWider", 7, {640, 20}},
    {"TwiceAsWide", 7, {128, 1}},
};

INSTANTIATE_TEST_SUITE_P(Trailers, WideThumbnailTrailer, testing::ValuesIn(wideTrailers),
                         rowName<TrailerRow>);

TEST_P(WideThumbnailTrailer, IsServedFromTheRecordsPixels)
{
    const Format &format = formats()[GetParam().format];
    addRecord(GetParam().extent, format);
    expectImage(request(), GetParam().extent, format);
    EXPECT_EQ(host.log(), Log());
}

class EmptyThumbnailTrailer : public ThumbnailTrailer
{
};

const std::vector<TrailerRow> emptyTrailers = {
    {"NoHeight", 7, {64, 0}},
    {"HeightMinusOne", 7, {64, -1}},
    {"NegativeHeight", 7, {63, -1000}},
    {"LeastHeight", 7, {64, Least}},
    {"HeightWhoseSizeWraps32Bits", 7, {64, -30000000}},
    {"NoWidth", 7, {0, 64}},
    {"NothingAtAll", 7, {0, 0}},
    {"NoWidthOfNegativeHeight", 7, {0, -1}},
    {"NoWidthOfLeastHeight", 7, {0, Least}},
    {"NoWidthOfGreatestHeight", 7, {0, Most}},
    {"WiderThanTheRecordWithoutHeight", 7, {5000, 0}},
};

INSTANTIATE_TEST_SUITE_P(Trailers, EmptyThumbnailTrailer, testing::ValuesIn(emptyTrailers),
                         rowName<TrailerRow>);

TEST_P(EmptyThumbnailTrailer, GivesTheHeadersAlone)
{
    addRecord(GetParam().extent, formats()[GetParam().format]);
    const Answer answer = request(Old);
    EXPECT_EQ(answer.result, 0);
    EXPECT_EQ(answer.out.toHex(), (Old + thumbnail::imageHeaders(GetParam().extent)).toHex());
    EXPECT_EQ(host.log(), Log());
}

// --- The packed file over the life of the manager.

TEST_F(ThumbnailRequest, KeepsToThePackedFileOfTheFirst)
{
    addRecord({4, 2});
    expectImage(request(), {4, 2}, thumbnail::smallest());
    addRecord({332, 332}, thumbnail::largest());
    host.clearRecords();
    expectImage(request(), {4, 2}, thumbnail::smallest());
    EXPECT_EQ(host.callCount("vFileOpen"), 4) << "ready files only";
    photo->thumbnailIndex = 1;
    expectFailure(failure(NoData));
    EXPECT_EQ(host.callCount("vFileOpen"), 4) << "ready files only";
}

TEST_F(ThumbnailRequest, KeepsToThePackedFileAlsoAfterAFailure)
{
    addRecord({4, 2});
    host.failRead(thumbnail::smallest().path, 1);
    expectFailure(failure(NoData));
    addRecord({332, 332}, thumbnail::largest());
    expectImage(request(), {4, 2}, thumbnail::smallest());
}

TEST_F(ThumbnailRequest, LeavesThePackedFileOpenWhenTheManagerDies)
{
    addRecord({4, 2});
    host.setDeviceFile(readyPath("5005.JPG"), "jpeg");
    request();
    host.removeDeviceFile(readyPath("5005.JPG"));
    request();
    EXPECT_EQ(host.openHandles(), (Lines{"dev1", "file2"}));
    host.clearRecords();
    manager.reset();
    EXPECT_EQ(host.trace(), Lines{"vDevClose(dev1)"});
    EXPECT_EQ(host.openHandles(), Lines{"file2"});
}

class ParsedThumbnailRequest : public ParseFixture
{
protected:
    QByteArray thumbnailOf(quint64 key)
    {
        QByteArray out;
        EXPECT_EQ(manager->getPhotoThumbnail(key, out), 0);
        return out;
    }
};

TEST_F(ParsedThumbnailRequest, KeepsToThePackedFileOverLaterParses)
{
    const Format &format = thumbnail::smallest();
    const QByteArray image = thumbnail::image(format.type, {4, 2});
    host.setDeviceFile(format.path, thumbnail::record(format.type, {4, 2}));
    addPhotos({1});
    ASSERT_TRUE(parse());
    EXPECT_TRUE(thumbnail::sameBytes(thumbnailOf(1), image));
    const VFile *file = manager->m_pThmbFile;

    host.setDeviceFile(thumbnail::largest().path, "");
    ASSERT_TRUE(parse());
    EXPECT_EQ(manager->m_pThmbFile, file);
    EXPECT_EQ(manager->m_thmbType, format.type);
    EXPECT_TRUE(thumbnail::sameBytes(thumbnailOf(1), image));

    vDevClose(manager->m_pVDev);
    manager->m_pVDev = nullptr;
    ASSERT_TRUE(parse());
    EXPECT_NE(manager->m_pVDev, nullptr);
    EXPECT_EQ(manager->m_pThmbFile, file);
    EXPECT_TRUE(thumbnail::sameBytes(thumbnailOf(1), image));
}

TEST_F(ParsedThumbnailRequest, FindsTheRecordThatTheDatabaseNames)
{
    const Format &format = thumbnail::smallest();
    host.setDeviceFile(format.path, thumbnail::record(format.type, {4, 2}, 0) +
                                        thumbnail::record(format.type, {6, 3}, 1));
    AssetRow second = photoRow(7);
    second.thumbnailIndex = 1;
    database.rows.assets.push_back(second);
    ASSERT_TRUE(parse());
    EXPECT_TRUE(thumbnail::sameBytes(thumbnailOf(7), thumbnail::image(format.type, {6, 3}, 1)));
}

// --- Memory.

TEST_F(ThumbnailRequest, KeepsMemoryFlatOverAHundredThousand)
{
    const int rounds = 100;
    const int requests = 1000;
    addRecord({4, 2});
    // What the first round leaves is the buffer of the pixels and the room for its records.
    std::size_t first = 0;
    for (int round = 0; round < rounds; ++round) {
        for (int i = 0; i < requests; ++i) {
            QByteArray out;
            ASSERT_EQ(manager->getPhotoThumbnail(Key, out), 0);
            ASSERT_EQ(out.size(), 54 + 24);
        }
        host.clearRecords();
        if (round == 0)
            first = liveHeapBytes();
        ASSERT_LT(liveHeapBytes(), first + requests) << "in round " << round;
    }
}

TEST_F(ThumbnailRequest, KeepsMemoryFlatOverFailures)
{
    addRecord({-1, 2});
    std::size_t first = 0;
    for (int i = 0; i < 2000; ++i) {
        QByteArray out;
        ASSERT_EQ(manager->getPhotoThumbnail(Key, out), -1);
        host.clearRecords();
        if (i == 999)
            first = liveHeapBytes();
    }
    EXPECT_LT(liveHeapBytes(), first + 1000);
}

// --- Memory that runs out.

// A request on a thread of its own, which holds nothing yet, with the `failing`-th
// allocation missing.
struct FaultyRequest {
    int result = -2;
    QByteArray out;
    bool happened = false;
    bool thrown = false;

    void make(photo_manager &manager, quint64 key, int failing)
    {
        std::thread([&] {
            const HeapFault fault(failing);
            try {
                result = manager.getPhotoThumbnail(key, out);
            } catch (...) {
                thrown = true;
            }
            happened = fault.happened();
        }).join();
    }
};

class ThumbnailOutOfMemoryThreads : public ThumbnailRequest
{
protected:
    // Makes requests with one allocation after the other missing, until none is. Each must
    // fail and leave the buffer; returns how many did.
    int failEveryAllocation()
    {
        const int most = 1000;
        int failing = 1;
        while (failing < most && failAllocation(failing))
            ++failing;
        EXPECT_LT(failing, most);
        return failing - 1;
    }

private:
    bool failAllocation(int failing)
    {
        FaultyRequest faulty;
        faulty.out = QByteArray("o") + "ld";
        faulty.make(*manager, Key, failing);
        EXPECT_FALSE(faulty.thrown) << "allocation " << failing;
        if (faulty.happened) {
            EXPECT_EQ(faulty.result, -1) << "allocation " << failing;
            EXPECT_EQ(faulty.out, Old) << "allocation " << failing;
        } else {
            EXPECT_EQ(faulty.result, 0);
        }
        return faulty.happened;
    }
};

TEST_F(ThumbnailOutOfMemoryThreads, FailWhileARecordIsTurnedIntoAnImage)
{
    addRecord({64, 64});
    EXPECT_GT(failEveryAllocation(), 3) << "the paths, the pixels and the image";
    EXPECT_EQ(host.openHandles(), (Lines{"dev1", "file1"}));
    expectImage(request(), {64, 64}, thumbnail::smallest());
}

TEST_F(ThumbnailOutOfMemoryThreads, FailWhileTheOnlyReadyFileIsRead)
{
    photo->thumbnailIndex = -1;
    host.setDeviceFile(readyPath("5005.JPG"), QByteArray(10000, 'x'));
    EXPECT_GT(failEveryAllocation(), 2) << "the path and the file's bytes";
    EXPECT_EQ(host.openHandles(), Lines{"dev1"});
    EXPECT_EQ(request().out, QByteArray(10000, 'x'));
}

TEST_F(ThumbnailOutOfMemoryThreads, TakeThePackedFileWhereAReadyOneDoesNotFit)
{
    addRecord({64, 64});
    host.setDeviceFile(readyPath("5005.JPG"), QByteArray(10000, 'x'));
    const QByteArray packed = thumbnail::image(thumbnail::smallest().type, {64, 64});
    int fromPacked = 0;
    FaultyRequest faulty;
    int failing = 0;
    do {
        faulty = FaultyRequest();
        faulty.make(*manager, Key, ++failing);
        EXPECT_FALSE(faulty.thrown) << "allocation " << failing;
        if (faulty.result == -1)
            EXPECT_TRUE(faulty.out.isEmpty()) << "allocation " << failing;
        else if (faulty.happened)
            fromPacked += thumbnail::sameBytes(faulty.out, packed) ? 1 : 0;
    } while (faulty.happened && failing < 1000);
    EXPECT_EQ(fromPacked, 1) << "the block of the ready file";
    EXPECT_EQ(faulty.out, QByteArray(10000, 'x'));
    EXPECT_EQ(host.openHandles().size(), 2U) << "the device and the packed file";
}

// --- Threads.

using ThumbnailRequestThreads = ThumbnailRequest;

TEST_F(ThumbnailRequestThreads, ServeOneManagerEach)
{
    std::atomic<int> right{0};
    const auto serve = [&](std::size_t place) {
        const Format &format = formats()[place];
        const int seed = static_cast<int>(place);
        const QByteArray path = format.path;
        photo_manager own(&device);
        own.m_pCameraDB = new CameraDB();
        own.m_pCameraDB->assets[Key] = new Camera_Data();
        own.m_pThmbFile = vFileOpen(manager->m_pVDev, path.constData(), 0);
        own.m_thmbType = format.type;
        const QByteArray image = thumbnail::image(format.type, {60, 50}, seed);
        for (int i = 0; i < 50; ++i) {
            QByteArray out;
            if (own.getPhotoThumbnail(Key, out) == 0 && out == image)
                ++right;
        }
    };
    const std::vector<std::size_t> places = {0, 2, 4, 7};
    for (const std::size_t place : places) {
        const ThumbType &type = formats()[place].type;
        host.setDeviceFile(formats()[place].path,
                           thumbnail::record(type, {60, 50}, static_cast<int>(place)));
    }
    const photo_manager first(&device); // fills the static table before the threads begin
    std::vector<std::thread> threads;
    for (const std::size_t place : places)
        threads.emplace_back(serve, place);
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(right, 200);
}

TEST_F(ThumbnailRequestThreads, LeaveNoMemoryBehind)
{
    addRecord({4, 2});
    const auto ask = [this] { std::thread([this] { request(); }).join(); };
    for (int i = 0; i < 10; ++i)
        ask();
    host.clearRecords();
    const std::size_t before = liveHeapBytes();
    for (int i = 0; i < 10; ++i)
        ask();
    host.clearRecords();
    EXPECT_LT(liveHeapBytes(), before + 8192) << "a thread's buffer goes with it";
}

} // namespace
