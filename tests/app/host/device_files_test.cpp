#include "host/device_files.h"

#include "devices/folder_file_system.h"
#include "host/device.h"
#include "host/device_registry.h"
#include "host/transfer_monitor.h"
#include "support/device_folder.h"
#include "support/threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <dirent.h>
#include <limits>
#include <sys/resource.h>
#include <unistd.h>

namespace {

constexpr int reading = 0;
constexpr int writing = 1;

std::shared_ptr<DeviceFileSystem> folder(const QByteArray &path)
{
    FileError error;
    std::shared_ptr<DeviceFileSystem> files = FolderFileSystem::openFolder(path, &error);
    EXPECT_TRUE(files) << error.text.toStdString();
    return files;
}

QByteArray readAll(VDev *dev, const QByteArray &path)
{
    VFile *const file = vFileOpen(dev, path.constData(), reading);
    if (!file)
        return "not opened";
    QByteArray bytes(1000, '\0');
    const int count = vFileRead(file, bytes.data(), bytes.size());
    vFileClose(file);
    return bytes.left(count);
}

int openDescriptors()
{
    DIR *const folder = ::opendir("/proc/self/fd");
    int count = 0;
    while (::readdir(folder))
        ++count;
    ::closedir(folder);
    return count;
}

// A device in a folder of its own.
struct RegisteredFolder {
    ScratchFolder scratch;
    DeviceRegistration registration{folder(scratch.root())};

