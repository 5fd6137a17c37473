#include "engine/picture_format.h"

#include <QBuffer>
#include <QImage>
#include <QPainter>

#include <algorithm>
#include <iterator>

namespace {

constexpr PictureFormat usualFormat = {"JPEG", {"jpg", "jpeg", "jpe", "jfif"}};
constexpr PictureFormat bmpFormat = {"BMP", {"bmp", "dib"}};
constexpr PictureFormat convertedFormat = {"PNG", {"png"}};

// Nothing here writes the others: they are known so that no other picture gets their names.
constexpr PictureFormat otherFormats[] = {
    {"GIF", {"gif"}},
    {"TIFF", {"tif", "tiff"}},
    {"WebP", {"webp"}},
    {"HEIF", {"heic", "heif", "avif"}},
};

bool hasExtension(const PictureFormat &format, const QByteArray &extension)
{
    const auto isIt = [&extension](const char *each) { return each && extension == each; };
    return std::any_of(std::begin(format.extensions), std::end(format.extensions), isIt);
}

QByteArray fileOf(const QImage &picture, const PictureFormat &format, int quality)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    // Nothing but a want of memory keeps it from being written.
    if (!picture.save(&buffer, format.name, quality))
        throw std::bad_alloc();
    return buffer.data();
}

QImage onWhite(const QImage &picture)
{
    QImage page(picture.size(), QImage::Format_RGB32);
    page.fill(Qt::white);
    QPainter(&page).drawImage(0, 0, picture);
    return page;
}

} // namespace

const PictureFormat *formatOfContent(const QByteArray &bytes)
{
    if (bytes.startsWith("\xff\xd8\xff"))
        return &usualFormat;
    return bytes.startsWith("BM") ? &bmpFormat : nullptr;
}

const PictureFormat *formatOfExtension(const QByteArray &extension)
{
    const QByteArray wanted = extension.toLower();
    for (const PictureFormat *format : {&usualFormat, &bmpFormat, &convertedFormat}) {
        if (hasExtension(*format, wanted))
            return format;
    }
    for (const PictureFormat &format : otherFormats) {
        if (hasExtension(format, wanted))
            return &format;
    }
    return nullptr;
}

const PictureFormat &jpegFormat()
{
    return usualFormat;
}

const PictureFormat &pngFormat()
{
    return convertedFormat;
}

QByteArray pngFile(const QImage &picture)
{
    return fileOf(picture, convertedFormat, -1);
}

QByteArray jpegFile(const QImage &picture)
{
    return fileOf(picture.hasAlphaChannel() ? onWhite(picture) : picture, usualFormat, jpegQuality);
}

qint64 bmpFileBytes(const QSize &size)
{
    return bmpHeaderBytes + bmpRowBytes(size.width()) * size.height();
}
