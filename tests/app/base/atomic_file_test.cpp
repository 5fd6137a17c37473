#include "base/atomic_file.h"

#include "base/folders.h"
#include "support/device_folder.h"
#include "support/disk_faults.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <sys/stat.h>
#include <system_error>

namespace {

class AtomicFilesInAFolder : public testing::Test
{
protected:
    AtomicFilesInAFolder()
    {
        m_scratch.makeFolder("folder");
        m_folder = openFolder(m_scratch.path("folder"));
    }

    int folder() const { return m_folder.get(); }

    struct stat statusOf(const QByteArray &name) const
    {
        struct stat status = {};
        EXPECT_EQ(0, ::lstat(m_scratch.path("folder/" + name).constData(), &status));
        return status;
    }

    QList<QByteArray> names() const { return m_scratch.everythingIn("folder"); }

    ScratchFolder m_scratch;
    UniqueFd m_folder;
};

class AtomicFiles : public AtomicFilesInAFolder,
                    public testing::WithParamInterface<AtomicFile::Hiding>
{
};

// On a disk that has neither a rename that replaces nothing nor links, and so no files without a
// name.
class AtomicFilesWithoutLinks : public AtomicFilesInAFolder
{
protected:
    /// Makes a file with the content "new" and calls `name` to give it a name, on such a disk.
    template <class Name>
    void makeFile(Name name) const
    {
        const LackOfLinks lack;
        AtomicFile file(folder(), AtomicFile::Hiding::TemporaryName);
        file.write("new", 3);
        name(file);
    }
};

INSTANTIATE_TEST_SUITE_P(Hiding, AtomicFiles,
                         testing::Values(AtomicFile::Hiding::BestAvailable,
                                         AtomicFile::Hiding::TemporaryName),
                         [](const testing::TestParamInfo<AtomicFile::Hiding> &info) {
                             return info.param == AtomicFile::Hiding::BestAvailable
                                        ? "BestAvailable"
                                        : "TemporaryName";
                         });

TEST_P(AtomicFiles, HaveTheirContentWhenTheyGetTheirName)
{
    {
        AtomicFile file(folder(), GetParam());
        file.write("one", 3);
        file.write("two", 3);
        EXPECT_FALSE(m_scratch.exists("folder/name"));
        EXPECT_TRUE(file.giveName("name"));
    }
    EXPECT_EQ("onetwo", m_scratch.read("folder/name"));
    EXPECT_EQ(1, names().size());
}

TEST_P(AtomicFiles, AreGoneWithoutAName)
{
    {
        AtomicFile file(folder(), GetParam());
        file.write("text", 4);
    }
    EXPECT_EQ(QList<QByteArray>(), names());
}

TEST_P(AtomicFiles, ReplaceNothingThatHasTheName)
{
    m_scratch.write("folder/file", "old");
    m_scratch.makeLink("folder/link", m_scratch.path("elsewhere"));
    m_scratch.makeFolder("folder/folder");
    {
        AtomicFile file(folder(), GetParam());
        file.write("new", 3);
        for (const char *name : {"file", "link", "folder"})
            EXPECT_FALSE(file.giveName(name)) << name;
        EXPECT_TRUE(file.giveName("free"));
    }
    EXPECT_EQ("old", m_scratch.read("folder/file"));
    EXPECT_EQ("new", m_scratch.read("folder/free"));
    EXPECT_FALSE(m_scratch.exists("elsewhere"));
    EXPECT_EQ(4, names().size());
}

TEST_F(AtomicFilesWithoutLinks, GetTheirNameWhole)
{
    makeFile([](AtomicFile &file) { EXPECT_TRUE(file.giveName("name")); });
    EXPECT_EQ("new", m_scratch.read("folder/name"));
    EXPECT_EQ(1, names().size());
}

TEST_F(AtomicFilesWithoutLinks, ReplaceNothingThatHasTheName)
{
    m_scratch.write("folder/file", "old");
    m_scratch.makeLink("folder/link", m_scratch.path("elsewhere"));
    m_scratch.makeFolder("folder/folder");
    makeFile([](AtomicFile &file) {
        for (const char *name : {"file", "link", "folder"})
            EXPECT_FALSE(file.giveName(name)) << name;
        EXPECT_TRUE(file.giveName("free"));
    });
    EXPECT_EQ("old", m_scratch.read("folder/file"));
    EXPECT_EQ("new", m_scratch.read("folder/free"));
    EXPECT_FALSE(m_scratch.exists("elsewhere"));
    EXPECT_EQ(4, names().size());
}

TEST_F(AtomicFilesWithoutLinks, LeaveNothingUnderANameThatTheyCouldNotGet)
{
    makeFile([](AtomicFile &file) {
        const LackOfRenames lack;
        try {
            file.giveName("name");
            FAIL() << "it got its name";
        } catch (const std::system_error &error) {
            EXPECT_EQ(EIO, error.code().value());
        }
    });
    EXPECT_EQ(QList<QByteArray>(), names());
}

TEST_P(AtomicFiles, ReplaceAFileOrLinkOnRequest)
{
    m_scratch.write("elsewhere", "untouched");
    m_scratch.write("folder/file", "old");
    m_scratch.makeLink("folder/link", m_scratch.path("elsewhere"));
    for (const char *name : {"file", "link"}) {
        AtomicFile file(folder(), GetParam());
        file.write("new", 3);
        file.replace(name);
    }
    EXPECT_EQ("new", m_scratch.read("folder/file"));
    EXPECT_EQ("new", m_scratch.read("folder/link"));
    EXPECT_EQ("untouched", m_scratch.read("elsewhere"));
    EXPECT_EQ(2, names().size());
}

TEST_P(AtomicFiles, LeaveNothingWhenTheyCannotReplace)
{
    m_scratch.makeFolder("folder/folder");
    {
        AtomicFile file(folder(), GetParam());
        EXPECT_THROW(file.replace("folder"), std::system_error);
    }
    EXPECT_EQ(1, names().size());
}

TEST_F(AtomicFilesInAFolder, ReplaceAFileByWhatIsGivenPieceByPiece)
{
    m_scratch.write("folder/name", "old");
    replaceFile(folder(), "name", [&](const ByteSink &sink) {
        sink("one ", 4);
        EXPECT_EQ("old", m_scratch.read("folder/name"));
        sink("two", 3);
    });
    EXPECT_EQ("one two", m_scratch.read("folder/name"));
    EXPECT_EQ(QList<QByteArray>{m_scratch.path("folder/name")}, names());
}

TEST_F(AtomicFilesInAFolder, LeaveNothingOfWhatIsGivenInPart)
{
    struct Stop {
    };
    m_scratch.write("folder/name", "old");
    const auto giveInPart = [](const ByteSink &sink) {
        sink("half", 4);
        throw Stop();
    };
    EXPECT_THROW(replaceFile(folder(), "name", giveInPart), Stop);
    EXPECT_EQ("old", m_scratch.read("folder/name"));
    EXPECT_EQ(QList<QByteArray>{m_scratch.path("folder/name")}, names());
}

TEST_P(AtomicFiles, KeepATimeToTheNanosecond)
{
    const qint64 times[] = {1580466030123456789, 0, -1, -1500000000};
    for (const qint64 time : times) {
        AtomicFile file(folder(), GetParam());
        file.setModified(time);
        file.replace("name");
        const timespec modified = statusOf("name").st_mtim;
        EXPECT_EQ(time, modified.tv_sec * 1000000000 + modified.tv_nsec);
    }
}

TEST_P(AtomicFiles, HaveThePermissionsOfAnyNewFile)
{
    const mode_t before = ::umask(0027);
    AtomicFile(folder(), GetParam()).giveName("name");
    ::umask(before);
    EXPECT_EQ(mode_t(0640), statusOf("name").st_mode & 07777);
}

TEST_P(AtomicFiles, FailWhereThereIsNoFolder)
{
    EXPECT_THROW(AtomicFile(-1, GetParam()), std::system_error);
}

} // namespace
