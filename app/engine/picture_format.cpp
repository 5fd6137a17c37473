#include "engine/picture_format.h"

#include <QBuffer>
#include <QImage>

#include <algorithm>
#include <iterator>

namespace {

constexpr PictureFormat jpegFormat = {"JPEG", {"jpg", "jpeg", "jpe", "jfif"}};
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

} // namespace

const PictureFormat *formatOfContent(const QByteArray &bytes)
{
    if (bytes.startsWith("\xff\xd8\xff"))
        return &jpegFormat;
    return bytes.startsWith("BM") ? &bmpFormat : nullptr;
}

const PictureFormat *formatOfExtension(const QByteArray &extension)
{
    const QByteArray wanted = extension.toLower();
    for (const PictureFormat *format : {&jpegFormat, &bmpFormat, &convertedFormat}) {
        if (hasExtension(*format, wanted))
            return format;
    }
    for (const PictureFormat &format : otherFormats) {
        if (hasExtension(format, wanted))
            return &format;
    }
    return nullptr;
}

const PictureFormat &pngFormat()
{
    return convertedFormat;
}

QByteArray pngFile(const QImage &picture)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    // Nothing but a want of memory keeps it from being written.
    if (!picture.save(&buffer, convertedFormat.name))
        throw std::bad_alloc();
    return buffer.data();
}

qint64 bmpFileBytes(const QSize &size)
{
    return bmpHeaderBytes + bmpRowBytes(size.width()) * size.height();
}
