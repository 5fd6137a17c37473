#include "support/program_fixture.h"

#include <gtest/gtest.h>

#include <QFileInfo>

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
    writeTwoPhotos();
    for (const char *chosen : {"", "relative", "./cache"}) {
        const QByteArray home = m_scratch.path("home" + QByteArray::number(qstrlen(chosen)));
        setVariable("HOME", home);
        setVariable("XDG_CACHE_HOME", chosen);
        EXPECT_EQ(0, run({"info", "-d", device()}).exitCode);
        EXPECT_TRUE(QFileInfo::exists(QString::fromUtf8(home + "/.cache/photolib/work"))) << chosen;
    }
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
