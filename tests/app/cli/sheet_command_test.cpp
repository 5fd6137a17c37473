#include "engine/contact_sheet.h"
#include "support/json.h"
#include "support/opened_library.h"
#include "support/program_fixture.h"
#include "support/sample_device.h"
#include "support/terminal.h"

#include <gtest/gtest.h>

#include <QBuffer>

#include <cmath>
#include <csignal>
#include <map>
#include <unistd.h>

namespace {

QByteArray jpegOf(const QImage &image)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, "JPEG", 95));
    return buffer.data();
}

// Four fields of different colours, red, green, blue and white from the upper left on.
QImage fourFields(const QSize &size)
{
    QImage image(size, QImage::Format_RGB32);
    const QRgb colors[] = {qRgb(255, 0, 0), qRgb(0, 255, 0), qRgb(0, 0, 255), qRgb(255, 255, 255)};
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, colors[2 * (2 * y / size.height()) + 2 * x / size.width()]);
    }
    return image;
}

// The mean difference of the channels of two pictures of one size.
double difference(const QImage &a, const QImage &b)
{
    double sum = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QColor left = a.pixelColor(x, y);
            const QColor right = b.pixelColor(x, y);
            sum += std::abs(left.red() - right.red()) + std::abs(left.green() - right.green()) +
                   std::abs(left.blue() - right.blue());
        }
    }
    return sum / (3.0 * a.width() * a.height());
}

bool isBlank(const QImage &image)
{
    QImage copy = image;
    copy.fill(image.pixel(0, 0));
    return difference(image, copy) < 1;
}

bool isOfOneColor(const QImage &image)
{
    QImage copy = image;
    copy.fill(image.pixel(0, 0));
    return copy == image;
}

// The inner part, where no badge is.
QImage inner(const QImage &image)
{
    return image.copy(image.width() / 4, image.height() / 4, image.width() / 2, image.height() / 2);
}

