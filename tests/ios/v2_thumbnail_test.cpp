#include "ios/thumbnail_fixture.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace {

const std::vector<const char *> Names = {"5005.JPG", "5003.JPG", "3507.JPG", "3505.JPG"};
const QByteArray Base = "/PhotoData/Thumbnails/V2/";

class V2Thumbnail : public ThumbnailFixture
{
protected:
    // Whether a ready file was found; `out` is what the buffer, "old" before, holds then.
    bool check()
    {
        out = "old";
        return manager->checkV2Thumbnail(photo, out);
    }

    void setPath(const QString &directory, const QString &fileName)
    {
        photo->directory = directory;
        photo->fileName = fileName;
    }

    QByteArray out;
};

TEST_F(V2Thumbnail, IsReadWholeInOneReadAndClosed)
{
    const QByteArray bytes = QByteArray("\xff\xd8\0\xff", 4) + QByteArray(100000, '\x7f') + '\0';
    host.setDeviceFile(readyPath("5005.JPG"), bytes);
    EXPECT_TRUE(check());
    EXPECT_TRUE(thumbnail::sameBytes(out, bytes));
    EXPECT_EQ(host.trace(),
              (Lines{openLine(readyPath("5005.JPG"), "file1"), "vFileSeek(file1, 0, 2) -> 100005",
                     "vFileTell(file1) -> 100005", "vFileSeek(file1, 0, 0) -> 0",
                     "vFileRead(file1, 100005) -> 100005", "vFileClose(file1)"}));
}

TEST_F(V2Thumbnail, IsTheFirstOfTheFourNames)
{
    for (std::size_t i = Names.size(); i > 0; --i) {
        host.setDeviceFile(readyPath(Names[i - 1]), Names[i - 1]);
        host.clearRecords();
        EXPECT_TRUE(check());
        EXPECT_EQ(out, QByteArray(Names[i - 1]));
        Lines opens = readySearch();
        opens.resize(i - 1);
        opens.push_back(
            openLine(readyPath(Names[i - 1]), "file" + std::to_string(Names.size() - i + 1)));
        Lines trace = host.trace();
        EXPECT_EQ(trace.size(), opens.size() + 5) << Names[i - 1];
        trace.resize(opens.size());
        EXPECT_EQ(trace, opens);
    }
    EXPECT_EQ(host.openHandles(), Lines{"dev1"});
}

TEST_F(V2Thumbnail, IsNoneUnderOtherNames)
{
    for (const char *name : {"5005.jpg", "5004.JPG", "3506.JPG", "5005", ""})
        host.setDeviceFile(readyPath(name), "bytes");
    host.setDeviceFile("/PhotoData/Thumbnails/V2/DCIM/100APPLE/5005.JPG", "bytes");
    EXPECT_FALSE(check());
    EXPECT_EQ(out, QByteArray("old"));
    EXPECT_EQ(host.trace(), readySearch());
}

TEST_F(V2Thumbnail, IsNoneWithoutADevice)
{
    host.setDeviceFile(readyPath("5005.JPG"), "bytes");
    closeDevice();
    EXPECT_FALSE(check());
    EXPECT_EQ(out, QByteArray("old"));
    EXPECT_EQ(host.trace(), Lines());
}

TEST_F(V2Thumbnail, MayBeEmpty)
{
    host.setDeviceFile(readyPath("5005.JPG"), "");
    host.setDeviceFile(readyPath("5003.JPG"), "next");
    EXPECT_TRUE(check());
    EXPECT_TRUE(out.isEmpty());
    EXPECT_EQ(host.trace(),
              (Lines{openLine(readyPath("5005.JPG"), "file1"), "vFileSeek(file1, 0, 2) -> 0",
                     "vFileTell(file1) -> 0", "vFileSeek(file1, 0, 0) -> 0",
                     "vFileRead(file1, 0) -> 0", "vFileClose(file1)"}));
}

TEST_F(V2Thumbnail, LeavesCopiesOfTheBufferAlone)
{
    host.setDeviceFile(readyPath("5005.JPG"), "bytes");
    QByteArray buffer("shared");
    const QByteArray copy = buffer;
    EXPECT_TRUE(manager->checkV2Thumbnail(photo, buffer));
    EXPECT_EQ(buffer, QByteArray("bytes"));
    EXPECT_EQ(copy, QByteArray("shared"));
}

TEST_F(V2Thumbnail, HasTheSizeThatTheFileTells)
{
    host.setDeviceFile(readyPath("5005.JPG"), "0123456789");
    host.lieInTell(readyPath("5005.JPG"), 4);
    EXPECT_TRUE(check());
    EXPECT_EQ(out, QByteArray("0123"));
    EXPECT_EQ(host.openHandles(), Lines{"dev1"});
}

TEST_F(V2Thumbnail, IsReadWhateverTheSeeksAnswer)
{
    host.setDeviceFile(readyPath("5005.JPG"), "0123456789");
    host.lieInSeek(readyPath("5005.JPG"), -1);
    EXPECT_TRUE(check());
    EXPECT_EQ(out, QByteArray("0123456789"));
}

