#include "base/cache_folder.h"
#include "support/environment.h"
#include "support/program_fixture.h"

#include <gtest/gtest.h>

#include <unistd.h>

namespace {

class CacheFolder : public ProgramTest
{
protected:
    CacheFolder() { m_scratch.write("precious/text", "text"); }

    void setVariable(const char *name, const QByteArray &value)
    {
        m_setup.environment.append(qMakePair(QString::fromLatin1(name), QString::fromUtf8(value)));
    }

    void expectPreciousKept() const { EXPECT_EQ("text", m_scratch.read("precious/text")); }
};

TEST_F(CacheFolder, IsNotEmptiedThroughALinkInPlaceOfHalfASample)
{
    m_scratch.makeFolder("cache/photolib");
    m_scratch.makeLink("cache/photolib/sample.partial", m_scratch.path("precious"));
    const ProgramResult result = run({"info"});
    EXPECT_EQ(0, result.exitCode) << result.errors.constData();
    expectPreciousKept();
    EXPECT_FALSE(m_scratch.exists("cache/photolib/sample.partial"));
}

TEST_F(CacheFolder, LosesHalfASampleThatAnEarlierRunLeft)
{
    m_scratch.write("cache/photolib/sample.partial/DCIM/half", "text");
    m_scratch.makeLink("cache/photolib/sample.partial/link", m_scratch.path("precious"));
    EXPECT_EQ(0, run({"info"}).exitCode);
    EXPECT_FALSE(m_scratch.exists("cache/photolib/sample.partial"));
    EXPECT_FALSE(m_scratch.exists("cache/photolib/sample/DCIM/half"));
    expectPreciousKept();
}

TEST_F(CacheFolder, MustNotBeALink)
{
    writeTwoPhotos();
    m_scratch.makeFolder("cache");
    const QByteArray cache = m_scratch.path("cache/photolib");
    m_scratch.makeLink("cache/photolib", m_scratch.path("precious"));
    const QByteArray line = cache + ": a link, where a folder itself is needed";
    expectFailure({"info"}, line);
    expectFailure({"info", "-d", device()}, line);
}

TEST_F(CacheFolder, HoldsNoLinksInPlaceOfItsFolders)
{
    writeTwoPhotos();
    m_scratch.makeFolder("cache/photolib");
    for (const QByteArray name : {"work", "sample"}) {
        const QByteArray path = m_scratch.path("cache/photolib/" + name);
        m_scratch.makeLink("cache/photolib/" + name, m_scratch.path("precious"));
        const QByteArray line = path + ": a link, where a folder itself is needed";
        if (name == "work")
            expectFailure({"info", "-d", device()}, line);
        else
            expectFailure({"info"}, line);
    }
    expectPreciousKept();
}

TEST_F(CacheFolder, MustNotBeAnotherUsers)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only the superuser can give a folder to another user";
    writeTwoPhotos();
    m_scratch.makeFolder("cache/photolib");
    const QByteArray cache = m_scratch.path("cache/photolib");
    ASSERT_EQ(0, ::chown(cache.constData(), 12345, 12345));
    expectFailure({"info"}, cache + ": a folder of another user");
    expectFailure({"info", "-d", device()}, cache + ": a folder of another user");
}

TEST_F(CacheFolder, IsInTheHomeFolderWhereNoAbsolutePathIsSet)
{
    for (const char *chosen : {"", "relative", "./cache"}) {
        const QByteArray homeName = "home" + QByteArray::number(qstrlen(chosen));
        setVariable("HOME", m_scratch.path(homeName));
        setVariable("XDG_CACHE_HOME", chosen);
        EXPECT_EQ(0, run({"info"}).exitCode);
        EXPECT_TRUE(m_scratch.exists(homeName + "/.cache/photolib/sample/PhotoData/Photos.sqlite"))
            << chosen;
    }
}

TEST(CacheFolderPath, HasOneSlashBehindTheHomeFolder)
{
    const Environment none("XDG_CACHE_HOME", "");
    for (const auto &[home, path] :
         {std::pair("/", "/.cache/photolib"), std::pair("/home/anna", "/home/anna/.cache/photolib"),
          std::pair("/home/anna/", "/home/anna/.cache/photolib")}) {
        const Environment variable("HOME", home);
        EXPECT_EQ(path, cacheFolder());
    }
}

// What a program that was killed left, for this device and for another one.
TEST_F(CacheFolder, LosesTheCopiesOfAKilledProgramInTheNextRun)
{
    writeTwoPhotos();
    m_scratch.makeFolder("cache/photolib/work");
    writeDatabase(m_scratch, "endless", twoPhotos());
    m_scratch.writeEndless("endless/PhotoData/Photos.sqlite-wal");
    Program program(m_setup, {"info", "-d", m_scratch.path("endless")});
    ASSERT_TRUE(program.waitForStarted());
    const auto copies = [this] {
        int count = 0;
        for (const QByteArray &path : m_scratch.everythingIn("cache"))
            count += path.contains("/Photos.sqlite");
        return count;
    };
    while (copies() == 0)
        ASSERT_FALSE(program.waitForFinished(5)) << program.readAllStandardError().constData();
    program.kill();
    ASSERT_TRUE(program.waitForFinished());
    EXPECT_GT(copies(), 0);
    EXPECT_EQ(0, run({"info", "-d", device()}).exitCode);
    EXPECT_EQ(QList<QByteArray>(), m_scratch.everythingIn("cache/photolib/work"));
}

TEST_F(CacheFolder, IsNotUsedInTheDevice)
{
    writeTwoPhotos();
    setVariable("XDG_CACHE_HOME", device() + "/cache");
    const QList<QByteArray> before = m_scratch.everythingIn();
    const ProgramResult result = run({"info", "-d", device()});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_TRUE(result.errors.endsWith(": the work folder must not lie in the device\n"))
        << result.errors.constData();
    EXPECT_EQ(before, m_scratch.everythingIn());
}

TEST_F(CacheFolder, NeedsAHomeFolder)
{
    writeTwoPhotos();
    setVariable("XDG_CACHE_HOME", "");
    m_setup.unset.append("HOME");
    const QByteArray line = "HOME: is not set, which tells where the user's cache folder is";
    expectFailure({"info"}, line);
    expectFailure({"info", "-d", device()}, line);
    m_setup.unset.clear();
    setVariable("HOME", "");
    expectFailure({"info"}, line);
    setVariable("HOME", "relative");
    expectFailure({"info"}, "HOME: is not an absolute path, but relative");
}

TEST_F(CacheFolder, NeedsNoHomeFolderBesideANamedWorkFolder)
{
    writeTwoPhotos();
    setVariable("XDG_CACHE_HOME", "");
    m_setup.unset.append("HOME");
    EXPECT_EQ(0, run({"info", "-d", device(), "--work-dir", m_scratch.path("work")}).exitCode);
}

TEST_F(CacheFolder, AndANamedWorkFolderAreNoLinks)
{
    writeTwoPhotos();
    m_scratch.makeLink("work", m_scratch.path("precious"));
    expectFailure({"info", "-d", device(), "--work-dir", m_scratch.path("work")},
                  m_scratch.path("work") + ": a link, where a folder itself is needed");
}

} // namespace
