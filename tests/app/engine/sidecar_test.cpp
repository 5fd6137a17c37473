#include "engine/sidecar.h"

#include "engine/asset_json.h"
#include "engine/json_writer.h"
#include "support/catalogs.h"
#include "support/exiftool.h"

#include <QTemporaryDir>
#include <QXmlStreamReader>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <thread>

namespace {

const std::string replaced = "\xef\xbf\xbd";

Asset plainPhoto()
{
    Asset photo;
    photo.id = 42;
    photo.fileName = "IMG_0001.JPG";
    return photo;
}

Asset describedPhoto()
{
    Asset photo = plainPhoto();
    photo.uuid = "3F5B3D9E-248F-47FB-997B-6405814BC3EA";
    photo.originalName = "Grüße.jpg";
    photo.title = "Noon";
    photo.caption = "The harbour <at> noon & after\n日本 🗾";
    photo.keywords = {"AC/DC|live", "Beach"};
    photo.people = {"Anna Müller", "Zoë"};
    photo.favorite = true;
    photo.taken = july2019(27, 13, 16, 49.25);
    photo.utcOffset = -240;
    photo.location = Location{43.65, -79.38333333333334};
    photo.albums = {2, 3};
    return photo;
}

Catalog someAlbums()
{
    Catalog catalog;
    catalog.albums = {folder(1, "Trips"), within(1, album(2, "Rome 1/2")), album(3, "Best|of")};
    return catalog;
}

/// The text of all elements, read by a parser that accepts well-formed XML only.
std::string textOf(const QByteArray &xml)
{
    QXmlStreamReader reader(xml);
    QString text;
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::Characters && !reader.isWhitespace())
            text += reader.text() + QLatin1Char(';');
    }
    EXPECT_FALSE(reader.hasError()) << reader.errorString().toStdString();
    return text.toStdString();
}

Asset withCaption(const QByteArray &caption)
{
    Asset photo;
    photo.caption = caption;
    return photo;
}

std::string writtenCaption(const QByteArray &caption)
{
    return textOf(xmpSidecar(withCaption(caption), Catalog()));
}

class XmpSidecarInExiftool : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!hasExiftool())
            GTEST_SKIP() << "exiftool is not installed";
    }

    Json tagsOf(const Asset &photo, const Catalog &catalog = Catalog())
    {
        const QString name = m_folder.filePath(QStringLiteral("IMG_0001.JPG.xmp"));
        QFile file(name);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(xmpSidecar(photo, catalog));
        file.close();
        return exiftoolTags(name);
    }

    /// "" without the tag.
    static std::string valueOf(const Json &tags, const std::string &key)
    {
        const std::vector<std::string> keys = tags.keys();
        const bool isThere = std::find(keys.begin(), keys.end(), key) != keys.end();
        return isThere ? tags[key.c_str()].text() : std::string();
    }

    std::string takenOf(LibraryDate date, std::optional<int> utcOffset)
    {
        Asset photo = plainPhoto();
        photo.taken = date;
        photo.utcOffset = utcOffset;
        const Json tags = tagsOf(photo);
        const std::string taken = valueOf(tags, "XMP-exif:DateTimeOriginal");
        EXPECT_EQ(taken, valueOf(tags, "XMP-photoshop:DateCreated"));
        EXPECT_EQ(taken, valueOf(tags, "XMP-xmp:CreateDate"));
        return taken;
    }

    std::pair<double, double> placeOf(double latitude, double longitude)
    {
        Asset photo = plainPhoto();
        photo.location = Location{latitude, longitude};
        const Json tags = tagsOf(photo);
        return {std::stod(valueOf(tags, "XMP-exif:GPSLatitude")),
                std::stod(valueOf(tags, "XMP-exif:GPSLongitude"))};
    }

private:
    QTemporaryDir m_folder;
};

