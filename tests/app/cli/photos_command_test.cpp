#include "cli/photo_csv.h"
#include "support/catalogs.h"
#include "support/json.h"
#include "support/program_fixture.h"
#include "support/terminal.h"

#include <cmath>

namespace {

class ProgramPhotos : public ProgramTest
{
protected:
    /// Three photos and a video, the third in the trash, the fourth and second with long names.
    void writeFour()
    {
        PhotosDatabase database = twoPhotos();
        database.rows.assets.push_back(photoRow(3));
        database.rows.assets.push_back(videoRow(4));
        database.rows.assets[2].trashedState = 1;
        database.rows.assets[1].fileName = "日本日本日本日本日本日本.JPG";
        database.rows.assets[3].fileName = "A rather long name of a video.MOV";
        writeDatabase(m_scratch, "device", database);
        m_scratch.write(twoPhotosPath, "picture");
    }

    QByteArray outputOf(const QList<QByteArray> &arguments)
    {
        const ProgramResult result = run(QList<QByteArray>{"photos", "-d", device()} + arguments);
        EXPECT_EQ(0, result.exitCode);
        EXPECT_EQ(QByteArray(), result.errors);
        return result.output;
    }

    /// The ids that are listed, as "1,2,4".
    QByteArray idsOf(QList<QByteArray> arguments)
    {
        const QByteArray output = outputOf(arguments << "--columns"
                                                     << "id");
        return output.startsWith("ID\n") ? output.mid(3).simplified().replace(' ', ',') : output;
    }

    void expectWrongUsage(const QList<QByteArray> &arguments, const QByteArray &line)
    {
        expectFailure(QList<QByteArray>{"photos", "-d", device()} + arguments,
                      line + " (photolib photos --help shows the usage)", 2);
    }

    void giveInput(const QByteArray &text)
    {
        m_scratch.write("input", text);
        m_setup.input = QString::fromUtf8(m_scratch.path("input"));
    }