TEST_F(V2Thumbnail, IsZeroWhereAReadGaveLessThanItSaid)
{
    host.setDeviceFile(readyPath("5005.JPG"), "0123456789");
    host.lieInTell(readyPath("5005.JPG"), 500);
    host.lieInRead(readyPath("5005.JPG"), 1, 500);
    EXPECT_TRUE(check());
    EXPECT_EQ(out, QByteArray("0123456789") + QByteArray(490, '\0'));
}

// --- Files that cannot be read whole.

struct BadFile {
    std::string name;
    std::function<void(FakeHost &host, const QByteArray &path)> spoil; ///< ten bytes long
};

std::ostream &operator<<(std::ostream &stream, const BadFile &row)
{
    return stream << row.name;
}

BadFile tells(const std::string &name, qint64 size)
{
    return {name, [size](FakeHost &host, const QByteArray &path) { host.lieInTell(path, size); }};
}

BadFile yieldsAtMost(const std::string &name, int most)
{
    return {name,
            [most](FakeHost &host, const QByteArray &path) { host.shortenRead(path, 1, most); }};
}

BadFile answersARead(const std::string &name, int result)
{
    return {name,
            [result](FakeHost &host, const QByteArray &path) { host.lieInRead(path, 1, result); }};
}

class BadV2Thumbnail : public V2Thumbnail, public testing::WithParamInterface<BadFile>
{
protected:
    void addBadFile(const char *name)
    {
        host.setDeviceFile(readyPath(name), "0123456789");
        GetParam().spoil(host, readyPath(name));
    }
};

const std::vector<BadFile> badFiles = {
    tells("SizeMinusOne", -1),
    tells("LeastSize", std::numeric_limits<qint64>::min()),
    tells("SizeWhoseLowHalfIsRightButWhoseSignIsNot", std::numeric_limits<qint64>::min() + 10),
    tells("SizeOneOver", 11),
    tells("SizeFarOver", 1000000),
    tells("GreatestOf31Bits", std::numeric_limits<qint32>::max()),
    tells("OneOver31Bits", Q_INT64_C(0x80000000)),
    tells("OneOver32Bits", Q_INT64_C(0x100000000)),
    tells("RightModulo32Bits", Q_INT64_C(0x10000000a)),
    tells("GreatestSize", std::numeric_limits<qint64>::max()),
    yieldsAtMost("ReadShortByOne", 9),
    yieldsAtMost("ReadOfNothing", 0),
    answersARead("ReadThatSaysLess", 9),
    answersARead("ReadThatSaysMore", 11),
    {"ReadError", [](FakeHost &host, const QByteArray &path) { host.failRead(path, 1); }},
};

INSTANTIATE_TEST_SUITE_P(Files, BadV2Thumbnail, testing::ValuesIn(badFiles), rowName<BadFile>);

TEST_P(BadV2Thumbnail, IsClosedAndTheNextNameIsTaken)
{
    addBadFile("5005.JPG");
    host.setDeviceFile(readyPath("3507.JPG"), "next");
    EXPECT_TRUE(check());
    EXPECT_EQ(out, QByteArray("next"));
    EXPECT_EQ(host.log(), Log());
    EXPECT_EQ(host.openHandles(), Lines{"dev1"});

    const Lines trace = host.trace();
    const auto closed = std::find(trace.begin(), trace.end(), "vFileClose(file1)");
    ASSERT_GE(trace.end() - closed, 3);
    EXPECT_EQ(closed[1], openLine(readyPath("5003.JPG")));
    EXPECT_EQ(closed[2], openLine(readyPath("3507.JPG"), "file2"));
}

TEST_P(BadV2Thumbnail, IsNoneUnderAnyNameAndLogsNothing)
{
    for (const char *name : Names)
        addBadFile(name);
    EXPECT_FALSE(check());
    EXPECT_EQ(out, QByteArray("old"));
    EXPECT_EQ(host.log(), Log());
    EXPECT_EQ(host.callCount("vFileOpen"), 4);
    EXPECT_EQ(host.openHandles(), Lines{"dev1"});
}

TEST_P(BadV2Thumbnail, LeavesARequestToThePackedFile)
{
    addBadFile("3505.JPG");
    const thumbnail::Format &format = thumbnail::smallest();
    host.setDeviceFile(format.path, thumbnail::record(format.type, {4, 2}));
    const Answer answer = request("old");
    EXPECT_EQ(answer.result, 0);
    EXPECT_TRUE(thumbnail::sameBytes(answer.out, "old" + thumbnail::image(format.type, {4, 2})));
    EXPECT_EQ(host.log(), Log());
    EXPECT_EQ(host.openHandles(), (Lines{"dev1", "file2"}));
}

TEST_F(V2Thumbnail, IsNoneWhenAnEmptyFileCanNotBeRead)
{
    host.setDeviceFile(readyPath("5005.JPG"), "");
    host.failRead(readyPath("5005.JPG"), 1);
    EXPECT_FALSE(check());
    EXPECT_EQ(out, QByteArray("old"));
    EXPECT_EQ(host.openHandles(), Lines{"dev1"});
}

