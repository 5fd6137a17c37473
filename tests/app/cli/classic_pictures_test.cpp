#include "engine/contact_sheet.h"
#include "support/classic_fixture.h"
#include "support/export_fixture.h"
#include "support/terminal.h"

#include <QBuffer>
#include <QImage>

#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace {

constexpr char iconFile[] = "device/Photos/Thumbs/F1036_1.ithmb";
constexpr char screenFile[] = "device/Photos/Thumbs/F1024_1.ithmb";

QByteArray jpegOf(const QSize &size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::red);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, "JPEG"));
    return buffer.data();
}

class ClassicPictures : public ClassicProgramTest
{
protected:
    QByteArray out() const { return m_scratch.path("out"); }

    /// The names in the folder that is written to, in byte order.
    QList<QByteArray> names() const { return exportedFiles(m_scratch, "out"); }

    /// Exports to files that are all in one folder, with a picture that the iPod stores of each
    /// photo.
    ProgramResult runExport(const QList<QByteArray> &further = {})
    {
        return run(exportArguments(further));
    }

    QList<QByteArray> exportArguments(const QList<QByteArray> &further = {}) const
    {
        return QList<QByteArray>{"export", "-d",       device(), "--name",
                                 "{name}", "--stored", "largest"} +
               further + QList<QByteArray>{out()};
    }

    /// Expects that `name` is a picture of one colour in a file of the format `format`.
    void expectPicture(const QByteArray &name, const QSize &size, const QColor &color,
                       const char *format = "BMP") const
    {
        QImage image;
        ASSERT_TRUE(image.loadFromData(m_scratch.read(name), format)) << name.constData();
        EXPECT_EQ(size, image.size()) << name.constData();
        QImage expected(size, image.format());
        expected.fill(color);
        EXPECT_TRUE(expected == image) << name.constData();
    }

    /// Expects a run that fails in part, and tells how in `errors`.
    void expectFailures(const ProgramResult &result, const QByteArray &errors)
    {
        EXPECT_EQ(1, result.exitCode);
        EXPECT_EQ(errors, result.errors) << result.errors.constData();
    }
};

// --- thumb

TEST_F(ClassicPictures, AreWrittenAsThumbnailsThatAreNamedAfterIdAndOriginal)
{
    writeThreePhotos();
    const ProgramResult result = run({"thumb", "-d", device(), "--all", out()});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ(QByteArray(), result.errors);
    EXPECT_EQ("wrote 3 thumbnails to " + out() + '\n', result.output);
    EXPECT_EQ((QList<QByteArray>{"100-IMG_0041.bmp", "101.bmp", "104-IMG_0042.bmp"}), names());
    expectPicture("out/100-IMG_0041.bmp", {50, 41}, Qt::red);
    expectPicture("out/101.bmp", {50, 41}, Qt::green);
    expectPicture("out/104-IMG_0042.bmp", {320, 240}, Qt::blue);
}

TEST_F(ClassicPictures, AreWrittenAsTheThumbnailFileThatIsNamed)
{
    writeThreePhotos();
    const QByteArray png = m_scratch.path("thumb.png");
    EXPECT_EQ(0, run({"thumb", "-d", device(), "101", "-o", png}).exitCode);
    expectPicture("thumb.png", {50, 41}, Qt::green, "PNG");
    const QByteArray bmp = m_scratch.path("thumb.bmp");
    EXPECT_EQ(0, run({"thumb", "-d", device(), "101", "-o", bmp}).exitCode);
    expectPicture("thumb.bmp", {50, 41}, Qt::green);
    expectFailure({"thumb", "-d", device(), "101", "-o", m_scratch.path("thumb.tiff")},
                  m_scratch.path("thumb.tiff") + ": the thumbnail is a BMP picture");
}

TEST_F(ClassicPictures, AreConvertedToTheJpegFileThatIsNamed)
{
    writeThreePhotos();
    for (const char *name : {"thumb.jpg", "thumb.JPEG"}) {
        const ProgramResult result =
            run({"thumb", "-d", device(), "101", "-o", m_scratch.path(name)});
        EXPECT_EQ(0, result.exitCode) << result.errors.constData();
        QImage image;
        ASSERT_TRUE(image.loadFromData(m_scratch.read(name), "JPEG")) << name;
        EXPECT_EQ(QSize(50, 41), image.size());
        const QColor middle = image.pixelColor(25, 20);
        EXPECT_LT(middle.red(), 10);
        EXPECT_GT(middle.green(), 245);
        EXPECT_LT(middle.blue(), 10);
    }
}

