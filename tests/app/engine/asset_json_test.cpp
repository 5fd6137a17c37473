#include "engine/asset_json.h"
#include "engine/json_writer.h"
#include "support/catalogs.h"
#include "support/json.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

Json jsonOf(const Asset &photo)
{
    JsonWriter json;
    writeAsset(photo, json);
    return Json::parse(json.taken());
}

/// The value of one key, as JSON.
std::string valueOf(const Asset &photo, const char *key)
{
    return jsonOf(photo)[key].text();
}

TEST(AssetJson, HasEveryKeyAndNullForWhatIsNotKnown)
{
    Asset photo;
    photo.id = 42;
    EXPECT_EQ(R"({"id":42,"kind":"photo","uuid":null,"name":null,"path":null,)"
              R"("originalName":null,"title":null,"caption":null,)"
              R"("taken":null,"modified":null,"added":null,"trashed":null,)"
              R"("width":null,"height":null,"orientation":null,"duration":null,"size":null,)"
              R"("favorite":null,"hidden":null,"inTrash":null,"edited":null,)"
              R"("types":[],"burst":null,"location":null,)"
              R"("keywords":[],"people":[],"source":null,"albums":[]})",
              jsonOf(photo).text());
}

TEST(AssetJson, TellsNamesAndTexts)
{
    Asset photo;
    photo.kind = AssetKind::Video;
    photo.uuid = "3F5B3D9E-248F-47FB-997B-6405814BC3EA";
    photo.directory = "DCIM/100APPLE";
    photo.fileName = "IMG_0001.MOV";
    photo.originalName = "Grüße.mov";
    photo.title = "";
    photo.caption = "say \"cheese\" \\ 日本 🗾";
    EXPECT_EQ(R"("video")", valueOf(photo, "kind"));
    EXPECT_EQ(R"("3F5B3D9E-248F-47FB-997B-6405814BC3EA")", valueOf(photo, "uuid"));
    EXPECT_EQ(R"("IMG_0001.MOV")", valueOf(photo, "name"));
    EXPECT_EQ(R"("DCIM/100APPLE/IMG_0001.MOV")", valueOf(photo, "path"));
    EXPECT_EQ(R"("Grüße.mov")", valueOf(photo, "originalName"));
    EXPECT_EQ("null", valueOf(photo, "title"));
    EXPECT_EQ(R"("say \"cheese\" \\ 日本 🗾")", valueOf(photo, "caption"));
    photo.directory = QByteArray();
    EXPECT_EQ(R"("IMG_0001.MOV")", valueOf(photo, "path"));
}

TEST(AssetJson, GivesTheTimeOfTakingInItsZoneAndTheOthersInUtc)
{
    Asset photo;
    photo.taken = july2019(27, 13, 16, 49);
    photo.utcOffset = -240;
    photo.modified = july2019(28, 0, 0, 0.0625);
    photo.added = july2019(29);
    photo.trashed = july2019(30);
    EXPECT_EQ(R"("2019-07-27T09:16:49-04:00")", valueOf(photo, "taken"));
    EXPECT_EQ(R"("2019-07-28T00:00:00.063Z")", valueOf(photo, "modified"));
    EXPECT_EQ(R"("2019-07-29T00:00:00Z")", valueOf(photo, "added"));
    EXPECT_EQ(R"("2019-07-30T00:00:00Z")", valueOf(photo, "trashed"));
    photo.utcOffset = 0;
    EXPECT_EQ(R"("2019-07-27T13:16:49+00:00")", valueOf(photo, "taken"));
    photo.utcOffset.reset();
    EXPECT_EQ(R"("2019-07-27T13:16:49Z")", valueOf(photo, "taken"));
    photo.taken = 1e15;
    EXPECT_EQ("null", valueOf(photo, "taken"));
}

