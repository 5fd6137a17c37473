#include "classic/drive_link.h"

#include "devices/unique_fd.h"
#include "support/device_folder.h"
#include "support/environment.h"
#include "support/threads.h"

#include <QFile>

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <cstring>
#include <sys/stat.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>

namespace {

QByteArray folderOf(const DriveLink &link)
{
    const QByteArray name = QFile::encodeName(link.driveName());
    return name.left(name.lastIndexOf('/'));
}

bool isThere(const QByteArray &path)
{
    struct stat status = {};
    return ::lstat(path.constData(), &status) == 0;
}

TEST(DriveLink, LeadsToTheFolderOfPhotos)
{
    const ScratchFolder scratch;
    scratch.write("Photos/Thumbs/a", "thumbnails");
    const DriveLink link(scratch.path("Photos"));
    QFile file(QStringLiteral("%1:/Photos%2").arg(link.driveName(), QStringLiteral("/Thumbs/a")));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ("thumbnails", file.readAll());
}

TEST(DriveLink, LiesWhereNobodyElseCanGo)
{
    const ScratchFolder scratch;
    scratch.makeFolder("Photos");
    const DriveLink link(scratch.path("Photos"));
    struct stat status = {};
    ASSERT_EQ(0, ::stat(folderOf(link).constData(), &status));
    EXPECT_EQ(0700u, status.st_mode & 07777);
}

TEST(DriveLink, IsGoneWithItsObject)
{
    const ScratchFolder scratch;
    scratch.write("Photos/a", "");
    QByteArray folder;
    {
        const DriveLink link(scratch.path("Photos"));
        folder = folderOf(link);
        EXPECT_TRUE(isThere(folder));
    }
    EXPECT_FALSE(isThere(folder));
    EXPECT_TRUE(scratch.exists("Photos/a"));
}

TEST(DriveLink, DiffersFromThatOfEveryOtherDrive)
{
    const ScratchFolder scratch;
    scratch.write("one/a", "1");
    scratch.write("two/a", "2");
    const DriveLink one(scratch.path("one"));
    const DriveLink two(scratch.path("two"));
    EXPECT_NE(one.driveName(), two.driveName());
    QFile file(two.driveName() + QStringLiteral(":/Photos/a"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ("2", file.readAll());
}

TEST(DriveLink, IsMadeInTheFolderForTemporaryFiles)
{
    const ScratchFolder scratch;
    scratch.makeFolder("tmp");
    const Environment folder("TMPDIR", scratch.path("tmp"));
    const DriveLink link(scratch.root());
    EXPECT_TRUE(folderOf(link).startsWith(scratch.path("tmp/")));
}

// The plug-in puts the two names into "%1:/Photos%2" one after the other.
TEST(DriveLink, HasNoNameInWhichAFileNameCouldBePut)
{
    const ScratchFolder scratch;
    scratch.write("photos/a", "thumbnails");
    for (const char *name : {"%1", "100%2", "%9%"}) {
        scratch.makeFolder(name);
        const Environment folder("TMPDIR", scratch.path(name));
        const DriveLink link(scratch.path("photos"));
        QFile file(QStringLiteral("%1:/Photos%2").arg(link.driveName()).arg("/a"));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << file.fileName().toStdString();
    }
}

TEST(DriveLinkThreads, MakeAndDropLinksOfTheirOwn)
{
    constexpr int threads = 4;
    constexpr int rounds = 50;
    const ScratchFolder scratch;
    scratch.makeFolder("tmp");
    for (int i = 0; i < threads; ++i)
        scratch.write("photos" + QByteArray::number(i) + "/a", QByteArray::number(i));
    const Environment folder("TMPDIR", scratch.path("tmp"));
    std::atomic<int> wrong{0};
    runOnThreads(threads, [&](int number) {
        const QByteArray name = QByteArray::number(number);
        for (int i = 0; i < rounds; ++i) {
            const DriveLink link(scratch.path("photos" + name));
            QFile file(link.driveName() + QStringLiteral(":/Photos/a"));
            if (!file.open(QIODevice::ReadOnly) || file.readAll() != name)
                ++wrong;
        }
    });
    EXPECT_EQ(0, wrong);
    EXPECT_EQ(QList<QByteArray>(), scratch.everythingIn("tmp"));
}

TEST(DriveLink, LeavesNothingWhenItCanNotBeMade)
{
    const ScratchFolder scratch;
    scratch.makeFolder("tmp");
    const Environment folder("TMPDIR", scratch.path("tmp"));
    const QByteArray tooLong(5000, 'x');
    EXPECT_THROW(DriveLink{tooLong}, std::system_error);
    EXPECT_THROW(DriveLink{QByteArray()}, std::system_error);
    EXPECT_EQ(QList<QByteArray>(), scratch.everythingIn("tmp"));
}

TEST(DriveLink, TellsThatThereIsNoFolderForTemporaryFiles)
{
    const ScratchFolder scratch;
    const Environment folder("TMPDIR", scratch.path("missing"));
    try {
        const DriveLink link(scratch.root());
        FAIL() << link.driveName().toStdString();
    } catch (const std::system_error &error) {
        EXPECT_EQ(ENOENT, error.code().value());
    }
}

// A test run in the background inherits signals that are ignored.
void stopIgnoring(int signal)
{
    struct sigaction action = {};
    if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN)
        std::signal(signal, SIG_DFL);
}

// A process with two links that waits for `signal`.
[[noreturn]] void waitWithLinks(const QByteArray &target, int report, int signal)
{
    stopIgnoring(signal);
    const DriveLink one(target);
    const DriveLink two(target);
    const QByteArray folders = folderOf(one) + '\n' + folderOf(two) + '\n';
    if (::write(report, folders.constData(), static_cast<size_t>(folders.size())) > 0)
        ::pause();
    ::_exit(1);
}

class DriveLinkOfAProgram : public testing::TestWithParam<int>
{
};

TEST_P(DriveLinkOfAProgram, IsGoneWhenASignalEndsIt)
{
    const ScratchFolder scratch;
    scratch.makeFolder("Photos");
    int ends[2] = {};
    ASSERT_EQ(0, ::pipe(ends));
    const UniqueFd reading(ends[0]);
    const UniqueFd writing(ends[1]);
    const pid_t child = ::fork();
    if (child == 0)
        waitWithLinks(scratch.path("Photos"), writing.get(), GetParam());
    ASSERT_GT(child, 0);
    char names[1000] = {};
    ASSERT_GT(::read(reading.get(), names, sizeof(names) - 1), 0);
    const QList<QByteArray> folders = QByteArray(names).trimmed().split('\n');
    ASSERT_EQ(2, folders.size());
    for (const QByteArray &folder : folders)
        EXPECT_TRUE(isThere(folder));
    ASSERT_EQ(0, ::kill(child, GetParam()));
    int status = 0;
    ASSERT_EQ(child, ::waitpid(child, &status, 0));
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == GetParam());
    for (const QByteArray &folder : folders)
        EXPECT_FALSE(isThere(folder));
}

// A process that makes and drops links for as long as it may, on a thread of its own or not.
[[noreturn]] void makeLinks(const QByteArray &target, int report, bool onItsOwnThread)
{
    stopIgnoring(SIGTERM);
    const auto work = [&] {
        for (bool isFirst = true;; isFirst = false) {
            const DriveLink link(target);
            if (isFirst && ::write(report, "", 1) != 1)
                ::_exit(1);
        }
    };
    std::thread thread;
    if (onItsOwnThread)
        thread = std::thread(work);
    else
        work();
    for (;;)
        ::pause();
}

// Sends a signal to such a process after `spins` rounds of waiting. Whether it ended by it.
bool endsMakerOfLinks(const QByteArray &target, int spins, bool onItsOwnThread)
{
    int ends[2] = {};
    if (::pipe(ends) != 0)
        return false;
    const UniqueFd reading(ends[0]);
    const UniqueFd writing(ends[1]);
    const pid_t child = ::fork();
    if (child == 0)
        makeLinks(target, writing.get(), onItsOwnThread);
    char byte = 0;
    const bool hasBegun = child > 0 && ::read(reading.get(), &byte, 1) == 1;
    for (std::atomic<int> i{0}; i < spins; ++i) {
    }
    int status = 0;
    return hasBegun && ::kill(child, SIGTERM) == 0 && ::waitpid(child, &status, 0) == child &&
           WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM;
}

void expectNothingOfMakers(bool onItsOwnThread)
{
    constexpr int rounds = 100;
    const ScratchFolder scratch;
    scratch.makeFolder("tmp");
    scratch.makeFolder("photos");
    const Environment folder("TMPDIR", scratch.path("tmp"));
    int ended = 0;
    for (int round = 0; round < rounds; ++round)
        ended += endsMakerOfLinks(scratch.path("photos"), round * 200, onItsOwnThread);
    EXPECT_EQ(rounds, ended);
    EXPECT_EQ(QList<QByteArray>(), scratch.everythingIn("tmp"));
}

TEST(DriveLinkOfAMaker, IsGoneWhenASignalComesWhileItIsMade)
{
    expectNothingOfMakers(false);
}

TEST(DriveLinkOfAMaker, IsGoneWhenAnotherThreadGetsASignalWhileItIsMade)
{
    expectNothingOfMakers(true);
}

TEST(DriveLink, LeavesTheSignalsOfItsThreadAsTheyAre)
{
    const ScratchFolder scratch;
    sigset_t before;
    sigset_t after;
    sigset_t failed;
    ::pthread_sigmask(SIG_BLOCK, nullptr, &before);
    const DriveLink link(scratch.root());
    ::pthread_sigmask(SIG_BLOCK, nullptr, &after);
    EXPECT_THROW(DriveLink{QByteArray()}, std::system_error);
    ::pthread_sigmask(SIG_BLOCK, nullptr, &failed);
    for (int signal = 1; signal < SIGRTMIN; ++signal) {
        EXPECT_EQ(sigismember(&before, signal), sigismember(&after, signal)) << signal;
        EXPECT_EQ(sigismember(&before, signal), sigismember(&failed, signal)) << signal;
    }
}

INSTANTIATE_TEST_SUITE_P(Signals, DriveLinkOfAProgram,
                         testing::Values(SIGHUP, SIGINT, SIGPIPE, SIGQUIT, SIGTERM),
                         [](const auto &info) { return std::string(::sigabbrev_np(info.param)); });

} // namespace