TEST_F(ClassicPictures, AreWrittenAsTheyAreWhenTheyAreJpeg)
{
    const QByteArray jpeg = jpegOf({64, 48});
    storeBytes(addPhoto(100), 1081, {64, 48}, jpeg);
    writeDevice();
    EXPECT_EQ(0, run({"thumb", "-d", device(), "--all", out()}).exitCode);
    EXPECT_EQ(QList<QByteArray>{"100.jpg"}, names());
    EXPECT_EQ(jpeg, m_scratch.read("out/100.jpg"));
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ("Copied 0 files (0 bytes), 1 unchanged\n", runExport().output);
}

TEST_F(ClassicPictures, AreToldThatGiveNoThumbnail)
{
    writeThreePhotos();
    addPhoto(110);
    storeBytes(addPhoto(111), 4711, {9, 9}, "xyz");
    ClassicPhoto &elsewhere = addPhoto(112);
    storeBytes(elsewhere, screenFormat, {320, 240}, QByteArray(153600, 'x'));
    elsewhere.variants[0].fileName = ":Thumbs:..:..:..:F1024_1.ithmb";
    ClassicPhoto &beyond = addPhoto(113);
    store(beyond, screenFormat, Qt::red);
    beyond.variants[0].offset += 1;
    writeDevice();
    ASSERT_EQ(0, ::unlink(m_scratch.path(iconFile).constData()));
    const ProgramResult result = run({"thumb", "-d", device(), "--all", out()});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ(QList<QByteArray>{"104-IMG_0042.bmp"}, names());
    EXPECT_EQ("wrote 1 thumbnail to " + out() + ", 6 failed\n", result.output);
    const QByteArray missing =
        ": no thumbnail (Photos/Thumbs/F1036_1.ithmb: missing on the device)\n";
    for (const QByteArray &line :
         {QByteArray("photolib: 100" + missing), QByteArray("photolib: 101" + missing),
          QByteArray("photolib: 110: no thumbnail\n"),
          QByteArray("photolib: 113: no thumbnail "
                     "(Photos/Thumbs/F1024_1.ithmb: the file is too "
                     "short)\n")})
        EXPECT_TRUE(result.errors.contains(line)) << line.constData() << result.errors.constData();
    EXPECT_TRUE(result.errors.contains("photolib: 111: no thumbnail (")); // names the format
    EXPECT_TRUE(result.errors.contains("photolib: 112: no thumbnail\n"));
}

// --- export

TEST_F(ClassicPictures, AreExportedWithTheOriginals)
{
    writeThreePhotos();
    m_scratch.write("device/Photos/Full Resolution/2005/08/06/IMG_0042.JPG", "other");
    const timespec times[] = {{0, UTIME_NOW}, {1580466030, 123456789}};
    const QByteArray original = m_scratch.path(originalsFolder + QByteArray("IMG_0041.JPG"));
    ASSERT_EQ(0, ::utimensat(AT_FDCWD, original.constData(), times, 0));
    const ProgramResult result = runExport();
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ(QByteArray(), result.errors);
    EXPECT_EQ("Copied 5 files (675.2 KiB), 0 unchanged\n", result.output);
    EXPECT_EQ((QList<QByteArray>{"101.bmp", "IMG_0041.JPG", "IMG_0041_320x240.bmp", "IMG_0042.JPG",
                                 "IMG_0042_320x240.bmp"}),
              names());
    EXPECT_EQ("original", m_scratch.read("out/IMG_0041.JPG"));
    EXPECT_EQ("other", m_scratch.read("out/IMG_0042.JPG"));
    expectPicture("out/IMG_0041_320x240.bmp", {320, 240}, Qt::red);
    expectPicture("out/101.bmp", {320, 240}, Qt::green);
    for (const char *name : {"/IMG_0041.JPG", "/IMG_0041_320x240.bmp"})
        EXPECT_EQ(1123323630000000000, changeOf(out() + name)) << name;
    // The time of the export, where the photo has none.
    EXPECT_GE(changeOf(out() + "/101.bmp"), changeOf(original.left(original.lastIndexOf('/'))));
}

