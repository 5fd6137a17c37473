#include "cameradb/device_copy.h"

#include "cameradb/camera_db_parse.h"
#include "cameradb/cancel_flag.h"
#include "support/fake_host.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <QString>

#include <future>
#include <thread>

namespace {

using Lines = std::vector<std::string>;

const int mebibyte = 1024 * 1024;
const int block = 4 * mebibyte;

const char *const sourcePath = "/PhotoData/Photos.sqlite";
const char *const targetPath = "/work/phone/Photos.sqlite";

// Bytes that differ between any two blocks.
QByteArray pattern(int size)
{
    std::string bytes;
    for (int i = 0; i < size; ++i)
        bytes.push_back(static_cast<char>(i % 251));
    return QByteArray::fromStdString(bytes);
}

class DeviceCopy : public testing::Test
{
protected:
    DeviceCopy() { gbShouldQuit = false; }
    ~DeviceCopy() override { gbShouldQuit = false; }

    int copy(const QString &source = QString::fromLatin1(sourcePath),
             const QString &target = QString::fromLatin1(targetPath))
    {
        return savefiletoLocation(&device, source, target);
    }

    // The calls of a copy whose opens all succeed, around those of its loop.
    static Lines aroundLoop(const Lines &loop)
    {
        Lines lines = {
            "isAccessBlocked() -> false",
            "devicePath() -> \"connected-device\"",
            "vDevOpen(2, \"connected-device\") -> dev1",
            "vFileOpen(dev1, \"/PhotoData/Photos.sqlite\", 0) -> file1",
            "vDevOpen(0, \"\") -> dev2",
            "vDevCreateDir(dev2, \"/work/phone\") -> true",
            "vFileOpen(dev2, \"/work/phone/Photos.sqlite\", 1) -> file2",
        };
        lines.insert(lines.end(), loop.begin(), loop.end());
        for (const char *close :
             {"vFileClose(file1)", "vDevClose(dev1)", "vFileClose(file2)", "vDevClose(dev2)"})
            lines.emplace_back(close);
        return lines;
    }

    // The copy returned normally, wrote `bytes`, and did nothing but this.
    void expectCopied(const QByteArray &bytes, const Lines &loop)
    {
        EXPECT_EQ(host.hostFile(targetPath), bytes);
        EXPECT_EQ(host.trace(), aroundLoop(loop));
        EXPECT_EQ(host.openHandles(), Lines());
    }

