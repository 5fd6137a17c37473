#include "devices/folder_file_system.h"

#include "support/device_folder.h"
#include "support/threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

using Confinement = FolderFileSystem::Confinement;

namespace {

// The device is a folder among others in a scratch folder.
class FolderDevice : public testing::TestWithParam<Confinement>
{
protected:
    void SetUp() override
    {
        m_scratch.makeFolder("device");
        m_scratch.write("outside/secret.txt", "secret");
        FileError error;
        m_files = FolderFileSystem::openFolder(m_scratch.path("device"), &error, GetParam());
        ASSERT_TRUE(m_files) << error.text.toStdString();
    }

    FileError::Kind openError(const QByteArray &path)
    {
        FileError error;
        EXPECT_FALSE(m_files->open(path, &error)) << path.constData();
        EXPECT_FALSE(error.text.isEmpty());
        return error.kind;
    }

    FileError::Kind infoError(const QByteArray &path)
    {
        FileError error;
        FileInfo info;
        EXPECT_FALSE(m_files->info(path, &info, &error)) << path.constData();
        return error.kind;
    }

    QByteArray content(const QByteArray &path)
    {
        FileError error;
        const auto file = m_files->open(path, &error);
        if (!file)
            return "not opened: " + error.text.toUtf8();
        QByteArray bytes(1000, '\0');
        const qint64 count = file->read(0, bytes.data(), bytes.size(), &error);
        return bytes.left(static_cast<int>(count));
    }

