#include "support/export_fixture.h"

#include <filesystem>

namespace {

class FilteredCommands : public ProgramTest
{
protected:
    /// Three photos and a video with files and thumbnails: the third photo is in the trash, the
    /// second from iCloud, so that the plug-in does not list it.
    FilteredCommands()
    {
        PhotosDatabase database;
        for (int id = 1; id <= 4; ++id) {
            database.rows.assets.push_back(id == 4 ? videoRow(id) : photoRow(id));
            const QByteArray name = "IMG_000" + QByteArray::number(id) + ".JPG";
            database.rows.assets.back().fileName = name.toStdString();
            m_scratch.write("device/DCIM/100APPLE/" + name, "picture");
            m_scratch.write("device/PhotoData/Thumbnails/V2/DCIM/100APPLE/" + name + "/5005.JPG",
                            QByteArray("\xff\xd8\xff\xe0 thumbnail"));
        }
        database.rows.assets[1].savedAssetType = 6;
        database.rows.assets[2].trashedState = 1;
        database.rows.albums = {albumRow(7)};
        database.join().add(7, 4);
        writeDatabase(m_scratch, "device", database);
    }

    /// What the command writes into a new folder, in byte order and without the extension.
    QByteArray written(const QByteArray &command, const QList<QByteArray> &arguments)
    {
        const ProgramResult result = run(QList<QByteArray>{command, "-d", device()} + arguments);
        EXPECT_EQ(0, result.exitCode) << result.errors.constData();
        QByteArray names;
        for (const QByteArray &name : exportedFiles(m_scratch, "out"))
            names += name.left(name.lastIndexOf('.')) + ' ';
        std::filesystem::remove_all(out().toStdString());
        return names.trimmed();
    }

    QByteArray exported(const QList<QByteArray> &arguments)
    {
        return written("export", arguments + QList<QByteArray>{out()}).replace("IMG_000", "");
    }

    QByteArray out() const { return m_scratch.path("out"); }
};

TEST_F(FilteredCommands, ExportWhatIsChosen)
{
    EXPECT_EQ("1 2 4", exported({}));
    EXPECT_EQ("1 2 3 4", exported({"--all"}));
    EXPECT_EQ("3", exported({"--trash"}));
    EXPECT_EQ("4", exported({"--kind", "video"}));
    EXPECT_EQ("4", exported({"--album", "album"}));
    EXPECT_EQ("2 3 4", exported({"3", "2-9"}));
    EXPECT_EQ("", exported({"--favorite"}));
}

TEST_F(FilteredCommands, ExportTheIdsInStandardInput)
{
    m_scratch.write("input", "4 1\n");
    m_setup.input = QString::fromUtf8(m_scratch.path("input"));
    EXPECT_EQ("1 4", exported({"-"}));
    m_scratch.write("input", "");
    EXPECT_EQ("", exported({"-"}));
}

TEST_F(FilteredCommands, WriteThumbnailsOfWhatIsChosenToAFolder)
{
    EXPECT_EQ("1-IMG_0001 3-IMG_0003 4-IMG_0004", written("thumb", {"--all", out()}));
    EXPECT_EQ("1-IMG_0001 3-IMG_0003 4-IMG_0004", written("thumb", {"--all", "-o", out()}));
    EXPECT_EQ("1-IMG_0001 4-IMG_0004", written("thumb", {"1-9", "-o", out()}));
    EXPECT_EQ("4-IMG_0004", written("thumb", {"--kind", "video", "-o", out()}));
    EXPECT_EQ("4-IMG_0004", written("thumb", {"--album", "7", "-o", out()}));
    EXPECT_EQ("3-IMG_0003", written("thumb", {"--all", "3", "-o", out() + '/'}));
}

TEST_F(FilteredCommands, WriteOneThumbnailToThePictureThatIsNamed)
{
    const QByteArray file = m_scratch.path("newest.jpg");
    EXPECT_EQ(0, run({"thumb", "-d", device(), "--reverse", "--limit", "1", "-o", file}).exitCode);
    EXPECT_GT(m_scratch.size("newest.jpg"), 0);
}

TEST_F(FilteredCommands, CountWhatHasNoThumbnail)
{
    const ProgramResult all = run({"thumb", "-d", device(), "--all", out()});
    EXPECT_EQ("wrote 3 thumbnails to " + out() + ", 1 without thumbnail\n", all.output);
    const ProgramResult named = run({"thumb", "-d", device(), "2", "-o", m_scratch.path("2.jpg")});
    EXPECT_EQ(1, named.exitCode);
    EXPECT_EQ("photolib: 2: no thumbnail\n", named.errors);
}

TEST_F(FilteredCommands, RefuseTwoFoldersForThumbnails)
{
    expectFailure({"thumb", "-d", device(), "--all", "a", "-o", "b"},
                  "--all: takes no folder beside -o (photolib thumb --help shows the usage)", 2);
    expectFailure({"thumb", "-d", device(), "--trash", "--kind", "video", "-o", "-"},
                  "standard output: no photo or video was chosen");
}

TEST_F(FilteredCommands, TellWhatTheLibraryLacksOnRequest)
{
    const QByteArray start = "photolib: the library has no ";
    const ProgramResult verbose = run({"photos", "-d", device(), "-v"});
    EXPECT_EQ(0, verbose.exitCode);
    EXPECT_EQ(1, verbose.errors.count(start)) << verbose.errors.constData();
    EXPECT_TRUE(verbose.errors.contains("ZFAVORITE")) << verbose.errors.constData();
    EXPECT_EQ(QByteArray(), run({"photos", "-d", device()}).errors);
}

} // namespace