    VDev *open() const { return vDevOpen(VDevDevice, registration.name().constData()); }
};

TEST(DeviceFiles, OpenARegisteredDeviceByItsName)
{
    const RegisteredFolder device;
    device.scratch.write("PhotoData/a", "text");
    VDev *const dev = device.open();
    ASSERT_TRUE(dev);
    EXPECT_EQ("text", readAll(dev, "/PhotoData/a"));
    vDevClose(dev);
}

TEST(DeviceFiles, KeepTwoDevicesApart)
{
    const RegisteredFolder first;
    const RegisteredFolder second;
    first.scratch.write("a", "first");
    second.scratch.write("a", "second");
    EXPECT_EQ("first", readAll(first.open(), "a"));
    EXPECT_EQ("second", readAll(second.open(), "a"));
}

TEST(DeviceFiles, OpenNoDeviceThatIsNotRegistered)
{
    QByteArray name;
    {
        const RegisteredFolder device;
        name = device.registration.name();
        EXPECT_TRUE(vDevOpen(VDevDevice, name.constData()));
    }
    EXPECT_FALSE(vDevOpen(VDevDevice, name.constData()));
    EXPECT_FALSE(vDevOpen(VDevDevice, ""));
    EXPECT_FALSE(vDevOpen(static_cast<VDevType>(1), ""));
}

TEST(DeviceFiles, NeverWriteToADevice)
{
    const RegisteredFolder device;
    device.scratch.write("a", "text");
    EXPECT_FALSE(vFileOpen(device.open(), "a", writing));
    EXPECT_FALSE(vFileOpen(device.open(), "new", writing));
    EXPECT_FALSE(vDevCreateDir(device.open(), "folder"));
    EXPECT_EQ("text", device.scratch.read("a"));
    EXPECT_EQ(1, device.scratch.everythingIn().size());
}

TEST(DeviceFiles, CloseWhatTheUserOfADeviceLeftOpen)
{
    const int before = openDescriptors();
    {
        const RegisteredFolder device;
        device.scratch.write("a", "text");
        ASSERT_TRUE(vFileOpen(device.open(), "a", reading));
        ASSERT_TRUE(vFileOpen(device.open(), "a", reading));
        EXPECT_LT(before, openDescriptors());
    }
    EXPECT_EQ(before, openDescriptors());
}

TEST(DeviceFiles, TellTheSizeOfFilesOnly)
{
    const RegisteredFolder device;
    device.scratch.write("DCIM/a", "text");
    device.scratch.writeSparse("large", qint64(3) << 30);
    VDev *const dev = device.open();
    EXPECT_EQ(4, vDevFileSize(dev, "DCIM/a"));
    EXPECT_EQ(4, vDevFileSize(dev, "/DCIM/a"));
    EXPECT_EQ(qint64(3) << 30, vDevFileSize(dev, "large"));
    EXPECT_EQ(0, vDevFileSize(dev, "DCIM"));
    EXPECT_EQ(0, vDevFileSize(dev, ""));
    EXPECT_EQ(0, vDevFileSize(dev, "none"));
    EXPECT_EQ(0, vDevFileSize(dev, "../none"));
}

TEST(DeviceFiles, TellTheSizeOfLocalFilesOnly)
{
    const ScratchFolder scratch;
    scratch.write("a", "text");
    VDev *const host = vDevOpen(VDevHost, "");
    EXPECT_EQ(4, vDevFileSize(host, scratch.path("a").constData()));
    EXPECT_EQ(0, vDevFileSize(host, scratch.root().constData()));
    EXPECT_EQ(0, vDevFileSize(host, scratch.path("none").constData()));
}

TEST(DeviceFiles, FindAFileWhoseNameWasEncodedTwice)
{
    const RegisteredFolder device;
    device.scratch.write("DCIM/gr\xc3\xbc\xc3\x9f.jpg", "utf-8");
    device.scratch.write("DCIM/gr\xfc.jpg", "latin-1");
    VDev *const dev = device.open();
    // Each byte beyond ASCII as the plug-in passes it on.
    const QByteArray twice = "/DCIM/gr\xc3\x83\xc2\xbc\xc3\x83\xc2\x9f.jpg";
    EXPECT_EQ("utf-8", readAll(dev, twice));
    EXPECT_EQ(5, vDevFileSize(dev, twice.constData()));
    EXPECT_EQ("utf-8", readAll(dev, "/DCIM/gr\xc3\xbc\xc3\x9f.jpg"));
    EXPECT_EQ("latin-1", readAll(dev, "/DCIM/gr\xc3\xbc.jpg"));
    EXPECT_EQ("latin-1", readAll(dev, "/DCIM/gr\xfc.jpg"));
}

TEST(DeviceFiles, PreferTheFileUnderTheNameAsGiven)
{
    const RegisteredFolder device;
    device.scratch.write("\xc3\xbc", "as given");
    device.scratch.write("\xfc", "undone");
    EXPECT_EQ("as given", readAll(device.open(), "\xc3\xbc"));
}

TEST(DeviceFiles, CreateFoldersWithTheirParents)
{
    const ScratchFolder scratch;
    VDev *const host = vDevOpen(VDevHost, "");
    EXPECT_TRUE(vDevCreateDir(host, scratch.path("a/b\xff/c").constData()));
    EXPECT_TRUE(scratch.exists("a/b\xff/c"));
    EXPECT_TRUE(vDevCreateDir(host, scratch.path("a/b\xff/c/").constData()));
    scratch.write("file", "");
    EXPECT_FALSE(vDevCreateDir(host, scratch.path("file").constData()));
    EXPECT_FALSE(vDevCreateDir(host, scratch.path("file/x").constData()));
    EXPECT_FALSE(vDevCreateDir(host, ""));
}

TEST(DeviceFiles, WriteAndEmptyALocalFile)
{
    const ScratchFolder scratch;
    scratch.write("\xfc", "a longer text");
    VDev *const host = vDevOpen(VDevHost, "");
    VFile *const file = vFileOpen(host, scratch.path("\xfc").constData(), writing);
    ASSERT_TRUE(file);
    EXPECT_EQ(3, vFileWrite(file, "new", 3));
    EXPECT_EQ(0, vFileWrite(file, "", 0));
    EXPECT_EQ(3, vFileTell(file));
    vFileClose(file);
    vDevClose(host);
    EXPECT_EQ("new", scratch.read("\xfc"));
}

TEST(DeviceFiles, WriteThroughNoLink)
{
    const ScratchFolder scratch;
    scratch.write("precious", "text");
    scratch.makeLink("link", scratch.path("precious"));
    EXPECT_FALSE(vFileOpen(vDevOpen(VDevHost, ""), scratch.path("link").constData(), writing));
    EXPECT_EQ("text", scratch.read("precious"));
}

TEST(DeviceFiles, WriteBeyondTwoGibibytes)
{
    const ScratchFolder scratch;
    const qint64 offset = (qint64(2) << 30) + 5;
    VFile *const file =
        vFileOpen(vDevOpen(VDevHost, ""), scratch.path("large").constData(), writing);
    ASSERT_TRUE(file);
    EXPECT_EQ(offset, vFileSeek(file, offset, 0));
    EXPECT_EQ(3, vFileWrite(file, "end", 3));
    EXPECT_EQ(offset + 3, vFileTell(file));
    vFileClose(file);
    EXPECT_EQ(offset + 3, scratch.size("large"));
}

TEST(DeviceFiles, SeekFromTheStartAndFromTheEnd)
{
    const RegisteredFolder device;
    device.scratch.write("a", "0123456789");
    VFile *const file = vFileOpen(device.open(), "a", reading);
    EXPECT_EQ(10, vFileSeek(file, 0, 2));
    EXPECT_EQ(10, vFileTell(file));
    EXPECT_EQ(7, vFileSeek(file, -3, 2));
    char bytes[10] = {};
    EXPECT_EQ(3, vFileRead(file, bytes, sizeof(bytes)));
    EXPECT_EQ(QByteArray("789"), bytes);
    EXPECT_EQ(2, vFileSeek(file, 2, 0));
    EXPECT_EQ(1, vFileRead(file, bytes, 1));
    EXPECT_EQ('2', bytes[0]);
}

TEST(DeviceFiles, LeaveThePositionAloneAfterAnImpossibleSeek)
{
    const RegisteredFolder device;
    device.scratch.write("a", "0123456789");
    VFile *const file = vFileOpen(device.open(), "a", reading);
    ASSERT_EQ(4, vFileSeek(file, 4, 0));
    EXPECT_LT(vFileSeek(file, -1, 0), 0);
    EXPECT_LT(vFileSeek(file, -11, 2), 0);
    EXPECT_LT(vFileSeek(file, std::numeric_limits<qint64>::max(), 2), 0);
    EXPECT_LT(vFileSeek(file, std::numeric_limits<qint64>::min(), 2), 0);
    EXPECT_LT(vFileSeek(file, 0, 7), 0);
    EXPECT_EQ(4, vFileTell(file));
}

TEST(DeviceFiles, ReadNothingBeyondTheEnd)
{
    const RegisteredFolder device;
    device.scratch.write("a", "0123456789");
    VFile *const file = vFileOpen(device.open(), "a", reading);
    EXPECT_EQ(100, vFileSeek(file, 100, 0));
    char byte = 0;
    EXPECT_EQ(0, vFileRead(file, &byte, 1));
    EXPECT_GT(0, vFileRead(file, &byte, -1));
}

TEST(DeviceFiles, AcceptNullHandles)
{
    char byte = 0;
    vDevClose(nullptr);
    vFileClose(nullptr);
    EXPECT_FALSE(vDevCreateDir(nullptr, "a"));
    EXPECT_EQ(0, vDevFileSize(nullptr, "a"));
    EXPECT_FALSE(vFileOpen(nullptr, "a", reading));
    EXPECT_GT(0, vFileRead(nullptr, &byte, 1));
    EXPECT_EQ(0, vFileWrite(nullptr, &byte, 1));
    EXPECT_GT(0, vFileSeek(nullptr, 0, 0));
    EXPECT_GT(0, vFileTell(nullptr));
}

TEST(DeviceFiles, WriteNothingToAFileOpenForReading)
{
    const ScratchFolder scratch;
    scratch.write("a", "text");
    VFile *const file = vFileOpen(vDevOpen(VDevHost, ""), scratch.path("a").constData(), reading);
    ASSERT_TRUE(file);
    EXPECT_EQ(0, vFileWrite(file, "new", 3));
    vFileClose(file);
    EXPECT_EQ("text", scratch.read("a"));
}

// Remembers what it hears.
struct RememberingObserver : TransferObserver {
    qint64 bytes = 0;
    QList<QByteArray> names;
    FileError::Kind kind = FileError::None;