TEST_F(XmpSidecarInExiftool, TellsTitleAndCaptionInAllLanguages)
{
    const Json tags = tagsOf(describedPhoto());
    EXPECT_EQ("Noon", tags["XMP-dc:Title"].get<std::string>());
    EXPECT_EQ("The harbour <at> noon & after\n日本 🗾",
              tags["XMP-dc:Description"].get<std::string>());
    const QByteArray xml = xmpSidecar(describedPhoto(), Catalog());
    EXPECT_EQ(2, xml.count("<rdf:Alt>"));
    EXPECT_EQ(2, xml.count("<rdf:li xml:lang=\"x-default\">"));
}

TEST_F(XmpSidecarInExiftool, TellsKeywordsAndPeople)
{
    const Json tags = tagsOf(describedPhoto());
    EXPECT_EQ(R"(["AC/DC|live","Beach"])", valueOf(tags, "XMP-dc:Subject"));
    EXPECT_EQ(R"(["Anna Müller","Zoë"])", valueOf(tags, "XMP-iptcExt:PersonInImage"));
}

TEST_F(XmpSidecarInExiftool, ShowsKeywordsPeopleAndAlbumsAsTreesOfTags)
{
    const Json tags = tagsOf(describedPhoto(), someAlbums());
    EXPECT_EQ(R"(["AC-DC|live","Beach","People/Anna Müller","People/Zoë",)"
              R"("Albums/Trips/Rome 1-2","Albums/Best|of"])",
              valueOf(tags, "XMP-digiKam:TagsList"));
    EXPECT_EQ(R"(["AC/DC-live","Beach","People|Anna Müller","People|Zoë",)"
              R"("Albums|Trips|Rome 1/2","Albums|Best-of"])",
              valueOf(tags, "XMP-lr:HierarchicalSubject"));
}

TEST_F(XmpSidecarInExiftool, ListsAlbumsOfTheSamePathOnceAndNoneWithoutATitle)
{
    Catalog catalog;
    catalog.albums = {folder(1, ""), within(1, album(2, "Rome")), album(3, "Rome"), album(4, "")};
    Asset photo = plainPhoto();
    photo.albums = {2, 3, 4, 5};
    EXPECT_EQ(R"(["Albums/Rome"])", valueOf(tagsOf(photo, catalog), "XMP-digiKam:TagsList"));
}

TEST_F(XmpSidecarInExiftool, RatesFavouritesOnly)
{
    Asset photo = plainPhoto();
    EXPECT_EQ("", valueOf(tagsOf(photo), "XMP-xmp:Rating"));
    photo.favorite = false;
    EXPECT_EQ("", valueOf(tagsOf(photo), "XMP-xmp:Rating"));
    photo.favorite = true;
    EXPECT_EQ("5", valueOf(tagsOf(photo), "XMP-xmp:Rating"));
}

TEST_F(XmpSidecarInExiftool, TellsTheTimeByTheClockOfThePlace)
{
    EXPECT_EQ(R"("2019:07:27 09:16:49-04:00")", takenOf(july2019(27, 13, 16, 49), -240));
    EXPECT_EQ(R"("2019:07:28 00:01:49.250+05:45")", takenOf(july2019(27, 18, 16, 49.25), 345));
    EXPECT_EQ(R"("2019:07:27 13:16:49+00:00")", takenOf(july2019(27, 13, 16, 49), 0));
}

TEST_F(XmpSidecarInExiftool, TellsTheTimeInUtcWhereTheClockOfThePlaceIsNotKnown)
{
    EXPECT_EQ(R"("2019:07:27 13:16:49Z")", takenOf(july2019(27, 13, 16, 49), std::nullopt));
}

TEST_F(XmpSidecarInExiftool, TellsTimesLongAgo)
{
    constexpr double to1969 = -1009843200; // 1969-01-01
    EXPECT_EQ(R"("1969:01:01 00:59:59.500+01:00")", takenOf(to1969 - 0.5, 60));
    constexpr double to1900 = -3187296000; // 1900-01-01
    EXPECT_EQ(R"("1900:01:01 00:00:00Z")", takenOf(to1900, std::nullopt));
}

TEST_F(XmpSidecarInExiftool, TellsNoTimeThatIsOutsideTheCalendar)
{
    EXPECT_EQ("", takenOf(std::nullopt, 60));
    EXPECT_EQ("", takenOf(1e15, std::nullopt));
    EXPECT_EQ("", takenOf(std::nan(""), std::nullopt));
}

