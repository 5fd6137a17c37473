#include "engine/original_picture.h"

#include "base/cancel_token.h"
#include "devices/folder_file_system.h"
#include "devices/memory_file.h"
#include "engine/original_files.h"
#include "support/device_folder.h"
#include "support/picture_comparison.h"
#include "support/picture_files.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <QColorSpace>
#include <QtEndian>

namespace {

constexpr char noEncoder[] = "libheif has no encoder here";

class OriginalPictures : public testing::Test
{
protected:
    OriginalPictures()
    {
        FileError error;
        m_scratch.makeFolder("device");
        m_files = FolderFileSystem::openFolder(m_scratch.path("device"), &error);
    }

    OriginalPicture made(const QList<QByteArray> &paths, int longestEdge)
    {
        OriginalFiles originals;
        originals.paths = paths;
        return originalPicture(*m_files, originals, longestEdge, m_cancel);
    }

    OriginalPicture madeOf(const QByteArray &bytes, int longestEdge = 64)
    {
        m_scratch.write("device/original", bytes);
        return made({"original"}, longestEdge);
    }

    /// Why none is made.
    std::string causeOf(const QByteArray &bytes)
    {
        const OriginalPicture picture = madeOf(bytes);
        EXPECT_TRUE(picture.image.isNull());
        return picture.cause.text.toStdString();
    }

