#include "support/picture_files.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QTransform>
#include <QtEndian>

#include <libheif/heif.h>

#include <algorithm>
#include <memory>

namespace {

QByteArray bigEndian(quint32 number)
{
    QByteArray bytes(4, '\0');
    qToBigEndian(number, bytes.data());
    return bytes;
}

quint32 crcOf(const QByteArray &bytes)
{
    quint32 crc = 0xffffffff;
    for (const char byte : bytes) {
        crc ^= uchar(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ ((crc & 1) ? 0xedb88320 : 0);
    }
    return ~crc;
}

QByteArray pngChunk(const QByteArray &kind, const QByteArray &content)
{
    return bigEndian(quint32(content.size())) + kind + content + bigEndian(crcOf(kind + content));
}

QByteArray exifBlock(int code)
{
    const QByteArray header("MM\0\x2a\0\0\0\x08\0\x01", 10);       // big-endian, one entry
    const QByteArray orientation("\x01\x12\0\x03\0\0\0\x01\0", 9); // a 16-bit number
    return QByteArray("Exif\0\0", 6) + header + orientation + char(code) + QByteArray(6, '\0');
}

template <class Handle, auto release>
struct Releaser {
    void operator()(Handle *handle) const { release(handle); }
};

using Context = std::unique_ptr<heif_context, Releaser<heif_context, heif_context_free>>;
using Encoder = std::unique_ptr<heif_encoder, Releaser<heif_encoder, heif_encoder_release>>;
using Image = std::unique_ptr<heif_image, Releaser<heif_image, heif_image_release>>;
using Handle =
    std::unique_ptr<heif_image_handle, Releaser<heif_image_handle, heif_image_handle_release>>;
using Options = std::unique_ptr<heif_encoding_options,
                                Releaser<heif_encoding_options, heif_encoding_options_free>>;

void expectOk(const heif_error &error)
{
    EXPECT_EQ(heif_error_Ok, error.code) << error.message;
}

Image heifImage(const QImage &picture)
{
    heif_image *made = nullptr;
    expectOk(heif_image_create(picture.width(), picture.height(), heif_colorspace_RGB,
                               heif_chroma_interleaved_RGB, &made));
    Image image(made);
    expectOk(
        heif_image_add_plane(made, heif_channel_interleaved, picture.width(), picture.height(), 8));
    int stride = 0;
    uchar *const plane = heif_image_get_plane(made, heif_channel_interleaved, &stride);
    const QImage rgb = picture.convertToFormat(QImage::Format_RGB888);
    for (int y = 0; y < rgb.height(); ++y)
        std::copy_n(rgb.constScanLine(y), 3 * rgb.width(), plane + qint64(y) * stride);
    return image;
}

Encoder heicEncoder(const Context &context)
{
    heif_encoder *encoder = nullptr;
    const heif_error error =
        heif_context_get_encoder_for_format(context.get(), heif_compression_HEVC, &encoder);
    return Encoder(error.code == heif_error_Ok ? encoder : nullptr);
}

heif_error appendTo(heif_context *, const void *data, size_t size, void *file)
{
    static_cast<QByteArray *>(file)->append(static_cast<const char *>(data), int(size));
    return {heif_error_Ok, heif_suberror_Unspecified, ""};
}

void addThumbnail(const Context &context, const Handle &picture, const Encoder &encoder,
                  const Options &options, const QImage &other)
{
    const int edge = std::max(other.width(), other.height()) / 3;
    heif_image_handle *made = nullptr;
    expectOk(heif_context_encode_thumbnail(context.get(), heifImage(other).get(), picture.get(),
                                           encoder.get(), options.get(), edge, &made));
    Handle(made).reset();
}

} // namespace

QByteArray pictureFile(const QImage &picture, const char *format)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(picture.save(&buffer, format, 95));
    return buffer.data();
}

QImage storedWith(const QImage &upright, int code)
{
    const QImage onRightSide = upright.transformed(QTransform().rotate(90));
    switch (code) {
    case 2:
        return upright.mirrored(true, false);
    case 3:
        return upright.mirrored(true, true);
    case 4:
        return upright.mirrored(false, true);
    case 5:
        return onRightSide.mirrored(true, false);
    case 6:
        return onRightSide.mirrored(true, true);
    case 7:
        return onRightSide.mirrored(false, true);
    case 8:
        return onRightSide;
    default:
        return upright;
    }
}