TEST_F(XmpSidecarInExiftool, TellsThePlaceToCentimetres)
{
    constexpr double centimetre = 1e-7; // degrees
    const std::pair<double, double> places[] = {
        {43.65, -79.38333333333334},
        {-33.8567844, 151.2152967},
        {-0.00001, -0.00001},
        {0, 0},
        {89.9999999999, -179.9999999999},
        {-90, 180},
        {12.9999999999, 0.01666666},
    };
    for (const auto &place : places) {
        const auto read = placeOf(place.first, place.second);
        EXPECT_NEAR(place.first, read.first, centimetre);
        EXPECT_NEAR(place.second, read.second, centimetre);
    }
}

TEST_F(XmpSidecarInExiftool, NamesTheReferenceOfThePlace)
{
    const Json tags = tagsOf(describedPhoto());
    EXPECT_EQ(R"("WGS-84")", valueOf(tags, "XMP-exif:GPSMapDatum"));
    EXPECT_EQ(R"("2.0.0.0")", valueOf(tags, "XMP-exif:GPSVersionID"));
}

TEST_F(XmpSidecarInExiftool, TellsTheOriginalNameOrThatOnTheDevice)
{
    EXPECT_EQ(R"("Grüße.jpg")", valueOf(tagsOf(describedPhoto()), "XMP-xmpMM:PreservedFileName"));
    EXPECT_EQ(R"("IMG_0001.JPG")", valueOf(tagsOf(plainPhoto()), "XMP-xmpMM:PreservedFileName"));
}

TEST_F(XmpSidecarInExiftool, TellsNothingElse)
{
    const Json tags = tagsOf(describedPhoto(), someAlbums());
    std::vector<std::string> keys = tags.keys();
    const auto isOfTheFile = [](const std::string &key) { return key.compare(0, 4, "XMP-") != 0; };
    keys.erase(std::remove_if(keys.begin(), keys.end(), isOfTheFile), keys.end());
    std::sort(keys.begin(), keys.end());
    const std::vector<std::string> expected = {
        "XMP-dc:Description",
        "XMP-dc:Subject",
        "XMP-dc:Title",
        "XMP-digiKam:TagsList",
        "XMP-exif:DateTimeOriginal",
        "XMP-exif:GPSLatitude",
        "XMP-exif:GPSLongitude",
        "XMP-exif:GPSMapDatum",
        "XMP-exif:GPSVersionID",
        "XMP-iptcExt:PersonInImage",
        "XMP-lr:HierarchicalSubject",
        "XMP-photoshop:DateCreated",
        "XMP-xmp:CreateDate",
        "XMP-xmp:Rating",
        "XMP-xmpMM:PreservedFileName",
    };
    EXPECT_EQ(expected, keys);
}

TEST_F(XmpSidecarInExiftool, KeepsLineEndsAndTabs)
{
    const std::string caption = "one\ntwo\tthree\r\nfour";
    const Json tags = tagsOf(withCaption(QByteArray::fromStdString(caption)));
    EXPECT_EQ(caption, tags["XMP-dc:Description"].get<std::string>());
}

TEST(XmpSidecar, TellsNothingOfAPhotoThatNothingIsKnownOf)
{
    EXPECT_EQ("", textOf(xmpSidecar(Asset(), Catalog())));
}

TEST(XmpSidecar, LeavesOutAPlaceThatIsNotOnEarth)
{
    Asset photo;
    const double infinite = std::numeric_limits<double>::infinity();
    for (const Location place : {Location{90.1, 0}, Location{0, -180.1}, Location{std::nan(""), 0},
                                 Location{0, std::nan("")}, Location{infinite, infinite}}) {
        photo.location = place;
        EXPECT_EQ("", textOf(xmpSidecar(photo, Catalog())));
    }
}

TEST(XmpSidecar, KeepsMarkup)
{
    EXPECT_EQ("</rdf:li>&amp;<![CDATA[]]>\"'<!-- x:xmptk=\"1\";",
              writtenCaption("</rdf:li>&amp;<![CDATA[]]>\"'<!-- x:xmptk=\"1\""));
}