    ScratchFolder m_scratch;
    std::unique_ptr<FolderFileSystem> m_files;
    CancelToken m_cancel;
};

// --- formats

struct FormatRow {
    const char *name;
    QByteArray (*file)(const QImage &picture);
    double loss; ///< at most, in the mean of a channel
};

class OriginalPictureOfFormat : public OriginalPictures,
                                public testing::WithParamInterface<FormatRow>
{
};

TEST_P(OriginalPictureOfFormat, IsScaledDownAndNeverUp)
{
    const QImage source = smoothPicture({400, 300});
    const QByteArray file = GetParam().file(source);
    if (file.isEmpty())
        GTEST_SKIP() << noEncoder;
    for (const int edge : {400, 399, 256, 100, 16}) {
        const OriginalPicture picture = madeOf(file, edge);
        EXPECT_EQ("", picture.cause.text);
        const QSize size = QSize(400, 300).scaled(edge, edge, Qt::KeepAspectRatio);
        ASSERT_EQ(size, picture.image.size()) << edge;
        const QImage expected =
            source.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        EXPECT_LE(lossBetween(expected, picture.image).mean, GetParam().loss) << edge;
    }
    EXPECT_EQ(QSize(400, 300), madeOf(file, 4096).image.size());
}

TEST_P(OriginalPictureOfFormat, IsNotMadeOfHalfAFile)
{
    const QByteArray file = GetParam().file(noisyPicture({200, 160}));
    if (file.isEmpty())
        GTEST_SKIP() << noEncoder;
    for (const int part : {2, 10})
        EXPECT_EQ("a damaged original", causeOf(file.left(file.size() / part))) << part;
}

TEST_P(OriginalPictureOfFormat, IsNotMadeOnceItIsCancelled)
{
    const QByteArray file = GetParam().file(smoothPicture({400, 300}));
    m_cancel.cancel();
    EXPECT_TRUE(madeOf(file).image.isNull());
}

INSTANTIATE_TEST_SUITE_P(
    Formats, OriginalPictureOfFormat,
    testing::Values(
        FormatRow{"Jpeg", [](const QImage &picture) { return pictureFile(picture, "JPEG"); }, 2},
        FormatRow{"Png", [](const QImage &picture) { return pictureFile(picture, "PNG"); }, 1},
        FormatRow{"Heic", [](const QImage &picture) { return heicFile(picture); }, 3}),
    rowName<FormatRow>);

TEST_F(OriginalPictures, KeepTheThinnestPictureAPixelWide)
{
    for (const QSize &size : {QSize(2000, 2), QSize(2, 2000)}) {
        const QSize expected = size.width() > 2 ? QSize(64, 1) : QSize(1, 64);
        const QImage source = smoothPicture(size);
        EXPECT_EQ(expected, madeOf(pictureFile(source, "PNG")).image.size());
        EXPECT_EQ(expected, madeOf(pictureFile(source, "JPEG")).image.size());
    }
}

TEST_F(OriginalPictures, KeepThinHeicPicturesTooWhenTheyAreReduced)
{
    const QByteArray file = heicFile(smoothPicture({2000, 20}));
    if (file.isEmpty())
        GTEST_SKIP() << noEncoder;
    EXPECT_EQ(QSize(64, 1), madeOf(file).image.size());
}

TEST_F(OriginalPictures, AreMadeOfTheFirstFrameOfAGif)
{
    // Two frames of one pixel, red and blue.
    const QByteArray frame("\x2c\0\0\0\0\x01\0\x01\0\0\x02\x02\x44\x01\0", 15);
    const QByteArray other("\x2c\0\0\0\0\x01\0\x01\0\0\x02\x02\x4c\x01\0", 15);
    const QByteArray gif =
        QByteArray("GIF89a\x01\0\x01\0\x80\0\0\xff\0\0\0\0\xff", 19) + frame + other + ';';
    const OriginalPicture picture = madeOf(gif);
    ASSERT_EQ(QSize(1, 1), picture.image.size()) << picture.cause.text.toStdString();
    EXPECT_EQ(qRgb(255, 0, 0), picture.image.pixel(0, 0));
}

TEST_F(OriginalPictures, KeepWhatIsTransparent)
{
    QImage source(10, 10, QImage::Format_ARGB32);
    source.fill(Qt::transparent);
    EXPECT_EQ(0, qAlpha(madeOf(pictureFile(source, "PNG")).image.pixel(5, 5)));
    const QByteArray opaque = pictureFile(source.convertToFormat(QImage::Format_RGB32), "PNG");
    EXPECT_FALSE(madeOf(opaque).image.hasAlphaChannel());
}

// --- the way up

class OriginalPictureHeld : public OriginalPictures, public testing::WithParamInterface<int>
{
};

TEST_P(OriginalPictureHeld, IsUprightWhicheverWay)
{
    const QImage upright = smoothPicture({300, 200});
    const QImage expected =
        upright.scaled(150, 100, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    const OriginalPicture ofJpeg = madeOf(jpegHeld(upright, GetParam()), 150);
    EXPECT_LE(lossBetween(expected, ofJpeg.image).mean, 2);
    const QByteArray heic = heicFile(storedWith(upright, GetParam()), GetParam());
    if (heic.isEmpty())
        GTEST_SKIP() << noEncoder;
    EXPECT_LE(lossBetween(expected, madeOf(heic, 150).image).mean, 3);
}

INSTANTIATE_TEST_SUITE_P(Codes, OriginalPictureHeld, testing::Range(1, 9));

// The small picture is another one here, which shows that it is used.
TEST_F(OriginalPictures, AreMadeOfTheThumbnailInAHeicFileWhereItIsLargeEnough)
{
    const QImage upright = smoothPicture({300, 150});
    const QImage other = smoothPicture({300, 150}, 1);
    const QByteArray file = heicFile(storedWith(upright, 6), 6, storedWith(other, 6));
    if (file.isEmpty())
        GTEST_SKIP() << noEncoder;
    for (const int edge : {75, 99, 150}) {
        const QImage &used = edge < 100 ? other : upright;
        const QImage expected =
            used.scaled(QSize(edge, edge), Qt::KeepAspectRatio, Qt::SmoothTransformation);
        EXPECT_LE(lossBetween(expected, madeOf(file, edge).image).mean, 4) << edge;
    }
}

// --- colours

TEST_F(OriginalPictures, HaveTheColoursThatWiderNumbersMean)
{
    QImage wide(8, 8, QImage::Format_RGB32);
    wide.fill(qRgb(100, 150, 100));
    wide.setColorSpace(QColorSpace(QColorSpace::DisplayP3));
    QImage usual = wide;
    usual.convertToColorSpace(QColorSpace(QColorSpace::SRgb));
    ASSERT_NE(usual.pixel(4, 4), wide.pixel(4, 4));
    const QImage made = madeOf(pictureFile(wide, "PNG")).image;
    EXPECT_LE(lossBetween(usual, made).most, 2);
}

// --- what a device may make up

TEST_F(OriginalPictures, AreNotMadeOfOneThatClaimsToBeHuge)
{
    EXPECT_EQ("the original of 100000 x 100000 pixels is too large",
              causeOf(hollowPng(100000, 100000)));
    QByteArray jpeg = pictureFile(smoothPicture({16, 16}), "JPEG");
    const int frame = jpeg.indexOf("\xff\xc0");
    qToBigEndian<quint16>(65500, jpeg.data() + frame + 5);
    qToBigEndian<quint16>(65500, jpeg.data() + frame + 7);
    EXPECT_EQ("the original of 65500 x 65500 pixels is too large", causeOf(jpeg));
    QByteArray heic = heicFile(smoothPicture({64, 64}));
    if (heic.isEmpty())
        GTEST_SKIP() << noEncoder;
    const int size = heic.indexOf("ispe") + 8;
    qToBigEndian<quint32>(50000, heic.data() + size);
    qToBigEndian<quint32>(60000, heic.data() + size + 4);
    EXPECT_EQ("the original of 50000 x 60000 pixels is too large", causeOf(heic));
}

// 20000 x 20000 pixels, 12 of them a byte: not kept whole, as a progressive one would be.
TEST_F(OriginalPictures, AreNotMadeOfALargeJpegThatHasToBeKeptWhole)
{
    QByteArray jpeg = progressiveJpeg(2);
    const int frame = jpeg.indexOf("\xff\xc2");
    qToBigEndian<quint16>(20000, jpeg.data() + frame + 5);
    qToBigEndian<quint16>(20000, jpeg.data() + frame + 7);
    EXPECT_EQ("the original of 20000 x 20000 pixels is too large", causeOf(jpeg));
}

TEST_F(OriginalPictures, AreNotMadeOfThousandsOfScans)
{
    EXPECT_EQ(QSize(16, 16), madeOf(progressiveJpeg(100)).image.size());
    EXPECT_EQ("a damaged original", causeOf(progressiveJpeg(101)));
    EXPECT_EQ("a damaged original", causeOf(progressiveJpeg(4000)));
}

TEST_F(OriginalPictures, AreNotMadeOfAFileThatIsLargerThanAnyPhoto)
{
    m_scratch.writeSparse("device/original", (qint64(256) << 20) + 1);
    FILE *const file = std::fopen(m_scratch.path("device/original").constData(), "r+");
    ASSERT_TRUE(file);
    std::fputs("\xff\xd8\xff", file);
    std::fclose(file);
    EXPECT_EQ("the original of more than 256 MiB is too large",
              made({"original"}, 64).cause.text.toStdString());
}

TEST_F(OriginalPictures, SurviveEachFlippedByteOfAHeicFilesStructure)
{
    const QByteArray file = heicFile(smoothPicture({32, 32}));
    if (file.isEmpty())
        GTEST_SKIP() << noEncoder;
    const int structure = file.indexOf("mdat");
    ASSERT_GT(structure, 0);
    for (int i = 0; i < structure; i += 3) {
        QByteArray damaged = file;
        damaged[i] = char(damaged[i] ^ 0xff);
        const OriginalPicture picture = madeOf(damaged, 16);
        EXPECT_LE(picture.image.width(), 16) << i;
    }
}

// --- none

TEST_F(OriginalPictures, HaveNoCauseWhereThereIsNoPicture)
{
    EXPECT_EQ("", causeOf(""));
    EXPECT_EQ("", causeOf("text"));
    EXPECT_EQ("", causeOf(QByteArray("\0\0\0\x14"
                                     "ftypqt  \0\0\0\0qt  ",
                                     20)));
    const OriginalPicture missing = made({"missing", "device/../../x", ".."}, 64);
    EXPECT_TRUE(missing.image.isNull());
    EXPECT_EQ("", missing.cause.text);
}

TEST_F(OriginalPictures, AreMadeOfNoVideo)
{
    OriginalFiles originals;
    originals.isVideo = true;
    const OriginalPicture picture = originalPicture(*m_files, originals, 64, m_cancel);
    EXPECT_TRUE(picture.image.isNull());
    EXPECT_EQ("photolib makes none of videos", picture.cause.text);
}

TEST_F(OriginalPictures, AreMadeOfTheFirstFileThatIsSound)
{
    m_scratch.write("device/damaged", "\xff\xd8\xff half a picture");
    m_scratch.write("device/sound", pictureFile(smoothPicture({30, 20}), "JPEG"));
    EXPECT_EQ(QSize(30, 20), made({"missing", "damaged", "sound"}, 64).image.size());
    EXPECT_EQ("a damaged original", made({"damaged", "missing"}, 64).cause.text);
}

TEST_F(OriginalPictures, TellThatTheDeviceIsGone)
{
    m_scratch.write("device/original", pictureFile(smoothPicture({30, 20}), "JPEG"));
    m_files->close();
    EXPECT_EQ(FileError::Disconnected, made({"original"}, 64).cause.kind);
}

} // namespace