// --- Where the files are looked for.

struct PathRow {
    std::string name;
    const char *directory;
    const char *fileName;
    const char *path; ///< below the folder of the ready files, UTF-8
};

std::ostream &operator<<(std::ostream &stream, const PathRow &row)
{
    return stream << row.name;
}

class V2ThumbnailPath : public V2Thumbnail, public testing::WithParamInterface<PathRow>
{
};

// The file's name is put for the lowest marker that the text has by then, and a marker of
// a directory may be lower.
const std::vector<PathRow> pathRows = {
    {"Plain", "DCIM/100APPLE", "IMG_0002.PNG", "DCIM/100APPLE/IMG_0002.PNG"},
    {"EmptyDirectory", "", "IMG_0002.PNG", "/IMG_0002.PNG"},
    {"EmptyFileName", "DCIM", "", "DCIM/"},
    {"BothEmpty", "", "", "/"},
    {"SlashesKept", "/DCIM/", "/A.JPG", "/DCIM///A.JPG"},
    {"Utf8", "Gru\xc3\x9f", "\xc3\xa9.JPG", "Gru\xc3\x9f/\xc3\xa9.JPG"},
    {"BeyondTheBasicPlane", "\xf0\x9f\x98\x80", "a", "\xf0\x9f\x98\x80/a"},
    {"FirstMarkerInTheDirectory", "a%1b", "F.JPG", "aF.JPGb/%2"},
    {"FirstMarkerTwiceInTheDirectory", "%1-%1", "F.JPG", "F.JPG-F.JPG/%2"},
    {"SecondMarkerInTheDirectory", "a%2b", "F.JPG", "aF.JPGb/F.JPG"},
    {"LaterMarkerInTheDirectory", "a%3b%10", "F.JPG", "a%3b%10/F.JPG"},
    {"LocalMarkerInTheDirectory", "a%L1b", "F.JPG", "aF.JPGb/%2"},
    {"FirstMarkerInTheFileName", "D", "%1.JPG", "D/%1.JPG"},
    {"SecondMarkerInTheFileName", "D", "%2%1.JPG", "D/%2%1.JPG"},
    {"FirstMarkerInBoth", "%1", "%1", "%1/%2"},
    {"PercentSigns", "100%/50%%", "%.JPG", "100%/50%%/%.JPG"},
};

INSTANTIATE_TEST_SUITE_P(Paths, V2ThumbnailPath, testing::ValuesIn(pathRows), rowName<PathRow>);

TEST_P(V2ThumbnailPath, IsMadeOfTheAssetsDirectoryAndFileName)
{
    setPath(QString::fromUtf8(GetParam().directory), QString::fromUtf8(GetParam().fileName));
    const QByteArray folder = Base + GetParam().path + '/';
    EXPECT_FALSE(check());
    EXPECT_EQ(host.trace(), (Lines{openLine(folder + "5005.JPG"), openLine(folder + "5003.JPG"),
                                   openLine(folder + "3507.JPG"), openLine(folder + "3505.JPG")}));

    host.setDeviceFile(folder + "3505.JPG", "bytes");
    EXPECT_TRUE(check());
    EXPECT_EQ(out, QByteArray("bytes"));
}

// Put for each marker, the name would make a text longer than its length can tell.
TEST_F(V2Thumbnail, IsNoneWhereAHostileDirectoryRepeatsAHostileName)
{
    const int markers = 1 << 16;
    setPath(QStringLiteral("%1").repeated(markers) + QLatin1Char('x'),
            QString(markers, QLatin1Char('n')));
    host.setDeviceFile(Base, "bytes");
    EXPECT_FALSE(check());
    EXPECT_EQ(host.trace(), Lines());
}

TEST_F(V2Thumbnail, IsLookedForUnderLongNames)
{
    const int letters = 1 << 20;
    setPath(QString(letters, QLatin1Char('d')), QString(letters, QLatin1Char('n')));
    const QByteArray path =
        Base + QByteArray(letters, 'd') + '/' + QByteArray(letters, 'n') + "/5005.JPG";
    host.setDeviceFile(path, "bytes");
    EXPECT_TRUE(check());
}

TEST_F(V2Thumbnail, IsReadUpTo64MiB)
{
    const int most = 64 * 1024 * 1024;
    host.setDeviceFile(readyPath("5005.JPG"), QByteArray(most + 1, 'x'));
    host.setDeviceFile(readyPath("5003.JPG"), QByteArray(most, 'y'));
    EXPECT_TRUE(check());
    EXPECT_EQ(out.size(), most);
    EXPECT_EQ(host.callCount("vFileRead"), 1);
}

TEST_F(V2Thumbnail, IsLookedForWithNullTextsAsWithEmptyOnes)
{
    setPath(QString(), QString());
    EXPECT_FALSE(check());
    EXPECT_EQ(host.trace().front(), openLine(Base + "//5005.JPG"));
}

} // namespace
