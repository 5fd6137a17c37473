#include "classic/case_blind_paths.h"

#include "devices/folder_file_system.h"
#include "support/device_folder.h"

#include <gtest/gtest.h>

namespace {

class CaseBlindPathsTest : public testing::Test
{
protected:
    QByteArray resolved(const QByteArray &path)
    {
        FileError error;
        const auto files = FolderFileSystem::openFolder(m_scratch.root(), &error);
        return CaseBlindPaths(*files).resolved(path);
    }

    const ScratchFolder m_scratch;
};

TEST_F(CaseBlindPathsTest, FindNamesOfOtherCaseInEveryFolderOfAPath)
{
    m_scratch.write("PHOTOS/thumbs/f1019_1.ITHMB", "");
    EXPECT_EQ("/PHOTOS/thumbs/f1019_1.ITHMB", resolved("/Photos/Thumbs/F1019_1.ithmb"));
}

TEST_F(CaseBlindPathsTest, PreferTheNameItself)
{
    m_scratch.write("Photos/a", "");
    m_scratch.write("PHOTOS/a", "");
    EXPECT_EQ("/Photos/a", resolved("/Photos/a"));
}

TEST_F(CaseBlindPathsTest, TakeTheFirstInByteOrderOfSeveral)
{
    m_scratch.write("pHOTOS/a", "");
    m_scratch.write("PHOTOS/a", "");
    EXPECT_EQ("/PHOTOS/a", resolved("/Photos/a"));
}

TEST_F(CaseBlindPathsTest, KnowTheCaseOfLettersBeyondAscii)
{
    m_scratch.write("été", "");
    EXPECT_EQ("/été", resolved("/ÉTÉ"));
}

TEST_F(CaseBlindPathsTest, HoldAComposedLetterForItsParts)
{
    m_scratch.write("e\xcc\x81t\xc3\xa9", "");
    EXPECT_EQ("/e\xcc\x81t\xc3\xa9", resolved("/\xc3\xa9te\xcc\x81"));
}

TEST_F(CaseBlindPathsTest, TakeNamesThatAreNoUtf8AsTheyAre)
{
    m_scratch.write("\xe9x", "");
    m_scratch.write("\xe8x", "");
    EXPECT_EQ("/\xe9x", resolved("/\xe9x"));
    EXPECT_EQ("/\xe9X", resolved("/\xe9X"));
}

TEST_F(CaseBlindPathsTest, LeaveThePathBehindAMissingNameAlone)
{
    m_scratch.write("PHOTOS/a", "");
    EXPECT_EQ("/PHOTOS/Thumbs/A", resolved("/Photos/Thumbs/A"));
    EXPECT_EQ("/PHOTOS/a/Thumbs", resolved("/Photos/A/Thumbs"));
}

TEST_F(CaseBlindPathsTest, LeaveTheWayOutForTheFileSystemToRefuse)
{
    EXPECT_EQ("/../x", resolved("/../x"));
}

TEST_F(CaseBlindPathsTest, TakeAPathWithoutASlashInFrontForOneFromTheRoot)
{
    m_scratch.write("PHOTOS/a", "");
    EXPECT_EQ("/PHOTOS/a", resolved("Photos//A"));
    EXPECT_EQ("", resolved("/"));
}

// A device with the folder "A", which cannot be listed.
class ListedDevice : public DeviceFileSystem
{
public:
    int lists = 0;

    bool list(const QByteArray &path, QList<QByteArray> *names, FileError *) override
    {
        ++lists;
        if (!path.isEmpty())
            return false;
        *names = {"A"};
        return true;
    }

    std::unique_ptr<DeviceFile> open(const QByteArray &, FileError *) override { return nullptr; }
    bool info(const QByteArray &, FileInfo *, FileError *) override { return false; }
    DeviceState state() override { return DeviceState::Ready; }
    void close() override {}
    QByteArray id() const override { return "listed"; }
    QByteArray name() const override { return "listed"; }
    QByteArray displayName(const QByteArray &path) const override { return path; }
};

TEST(CaseBlindPathsOfADevice, ListEachFolderOnceAndNoneBehindAMissingName)
{
    constexpr int count = 1000;
    ListedDevice device;
    CaseBlindPaths paths(device);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ("/A" + QByteArray("/a").repeated(count),
                  paths.resolved(QByteArray("/a").repeated(count + 1)));
        EXPECT_EQ(2, device.lists);
    }
}

} // namespace
