#include "engine/contact_sheet.h"
#include "support/classic_fixture.h"
#include "support/picture_comparison.h"
#include "support/picture_files.h"
#include "support/program_fixture.h"
#include "support/row_name.h"
#include "support/sample_device.h"

#include <gtest/gtest.h>

#include <QDir>

namespace {

constexpr char thumbnailPath[] =
    "device/PhotoData/Thumbnails/V2/DCIM/100APPLE/IMG_0001.JPG/5005.JPG";

QImage plain(const QSize &size, Qt::GlobalColor color)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    return image;
}

QByteArray plainJpeg(const QSize &size, Qt::GlobalColor color)
{
    return pictureFile(plain(size, color), "JPEG");
}

// Which of red, green and blue the middle of `image` is; -1 for no picture.
int colorOf(const QImage &image)
{
    if (image.isNull())
        return -1;
    const QRgb middle = image.pixel(image.width() / 2, image.height() / 2);
    if (qRed(middle) > 200)
        return Qt::red;
    return qGreen(middle) > 200 ? Qt::green : Qt::blue;
}

class MadeThumbnails : public ProgramTest
{
protected:
    /// A device whose first photo has the original `original`, and maybe a thumbnail.
    void writePhone(const QByteArray &original, const QByteArray &thumbnail = QByteArray())
    {
        PhotosDatabase database = twoPhotos();
        for (AssetRow &row : database.rows.assets)
            row.thumbnailIndex = -1;
        writeDatabase(m_scratch, "device", database);
        if (!original.isEmpty())
            m_scratch.write(twoPhotosPath, original);
        if (!thumbnail.isEmpty())
            m_scratch.write(thumbnailPath, thumbnail);
    }

    ProgramResult thumb(const QByteArray &target, const QList<QByteArray> &further = {})
    {
        return run(QList<QByteArray>{"thumb", "-d", device(), "1", "-o", target} + further);
    }

    /// The picture that the command writes to the file `name`, which has to be of `format`.
    QImage written(const QByteArray &name, const QList<QByteArray> &further = {},
                   const char *format = "JPEG")
    {
        const ProgramResult result = thumb(m_scratch.path(name), further);
        EXPECT_EQ(0, result.exitCode);
        EXPECT_EQ("", result.errors.toStdString());
        QImage image;
        EXPECT_TRUE(image.loadFromData(m_scratch.read(name), format)) << name.constData();
        return image;
    }
};

using ThumbSizesOnBadInput = MadeThumbnails;
using SheetOfOriginals = MadeThumbnails;

// --- where the device has no thumbnail

TEST_F(MadeThumbnails, AreOfTheUsualSizeInTheFormatOfTheName)
{
    writePhone(plainJpeg({1200, 900}, Qt::green));
    for (const char *name : {"a.jpg", "a.JPEG", "a.unknown", "a"})
        EXPECT_EQ(QSize(512, 384), written(name).size()) << name;
    for (const char *name : {"a.png", "a.PNG"})
        EXPECT_EQ(QSize(512, 384), written(name, {}, "PNG").size()) << name;
    EXPECT_EQ(QSize(512, 384), written("b", {"--format", "png"}, "PNG").size());
    EXPECT_EQ(Qt::green, colorOf(written("a.jpg")));
}

TEST_F(MadeThumbnails, AreMadeOfHeicPhotos)
{
    const QByteArray heic = heicFile(plain({640, 480}, Qt::blue));
    if (heic.isEmpty())
        GTEST_SKIP() << "libheif has no encoder here";
    writePhone(heic); // whatever the name of the file
    const QImage image = written("a.jpg", {"--size", "100"});
    EXPECT_EQ(QSize(100, 75), image.size());
    EXPECT_EQ(Qt::blue, colorOf(image));
}

TEST_F(MadeThumbnails, HaveTheNamesOfOthersInAFolder)
{
    writePhone(plainJpeg({60, 40}, Qt::green));
    const ProgramResult result = thumb(m_scratch.path("out/"));
    EXPECT_EQ(0, result.exitCode) << result.errors.constData();
    EXPECT_EQ(QList<QByteArray>{m_scratch.path("out/1-IMG_0001.jpg")},
              m_scratch.everythingIn("out"));
    thumb(m_scratch.path("png/"), {"--format", "png"});
    EXPECT_EQ(QList<QByteArray>{m_scratch.path("png/1-IMG_0001.png")},
              m_scratch.everythingIn("png"));
}

