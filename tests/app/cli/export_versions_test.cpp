#include "support/export_fixture.h"
#include "support/sample_device.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

// A Live Photo that was edited, with all that may belong to it, and a plain photo.
class VersionsExported : public ExportProgramTest
{
protected:
    void SetUp() override
    {
        addPhoto("a.jpg", "one");
        m_scratch.write(folder + QByteArray("a.MOV"), "film");
        m_scratch.write(folder + QByteArray("a.AAE"), "recipe");
        m_scratch.write(edits + QByteArray("FullSizeRender.jpg"), "edited");
        m_scratch.write(edits + QByteArray("FullSizeRender.mov"), "edited film");
        m_scratch.write(edits + QByteArray("Adjustments.plist"), "how");
        addPhoto("plain.jpg", "two");
        writeDevice();
    }

    /// What an export with `further` puts into a new folder.
    QList<QByteArray> exported(const QList<QByteArray> &further)
    {
        std::filesystem::remove_all(out().toStdString());
        const ProgramResult result = runExport(further);
        EXPECT_EQ(0, result.exitCode) << result.errors.constData();
        return names();
    }

    static constexpr char edits[] = "device/PhotoData/Mutations/DCIM/100APPLE/a/Adjustments/";
};

TEST_F(VersionsExported, AreAllButRecipes)
{
    const QList<QByteArray> all = {"a.MOV", "a.jpg", "a_edited.jpg", "a_edited.mov", "plain.jpg"};
    EXPECT_EQ(all, exported({}));
    EXPECT_EQ("one", m_scratch.read("out/a.jpg"));
    EXPECT_EQ("film", m_scratch.read("out/a.MOV"));
    EXPECT_EQ("edited", m_scratch.read("out/a_edited.jpg"));
    EXPECT_EQ("edited film", m_scratch.read("out/a_edited.mov"));
    EXPECT_EQ(all, exported({"--edited", "both"}));
    EXPECT_EQ(all, exported({"--edited=both", "--live", "both"}));
}

TEST_F(VersionsExported, AreOriginalsOrEditsAsTheWordSays)
{
    EXPECT_EQ((QList<QByteArray>{"a.MOV", "a.jpg", "plain.jpg"}),
              exported({"--edited", "original"}));
    EXPECT_EQ((QList<QByteArray>{"a_edited.jpg", "a_edited.mov", "plain.jpg"}),
              exported({"--edited", "edited"}));
}

TEST_F(VersionsExported, AreWithoutFilmsWhenOnlyStillsAreWanted)
{
    EXPECT_EQ((QList<QByteArray>{"a.jpg", "a_edited.jpg", "plain.jpg"}),
              exported({"--live", "still"}));
}

TEST_F(VersionsExported, HaveTheirRecipesOnRequest)
{
    EXPECT_EQ((QList<QByteArray>{"a.AAE", "a.MOV", "a.jpg", "a.plist", "a_edited.jpg",
                                 "a_edited.mov", "plain.jpg"}),
              exported({"--recipe"}));
    EXPECT_EQ("recipe", m_scratch.read("out/a.AAE"));
    EXPECT_EQ("how", m_scratch.read("out/a.plist"));
}

// A film without its photo, or an edit of another, would be worse than a number.
TEST_F(VersionsExported, KeepOneStemWhateverIsInTheWay)
{
    for (const char *taken : {"a.MOV", "a_edited.mov", "A (2)_EDITED.JPG", "a (3).plist"}) {
        std::filesystem::remove_all(out().toStdString());
        m_scratch.write(QByteArray("out/") + taken, "somebody's");
        EXPECT_EQ(0, runExport({"--recipe", "1"}).exitCode);
        QList<QByteArray> all = names();
        EXPECT_EQ(1, all.removeAll(taken));
        EXPECT_EQ("somebody's", m_scratch.read(QByteArray("out/") + taken));
        const QByteArray stem = all.value(0).left(all.value(0).lastIndexOf('.'));
        EXPECT_EQ((QList<QByteArray>{stem + ".AAE", stem + ".MOV", stem + ".jpg", stem + ".plist",
                                     stem + "_edited.jpg", stem + "_edited.mov"}),
                  all);
    }
}

