#include "classic/drive_links.h"

#include "base/unique_fd.h"
#include "support/device_folder.h"
#include "support/environment.h"
#include "support/threads.h"

#include <QFile>

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <map>
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

// A process that waits with links until it is killed.
class ProcessWithLinks
{
public:
    ProcessWithLinks()
    {
        int ends[2] = {};
        EXPECT_EQ(0, ::pipe(ends));
        const UniqueFd reading(ends[0]);
        const UniqueFd writing(ends[1]);
        m_child = ::fork();
        if (m_child == 0)
            waitWithLinks(writing.get());
        char name[1000] = {};
        EXPECT_GT(::read(reading.get(), name, sizeof(name) - 1), 0);
        m_folder = name;
    }

    ~ProcessWithLinks() { kill(); }

    ProcessWithLinks(const ProcessWithLinks &) = delete;
    ProcessWithLinks &operator=(const ProcessWithLinks &) = delete;

    void kill()
    {
        if (m_child > 0) {
            ::kill(m_child, SIGKILL);
            ::waitpid(m_child, nullptr, 0);
        }
        m_child = 0;
    }

    QByteArray folder() const { return m_folder; }

private:
    [[noreturn]] static void waitWithLinks(int report)
    {
        DriveLinks links;
        for (int i = 0; i < DriveLinks::most; ++i)
            links.add(report);
        const QByteArray folder = folderOf(links);
        if (::write(report, folder.constData(), static_cast<size_t>(folder.size())) > 0)
            ::pause();
        ::_exit(1);
    }

    pid_t m_child = 0;
    QByteArray m_folder;
};

// A folder for temporary files of its own.
class DeadDriveLinks : public testing::Test
{
protected:
    DeadDriveLinks() { m_scratch.makeFolder("tmp"); }

    ScratchFolder m_scratch;

private:
    const Environment m_variable{"TMPDIR", m_scratch.path("tmp")};
};

TEST_F(DeadDriveLinks, AreRemovedWhenTheirProcessWasKilled)
{
    ProcessWithLinks one;
    ProcessWithLinks two;
    one.kill();
    two.kill();
    EXPECT_TRUE(isThere(one.folder()));
    DriveLinks::removeDead();
    EXPECT_EQ(QList<QByteArray>(), m_scratch.everythingIn("tmp"));
}

TEST_F(DeadDriveLinks, AreNotThoseOfAProcessThatLives)
{
    const ProcessWithLinks living;
    m_scratch.write("a", "one");
    const UniqueFd a = opened(m_scratch.path("a"));
    DriveLinks own;
    const int number = own.add(a.get());
    DriveLinks::removeDead();
    EXPECT_TRUE(isThere(living.folder() + "/iPod:/Photos/0"));
    EXPECT_EQ("one", readLink(own, number));
}

TEST_F(DeadDriveLinks, AreNotThoseOfAnotherUser)
{
    constexpr uid_t nobody = 65534;
    m_scratch.makeFolder("tmp/photolib-drive-000000/iPod:/Photos");
    if (::chown(m_scratch.path("tmp/photolib-drive-000000").constData(), nobody, nobody) != 0)
        GTEST_SKIP() << "only the superuser can give a folder away";
    DriveLinks::removeDead();
    EXPECT_TRUE(m_scratch.exists("tmp/photolib-drive-000000/iPod:/Photos"));
}

TEST_F(DeadDriveLinks, LeadNowhereElse)
{
    m_scratch.write("mine/iPod:/Photos/0", "kept");
    m_scratch.makeLink("tmp/photolib-drive-link", m_scratch.path("mine"));
    m_scratch.makeFolder("tmp/photolib-drive-111111");
    m_scratch.makeLink("tmp/photolib-drive-111111/iPod:", m_scratch.path("mine/iPod:"));
    m_scratch.makeFolder("tmp/photolib-drive-222222/iPod:");
    m_scratch.makeLink("tmp/photolib-drive-222222/iPod:/Photos",
                       m_scratch.path("mine/iPod:/Photos"));
    DriveLinks::removeDead();
    EXPECT_EQ("kept", m_scratch.read("mine/iPod:/Photos/0"));
    EXPECT_TRUE(m_scratch.exists("tmp/photolib-drive-link"));
}

TEST_F(DeadDriveLinks, AreNotWhatHasOtherNames)
{
    m_scratch.write("tmp/photolib-other/iPod:/Photos/0", "");
    m_scratch.write("tmp/photolib-drive-333333/letter", "");
    DriveLinks::removeDead();
    EXPECT_TRUE(m_scratch.exists("tmp/photolib-other/iPod:/Photos/0"));
    EXPECT_TRUE(m_scratch.exists("tmp/photolib-drive-333333/letter"));
}

using DeadDriveLinksThreads = DeadDriveLinks;

// Each round may find a folder that another thread has made and not locked yet.
TEST_F(DeadDriveLinksThreads, AreTakenFromNobodyWhoIsMakingThem)
{
    constexpr int rounds = 300;
    m_scratch.write("a", "one");
    const UniqueFd a = opened(m_scratch.path("a"));
    std::atomic<bool> isOver{false};
    std::thread sweeper([&] {
        while (!isOver)
            DriveLinks::removeDead();
    });
    int wrong = 0;
    for (int i = 0; i < rounds; ++i) {
        DriveLinks links;
        wrong += readLink(links, links.add(a.get())) == "one" ? 0 : 1;
    }
    isOver = true;
    sweeper.join();
    EXPECT_EQ(0, wrong);
    EXPECT_EQ(QList<QByteArray>(), m_scratch.everythingIn("tmp"));
}

TEST(DriveLinks, LeaveTheSignalsOfTheirProcessAsTheyAre)
{
    std::map<int, struct sigaction> before;
    for (const int signal : {SIGHUP, SIGINT, SIGPIPE, SIGQUIT, SIGTERM})
        ::sigaction(signal, nullptr, &before[signal]);
    sigset_t blockedBefore;
    ::pthread_sigmask(SIG_BLOCK, nullptr, &blockedBefore);
    const DriveLinks links;
    for (const auto &[signal, action] : before) {
        struct sigaction now = {};
        ::sigaction(signal, nullptr, &now);
        EXPECT_EQ(action.sa_handler, now.sa_handler) << signal;
    }
    sigset_t blocked;
    ::pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    for (int signal = 1; signal < SIGRTMIN; ++signal)
        EXPECT_EQ(sigismember(&blockedBefore, signal), sigismember(&blocked, signal)) << signal;
}

} // namespace
