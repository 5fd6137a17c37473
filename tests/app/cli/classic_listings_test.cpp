#include "support/classic_fixture.h"
#include "support/json.h"

namespace {

class ClassicListings : public ClassicProgramTest
{
protected:
    /// Runs the program, which must succeed and complain of nothing, and returns its output.
    QByteArray outputOf(const QList<QByteArray> &arguments)
    {
        const ProgramResult result = run(arguments);
        EXPECT_EQ(0, result.exitCode);
        EXPECT_EQ(QByteArray(), result.errors);
        return result.output;
    }

    Json dumpOf(const QByteArray &folder)
    {
        return Json::parse(outputOf({"dump", "-d", folder, "--thumbnails"}));
    }
};

TEST_F(ClassicListings, SumUpTheLibrary)
{
    writeThreePhotos();
    EXPECT_EQ("Device:       " + device() +
                  "\n"
                  "Kind:         classic iPod (folder)\n"
                  "Photos:       3\n"
                  "Originals:    2 in full resolution\n"
                  "Albums:       2\n"
                  "Stored:       458.0 KiB\n"
                  "Taken:        2005-08-06 10:20:30 to 2006-01-01 00:00:00\n",
              outputOf({"info", "-d", device()}));
}

TEST_F(ClassicListings, SumUpAnEmptyLibraryAndOneWithoutDates)
{
    writeDevice();
    const QByteArray heading =
        "Device:       " + device() + "\nKind:         classic iPod (folder)\n";
    const QByteArray rest = "Originals:    0 in full resolution\n"
                            "Albums:       0\n"
                            "Stored:       0 bytes\n";
    EXPECT_EQ(heading + "Photos:       0\n" + rest, outputOf({"info", "-d", device()}));
    EXPECT_EQ("No photos or videos.\n", outputOf({"photos", "-d", device()}));
    addPhoto(100);
    writeDevice();
    EXPECT_EQ(heading + "Photos:       1\n" + rest, outputOf({"info", "-d", device()}));
}

TEST_F(ClassicListings, ListThePhotosWithTheirLargestPictures)
{
    writeThreePhotos();
    EXPECT_EQ(" ID  TAKEN                DIMENSIONS     STORED  ORIGINAL\n"
              "100  2005-08-06 10:20:30  320 x 240   154.0 KiB  "
              "Photos/Full Resolution/2005/08/06/IMG_0041.JPG\n"
              "101                       320 x 240   154.0 KiB\n"
              "104  2006-01-01 00:00:00  320 x 240   150.0 KiB  "
              "Photos/Full Resolution/2005/08/06/IMG_0042.JPG\n",
              outputOf({"photos", "-d", device()}));
}

TEST_F(ClassicListings, ListAPhotoWithoutPicturesAndOneOfAnUnknownFormat)
{
    addPhoto(100);
    storeBytes(addPhoto(101), 4711, {9, 9}, "xyz");
    writeDevice();
    EXPECT_EQ(" ID  TAKEN  DIMENSIONS   STORED  ORIGINAL\n"
              "100                     0 bytes\n"
              "101                     3 bytes\n",
              outputOf({"photos", "-d", device()}));
}

TEST_F(ClassicListings, ListAlbumsAndTheirPhotosInTheirOrder)
{
    writeThreePhotos();
    EXPECT_EQ("ID  NAME          KIND   PHOTOS\n"
              " 1  Library       album       3\n"
              " 2  Grün \\x1b[2J  album       2\n",
              outputOf({"albums", "-d", device()}));
    EXPECT_EQ(" ID  TAKEN                DIMENSIONS     STORED  ORIGINAL\n"
              "104  2006-01-01 00:00:00  320 x 240   150.0 KiB  "
              "Photos/Full Resolution/2005/08/06/IMG_0042.JPG\n"
              "100  2005-08-06 10:20:30  320 x 240   154.0 KiB  "
              "Photos/Full Resolution/2005/08/06/IMG_0041.JPG\n",
              outputOf({"photos", "-d", device(), "--album", "2"}));
    expectFailure({"photos", "-d", device(), "--album", "9"},
                  "9: no album with this id in " + device());
}

TEST_F(ClassicListings, LeaveOutMembersOfAlbumsThatAreNoPhotos)
{
    addPhoto(100);
    addAlbum(1, "Album", {7, 100, 0xffffffff});
    writeDevice();
    EXPECT_EQ(" ID  TAKEN  DIMENSIONS   STORED  ORIGINAL\n"
              "100                     0 bytes\n",
              outputOf({"photos", "-d", device(), "--album", "1"}));
}

TEST_F(ClassicListings, ShowAPhotoWithAllThatIsStored)
{
    writeThreePhotos();
    EXPECT_EQ("ID:          100\n"
              "Taken:       2005-08-06T10:20:30\n"
              "Original:    Photos/Full Resolution/2005/08/06/IMG_0041.JPG, 8 bytes (8 bytes)\n"
              "Stored:      format 1036, 50 x 41, 4100 bytes in Photos/Thumbs/F1036_1.ithmb\n"
              "Stored:      format 1024, 320 x 240, 153600 bytes in "
              "Photos/Thumbs/F1024_1.ithmb\n",
              outputOf({"show", "100", "-d", device()}));
}

TEST_F(ClassicListings, ShowTheTimesOfTheIpodWhateverTheComputersZoneIs)
{
    writeThreePhotos();
    for (const char *zone : {"America/New_York", "Pacific/Kiritimati"}) {
        m_setup.environment.append(qMakePair(QString("TZ"), QString(zone)));
        EXPECT_TRUE(outputOf({"photos", "-d", device()}).contains("100  2005-08-06 10:20:30  "));
        EXPECT_TRUE(outputOf({"info", "-d", device()})
                        .endsWith("2005-08-06 10:20:30 to 2006-01-01 00:00:00\n"));
        EXPECT_TRUE(outputOf({"show", "100", "-d", device()})
                        .contains("Taken:       2005-08-06T10:20:30\n"));
    }
}

TEST_F(ClassicListings, ShowWhatIsMissingOfAPhoto)
{
    writeThreePhotos();
    EXPECT_TRUE(outputOf({"show", "104", "-d", device()})
                    .contains("Original:    Photos/Full Resolution/2005/08/06/IMG_0042.JPG, "
                              "missing on the device\n"));
    EXPECT_TRUE(outputOf({"show", "101", "-d", device()})
                    .startsWith("ID:          101\n"
                                "Taken:       \n"
                                "Original:    none\n"
                                "Stored:      format 1024, 320 x 240, "));
    expectFailure({"show", "102", "-d", device()}, "102: no photo with this id in " + device());
}

TEST_F(ClassicListings, FindAnOriginalWhoseNameDiffersByCaseOnTheDisk)
{
    ClassicPhoto &photo = addPhoto(100);
    addOriginal(photo, "img_0041.jpg", "original");
    photo.originalName = ":FULL RESOLUTION:2005:08:06:IMG_0041.JPG";
    writeDevice();
    EXPECT_TRUE(outputOf({"show", "100", "-d", device()})
                    .contains("Photos/FULL RESOLUTION/2005/08/06/IMG_0041.JPG, 8 bytes"));
}

// Names that no terminal is to see as they are, and that no file has.
TEST_F(ClassicListings, ShowHostileNamesHarmlessly)
{
    ClassicPhoto &photo = addPhoto(100);
    storeBytes(photo, 4711, {9, 9}, "xyz");
    photo.variants[0].fileName = QString::fromUtf8(":Thumbs:\x1b]0;\x07.ithmb");
    photo.originalName = QString::fromUtf8(":Full Resolution:\x1b[31m\n.jpg");
    writeDevice();
    EXPECT_EQ("ID:          100\n"
              "Taken:       \n"
              "Original:    Photos/Full Resolution/\\x1b[31m\\x0a.jpg, missing on the device\n"
              "Stored:      format 4711, unknown dimensions, 3 bytes in "
              "Photos/Thumbs/\\x1b]0;\\x07.ithmb\n",
              outputOf({"show", "100", "-d", device()}));
    EXPECT_TRUE(
        outputOf({"photos", "-d", device()}).contains("  Photos/Full Resolution/\\x1b[31m\\x0a"));
}

TEST_F(ClassicListings, TakeNoOriginalFromOutsideTheDevice)
{
    m_scratch.write("secret.jpg", "secret");
    m_scratch.makeFolder("device/Photos/Thumbs");
    m_scratch.makeLink("device/Photos/link.jpg", m_scratch.path("secret.jpg"));
    struct Row {
        const char *stored;
        const char *shown;
    };
    const Row rows[] = {
        {":..:..:secret.jpg", "Photos/../../secret.jpg"},
        {":Thumbs/../../../secret.jpg", "Photos/Thumbs/../../../secret.jpg"},
        {":link.jpg", "Photos/link.jpg"},
        {":Thumbs", "Photos/Thumbs"},
    };
    quint32 id = 1;
    for (const Row &row : rows)
        addPhoto(id++).originalName = QString::fromLatin1(row.stored);
    writeDevice();
    id = 1;
    for (const Row &row : rows) {
        const QByteArray output = outputOf({"show", QByteArray::number(id++), "-d", device()});
        EXPECT_TRUE(output.contains("Original:    " + QByteArray(row.shown) + ", "));
        EXPECT_FALSE(output.contains("bytes")) << output.constData();
    }
}

TEST_F(ClassicListings, DumpTheSameShapeAsForAnIosDevice)
{
    writeThreePhotos();
    writeDatabase(m_scratch, "phone", twoPhotos());
    m_scratch.write("phone/DCIM/100APPLE/IMG_0001.JPG", "picture");
    const Json classic = dumpOf(device());
    const Json ios = dumpOf(m_scratch.path("phone"));
    EXPECT_EQ(ios.keys(), classic.keys());
    for (const char *list : {"photos", "albums", "thumbnails"})
        EXPECT_EQ(ios[list][0].keys(), classic[list][0].keys()) << list;
    EXPECT_EQ("[100,101,104]", classic["photoIds"].text());
    EXPECT_EQ("[104,100]", classic["albums"][1]["photoIds"].text());
    for (const Json &photo : classic["photos"].elements())
        EXPECT_TRUE(photo["ok"].get<bool>());
    EXPECT_EQ("\"2005-08-06T10:20:30Z\"", classic["photos"][0]["createDate"].text());
    EXPECT_EQ("null", classic["photos"][0]["modifyDate"].text());
    EXPECT_EQ("\"thmb\"", classic["photos"][0]["path"].text());
    const int bmpSize = 54 + 41 * 152; // rows end at multiples of 4 bytes
    EXPECT_EQ(bmpSize, classic["thumbnails"][0]["bytes"].get<int>());
}

TEST_F(ClassicListings, RefuseEditsAndDoNotClaimThem)
{
    writeThreePhotos();
    m_scratch.write("edits", "add-album New 100\nrm-album 2\n");
    expectFailure({"edit", "-d", device(), m_scratch.path("edits")},
                  device() + ": the albums of a classic iPod cannot be edited");
}

} // namespace