TEST_F(VersionsExported, AreNoneOfAWordThatIsNotKnown)
{
    const QByteArray hint = " (photolib export --help shows the usage)";
    expectFailure({"export", "-d", device(), "--live", "all", out()},
                  "--live: all: not one of both|still" + hint, 2);
    expectFailure({"export", "-d", device(), "--stored", "small", out()},
                  "--stored: small: not one of all|largest|none" + hint, 2);
    expectFailure({"export", "-d", device(), "--albums", "symlink", out()},
                  "--albums: symlink: not one of copy|hardlink|link|none" + hint, 2);
    expectFailure({"export", "-d", device(), "--update", "always", out()},
                  "--update: always: not one of keep|replace" + hint, 2);
    const ProgramResult sidecar = run({"export", "-d", device(), "--sidecar", "yaml", out()});
    EXPECT_EQ(2, sidecar.exitCode);
    EXPECT_FALSE(m_scratch.exists("out"));
}

// --- of a library that knows which of its photos were edited

class EditedOfASample : public ExportProgramTest
{
protected:
    void SetUp() override { writeSampleTo(QString::fromUtf8(device()), sampleOptions(30)); }

    /// The exported names without their folders.
    QList<QByteArray> exported(const QList<QByteArray> &arguments)
    {
        std::filesystem::remove_all(out().toStdString());
        const ProgramResult result = run(QList<QByteArray>{"export", "-d", device()} + arguments);
        EXPECT_EQ(0, result.exitCode) << result.errors.constData();
        QList<QByteArray> files;
        for (const QByteArray &path : names())
            files.append(path.mid(path.lastIndexOf('/') + 1));
        return files;
    }
};

// As in other commands; the folder stands where a word might.
TEST_F(EditedOfASample, AreAloneWhenNoWordSaysOtherwise)
{
    const QList<QByteArray> edited = {"IMG_0004.JPG", "IMG_0004_edited.jpg",
                                      "IMG_0023.MOV", "IMG_0023_edited.mov",
                                      "IMG_0024.JPG", "IMG_0024_edited.jpg"};
    EXPECT_EQ(edited, exported({"--edited", out()}));
    EXPECT_EQ(edited, exported({"--edited", "--live", "both", out()}));
    EXPECT_EQ(edited, exported({out(), "--edited"}));
    const QList<QByteArray> fourth = {"IMG_0004.JPG", "IMG_0004_edited.jpg"};
    EXPECT_EQ(fourth, exported({"--edited", "1-9", out()}));
    EXPECT_EQ(fourth, exported({"1-9", "--edited", out()}));
    EXPECT_EQ(fourth, exported({"1-9", out(), "--edited"}));
    EXPECT_EQ(fourth, exported({"1-2", "--edited", "3-9", out()}));
}

TEST_F(EditedOfASample, AreAmongTheOthersWithAWord)
{
    const QList<QByteArray> all = exported({out()});
    EXPECT_GT(all.size(), 20);
    EXPECT_EQ(all, exported({"--edited", "both", out()}));
    EXPECT_EQ(all, exported({"--edited=both", out()}));
    EXPECT_EQ(all, exported({out(), "--edited", "both"}));
    const QList<QByteArray> edits = exported({"--edited", "edited", out()});
    EXPECT_GT(edits.size(), 20);
    EXPECT_TRUE(edits.contains("IMG_0004_edited.jpg"));
    EXPECT_FALSE(edits.contains("IMG_0004.JPG"));
    EXPECT_TRUE(edits.contains("IMG_0001.JPG"));
}

// A folder of such a name is one with a path.
TEST_F(EditedOfASample, GoToAFolderThatIsCalledLikeAWordWhenItHasAPath)
{
    EXPECT_EQ((QList<QByteArray>{"IMG_0004.JPG", "IMG_0004_edited.jpg"}),
              exported({"--edited", "both", "4", out()}));
    const ProgramResult result = run({"export", "-d", device(), "--edited", "both"});
    EXPECT_EQ(2, result.exitCode);
    EXPECT_EQ("photolib: DIR is required (photolib export --help shows the usage)\n",
              result.errors);
}

TEST_F(EditedOfASample, AreWithoutTrashAndSharedCopiesUnlessTheseAreWanted)
{
    const auto has = [this](const QList<QByteArray> &options, const QByteArray &name) {
        return exported(options + QList<QByteArray>{out()}).contains(name);
    };
    const QByteArray inTrash = "IMG_0015.JPG";
    const QByteArray isShared = "IMG_0018.JPG";
    EXPECT_FALSE(has({}, inTrash));
    EXPECT_FALSE(has({}, isShared));
    EXPECT_TRUE(has({"--all"}, inTrash));
    EXPECT_FALSE(has({"--all"}, isShared));
    EXPECT_TRUE(has({"--shared"}, isShared));
    EXPECT_FALSE(has({"--shared"}, inTrash));
    EXPECT_EQ(QList<QByteArray>{inTrash}, exported({"--trash", out()}));
}

} // namespace