    ScratchFolder m_scratch;
    std::unique_ptr<FolderFileSystem> m_files;
};

INSTANTIATE_TEST_SUITE_P(EachConfinement, FolderDevice,
                         testing::Values(Confinement::BestAvailable, Confinement::NameByName),
                         [](const auto &info) {
                             return info.param == Confinement::NameByName ? "NameByName"
                                                                          : "BestAvailable";
                         });

TEST_P(FolderDevice, OpensAFileWithAndWithoutALeadingSlash)
{
    m_scratch.write("device/DCIM/100APPLE/a.jpg", "picture");
    EXPECT_EQ("picture", content("DCIM/100APPLE/a.jpg"));
    EXPECT_EQ("picture", content("/DCIM/100APPLE/a.jpg"));
    EXPECT_EQ("picture", content("//DCIM/./100APPLE//a.jpg"));
}

TEST_P(FolderDevice, TellsAFileFromAFolder)
{
    m_scratch.write("device/DCIM/a.jpg", "picture");
    FileInfo info;
    FileError error;
    ASSERT_TRUE(m_files->info("/DCIM/a.jpg", &info, &error));
    EXPECT_EQ(FileInfo::File, info.type);
    EXPECT_EQ(7, info.size);
    ASSERT_TRUE(m_files->info("/DCIM", &info, &error));
    EXPECT_EQ(FileInfo::Folder, info.type);
    EXPECT_EQ(0, info.size);
    ASSERT_TRUE(m_files->info("/", &info, &error));
    EXPECT_EQ(FileInfo::Folder, info.type);
}

TEST_P(FolderDevice, TellsTheModificationTimeInNanoseconds)
{
    m_scratch.write("device/a.jpg", "picture");
    const timespec times[] = {{1, 0}, {1580466030, 123456789}};
    ASSERT_EQ(0, ::utimensat(AT_FDCWD, m_scratch.path("device/a.jpg").constData(), times, 0));
    FileInfo info;
    FileError error;
    ASSERT_TRUE(m_files->info("a.jpg", &info, &error));
    EXPECT_EQ(1580466030123456789, info.modified);
}

TEST_P(FolderDevice, ListsAFolderInByteOrder)
{
    m_scratch.write("device/DCIM/b", "");
    m_scratch.write("device/DCIM/a", "");
    m_scratch.write("device/DCIM/\xff", "");
    m_scratch.makeFolder("device/DCIM/B");
    QList<QByteArray> names;
    FileError error;
    ASSERT_TRUE(m_files->list("/DCIM", &names, &error));
    EXPECT_EQ((QList<QByteArray>{"B", "a", "b", "\xff"}), names);
}

TEST_P(FolderDevice, LeavesTheNamesAloneWhenAFolderIsMissing)
{
    QList<QByteArray> names = {"untouched"};
    FileError error;
    EXPECT_FALSE(m_files->list("/DCIM", &names, &error));
    EXPECT_EQ(FileError::NotFound, error.kind);
    EXPECT_EQ(QList<QByteArray>{"untouched"}, names);
}

TEST_P(FolderDevice, RefusesPathsThatClimbOut)
{
    m_scratch.makeFolder("device/DCIM");
    EXPECT_EQ(FileError::Outside, openError("../outside/secret.txt"));
    EXPECT_EQ(FileError::Outside, openError("/../outside/secret.txt"));
    EXPECT_EQ(FileError::Outside, openError("DCIM/../../outside/secret.txt"));
    EXPECT_EQ(FileError::Outside, infoError("DCIM/../../outside"));
    EXPECT_EQ(FileError::Outside, infoError(".."));
    QList<QByteArray> names;
    FileError error;
    EXPECT_FALSE(m_files->list("..", &names, &error));
    EXPECT_EQ(FileError::Outside, error.kind);
}

TEST_P(FolderDevice, TakesAnAbsoluteNameForOneOnTheDevice)
{
    EXPECT_EQ(FileError::NotFound, openError(m_scratch.path("outside/secret.txt")));
    EXPECT_EQ(FileError::NotFound, openError("/etc/passwd"));
    EXPECT_EQ(FileError::NotFound, infoError("/proc/self/root"));
}

TEST_P(FolderDevice, RefusesALinkToAFileOutside)
{
    m_scratch.makeLink("device/absolute.txt", m_scratch.path("outside/secret.txt"));
    m_scratch.makeLink("device/relative.txt", "../outside/secret.txt");
    EXPECT_EQ(FileError::Outside, openError("absolute.txt"));
    EXPECT_EQ(FileError::Outside, openError("relative.txt"));
    EXPECT_EQ(FileError::Outside, infoError("absolute.txt"));
    EXPECT_EQ(FileError::Outside, infoError("relative.txt"));
}

TEST_P(FolderDevice, RefusesALinkToAFolderOutside)
{
    m_scratch.makeLink("device/absolute", m_scratch.path("outside"));
    m_scratch.makeLink("device/relative", "../outside");
    for (const char *name : {"absolute", "relative"}) {
        for (const char *rest : {"/secret.txt", "/none.txt", "/secret.txt/x"}) {
            EXPECT_EQ(FileError::Outside, openError(name + QByteArray(rest)));
            EXPECT_EQ(FileError::Outside, infoError(name + QByteArray(rest)));
        }
        QList<QByteArray> names;
        FileError error;
        EXPECT_FALSE(m_files->list(name, &names, &error));
        EXPECT_EQ(FileError::Outside, error.kind);
        EXPECT_TRUE(names.isEmpty());
    }
}

TEST_P(FolderDevice, HasDescriptorsOfItsRegularFilesOnly)
{
    m_scratch.write("device/DCIM/a", "picture");
    m_scratch.makePipe("device/pipe");
    m_scratch.makeLink("device/absolute", m_scratch.path("outside/secret.txt"));
    m_scratch.makeLink("device/relative", "../outside");
    FileError error;
    const UniqueFd file = m_files->openLocal("/DCIM/a", &error);
    char bytes[8] = {};
    EXPECT_EQ(7, ::read(file.get(), bytes, sizeof(bytes)));
    EXPECT_EQ(QByteArray("picture"), bytes);
    const auto errorOf = [&](const char *path) {
        EXPECT_FALSE(m_files->openLocal(path, &error).isOpen()) << path;
        return error.kind;
    };
    EXPECT_EQ(FileError::NotFound, errorOf("DCIM/b"));
    for (const char *path : {"DCIM", "pipe"})
        EXPECT_EQ(FileError::WrongType, errorOf(path)) << path;
    for (const char *path : {"absolute", "relative/secret.txt", "../outside/secret.txt"})
        EXPECT_EQ(FileError::Outside, errorOf(path)) << path;
}

TEST_P(FolderDevice, RefusesAChainOfLinksThatEndsOutside)
{
    m_scratch.makeFolder("device/DCIM");
    m_scratch.makeLink("device/first", "DCIM/second");
    m_scratch.makeLink("device/DCIM/second", "../../outside/secret.txt");
    EXPECT_EQ(FileError::Outside, openError("first"));
    EXPECT_EQ(FileError::Outside, openError("first/x"));
}

TEST_P(FolderDevice, RefusesALinkToItself)
{
    m_scratch.makeLink("device/loop", "loop");
    EXPECT_EQ(FileError::Outside, openError("loop"));
    EXPECT_EQ(FileError::Outside, openError("loop/x"));
}

TEST_P(FolderDevice, DoesNotWaitForAPipe)
{
    m_scratch.makePipe("device/pipe");
    EXPECT_EQ(FileError::WrongType, openError("pipe"));
    FileInfo info;
    FileError error;
    ASSERT_TRUE(m_files->info("pipe", &info, &error));
    EXPECT_EQ(FileInfo::Other, info.type);
}

TEST_P(FolderDevice, DoesNotOpenASocket)
{
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const QByteArray name = m_scratch.path("device/socket");
    ASSERT_LT(size_t(name.size()), sizeof(address.sun_path));
    qstrcpy(address.sun_path, name.constData());
    ASSERT_EQ(0, ::bind(fd, reinterpret_cast<sockaddr *>(&address), sizeof(address)));
    EXPECT_EQ(FileError::WrongType, openError("socket"));
    ::close(fd);
}

TEST_P(FolderDevice, DoesNotOpenAFolderAsAFile)
{
    m_scratch.makeFolder("device/DCIM");
    EXPECT_EQ(FileError::WrongType, openError("DCIM"));
    EXPECT_EQ(FileError::WrongType, openError("/"));
}

TEST_P(FolderDevice, TakesAPathThroughAFileForMissing)
{
    m_scratch.write("device/a.jpg", "picture");
    EXPECT_EQ(FileError::NotFound, openError("a.jpg/b.jpg"));
    EXPECT_EQ(FileError::NotFound, openError("none.jpg"));
    EXPECT_EQ(FileError::NotFound, openError(QByteArray(5000, 'x')));
}

TEST_P(FolderDevice, LeavesTheMeaningOfCaseToTheDisk)
{
    m_scratch.write("device/DCIM/img.jpg", "lower");
    // On most disks there is no such file, on some it is the same one.
    const QByteArray expected = m_scratch.exists("device/DCIM/IMG.JPG")
                                    ? QByteArray("lower")
                                    : QByteArray("not opened: No such file or directory");
    EXPECT_EQ(expected, content("DCIM/IMG.JPG"));
}

TEST_P(FolderDevice, OpensNamesInAnyEncoding)
{
    for (const QByteArray name : {"gr\xc3\xbc\xc3\x9f.jpg", "gr\xfc\xdf.jpg", "\x01\x7f\n.jpg"}) {
        m_scratch.write("device/" + name, name);
        EXPECT_EQ(name, content(name));
    }
}

TEST_P(FolderDevice, ReadsBeyondTwoGibibytes)
{
    const qint64 offset = (qint64(5) << 30) + 12345;
    m_scratch.writeSparse("device/large.mov", offset);
    const int fd = ::open(m_scratch.path("device/large.mov").constData(), O_WRONLY | O_APPEND);
    ASSERT_EQ(3, ::write(fd, "end", 3));
    ::close(fd);

    FileInfo info;
    FileError error;
    ASSERT_TRUE(m_files->info("large.mov", &info, &error));
    EXPECT_EQ(offset + 3, info.size);
    const auto file = m_files->open("large.mov", &error);
    ASSERT_TRUE(file);
    EXPECT_EQ(offset + 3, file->size(&error));
    char bytes[10] = {};
    EXPECT_EQ(4, file->read(offset - 1, bytes, sizeof(bytes), &error));
    EXPECT_EQ(QByteArray("\0end", 4), QByteArray(bytes, 4));
    EXPECT_EQ(0, file->read(offset + 3, bytes, sizeof(bytes), &error));
    EXPECT_EQ(0, file->read(offset + 100, bytes, sizeof(bytes), &error));
}

TEST_P(FolderDevice, AnswersNothingOnceItIsClosed)
{
    m_scratch.write("device/a.jpg", "picture");
    FileError error;
    const auto file = m_files->open("a.jpg", &error);
    ASSERT_TRUE(file);
    EXPECT_EQ(DeviceState::Ready, m_files->state());
    m_files->close();
    EXPECT_EQ(DeviceState::Gone, m_files->state());

    char bytes[10] = {};
    EXPECT_EQ(-1, file->read(0, bytes, sizeof(bytes), &error));
    EXPECT_EQ(FileError::Disconnected, error.kind);
    EXPECT_EQ(FileError::Disconnected, infoError("a.jpg"));
    QList<QByteArray> names;
    EXPECT_FALSE(m_files->list("/", &names, &error));
    EXPECT_EQ(FileError::Disconnected, error.kind);
    EXPECT_FALSE(m_files->open("a.jpg", &error));
    EXPECT_EQ(FileError::Disconnected, error.kind);
}

TEST_P(FolderDevice, TakesAFileForNoFolderToList)
{
    m_scratch.write("device/a.jpg", "picture");
    FileError error;
    QList<QByteArray> names;
    EXPECT_FALSE(m_files->list("a.jpg", &names, &error));
    EXPECT_EQ(FileError::WrongType, error.kind);
    EXPECT_FALSE(m_files->list("a.jpg/x", &names, &error));
    EXPECT_EQ(FileError::NotFound, error.kind);
}

TEST(FolderFileSystem, HasOneIdByWhateverNameItIsOpened)
{
    const ScratchFolder scratch;
    scratch.makeFolder("real");
    scratch.makeFolder("other");
    scratch.makeLink("link", "real");
    FileError error;
    const auto real = FolderFileSystem::openFolder(scratch.path("real"), &error);
    const auto link = FolderFileSystem::openFolder(scratch.path("link/"), &error);
    const auto other = FolderFileSystem::openFolder(scratch.path("other"), &error);
    EXPECT_EQ(real->id(), link->id());
    EXPECT_NE(real->id(), other->id());
    EXPECT_EQ(scratch.path("link/"), link->name());
    EXPECT_EQ(DeviceState::Ready, real->state());
}

TEST_P(FolderDevice, OutlivesARenameOfItsFolder)
{
    m_scratch.write("device/a.jpg", "picture");
    ASSERT_EQ(
        0, ::rename(m_scratch.path("device").constData(), m_scratch.path("renamed").constData()));
    EXPECT_EQ("picture", content("a.jpg"));
}

TEST_P(FolderDevice, IsGoneWhenItsFolderIsRemoved)
{
    m_scratch.write("device/a.jpg", "picture");
    EXPECT_EQ(FileError::NotFound, openError("b.jpg"));
    ASSERT_EQ(0, ::unlink(m_scratch.path("device/a.jpg").constData()));
    EXPECT_EQ(FileError::NotFound, openError("a.jpg"));
    EXPECT_EQ(DeviceState::Ready, m_files->state());
    ASSERT_EQ(0, ::rmdir(m_scratch.path("device").constData()));
    EXPECT_EQ(DeviceState::Gone, m_files->state());
    EXPECT_EQ(FileError::Disconnected, openError("a.jpg"));
    EXPECT_EQ(FileError::Disconnected, infoError("DCIM/a.jpg"));
    EXPECT_EQ(FileError::Disconnected, infoError("/"));
    FileError error;
    QList<QByteArray> names;
    EXPECT_FALSE(m_files->list("", &names, &error));
    EXPECT_EQ(FileError::Disconnected, error.kind);
}

TEST(FileErrors, TellADeviceThatIsGoneFromAFileThatCanNotBeRead)
{
    for (const int code : {ENODEV, ENOTCONN, ESHUTDOWN})
        EXPECT_EQ(FileError::Disconnected, FileError::fromErrno(code).kind) << code;
    for (const int code : {EIO, ENOMEM, EMFILE})
        EXPECT_EQ(FileError::Failed, FileError::fromErrno(code).kind) << code;
}

TEST_P(FolderDevice, ShowsItsFilesByTheirNamesOnTheHost)
{
    EXPECT_EQ(m_scratch.path("device/DCIM/a.jpg"), m_files->displayName("/DCIM//a.jpg"));
}

TEST(FolderFileSystem, FollowsALinkInsideTheFolderWhereTheKernelConfinesIt)
{
    const ScratchFolder scratch;
    scratch.write("real/a.jpg", "picture");
    scratch.makeLink("link", "real");
    FileError error;
    const auto files = FolderFileSystem::openFolder(scratch.root(), &error);
    const auto file = files->open("link/a.jpg", &error);
    if (!file)
        GTEST_SKIP() << "this kernel does not confine links: " << error.text.toStdString();
    char bytes[10] = {};
    EXPECT_EQ(7, file->read(0, bytes, sizeof(bytes), &error));
}

TEST(FolderFileSystem, RefusesALinkInsideTheFolderWhereTheKernelConfinesNone)
{
    const ScratchFolder scratch;
    scratch.write("real/a.jpg", "picture");
    scratch.makeLink("link", "real");
    FileError error;
    const auto files =
        FolderFileSystem::openFolder(scratch.root(), &error, Confinement::NameByName);
    FileInfo info;
    EXPECT_FALSE(files->info("link/a.jpg", &info, &error));
    EXPECT_EQ(FileError::Outside, error.kind);
    EXPECT_TRUE(files->info("real/a.jpg", &info, &error));
}

TEST(FolderFileSystem, OpensAFolderThroughALink)
{
    const ScratchFolder scratch;
    scratch.write("real/a.jpg", "picture");
    scratch.makeLink("link", "real");
    FileError error;
    const auto files = FolderFileSystem::openFolder(scratch.path("link"), &error);
    ASSERT_TRUE(files) << error.text.toStdString();
    EXPECT_TRUE(files->open("a.jpg", &error));
}

TEST(FolderFileSystem, TellsAMissingFolderFromAFile)
{
    const ScratchFolder scratch;
    scratch.write("file", "text");
    FileError error;
    EXPECT_FALSE(FolderFileSystem::openFolder(scratch.path("none"), &error));
    EXPECT_EQ(FileError::NotFound, error.kind);
    EXPECT_FALSE(FolderFileSystem::openFolder(scratch.path("file"), &error));
    EXPECT_EQ(FileError::WrongType, error.kind);
    EXPECT_FALSE(FolderFileSystem::openFolder(scratch.path("file/x"), &error));
    EXPECT_EQ(FileError::NotFound, error.kind);
}

// Reads the file `number` of `files` and lists its folder; how much of that went right.
int readAndList(FolderFileSystem &files, int number)
{
    FileError error;
    QByteArray bytes(2000, '\0');
    const auto file = files.open("DCIM/" + QByteArray::number(number), &error);
    const qint64 count = file ? file->read(0, bytes.data(), bytes.size(), &error) : -1;
    const bool isRead = count == 1000 && bytes.startsWith(QByteArray(1000, char('a' + number)));
    QList<QByteArray> names;
    const bool isListed = files.list("/DCIM", &names, &error) && names.size() == 8;
    return int(isRead) + int(isListed);
}

TEST(FolderFileSystemThreads, ServesSeveralThreadsAtATime)
{
    const ScratchFolder scratch;
    for (int i = 0; i < 8; ++i)
        scratch.write("DCIM/" + QByteArray::number(i), QByteArray(1000, char('a' + i)));
    FileError error;
    const auto files = FolderFileSystem::openFolder(scratch.root(), &error);
    std::atomic<int> correct{0};
    runOnThreads(8, [&](int number) {
        for (int round = 0; round < 50; ++round)
            correct += readAndList(*files, number);
    });
    EXPECT_EQ(8 * 50 * 2, correct);
}

} // namespace