TEST(XmpSidecar, ReplacesControlCharactersAndWhatIsNotUtf8)
{
    EXPECT_EQ("a" + replaced + replaced + "[2J" + replaced + "z;",
              writtenCaption(QByteArray("a\0\x1b[2J\x7fz", 8)));
    EXPECT_EQ(replaced + "2J" + replaced + replaced + ";",
              writtenCaption("\xc2\x9b"
                             "2J\xef\xbf\xbe\xef\xbf\xbf"));
    EXPECT_EQ("a" + replaced + replaced + ";", writtenCaption("a\xff\xc2"));
    EXPECT_EQ("\xc2\xa0\xef\xbf\xbc\xef\xbb\xbf;",
              writtenCaption("\xc2\xa0\xef\xbf\xbc\xef\xbb\xbf"));
}

TEST(XmpSidecar, ReplacesThemInEveryText)
{
    const QByteArray hostile("\x01]]>\xff", 5);
    Asset photo;
    photo.title = photo.caption = photo.originalName = hostile;
    photo.keywords = photo.people = {hostile};
    photo.albums = {2};
    Catalog catalog;
    catalog.albums = {folder(1, hostile), within(1, album(2, hostile))};
    const std::string shown = replaced + "]]>" + replaced;
    const std::string text = textOf(xmpSidecar(photo, catalog));
    for (const std::string &each :
         {shown + ";", "People/" + shown + ";", "People|" + shown + ";",
          "Albums/" + shown + '/' + shown + ";", "Albums|" + shown + '|' + shown + ";"})
        EXPECT_NE(std::string::npos, text.find(each)) << each;
    EXPECT_EQ(std::string::npos, text.find('\x01'));
}

TEST(XmpSidecar, KeepsVeryLongTextsAndLists)
{
    const QByteArray caption = QByteArray(1 << 20, 'x') + "日本";
    EXPECT_EQ(caption.toStdString() + ';', writtenCaption(caption));
    Asset photo;
    for (int i = 0; i < 1000; ++i)
        photo.keywords.push_back("keyword " + QByteArray::number(i));
    EXPECT_EQ(3000, xmpSidecar(photo, Catalog()).count("<rdf:li>keyword "));
}

TEST(XmpSidecar, IsTheSameWhenItIsMadeAgainAndNamesNoProgram)
{
    const QByteArray xml = xmpSidecar(describedPhoto(), someAlbums());
    EXPECT_EQ(xml, xmpSidecar(describedPhoto(), someAlbums()));
    EXPECT_TRUE(xml.startsWith("<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">\n")) << xml.constData();
    EXPECT_EQ(-1, xml.indexOf("MetadataDate"));
    EXPECT_EQ(-1, xml.indexOf("xmptk"));
}

TEST(XmpSidecarThreads, MakeThemAtTheSameTime)
{
    const QByteArray expected = xmpSidecar(describedPhoto(), someAlbums());
    std::vector<int> right(4);
    std::vector<std::thread> threads;
    for (int &count : right) {
        threads.emplace_back([&] {
            for (int i = 0; i < 50; ++i)
                count += xmpSidecar(describedPhoto(), someAlbums()) == expected ? 1 : 0;
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(std::vector<int>(4, 50), right);
}

TEST(JsonSidecar, IsTheObjectOfALineOfTheList)
{
    JsonWriter json;
    writeAsset(describedPhoto(), json);
    const QByteArray sidecar = jsonSidecar(describedPhoto());
    EXPECT_EQ(json.taken() + '\n', sidecar);
    EXPECT_EQ(1, sidecar.count('\n'));
    EXPECT_EQ("Grüße.jpg", Json::parse(sidecar)["originalName"].get<std::string>());
}

TEST(SidecarSuffixes, AreThoseOfTheFormats)
{
    EXPECT_EQ(".json", sidecarSuffix(SidecarFormat::Json));
    EXPECT_EQ(".xmp", sidecarSuffix(SidecarFormat::Xmp));
}

} // namespace
