#include "classic/drive_links.h"

#include "base/unique_fd.h"
#include "support/device_folder.h"
#include "support/environment.h"
#include "support/threads.h"

#include <QFile>

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>

namespace {

QByteArray folderOf(const DriveLinks &link)
{
    const QByteArray name = QFile::encodeName(link.driveName());
    return name.left(name.lastIndexOf('/'));
}

QByteArray readLink(const DriveLinks &links, int number)
{
    QFile file(QStringLiteral("%1:/Photos/%2").arg(links.driveName()).arg(number));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("none");
}

UniqueFd opened(const QByteArray &path)
{
    UniqueFd fd(::open(path.constData(), O_RDONLY | O_CLOEXEC));
    EXPECT_TRUE(fd.isOpen()) << path.constData();
    return fd;
}

bool isThere(const QByteArray &path)
{
    struct stat status = {};
    return ::lstat(path.constData(), &status) == 0;
}

TEST(DriveLinks, LeadToOpenFiles)
{
    const ScratchFolder scratch;
    scratch.write("a", "one");
    scratch.write("b", "two");
    const UniqueFd a = opened(scratch.path("a"));
    const UniqueFd b = opened(scratch.path("b"));
    DriveLinks links;
    const int first = links.add(a.get());
    const int second = links.add(b.get());
    EXPECT_EQ("one", readLink(links, first));
    EXPECT_EQ("two", readLink(links, second));
    links.remove(first);
    EXPECT_EQ("none", readLink(links, first));
    EXPECT_EQ("two", readLink(links, second));
}

TEST(DriveLinks, LeadToThemWhateverBecomesOfTheirNames)
{
    const ScratchFolder scratch;
    scratch.write("a", "one");
    scratch.write("secret", "outside");
    const UniqueFd a = opened(scratch.path("a"));
    DriveLinks links;
    const int number = links.add(a.get());
    ASSERT_EQ(0, ::unlink(scratch.path("a").constData()));
    scratch.makeLink("a", scratch.path("secret"));
    EXPECT_EQ("one", readLink(links, number));
}

TEST(DriveLinks, AreNotMoreThanThereMayBe)
{
    const ScratchFolder scratch;
    scratch.write("a", "one");
    const UniqueFd a = opened(scratch.path("a"));
    DriveLinks links;
    for (int i = 0; i < DriveLinks::most; ++i)
        EXPECT_LE(0, links.add(a.get()));
    EXPECT_EQ(-1, links.add(a.get()));
    links.remove(17);
    EXPECT_EQ(17, links.add(a.get()));
}

TEST(DriveLinks, LieWhereNobodyElseCanGo)
{
    const DriveLinks link;
    struct stat status = {};
    ASSERT_EQ(0, ::stat(folderOf(link).constData(), &status));
    EXPECT_EQ(0700u, status.st_mode & 07777);
}

TEST(DriveLinks, AreGoneWithTheirObject)
{
    const ScratchFolder scratch;
    scratch.write("a", "one");
    const UniqueFd a = opened(scratch.path("a"));
    QByteArray folder;
    {
        DriveLinks links;
        links.add(a.get());
        links.add(a.get());
        folder = folderOf(links);
        EXPECT_TRUE(isThere(folder));
    }
    EXPECT_FALSE(isThere(folder));
    EXPECT_EQ("one", scratch.read("a"));
}

TEST(DriveLinks, DifferFromThoseOfEveryOtherDrive)
{
    const ScratchFolder scratch;
    scratch.write("a", "1");
    scratch.write("b", "2");
    const UniqueFd a = opened(scratch.path("a"));
    const UniqueFd b = opened(scratch.path("b"));
    DriveLinks one;
    DriveLinks two;
    EXPECT_NE(one.driveName(), two.driveName());
    EXPECT_EQ(one.add(a.get()), two.add(b.get()));
    EXPECT_EQ("1", readLink(one, 0));
    EXPECT_EQ("2", readLink(two, 0));
}

TEST(DriveLinks, AreMadeInTheFolderForTemporaryFiles)
{
    const ScratchFolder scratch;
    scratch.makeFolder("tmp");
    const Environment folder("TMPDIR", scratch.path("tmp"));
    const DriveLinks link;
    EXPECT_TRUE(folderOf(link).startsWith(scratch.path("tmp/")));
}

// The plug-in puts the two names into "%1:/Photos%2" one after the other.
TEST(DriveLinks, HaveNoNameInWhichAFileNameCouldBePut)
{
    const ScratchFolder scratch;
    scratch.write("a", "thumbnails");
    const UniqueFd a = opened(scratch.path("a"));
    for (const char *name : {"%1", "100%2", "%9%"}) {
        scratch.makeFolder(name);
        const Environment folder("TMPDIR", scratch.path(name));
        DriveLinks links;
        links.add(a.get());
        QFile file(QStringLiteral("%1:/Photos%2").arg(links.driveName()).arg("/0"));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << file.fileName().toStdString();
    }
}

TEST(DriveLinksThreads, MakeAndDropLinksOfTheirOwn)
{
    constexpr int threads = 4;
    constexpr int rounds = 50;
    const ScratchFolder scratch;
    scratch.makeFolder("tmp");
    const Environment folder("TMPDIR", scratch.path("tmp"));
    for (int i = 0; i < threads; ++i)
        scratch.write(QByteArray::number(i), QByteArray::number(i));
    std::atomic<int> wrong{0};
    runOnThreads(threads, [&](int number) {
        const QByteArray name = QByteArray::number(number);
        const UniqueFd file = opened(scratch.path(name));
        for (int i = 0; i < rounds; ++i) {
            DriveLinks links;
            wrong += readLink(links, links.add(file.get())) == name ? 0 : 1;
        }
    });
    EXPECT_EQ(0, wrong);
    EXPECT_EQ(QList<QByteArray>(), scratch.everythingIn("tmp"));
}

TEST(DriveLinks, TellThatThereIsNoFolderForTemporaryFiles)
{
    const ScratchFolder scratch;
    const Environment folder("TMPDIR", scratch.path("missing"));
    try {
        const DriveLinks link;
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
[[noreturn]] void waitWithLinks(int report, int signal)
{
    stopIgnoring(signal);
    DriveLinks one;
    DriveLinks two;
    for (int i = 0; i < DriveLinks::most; ++i)
        one.add(report);
    two.add(report);
    const QByteArray folders = folderOf(one) + '\n' + folderOf(two) + '\n';
    if (::write(report, folders.constData(), static_cast<size_t>(folders.size())) > 0)
        ::pause();
    ::_exit(1);
}

class DriveLinksOfAProgram : public testing::TestWithParam<int>
{
};

TEST_P(DriveLinksOfAProgram, AreGoneWhenASignalEndsIt)
{
    int ends[2] = {};
    ASSERT_EQ(0, ::pipe(ends));
    const UniqueFd reading(ends[0]);
    const UniqueFd writing(ends[1]);
    const pid_t child = ::fork();
    if (child == 0)
        waitWithLinks(writing.get(), GetParam());
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
[[noreturn]] void makeLinks(int report, bool onItsOwnThread)
{
    stopIgnoring(SIGTERM);
    const auto work = [&] {
        for (bool isFirst = true;; isFirst = false) {
            DriveLinks links;
            links.add(report);
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
bool endsMakerOfLinks(int spins, bool onItsOwnThread)
{
    int ends[2] = {};
    if (::pipe(ends) != 0)
        return false;
    const UniqueFd reading(ends[0]);
    const UniqueFd writing(ends[1]);
    const pid_t child = ::fork();
    if (child == 0)
        makeLinks(writing.get(), onItsOwnThread);
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
    const Environment folder("TMPDIR", scratch.path("tmp"));
    int ended = 0;
    for (int round = 0; round < rounds; ++round)
        ended += endsMakerOfLinks(round * 200, onItsOwnThread);
    EXPECT_EQ(rounds, ended);
    EXPECT_EQ(QList<QByteArray>(), scratch.everythingIn("tmp"));
}

TEST(DriveLinksOfAMaker, AreGoneWhenASignalComesWhileItIsMade)
{
    expectNothingOfMakers(false);
}

TEST(DriveLinksOfAMaker, AreGoneWhenAnotherThreadGetsASignalWhileItIsMade)
{
    expectNothingOfMakers(true);
}

TEST(DriveLinks, LeaveTheSignalsOfItsThreadAsTheyAre)
{
    const ScratchFolder scratch;
    sigset_t before;
    sigset_t after;
    ::pthread_sigmask(SIG_BLOCK, nullptr, &before);
    const DriveLinks link;
    ::pthread_sigmask(SIG_BLOCK, nullptr, &after);
    const Environment folder("TMPDIR", scratch.path("missing"));
    sigset_t failed;
    EXPECT_THROW(DriveLinks(), std::system_error);
    ::pthread_sigmask(SIG_BLOCK, nullptr, &failed);
    for (int signal = 1; signal < SIGRTMIN; ++signal) {
        EXPECT_EQ(sigismember(&before, signal), sigismember(&after, signal)) << signal;
        EXPECT_EQ(sigismember(&before, signal), sigismember(&failed, signal)) << signal;
    }
}

INSTANTIATE_TEST_SUITE_P(Signals, DriveLinksOfAProgram,
                         testing::Values(SIGHUP, SIGINT, SIGPIPE, SIGQUIT, SIGTERM),
                         [](const auto &info) { return std::string(::sigabbrev_np(info.param)); });

} // namespace
