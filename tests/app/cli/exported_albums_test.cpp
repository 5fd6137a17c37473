#include "support/export_fixture.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

class ExportedAlbums : public ExportProgramTest
{
protected:
    /// Three photos, of which an album has the third and the first, in this order.
    void SetUp() override
    {
        for (const char *name : {"a.jpg", "b.jpg", "c.jpg"})
            addPhoto(name, name);
        m_database.rows.albums = {albumRow(7)};
        m_database.rows.albums[0].title = "Sea";
        m_database.join().rows = {{7, 3, 1}, {7, 1, 2}};
        writeDevice();
    }

    static QByteArray targetOf(const QByteArray &path)
    {
        char target[256];
        const ssize_t length = ::readlink(path.constData(), target, sizeof(target));
        return QByteArray(target, static_cast<int>(qMax<ssize_t>(length, 0)));
    }

    static quint64 inodeOf(const QByteArray &path)
    {
        struct stat status = {};
        EXPECT_EQ(0, ::lstat(path.constData(), &status)) << path.constData();
        return status.st_ino;
    }

    const QList<QByteArray> m_photos = {"a.jpg", "b.jpg", "c.jpg"};
    const QList<QByteArray> m_inAlbum = {"Albums/Sea/001 c.jpg", "Albums/Sea/002 a.jpg"};
};

TEST_F(ExportedAlbums, AreNotMadeUnlessTheyAreWanted)
{
    for (const QList<QByteArray> &options : {QList<QByteArray>(), {"--albums", "none"}}) {
        EXPECT_EQ(0, runExport(options).exitCode);
        EXPECT_EQ(m_photos, names());
    }
}

TEST_F(ExportedAlbums, HaveRelativeLinksInTheirOrder)
{
    EXPECT_EQ(0, runExport({"--albums", "link"}).exitCode);
    EXPECT_EQ(m_inAlbum + m_photos, names());
    EXPECT_EQ("../../c.jpg", targetOf(out() + '/' + m_inAlbum[0]));
    EXPECT_EQ("../../a.jpg", targetOf(out() + '/' + m_inAlbum[1]));
    // Which lead to the photos wherever the folder is.
    std::filesystem::rename(out().toStdString(), m_scratch.path("moved").toStdString());
    EXPECT_EQ("c.jpg", m_scratch.read("moved/" + m_inAlbum[0]));
    EXPECT_EQ(0, run({"verify", m_scratch.path("moved")}).exitCode);
}

TEST_F(ExportedAlbums, HaveHardLinksOnRequest)
{
    EXPECT_EQ(0, runExport({"--albums", "hardlink"}).exitCode);
    EXPECT_EQ(m_inAlbum + m_photos, names());
    EXPECT_EQ(inodeOf(out() + "/c.jpg"), inodeOf(out() + '/' + m_inAlbum[0]));
    EXPECT_EQ(inodeOf(out() + "/a.jpg"), inodeOf(out() + '/' + m_inAlbum[1]));
}

TEST_F(ExportedAlbums, HaveCopiesOnRequest)
{
    EXPECT_EQ(0, runExport({"--albums", "copy"}).exitCode);
    EXPECT_EQ(m_inAlbum + m_photos, names());
    EXPECT_NE(inodeOf(out() + "/c.jpg"), inodeOf(out() + '/' + m_inAlbum[0]));
    EXPECT_EQ(QByteArray(), targetOf(out() + '/' + m_inAlbum[0]));
    EXPECT_EQ("c.jpg", m_scratch.read("out/" + m_inAlbum[0]));
    EXPECT_EQ("a.jpg", m_scratch.read("out/" + m_inAlbum[1]));
}

TEST_F(ExportedAlbums, FollowTheLibrary)
{
    EXPECT_EQ(0, runExport({"--albums", "link"}).exitCode);
    EXPECT_EQ("Copied 0 files (0 bytes), 3 unchanged\n", runExport({"--albums", "link"}).output);
    m_scratch.write("out/Albums/Sea/notes.txt", "own");
    m_database.join().rows = {{7, 2, 1}, {7, 3, 2}};
    writeDevice();
    EXPECT_EQ(0, runExport({"--albums", "link"}).exitCode);
    EXPECT_EQ((QList<QByteArray>{"Albums/Sea/001 b.jpg", "Albums/Sea/002 c.jpg",
                                 "Albums/Sea/notes.txt"}) +
                  m_photos,
              names());
    EXPECT_EQ("own", m_scratch.read("out/Albums/Sea/notes.txt"));
}

// Also those that were exported before.
TEST_F(ExportedAlbums, HaveWhatTheFolderHasAndNothingElse)
{
    EXPECT_EQ(0, runExport({"1"}).exitCode);
    EXPECT_EQ(0, runExport({"2", "--albums", "link"}).exitCode);
    EXPECT_EQ((QList<QByteArray>{"Albums/Sea/002 a.jpg", "a.jpg", "b.jpg"}), names());
}

TEST_F(ExportedAlbums, ReplaceNothingOfAPersons)
{
    m_scratch.write("out/" + m_inAlbum[0], "own");
    EXPECT_EQ(0, runExport({"--albums", "link"}).exitCode);
    EXPECT_EQ("own", m_scratch.read("out/" + m_inAlbum[0]));
    EXPECT_EQ("../../c.jpg", targetOf(out() + "/Albums/Sea/001 c (2).jpg"));
}

// No line of the report tells of a folder.
TEST_F(ExportedAlbums, HaveTheirFailuresLookedForInTheMessages)
{
    m_scratch.write("out/Albums", "own");
    const QByteArray report = m_scratch.path("report.jsonl");
    const ProgramResult result = runExport({"--albums", "link", "--report", report});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("Copied 3 files (15 bytes), 0 unchanged, 1 failed (see the messages above)\n",
              result.output);
    EXPECT_EQ("photolib: Albums/Sea: Not a directory\n", result.errors);
    EXPECT_FALSE(m_scratch.read("report.jsonl").contains("failed"));
    EXPECT_EQ("own", m_scratch.read("out/Albums"));
}

TEST_F(ExportedAlbums, KeepAllFromBeingCopiedToADiskWithoutLinks)
{
    m_setup.lacksLinks = true;
    const ProgramResult result = runExport({"--albums", "hardlink"});
    if (result.exitCode == 77)
        GTEST_SKIP() << "no system calls can be taken away here";
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("photolib: Albums: this disk takes no links; use --albums copy\n", result.errors);
    EXPECT_FALSE(m_scratch.exists("out"));
    EXPECT_EQ(0, runExport({"--albums", "copy"}).exitCode);
    EXPECT_EQ(m_inAlbum + m_photos, names());
}

TEST_F(ExportedAlbums, NeedNoLinksWhereNoneIsMade)
{
    m_setup.lacksLinks = true;
    const ProgramResult result = runExport({"2", "--albums", "hardlink"});
    if (result.exitCode == 77)
        GTEST_SKIP() << "no system calls can be taken away here";
    EXPECT_EQ(0, result.exitCode) << result.errors.constData();
    EXPECT_EQ(QList<QByteArray>{"b.jpg"}, names());
}

} // namespace