// `thumbnail` in the size in which the sheet shows it.
QImage fitted(const QImage &thumbnail, const QRect &box)
{
    const QSize most = box.size().boundedTo(thumbnail.size() * 2);
    return thumbnail.scaled(thumbnail.size().scaled(most, Qt::KeepAspectRatio),
                            Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

class SheetProgram : public ProgramTest
{
protected:
    void writeSampleDevice(int assets, bool hasPictures = true)
    {
        writeSampleTo(QString::fromUtf8(device()), sampleOptions(assets, hasPictures));
    }

    ProgramResult draw(const QList<QByteArray> &further = {})
    {
        return run(QList<QByteArray>{"sheet", "-d", device(), "-o", m_scratch.path("sheet.png")} +
                   further);
    }

    QImage sheet(const QByteArray &name = "sheet.png") const
    {
        QImage image;
        EXPECT_TRUE(image.loadFromData(m_scratch.read(name), "PNG")) << name.constData();
        return image;
    }

    /// The part of the one-page sheet of `cells` that shows the picture number `index`,
    /// which has the size `size`.
    QImage shown(int cells, int index, const QSize &size) const
    {
        return shown(sheet(), cells, index, size);
    }

    static QImage shown(const QImage &page, int cells, int index, const QSize &size)
    {
        const QRect box = boxOf(cells, index);
        return page.copy(box.x() + (box.width() - size.width()) / 2,
                         box.bottom() + 1 - size.height(), size.width(), size.height());
    }

    static SheetLayout layoutOf(int cells)
    {
        return SheetLayout(cells, SheetLayout::columnsFor(cells));
    }

    static QRect boxOf(int cells, int index) { return layoutOf(cells).pictureBox(index); }

    /// The thumbnail of the photo `id` in the folder that the command thumb wrote.
    QImage thumbnail(quint64 id) const
    {
        const QByteArray prefix = m_scratch.path("thumbs/" + QByteArray::number(id) + '-');
        for (const QByteArray &path : m_scratch.everythingIn("thumbs")) {
            if (path.startsWith(prefix))
                return QImage::fromData(m_scratch.read(path.mid(m_scratch.root().size() + 1)));
        }
        ADD_FAILURE() << "there is no thumbnail of " << id;
        return QImage();
    }

    /// What a sheet with --all shows of the library in `folder`, in its order.
    std::vector<Asset> allPhotos(const QByteArray &folder) const
    {
        const OpenedLibrary library(folder, m_scratch.path("work"));
        std::vector<Asset> photos;
        for (const Asset &asset : library.session.catalog().assets) {
            if (!asset.isShared())
                photos.push_back(asset);
        }
        return photos;
    }

    /// Expects the thumbnails that the command thumb wrote on the sheet of `photos`, each in its
    /// place. The plug-in does not list all photos, and has no thumbnail of the others.
    void expectThumbnails(const std::vector<Asset> &photos) const
    {
        const auto count = int(photos.size());
        const QImage page = sheet();
        int compared = 0;
        for (int i = 0; i < count; ++i) {
            const Asset &photo = photos[size_t(i)];
            if (!hasThumbnail(photo.id))
                continue;
            const QImage source = fitted(thumbnail(quint64(photo.id)), boxOf(count, i));
            const QImage picture = shown(page, count, i, source.size());
            EXPECT_FALSE(isBlank(picture)) << photo.id;
            if (!photo.isTrashed()) {
                EXPECT_LT(difference(inner(picture), inner(source)), 3) << photo.id;
                ++compared;
            }
        }
        EXPECT_GT(compared, count / 2);
    }

    bool hasThumbnail(qint64 id) const
    {
        const QByteArray prefix = m_scratch.path("thumbs/" + QByteArray::number(id) + '-');
        const QList<QByteArray> all = m_scratch.everythingIn("thumbs");
        return std::any_of(all.begin(), all.end(),
                           [&](const QByteArray &path) { return path.startsWith(prefix); });
    }

    /// A device with one photo, of which `row` tells, and `thumbnail` for it.
    void writeOnePhoto(const AssetRow &row, const QByteArray &thumbnail)
    {
        PhotosDatabase database;
        database.rows.assets = {row};
        writeDatabase(m_scratch, "device", database);
        m_scratch.write(twoPhotosPath, "picture");
        m_scratch.write("device/PhotoData/Thumbnails/V2/DCIM/100APPLE/IMG_0001.JPG/5005.JPG",
                        thumbnail);
    }
};

using SheetProgramOnBadInput = SheetProgram;

TEST_F(SheetProgram, ShowsTheThumbnailOfEachPhotoInItsPlace)
{
    writeSampleDevice(40);
    const QByteArray thumbs = m_scratch.path("thumbs");
    ASSERT_EQ(0, run({"thumb", "-d", device(), "--all", thumbs, "--format", "png"}).exitCode);
    const std::vector<Asset> photos = allPhotos(device());
    const ProgramResult result = draw({"--all"});
    ASSERT_EQ(0, result.exitCode) << result.errors.constData();
    const auto count = int(photos.size());
    EXPECT_EQ(m_scratch.path("sheet.png: ") + QByteArray::number(count) + " pictures\n",
              result.output);
    EXPECT_EQ(QByteArray(), result.errors);
    EXPECT_EQ(layoutOf(count).size(), sheet().size());
    expectThumbnails(photos);
}

TEST_F(SheetProgram, HasNoThumbnailsOfALibraryThatThePluginCannotRead)
{
    PhotosDatabase database = twoPhotos();
    database.schema.attributes = false;
    writeDatabase(m_scratch, "device", database);
    const ProgramResult result = draw();
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ(m_scratch.path("sheet.png: 2 pictures\n"), result.output);
    EXPECT_EQ("photolib: " + device() +
                  "/PhotoData/Photos.sqlite: not readable as a photo library: its tables cannot be "
                  "read; the sheet has no thumbnails\n",
              result.errors);
    EXPECT_EQ(layoutOf(2).size(), sheet().size());
}

TEST_F(SheetProgram, PutsALowPictureNextToItsName)
{
    const QByteArray jpeg = jpegOf(fourFields({160, 40}));
    AssetRow row = photoRow(1);
    row.width = 6400;
    row.height = 1600;
    writeOnePhoto(row, jpeg);
    ASSERT_EQ(0, draw().exitCode);
    const QRect box = boxOf(1, 0);
    const QImage source = fitted(QImage::fromData(jpeg), box);
    EXPECT_LT(difference(inner(shown(1, 0, source.size())), inner(source)), 3);
    EXPECT_TRUE(isBlank(sheet().copy(box.adjusted(0, 0, 0, -source.height()))));
}

TEST_F(SheetProgram, WritesTheNameUnderEachPicture)
{
    // Two of three photos share a name.
    PhotosDatabase database;
    for (int i = 1; i <= 3; ++i) {
        database.rows.assets.push_back(photoRow(i, i));
        database.rows.assets.back().directory = "DCIM/10" + std::to_string(i) + "APPLE";
        database.rows.assets.back().fileName = i == 3 ? "other.jpg" : "IMG_0001.JPG";
    }
    writeDatabase(m_scratch, "device", database);
    ASSERT_EQ(0, draw().exitCode);
    const Json ids = Json::parse(run({"dump", "-d", device()}).output)["photoIds"];
    std::map<int, QImage> names;
    for (int i = 0; i < 3; ++i)
        names[ids[size_t(i)].get<int>()] = sheet().copy(layoutOf(3).labelLine(i));
    for (const auto &name : names)
        EXPECT_FALSE(isBlank(name.second)) << name.first;
    EXPECT_EQ(names[1], names[2]);
    EXPECT_NE(names[1], names[3]);
}

TEST_F(SheetProgram, IsHeadedByTheDeviceAndTheAlbum)
{
    PhotosDatabase database = twoPhotos();
    database.rows.albums = {albumRow(7)};
    database.join().add(7, 2);
    writeDatabase(m_scratch, "device", database);
    writeDatabase(m_scratch, "other", database);
    ASSERT_EQ(0, draw().exitCode);
    const QImage all = sheet();
    const QRect title = layoutOf(2).title();
    const QRect subtitle = layoutOf(2).subtitle();
    EXPECT_FALSE(isBlank(all.copy(title)));
    EXPECT_FALSE(isBlank(all.copy(subtitle)));
    ASSERT_EQ(0, draw({"--album", "7"}).exitCode);
    EXPECT_EQ(all.copy(title), sheet().copy(title));
    EXPECT_NE(all.copy(subtitle), sheet().copy(subtitle));
    ASSERT_EQ(
        0,
        run({"sheet", "-d", m_scratch.path("other"), "-o", m_scratch.path("sheet.png")}).exitCode);
    EXPECT_NE(all.copy(title), sheet().copy(title));
    EXPECT_EQ(all.copy(subtitle), sheet().copy(subtitle));
}

TEST_F(SheetProgram, DimsWhatIsInTheTrash)
{
    const QImage picture = fourFields({160, 120});
    AssetRow row = photoRow(1);
    row.width = 1600;
    row.height = 1200;
    row.trashedState = 1;
    writeOnePhoto(row, jpegOf(picture));
    ASSERT_EQ(0, draw({"--all"}).exitCode);
    const QImage source = fitted(picture, boxOf(1, 0));
    const QImage dimmed = shown(1, 0, source.size());
    EXPECT_GT(difference(inner(dimmed), inner(source)), 40);
    // It is still to be made out.
    const QColor red = dimmed.pixelColor(dimmed.width() / 3, dimmed.height() / 3);
    EXPECT_GT(red.red(), red.green() + 40);
}

TEST_F(SheetProgram, TurnsAPictureThatLiesOnItsSide)
{
    AssetRow row = photoRow(1);
    row.width = 1200;
    row.height = 1600;
    row.orientation = 6;
    // Stored lying: its upper left field is the upper right one of the upright picture.
    writeOnePhoto(row, jpegOf(fourFields({160, 120})));
    ASSERT_EQ(0, draw().exitCode);
    const QImage upright = fitted(fourFields({120, 160}), boxOf(1, 0));
    const QImage picture = shown(1, 0, upright.size());
    const QColor upperLeft = picture.pixelColor(picture.width() / 3, picture.height() / 3);
    const QColor upperRight = picture.pixelColor(2 * picture.width() / 3, picture.height() / 3);
    EXPECT_GT(upperLeft.blue(), upperLeft.red() + 100);
    EXPECT_GT(upperRight.red(), upperRight.blue() + 100);
}

TEST_F(SheetProgram, ShowsAPlaceholderWhereThereIsNoThumbnail)
{
    writeTwoPhotos();
    const ProgramResult result = draw();
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ(QByteArray(), result.errors);
    // The box has a frame, and words in its middle line.
    const QImage box = sheet().copy(boxOf(2, 0));
    const int middle = box.height() / 2;
    EXPECT_FALSE(isBlank(box.copy(40, middle - 8, box.width() - 80, 16)));
    EXPECT_TRUE(isBlank(box.copy(20, middle + 30, box.width() - 40, 16)));
}

TEST_F(SheetProgram, ReportsADamagedThumbnailAndGoesOn)
{
    const QByteArray jpeg = jpegOf(fourFields({160, 120}));
    writeOnePhoto(photoRow(1), jpeg.left(jpeg.size() / 2));
    const ProgramResult result = draw();
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ("photolib: DCIM/100APPLE/IMG_0001.JPG: a damaged thumbnail\n", result.errors);
    EXPECT_FALSE(sheet().isNull());
}

TEST_F(SheetProgram, MarksVideosAndMissingFiles)
{
    // The same thumbnail four times: plain, as a video with and without a length, and without
    // its file.
    const QByteArray jpeg = jpegOf(fourFields({160, 120}));
    PhotosDatabase database;
    database.rows.assets = {photoRow(1, 1), videoRow(2, 2), videoRow(3, 3), photoRow(4, 4)};
    database.schema.furtherAssetColumns = {"ZDURATION FLOAT"};
    database.rows.sql = {"UPDATE ZGENERICASSET SET ZDURATION = 65 WHERE Z_PK = 2"};
    for (int i = 0; i < 4; ++i) {
        const QByteArray name = "IMG_" + QByteArray::number(i) + ".JPG";
        database.rows.assets[size_t(i)].fileName = name.toStdString();
        m_scratch.write("device/PhotoData/Thumbnails/V2/DCIM/100APPLE/" + name + "/5005.JPG", jpeg);
        if (i < 3)
            m_scratch.write("device/DCIM/100APPLE/" + name, i == 2 ? "" : "content");
    }
    writeDatabase(m_scratch, "device", database);
    ASSERT_EQ(0, draw().exitCode);
    const Json ids = Json::parse(run({"dump", "-d", device()}).output)["photoIds"];
    std::map<int, QImage> pictures;
    const QSize size = fitted(fourFields({160, 120}), boxOf(4, 0)).size();
    for (int i = 0; i < 4; ++i)
        pictures[ids[size_t(i)].get<int>()] = shown(4, i, size);
    const auto differs = [&](int id, const QRect &part) {
        return difference(pictures[id].copy(part), pictures[1].copy(part)) > 5;
    };
    const QRect upperLeft(5, 5, 60, 17);
    const QRect lowerRight(size.width() - 21, size.height() - 23, 16, 18);
    const QRect leftOfIt = lowerRight.translated(-22, 0);
    EXPECT_TRUE(differs(4, upperLeft));
    EXPECT_FALSE(differs(4, lowerRight));
    EXPECT_FALSE(differs(2, upperLeft));
    EXPECT_TRUE(differs(2, lowerRight));
    EXPECT_TRUE(differs(2, leftOfIt)); // the length takes more room than the mark
    EXPECT_TRUE(differs(3, lowerRight));
    EXPECT_FALSE(differs(3, leftOfIt));
    EXPECT_FALSE(differs(3, upperLeft)); // its file is there, though empty
}

TEST_F(SheetProgram, ShowsOneAlbum)
{
    PhotosDatabase database = twoPhotos();
    database.rows.albums = {albumRow(7)};
    database.join().add(7, 2);
    writeDatabase(m_scratch, "device", database);
    EXPECT_EQ(m_scratch.path("sheet.png: 1 picture\n"), draw({"--album", "7"}).output);
    EXPECT_EQ(SheetLayout(1, SheetLayout::columnsFor(1)).size(), sheet().size());
}

TEST_F(SheetProgram, ContinuesALargeLibraryOnFurtherPages)
{
    writeSampleDevice(500, false);
    const ProgramResult result = draw();
    ASSERT_EQ(0, result.exitCode) << result.errors.constData();
    const Json json = Json::parse(run({"photos", "-d", device(), "--json"}).output);
    const auto count = int(json["photos"].size());
    ASSERT_GT(count, 400);
    EXPECT_EQ(m_scratch.path("sheet.png: 400 pictures\n") + m_scratch.path("sheet-2.png: ") +
                  QByteArray::number(count - 400) + " pictures\n",
              result.output);
    const int columns = SheetLayout::columnsFor(400);
    EXPECT_EQ(SheetLayout(400, columns).size(), sheet().size());
    EXPECT_EQ(SheetLayout(count - 400, columns).size(), sheet("sheet-2.png").size());
    EXPECT_FALSE(m_scratch.exists("sheet-3.png"));
}

TEST_F(SheetProgram, IsAJpegPictureInAFileThatIsNamedSo)
{
    writeSampleDevice(12);
    ASSERT_EQ(0, draw().exitCode);
    for (const char *name : {"sheet.jpg", "sheet.JPEG"}) {
        const ProgramResult result = run({"sheet", "-d", device(), "-o", m_scratch.path(name)});
        ASSERT_EQ(0, result.exitCode) << result.errors.constData();
        QImage page;
        ASSERT_TRUE(page.loadFromData(m_scratch.read(name), "JPEG")) << name;
        ASSERT_EQ(sheet().size(), page.size()) << name;
        EXPECT_LT(difference(page, sheet()), 3) << name;
    }
}

TEST_F(SheetProgram, HasFurtherPagesOfTheSameFormat)
{
    writeSampleDevice(12, false);
    const ProgramResult result =
        run({"sheet", "-d", device(), "--per-page", "8", "-o", m_scratch.path("sheet.jpg")});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ(m_scratch.path("sheet.jpg: 8 pictures\n") +
                  m_scratch.path("sheet-2.jpg: 4 pictures\n"),
              result.output);
    EXPECT_TRUE(QImage().loadFromData(m_scratch.read("sheet-2.jpg"), "JPEG"));
}

TEST_F(SheetProgram, HasTheFormatThatIsAskedFor)
{
    writeTwoPhotos();
    const ProgramResult result = run({"sheet", "-d", device(), "-o", "-", "--format", "jpeg"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_TRUE(QImage().loadFromData(result.output, "JPEG"));
    ASSERT_EQ(
        0, run({"sheet", "-d", device(), "-o", m_scratch.path("s"), "--format", "jpeg"}).exitCode);
    EXPECT_EQ(result.output, m_scratch.read("s"));
    ASSERT_EQ(
        0, run({"sheet", "-d", device(), "-o", m_scratch.path("s"), "--format", "png"}).exitCode);
    EXPECT_FALSE(sheet("s").isNull());
}

TEST_F(SheetProgram, HasPagesAsTheyAreWanted)
{
    writeSampleDevice(12);
    const ProgramResult result =
        draw({"--columns", "3", "--size", "96", "--per-page", "5", "--label", "name,date,id"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ(QByteArray(), result.errors);
    EXPECT_EQ(m_scratch.path("sheet.png: 5 pictures\n") +
                  m_scratch.path("sheet-2.png: 5 pictures\n") +
                  m_scratch.path("sheet-3.png: 2 pictures\n"),
              result.output);
    const SheetStyle style = {96, 3};
    EXPECT_EQ(SheetLayout(5, 3, style).size(), sheet().size());
    EXPECT_EQ(SheetLayout(2, 3, style).size(), sheet("sheet-3.png").size());
}

TEST_F(SheetProgram, HasTheLabelsThatAreWantedInTheirOrder)
{
    writeTwoPhotos();
    const SheetLayout layout(2, SheetLayout::columnsFor(2, {184, 2}), {184, 2});
    ASSERT_EQ(0, draw({"--label", "name,id"}).exitCode);
    const QImage nameAndId = sheet();
    ASSERT_EQ(0, draw({"--label", "id,name"}).exitCode);
    const QImage idAndName = sheet();
    ASSERT_EQ(layout.size(), nameAndId.size());
    EXPECT_FALSE(isOfOneColor(nameAndId.copy(layout.labelLine(0, 1))));
    EXPECT_NE(nameAndId.copy(layout.labelLine(0, 0)), idAndName.copy(layout.labelLine(0, 0)));
    ASSERT_EQ(0, draw({"--label", "id"}).exitCode);
    EXPECT_EQ(sheet().copy(layoutOf(2).labelLine(0)), idAndName.copy(layout.labelLine(0, 0)));
    ASSERT_EQ(0, draw({"--label", "none"}).exitCode);
    EXPECT_EQ(SheetLayout(2, SheetLayout::columnsFor(2, {184, 0}), {184, 0}).size(),
              sheet().size());
}

// The parts of a page that are between pictures, marks and labels.
bool areGapsBlank(const QImage &page, const SheetLayout &layout, int cells)
{
    for (int i = 0; i + 1 < cells; ++i) {
        const QRect left = layout.pictureBox(i);
        const QRect right = layout.pictureBox(i + 1);
        const QRect gap(left.right() + 1, left.y(), right.x() - left.right() - 1,
                        layout.labelLine(i, 2).bottom() - left.y());
        if (!isOfOneColor(page.copy(gap)))
            return false;
    }
    return true;
}

TEST_F(SheetProgram, KeepsLongLabelsAndMarksWithinTheirColumn)
{
    PhotosDatabase database;
    for (int i = 1; i <= 3; ++i) {
        database.rows.assets.push_back(i == 2 ? videoRow(i, i) : photoRow(i, i));
        database.rows.assets.back().fileName = std::string(200, 'W') + std::to_string(i);
        database.rows.assets.back().trashedState = 1;
    }
    database.schema.furtherAssetColumns = {"ZDURATION FLOAT", "ZDATECREATED TIMESTAMP"};
    database.rows.sql = {"UPDATE ZGENERICASSET SET ZDURATION = 999999, ZDATECREATED = 585926209"};
    writeDatabase(m_scratch, "device", database);
    for (const int size : {32, 96, 184}) {
        const SheetLayout layout(3, 3, {size, 3});
        ASSERT_EQ(0, draw({"--all", "--size", QByteArray::number(size), "--columns", "3", "--label",
                           "name,date,id"})
                         .exitCode);
        for (int line = 0; line < 3; ++line)
            EXPECT_FALSE(isOfOneColor(sheet().copy(layout.labelLine(0, line))))
                << size << ' ' << line;
        EXPECT_TRUE(areGapsBlank(sheet(), layout, 3)) << size;
    }
}

TEST_F(SheetProgram, DrawsAnEmptyPageForAnEmptyLibrary)
{
    PhotosDatabase database;
    writeDatabase(m_scratch, "device", database);
    const ProgramResult result = draw();
    EXPECT_EQ(0, result.exitCode) << result.errors.constData();
    EXPECT_EQ(m_scratch.path("sheet.png: 0 pictures\n"), result.output);
    EXPECT_FALSE(sheet().isNull());
}

TEST_F(SheetProgram, DrawsThePicturesWhereNoFontIsInstalled)
{
    m_scratch.write("fonts.conf", "<?xml version=\"1.0\"?><fontconfig></fontconfig>");
    m_setup.environment = {{"FONTCONFIG_FILE", QString::fromUtf8(m_scratch.path("fonts.conf"))}};
    writeOnePhoto(photoRow(1), jpegOf(fourFields({160, 120})));
    const ProgramResult result = draw();
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ("photolib: no font is installed: the sheet has no text\n", result.errors);
    EXPECT_FALSE(isBlank(shown(1, 0, {100, 80})));
}

TEST_F(SheetProgram, LeavesNothingWhereFilesAreTemporary)
{
    writeTwoPhotos();
    m_scratch.makeFolder("tmp");
    m_setup.environment = {{"TMPDIR", QString::fromUtf8(m_scratch.path("tmp"))}};
    m_setup.unset.append("XDG_RUNTIME_DIR");
    EXPECT_EQ(0, draw().exitCode);
    EXPECT_EQ(QList<QByteArray>(), m_scratch.everythingIn("tmp"));
}

TEST_F(SheetProgram, KeepsThePermissionsOfTheFileThatItReplaces)
{
    writeTwoPhotos();
    m_scratch.write("sheet.png", "old");
    ASSERT_EQ(0, ::chmod(m_scratch.path("sheet.png").constData(), 0640));
    EXPECT_EQ(0, draw().exitCode);
    struct stat status = {};
    ASSERT_EQ(0, ::stat(m_scratch.path("sheet.png").constData(), &status));
    EXPECT_EQ(0640u, status.st_mode & 07777);
    EXPECT_FALSE(sheet().isNull());
}

TEST_F(SheetProgram, SaysThatTextCanNotBeDrawn)
{
    writeTwoPhotos();
    m_setup.environment = {{"QT_QPA_PLATFORM", "nonsense"}};
    const ProgramResult result = draw();
    EXPECT_EQ(1, result.exitCode);
    EXPECT_TRUE(result.errors.startsWith("photolib: text: cannot be drawn (Aborted): "))
        << result.errors.constData();
    EXPECT_EQ(1, result.errors.count('\n'));
    EXPECT_FALSE(m_scratch.exists("sheet.png"));
}

TEST_F(SheetProgram, CreatesTheFolderOfTheFile)
{
    writeTwoPhotos();
    const QByteArray path = m_scratch.path("new/folder/sheet.png");
    EXPECT_EQ(0, run({"sheet", "-d", device(), "-o", path}).exitCode);
    EXPECT_FALSE(sheet("new/folder/sheet.png").isNull());
}

TEST_F(SheetProgram, HasHelpThatFillsTheTerminal)
{
    Terminal terminal;
    if (!terminal.isOpen())
        GTEST_SKIP() << "there are no pseudo-terminals here";
    terminal.setColumns(400);
    m_setup.outputFd = terminal.slave();
    Program program(m_setup, {"sheet", "--help"});
    const QByteArray text(
        "What is in the trash is dimmed where it is shown. A picture is never shown larger than "
        "twice its size: the device's thumbnails have no more details.\r\n");
    EXPECT_TRUE(terminal.shownUntil("Examples:").contains(text));
    EXPECT_EQ(0, program.waitForExitCode());
}

TEST_F(SheetProgram, WritesOnePageToStandardOutput)
{
    writeTwoPhotos();
    ASSERT_EQ(0, draw().exitCode);
    const ProgramResult result = run({"sheet", "-d", device(), "-o", "-"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ(QByteArray(), result.errors);
    EXPECT_EQ(m_scratch.read("sheet.png"), result.output) << "nothing else is among it";
    EXPECT_FALSE(m_scratch.exists("-"));
}

TEST_F(SheetProgramOnBadInput, WritesNoPictureToATerminal)
{
    writeTwoPhotos();
    Terminal terminal;
    if (!terminal.isOpen())
        GTEST_SKIP() << "there are no pseudo-terminals here";
    m_setup.outputFd = terminal.slave();
    expectFailure({"sheet", "-d", device(), "-o", "-"},
                  "--output: a terminal cannot show pictures; redirect standard output, or name a "
                  "file (photolib sheet --help shows the usage)",
                  2);
}

TEST_F(SheetProgramOnBadInput, WritesOnePageOnlyToStandardOutput)
{
    writeSampleDevice(500, false);
    expectFailure({"sheet", "-d", device(), "-o", "-"},
                  "standard output: takes one page, and the sheet has 2; name a file, or an album");
}

TEST_F(SheetProgramOnBadInput, NamesWhereItCanNotWrite)
{
    writeTwoPhotos();
    m_scratch.write("file", "text");
    expectFailure({"sheet", "-d", device(), "-o", m_scratch.path("file/sheet.png")},
                  m_scratch.path("file") + ": not a folder");
    for (const QByteArray &folder : {m_scratch.root(), m_scratch.path("new/")})
        expectFailure({"sheet", "-d", device(), "-o", folder},
                      folder + ": a folder, not a file to write");
    expectRefusalOfDevice({"sheet", "-d", device(), "-o", device() + "/new/sheet.png"},
                          device() + "/new");
    expectFailure({"sheet", "-d", device(), "-o", device() + "/sheet.png"},
                  device() + ": photolib never writes to the device; choose a folder outside it");
    expectFailure({"sheet", "-d", device(), "--album", "9", "-o", m_scratch.path("sheet.png")},
                  "9: no album with this id in " + device());
}

TEST_F(SheetProgramOnBadInput, ReplacesNoDeviceOrPipe)
{
    writeTwoPhotos();
    m_scratch.makePipe("pipe.png");
    m_scratch.makeLink("link.png", "/dev/null");
    m_scratch.makeLink("stdout", "/proc/self/fd/1");
    for (const char *name : {"pipe.png", "link.png", "stdout"}) {
        expectFailure({"sheet", "-d", device(), "-o", m_scratch.path(name)},
                      m_scratch.path(name) + ": not a regular file");
    }
    EXPECT_EQ(0, m_scratch.size("pipe.png"));
}

TEST_F(SheetProgramOnBadInput, DrawsNoPageWhenOneCanNotBeWritten)
{
    writeSampleDevice(500, false);
    m_scratch.makePipe("sheet-2.png");
    expectFailure({"sheet", "-d", device(), "-o", m_scratch.path("sheet.png")},
                  m_scratch.path("sheet-2.png: not a regular file"));
}

TEST_F(SheetProgram, SaysNothingWhenQuiet)
{
    writeTwoPhotos();
    const ProgramResult result = draw({"--quiet"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ(QByteArray(), result.output + result.errors);
    EXPECT_FALSE(sheet().isNull());
}

TEST_F(SheetProgramOnBadInput, ExitsWithTwoForANameOfAnotherFormat)
{
    const QByteArray hint = " (photolib sheet --help shows the usage)";
    expectFailure({"sheet", "-o", ""}, "--output: the name is empty" + hint, 2);
    for (const char *name : {"s.gif", "folder.png/s.tif", "s.pngx"}) {
        expectFailure(
            {"sheet", "-o", name},
            name + (": a sheet is a JPEG or PNG picture; let the name end in .jpg or .png" + hint),
            2);
    }
    expectFailure({"sheet", "-o", "s.png", "--format", "jpeg"},
                  "s.png: with --format jpeg, let the name end in .jpg" + hint, 2);
    expectFailure({"sheet", "-o", "s.jpeg", "--format", "png"},
                  "s.jpeg: with --format png, let the name end in .png" + hint, 2);
    writeTwoPhotos();
    for (const char *name : {"s.PNG", "s"}) {
        EXPECT_EQ(0, run({"sheet", "-d", device(), "-o", m_scratch.path(name)}).exitCode);
        EXPECT_FALSE(sheet(name).isNull());
    }
}

TEST_F(SheetProgramOnBadInput, ExitsWithTwoForALookThatIsNone)
{
    const QByteArray hint = " (photolib sheet --help shows the usage)";
    const auto expectRefusal = [&](const char *option, const char *value, const QByteArray &line) {
        expectFailure({"sheet", "-o", "s.png", option, value}, line + hint, 2);
    };
    expectRefusal("--columns", "0", "--columns: Value 0 not in range 1 to 1000000");
    expectRefusal("--size", "31", "--size: Value 31 not in range 32 to 2048");
    expectRefusal("--size", "2049", "--size: Value 2049 not in range 32 to 2048");
    expectRefusal("--per-page", "0", "--per-page: Value 0 not in range 1 to 1000000");
    expectRefusal("--label", "name,size", "--label: 'size' is neither name, date nor id");
    expectRefusal("--label", "", "--label: '' is neither name, date nor id");
    expectRefusal("--label", "id,name,id", "--label: 'id' is named twice");
}

TEST_F(SheetProgramOnBadInput, ExitsWithTwoForAPageThatIsTooLarge)
{
    writeTwoPhotos();
    for (const char *name : {"new/s.png", "new/s.jpg"}) {
        expectFailure(
            {"sheet", "-d", device(), "-o", m_scratch.path(name), "--columns", "1000"},
            "a page of 204052 x 354 pixels is too large; choose a smaller --size, --columns "
            "or --per-page",
            2);
    }
    EXPECT_FALSE(m_scratch.exists("new"));
}

TEST_F(SheetProgramOnBadInput, ExitsWithTwoWithoutAFile)
{
    expectFailure({"sheet"}, "--output is required (photolib sheet --help shows the usage)", 2);
}

TEST_F(SheetProgram, ShowsARealLibrary)
{
    const QByteArray device = PHOTOLIB_DEVICES_DIR "/library-a";
    if (::access(device.constData(), R_OK) != 0)
        GTEST_SKIP() << "there is no " << device.constData();
    const QByteArray thumbs = m_scratch.path("thumbs");
    ASSERT_EQ(0, run({"thumb", "-d", device, "--all", thumbs, "--format", "png"}).exitCode);
    const std::vector<Asset> photos = allPhotos(device);
    const ProgramResult result =
        run({"sheet", "-d", device, "--all", "-o", m_scratch.path("sheet.png")});
    ASSERT_EQ(0, result.exitCode) << result.errors.constData();
    EXPECT_EQ(m_scratch.path("sheet.png: 29 pictures\n"), result.output);
    ASSERT_EQ(29U, photos.size());
    expectThumbnails(photos);
}

// A library of some pages; a page alone takes its time.
class InterruptedSheet : public SheetProgram
{
};

TEST_F(InterruptedSheet, LeavesWholePagesOnly)
{
    writeSampleDevice(3000, false);
    for (const int signal : {SIGINT, SIGTERM}) {
        Terminal terminal;
        if (!terminal.isOpen())
            GTEST_SKIP() << "there are no pseudo-terminals here";
        m_setup.errorFd = terminal.slave();
        m_scratch.makeFolder("out");
        Program program(m_setup, {"sheet", "-d", device(), "-o", m_scratch.path("out/sheet.png")});
        terminal.shownUntil("Drawing the sheet [");
        ASSERT_EQ(0, ::kill(static_cast<pid_t>(program.processId()), signal));
        EXPECT_EQ(130, program.waitForExitCode());
        EXPECT_EQ(QByteArray(), program.readAllStandardOutput());
        const QList<QByteArray> pages = m_scratch.everythingIn("out");
        const QByteArray line =
            "photolib: interrupted: wrote " + QByteArray::number(pages.size()) + " of 8 pages\r\n";
        EXPECT_TRUE(terminal.shownUntil("pages\r\n").endsWith("\r\x1b[K" + line));
        EXPECT_LT(pages.size(), 8);
        for (const QByteArray &path : pages)
            EXPECT_FALSE(sheet(path.mid(m_scratch.root().size() + 1)).isNull());
    }
}

TEST_F(InterruptedSheet, LeavesWholePagesOnlyAlsoOfJpegFormat)
{
    writeSampleDevice(3000, false);
    Terminal terminal;
    if (!terminal.isOpen())
        GTEST_SKIP() << "there are no pseudo-terminals here";
    m_setup.errorFd = terminal.slave();
    m_scratch.makeFolder("out");
    Program program(m_setup, {"sheet", "-d", device(), "-o", m_scratch.path("out/sheet.jpg")});
    terminal.shownUntil("Drawing the sheet [");
    ASSERT_EQ(0, ::kill(static_cast<pid_t>(program.processId()), SIGINT));
    EXPECT_EQ(130, program.waitForExitCode());
    const QList<QByteArray> pages = m_scratch.everythingIn("out");
    EXPECT_LT(pages.size(), 8);
    for (const QByteArray &path : pages)
        EXPECT_TRUE(m_scratch.read(path.mid(m_scratch.root().size() + 1)).endsWith("\xff\xd9"));
}

} // namespace
