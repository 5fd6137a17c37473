#include "support/program_fixture.h"

namespace {

const char note[] = "\nThe edits were made in memory only. The device is not changed.\n";

// Scripts for a device with two photos and three albums: 7 "Trip" with both photos, 8 and 9
// "Twin".
class ProgramEdit : public ProgramTest
{
protected:
    ProgramEdit()
    {
        PhotosDatabase database = twoPhotos();
        database.rows.albums = {albumRow(7), albumRow(8), albumRow(9)};
        database.rows.albums[0].title = "Trip";
        database.rows.albums[1].title = "Twin";
        database.rows.albums[2].title = "Twin";
        database.join().add(7, 2);
        database.join().add(7, 1);
        writeDatabase(m_scratch, "device", database);
        m_scratch.write(twoPhotosPath, "picture");
    }

    ProgramResult edit(const QByteArray &script)
    {
        m_scratch.write("script", script);
        return run({"edit", "-d", device(), m_scratch.path("script")});
    }

    // What became of a script of one line.
    QByteArray resultOf(const QByteArray &line)
    {
        const QByteArray output = edit(line).output;
        const QByteArray row = output.split('\n').value(1);
        return row.mid(row.lastIndexOf("  ") + 2);
    }

    // The row of the album `id` in the table behind the edits.
    static QByteArray albumIn(const QByteArray &output, const QByteArray &id)
    {
        const QByteArray table = output.mid(output.indexOf("\n\n"));
        for (const QByteArray &row : table.split('\n')) {
            if (row.trimmed().startsWith(id + ' '))
                return row.simplified();
        }
        return QByteArray();
    }
};

TEST_F(ProgramEdit, ShowsEachResultAndTheAlbumsAfterIt)
{
    const ProgramResult result = edit("# make one\n"
                                      "add-album \"My Trip\" 1 2\n"
                                      "add-photo 1 Trip\n"
                                      "\n"
                                      "rename 7 \"Long \\\"Trip\\\"\"\n"
                                      "remove-photo \"My Trip\" 1\n"
                                      "rm-album 8\n");
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ(QByteArray(), result.errors);
    EXPECT_EQ(QByteArray("LINE  EDIT                      RESULT\n"
                         "   2  add-album \"My Trip\" 1 2   ok: album 10\n"
                         "   3  add-photo 1 Trip          ok: photo 1\n"
                         "   5  rename 7 \"Long \\\"Trip\\\"\"  ok\n"
                         "   6  remove-photo \"My Trip\" 1  ok\n"
                         "   7  rm-album 8                ok\n"
                         "\n"
                         "      ID  NAME           KIND           PHOTOS\n"
                         "    1000  Camera Roll    camera roll         0\n"
                         "16777215  Photo Library  photo library       3\n"
                         "16777214  Panorama       panoramas           0\n"
                         "16777213  Video          videos              0\n"
                         "       7  Long \"Trip\"    album               3\n"
                         "       9  Twin           album               0\n"
                         "      10  My Trip        user album          1\n") +
                  note,
              result.output)
        << result.output.constData();
}

TEST_F(ProgramEdit, ReadsAScriptFromStandardInput)
{
    m_scratch.write("script", "rm-album 7\n");
    m_setup.input = QString::fromUtf8(m_scratch.path("script"));
    const ProgramResult result = run({"edit", "-d", device(), "-"});
    EXPECT_EQ(0, result.exitCode) << result.errors.constData();
    EXPECT_TRUE(result.output.contains("   1  rm-album 7  ok\n"));
}

TEST_F(ProgramEdit, GoesOnAfterARefusedEdit)
{
    const ProgramResult result = edit("rm-album 16777215\nrm-album 99\nrm-album 7\n");
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("photolib: " + m_scratch.path("script") + ": 2 of 3 edits refused\n", result.errors);
    EXPECT_TRUE(result.output.contains("refused: the album cannot be removed\n"));
    EXPECT_TRUE(result.output.contains("refused: no album with the id 99\n"));
    EXPECT_TRUE(result.output.contains("   3  rm-album 7         ok\n"));
    EXPECT_EQ(QByteArray(), albumIn(result.output, "7"));
    EXPECT_TRUE(result.output.endsWith(note));
}

TEST_F(ProgramEdit, NeverChangesTheDevice)
{
    const QByteArray database = m_scratch.read("device/PhotoData/Photos.sqlite");
    const QList<QByteArray> before = m_scratch.everythingIn("device");
    EXPECT_EQ(0, edit("add-album A 1\nrm-album 7\nremove-photo 16777215 1 2\n").exitCode);
    EXPECT_EQ(before, m_scratch.everythingIn("device"));
    EXPECT_EQ(database, m_scratch.read("device/PhotoData/Photos.sqlite"));
    EXPECT_TRUE(run({"albums", "-d", device()}).output.contains(" 7  Trip"));
}

TEST_F(ProgramEdit, RunsNothingOfAScriptWithAWrongLine)
{
    m_scratch.write("script", "rm-album 7\nrename 7\n");
    expectFailure({"edit", "-d", device(), m_scratch.path("script")},
                  m_scratch.path("script") + ":2: rename takes ALBUM NAME");
    m_scratch.write("script", "\xff");
    expectFailure({"edit", "-d", device(), m_scratch.path("script")},
                  m_scratch.path("script") + ":1: not UTF-8");
    m_setup.input = QString::fromUtf8(m_scratch.path("script"));
    expectFailure({"edit", "-d", device(), "-"}, "standard input:1: not UTF-8");
}

TEST_F(ProgramEdit, NamesAScriptThatCanNotBeRead)
{
    const QByteArray none = m_scratch.path("none");
    expectFailure({"edit", "-d", device(), none}, none + ": no such file");
    expectFailure({"edit", "-d", device(), device()}, device() + ": Is a directory");
    m_scratch.writeSparse("large", 17 << 20);
    expectFailure({"edit", "-d", device(), m_scratch.path("large")},
                  m_scratch.path("large") + ": too large for a script");
    expectFailure({"edit"}, "SCRIPT is required (photolib edit --help shows the usage)", 2);
}

TEST_F(ProgramEdit, UsesASampleWithoutADevice)
{
    m_scratch.write("script", "add-album New\n");
    const ProgramResult result = run({"edit", m_scratch.path("script")});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_TRUE(result.output.contains("   1  add-album New  ok: album "));
    EXPECT_TRUE(result.errors.contains("made a sample device"));
}

TEST_F(ProgramEdit, FindsAnAlbumByItsName)
{
    EXPECT_EQ("ok", resultOf("rm-album Trip"));
    EXPECT_EQ("ok", resultOf("rm-album Video"));
    EXPECT_EQ("refused: no album with the name trip", resultOf("rm-album trip"));
    EXPECT_EQ("refused: 2 albums have the name Twin; use the id of one", resultOf("rm-album Twin"));
    EXPECT_EQ("refused: no album with the name 7", resultOf("rm-album \"7\""));
    EXPECT_EQ("refused: no album with the id 99999999999999999999999",
              resultOf("rm-album 99999999999999999999999"));
}

TEST_F(ProgramEdit, PrefersTheAlbumsThatTheScriptMade)
{
    const ProgramResult result = edit("add-album Twin 1 2\n"
                                      "remove-photo Twin 2\n"
                                      "add-album 2018\n"
                                      "add-photo 1 \"2018\"\n"
                                      "rename Twin Single\n"
                                      "rm-album Twin\n");
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("10 Single user album 1", albumIn(result.output, "10"));
    EXPECT_EQ("11 2018 user album 1", albumIn(result.output, "11"));
    // By then, that is the name of the device's two albums alone.
    EXPECT_TRUE(result.output.contains("refused: 2 albums have the name Twin"));
}

TEST_F(ProgramEdit, ForgetsAnAlbumThatTheScriptRemoved)
{
    const ProgramResult result = edit("add-album Trip\nrm-album Trip\nrename Trip Journey\n");
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ("7 Journey album 2", albumIn(result.output, "7"));
}

TEST_F(ProgramEdit, AddsAFileOfTheComputer)
{
    m_scratch.write("new picture.jpg", "picture");
    const QByteArray file = '"' + m_scratch.path("new picture.jpg") + '"';
    const ProgramResult result = edit("add-photo " + file + " 7\nremove-photo 7 1 3\n");
    EXPECT_EQ(0, result.exitCode) << result.output.constData();
    EXPECT_TRUE(result.output.contains("ok: photo 3\n"));
    EXPECT_EQ("7 Trip album 1", albumIn(result.output, "7"));
    EXPECT_EQ("16777215 Photo Library photo library 3", albumIn(result.output, "16777215"));
    const QByteArray none = m_scratch.path("none");
    EXPECT_EQ("refused: " + none + ": no such file", resultOf("add-photo " + none + " 7"));
}

TEST_F(ProgramEdit, RefusesPhotosThatAreNotThere)
{
    EXPECT_EQ("refused: no photo with the id 3 in the library", resultOf("add-album New 1 3"));
    EXPECT_EQ("refused: no photo with the id 3 in the library", resultOf("add-photo 3 7"));
    EXPECT_EQ("refused: no photo with the id 3 in the album", resultOf("remove-photo 7 1 3"));
    EXPECT_EQ("refused: no photo with the id 1 in the album", resultOf("remove-photo 8 1"));
    const ProgramResult result = edit("add-album New 1 3\nremove-photo 7 1 3\n");
    EXPECT_EQ(QByteArray(), albumIn(result.output, "10"));
    EXPECT_EQ("7 Trip album 2", albumIn(result.output, "7"));
}

TEST_F(ProgramEdit, TellsWhatDoesNotTake)
{
    EXPECT_EQ("refused: the album keeps its name", resultOf("rename Video Films"));
    EXPECT_EQ("refused: the album keeps its name", resultOf("rename 16777215 All"));
}

TEST_F(ProgramEdit, AddsNoPhotoToTheAlbumsThatTheLibraryMakes)
{
    m_scratch.write("a.mov", "movie");
    for (const char *album : {"Video", "Panorama", "\"Camera Roll\"", "1000"}) {
        for (const QByteArray &photo : {QByteArray("1"), m_scratch.path("a.mov")}) {
            const ProgramResult result = edit("add-photo " + photo + ' ' + album + '\n');
            EXPECT_EQ(1, result.exitCode);
            EXPECT_TRUE(result.output.contains("refused: the album takes no photos\n"));
            EXPECT_EQ("16777215 Photo Library photo library 2", albumIn(result.output, "16777215"));
        }
    }
}

TEST_F(ProgramEdit, AddsPhotosToTheCameraRollOfTheDevice)
{
    PhotosDatabase database = twoPhotos();
    database.rows.albums = {albumRow(7, 1000)};
    writeDatabase(m_scratch, "device", database);
    const ProgramResult result = edit("add-photo 1 7\n");
    EXPECT_EQ(0, result.exitCode) << result.output.constData();
    EXPECT_EQ("7 Album camera roll 1", albumIn(result.output, "7"));
}

TEST_F(ProgramEdit, TakesPhotosOutOfTheLibrary)
{
    const ProgramResult result = edit("remove-photo \"Photo Library\" 1\nadd-photo 1 7\n");
    EXPECT_EQ(1, result.exitCode);
    EXPECT_TRUE(result.output.contains("ok: 1 left the library\n"));
    EXPECT_TRUE(result.output.contains("refused: no photo with the id 1 in the library\n"));
    EXPECT_EQ("16777215 Photo Library photo library 1", albumIn(result.output, "16777215"));
    EXPECT_EQ("7 Trip album 1", albumIn(result.output, "7"));
}

TEST_F(ProgramEdit, KeepsTheAlbumsOfTheLibraryItsOwn)
{
    // The videos are in an album that the library makes by itself.
    PhotosDatabase database;
    database.rows.assets = {videoRow(1)};
    writeDatabase(m_scratch, "device", database);
    EXPECT_EQ("refused: the album keeps its photos", resultOf("remove-photo Video 1"));
}

TEST_F(ProgramEdit, ShowsLongEditsShortAndHarmless)
{
    const ProgramResult result = edit("add-album \"\x1b[2J" + QByteArray(100, 'x') + "\"\n");
    EXPECT_EQ(0, result.exitCode);
    EXPECT_FALSE(result.output.contains('\x1b'));
    EXPECT_TRUE(result.output.contains("   1  add-album \"\\x1b[2J" + QByteArray(45, 'x') +
                                       "...  ok: album 10\n"));
}

TEST_F(ProgramEdit, HasHelpWhoseExamplesNameTheDeviceAsTheProgramTakesIt)
{
    const QByteArray help = run({"edit", "--help"}).output;
    EXPECT_TRUE(help.contains("\n  photolib edit edits.txt -d /media/phone\n"));
    EXPECT_TRUE(help.contains("\n      photolib edit - -d /media/phone\n"));
}

} // namespace
