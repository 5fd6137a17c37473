#include "engine/jpeg_file.h"

#include "base/cancel_token.h"
#include "base/error.h"
#include "engine/picture_format.h"

#include <gtest/gtest.h>

#include <QByteArray>
#include <QImage>

namespace {

// Fine noise, which takes many bytes.
QImage noise(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    quint32 value = 1;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            value = value * 1664525 + 1013904223;
            image.setPixel(x, y, QRgb(0xff000000 | value >> 8));
        }
    }
    return image;
}

QByteArray written(const QImage &image)
{
    const CancelToken cancel;
    QByteArray file;
    writeJpeg(image, cancel,
              [&file](const char *bytes, qint64 count) { file.append(bytes, int(count)); });
    return file;
}

TEST(WrittenJpeg, HoldsThePicture)
{
    for (const QSize &size : {QSize(1, 1), QSize(3, 700), QSize(700, 3), QSize(90, 130)}) {
        QImage image(size, QImage::Format_RGB32);
        image.fill(qRgb(200, 100, 50));
        QImage read;
        ASSERT_TRUE(read.loadFromData(written(image), "JPEG"));
        ASSERT_EQ(size, read.size());
        const QColor last = read.pixelColor(size.width() - 1, size.height() - 1);
        EXPECT_NEAR(200, last.red(), 4);
        EXPECT_NEAR(100, last.green(), 4);
        EXPECT_NEAR(50, last.blue(), 4);
    }
}

TEST(WrittenJpeg, IsTheFileThatIsMadeAtOnce)
{
    const QImage image = noise(300, 200);
    EXPECT_EQ(jpegFile(image), written(image));
}

TEST(WrittenJpeg, EndsAtOnceWhenItIsCancelled)
{
    CancelToken cancel;
    int pieces = 0;
    const auto cancelAtTheFirst = [&](const char *, qint64) {
        ++pieces;
        cancel.cancel();
    };
    testing::internal::CaptureStderr();
    try {
        writeJpeg(noise(900, 900), cancel, cancelAtTheFirst);
        FAIL() << "it is written";
    } catch (const Error &error) {
        EXPECT_EQ(Error::Cancelled, error.kind());
    }
    EXPECT_EQ(1, pieces);
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST(WrittenJpeg, EndsWithWhatItsSinkThrows)
{
    struct DiskFull {
    };
    const CancelToken cancel;
    int pieces = 0;
    const auto failAtTheThird = [&pieces](const char *, qint64) {
        if (++pieces == 3)
            throw DiskFull();
    };
    EXPECT_THROW(writeJpeg(noise(900, 900), cancel, failAtTheThird), DiskFull);
    EXPECT_EQ(3, pieces);
}

} // namespace