    void bytesWritten(qint64 count) override { bytes += count; }

    void failed(const QByteArray &name, const FileError &error) override
    {
        names.append(name);
        kind = error.kind;
    }
};

TEST(TransferWatch, HearsOfTheBytesWritten)
{
    const ScratchFolder scratch;
    RememberingObserver observer;
    VFile *const file = vFileOpen(vDevOpen(VDevHost, ""), scratch.path("a").constData(), writing);
    {
        const TransferWatch watch(&observer);
        vFileWrite(file, "12345", 5);
        vFileWrite(file, "123", 3);
    }
    vFileWrite(file, "12", 2);
    vFileClose(file);
    EXPECT_EQ(8, observer.bytes);
    EXPECT_TRUE(observer.names.isEmpty());
}

TEST(TransferWatch, GivesWayToAnotherWithinIt)
{
    const ScratchFolder scratch;
    RememberingObserver outer;
    RememberingObserver inner;
    VFile *const file = vFileOpen(vDevOpen(VDevHost, ""), scratch.path("a").constData(), writing);
    const TransferWatch watch(&outer);
    {
        const TransferWatch innerWatch(&inner);
        vFileWrite(file, "12345", 5);
    }
    vFileWrite(file, "123", 3);
    vFileClose(file);
    EXPECT_EQ(5, inner.bytes);
    EXPECT_EQ(3, outer.bytes);
}

TEST(TransferWatch, HearsWhyAFileDidNotOpen)
{
    const RegisteredFolder device;
    device.scratch.makeLink("out", "/etc/passwd");
    RememberingObserver observer;
    const TransferWatch watch(&observer);
    EXPECT_FALSE(vFileOpen(device.open(), "/out", reading));
    EXPECT_EQ(QList<QByteArray>{device.scratch.path("out")}, observer.names);
    EXPECT_EQ(FileError::Outside, observer.kind);
}

// Files cannot grow beyond `bytes` for as long as it lives, as on a full disk.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit = {bytes, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }

    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;

private:
    rlimit m_before = {};
    void (*m_handler)(int);
};