    FakeHost host;
    FakeIPod device;
};

TEST_F(DeviceCopy, CopiesAFileWithTheseCallsInThisOrder)
{
    host.setDeviceFile(sourcePath, "bytes");
    EXPECT_EQ(copy(), 0);
    expectCopied("bytes", {"vFileRead(file1, 4194304) -> 5", "vFileWrite(file2, 5) -> 5",
                           "vFileRead(file1, 4194304) -> 0"});
}

TEST_F(DeviceCopy, DoesNothingWithoutADevice)
{
    EXPECT_EQ(savefiletoLocation(nullptr, QString::fromLatin1(sourcePath),
                                 QString::fromLatin1(targetPath)),
              0);
    EXPECT_EQ(host.trace(), Lines());
}

TEST_F(DeviceCopy, OpensNothingWhileAccessIsBlocked)
{
    host.setDeviceFile(sourcePath, "bytes");
    device.accessBlocked = true;
    EXPECT_EQ(copy(), 0);
    EXPECT_EQ(host.trace(), Lines{"isAccessBlocked() -> true"});
}

TEST_F(DeviceCopy, AsksForAccessBeforeItLooksAtThePaths)
{
    device.accessBlocked = true;
    EXPECT_EQ(copy(QString(), QString()), 0);
    EXPECT_EQ(host.trace(), Lines{"isAccessBlocked() -> true"});
}

struct EmptyPaths {
    const char *name;
    QString source;
    QString target;
};

class DeviceCopyWithEmptyPath : public DeviceCopy, public testing::WithParamInterface<EmptyPaths>
{
};

TEST_P(DeviceCopyWithEmptyPath, ReturnsZeroAndLogsNothing)
{
    host.setDeviceFile(sourcePath, "bytes");
    EXPECT_EQ(copy(GetParam().source, GetParam().target), 0);
    EXPECT_EQ(host.trace(), Lines{"isAccessBlocked() -> false"});
}

INSTANTIATE_TEST_SUITE_P(
    Paths, DeviceCopyWithEmptyPath,
    testing::Values(EmptyPaths{"NullSource", QString(), QStringLiteral("/work/x")},
                    EmptyPaths{"EmptySource", QStringLiteral(""), QStringLiteral("/work/x")},
                    EmptyPaths{"NullTarget", QStringLiteral("/x"), QString()},
                    EmptyPaths{"EmptyTarget", QStringLiteral("/x"), QStringLiteral("")},
                    EmptyPaths{"Both", QString(), QString()}),
    rowName<EmptyPaths>);

struct FailedOpen {
    const char *name;
    void (*breakIt)(FakeHost &host);
    QByteArray logged;
    std::size_t callsMade; ///< of the seven that come before the loop
    const char *failedCall;
    Lines leftOpen;
};

class DeviceCopyWithFailedOpen : public DeviceCopy, public testing::WithParamInterface<FailedOpen>
{
};

TEST_P(DeviceCopyWithFailedOpen, LogsReturnsMinusOneAndClosesNothing)
{
    host.setDeviceFile(sourcePath, "bytes");
    GetParam().breakIt(host);
    EXPECT_EQ(copy(), -1);
    EXPECT_EQ(host.log(), std::vector<LogLine>{failure(GetParam().logged)});
    EXPECT_EQ(host.openHandles(), GetParam().leftOpen);

    Lines calls = aroundLoop({});
    calls.resize(GetParam().callsMade);
    calls.emplace_back(GetParam().failedCall);
    EXPECT_EQ(host.calls(), calls);
}

INSTANTIATE_TEST_SUITE_P(
    Opens, DeviceCopyWithFailedOpen,
    testing::Values(FailedOpen{"OfTheDevice",
                               [](FakeHost &host) { host.failDevOpen(VDevDevice); },
                               "Can not open device",
                               2,
                               "vDevOpen(2, \"connected-device\") -> null",
                               {}},
                    FailedOpen{"OfTheSource",
                               [](FakeHost &host) { host.removeDeviceFile(sourcePath); },
                               "Can not open file: /PhotoData/Photos.sqlite",
                               3,
                               "vFileOpen(dev1, \"/PhotoData/Photos.sqlite\", 0) -> null",
                               {"dev1"}},
                    FailedOpen{"OfTheLocalFileSystem",
                               [](FakeHost &host) { host.failDevOpen(VDevHost); },
                               "Can not open folder: /work/phone/Photos.sqlite",
                               4,
                               "vDevOpen(0, \"\") -> null",
                               {"dev1", "file1"}},
                    FailedOpen{"OfTheTarget",
                               [](FakeHost &host) { host.failFileOpen(targetPath, 1); },
                               "Can not open file: /work/phone/Photos.sqlite",
                               6,
                               "vFileOpen(dev2, \"/work/phone/Photos.sqlite\", 1) -> null",
                               {"dev1", "dev2", "file1"}}),
    rowName<FailedOpen>);

TEST_F(DeviceCopy, LeavesAnExistingTargetAloneThatDoesNotOpen)
{
    host.setDeviceFile(sourcePath, "new");
    host.addHostFolder("/work/phone");
    host.setHostFile(targetPath, "old");
    host.failFileOpen(targetPath, 1);
    EXPECT_EQ(copy(), -1);
    EXPECT_EQ(host.hostFile(targetPath), QByteArray("old"));
}

TEST_F(DeviceCopy, GoesOnWhenTheFolderCanNotBeMade)
{
    host.setDeviceFile(sourcePath, "bytes");
    host.addHostFolder("/work/phone");
    host.failCreateDir();
    EXPECT_EQ(copy(), 0);
    EXPECT_EQ(host.hostFile(targetPath), QByteArray("bytes"));
    EXPECT_TRUE(host.log().empty());
}

TEST_F(DeviceCopy, PassesTheDevicesOwnName)
{
    device.path = QStringLiteral("another");
    host.setDeviceFile(sourcePath, "another's", "another");
    host.setDeviceFile(sourcePath, "bytes");
    EXPECT_EQ(copy(), 0);
    EXPECT_EQ(host.hostFile(targetPath), QByteArray("another's"));
}

TEST_F(DeviceCopy, PassesNamesAsUtf8)
{
    device.path = QStringLiteral("t\u00e9l\u00e9 \u96fb");
    host.setDeviceFile("/\xc3\xa9/\xe9\x9b\xbb", "bytes", "t\xc3\xa9l\xc3\xa9 \xe9\x9b\xbb");
    EXPECT_EQ(copy(QStringLiteral("/\u00e9/\u96fb"), QStringLiteral("/\u00fc/\u96fb")), 0);
    EXPECT_EQ(host.hostFile("/\xc3\xbc/\xe9\x9b\xbb"), QByteArray("bytes"));
    EXPECT_TRUE(host.hasHostFolder("/\xc3\xbc"));
}

TEST_F(DeviceCopy, LogsAMissingSourceAsUtf8)
{
    EXPECT_EQ(copy(QStringLiteral("/\u00e9/\u96fb")), -1);
    EXPECT_EQ(host.log(),
              std::vector<LogLine>{failure("Can not open file: /\xc3\xa9/\xe9\x9b\xbb")});
}

TEST_F(DeviceCopy, LogsAMissingFolderAndTargetAsUtf8)
{
    host.setDeviceFile(sourcePath, "bytes");
    host.failFileOpen("/\xc3\xa9/\xe9\x9b\xbb", 1);
    const QString target = QStringLiteral("/\u00e9/\u96fb");
    EXPECT_EQ(copy(QString::fromLatin1(sourcePath), target), -1);
    host.failDevOpen(VDevHost);
    EXPECT_EQ(copy(QString::fromLatin1(sourcePath), target), -1);
    const std::vector<LogLine> lines = {
        failure("Can not open file: /\xc3\xa9/\xe9\x9b\xbb"),
        failure("Can not open folder: /\xc3\xa9/\xe9\x9b\xbb"),
    };
    EXPECT_EQ(host.log(), lines);
}

TEST_F(DeviceCopy, TakesNoPathForAFormat)
{
    EXPECT_EQ(copy(QStringLiteral("/%s%n%d")), -1);
    EXPECT_EQ(host.log(), std::vector<LogLine>{failure("Can not open file: /%s%n%d")});
}

struct Folder {
    const char *name;
    QByteArray target;
    QByteArray folder;
};

class DeviceCopyFolder : public DeviceCopy, public testing::WithParamInterface<Folder>
{
};

TEST_P(DeviceCopyFolder, EndsAtTheLastSeparatorOfEitherKind)
{
    host.setDeviceFile(sourcePath, "bytes");
    EXPECT_EQ(copy(QString::fromLatin1(sourcePath), QString::fromUtf8(GetParam().target)), 0);
    const std::string folder = GetParam().folder.toStdString();
    const Lines calls = host.fileCalls();
    ASSERT_GE(calls.size(), 4U);
    EXPECT_EQ(calls[3], "vDevCreateDir(dev2, \"" + folder + "\") -> true");
    EXPECT_EQ(host.callCount("vDevCreateDir"), 1);
    EXPECT_EQ(host.hostFile(GetParam().target), QByteArray("bytes"));
}

INSTANTIATE_TEST_SUITE_P(
    Targets, DeviceCopyFolder,
    testing::Values(Folder{"Slashes", "/work/phone/db", "/work/phone"},
                    Folder{"Backslashes", "C:\\work\\phone\\db", "C:\\work\\phone"},
                    Folder{"BackslashLast", "C:/work/phone\\db", "C:/work/phone"},
                    Folder{"SlashLast", "C:\\work\\phone/db", "C:\\work\\phone"},
                    Folder{"Root", "/db", ""}, Folder{"BackslashRoot", "\\db", ""},
                    Folder{"DoubleSlash", "/work//db", "/work/"},
                    Folder{"Relative", "work/db", "work"}),
    rowName<Folder>);

TEST_F(DeviceCopy, MakesAFolderOfATargetWithoutSeparatorAndThenFails)
{
    host.setDeviceFile(sourcePath, "bytes");
    EXPECT_EQ(copy(QString::fromLatin1(sourcePath), QStringLiteral("Photos.sqlite")), -1);
    EXPECT_EQ(host.log(), std::vector<LogLine>{failure("Can not open file: Photos.sqlite")});
    EXPECT_TRUE(host.hasHostFolder("Photos.sqlite"));
    EXPECT_EQ(host.openHandles(), (Lines{"dev1", "dev2", "file1"}));
}

struct Size {
    const char *name;
    int size;
    std::vector<int> blocks; ///< the counts of the successful reads and their writes
};

class DeviceCopyBlocks : public DeviceCopy, public testing::WithParamInterface<Size>
{
};

Lines loopOf(const std::vector<int> &blocks)
{
    Lines lines;
    for (const int count : blocks) {
        const std::string number = std::to_string(count);
        lines.push_back(std::string("vFileRead(file1, 4194304) -> ").append(number));
        lines.push_back(
            std::string("vFileWrite(file2, ").append(number).append(") -> ").append(number));
    }
    lines.emplace_back("vFileRead(file1, 4194304) -> 0");
    return lines;
}

TEST_P(DeviceCopyBlocks, AreReadAndWrittenInTurn)
{
    const QByteArray bytes = pattern(GetParam().size);
    host.setDeviceFile(sourcePath, bytes);
    EXPECT_EQ(copy(), 0);
    expectCopied(bytes, loopOf(GetParam().blocks));
}

INSTANTIATE_TEST_SUITE_P(Sizes, DeviceCopyBlocks,
                         testing::Values(Size{"Empty", 0, {}}, Size{"OneByte", 1, {1}},
                                         Size{"OneByteLess", block - 1, {block - 1}},
                                         Size{"ExactlyOneBlock", block, {block}},
                                         Size{"OneByteMore", block + 1, {block, 1}},
                                         Size{"ExactlyTwoBlocks", 2 * block, {block, block}},
                                         Size{"ThreeBlocks", 2 * block + 7, {block, block, 7}}),
                         rowName<Size>);

TEST_F(DeviceCopy, TakesWhatADeviceGivesAtATime)
{
    host.setDeviceFile(sourcePath, pattern(2500));
    host.shortenReads(sourcePath, 1000);
    EXPECT_EQ(copy(), 0);
    expectCopied(pattern(2500), loopOf({1000, 1000, 500}));
}

TEST_F(DeviceCopy, EndsAtAFirstReadErrorWithAnEmptyTarget)
{
    host.setDeviceFile(sourcePath, "bytes");
    host.failRead(sourcePath, 1, -5);
    EXPECT_EQ(copy(), 0);
    expectCopied("", {"vFileRead(file1, 4194304) -> -5"});
}

TEST_F(DeviceCopy, KeepsWhatCameBeforeAReadError)
{
    host.setDeviceFile(sourcePath, pattern(3000));
    host.shortenReads(sourcePath, 1000);
    host.failRead(sourcePath, 3);
    EXPECT_EQ(copy(), 0);
    expectCopied(pattern(2000),
                 {"vFileRead(file1, 4194304) -> 1000", "vFileWrite(file2, 1000) -> 1000",
                  "vFileRead(file1, 4194304) -> 1000", "vFileWrite(file2, 1000) -> 1000",
                  "vFileRead(file1, 4194304) -> -1"});
}

TEST_F(DeviceCopy, StopsAtAShortWriteAndStillReturnsZero)
{
    host.setDeviceFile(sourcePath, pattern(3000));
    host.shortenReads(sourcePath, 1000);
    host.shortenWrite(targetPath, 2, 400);
    EXPECT_EQ(copy(), 0);
    expectCopied(pattern(1400),
                 {"vFileRead(file1, 4194304) -> 1000", "vFileWrite(file2, 1000) -> 1000",
                  "vFileRead(file1, 4194304) -> 1000", "vFileWrite(file2, 1000) -> 400"});
}

TEST_F(DeviceCopy, StopsAtAFailedWriteAndStillReturnsZero)
{
    host.setDeviceFile(sourcePath, "bytes");
    host.failWrite(targetPath, 1);
    EXPECT_EQ(copy(), 0);
    expectCopied("", {"vFileRead(file1, 4194304) -> 5", "vFileWrite(file2, 5) -> -1"});
}

TEST_F(DeviceCopy, StopsAtAWriteThatClaimsMoreThanItGot)
{
    host.setDeviceFile(sourcePath, "bytes");
    host.lieInWrite(targetPath, 1, 6);
    EXPECT_EQ(copy(), 0);
    expectCopied("bytes", {"vFileRead(file1, 4194304) -> 5", "vFileWrite(file2, 5) -> 6"});
}

TEST_F(DeviceCopy, WritesNothingOfAReadThatClaimsMoreThanItsBufferHolds)
{
    host.setDeviceFile(sourcePath, "bytes");
    host.lieInRead(sourcePath, 1, block + 1);
    EXPECT_EQ(copy(), 0);
    expectCopied("", {"vFileRead(file1, 4194304) -> 4194305"});
}

TEST_F(DeviceCopy, ReadsABlockBeforeItLooksForACancel)
{
    host.setDeviceFile(sourcePath, "bytes");
    cancleParse();
    EXPECT_EQ(copy(), 0);
    expectCopied("", {"vFileRead(file1, 4194304) -> 5"});
    EXPECT_TRUE(gbShouldQuit) << "a copy does not take a cancel back";
}

TEST_F(DeviceCopy, EndsAtTheEndOfTheFileWhateverTheCancelSays)
{
    host.setDeviceFile(sourcePath, "");
    cancleParse();
    EXPECT_EQ(copy(), 0);
    expectCopied("", {"vFileRead(file1, 4194304) -> 0"});
}

TEST_F(DeviceCopy, DropsTheBlockDuringWhoseReadACancelComes)
{
    host.setDeviceFile(sourcePath, pattern(3000));
    host.shortenReads(sourcePath, 1000);
    host.onCall("vFileRead", 2, cancleParse);
    EXPECT_EQ(copy(), 0);
    expectCopied(pattern(1000),
                 {"vFileRead(file1, 4194304) -> 1000", "vFileWrite(file2, 1000) -> 1000",
                  "vFileRead(file1, 4194304) -> 1000"});
}

TEST_F(DeviceCopy, ReadsOneMoreBlockAfterACancelDuringAWrite)
{
    host.setDeviceFile(sourcePath, pattern(3000));
    host.shortenReads(sourcePath, 1000);
    host.onCall("vFileWrite", 1, cancleParse);
    EXPECT_EQ(copy(), 0);
    expectCopied(pattern(1000),
                 {"vFileRead(file1, 4194304) -> 1000", "vFileWrite(file2, 1000) -> 1000",
                  "vFileRead(file1, 4194304) -> 1000"});
}

TEST_F(DeviceCopy, MindsACancelFromAnotherThread)
{
    host.setDeviceFile(sourcePath, pattern(3000));
    host.shortenReads(sourcePath, 100);
    std::promise<void> copying;
    std::thread canceller([&] {
        copying.get_future().wait();
        cancleParse();
    });
    // The cancel comes at any moment from the third read on, and has come by the sixth.
    host.onCall("vFileRead", 3, [&] { copying.set_value(); });
    host.onCall("vFileRead", 6, [&] { canceller.join(); });
    EXPECT_EQ(copy(), 0);
    if (canceller.joinable())
        canceller.join();

    EXPECT_GE(host.callCount("vFileWrite"), 2);
    EXPECT_LE(host.callCount("vFileWrite"), 5);
    EXPECT_EQ(host.callCount("vFileRead"), host.callCount("vFileWrite") + 1);
    EXPECT_EQ(host.openHandles(), Lines());
    EXPECT_TRUE(host.log().empty());
}

TEST_F(DeviceCopy, KeepsTwoCopiesAtATimeApart)
{
    const QByteArray first = pattern(5000);
    const QByteArray second = pattern(7000);
    host.setDeviceFile("/first", first);
    host.setDeviceFile("/second", second);
    host.shortenReads("/first", 300);
    host.shortenReads("/second", 300);
    std::thread other(
        [&] { EXPECT_EQ(copy(QStringLiteral("/second"), QStringLiteral("/work/second")), 0); });
    EXPECT_EQ(copy(QStringLiteral("/first"), QStringLiteral("/work/first")), 0);
    other.join();
    EXPECT_EQ(host.hostFile("/work/first"), first);
    EXPECT_EQ(host.hostFile("/work/second"), second);
    EXPECT_EQ(host.openHandles(), Lines());
}

} // namespace