    /// What a terminal of so many columns shows.
    QByteArray shownOn(unsigned short width, const QList<QByteArray> &arguments)
    {
        Terminal terminal;
        if (!terminal.isOpen())
            return QByteArray();
        terminal.setColumns(width);
        m_setup.outputFd = terminal.slave();
        Program program(m_setup, QList<QByteArray>{"photos", "-d", device()} + arguments);
        EXPECT_EQ(0, program.waitForExitCode());
        return terminal.shownUntil("\n 4 ").append(terminal.shownUntil("MOV"));
    }
};

TEST_F(ProgramPhotos, AreThoseThatTheFiltersAdmit)
{
    writeFour();
    EXPECT_EQ("1,2,4", idsOf({}));
    EXPECT_EQ("1,2,3,4", idsOf({"--all"}));
    EXPECT_EQ("3", idsOf({"--trash"}));
    EXPECT_EQ("4", idsOf({"--kind", "video"}));
    EXPECT_EQ("2,4", idsOf({"--missing"}));
    EXPECT_EQ("4,2,1", idsOf({"--reverse"}));
    EXPECT_EQ("4,1", idsOf({"--sort", "name", "--limit", "2"}));
    EXPECT_EQ("3,4", idsOf({"3", "4-9"}));
    EXPECT_EQ("No photos or videos.\n", idsOf({"--favorite"}));
    EXPECT_EQ("No photos or videos.\n", idsOf({"--type", "live,burst", "--type", "panorama"}));
}

TEST_F(ProgramPhotos, AreThoseWithTheIdsInStandardInput)
{
    writeFour();
    giveInput("4\n 3\t1-2\n");
    EXPECT_EQ("1,2,3,4", idsOf({"-"}));
    giveInput("4");
    EXPECT_EQ("1,4", idsOf({"-", "1"}));
    giveInput("");
    EXPECT_EQ("No photos or videos.\n", idsOf({"-"}));
    giveInput("1 x");
    expectFailure({"photos", "-d", device(), "-"}, "standard input: x: not an id");
    giveInput("9-3");
    expectFailure({"photos", "-d", device(), "-"},
                  "standard input: 9-3: the range ends before it begins");
    giveInput("7");
    expectFailure({"photos", "-d", device(), "-"}, "7: no photo with this id in " + device());
}

TEST_F(ProgramPhotos, TakeTheKindOfTheDeviceBehindTheCommandAsWell)
{
    writeFour();
    EXPECT_EQ("4", idsOf({"--kind", "ios", "--kind", "video"}));
    const ProgramResult result = run({"photos", "-d", device(), "--kind", "classic"});
    EXPECT_TRUE(result.errors.contains("Photos/Photo Database")) << result.errors.constData();
}

TEST_F(ProgramPhotos, RefuseWhatMakesNoSense)
{
    writeFour();
    expectWrongUsage({"9-3"}, "9-3: the range ends before it begins");
    expectWrongUsage({"x"}, "x: not an id; name the device with -d");
    expectWrongUsage({"--kind", "movie"}, "--kind: movie: not one of photo, video, ios, classic");
    expectWrongUsage({"--type", "brst"},
                     "--type: brst: not one of burst, live, panorama, screenRecording, "
                     "screenshot, slowMotion, timeLapse; did you mean burst?");
    expectWrongUsage({"--from", "2019-13"}, "--from: 2019-13: not a date; write 2019, 2019-07, "
                                            "2019-07-27 or 2019-07-27T09:16");
    expectWrongUsage({"--from", "2020", "--to", "2019"}, "--from: later than --to");
    expectWrongUsage({"--larger", "x"},
                     "--larger: x: not a size; write 500k, 1.5G, 10MB or 2000, say");
    expectWrongUsage({"--hidden", "maybe"}, "--hidden: maybe: not one of yes, no, only");
    expectWrongUsage({"--sort", "date"},
                     "--sort: date: not one of taken, name, size, modified, id");
    expectWrongUsage({"--limit", "-1"}, "--limit: -1: not a number");
    expectWrongUsage({"--columns", "id,nam"}, "--columns: nam: no such column; did you mean name?");
    expectWrongUsage({"--json", "--csv"}, "--json excludes --csv");
}

TEST_F(ProgramPhotos, MayBeginAndEndInTheSameYear)
{
    writeFour();
    EXPECT_EQ("No photos or videos.\n", idsOf({"--from", "2019", "--to", "2019"}));
}

TEST_F(ProgramPhotos, HaveTheColumnsThatAreAskedFor)
{
    writeFour();
    EXPECT_EQ("STATE    ID  HIDDEN\n"
              "there     1\n"
              "missing   4\n",
              outputOf({"--columns", "state,id", "1", "--columns", "hidden", "4"}));
}

TEST_F(ProgramPhotos, ArePrintedAsJson)
{
    writeFour();
    const QByteArray output = outputOf({"--json"});
    EXPECT_EQ(5, output.count('\n'));
    const Json photos = Json::parse(output)["photos"];
    ASSERT_EQ(3U, photos.size());
    EXPECT_EQ("4", photos[2]["id"].text());
    EXPECT_EQ("\"video\"", photos[2]["kind"].text());
    EXPECT_EQ("{\"photos\": []}\n", outputOf({"--json", "--favorite"}));
}

TEST_F(ProgramPhotos, ArePrintedAsCsv)
{
    writeFour();
    const QByteArray output = outputOf({"--csv", "1"});
    EXPECT_TRUE(output.startsWith(photoCsvHeader())) << output.constData();
    EXPECT_TRUE(output.contains("\r\n1,photo,")) << output.constData();
    EXPECT_EQ(photoCsvHeader(), outputOf({"--csv", "--favorite"}));
}

TEST_F(ProgramPhotos, ArePrintedAsPathsBetweenZeroBytes)
{
    writeFour();
    EXPECT_EQ(QByteArray("DCIM/100APPLE/IMG_0001.JPG") + '\0' +
                  "DCIM/100APPLE/A rather long name of a video.MOV" + '\0',
              outputOf({"-0", "1", "4"}));
    EXPECT_EQ("", outputOf({"--null", "--favorite"}));
}

TEST_F(ProgramPhotos, FillAWideTerminal)
{
    writeFour();
    const QByteArray shown = shownOn(200, {});
    if (shown.isNull())
        GTEST_SKIP() << "there are no pseudo-terminals here";
    EXPECT_TRUE(shown.contains("PATH\r\n")) << shown.constData();
    EXPECT_TRUE(shown.contains("DCIM/100APPLE/A rather long name of a video.MOV\r\n"))
        << shown.constData();
}

TEST_F(ProgramPhotos, AreCutToANarrowTerminal)
{
    writeFour();
    const QByteArray shown = shownOn(60, {"--columns", "id,name,path"});
    if (shown.isNull())
        GTEST_SKIP() << "there are no pseudo-terminals here";
    EXPECT_TRUE(shown.contains("…")) << shown.constData();
    for (const QByteArray &line : shown.split('\n'))
        EXPECT_LE(QString::fromUtf8(line.trimmed()).size(), 60) << line.constData();
    EXPECT_FALSE(shownOn(80, {}).contains("PATH"));
}

Asset describedPhoto()
{
    Asset photo;
    photo.id = 7;
    photo.uuid = "U";
    photo.directory = "DCIM";
    photo.fileName = "a,b.jpg";
    photo.title = "say \"cheese\"";
    photo.caption = "two\nlines";
    photo.taken = july2019(27, 13, 16, 49);
    photo.utcOffset = -240;
    photo.width = 3;
    photo.favorite = true;
    photo.hidden = false;
    photo.types = AssetType::Burst | AssetType::Live;
    photo.burst = "B";
    photo.burstPicked = true;
    photo.location = Location{43.65, -79.5};
    photo.keywords = {"Beach", "Sea"};
    photo.people = {"Zo\xc3"};
    photo.source = AssetSource::Cloud;
    photo.albums = {3, 12};
    return photo;
}

TEST(PhotoCsv, QuotesWhatWouldBeTakenForTheEndOfAField)
{
    EXPECT_EQ("7,photo,U,\"a,b.jpg\",\"DCIM/a,b.jpg\",,\"say \"\"cheese\"\"\",\"two\nlines\","
              "2019-07-27T09:16:49-04:00,,,,3,,,,,true,false,,,burst;live,B,true,43.65,-79.5,"
              "Beach;Sea,Zo\xef\xbf\xbd,cloud,3;12\r\n",
              photoCsvRecord(describedPhoto()).toStdString());
}

TEST(PhotoCsv, LeavesWhatIsNotKnownEmpty)
{
    Asset photo;
    photo.id = 1;
    photo.duration = 5;
    photo.location = Location{std::nan(""), 0.5};
    EXPECT_EQ("1,photo" + std::string(24, ',') + "0.5,,,,\r\n",
              photoCsvRecord(photo).toStdString());
    EXPECT_EQ(photoCsvHeader().count(','), photoCsvRecord(photo).count(','));
    EXPECT_TRUE(photoCsvHeader().endsWith(",people,source,albums\r\n"));
}

} // namespace