TEST_F(MadeThumbnails, GoToStandardOutput)
{
    writePhone(plainJpeg({60, 40}, Qt::green));
    QImage image;
    EXPECT_TRUE(image.loadFromData(thumb("-").output, "JPEG"));
    EXPECT_EQ(QSize(60, 40), image.size());
    EXPECT_TRUE(image.loadFromData(thumb("-", {"--format", "png"}).output, "PNG"));
    EXPECT_TRUE(image.loadFromData(thumb("-", {"--size", "30"}).output, "JPEG"));
    EXPECT_EQ(QSize(30, 20), image.size());
}

TEST_F(MadeThumbnails, ShowOnWhiteWhatIsTransparent)
{
    QImage transparent(20, 20, QImage::Format_ARGB32);
    transparent.fill(Qt::transparent);
    writePhone(pictureFile(transparent, "PNG"));
    EXPECT_EQ(qRgb(255, 255, 255), written("a.jpg").pixel(10, 10));
    EXPECT_EQ(0, qAlpha(written("a.png", {}, "PNG").pixel(10, 10)));
}

TEST_F(MadeThumbnails, AreMadeOfWhatThePluginDoesNotList)
{
    PhotosDatabase database = twoPhotos();
    database.rows.assets[0].savedAssetType = 6;
    writeDatabase(m_scratch, "device", database);
    m_scratch.write(twoPhotosPath, plainJpeg({60, 40}, Qt::green));
    EXPECT_EQ(QSize(60, 40), written("a.jpg").size());
    const ProgramResult all = run({"thumb", "-d", device(), "--all", m_scratch.path("out")});
    EXPECT_EQ("wrote 1 thumbnail to " + m_scratch.path("out") + ", 1 failed\n", all.output);
    EXPECT_EQ(QList<QByteArray>{m_scratch.path("out/1-IMG_0001.jpg")},
              m_scratch.everythingIn("out"));
}

TEST_F(MadeThumbnails, AreMadeOfNoVideoWhichIsSaid)
{
    PhotosDatabase database;
    database.rows.assets = {videoRow(1)};
    database.rows.assets[0].fileName = "IMG_0001.MOV";
    database.rows.assets[0].thumbnailIndex = -1;
    writeDatabase(m_scratch, "device", database);
    m_scratch.write("device/DCIM/100APPLE/IMG_0001.MOV", "video");
    for (const QList<QByteArray> &further : {QList<QByteArray>(), {"--size", "100"}}) {
        const ProgramResult result = thumb(m_scratch.path("a.jpg"), further);
        EXPECT_EQ(1, result.exitCode);
        EXPECT_EQ("photolib: DCIM/100APPLE/IMG_0001.MOV: no thumbnail (photolib makes none of "
                  "videos)\n",
                  result.errors);
    }
    const ProgramResult sheet = run({"sheet", "-d", device(), "-o", m_scratch.path("sheet.png")});
    EXPECT_EQ(0, sheet.exitCode);
    EXPECT_EQ("photolib: 1 video has no thumbnail on the device, and photolib makes none of "
              "videos\n",
              sheet.errors);
}

TEST_F(MadeThumbnails, AreNotMadeOfADamagedOriginalWhichIsSaid)
{
    writePhone(plainJpeg({200, 200}, Qt::green).left(700));
    const ProgramResult result = thumb(m_scratch.path("a.jpg"));
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("photolib: DCIM/100APPLE/IMG_0001.JPG: no thumbnail (a damaged original)\n",
              result.errors);
    EXPECT_FALSE(m_scratch.exists("a.jpg"));
}

TEST_F(MadeThumbnails, StandInForADamagedOneThatIsToBeConverted)
{
    writePhone(plainJpeg({60, 40}, Qt::green), plainJpeg({200, 200}, Qt::red).left(700));
    EXPECT_EQ(Qt::green, colorOf(written("a.png", {}, "PNG")));
    EXPECT_EQ(Qt::green, colorOf(written("a.jpg", {"--size", "100"})));
}

// --- --size

struct SizeRow {
    const char *name;
    QSize original; ///< empty for none
    QSize thumbnail;
    int wanted;
    QSize given;
    Qt::GlobalColor color; ///< green of the original, red of the thumbnail
};

class ThumbSize : public MadeThumbnails, public testing::WithParamInterface<SizeRow>
{
};

