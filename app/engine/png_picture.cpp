#include "engine/png_picture.h"

#include "base/cancel_token.h"

#include <QColorSpace>
#include <QtEndian>

#include <png.h>

#include <csetjmp>
#include <cstring>
#include <new>
#include <vector>

namespace {

// A file that is being read.
struct Reading {
    const QByteArray &bytes;
    const CancelToken &cancel;
    QImage picture;
    std::vector<png_bytep> rows;
    size_t position = 0;
    bool isOpaque = false;

    // Whether there are that many more.
    bool take(png_bytep to, size_t count)
    {
        if (cancel.isCancelled() || count > size_t(bytes.size()) - position)
            return false;
        std::memcpy(to, bytes.constData() + position, count);
        position += count;
        return true;
    }

    // What is made for the picture lies where the library can jump without harm. False without
    // memory.
    bool makeRoom(const QSize &size)
    {
        try {
            picture = QImage(size, QImage::Format_ARGB32);
            rows.clear();
            for (int y = 0; !picture.isNull() && y < size.height(); ++y)
                rows.push_back(picture.scanLine(y));
        } catch (const std::bad_alloc &) {
            picture = QImage();
        }
        return !picture.isNull();
    }
};

[[noreturn]] void fail(png_structp png, png_const_charp)
{
    png_longjmp(png, 1);
}

void ignoreWarning(png_structp, png_const_charp) {}

void readBytes(png_structp png, png_bytep bytes, png_size_t count)
{
    if (!static_cast<Reading *>(png_get_io_ptr(png))->take(bytes, count))
        png_error(png, "the end");
}

// Owns what the library needs for one file.
class PngStructs
{
public:
    PngStructs()
        : png(png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, fail, ignoreWarning)),
          info(png ? png_create_info_struct(png) : nullptr)
    {
        if (!info) {
            png_destroy_read_struct(&png, nullptr, nullptr);
            throw std::bad_alloc();
        }
    }

    ~PngStructs() { png_destroy_read_struct(&png, &info, nullptr); }

    PngStructs(const PngStructs &) = delete;
    PngStructs &operator=(const PngStructs &) = delete;

    png_structp png;
    png_infop info;
};

// All kinds of pixels become 32 bits in the order of QImage.
void askForArgb(png_structp png)
{
    constexpr png_uint_32 opaque = 0xff;
    png_set_expand(png);
    png_set_scale_16(png);
    png_set_gray_to_rgb(png);
    const bool isLittleEndian = Q_BYTE_ORDER == Q_LITTLE_ENDIAN;
    png_set_add_alpha(png, opaque, isLittleEndian ? PNG_FILLER_AFTER : PNG_FILLER_BEFORE);
    if (isLittleEndian)
        png_set_bgr(png);
    else
        png_set_swap_alpha(png);
    png_set_interlace_handling(png);
}

bool isOpaque(png_structp png, png_infop info)
{
    return !(png_get_color_type(png, info) & PNG_COLOR_MASK_ALPHA) &&
           !png_get_valid(png, info, PNG_INFO_tRNS);
}

// Whether the file is whole. The library jumps out of what fails, so nothing in here may need to be
// destroyed.
bool readFile(png_structp png, png_infop info, Reading &reading)
{
    if (setjmp(png_jmpbuf(png)))
        return false;
    png_set_read_fn(png, &reading, readBytes);
    png_read_info(png, info);
    reading.isOpaque = isOpaque(png, info);
    askForArgb(png);
    png_read_update_info(png, info);
    const QSize size(int(png_get_image_width(png, info)), int(png_get_image_height(png, info)));
    const size_t rowBytes = png_get_rowbytes(png, info);
    if (rowBytes != size_t(size.width()) * sizeof(QRgb) || !reading.makeRoom(size))
        return false;
    png_read_image(png, reading.rows.data());
    png_read_end(png, nullptr);
    return true;
}

QByteArray profileIn(png_structp png, png_infop info)
{
    png_charp name = nullptr;
    int compression = 0;
    png_bytep profile = nullptr;
    png_uint_32 bytes = 0;
    if (!png_get_iCCP(png, info, &name, &compression, &profile, &bytes))
        return QByteArray();
    return QByteArray(reinterpret_cast<const char *>(profile), int(bytes));
}

} // namespace

QSize claimedPngSize(const QByteArray &bytes)
{
    constexpr int head = 24; // signature, length and name of the first part, width and height
    constexpr quint32 most = 1 << 30;
    if (bytes.size() < head || bytes.mid(12, 4) != "IHDR")
        return QSize();
    const auto width = qFromBigEndian<quint32>(bytes.constData() + 16);
    const auto height = qFromBigEndian<quint32>(bytes.constData() + 20);
    return {int(qMin(width, most)), int(qMin(height, most))};
}

QImage decodedPng(const QByteArray &bytes, const CancelToken &cancel)
{
    Reading reading = {bytes, cancel, QImage(), {}};
    const PngStructs structs;
    if (!readFile(structs.png, structs.info, reading))
        return QImage();
    QImage picture = reading.isOpaque
                         ? std::move(reading.picture).convertToFormat(QImage::Format_RGB32)
                         : reading.picture;
    const QByteArray profile = profileIn(structs.png, structs.info);
    if (!profile.isEmpty())
        picture.setColorSpace(QColorSpace::fromIccProfile(profile));
    return picture;
}
