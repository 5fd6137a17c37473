#include "engine/sheet_drawing.h"

#include "base/cancel_token.h"
#include "base/error.h"
#include "engine/sheet_cell.h"
#include "support/opened_library.h"
#include "support/program_fixture.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QImage>

namespace {

// No two alike, some lying and some standing.
QByteArray thumbnail(int number)
{
    const bool isStanding = number % 3 == 0;
    QImage image(isStanding ? 90 : 120 + number, isStanding ? 120 + number : 90,
                 QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgb(x * 2, y * 2, number * 17 % 256));
    }
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, "JPEG"));
    return buffer.data();
}

// Keeps the pages, and does at each step what a test wants.
class KeptPages : public SheetObserver
{
public:
    void drawn(int done) override
    {
        lastDrawn = done;
        if (whenDrawn)
            whenDrawn(done);
    }

    void damaged(const QString &fault) override { faults.append(fault); }

    void pageDrawn(int page, int pictures,
                   const std::function<void(const ByteSink &sink)> &writeFile) override
    {
        begun.append(page);
        QByteArray file;
        writeFile([&](const char *bytes, qint64 count) {
            file.append(bytes, int(count));
            if (whenWritten)
                whenWritten(page, file.size());
        });
        pages.append(QImage::fromData(file, format));
        counts.append(pictures);
    }

    std::function<void(int)> whenDrawn;
    std::function<void(int, int)> whenWritten;
    const char *format = "PNG"; ///< in which pages are read
    int lastDrawn = 0;
    QStringList faults;
    QList<int> begun;
    QList<int> counts;
    QList<QImage> pages; ///< that are whole
};

// Sheets without text, which would need more of Qt than a test has.
class DrawnSheet : public ProgramTest
{
protected:
    void writePhotos(int count)
    {
        PhotosDatabase database;
        for (int i = 1; i <= count; ++i) {
            const QByteArray name = "IMG_" + QByteArray::number(i) + ".JPG";
            database.rows.assets.push_back(photoRow(i, i));
            database.rows.assets.back().fileName = name.toStdString();
            m_scratch.write("device/DCIM/100APPLE/" + name, "picture");
            m_scratch.write(thumbnailPath(name), thumbnail(i));
            m_request.ids.append(quint64(i));
        }
        writeDatabase(m_scratch, "device", database);
        m_request.options.labels.clear();
        m_request.options.perPage = 12;
    }

    static QByteArray thumbnailPath(const QByteArray &name)
    {
        return "device/PhotoData/Thumbnails/V2/DCIM/100APPLE/" + name + "/5005.JPG";
    }

    void draw(KeptPages &pages, int threads = 2)
    {
        OpenedLibrary library(device(), m_scratch.path("work"));
        drawSheet(library.session, m_request, threads, pages, m_cancel);
    }

    // How the drawing fails.
    Error::Kind failure(KeptPages &pages)
    {
        try {
            draw(pages);
        } catch (const Error &error) {
            return error.kind();
        }
        ADD_FAILURE() << "it is drawn";
        return Error::Failed;
    }

    SheetRequest m_request;
    CancelToken m_cancel;
};

using CancelledSheet = DrawnSheet;

TEST_F(DrawnSheet, HasPagesOfTheFormatThatIsWanted)
{
    writePhotos(13);
    m_request.format = &jpegFormat();
    KeptPages kept;
    kept.format = "JPEG";
    draw(kept);
    ASSERT_EQ(2, kept.pages.size());
    const SheetPlan plan(m_request.options, 13);
    EXPECT_EQ(plan.layout(0).size(), kept.pages[0].size());
    EXPECT_EQ(plan.layout(1).size(), kept.pages[1].size());
}

TEST_F(DrawnSheet, IsTheSameWhateverTheNumberOfThreads)
{
    writePhotos(30);
    KeptPages byOne;
    draw(byOne, 1);
    EXPECT_EQ((QList<int>{12, 12, 6}), byOne.counts);
    EXPECT_EQ((QList<int>{0, 1, 2}), byOne.begun);
    EXPECT_EQ(30, byOne.lastDrawn);
    EXPECT_NE(byOne.pages[0], byOne.pages[1]);
    KeptPages byFour;
    draw(byFour, 4);
    EXPECT_EQ(byOne.pages, byFour.pages);
}

