#include "engine/name_template.h"

#include "base/error.h"
#include "base/file_names.h"
#include "support/catalogs.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <QList>

#include <limits>

namespace {

// Of 2019-07-27 at 09:16:49.25 where it was taken.
Asset usualPhoto()
{
    Asset photo;
    photo.id = 42;
    photo.uuid = "2B9A4A10-0000-4000-8000-000000000001";
    photo.fileName = "IMG_0042.JPG";
    photo.originalName = "Rome at noon.jpeg";
    photo.taken = july2019(27, 13, 16, 49.25);
    photo.utcOffset = -240;
    photo.modified = july2019(29, 1);
    photo.added = july2019(28, 23, 59, 59);
    return photo;
}

NameValues valuesOf(const Asset &photo)
{
    NameValues values;
    values.asset = &photo;
    values.fileName = photo.fileName;
    values.album = "Rome";
    values.folder = "Trips/Italy";
    values.device = "Ann's phone";
    return values;
}

QByteArray wholePath(const NamePath &path)
{
    return path.base + path.extension;
}

QByteArray usualPath(const QByteArray &text)
{
    const Asset photo = usualPhoto();
    return wholePath(NameTemplate(text).pathFor(valuesOf(photo)));
}

// Of a photo without names other than the file's, dates, album and so on.
QByteArray barePath(const QByteArray &text)
{
    Asset photo;
    photo.fileName = "IMG_0042.JPG";
    NameValues values;
    values.asset = &photo;
    values.fileName = photo.fileName;
    return wholePath(NameTemplate(text).pathFor(values));
}

struct PathRow {
    const char *name;
    QByteArray text;
    QByteArray expected;
};

class PathByTemplate : public testing::TestWithParam<PathRow>
{
};

TEST_P(PathByTemplate, HasTheValuesOfThePhoto)
{
    EXPECT_EQ(GetParam().expected, usualPath(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(
    Fields, PathByTemplate,
    testing::Values(
        PathRow{"Usual", NameTemplate::usual, "2019/07/Rome at noon.JPG"},
        PathRow{"Name", "{name}", "IMG_0042.JPG"}, PathRow{"Stem", "x{stem}", "xIMG_0042"},
        PathRow{"Extension", "x{ext}", "x.JPG"},
        PathRow{"OriginalName", "{originalName}", "Rome at noon.jpeg"},
        PathRow{"OriginalStem", "{originalStem}", "Rome at noon"}, PathRow{"Id", "{id}", "42"},
        PathRow{"Uuid", "{uuid}{ext}", "2B9A4A10-0000-4000-8000-000000000001.JPG"},
        PathRow{"Kind", "{kind}s/{name}", "photos/IMG_0042.JPG"},
        PathRow{"Album", "{album}/{name}", "Rome/IMG_0042.JPG"},
        PathRow{"Folder", "{folder}/{name}", "Trips/Italy/IMG_0042.JPG"},
        PathRow{"FolderThatGoesOn", "in {folder} only/{name}", "in Trips/Italy only/IMG_0042.JPG"},
        PathRow{"Device", "{device}/{name}", "Ann's phone/IMG_0042.JPG"},
        PathRow{"DoubledBraces", "{{{id}}}{{x}}", "{42}{x}"},
        PathRow{"EmptyNames", "a//b/ /{name}", "a/b/IMG_0042.JPG"},
        PathRow{"FolderOnly", "a/", "a/IMG_0042.JPG"},
        PathRow{"NoValueIsTakenForATemplate", "{{album}}", "{album}"}),
    rowName<PathRow>);

INSTANTIATE_TEST_SUITE_P(
    Dates, PathByTemplate,
    testing::Values(
        PathRow{"TakenIsByTheClockThere", "{taken}", "2019-07-27"},
        PathRow{"TakenWithATime", "{taken:%H.%M.%S}", "09.16.49"},
        PathRow{"ModifiedIsInUtc", "{modified:%F %H}", "2019-07-29 01"},
        PathRow{"AddedIsInUtc", "{added:%F %H}", "2019-07-28 23"},
        PathRow{"NamesOfDaysAndMonths", "{taken:%a %A %b %B %h}", "Sat Saturday Jul July Jul"},
        PathRow{"DaysOfTheYear", "{taken:%j %U %W %V %G %g %u %w %C %y %e}",
                "208 29 29 30 2019 19 6 6 20 19 27"},
        PathRow{"TimesOfTheDay", "{taken:%I %p %n %t x}", "09 AM _ _ x"},
        PathRow{"WholeForms", "{taken:%c %x %X}", "Sat Jul 27 09_16_49 2019 07_27_19 09_16_49"},
        PathRow{"ShorterForms", "{taken:%D %R %r %T}", "07_27_19 09_16 09_16_49 AM 09_16_49"},
        PathRow{"ZoneOfTheClock", "{taken:at %z %Z}", "at -0400 -0400"},
        PathRow{"ZoneUtc", "{added:%z %Z}", "+0000 UTC"},
        PathRow{"OtherDigits", "{taken:%Ey %Om}", "19 07"},
        PathRow{"WithoutZeros", "{taken:%-m}", "7"}, PathRow{"Percent", "{taken:%%%d}", "%27"},
        PathRow{"FoldersInTheForm", "{taken:%Y/%m/%d}/{name}", "2019/07/27/IMG_0042.JPG"},
        PathRow{"BracesInTheForm", "{taken:{{%Y|%m}}}", "{2019_07}"},
        PathRow{"FormThatGivesNothing", "{taken:|x}", "x"},
        PathRow{"FormThatIsTooLong", "{taken:%9999d|x}", "x"}),
    rowName<PathRow>);

class PathOfABarePhoto : public testing::TestWithParam<PathRow>
{
};

TEST_P(PathOfABarePhoto, HasWhatStandsForEmptyFields)
{
    EXPECT_EQ(GetParam().expected, barePath(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(
    Others, PathOfABarePhoto,
    testing::Values(PathRow{"NamesOfTheFile", "{originalStem}_{originalName}",
                            "IMG_0042_IMG_0042.JPG"},
                    PathRow{"EmptyFoldersAreLeftOut", NameTemplate::usual, "IMG_0042.JPG"},
                    PathRow{"WhollyEmpty", "{album}", "IMG_0042.JPG"},
                    PathRow{"EmptyName", "x/{album}", "x/IMG_0042.JPG"},
                    PathRow{"ExtensionOnly", "x/{album}{ext}", "x/IMG_0042.JPG"},
                    PathRow{"Text", "{album|none}/{name}", "none/IMG_0042.JPG"},
                    PathRow{"EmptyText", "x{album|}", "x"}, PathRow{"Field", "{album|id}", "0"},
                    PathRow{"FieldInBraces", "{album|{id}}", "0"},
                    PathRow{"TextWithAField", "{album|no. {id}!}", "no. 0!"},
                    PathRow{"Chain", "{album|folder|device|none}", "none"},
                    PathRow{"ChainThatEndsWithAField", "{album|folder|kind|none}", "photo"},
                    PathRow{"ChainWithinBraces", "{album|{folder|{device|x{id}}}}", "x0"},
                    PathRow{"Date", "{taken:%Y|modified:%Y|undated}", "undated"},
                    PathRow{"LiteralBraces", "{album|{{none}}}", "{none}"},
                    PathRow{"BarWithinLiteralBraces", "{album|{{a|b}}}", "{a_b}"},
                    PathRow{"TextWithAColon", "{album|x:y}", "x_y"},
                    PathRow{"Folders", "{album|no/album}/{name}", "no/album/IMG_0042.JPG"},
                    PathRow{"UuidThatIsNotKnown", "{uuid|id}", "0"}),
    rowName<PathRow>);

TEST(NameTemplates, TakeOtherValuesOnlyForEmptyOnes)
{
    EXPECT_EQ("Rome", usualPath("{album|none}"));
    EXPECT_EQ("2019", usualPath("{taken:%Y|modified:%Y|undated}"));
}

TEST(NameTemplates, TakeADateBeyondTheCalendarForNone)
{
    Asset photo = usualPhoto();
    for (const double date : {1e300, 252423993600.0, std::numeric_limits<double>::quiet_NaN()}) {
        photo.taken = date;
        EXPECT_EQ("none", wholePath(NameTemplate("{taken|none}").pathFor(valuesOf(photo))));
    }
}

TEST(NameTemplates, TakeDatesInUtcWhereTheClockIsNotKnown)
{
    Asset photo = usualPhoto();
    photo.utcOffset = std::nullopt;
    const NameTemplate names("{taken:%F %H %z %Z}");
    EXPECT_EQ("2019-07-27 13 +0000 UTC", wholePath(names.pathFor(valuesOf(photo))));
}

TEST(NameTemplates, KnowDatesBefore1970)
{
    Asset photo = usualPhoto();
    photo.utcOffset = 0;
    photo.taken = -63113904000; // 0001-01-01
    const NameTemplate names("{taken:%d %m %j %H.%M.%S %A}");
    EXPECT_EQ("01 01 001 00.00.00 Monday", wholePath(names.pathFor(valuesOf(photo))));
    *photo.taken -= 0.001;
    EXPECT_EQ("IMG_0042.JPG",
              wholePath(NameTemplate("{taken}").pathFor(valuesOf(photo)))); // not in the calendar
}

struct ErrorRow {
    const char *name;
    QByteArray text;
    const char *expected; // a part of the message
};

class WrongTemplate : public testing::TestWithParam<ErrorRow>
{
};

TEST_P(WrongTemplate, IsRefusedWithWhatIsWrong)
{
    try {
        const NameTemplate names(GetParam().text);
        FAIL() << "taken";
    } catch (const Error &error) {
        EXPECT_EQ(Error::WrongUsage, error.kind());
        EXPECT_NE(std::string::npos, std::string(error.what()).find(GetParam().expected))
            << error.what();
    }
}

INSTANTIATE_TEST_SUITE_P(
    Texts, WrongTemplate,
    testing::Values(
        ErrorRow{"UnknownField", "{size}", "\"{size}\": there is no field \"size\""},
        ErrorRow{"UnknownFieldNamesTheOthers", "{size}",
                 "(fields: taken, modified, added, name, stem, ext, originalName, originalStem, "
                 "id, uuid, kind, album, folder, device)"},
        ErrorRow{"MistypedField", "{albun}", "did you mean album?"},
        ErrorRow{"FieldInAnotherCase", "{Album}", "there is no field"},
        ErrorRow{"EmptyField", "{}", "there is no field \"\""},
        ErrorRow{"UnknownFieldInAnOther", "{album|{size}}", "there is no field \"size\""},
        ErrorRow{"OpenBrace", "{album", "a \"{\" has no \"}\""},
        ErrorRow{"OpenBraceInAnOther", "{album|{folder}", "a \"{\" has no \"}\""},
        ErrorRow{"OpenBraceInAForm", "{taken:%Y", "a \"{\" has no \"}\""},
        ErrorRow{"OpenBraceAtTheEnd", "x{", "there is no field \"\""},
        ErrorRow{"ClosingBrace", "album}", "a \"}\" has no \"{\""},
        ErrorRow{"ClosingBraceAfterAField", "{album}}", "a \"}\" has no \"{\""},
        ErrorRow{"FieldWithinAField", "{al{id}bum}", "there is no field \"al\""},
        ErrorRow{"Empty", "", "it is empty"}, ErrorRow{"Blank", " ", "it is empty"},
        ErrorRow{"FormOfANumber", "{id:%d}", "only a date has a form"},
        ErrorRow{"FormOfANumberInAnOther", "{album|id:%d}", "only a date has a form"},
        ErrorRow{"TextLikeAFieldWithAForm", "{album|album: none}", "only a date has a form"},
        ErrorRow{"FieldInAForm", "{taken:{id}}", "a field cannot tell the form"},
        ErrorRow{"UnknownConversion", "{taken:%Q}", "\"%Q\" is no part of a date"},
        ErrorRow{"ComputersOwnZone", "{taken:%s}", "\"%s\" is no part of a date"},
        ErrorRow{"UnfinishedConversion", "{taken:%Y-%}", "\"%\" is no part of a date"},
        ErrorRow{"UnfinishedModifier", "{taken:%E}", "\"%E\" is no part of a date"},
        ErrorRow{"ModifierOfAnother", "{taken:%Ed}", "\"%Ed\" is no part of a date"},
        ErrorRow{"Absolute", "/{name}", "begins with \"/\""},
        ErrorRow{"AbsoluteOther", "{album|/x}/{name}", "begins with \"/\""},
        ErrorRow{"Parent", "../{name}", "can have the name \"..\""},
        ErrorRow{"ParentWithin", "{album}/../{name}", "can have the name \"..\""},
        ErrorRow{"ParentAtTheEnd", "{album}/..", "can have the name \"..\""},
        ErrorRow{"ParentOther", "{album|..}/{name}", "can have the name \"..\""},
        ErrorRow{"Itself", "./{name}", "can have the name \".\""},
        ErrorRow{"Record", ".photolib/{name}", "keeps its record"},
        ErrorRow{"RecordInCapitals", ".PhotoLib/{name}", "keeps its record"},
        ErrorRow{"RecordAfterABlank", " .photolib/{name}", "keeps its record"},
        ErrorRow{"RecordItself", ".photolib", "keeps its record"},
        ErrorRow{"RecordAndMore", ".photolib{id}/{name}", "keeps its record"},
        ErrorRow{"RecordOther", "{album|.photolib}/{name}", "keeps its record"},
        ErrorRow{"RecordInADeeperOther", "{album|{folder|.photolib/x}}", "keeps its record"}),
    rowName<ErrorRow>);

struct SplitRow {
    const char *name;
    QByteArray text;
    QByteArray base;
    QByteArray extension;
};

class ExtensionByTemplate : public testing::TestWithParam<SplitRow>
{
};

TEST_P(ExtensionByTemplate, IsThatOfTheFileWhereThePathEndsWithIt)
{
    const Asset photo = usualPhoto();
    const NamePath path = NameTemplate(GetParam().text).pathFor(valuesOf(photo));
    EXPECT_EQ(GetParam().base, path.base);
    EXPECT_EQ(GetParam().extension, path.extension);
}

INSTANTIATE_TEST_SUITE_P(
    Ends, ExtensionByTemplate,
    testing::Values(SplitRow{"Field", "{taken:%Y}/{stem}{ext}", "2019/IMG_0042", ".JPG"},
                    SplitRow{"Name", "{name}", "IMG_0042", ".JPG"},
                    SplitRow{"OriginalName", "{originalName}", "Rome at noon", ".jpeg"},
                    SplitRow{"Literal", "{id}.jpg", "42", ".jpg"},
                    SplitRow{"None", "{id}", "42", ""},
                    SplitRow{"AnotherOne", "{id}.png", "42.png", ""},
                    SplitRow{"InTheMiddle", "{name}.{id}", "IMG_0042.JPG.42", ""}),
    rowName<SplitRow>);

TEST(NameTemplates, MakeOneNameOfValuesWithSlashes)
{
    const Asset photo = usualPhoto();
    NameValues values = valuesOf(photo);
    values.album = "../2019/07";
    values.device = "/";
    values.folder = "../Trips/./.photolib/-rf/CON";
    const auto path = [&](const QByteArray &text) {
        return wholePath(NameTemplate(text).pathFor(values));
    };
    EXPECT_EQ("_._2019_07/IMG_0042.JPG", path("{album}/{name}"));
    EXPECT_EQ("_/IMG_0042.JPG", path("{device}/{name}"));
    EXPECT_EQ("__/Trips/_/_photolib/_rf/_CON/IMG_0042.JPG", path("{folder}/{name}"));
}

TEST(NameTemplates, CutTheNamesOfFoldersOnlyToWhatADiskTakes)
{
    const Asset photo = usualPhoto();
    NameValues values = valuesOf(photo);
    EXPECT_FALSE(NameTemplate("{album}/{album}").pathFor(values).wasCut);
    values.album = QByteArray(255, 'a');
    EXPECT_FALSE(NameTemplate("{album}/{album}").pathFor(values).wasCut);
    values.album = QByteArray(300, 'a');
    const NamePath path = NameTemplate("{album}/{album}{ext}").pathFor(values);
    EXPECT_EQ(QByteArray(255, 'a') + '/' + QByteArray(300, 'a'), path.base);
    EXPECT_EQ(".JPG", path.extension);
    EXPECT_TRUE(path.wasCut);
    EXPECT_FALSE(NameTemplate("{album}{ext}").pathFor(values).wasCut);
}

TEST(NameTemplates, CutNamesAtAWholeCharacterAndLeaveNoBlankAtTheEnd)
{
    const Asset photo = usualPhoto();
    NameValues values = valuesOf(photo);
    values.album = QByteArray(254, 'a') + "e\u0301x"; // an accent for its own
    EXPECT_EQ(QByteArray(254, 'a'), NameTemplate("{album}/x").pathFor(values).base.chopped(2));
    values.album = QByteArray(250, 'a') + "     x";
    EXPECT_EQ(QByteArray(250, 'a'), NameTemplate("{album}/x").pathFor(values).base.chopped(2));
}

// What a title may hold that some disk, program or path takes for more than a name.
const QByteArray hostileTitles[] = {
    "",
    " ",
    ".",
    "..",
    "...",
    "/",
    "//",
    "../..",
    "/etc/passwd",
    "a/../../b",
    ".photolib",
    ".PHOTOLIB",
    " .photolib ",
    ".photolib/export.sqlite",
    "-rf",
    "--help",
    "CON",
    "nul.txt",
    "COM1",
    "a.",
    "a. ",
    "a ",
    "\x1b[2J",
    "\n",
    "\r\n",
    QByteArray("a\0b", 3),
    "\xff\xfe",
    "\xc3",
    "\xed\xa0\x80",
    "\u202Egpj.exe",
    "\u00a0",
    "\u2028",
    "\\",
    "C:\\x",
    "{id}",
    "%Y",
    "a|b",
    ".JPG",
    QByteArray(1000, 'a'),
    QByteArray(1000, '.'),
    QByteArray("\u0301").repeated(500),
    QByteArray("a/").repeated(300),
    QByteArray("👩‍👩‍👧‍👦").repeated(50),
};

void expectToBeSafe(const NamePath &path)
{
    const QList<QByteArray> names = wholePath(path).split('/');
    EXPECT_NE(".photolib", comparedName(names.first()));
    for (const QByteArray &name : names) {
        EXPECT_FALSE(name.isEmpty() || name == "." || name == "..")
            << wholePath(path).toStdString();
        EXPECT_FALSE(name.startsWith('-') || name.startsWith('.')) << wholePath(path).toStdString();
        EXPECT_EQ(name, safeName(QString::fromUtf8(name)));
    }
    EXPECT_FALSE(path.base.endsWith('/') || path.extension.contains('/'));
    for (const QByteArray &name : names.mid(0, names.size() - 1))
        EXPECT_LE(name.size(), 255);
}

TEST(NameTemplates, StayInTheFolderWhateverTheTitlesAre)
{
    const QByteArray texts[] = {
        NameTemplate::usual,
        "{album}",
        "{folder}",
        "{folder}/{album}",
        "{album}{folder}",
        ".{album}/{name}",
        "..{album}/{stem}{ext}",
        "{album|x}/{album}",
        "{album}{album}/{device}{ext}",
        "{originalName}",
        "{name}",
        "x{folder}/{uuid|originalStem}.{album}",
    };
    Asset photo = usualPhoto();
    for (const QByteArray &text : texts) {
        const NameTemplate names(text);
        for (const QByteArray &title : hostileTitles) {
            photo.fileName = title;
            photo.originalName = title;
            photo.uuid = title;
            NameValues values = valuesOf(photo);
            values.album = title;
            values.folder = title;
            values.device = title;
            SCOPED_TRACE((text + " with " + title.left(100)).toStdString());
            expectToBeSafe(names.pathFor(values));
            values.fileName = "IMG_0042.JPG";
            expectToBeSafe(names.pathFor(values));
        }
    }
}

} // namespace
