#include "engine/png_file.h"

#include "base/cancel_token.h"
#include "base/error.h"

#include <QImage>

#include <png.h>

#include <csetjmp>
#include <exception>
#include <new>
#include <vector>

namespace {

// A picture on its way to a sink. No exception may pass the functions of the library, which is C:
// what the sink throws is kept, and nothing is given to it any more.
struct Writing {
    const QImage &picture; // of 32 bits a pixel
    const CancelToken &cancel;
    const ByteSink &sink;
    std::vector<png_byte> row;
    std::exception_ptr failure;

    void write(const png_byte *bytes, std::size_t count)
    {
        if (isOver())
            return;
        try {
            sink(reinterpret_cast<const char *>(bytes), static_cast<qint64>(count));
        } catch (...) {
            failure = std::current_exception();
        }
    }

    void fillRow(int y)
    {
        const auto *const pixels = reinterpret_cast<const QRgb *>(picture.constScanLine(y));
        png_byte *byte = row.data();
        for (int x = 0; x < picture.width(); ++x) {
            *byte++ = png_byte(qRed(pixels[x]));
            *byte++ = png_byte(qGreen(pixels[x]));
            *byte++ = png_byte(qBlue(pixels[x]));
        }
    }

    bool isOver() const { return failure || cancel.isCancelled(); }
};

void writeBytes(png_structp png, png_bytep bytes, png_size_t count)
{
    static_cast<Writing *>(png_get_io_ptr(png))->write(bytes, count);
}

void flushBytes(png_structp) {}

[[noreturn]] void fail(png_structp png, png_const_charp)
{
    png_longjmp(png, 1);
}

void ignoreWarning(png_structp, png_const_charp) {}

// Owns what the library needs for one file.
class PngStructs
{
public:
    PngStructs()
        : png(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, fail, ignoreWarning)),
          info(png ? png_create_info_struct(png) : nullptr)
    {
        if (!info) {
            png_destroy_write_struct(&png, nullptr);
            throw std::bad_alloc();
        }
    }

    ~PngStructs() { png_destroy_write_struct(&png, &info); }

    PngStructs(const PngStructs &) = delete;
    PngStructs &operator=(const PngStructs &) = delete;

    png_structp png;
    png_infop info;
};

// Whether the file is complete. The library jumps out of what fails, so nothing in here may need to
// be destroyed.
bool writeFile(png_structp png, png_infop info, Writing &writing)
{
    constexpr int level = 4; // 2 % larger than with the usual 6, in two thirds of the time
    constexpr int bitsOfColor = 8;
    if (setjmp(png_jmpbuf(png)))
        return false;
    png_set_write_fn(png, &writing, writeBytes, flushBytes);
    png_set_compression_level(png, level);
    png_set_IHDR(png, info, png_uint_32(writing.picture.width()),
                 png_uint_32(writing.picture.height()), bitsOfColor, PNG_COLOR_TYPE_RGB,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    for (int y = 0; y < writing.picture.height(); ++y) {
        if (writing.isOver())
            return false;
        writing.fillRow(y);
        png_write_row(png, writing.row.data());
    }
    png_write_end(png, info);
    return true;
}

} // namespace

void writePng(const QImage &picture, const CancelToken &cancel, const ByteSink &sink)
{
    const QImage rgb = picture.convertToFormat(QImage::Format_RGB32);
    constexpr std::size_t pixelBytes = 3;
    Writing writing = {rgb, cancel, sink,
                       std::vector<png_byte>(std::size_t(rgb.width()) * pixelBytes), nullptr};
    const PngStructs structs;
    const bool isComplete = !rgb.isNull() && writeFile(structs.png, structs.info, writing);
    if (writing.failure)
        std::rethrow_exception(writing.failure);
    if (!isComplete && cancel.isCancelled())
        throw Error(Error::Cancelled, "interrupted");
    if (!isComplete)
        throw std::bad_alloc(); // nothing else can be wrong with an image
}