TEST_F(DrawnSheet, ShowsEachThumbnailScaledInItsBox)
{
    writePhotos(13);
    m_request.options.boxSize = 100;
    KeptPages kept;
    draw(kept);
    const SheetPlan plan(m_request.options, 13);
    const QImage source = QImage::fromData(thumbnail(13), "JPEG");
    const QSize size = plan.style().shownSize(source.size());
    const QRect box = plan.layout(1).pictureBox(0);
    const QImage shown = kept.pages[1].copy(
        QRect(QPoint(box.x() + (box.width() - size.width()) / 2, box.bottom() + 1 - size.height()),
              size));
    const auto inner = [](const QImage &image) {
        return image.copy(image.rect().adjusted(1, 1, -1, -1))
            .convertToFormat(QImage::Format_RGB32);
    };
    EXPECT_EQ(inner(source.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)),
              inner(shown));
}

TEST_F(DrawnSheet, EndsWithWhatItsObserverThrows)
{
    writePhotos(30);
    struct DiskFull {
    };
    KeptPages kept;
    kept.whenWritten = [](int page, int) {
        if (page == 1)
            throw DiskFull();
    };
    EXPECT_THROW(draw(kept), DiskFull);
    EXPECT_EQ((QList<int>{0, 1}), kept.begun);
}

TEST_F(DrawnSheet, IsRefusedWhenAPageWouldBeTooLarge)
{
    writePhotos(3);
    m_request.options.columns = 1000;
    KeptPages kept;
    EXPECT_EQ(Error::WrongUsage, failure(kept));
    EXPECT_EQ(0, kept.lastDrawn);
}

TEST_F(CancelledSheet, IsNotBegun)
{
    writePhotos(3);
    m_cancel.cancel();
    KeptPages kept;
    EXPECT_EQ(Error::Cancelled, failure(kept));
    EXPECT_EQ(0, kept.lastDrawn);
    EXPECT_EQ(QList<int>(), kept.begun);
}

TEST_F(CancelledSheet, EndsBetweenTwoPictures)
{
    writePhotos(30);
    KeptPages kept;
    kept.whenDrawn = [this](int done) {
        if (done == 15)
            m_cancel.cancel();
    };
    EXPECT_EQ(Error::Cancelled, failure(kept));
    EXPECT_EQ(15, kept.lastDrawn);
    EXPECT_LE(kept.begun.size(), 1);
}

TEST_F(CancelledSheet, EndsAmidAPageThatIsWritten)
{
    writePhotos(13);
    KeptPages kept;
    int writtenWhenCancelled = 0;
    int written = 0;
    kept.whenWritten = [&](int, int size) {
        written = size;
        if (m_cancel.isCancelled() || size < 1000)
            return;
        writtenWhenCancelled = size;
        m_cancel.cancel();
    };
    EXPECT_EQ(Error::Cancelled, failure(kept));
    EXPECT_EQ(QList<int>{0}, kept.begun);
    EXPECT_EQ(QList<QImage>(), kept.pages);
    EXPECT_EQ(writtenWhenCancelled, written);
}

TEST_F(CancelledSheet, HasNoPictureDecodedAnyMore)
{
    writePhotos(1);
    OpenedLibrary library(device(), m_scratch.path("work"));
    const UndrawnCell cell = readCell(library.session, 1, {});
    EXPECT_FALSE(finishedCell(cell, SheetStyle(), m_cancel).cell.picture.isNull());
    m_cancel.cancel();
    EXPECT_TRUE(finishedCell(cell, SheetStyle(), m_cancel).cell.picture.isNull());
}

// Photos that the device has no thumbnails of.
class DrawnSheetOfOriginals : public DrawnSheet
{
protected:
    DrawnSheetOfOriginals()
    {
        PhotosDatabase database;
        for (int i = 1; i <= count; ++i) {
            const QByteArray name = "IMG_" + QByteArray::number(i) + ".JPG";
            database.rows.assets.push_back(photoRow(i, i));
            database.rows.assets.back().fileName = name.toStdString();
            database.rows.assets.back().thumbnailIndex = -1;
            m_scratch.write("device/DCIM/100APPLE/" + name, thumbnail(i));
            m_request.ids.append(quint64(i));
        }
        writeDatabase(m_scratch, "device", database);
        m_request.options.labels.clear();
    }