// Who lists the files sees the date and time that the iPod shows.
TEST_F(ClassicPictures, AreExportedWithTheIpodsTimeOnTheComputersClock)
{
    writeThreePhotos();
    m_setup.environment.append(qMakePair(QString("TZ"), QString("America/New_York")));
    runExport();
    constexpr qint64 behindUtc = 4 * 3600; // seconds, in summer
    for (const char *name : {"/IMG_0041.JPG", "/IMG_0041_320x240.bmp"})
        EXPECT_EQ((1123323630 + behindUtc) * 1000000000, changeOf(out() + name)) << name;
}

TEST_F(ClassicPictures, AreExportedOnce)
{
    writeThreePhotos();
    m_scratch.write("device/Photos/Full Resolution/2005/08/06/IMG_0042.JPG", "other");
    EXPECT_EQ(0, runExport().exitCode);
    const QList<QByteArray> all = names();
    EXPECT_EQ("Copied 0 files (0 bytes), 5 unchanged\n", runExport().output);
    ASSERT_EQ(0, ::unlink((out() + "/IMG_0042_320x240.bmp").constData()));
    EXPECT_EQ("Copied 1 file (225.1 KiB), 4 unchanged\n", runExport().output);
    EXPECT_EQ(all, names());
}

// They are large, and each is of a size that the database tells.
TEST_F(ClassicPictures, AreNotReadAgainToFindThatTheyAreThere)
{
    writeThreePhotos();
    m_scratch.write("device/Photos/Full Resolution/2005/08/06/IMG_0042.JPG", "other");
    storeBytes(addPhoto(105, 1123323640), 1081, {64, 48}, jpegOf({64, 48}));
    writeDevice();
    const QList<QByteArray> ids = {"100", "104", "105"};
    EXPECT_EQ(0, runExport(ids).exitCode);
    EXPECT_EQ(5, names().size());
    for (const char *file : {screenFile, "device/Photos/Thumbs/F1081_1.ithmb"}) {
        struct stat status = {};
        ASSERT_EQ(0, ::stat(m_scratch.path(file).constData(), &status));
        m_scratch.write(file, QByteArray(int(m_scratch.size(file)), 'x'));
        const timespec times[] = {status.st_atim, status.st_mtim};
        ASSERT_EQ(0, ::utimensat(AT_FDCWD, m_scratch.path(file).constData(), times, 0));
    }
    const ProgramResult second = runExport(ids);
    EXPECT_EQ(0, second.exitCode) << second.errors.constData();
    EXPECT_EQ("Copied 0 files (0 bytes), 5 unchanged\n", second.output);
}

TEST_F(ClassicPictures, AreExportedUnderNumberedNamesWhenTheirsAreTaken)
{
    // Three photos of one name, of which one is stored as JPEG, like its original.
    for (int i = 0; i < 3; ++i) {
        ClassicPhoto &photo = addPhoto(quint32(100 + i));
        if (i == 2)
            storeBytes(photo, 1081, {64, 48}, jpegOf({64, 48}));
        else
            store(photo, screenFormat, i == 0 ? Qt::red : Qt::blue);
        const QByteArray name = "Full Resolution/200" + QByteArray::number(i) + "/IMG_0041.JPG";
        m_scratch.write("device/Photos/" + name, name);
        photo.originalName = ':' + QString::fromLatin1(name).replace('/', ':');
    }
    writeDevice();
    EXPECT_EQ(0, runExport().exitCode);
    const QList<QByteArray> all = {"IMG_0041 (2).JPG", "IMG_0041 (2)_320x240.bmp",
                                   "IMG_0041 (3).JPG", "IMG_0041 (3)_64x48.jpg",
                                   "IMG_0041.JPG",     "IMG_0041_320x240.bmp"};
    EXPECT_EQ(all, names());
    EXPECT_EQ("Copied 0 files (0 bytes), 6 unchanged\n", runExport().output);
    EXPECT_EQ(all, names());
}

TEST_F(ClassicPictures, AreExportedOfTheIdsAndAlbumsThatAreNamed)
{
    writeThreePhotos();
    EXPECT_EQ(0, runExport({"101", "101"}).exitCode);
    EXPECT_EQ(QList<QByteArray>{"101.bmp"}, names());
    EXPECT_EQ(0, runExport({"--album", "2"}).exitCode);
    EXPECT_EQ((QList<QByteArray>{"101.bmp", "IMG_0041.JPG", "IMG_0041_320x240.bmp",
                                 "IMG_0042_320x240.bmp"}),
              names());
}

