#include "support/json.h"
#include "support/program_fixture.h"
#include "support/sample_device.h"

namespace {

class ProgramAlbums : public ProgramTest
{
protected:
    // Two photos of the camera and two albums, the first with both photos in it.
    void writeAlbums()
    {
        PhotosDatabase database = twoPhotos();
        database.rows.albums = {albumRow(7), albumRow(8, 1506)};
        database.rows.albums[0].title = "Grüße aus \x1b[2J日本";
        database.join().rows = {{7, 1, 2048}, {7, 2, 1024}};
        writeDatabase(m_scratch, "device", database);
        m_scratch.write(twoPhotosPath, "picture");
    }
};

TEST_F(ProgramAlbums, AreListedWithTheirKindsAndCounts)
{
    writeAlbums();
    const ProgramResult result = run({"albums", "-d", device()});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ(QByteArray(), result.errors);
    EXPECT_EQ("ID  NAME                   KIND    PHOTOS\n"
              " 7  Grüße aus \\x1b[2J日本  album        2\n"
              " 8  Album                  import       0\n",
              result.output)
        << result.output.constData();
}

TEST_F(ProgramAlbums, ListTheirPhotosInTheirOrder)
{
    writeAlbums();
    const ProgramResult result = run({"photos", "-d", device(), "--album", "7"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ("ID  NAME          KIND   TAKEN     SIZE  DIMENSIONS   PATH\n"
              " 2  IMG_0002.JPG  photo         missing  4032 x 3024  DCIM/100APPLE/IMG_0002.JPG\n"
              " 1  IMG_0001.JPG  photo                  4032 x 3024  DCIM/100APPLE/IMG_0001.JPG\n",
              result.output);
    const ProgramResult none = run({"photos", "-d", device(), "--album", "8"});
    EXPECT_EQ(0, none.exitCode);
    EXPECT_EQ("No photos or videos.\n", none.output);
}

// The plug-in has an asset of another source in its albums, but does not list it.
TEST_F(ProgramAlbums, HaveAllPhotosWhereverTheyComeFrom)
{
    PhotosDatabase database = twoPhotos();
    database.rows.assets.push_back(photoRow(3));
    database.rows.assets[2].savedAssetType = 6;
    database.rows.albums = {albumRow(7)};
    for (const int photo : {3, 1})
        database.join().add(7, photo);
    writeDatabase(m_scratch, "device", database);
    m_scratch.write(twoPhotosPath, "picture");
    const Json dump = Json::parse(run({"dump", "-d", device()}).output);
    ASSERT_EQ("[1,2]", dump["photoIds"].text());

    EXPECT_TRUE(run({"albums", "-d", device()}).output.endsWith(" 7  Album  album       2\n"));
    const ProgramResult photos = run({"photos", "-d", device(), "--album", "7"});
    EXPECT_EQ(0, photos.exitCode);
    EXPECT_EQ(QByteArray(), photos.errors);
    EXPECT_EQ(3, photos.output.count('\n')) << photos.output.constData();
    const QByteArray folder = m_scratch.path("copies");
    const ProgramResult copies = run({"export", "-d", device(), "--album", "7", folder});
    EXPECT_EQ(0, copies.exitCode) << copies.errors.constData();
    EXPECT_EQ(QByteArray(), copies.errors);
}

TEST_F(ProgramAlbums, AreKnownByTheirIdsAndTitles)
{
    writeAlbums();
    EXPECT_EQ(0, run({"photos", "--album", "album", "-d", device()}).exitCode);
    for (const char *id : {"9", "1", "99999999999999999999999"})
        expectFailure({"photos", "--album", id, "-d", device()},
                      id + (": no album with this id in " + device()));
    expectFailure({"photos", "-d", device(), "--album", "Albim"},
                  "Albim: no album of this name in " + device() + "; did you mean Album?");
    const QByteArray hint = " (photolib photos --help shows the usage)";
    expectFailure({"photos", "-d", device(), "--album", ""}, "--album: the name is empty" + hint,
                  2);
    expectFailure({"photos", "-d", device(), "--album"}, "--album: 1 required ALBUM missing" + hint,
                  2);
}

TEST_F(ProgramAlbums, ArePrintedAsJson)
{
    writeAlbums();
    const ProgramResult result = run({"albums", "-d", device(), "--json"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_TRUE(result.output.contains("Grüße aus \\u001b[2J日本")) << result.output.constData();
    const Json albums = Json::parse(result.output)["albums"];
    ASSERT_EQ(2U, albums.size());
    EXPECT_EQ("[2,1]", albums[0]["photos"].text());
    EXPECT_EQ("[]", albums[1]["photos"].text());
}

TEST_F(ProgramAlbums, LogNothingOfThumbnailsThatAreMissing)
{
    writeAlbums();
    const ProgramResult quiet = run({"dump", "-d", device(), "--thumbnails"});
    EXPECT_EQ(QByteArray(), quiet.errors);
    EXPECT_EQ(-1, Json::parse(quiet.output)["thumbnails"][0]["result"].get<int>());
    const ProgramResult verbose = run({"dump", "-d", device(), "--thumbnails", "--verbose"});
    EXPECT_TRUE(verbose.errors.contains("PHOTOLIB: Can not decide teh iThmb file\n"));
    EXPECT_EQ(quiet.output, verbose.output);
}

// What the thumbnails are is compared elsewhere, which is worth nothing without some.
TEST_F(ProgramAlbums, HaveThumbnailsOfBothKindsInASample)
{
    writeSampleTo(QString::fromUtf8(device()), sampleOptions(60));
    int pictures = 0;
    for (const QByteArray &name : m_scratch.everythingIn("device/PhotoData/Thumbnails/V2"))
        pictures += name.endsWith("/5005.JPG");
    const ProgramResult result = run({"dump", "-d", device(), "--thumbnails"});
    int found = 0;
    const Json json = Json::parse(result.output);
    for (const Json &thumbnail : json["thumbnails"].elements())
        found += thumbnail["result"].get<int>() == 0;
    EXPECT_GT(pictures, 0);
    EXPECT_GT(found, pictures);
}

} // namespace