    static constexpr int count = 30;
};

TEST_F(DrawnSheetOfOriginals, IsTheSameWhateverTheNumberOfThreads)
{
    KeptPages byOne;
    draw(byOne, 1);
    ASSERT_EQ(1, byOne.pages.size());
    const SheetPlan plan(m_request.options, count);
    for (int i = 0; i < count; ++i) {
        const QImage box = byOne.pages[0].copy(plan.layout(0).pictureBox(i));
        const QRgb placeholder = qRgb(0xe9, 0xe9, 0xe6);
        EXPECT_NE(placeholder, box.pixel(box.width() / 2, box.height() / 2)) << i;
    }
    KeptPages byFour;
    draw(byFour, 4);
    EXPECT_EQ(byOne.pages, byFour.pages);
}

TEST_F(DrawnSheetOfOriginals, EndsWhenItIsCancelled)
{
    KeptPages kept;
    kept.whenDrawn = [this](int done) {
        if (done == 3)
            m_cancel.cancel();
    };
    EXPECT_EQ(Error::Cancelled, failure(kept));
    EXPECT_EQ(3, kept.lastDrawn);
}

TEST_F(DrawnSheetOfOriginals, EndsWhenTheDeviceIsGone)
{
    OpenedLibrary library(device(), m_scratch.path("work"));
    KeptPages kept;
    kept.whenDrawn = [&](int done) {
        if (done == 1)
            library.session.files().close();
    };
    try {
        drawSheet(library.session, m_request, 2, kept, m_cancel);
        ADD_FAILURE() << "it is drawn";
    } catch (const Error &error) {
        EXPECT_EQ(Error::Disconnected, error.kind());
    }
    EXPECT_EQ(QList<QImage>(), kept.pages);
}

TEST_F(DrawnSheet, ReadsWhatACellShowsFromTheCatalog)
{
    PhotosDatabase database;
    AssetRow row = videoRow(3, 3);
    row.fileName = "film.mov";
    row.trashedState = 1;
    database.rows.assets = {photoRow(1), row};
    database.rows.assets[0].fileName = "a\nb.jpg";
    writeDatabase(m_scratch, "device", database);
    m_scratch.write("device/DCIM/100APPLE/film.mov", "film");
    OpenedLibrary library(device(), m_scratch.path("work"));
    const SheetCell photo = readCell(library.session, 1, {SheetLabel::Id, SheetLabel::Name}).cell;
    ASSERT_EQ(2, photo.labels.size());
    EXPECT_EQ("1", photo.labels[0].text);
    EXPECT_EQ("a\\x0ab.jpg", photo.labels[1].text);
    EXPECT_FALSE(photo.isVideo);
    EXPECT_FALSE(photo.isTrashed);
    EXPECT_EQ("file missing", photo.fileMark);
    const SheetCell video = readCell(library.session, 3, {}).cell;
    EXPECT_TRUE(video.isVideo);
    EXPECT_TRUE(video.isTrashed);
    EXPECT_EQ("", video.fileMark);
}

TEST_F(DrawnSheet, LabelsAPhotoWithTheDayWhereTheTimeHasNoRoom)
{
    PhotosDatabase database;
    database.rows.assets = {photoRow(1), photoRow(2)};
    database.schema.furtherAssetColumns = {"ZDATECREATED TIMESTAMP"};
    database.rows.sql = {"UPDATE ZGENERICASSET SET ZDATECREATED = 585926209 WHERE Z_PK = 1"};
    writeDatabase(m_scratch, "device", database);
    OpenedLibrary library(device(), m_scratch.path("work"));
    const auto dateOf = [&](quint64 id) {
        return readCell(library.session, id, {SheetLabel::Date}).cell.labels.at(0);
    };
    EXPECT_EQ("2019-07-27 13:16Z", dateOf(1).text);
    EXPECT_EQ("2019-07-27", dateOf(1).shortText);
    EXPECT_EQ("", dateOf(2).text);
}

} // namespace