TEST_F(ClassicPictures, AreToldThatCanNotBeExported)
{
    writeThreePhotos();
    addPhoto(110);
    storeBytes(addPhoto(111), 4711, {9, 9}, "xyz");
    ClassicPhoto &damaged = addPhoto(112);
    storeBytes(damaged, screenFormat, {320, 240}, QByteArray(1000, 'x'));
    addOriginal(damaged, "IMG_0050.JPG", "whole");
    writeDevice();
    const ProgramResult result = runExport();
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ((QList<QByteArray>{"101.bmp", "IMG_0041.JPG", "IMG_0041_320x240.bmp",
                                 "IMG_0042_320x240.bmp", "IMG_0050.JPG"}),
              names());
    EXPECT_TRUE(result.output.endsWith(
        ", 0 unchanged, 1 not on the device, 3 failed (see the messages above)\n"))
        << result.output.constData();
    const QList<QByteArray> lines = result.errors.split('\n');
    ASSERT_EQ(4, lines.size()) << result.errors.constData();
    EXPECT_EQ("photolib: 110: no picture", lines[0]);
    EXPECT_TRUE(lines[1].startsWith("photolib: 111: no picture (")); // names the format
    EXPECT_TRUE(lines[2].startsWith("photolib: 112: no picture ("));
}

TEST_F(ClassicPictures, AreToldOneByOneWhenTheirFileIsMissing)
{
    writeThreePhotos();
    ASSERT_EQ(0, ::unlink(m_scratch.path(screenFile).constData()));
    const QByteArray cause = ": no picture (Photos/Thumbs/F1024_1.ithmb: missing on the device)\n";
    expectFailures(runExport(),
                   "photolib: 100" + cause + "photolib: 101" + cause + "photolib: 104" + cause);
    EXPECT_EQ(QList<QByteArray>{"IMG_0041.JPG"}, names());
}

TEST_F(ClassicPictures, AreNeverExportedFromOrToElsewhere)
{
    m_scratch.write("secret.jpg", "secret");
    m_scratch.makeFolder("device/Photos/Thumbs");
    m_scratch.makeLink("device/Photos/link.jpg", m_scratch.path("secret.jpg"));
    m_scratch.makeLink("device/Photos/Thumbs/F1024_9.ithmb", m_scratch.path("secret.ithmb"));
    m_scratch.write("secret.ithmb", QByteArray(153600, 'x'));
    const char *const hostile[] = {":..:..:secret.jpg", ":link.jpg", ":Thumbs/../../../secret.jpg"};
    quint32 id = 100;
    for (const char *name : hostile)
        addPhoto(id++).originalName = QString::fromLatin1(name);
    ClassicPhoto &linked = addPhoto(id++);
    store(linked, screenFormat, Qt::red);
    linked.variants[0].fileName = ":Thumbs:F1024_9.ithmb";
    ClassicPhoto &named = addPhoto(id);
    store(named, screenFormat, Qt::red);
    named.originalName = ":Full Resolution:..";
    writeDevice();
    const ProgramResult result = runExport();
    EXPECT_EQ(1, result.exitCode);
    EXPECT_TRUE(result.output.endsWith(", 5 failed (see the messages above)\n"))
        << result.output.constData();
    EXPECT_FALSE(result.errors.contains('\x1b'));
    const QList<QByteArray> written = names();
    ASSERT_EQ(1, written.size());
    expectPicture("out/" + written[0], {320, 240}, Qt::red);
    EXPECT_FALSE(written[0].contains('/') || written[0].startsWith('.')) << written[0].constData();
    EXPECT_FALSE(m_scratch.exists("secret.bmp"));
}

TEST_F(ClassicPictures, AreExportedUnderHarmlessNames)
{
    ClassicPhoto &photo = addPhoto(100);
    store(photo, screenFormat, Qt::red);
    addOriginal(photo, QString::fromUtf8("a\x1b[2J\n日本?.jpg"), "original");
    writeDevice();
    const ProgramResult result = runExport();
    EXPECT_EQ(0, result.exitCode) << result.errors.constData();
    EXPECT_EQ((QList<QByteArray>{"a_[2J_日本_.jpg", "a_[2J_日本__320x240.bmp"}), names());
}

