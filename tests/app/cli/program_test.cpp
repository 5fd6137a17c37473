#include "support/json.h"
#include "support/library_expectation.h"
#include "support/program_fixture.h"
#include "support/sample_device.h"

#include <gtest/gtest.h>

#include <QFileInfo>

#include <sys/stat.h>

namespace {

using ProgramOnBadInput = ProgramTest;
using ProgramUsage = ProgramTest;
using ProgramDump = ProgramTest;
using ProgramOutput = ProgramTest;
using ProgramOnASample = ProgramTest;

TEST_F(ProgramOnBadInput, NamesAFolderThatIsNotThere)
{
    for (const char *command : {"info", "photos", "dump"})
        expectFailure({command, "-d", m_scratch.path("none")},
                      m_scratch.path("none") + ": no such folder");
}

TEST_F(ProgramOnBadInput, NamesAFileThatIsNoFolder)
{
    m_scratch.write("file", "text");
    expectFailure({"info", "-d", m_scratch.path("file")},
                  m_scratch.path("file") + ": not a folder");
}

TEST_F(ProgramOnBadInput, NamesAFolderWithoutADatabase)
{
    m_scratch.makeFolder("device");
    expectFailure({"dump", "-d", device()},
                  device() + ": no photo database in it "
                             "(PhotoData/Photos.sqlite or Photos/Photo Database)");
}

TEST_F(ProgramOnBadInput, EscapesTheNameInTheLine)
{
    expectFailure({"info", "-d", "/no\n\x1b[2J"}, "/no\\x0a\\x1b[2J: no such folder");
}

TEST_F(ProgramOnBadInput, NamesADatabaseThatIsNone)
{
    m_scratch.write("device/PhotoData/Photos.sqlite", QByteArray(100000, 'x'));
    expectFailure({"dump", "-d", device()},
                  device() + "/PhotoData/Photos.sqlite: not readable as a photo library"
                             ": not an SQLite database");
}

TEST_F(ProgramOnBadInput, NamesAnEmptyDatabase)
{
    m_scratch.write("device/PhotoData/Photos.sqlite", "");
    expectFailure({"photos", "-d", device()},
                  device() + "/PhotoData/Photos.sqlite: not readable as a photo library"
                             ": its tables cannot be read");
}

TEST_F(ProgramOnBadInput, NamesWhatALibraryLacks)
{
    PhotosDatabase database;
    database.schema.assets = false;
    writeDatabase(m_scratch, "device", database);
    expectFailure({"info", "-d", device()},
                  device() + "/PhotoData/Photos.sqlite: not readable as a photo library"
                             ": its tables cannot be read");
}

TEST_F(ProgramOnBadInput, NamesAPipeInPlaceOfTheDatabase)
{
    m_scratch.makeFolder("device/PhotoData");
    m_scratch.makePipe("device/PhotoData/Photos.sqlite");
    expectFailure({"info", "-d", device()},
                  device() + "/PhotoData/Photos.sqlite: not a regular file");
}

TEST_F(ProgramOnBadInput, NamesADatabaseThatIsALinkToAnotherPlace)
{
    writeDatabase(m_scratch, "elsewhere", twoPhotos());
    m_scratch.makeFolder("device/PhotoData");
    m_scratch.makeLink("device/PhotoData/Photos.sqlite",
                       m_scratch.path("elsewhere/PhotoData/Photos.sqlite"));
    expectFailure({"info", "-d", device()}, device() +
                                                "/PhotoData/Photos.sqlite: a link that leads out "
                                                "of the device");
}

TEST_F(ProgramOnBadInput, NamesAnUnreadableDatabase)
{
    if (!canRespectPermissions())
        GTEST_SKIP() << "the superuser can read everything here";
    m_setup.respectsPermissions = true;
    writeTwoPhotos();
    ASSERT_EQ(0, ::chmod((device() + "/PhotoData/Photos.sqlite").constData(), 0));
    expectFailure({"info", "-d", device()},
                  device() + "/PhotoData/Photos.sqlite: Permission denied");
}

TEST_F(ProgramOnBadInput, NamesAnUnreadableWriteAheadLog)
{
    if (!canRespectPermissions())
        GTEST_SKIP() << "the superuser can read everything here";
    m_setup.respectsPermissions = true;
    writeTwoPhotos();
    m_scratch.write("device/PhotoData/Photos.sqlite-wal", "log");
    ASSERT_EQ(0, ::chmod((device() + "/PhotoData/Photos.sqlite-wal").constData(), 0));
    expectFailure({"info", "-d", device()},
                  device() + "/PhotoData/Photos.sqlite-wal: Permission denied");
}

TEST_F(ProgramOnBadInput, NamesAnUnreadableFolder)
{
    if (!canRespectPermissions())
        GTEST_SKIP() << "the superuser can read everything here";
    m_setup.respectsPermissions = true;
    writeTwoPhotos();
    ASSERT_EQ(0, ::chmod(device().constData(), 0));
    const ProgramResult result = run({"info", "-d", device()});
    ::chmod(device().constData(), 0700);
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("photolib: " + device() + ": Permission denied\n", result.errors);
    EXPECT_EQ(QByteArray(), result.output);
}

TEST_F(ProgramOnBadInput, NamesAnUnknownId)
{
    writeTwoPhotos();
    for (const char *id : {"3", "0", "18446744073709551615", "99999999999999999999999"})
        expectFailure({"show", id, "-d", device()},
                      id + (": no photo with this id in " + device()));
}

TEST_F(ProgramOnBadInput, NamesAWorkFolderInTheDevice)
{
    writeTwoPhotos();
    expectFailure({"info", "-d", device(), "--work-dir", device() + "/PhotoData"},
                  device() + "/PhotoData: the work folder must not lie in the device");
}

TEST_F(ProgramOnBadInput, NamesAWorkFolderThatIsAFile)
{
    writeTwoPhotos();
    m_scratch.write("file", "text");
    expectFailure({"info", "-d", device(), "--work-dir", m_scratch.path("file")},
                  m_scratch.path("file") + ": not a folder");
}

TEST_F(ProgramOnBadInput, TellsWhyTheCopyIsNotComplete)
{
    writeTwoPhotos();
    m_setup.largestFile = 5000; // fewer bytes than the database has
    const QByteArray work = m_scratch.path("work");
    expectFailure({"info", "-d", device(), "--work-dir", work},
                  work + "/Photos.sqlite: File too large");
}

TEST_F(ProgramOnBadInput, NamesAPlugInThatIsNotThere)
{
    writeTwoPhotos();
    expectFailure({"--plugin", "/none.so", "info", "-d", device()}, "/none.so: no such file");
    m_setup.environment = {{"PHOTOLIB_PLUGIN", "/variable.so"}};
    expectFailure({"info", "-d", device()}, "/variable.so: no such file");
    expectFailure({"--plugin", "/option.so", "info", "-d", device()}, "/option.so: no such file");
}

TEST_F(ProgramOnBadInput, NamesAFileThatIsNotThePlugIn)
{
    writeTwoPhotos();
    m_scratch.write("text.so", "text");
    const ProgramResult result =
        run({"info", "-d", device(), "--plugin", m_scratch.path("text.so")});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_TRUE(result.errors.startsWith("photolib: " + m_scratch.path("text.so") +
                                         ": not loadable as the plug-in ("));
    EXPECT_EQ(1, result.errors.count('\n'));
}

TEST_F(ProgramUsage, ExitsWithTwoWhenItIsWrong)
{
    const QByteArray hint = " (photolib --help shows the usage)";
    const QByteArray infoHint = " (photolib info --help shows the usage)";
    const QByteArray showHint = " (photolib show --help shows the usage)";
    expectFailure({}, "a command is missing" + hint, 2);
    expectFailure({"-v"}, "a command is missing" + hint, 2);
    expectFailure({"nonsense"}, "nonsense: no such command" + hint, 2);
    expectFailure({"--nonsense"}, "--nonsense: no such option" + hint, 2);
    expectFailure({"show"}, "ID is required" + showHint, 2);
    expectFailure({"show", "1x"}, "ID: not a number" + showHint, 2);
    expectFailure({"info", "a", "b"}, "a: unexpected argument" + infoHint, 2);
    expectFailure({"info", "--", "a"}, "a: unexpected argument" + infoHint, 2);
    expectFailure({"--", "info"}, "--: unexpected argument" + infoHint, 2);
    expectFailure({"-q", "-v", "info"}, "--verbose excludes --quiet" + infoHint, 2);
    expectFailure({"info", "--nonsense"}, "--nonsense: no such option" + infoHint, 2);
    expectFailure({"info", "-d", ""}, "--device: the name is empty" + infoHint, 2);
    expectFailure({"help", "nonsense"}, "nonsense: no such command" + hint, 2);
}

TEST_F(ProgramUsage, TellsHowToNameAFolderThatIsNotExpected)
{
    m_scratch.makeFolder("device");
    expectFailure(
        {"info", device()},
        device() +
            ": unexpected argument; name the device with -d (photolib info --help shows the usage)",
        2);
}

TEST_F(ProgramUsage, ShowsTheSampleForAnEmptyVariable)
{
    m_setup.environment = {{"PHOTOLIB_DEVICE", ""}};
    const ProgramResult result = run({"info"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_TRUE(result.errors.startsWith("photolib: no device named with -d; "));
}

TEST_F(ProgramUsage, SuggestsWhatWasMeant)
{
    expectFailure({"phots"},
                  "phots: no such command; did you mean photos? (photolib --help shows the usage)",
                  2);
    expectFailure({"help", "exp"},
                  "exp: no such command; did you mean export? (photolib --help shows the usage)",
                  2);
    expectFailure({"photos", "--albun", "3"},
                  "--albun: no such option; did you mean --album? (photolib photos --help shows "
                  "the usage)",
                  2);
    expectFailure({"photos", "--devise", "x"},
                  "--devise: no such option; did you mean --device? (photolib photos --help shows "
                  "the usage)",
                  2);
}

TEST_F(ProgramUsage, TellsTheOrderOfArguments)
{
    const QByteArray exportHelp = run({"export", "--help"}).output;
    EXPECT_TRUE(exportHelp.contains(" [OPTIONS] [ID...] DIR\n"));
    EXPECT_TRUE(
        exportHelp.contains("\n  ID                          The ids of photos and videos"));
    EXPECT_TRUE(exportHelp.contains(
        "\n  DIR                         Folder to copy to, created if necessary\n"));
    EXPECT_TRUE(run({"thumb", "--help"}).output.contains(" [OPTIONS] [ID...]\n"));
}

TEST_F(ProgramUsage, TakesTheDeviceBeforeAndBehindTheCommandAndFromTheEnvironment)
{
    writeTwoPhotos();
    const QByteArray shown = run({"photos", "-d", device()}).output;
    EXPECT_TRUE(shown.contains("IMG_0001.JPG"));
    EXPECT_EQ(shown, run({"-d", device(), "photos"}).output);
    EXPECT_EQ(shown, run({"photos", "--device", device()}).output);
    m_setup.environment = {{"PHOTOLIB_DEVICE", QString::fromUtf8(device())}};
    EXPECT_EQ(shown, run({"photos"}).output);
}

TEST_F(ProgramUsage, WritesNoFilesOfASampleThatNobodyAskedFor)
{
    const QByteArray out = m_scratch.path("out");
    expectFailure({"export", out}, "no device: name one with -d", 2);
    expectFailure({"thumb", "--all", out}, "no device: name one with -d", 2);
    EXPECT_EQ(0, run({"thumb", "1", "-o", m_scratch.path("1.jpg"), "-d", "sample"}).exitCode);
}

TEST_F(ProgramUsage, ShowsTheHelpOfACommandWithTheCommonOptions)
{
    for (const char *command : {"info", "photos", "albums", "show", "sheet", "thumb", "export",
                                "verify", "edit", "dump", "sample"}) {
        const ProgramResult help = run({"help", command});
        EXPECT_EQ(0, help.exitCode) << command;
        EXPECT_EQ(help.output, run({command, "--help"}).output) << command;
        EXPECT_TRUE(help.output.contains(QByteArray("Usage: photolib ") + command)) << command;
        EXPECT_TRUE(help.output.contains("--device DEVICE")) << command;
    }
    EXPECT_EQ(run({"--help"}).output, run({"help"}).output);
}

TEST_F(ProgramUsage, ShowsHelpInLinesThatFit)
{
    for (const char *command : {"", "info", "thumb", "export", "verify", "edit", "sample"}) {
        const QByteArray help = run({"help", command}).output;
        for (const QByteArray &line : help.split('\n'))
            EXPECT_LE(line.size(), 80) << line.constData();
        EXPECT_FALSE(help.contains("\n\n\n")) << command;
    }
}

TEST_F(ProgramUsage, ShowsExamplesOfTheCommand)
{
    const QList<QPair<QByteArray, QByteArray>> examples = {
        {"info", "  photolib info -d /media/IPOD\n"},
        {"photos", "  photolib photos -d /media/phone --album 7\n"},
        {"show", "  photolib show 42 -d ~/phone-copy\n"},
        {"dump", "  photolib dump -d ~/phone-copy | jq "},
    };
    for (const auto &[command, example] : examples) {
        const QByteArray help = run({command, "--help"}).output;
        EXPECT_TRUE(help.contains(example)) << help.constData();
        EXPECT_FALSE(help.contains("photolib edit")) << help.constData();
    }
}

TEST_F(ProgramUsage, ShowsExamplesAsHelp)
{
    const ProgramResult result = run({"--help"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_TRUE(result.output.contains("photolib -d /media/phone photos"));
    EXPECT_EQ(QByteArray(), result.errors);
}

TEST_F(ProgramUsage, TellsItsVersion)
{
    const ProgramResult result = run({"--version"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_TRUE(result.output.startsWith("photolib "));
}

TEST_F(ProgramUsage, FindsThePlugInThatAnOptionNames)
{
    writeTwoPhotos();
    m_scratch.makeLink("elsewhere.so", PHOTOLIB_PLUGIN_FILE);
    EXPECT_EQ(0,
              run({"info", "-d", device(), "--plugin", m_scratch.path("elsewhere.so")}).exitCode);
    m_setup.environment = {{"PHOTOLIB_PLUGIN", QString::fromUtf8(m_scratch.path("elsewhere.so"))}};
    EXPECT_EQ(0, run({"info", "-d", device()}).exitCode);
}

TEST_F(ProgramUsage, MissesThePlugInWhereThereIsNone)
{
    writeTwoPhotos();
    // A copy, for a link would lead to the folder of the built program.
    ASSERT_TRUE(QFile::copy(PHOTOLIB_PROGRAM, QString::fromUtf8(m_scratch.path("photolib"))));
    m_setup.program = QString::fromUtf8(m_scratch.path("photolib"));
    const ProgramResult result = run({"info", "-d", device()});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_TRUE(result.errors.startsWith("photolib: libphotolib.so: not found beside"));
    m_scratch.makeLink("libphotolib.so", PHOTOLIB_PLUGIN_FILE);
    EXPECT_EQ(0, run({"info", "-d", device()}).exitCode);
}

TEST_F(ProgramDump, PrintsTheWholeLibrary)
{
    PhotosDatabase database;
    database.rows.libraryUuids = {QByteArray("THE-LIBRARY")};
    AssetRow photo = photoRow(1, 602158830); // 2020-01-31 10:20:30 UTC
    photo.orientation = 6;
    photo.trashedDate = 602158831;
    photo.avalancheUuid = "BURST";
    photo.sortToken = 0.5;
    AssetRow video = videoRow(2, -1);
    video.fileName = "IMG_0002.MOV";
    AssetRow missing = photoRow(3, 0);
    missing.fileName = "IMG_0003.JPG";
    database.rows.assets = {photo, video, missing};
    database.rows.attributes = {{2, 2, 12.5, 1000}};
    database.rows.albums = {albumRow(7)};
    database.rows.albums[0].title = "Grüße";
    database.join().add(7, 2);
    writeDatabase(m_scratch, "device", database);
    m_scratch.write("device/PhotoData/Thumbnails/V2/DCIM/100APPLE/IMG_0001.JPG/5003.JPG", "abc");
    m_scratch.write("device/DCIM/100APPLE/IMG_0001.JPG", "picture");
    m_scratch.write("device/DCIM/100APPLE/IMG_0002.MOV", "movie");

    const ProgramResult result = run({"dump", "-d", device(), "--thumbnails"});
    ASSERT_EQ(0, result.exitCode) << result.errors.constData();
    EXPECT_EQ(QByteArray(), result.errors);
    const Json expected = Json::parse(R"({
        "parsed": true,
        "libraryUuid": "THE-LIBRARY",
        "photoCount": 3,
        "photoIds": [1, 2, 3],
        "albumCount": 5,
        "albumIds": [1000, 16777215, 16777214, 16777213, 7],
        "photos": [
            {"id": 1, "ok": true, "uuid": "", "name": "IMG_0001.JPG", "type": 3,
             "path": "DCIM/100APPLE/IMG_0001.JPG", "thumbPath": "", "orientation": 6,
             "height": 3024, "width": 4032, "duration": 0, "fileSize": 7,
             "createDate": null, "modifyDate": "2020-01-31T10:20:30Z",
             "trashedDate": 602158831, "avalancheUUID": "BURST", "sortToken": 0.5},
            {"id": 2, "ok": true, "uuid": "", "name": "IMG_0002.MOV", "type": 2,
             "path": "DCIM/100APPLE/IMG_0002.MOV",
             "thumbPath": "PhotoData/Metadata/DCIM/100APPLE/IMG_0002.JPG", "orientation": 1,
             "height": 3024, "width": 4032, "duration": 13, "fileSize": 1000,
             "createDate": null, "modifyDate": "2000-12-31T23:59:59Z",
             "trashedDate": 0, "avalancheUUID": "0", "sortToken": 0.0},
            {"id": 3, "ok": false, "uuid": "", "name": "IMG_0003.JPG", "type": 3,
             "path": "DCIM/100APPLE/IMG_0003.JPG", "orientation": 1,
             "height": 3024, "width": 4032, "duration": 0}
        ],
        "albums": [
            {"id": 1000, "ok": true, "uuid": "", "name": "Camera Roll", "type": 1,
             "photoIds": [1, 3]},
            {"id": 16777215, "ok": true, "uuid": "00000000000000000000000000000064",
             "name": "Photo Library", "type": 5, "photoIds": [2]},
            {"id": 16777214, "ok": true, "uuid": "", "name": "Panorama", "type": 2,
             "photoIds": []},
            {"id": 16777213, "ok": true, "uuid": "", "name": "Video", "type": 3,
             "photoIds": [2]},
            {"id": 7, "ok": true, "uuid": "a1000000000000000000000000000000",
             "name": "Grüße", "type": 4, "photoIds": [2]}
        ],
        "thumbnails": [
            {"id": 1, "result": 0, "bytes": 3, "sha256":
             "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
            {"id": 2, "result": -1, "bytes": 0, "sha256":
             "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
            {"id": 3, "result": -1, "bytes": 0, "sha256":
             "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"}
        ]
    })");
    QByteArray withoutUuids = result.output;
    for (const Json &photo : Json::parse(result.output)["photos"].elements()) {
        const auto uuid = photo["uuid"].get<std::string>();
        EXPECT_EQ(32U, uuid.size());
        EXPECT_EQ(std::string::npos, uuid.find_first_not_of("0123456789abcdef"));
        withoutUuids.replace(uuid.c_str(), "");
    }
    // As texts, so that the order of the keys counts.
    EXPECT_EQ(expected.text(), Json::parse(withoutUuids).text());
}

TEST_F(ProgramDump, PrintsIdsAsExactNumbers)
{
    PhotosDatabase database;
    database.rows.assets = {photoRow(-1), photoRow(2147483647, 60)};
    writeDatabase(m_scratch, "device", database);
    m_scratch.write(twoPhotosPath, "picture");
    const ProgramResult result = run({"dump", "-d", device()});
    EXPECT_TRUE(result.output.contains("\"photoIds\": [2147483647,18446744073709551615]"));
    EXPECT_TRUE(result.output.contains("{\"id\":18446744073709551615,\"ok\":true,"));
    EXPECT_EQ(0, run({"show", "18446744073709551615", "-d", device()}).exitCode);
}

TEST_F(ProgramDump, NeverLooksOutsideTheDevice)
{
    m_scratch.write("outside/secret.jpg", "secret");
    m_scratch.write("device/DCIM/inside.jpg", "picture");
    m_scratch.makeLink("device/link.jpg", m_scratch.path("outside/secret.jpg"));
    m_scratch.makeLink("device/folder", "../outside");
    PhotosDatabase database;
    const QByteArray outside = m_scratch.path("outside");
    const std::vector<std::pair<std::string, std::string>> places = {
        {"../outside", "secret.jpg"}, {outside.toStdString(), "secret.jpg"}, {"", "link.jpg"},
        {"folder", "secret.jpg"},     {"DCIM/../../outside", "secret.jpg"},  {"DCIM", "inside.jpg"},
    };
    for (std::size_t i = 0; i < places.size(); ++i) {
        AssetRow row = photoRow(int(i) + 1, int(i));
        row.directory = places[i].first;
        row.fileName = places[i].second;
        database.rows.assets.push_back(row);
    }
    writeDatabase(m_scratch, "device", database);
    const Json json = Json::parse(run({"dump", "-d", device()}).output);
    for (std::size_t i = 0; i + 1 < places.size(); ++i)
        EXPECT_FALSE(json["photos"][i]["ok"].get<bool>()) << places[i].first;
    EXPECT_TRUE(json["photos"][places.size() - 1]["ok"].get<bool>());
}

TEST_F(ProgramDump, FindsNamesBeyondAscii)
{
    PhotosDatabase database;
    database.rows.assets = {photoRow(1)};
    database.rows.assets[0].fileName = "grün 日本.jpg";
    writeDatabase(m_scratch, "device", database);
    m_scratch.write("device/DCIM/100APPLE/grün 日本.jpg", "picture");
    // Whatever the locale makes of names.
    for (const char *locale : {"C", "C.UTF-8"}) {
        m_setup.environment = {{"LC_ALL", locale}};
        const Json json = Json::parse(run({"dump", "-d", device()}).output);
        EXPECT_TRUE(json["photos"][0]["ok"].get<bool>());
        EXPECT_TRUE(run({"photos", "-d", device()}).output.contains("DCIM/100APPLE/grün 日本.jpg"));
    }
}

TEST_F(ProgramDump, WorksForADeviceWithANameInAnyEncoding)
{
    writeTwoPhotos();
    ASSERT_EQ(0, ::rename(device().constData(), m_scratch.path("\xff\n.").constData()));
    // By a shell, since Qt passes on only what the locale can express.
    m_setup.program = QStringLiteral("/bin/sh");
    const ProgramResult result = run({"-c", R"sh(exec "$0" info -d "$(printf "$1/\377\n.")")sh",
                                      PHOTOLIB_PROGRAM, m_scratch.root()});
    EXPECT_EQ(0, result.exitCode) << result.errors.constData();
    EXPECT_TRUE(result.output.contains("/\\xff\\x0a"));
}

TEST_F(ProgramDump, AppliesNoJournalOfAnEarlierDevice)
{
    PhotosDatabase first = twoPhotos();
    PhotosRows later;
    later.assets = {photoRow(3, 120)};
    const PhotosFiles files = first.filesWithWal(later);
    m_scratch.write("first/PhotoData/Photos.sqlite", files.database);
    m_scratch.write("first/PhotoData/Photos.sqlite-wal", files.wal);
    writeTwoPhotos();
    const QByteArray work = m_scratch.path("work");
    const auto count = [&](const QByteArray &device) {
        const ProgramResult result = run({"dump", "-d", device, "--work-dir", work});
        return Json::parse(result.output)["photoCount"].get<int>();
    };
    EXPECT_EQ(3, count(m_scratch.path("first")));
    EXPECT_EQ(2, count(device()));
}

TEST_F(ProgramDump, LeavesNoCopyOfTheDatabase)
{
    writeTwoPhotos();
    m_scratch.makeFolder("work");
    EXPECT_EQ(0, run({"dump", "-d", device(), "--work-dir", m_scratch.path("work/new/")}).exitCode);
    EXPECT_EQ(0, run({"dump", "-d", device(), "--work-dir", m_scratch.path("work")}).exitCode);
    EXPECT_TRUE(m_scratch.everythingIn("work").isEmpty());
    EXPECT_FALSE(m_scratch.exists("cache"));
    EXPECT_EQ(0, run({"dump", "-d", device()}).exitCode);
    EXPECT_FALSE(m_scratch.exists("cache"));
}

TEST_F(ProgramDump, LeavesTheDeviceAsItIs)
{
    writeTwoPhotos();
    const QByteArray database = m_scratch.read("device/PhotoData/Photos.sqlite");
    const QList<QByteArray> before = m_scratch.everythingIn("device");
    EXPECT_EQ(0, run({"dump", "-d", device(), "--thumbnails"}).exitCode);
    EXPECT_EQ(before, m_scratch.everythingIn("device"));
    EXPECT_EQ(database, m_scratch.read("device/PhotoData/Photos.sqlite"));
}

TEST_F(ProgramOutput, ListsPhotosInATable)
{
    writeTwoPhotos();
    const ProgramResult result = run({"photos", "-d", device()});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ("ID  NAME          KIND   TAKEN     SIZE  DIMENSIONS   PATH\n"
              " 1  IMG_0001.JPG  photo                  4032 x 3024  DCIM/100APPLE/IMG_0001.JPG\n"
              " 2  IMG_0002.JPG  photo         missing  4032 x 3024  DCIM/100APPLE/IMG_0002.JPG\n",
              result.output);
}

TEST_F(ProgramOutput, ListsALibraryThatThePluginCannotRead)
{
    PhotosDatabase database = twoPhotos();
    database.schema.attributes = false;
    writeDatabase(m_scratch, "device", database);
    for (const QList<QByteArray> &command :
         {QList<QByteArray>{"photos"}, {"show", "1"}, {"info"}, {"albums"}}) {
        const ProgramResult result = run(QList<QByteArray>{"-d", device()} + command);
        EXPECT_EQ(0, result.exitCode) << command.first().constData();
        EXPECT_EQ(QByteArray(), result.errors) << command.first().constData();
    }
    expectFailure({"dump", "-d", device()},
                  device() + "/PhotoData/Photos.sqlite: not readable as a photo library"
                             ": its tables cannot be read");
}

TEST_F(ProgramOutput, ShowsOnePhoto)
{
    writeTwoPhotos();
    const ProgramResult there = run({"show", "1", "-d", device()});
    EXPECT_EQ(0, there.exitCode);
    EXPECT_TRUE(there.output.contains("Path:        DCIM/100APPLE/IMG_0001.JPG\n"));
    EXPECT_TRUE(there.output.contains("Size:        7 bytes (7 bytes)\n"));
    const ProgramResult missing = run({"show", "2", "-d", device()});
    EXPECT_EQ(0, missing.exitCode);
    EXPECT_TRUE(missing.output.contains("File:        missing on the device\n"));
}

TEST_F(ProgramOutput, SumsTheLibraryUp)
{
    writeTwoPhotos();
    const ProgramResult result = run({"info", "-d", device()});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_TRUE(result.output.contains("Photos:       2\n"));
    EXPECT_TRUE(result.output.contains("Videos:       0\n"));
    EXPECT_TRUE(result.output.contains("Missing:      1 without a file on the device\n"));
    EXPECT_TRUE(result.output.contains("Albums:       0\n")) << "the plug-in's own do not count";
    EXPECT_EQ(QByteArray(), result.errors);
}

TEST_F(ProgramOutput, TellsAnEmptyFileFromAMissingOne)
{
    writeTwoPhotos();
    m_scratch.write(twoPhotosPath, "");
    EXPECT_EQ("ID  STATE\n"
              " 1  there\n"
              " 2  missing\n",
              run({"photos", "-d", device(), "--columns", "id,state"}).output);
    EXPECT_TRUE(
        run({"show", "1", "-d", device()}).output.contains("Size:        0 bytes (0 bytes)\n"));
    const QByteArray info = run({"info", "-d", device()}).output;
    EXPECT_TRUE(info.contains("Missing:      1 without a file on the device\n"))
        << info.constData();
    EXPECT_FALSE(info.contains("Modified:")) << info.constData();
}

TEST_F(ProgramOutput, ShowsNoControlCharacterOfAName)
{
    PhotosDatabase database = twoPhotos();
    database.rows.assets[0].fileName = "a\x1b[2J\n.jpg";
    writeDatabase(m_scratch, "device", database);
    m_scratch.write("device/DCIM/100APPLE/a\x1b[2J\n.jpg", "picture");
    for (const QList<QByteArray> &arguments : {QList<QByteArray>{"photos", "-d", device()},
                                               QList<QByteArray>{"show", "1", "-d", device()}}) {
        const ProgramResult result = run(arguments);
        EXPECT_EQ(0, result.exitCode);
        EXPECT_TRUE(result.output.contains("a\\x1b[2J\\x0a.jpg"));
        EXPECT_FALSE(result.output.contains('\x1b'));
    }
}

TEST_F(ProgramOutput, LogsProgressOnRequest)
{
    writeTwoPhotos();
    const ProgramResult result = run({"info", "-d", device(), "--verbose"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_TRUE(result.errors.contains("PHOTOLIB: Parser_Ath_camera_DB success\n"));
    EXPECT_TRUE(
        result.errors.contains("PHOTOLIB: Can not open file: /PhotoData/Photos.sqlite-wal\n"));
}

TEST_F(ProgramOutput, NoticesAFullDisk)
{
    writeTwoPhotos();
    m_setup.output = QStringLiteral("/dev/full");
    for (const QList<QByteArray> &arguments :
         {QList<QByteArray>{"dump", "-d", device()}, QList<QByteArray>{"--help"}}) {
        const ProgramResult result = run(arguments);
        EXPECT_EQ(1, result.exitCode);
        EXPECT_EQ("photolib: standard output: No space left on device\n", result.errors);
    }
}

// More than a pipe holds, so that the program is still writing when its reader goes. The shell's
// option has a pipe fail with any of its programs.
TEST_F(ProgramOutput, EndsQuietlyAndWellWhenItsReaderHasSeenEnough)
{
    PhotosDatabase database;
    for (int pk = 1; pk <= 5000; ++pk)
        database.rows.assets.push_back(photoRow(pk, pk));
    writeDatabase(m_scratch, "device", database);
    m_setup.program = QStringLiteral("bash");
    for (const char *command : {"photos", "dump"}) {
        const ProgramResult result = run({"-o", "pipefail", "-c", "\"$0\" \"$@\" | head -c 2",
                                          PHOTOLIB_PROGRAM, command, "-d", device()});
        EXPECT_EQ(0, result.exitCode) << command;
        EXPECT_EQ(2, result.output.size()) << command;
        EXPECT_EQ(QByteArray(), result.errors) << command;
    }
}

TEST_F(ProgramOnASample, ReportsTheOneThatItWrote)
{
    const QList<QByteArray> arguments = {"sample", m_scratch.path("a\n"), "--assets", "2"};
    const ProgramResult result = run(arguments);
    EXPECT_EQ(0, result.exitCode) << result.errors.constData();
    EXPECT_EQ("Wrote a sample device with 2 assets to " + m_scratch.path("a\\x0a\n"),
              result.output);
    m_setup.output = QStringLiteral("/dev/full");
    EXPECT_EQ(1, run({"sample", m_scratch.path("b"), "--assets", "2"}).exitCode);
}

TEST_F(ProgramOutput, NoticesThatThereIsNone)
{
    writeTwoPhotos();
    m_setup.closesOutput = true;
    const ProgramResult result =
        run({"dump", "-d", device(), "--work-dir", m_scratch.path("work")});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("photolib: standard output: Bad file descriptor\n", result.errors);
}

TEST_F(ProgramOnASample, MakesOneForAPersonWithoutADevice)
{
    const QByteArray sample = m_scratch.path("cache/photolib/sample");
    const ProgramResult first = run({"dump", "--thumbnails"});
    ASSERT_EQ(0, first.exitCode) << first.errors.constData();
    EXPECT_EQ("photolib: no device named with -d; made a sample device in " + sample + '\n',
              first.errors);
    expectDumpOfDevice(sample, first.output);
    EXPECT_FALSE(m_scratch.exists("cache/photolib/sample.partial"));

    const ProgramResult second = run({"dump", "--thumbnails"});
    EXPECT_EQ(0, second.exitCode);
    EXPECT_EQ("photolib: no device named with -d; showing the sample device in " + sample + '\n',
              second.errors);
    EXPECT_EQ(first.output, second.output);
    EXPECT_EQ(QByteArray(), run({"info", "--quiet"}).errors);
}

TEST_F(ProgramOnASample, FindsTheCacheFolderWhateverTheLocaleIs)
{
    m_setup.cacheFolder = QString::fromUtf8(m_scratch.path("zwölf"));
    m_setup.environment = {{"LC_ALL", "C"}};
    const ProgramResult result = run({"info"});
    EXPECT_EQ(0, result.exitCode) << result.errors.constData();
    EXPECT_TRUE(m_scratch.exists("zwölf/photolib/sample/PhotoData/Photos.sqlite"));
}

TEST_F(ProgramOnASample, ReplacesOneThatWasNotFinished)
{
    m_scratch.write("cache/photolib/sample.partial/PhotoData/Photos.sqlite", "half");
    const ProgramResult result = run({"info"});
    EXPECT_EQ(0, result.exitCode) << result.errors.constData();
    EXPECT_FALSE(m_scratch.exists("cache/photolib/sample.partial"));
}

TEST_F(ProgramOnASample, NamesTheSampleWhenAnIdIsUnknown)
{
    ASSERT_EQ(0, run({"info"}).exitCode);
    const ProgramResult result = run({"show", "99999"});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("photolib: 99999: no photo with this id in " +
                  m_scratch.path("cache/photolib/sample") + '\n',
              result.errors);
}

TEST_F(ProgramOnASample, SaysWhyItCanNotBeMade)
{
    m_scratch.write("cache", "a file");
    expectFailure({"info"}, m_scratch.path("cache") + ": not a folder");
}

TEST_F(ProgramOnASample, ReadsAnEarlyDatabaseAsWell)
{
    SampleOptions options;
    options.schema = SampleSchema::Early;
    writeSampleTo(QString::fromUtf8(device()), options);
    const ProgramResult result = run({"dump", "-d", device(), "--thumbnails"});
    ASSERT_EQ(0, result.exitCode) << result.errors.constData();
    expectDumpOfDevice(device(), result.output);
}

TEST_F(ProgramDump, SaysOfARealLibraryWhatItsDatabaseSays)
{
    const QString device = QStringLiteral(PHOTOLIB_DEVICES_DIR "/library-a");
    if (!QFileInfo::exists(device))
        GTEST_SKIP() << "there is no " << device.toStdString();
    const ProgramResult result = run({"dump", "-d", device.toUtf8(), "--thumbnails"});
    ASSERT_EQ(0, result.exitCode) << result.errors.constData();
    EXPECT_EQ(QByteArray(), result.errors);
    expectDumpOfDevice(device.toUtf8(), result.output);
}

} // namespace