TEST_P(ThumbSize, IsThatOfTheLongerEdge)
{
    const SizeRow &row = GetParam();
    writePhone(row.original.isEmpty() ? QByteArray() : plainJpeg(row.original, Qt::green),
               plainJpeg(row.thumbnail, Qt::red));
    const QByteArray wanted = QByteArray::number(row.wanted);
    for (const char *name : {"a.jpg", "a.png"}) {
        const QImage image = written(name, {"--size", wanted}, name[2] == 'j' ? "JPEG" : "PNG");
        EXPECT_EQ(row.given, image.size()) << name;
        EXPECT_EQ(row.color, colorOf(image)) << name;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Sizes, ThumbSize,
    testing::Values(
        SizeRow{"OfTheThumbnailScaledDown", {400, 300}, {160, 120}, 80, {80, 60}, Qt::red},
        SizeRow{"OfTheThumbnailAsItIs", {400, 300}, {160, 120}, 160, {160, 120}, Qt::red},
        SizeRow{"OfTheOriginalScaledDown", {400, 300}, {160, 120}, 200, {200, 150}, Qt::green},
        SizeRow{"OfTheOriginalAsItIs", {400, 300}, {160, 120}, 4096, {400, 300}, Qt::green},
        SizeRow{"OfAStandingOriginal", {300, 400}, {120, 160}, 200, {150, 200}, Qt::green},
        SizeRow{"WithoutAnOriginal", {}, {160, 120}, 1024, {160, 120}, Qt::red},
        SizeRow{"OfTheThumbnailThatIsAsLarge", {160, 120}, {160, 120}, 1024, {160, 120}, Qt::red},
        SizeRow{"OfTheThumbnailThatIsLarger", {80, 60}, {160, 120}, 1024, {160, 120}, Qt::red},
        SizeRow{"TheSmallest", {400, 300}, {160, 120}, 16, {16, 12}, Qt::red}),
    rowName<SizeRow>);

TEST_F(MadeThumbnails, LeaveAThumbnailOfTheRightSizeAndFormatAsItIs)
{
    const QByteArray thumbnail = plainJpeg({160, 120}, Qt::red);
    writePhone("picture", thumbnail);
    for (const char *size : {"160", "161", "4096"}) {
        EXPECT_EQ(0, thumb(m_scratch.path("a.jpg"), {"--size", size}).exitCode);
        EXPECT_EQ(thumbnail, m_scratch.read("a.jpg")) << size;
    }
    EXPECT_EQ(0, thumb(m_scratch.path("a"), {"--format", "jpeg"}).exitCode);
    EXPECT_EQ(thumbnail, m_scratch.read("a"));
}

TEST_F(MadeThumbnails, AreTheSameWayUpAsStoredOnes)
{
    const QImage upright = smoothPicture({200, 300});
    const QImage thumbnail =
        upright.scaled({80, 120}, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    PhotosDatabase database = twoPhotos();
    database.rows.assets[0].orientation = 6;
    database.rows.assets[0].width = 200;
    database.rows.assets[0].height = 300;
    writeDatabase(m_scratch, "device", database);
    m_scratch.write(twoPhotosPath, jpegHeld(upright, 6));
    m_scratch.write(thumbnailPath, pictureFile(thumbnail, "JPEG"));
    const QImage large = written("a.jpg", {"--size", "240"});
    EXPECT_LE(lossBetween(thumbnail,
                          large.scaled({80, 120}, Qt::IgnoreAspectRatio, Qt::SmoothTransformation))
                  .mean,
              3);
    EXPECT_LE(lossBetween(thumbnail, written("b.png", {"--size", "120"}, "PNG")).mean, 3);
}

TEST_F(MadeThumbnails, ShowEditedPhotosAsEdited)
{
    writeSampleTo(QString::fromUtf8(device()), sampleOptions(12));
    const QByteArray edited =
        "device/PhotoData/Mutations/DCIM/100APPLE/IMG_0004/Adjustments/FullSizeRender.jpg";
    ASSERT_TRUE(m_scratch.exists(edited));
    m_scratch.write(edited, plainJpeg({640, 480}, Qt::green));
    m_scratch.write("device/DCIM/100APPLE/IMG_0004.JPG", plainJpeg({640, 480}, Qt::red));
    const QByteArray target = m_scratch.path("a.png");
    ASSERT_EQ(0, run({"thumb", "-d", device(), "4", "-o", target, "--size", "500"}).exitCode);
    const QImage image = QImage::fromData(m_scratch.read("a.png"));
    EXPECT_EQ(QSize(500, 375), image.size());
    EXPECT_EQ(Qt::green, colorOf(image));
}

TEST_F(ThumbSizesOnBadInput, ExitWithTwo)
{
    writePhone(plainJpeg({60, 40}, Qt::green));
    for (const char *size : {"15", "4097", "0", "-1", "large", "1e3", "99999999999"}) {
        const ProgramResult result = thumb(m_scratch.path("a.jpg"), {"--size", size});
        EXPECT_EQ(2, result.exitCode) << size;
        EXPECT_TRUE(result.errors.startsWith("photolib: --size")) << result.errors.constData();
    }
    EXPECT_FALSE(m_scratch.exists("a.jpg"));
}

TEST_F(ThumbSizesOnBadInput, GiveNoPictureTheNameOfAnotherFormat)
{
    writePhone(plainJpeg({60, 40}, Qt::green));
    for (const char *name : {"a.gif", "a.heic", "a.bmp"})
        expectFailure({"thumb", "-d", device(), "1", "--size", "20", "-o", m_scratch.path(name)},
                      m_scratch.path(name) + ": the thumbnail is a JPEG picture");
    expectFailure({"thumb", "-d", device(), "1", "--format", "jpeg", "-o", m_scratch.path("a.png")},
                  m_scratch.path("a.png") + ": the thumbnail is a JPEG picture");
}

// --- classic iPods

class MadeThumbnailsOfAnIpod : public ClassicProgramTest
{
protected:
    QImage written(const QByteArray &id, const QByteArray &size)
    {
        const ProgramResult result =
            run({"thumb", "-d", device(), id, "--size", size, "-o", m_scratch.path("a.jpg")});
        EXPECT_EQ(0, result.exitCode) << result.errors.constData();
        QImage image;
        EXPECT_TRUE(image.loadFromData(m_scratch.read("a.jpg"), "JPEG"));
        return image;
    }
};

TEST_F(MadeThumbnailsOfAnIpod, AreOfTheSmallestPictureThatIsLargeEnough)
{
    ClassicPhoto &first = addPhoto(100);
    store(first, iconFormat, Qt::red);
    store(first, screenFormat, Qt::green);
    addOriginal(first, "IMG_0041.JPG", plainJpeg({640, 480}, Qt::blue));
    addOriginal(addPhoto(101), "IMG_0042.JPG", plainJpeg({640, 480}, Qt::blue));
    writeDevice();
    const QImage small = written("100", "40");
    EXPECT_EQ(40, small.width());
    EXPECT_EQ(Qt::red, colorOf(small));
    const QImage middle = written("100", "300");
    EXPECT_EQ(QSize(300, 225), middle.size());
    EXPECT_EQ(Qt::green, colorOf(middle));
    const QImage large = written("100", "600");
    EXPECT_EQ(QSize(600, 450), large.size());
    EXPECT_EQ(Qt::blue, colorOf(large));
    EXPECT_EQ(QSize(100, 75), written("101", "100").size());
}

// --- sheets

TEST_F(SheetOfOriginals, ShowsThemInTheCellsWithoutThumbnails)
{
    PhotosDatabase database;
    const QByteArray originals[] = {plainJpeg({800, 600}, Qt::green),
                                    pictureFile(plain({600, 800}, Qt::blue), "PNG"),
                                    plainJpeg({800, 600}, Qt::blue)};
    for (int i = 0; i < 3; ++i) {
        const QByteArray name = "IMG_000" + QByteArray::number(i + 1) + ".JPG";
        database.rows.assets.push_back(photoRow(i + 1, i));
        database.rows.assets.back().fileName = name.toStdString();
        database.rows.assets.back().thumbnailIndex = -1;
        m_scratch.write("device/DCIM/100APPLE/" + name, originals[i]);
    }
    m_scratch.write("device/PhotoData/Thumbnails/V2/DCIM/100APPLE/IMG_0003.JPG/5005.JPG",
                    plainJpeg({160, 120}, Qt::red));
    writeDatabase(m_scratch, "device", database);
    const ProgramResult result = run({"sheet", "-d", device(), "-o", m_scratch.path("sheet.png")});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ("", result.errors.toStdString());
    const QImage sheet = QImage::fromData(m_scratch.read("sheet.png"), "PNG");
    const SheetLayout layout(3, SheetLayout::columnsFor(3));
    const int colors[] = {Qt::green, Qt::blue, Qt::red};
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(colors[i], colorOf(sheet.copy(layout.pictureBox(i)))) << i;
}

TEST_F(SheetOfOriginals, TellsOfThoseThatAreDamaged)
{
    writePhone(plainJpeg({200, 200}, Qt::green).left(700));
    const ProgramResult result = run({"sheet", "-d", device(), "-o", m_scratch.path("sheet.png")});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ("photolib: DCIM/100APPLE/IMG_0001.JPG: no thumbnail (a damaged original)\n",
              result.errors);
}

} // namespace