TEST(TransferWatch, HearsWhyAWriteWasShort)
{
    const ScratchFolder scratch;
    RememberingObserver observer;
    const TransferWatch watch(&observer);
    VFile *const file = vFileOpen(vDevOpen(VDevHost, ""), scratch.path("a").constData(), writing);
    {
        const FileSizeLimit limit(10);
        EXPECT_EQ(10, vFileWrite(file, "0123456789abc", 13));
    }
    vFileClose(file);
    EXPECT_EQ(10, observer.bytes);
    EXPECT_EQ(QList<QByteArray>{scratch.path("a")}, observer.names);
    EXPECT_EQ(FileError::Failed, observer.kind);
}

TEST(Device, TellsAnIosLibraryFromAClassicOne)
{
    const ScratchFolder scratch;
    scratch.write("ios/PhotoData/Photos.sqlite", "");
    scratch.write("classic/Photos/Photo Database", "");
    scratch.write("otherCase/PHOTOS/photo database", "");
    scratch.write("both/PhotoData/Photos.sqlite", "");
    scratch.write("both/Photos/Photo Database", "");
    scratch.makeFolder("none");
    const auto kindOf = [&scratch](const char *name) {
        DeviceKind kind = DeviceKind::None;
        FileError error;
        EXPECT_TRUE(findDeviceKind(*folder(scratch.path(name)), &kind, &error));
        return kind;
    };
    EXPECT_EQ(DeviceKind::Ios, kindOf("ios"));
    EXPECT_EQ(DeviceKind::Classic, kindOf("classic"));
    EXPECT_EQ(DeviceKind::Classic, kindOf("otherCase"));
    EXPECT_EQ(DeviceKind::Ios, kindOf("both"));
    EXPECT_EQ(DeviceKind::None, kindOf("none"));
}

TEST(Device, AnswersThePlugIn)
{
    const ScratchFolder scratch;
    scratch.write("a", "text");
    Device device(folder(scratch.root()), DeviceKind::Ios, QStringLiteral("/work/"));
    EXPECT_TRUE(device.isIOSDevice());
    EXPECT_FALSE(device.isAccessBlocked());
    EXPECT_EQ(QStringLiteral("/work/"), device.localDataPath());
    VDev *const dev = vDevOpen(VDevDevice, device.devicePath().toUtf8().constData());
    EXPECT_EQ("text", readAll(dev, "a"));
}

// Copies `path` of a device to a local file; the bytes written.
int copyFile(VDev *dev, const QByteArray &path, const QByteArray &target)
{
    const QByteArray bytes = readAll(dev, path);
    VFile *const copy = vFileOpen(vDevOpen(VDevHost, ""), target.constData(), writing);
    const int count = vFileWrite(copy, bytes.constData(), bytes.size());
    vFileClose(copy);
    return count;
}

TEST(DeviceFilesThreads, UseOneDeviceFromSeveralThreads)
{
    const RegisteredFolder device;
    const ScratchFolder target;
    for (int i = 0; i < 8; ++i)
        device.scratch.write(QByteArray::number(i), QByteArray(1000, char('a' + i)));
    std::atomic<int> bytes{0};
    runOnThreads(8, [&](int number) {
        const QByteArray name = QByteArray::number(number);
        for (int round = 0; round < 50; ++round)
            bytes += copyFile(device.open(), name, target.path(name));
    });
    EXPECT_EQ(8 * 50 * 1000, bytes);
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(QByteArray(1000, char('a' + i)), target.read(QByteArray::number(i)));
}

TEST(DeviceFilesThreads, RegisterAndDropDevicesWhileOthersAreInUse)
{
    const ScratchFolder scratch;
    scratch.write("a", "text");
    std::atomic<int> correct{0};
    const auto useOnce = [&] {
        const DeviceRegistration registration(folder(scratch.root()));
        VDev *const dev = vDevOpen(VDevDevice, registration.name().constData());
        correct += readAll(dev, "a") == "text";
        vFileOpen(dev, "a", reading); // left open
    };
    runOnThreads(8, [&](int) {
        for (int round = 0; round < 50; ++round)
            useOnce();
    });
    EXPECT_EQ(8 * 50, correct);
}

} // namespace