QByteArray jpegHeld(const QImage &upright, int code)
{
    const QByteArray jpeg = pictureFile(storedWith(upright, code), "JPEG");
    return jpeg.left(2) + jpegSegment('\xe1', exifBlock(code)) + jpeg.mid(2);
}

QByteArray heicFile(const QImage &picture, int code, const QImage &other)
{
    const Context context(heif_context_alloc());
    const Encoder encoder = heicEncoder(context);
    if (!encoder)
        return QByteArray();
    expectOk(heif_encoder_set_lossy_quality(encoder.get(), 90));
    const Options options(heif_encoding_options_alloc());
    options->image_orientation = heif_orientation(code);
    heif_image_handle *made = nullptr;
    expectOk(heif_context_encode_image(context.get(), heifImage(picture).get(), encoder.get(),
                                       options.get(), &made));
    const Handle handle(made);
    if (!other.isNull())
        addThumbnail(context, handle, encoder, options, other);
    QByteArray file;
    heif_writer writer = {1, appendTo};
    expectOk(heif_context_write(context.get(), &writer, &file));
    return file;
}

QByteArray hollowPng(quint32 width, quint32 height)
{
    const QByteArray eightBitsOfRgb("\x08\x02\0\0\0", 5);
    return "\x89PNG\r\n\x1a\n" +
           pngChunk("IHDR", bigEndian(width) + bigEndian(height) + eightBitsOfRgb) +
           pngChunk("IDAT", QByteArray("\x78\x9c", 2)) + pngChunk("IEND", QByteArray());
}

QByteArray interlacedPng(const QImage &picture)
{
    struct Pass {
        int left, top, columns, rows; // where it begins, and the steps to its next pixels
    };
    constexpr Pass passes[] = {{0, 0, 8, 8}, {4, 0, 8, 8}, {0, 4, 4, 8}, {2, 0, 4, 4},
                               {0, 2, 2, 4}, {1, 0, 2, 2}, {0, 1, 1, 2}};
    QByteArray rows;
    for (const Pass &pass : passes) {
        for (int y = pass.top; y < picture.height(); y += pass.rows) {
            rows += '\0'; // not filtered
            for (int x = pass.left; x < picture.width(); x += pass.columns)
                rows += char(qGray(picture.pixel(x, y)));
        }
    }
    const QByteArray size =
        bigEndian(quint32(picture.width())) + bigEndian(quint32(picture.height()));
    return "\x89PNG\r\n\x1a\n" + pngChunk("IHDR", size + QByteArray("\x08\0\0\0\x01", 5)) +
           pngChunk("IDAT", qCompress(rows).mid(4)) + pngChunk("IEND", QByteArray());
}

// The length counts itself.
QByteArray jpegSegment(char marker, const QByteArray &content)
{
    const int length = content.size() + 2;
    return QByteArray("\xff") + marker + char(length >> 8) + char(length & 0xff) + content;
}

QByteArray progressiveJpeg(int scans)
{
    const QByteArray oneCodeOfOneBit = QByteArray(1, '\1') + QByteArray(15, '\0');
    const QByteArray means = QByteArray("\x01\x01\x00\x00\x00\x00", 6);
    const QByteArray others = QByteArray("\x01\x01\x00\x01\x3f\x00", 6);
    // Four codes, a bit each, for "no difference" and "nothing in this block".
    const QByteArray codes = "\x0f";
    return QByteArray("\xff\xd8") + jpegSegment('\xdb', '\0' + QByteArray(64, '\1')) +
           jpegSegment('\xc2', QByteArray("\x08\x00\x10\x00\x10\x01\x01\x11\x00", 9)) +
           jpegSegment('\xc4', '\0' + oneCodeOfOneBit + '\0') +
           jpegSegment('\xc4', '\x10' + oneCodeOfOneBit + '\0') + jpegSegment('\xda', means) +
           codes + (jpegSegment('\xda', others) + codes).repeated(scans - 1) + "\xff\xd9";
}