TEST_F(ClassicPictures, AreNotExportedIntoTheDevice)
{
    writeThreePhotos();
    expectRefusalOfDevice({"export", "-d", device(), device() + "/copies"}, device() + "/copies");
    expectRefusalOfDevice({"thumb", "-d", device(), "--all", device() + "/copies"},
                          device() + "/copies");
}

TEST_F(ClassicPictures, StayWholeWhenTheirExportIsInterrupted)
{
    Terminal terminal;
    if (!terminal.isOpen())
        GTEST_SKIP() << "there are no pseudo-terminals here";
    store(addPhoto(100), screenFormat, Qt::red);
    addOriginal(addPhoto(101), "large.mov", QByteArray());
    m_scratch.writeEndless(originalsFolder + QByteArray("large.mov"));
    writeDevice();
    m_setup.errorFd = terminal.slave();
    Program program(m_setup, exportArguments());
    const QByteArray shown = terminal.shownUntil("] 1 of 2 files, ");
    EXPECT_TRUE(shown.contains("\rCopying [")) << shown.constData();
    ASSERT_EQ(0, ::kill(static_cast<pid_t>(program.processId()), SIGINT));
    EXPECT_EQ(130, program.waitForExitCode());
    EXPECT_EQ(QList<QByteArray>{"100.bmp"}, names());
    expectPicture("out/100.bmp", {320, 240}, Qt::red);
}

// Both signals wait for the program when it goes on, so it sees the second one whatever it
// makes of the first.
TEST_F(ClassicPictures, HaveTheirLinksRemovedByTheNextRunWhenTheirExportIsInterruptedTwice)
{
    Terminal terminal;
    if (!terminal.isOpen())
        GTEST_SKIP() << "there are no pseudo-terminals here";
    store(addPhoto(100), screenFormat, Qt::red);
    addOriginal(addPhoto(101), "large.mov", QByteArray());
    m_scratch.writeEndless(originalsFolder + QByteArray("large.mov"));
    writeDevice();
    m_scratch.makeFolder("tmp");
    m_setup.environment.append({"TMPDIR", QString::fromUtf8(m_scratch.path("tmp"))});
    m_setup.errorFd = terminal.slave();
    Program program(m_setup, exportArguments());
    terminal.shownUntil("] 1 of 2 files, ");
    EXPECT_NE(QList<QByteArray>(), m_scratch.everythingIn("tmp"));
    const auto process = static_cast<pid_t>(program.processId());
    ASSERT_EQ(0, ::kill(process, SIGSTOP));
    siginfo_t ignored = {};
    ASSERT_EQ(0, ::waitid(P_PID, static_cast<id_t>(process), &ignored, WSTOPPED | WNOWAIT));
    for (const int signal : {SIGINT, SIGTERM, SIGCONT})
        ASSERT_EQ(0, ::kill(process, signal));
    ASSERT_TRUE(program.waitForFinished());
    EXPECT_EQ(QProcess::CrashExit, program.exitStatus());
    EXPECT_EQ(SIGTERM, program.exitCode());
    EXPECT_EQ(0, run({"info", "-d", device()}).exitCode);
    EXPECT_EQ(QList<QByteArray>(), m_scratch.everythingIn("tmp"));
    // Nothing had its name yet.
    EXPECT_EQ(QList<QByteArray>(), names());
    EXPECT_EQ(0, runExport({"100"}).exitCode);
    EXPECT_EQ(QList<QByteArray>{"100.bmp"}, names());
}

TEST_F(ClassicPictures, AreLeftOutThatAreTooLargeForTheDisk)
{
    writeThreePhotos();
    m_setup.largestFile = 100000;
    const ProgramResult result = runExport({"100"});
    expectFailures(result, "photolib: 100: File too large\n");
    EXPECT_EQ(QList<QByteArray>{"IMG_0041.JPG"}, names());
}

// --- sheet

class ClassicSheet : public ClassicPictures
{
protected:
    ProgramResult draw(const QByteArray &folder)
    {
        return run({"sheet", "-d", folder, "-o", m_scratch.path("sheet.png")});
    }

    QImage sheet() const
    {
        QImage image;
        EXPECT_TRUE(image.loadFromData(m_scratch.read("sheet.png"), "PNG"));
        return image;
    }

