#include "engine/png_file.h"

#include "base/cancel_token.h"
#include "base/error.h"

#include <gtest/gtest.h>

#include <QByteArray>
#include <QImage>

namespace {

// Fields, shades and noise, so that each row has another filter that suits it.
QImage picture(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    quint32 noise = 1;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            noise = noise * 1664525 + 1013904223;
            const int shade = x * 255 / width;
            image.setPixel(x, y,
                           y % 3 == 0 ? QRgb(0xff000000 | noise >> 8)
                                      : qRgb(shade, y % 256, (shade + y) % 256));
        }
    }
    return image;
}

QByteArray written(const QImage &image)
{
    const CancelToken cancel;
    QByteArray file;
    writePng(image, cancel,
             [&file](const char *bytes, qint64 count) { file.append(bytes, int(count)); });
    return file;
}

TEST(WrittenPng, HoldsThePicture)
{
    for (const QSize &size : {QSize(1, 1), QSize(3, 700), QSize(700, 3), QSize(900, 1300)}) {
        const QImage image = picture(size.width(), size.height());
        QImage read;
        ASSERT_TRUE(read.loadFromData(written(image), "PNG"));
        EXPECT_FALSE(read.hasAlphaChannel());
        EXPECT_TRUE(image == read.convertToFormat(QImage::Format_RGB32)) << size.width();
    }
}

TEST(WrittenPng, EndsAtOnceWhenItIsCancelled)
{
    const QImage image = picture(900, 3000); // of many pieces
    CancelToken cancel;
    int pieces = 0;
    const auto cancelAtTheFirstRows = [&](const char *, qint64 count) {
        ++pieces;
        if (count > 1000)
            cancel.cancel();
    };
    try {
        writePng(image, cancel, cancelAtTheFirstRows);
        FAIL() << "it is written";
    } catch (const Error &error) {
        EXPECT_EQ(Error::Cancelled, error.kind());
    }
    EXPECT_LT(pieces, 20) << "what comes first, and one piece of the rows";
}

TEST(WrittenPng, EndsWithWhatItsSinkThrows)
{
    struct DiskFull {
    };
    const CancelToken cancel;
    const auto fail = [](const char *, qint64 count) {
        if (count > 1000)
            throw DiskFull();
    };
    EXPECT_THROW(writePng(picture(900, 3000), cancel, fail), DiskFull);
}

} // namespace