TEST(AssetJson, TellsTheMeasuresAsStored)
{
    Asset photo;
    photo.width = 4032;
    photo.height = 0;
    photo.orientation = 6;
    photo.size = std::numeric_limits<qint64>::max();
    photo.duration = 1.1;
    EXPECT_EQ("4032", valueOf(photo, "width"));
    EXPECT_EQ("0", valueOf(photo, "height"));
    EXPECT_EQ("6", valueOf(photo, "orientation"));
    EXPECT_EQ("9223372036854775807", valueOf(photo, "size"));
    EXPECT_EQ("null", valueOf(photo, "duration"));
    photo.kind = AssetKind::Video;
    EXPECT_EQ("1.1", valueOf(photo, "duration"));
    photo.duration = std::numeric_limits<double>::infinity();
    EXPECT_EQ("null", valueOf(photo, "duration"));
}

TEST(AssetJson, TellsWhatIsTrueAndWhatIsFalse)
{
    Asset photo;
    photo.favorite = true;
    photo.hidden = false;
    photo.inTrash = true;
    photo.edited = false;
    EXPECT_EQ("true", valueOf(photo, "favorite"));
    EXPECT_EQ("false", valueOf(photo, "hidden"));
    EXPECT_EQ("true", valueOf(photo, "inTrash"));
    EXPECT_EQ("false", valueOf(photo, "edited"));
}

TEST(AssetJson, SortsTheTypes)
{
    Asset photo;
    photo.types = AssetType::Burst | AssetType::Live | AssetType::Panorama | AssetType::Screenshot |
                  AssetType::SlowMotion | AssetType::TimeLapse | AssetType::ScreenRecording;
    EXPECT_EQ(R"(["burst","live","panorama","screenRecording","screenshot","slowMotion",)"
              R"("timeLapse"])",
              valueOf(photo, "types"));
    photo.types = AssetType::Screenshot;
    EXPECT_EQ(R"(["screenshot"])", valueOf(photo, "types"));
}

TEST(AssetJson, TellsTheBurstAndWhetherThePhotoIsPickedFromIt)
{
    Asset photo;
    photo.burst = "B";
    EXPECT_EQ(R"({"uuid":"B","picked":null})", valueOf(photo, "burst"));
    photo.burstPicked = false;
    EXPECT_EQ(R"({"uuid":"B","picked":false})", valueOf(photo, "burst"));
}

TEST(AssetJson, TellsThePlace)
{
    Asset photo;
    photo.location = Location{43.65, -79.38333333333334};
    EXPECT_EQ(R"({"latitude":43.65,"longitude":-79.38333333333334})", valueOf(photo, "location"));
    photo.location = Location{0, 0};
    EXPECT_EQ("2", std::to_string(jsonOf(photo)["location"].size()));
    photo.location = Location{std::nan(""), 0};
    EXPECT_EQ("null", valueOf(photo, "location"));
}

TEST(AssetJson, ListsKeywordsPeopleAndAlbums)
{
    Asset photo;
    photo.keywords = {"Beach", "日本"};
    photo.people = {"Zoë"};
    photo.albums = {3, 12};
    EXPECT_EQ(R"(["Beach","日本"])", valueOf(photo, "keywords"));
    EXPECT_EQ(R"(["Zoë"])", valueOf(photo, "people"));
    EXPECT_EQ("[3,12]", valueOf(photo, "albums"));
}

TEST(AssetJson, NamesTheSource)
{
    const std::pair<AssetSource, std::string> words[] = {
        {AssetSource::Local, "local"},           {AssetSource::Cloud, "cloud"},
        {AssetSource::Referenced, "referenced"}, {AssetSource::Messages, "messages"},
        {AssetSource::Shared, "shared"},         {AssetSource::Other, "other"},
    };
    for (const auto &word : words) {
        Asset photo;
        photo.source = word.first;
        EXPECT_EQ('"' + word.second + '"', valueOf(photo, "source"));
    }
}

} // namespace
