#include "engine/thumbnail.h"

#include "base/log_output.h"
#include "support/classic_fixture.h"
#include "support/opened_library.h"

#include <gtest/gtest.h>

#include <QBuffer>

namespace {

constexpr char thumbnailPath[] =
    "device/PhotoData/Thumbnails/V2/DCIM/100APPLE/IMG_0001.JPG/5005.JPG";

QByteArray jpegOf(const QSize &size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::red);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, "JPEG"));
    return buffer.data();
}

class PictureFileOfAPhone : public ProgramTest
{
protected:
    PictureFile picture(bool isPng = false, quint64 id = 1)
    {
        OpenedLibrary library(device(), m_scratch.path("work"));
        PictureRequest request;
        request.id = id;
        request.isPng = isPng;
        return requestedPicture(library.session, request);
    }

    void writePhone(const QByteArray &thumbnail)
    {
        writeTwoPhotos();
        m_scratch.write(thumbnailPath, thumbnail);
    }
};

TEST_F(PictureFileOfAPhone, IsReadyToBeWritten)
{
    const QByteArray jpeg = jpegOf({30, 20});
    writePhone(jpeg);
    const PictureFile file = picture();
    EXPECT_EQ(jpeg, file.bytes);
    ASSERT_TRUE(file.format);
    EXPECT_STREQ("jpg", file.format->extension());
    EXPECT_EQ("DCIM/100APPLE/IMG_0001.JPG", file.label);
    EXPECT_EQ("IMG_0001.JPG", file.name);
    EXPECT_EQ(FileError::None, file.failure.kind);
}

TEST_F(PictureFileOfAPhone, IsConvertedToPng)
{
    const QByteArray jpeg = jpegOf({30, 20});
    writePhone(jpeg);
    const PictureFile file = picture(true);
    EXPECT_EQ(&pngFormat(), file.format);
    QImage image;
    ASSERT_TRUE(image.loadFromData(file.bytes, "PNG"));
    EXPECT_EQ(QImage::fromData(jpeg).convertToFormat(QImage::Format_RGB32),
              image.convertToFormat(QImage::Format_RGB32));
}

TEST_F(PictureFileOfAPhone, SaysInTheProgramsOwnWordsThatThereIsNone)
{
    writeTwoPhotos();
    const PictureFile file = picture();
    EXPECT_EQ(nullptr, file.format);
    EXPECT_EQ(QByteArray(), file.bytes);
    EXPECT_EQ("no thumbnail", file.failure.text);
    EXPECT_EQ("DCIM/100APPLE/IMG_0001.JPG", file.label);
}

TEST_F(PictureFileOfAPhone, SaysWhatIsWrongWithOneThatIsThere)
{
    writePhone("text");
    EXPECT_EQ("a thumbnail that is neither JPEG nor BMP", picture().failure.text);
    writePhone(jpegOf({200, 200}).left(300));
    EXPECT_EQ(QString(), picture().failure.text); // as it is
    const PictureFile damaged = picture(true);
    EXPECT_EQ("a damaged thumbnail", damaged.failure.text);
    EXPECT_EQ(nullptr, damaged.format);
    EXPECT_EQ(QByteArray(), damaged.bytes);
}

class PictureFileOfAnIpod : public ClassicProgramTest
{
protected:
    PictureFile picture(quint64 id, PictureChoice choice)
    {
        OpenedLibrary library(device(), QByteArray());
        PictureRequest request;
        request.id = id;
        request.choice = choice;
        return requestedPicture(library.session, request);
    }
};

TEST_F(PictureFileOfAnIpod, IsTheSmallestOrTheLargestStored)
{
    writeThreePhotos();
    const PictureFile thumbnail = picture(100, PictureChoice::Thumbnail);
    const PictureFile largest = picture(100, PictureChoice::Largest);
    EXPECT_EQ(QSize(50, 41), QImage::fromData(thumbnail.bytes, "BMP").size());
    EXPECT_EQ(QSize(320, 240), QImage::fromData(largest.bytes, "BMP").size());
    EXPECT_STREQ("bmp", largest.format->extension());
    EXPECT_EQ("100", thumbnail.label);
    EXPECT_EQ("IMG_0041.JPG", thumbnail.name);
    EXPECT_EQ("", picture(101, PictureChoice::Thumbnail).name);
}

TEST_F(PictureFileOfAnIpod, SaysWhyTheStoredOneCannotBeUnpacked)
{
    storeBytes(addPhoto(111), 4711, {9, 9}, "xyz");
    writeDevice();
    const LogCapture log;
    EXPECT_EQ("no thumbnail (unknown format 4711)",
              picture(111, PictureChoice::Thumbnail).failure.text);
    EXPECT_EQ("no picture (unknown format 4711)",
              picture(111, PictureChoice::Largest).failure.text);
    EXPECT_EQ(QList<QByteArray>(), log.failures()) << "told twice";
}

class PictureToLookAt : public ClassicProgramTest
{
protected:
    ShownPicture shown(quint64 id)
    {
        OpenedLibrary library(device(), m_scratch.path("work"));
        const Asset *const asset = library.session.catalog().asset(qint64(id));
        return shownPicture(storedThumbnail(library.session, *asset));
    }
};

TEST_F(PictureToLookAt, IsTheLargestWhereTheSmallestIsAnIcon)
{
    writeThreePhotos();
    EXPECT_EQ(QSize(320, 240), shown(100).image.size());
}

TEST_F(PictureToLookAt, IsSaidToBeAbsentOrDamaged)
{
    addPhoto(110);
    storeBytes(addPhoto(111), 1081, {64, 48}, jpegOf({64, 48}).left(200));
    writeDevice();
    const ShownPicture absent = shown(110);
    EXPECT_TRUE(absent.image.isNull());
    EXPECT_EQ("no thumbnail", absent.absence);
    EXPECT_EQ(QStringList(), absent.faults);
    const ShownPicture damaged = shown(111);
    EXPECT_TRUE(damaged.image.isNull());
    EXPECT_EQ("damaged thumbnail", damaged.absence);
    EXPECT_EQ(QStringList{"111: a damaged thumbnail"}, damaged.faults);
}

} // namespace