    static SheetLayout layout(int cells)
    {
        return SheetLayout(cells, SheetLayout::columnsFor(cells));
    }

    /// The picture number `index` of a sheet of `cells`, without its frame.
    QImage shown(int cells, int index, const QSize &size) const
    {
        const QRect box = layout(cells).pictureBox(index);
        return sheet()
            .copy(box.x() + (box.width() - size.width()) / 2, box.bottom() + 1 - size.height(),
                  size.width(), size.height())
            .copy(1, 1, size.width() - 2, size.height() - 2)
            .convertToFormat(QImage::Format_RGB32);
    }

    static QImage filled(const QSize &size, const QColor &color)
    {
        QImage image(size.width() - 2, size.height() - 2, QImage::Format_RGB32);
        image.fill(color);
        return image;
    }
};

TEST_F(ClassicSheet, ShowsTheLargestPictureWhereTheSmallestIsAnIcon)
{
    ClassicPhoto &both = addPhoto(100);
    store(both, iconFormat, Qt::red);
    store(both, screenFormat, Qt::green);
    store(addPhoto(101), iconFormat, Qt::blue);
    store(addPhoto(102), screenFormat, Qt::red);
    writeDevice();
    const ProgramResult result = draw(device());
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ(QByteArray(), result.errors);
    EXPECT_EQ(m_scratch.path("sheet.png") + ": 3 pictures\n", result.output);
    // With no mark on them of a file that is missing.
    const QSize screen(184, 138);
    const QSize icon(100, 82); // small pictures grow to twice their size
    EXPECT_TRUE(filled(screen, Qt::green) == shown(3, 0, screen));
    EXPECT_TRUE(filled(icon, Qt::blue) == shown(3, 1, icon));
    EXPECT_TRUE(filled(screen, Qt::red) == shown(3, 2, screen));
}

TEST_F(ClassicSheet, ShowsThePictureThatIsLeft)
{
    ClassicPhoto &first = addPhoto(100);
    store(first, iconFormat, Qt::red);
    storeBytes(first, screenFormat, {320, 240}, QByteArray(5000, 'x')); // damaged
    ClassicPhoto &second = addPhoto(101);
    storeBytes(second, iconFormat, {50, 41}, QByteArray(10, 'x'));
    store(second, screenFormat, Qt::green);
    addPhoto(102);
    writeDevice();
    const ProgramResult result = draw(device());
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ(QByteArray(), result.errors);
    const QSize screen(184, 138);
    const QSize icon(100, 82);
    EXPECT_TRUE(filled(icon, Qt::red) == shown(3, 0, icon));
    EXPECT_TRUE(filled(screen, Qt::green) == shown(3, 1, screen));
}

// The plug-in tells the same orientation of all photos, and it means nothing.
TEST_F(ClassicSheet, TurnsNoPicture)
{
    const QByteArray red = QByteArray("\x00\xf8", 2).repeated(320 * 120);
    const QByteArray blue = QByteArray("\x1f\x00", 2).repeated(320 * 120);
    storeBytes(addPhoto(100), screenFormat, {320, 240}, red + blue);
    writeDevice();
    EXPECT_EQ(0, draw(device()).exitCode);
    const QImage picture = shown(1, 0, {184, 138});
    EXPECT_EQ(QColor(Qt::red), picture.pixelColor(90, 30));
    EXPECT_EQ(QColor(Qt::blue), picture.pixelColor(90, 100));
}

TEST_F(ClassicSheet, NamesAPhotoAfterItsOriginalOrItsId)
{
    writeThreePhotos();
    PhotosDatabase phone;
    int id = 0;
    for (const char *name : {"IMG_0041.JPG", "101", "IMG_0042.JPG"}) {
        ++id;
        phone.rows.assets.push_back(photoRow(id, id));
        phone.rows.assets.back().fileName = name;
    }
    writeDatabase(m_scratch, "phone", phone);
    const auto captions = [this](const QByteArray &folder) {
        EXPECT_EQ(0, draw(folder).exitCode);
        QList<QImage> images;
        for (int i = 0; i < 3; ++i)
            images.append(sheet().copy(layout(3).labelLine(i)));
        return images;
    };
    const QList<QImage> named = captions(device());
    EXPECT_EQ(captions(m_scratch.path("phone")), named);
    EXPECT_NE(named[0], named[1]);
}

} // namespace
