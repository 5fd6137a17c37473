#include "engine/heif_picture.h"

#include "base/cancel_token.h"
#include "engine/separate_process.h"

#include <QColorSpace>
#include <QtEndian>

#include <libheif/heif.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

namespace {

constexpr int pixelBytes = 3;
constexpr size_t mostProfileBytes = 64 << 10;

// What the other process hands over, before the rows of the picture. It may have been led to write
// anything.
struct HandedPicture {
    qint32 width;
    qint32 height; // 0 until all is written
    quint32 profileBytes;
    char profile[mostProfileBytes];
};

template <class Handle, auto release>
struct Releaser {
    void operator()(Handle *handle) const { release(handle); }
};

using Context = std::unique_ptr<heif_context, Releaser<heif_context, heif_context_free>>;
using Handle =
    std::unique_ptr<heif_image_handle, Releaser<heif_image_handle, heif_image_handle_release>>;
using Image = std::unique_ptr<heif_image, Releaser<heif_image, heif_image_release>>;
using Options = std::unique_ptr<heif_decoding_options,
                                Releaser<heif_decoding_options, heif_decoding_options_free>>;

struct Undecodable {
};

void require(bool condition)
{
    if (!condition)
        throw Undecodable();
}

void require(const heif_error &error)
{
    require(error.code == heif_error_Ok);
}

QSize sizeOf(const Handle &handle)
{
    return {heif_image_handle_get_width(handle.get()), heif_image_handle_get_height(handle.get())};
}

int longerEdge(const QSize &size)
{
    return std::max(size.width(), size.height());
}

qint64 pixelsOf(const QSize &size)
{
    return qint64(size.width()) * size.height();
}

Handle primaryHandle(const Context &context)
{
    heif_image_handle *handle = nullptr;
    require(heif_context_get_primary_image_handle(context.get(), &handle));
    return Handle(handle);
}

Handle thumbnailOf(const Handle &picture, heif_item_id id)
{
    heif_image_handle *handle = nullptr;
    const heif_error error = heif_image_handle_get_thumbnail(picture.get(), id, &handle);
    return Handle(error.code == heif_error_Ok ? handle : nullptr);
}

// Whether both are the same picture in two sizes, as far as that shows: within a pixel.
bool hasShapeOf(const QSize &small, const QSize &large)
{
    const double height = double(large.height()) * small.width() / large.width();
    return std::abs(height - small.height()) <= 1;
}

// The smallest of the picture and the thumbnails in its file that is large enough: a fraction of
// the work, where a phone has put one in.
Handle suitableHandle(Handle picture, int longestEdge)
{
    constexpr int most = 16;
    heif_item_id ids[most] = {};
    const int count = heif_image_handle_get_list_of_thumbnail_IDs(picture.get(), ids, most);
    Handle best;
    for (int i = 0; i < std::min(count, most); ++i) {
        Handle thumbnail = thumbnailOf(picture, ids[i]);
        if (thumbnail && longerEdge(sizeOf(thumbnail)) >= longestEdge &&
            hasShapeOf(sizeOf(thumbnail), sizeOf(picture)) &&
            (!best || longerEdge(sizeOf(thumbnail)) < longerEdge(sizeOf(best))))
            best = std::move(thumbnail);
    }
    return best ? std::move(best) : std::move(picture);
}

Image decodedImage(const Handle &handle)
{
    const Options options(heif_decoding_options_alloc());
    require(options != nullptr);
    options->convert_hdr_to_8bit = 1;
    heif_image *image = nullptr;
    require(heif_decode_image(handle.get(), &image, heif_colorspace_RGB,
                              heif_chroma_interleaved_RGB, options.get()));
    return Image(image);
}

void handProfile(HandedPicture *handed, const Handle &handle)
{
    const size_t bytes = heif_image_handle_get_raw_color_profile_size(handle.get());
    if (bytes == 0 || bytes > mostProfileBytes)
        return;
    const heif_error error = heif_image_handle_get_raw_color_profile(handle.get(), handed->profile);
    handed->profileBytes = error.code == heif_error_Ok ? quint32(bytes) : 0;
}

// Rows of a decoded picture, 3 bytes a pixel.
struct Rows {
    const uchar *first;
    int stride;
    QSize size;
};

Rows rowsOf(const Image &image)
{
    Rows rows = {};
    rows.first = heif_image_get_plane_readonly(image.get(), heif_channel_interleaved, &rows.stride);
    rows.size = {heif_image_get_width(image.get(), heif_channel_interleaved),
                 heif_image_get_height(image.get(), heif_channel_interleaved)};
    require(rows.first && !rows.size.isEmpty() &&
            rows.stride >= qint64(rows.size.width()) * pixelBytes);
    return rows;
}

// How many columns and rows become one each, so that what is left is still as large as wanted.
QSize stepsFor(const QSize &size, int longestEdge)
{
    const int step = std::max(1, longerEdge(size) / longestEdge);
    return QSize(step, step).boundedTo(size);
}

// Adds up `count` pixels; returns where the next one is.
const uchar *addPixels(unsigned *sums, const uchar *byte, int count)
{
    for (; count > 0; --count) {
        for (int channel = 0; channel < pixelBytes; ++channel)
            sums[channel] += *byte++;
    }
    return byte;
}

// The means of the fields of `steps` in the rows from `from` on, `width` of them.
void reduceRows(uchar *to, int width, const uchar *from, int stride, const QSize &steps)
{
    const unsigned area = unsigned(steps.width()) * unsigned(steps.height());
    std::vector<unsigned> sums(size_t(width) * pixelBytes);
    for (int y = 0; y < steps.height(); ++y, from += stride) {
        const uchar *byte = from;
        for (size_t x = 0; x < sums.size(); x += pixelBytes)
            byte = addPixels(&sums[x], byte, steps.width());
    }
    for (size_t i = 0; i < sums.size(); ++i)
        to[i] = uchar((sums[i] + area / 2) / area);
}

// What is left over at the right and the bottom is less than a pixel, and left out.
void handRows(HandedPicture *handed, const Rows &rows, int longestEdge)
{
    const QSize steps = stepsFor(rows.size, longestEdge);
    const int width = rows.size.width() / steps.width();
    const int height = rows.size.height() / steps.height();
    auto *to = reinterpret_cast<uchar *>(handed + 1);
    const uchar *from = rows.first;
    for (int y = 0; y < height; ++y) {
        reduceRows(to, width, from, rows.stride, steps);
        to += qint64(width) * pixelBytes;
        from += qint64(rows.stride) * steps.height();
    }
    handed->width = width;
    handed->height = height;
}

// In the other process.
void handOver(HandedPicture *handed, const QByteArray &bytes, int longestEdge)
{
    const Context context(heif_context_alloc());
    require(context != nullptr);
    heif_context_set_max_decoding_threads(context.get(), 0);
    require(heif_context_read_from_memory_without_copy(context.get(), bytes.constData(),
                                                       size_t(bytes.size()), nullptr));
    const Handle handle = suitableHandle(primaryHandle(context), longestEdge);
    const Image image = decodedImage(handle);
    handProfile(handed, handle);
    handRows(handed, rowsOf(image), longestEdge);
}

size_t roomFor(int longestEdge)
{
    const auto edge = size_t(2) * size_t(longestEdge);
    return sizeof(HandedPicture) + edge * edge * pixelBytes;
}

// The picture that was handed over, if it is one.
QImage takenPicture(const HandedPicture &handed, int longestEdge)
{
    const QSize size(handed.width, handed.height);
    if (size.isEmpty() || longerEdge(size) >= 2 * longestEdge)
        return QImage();
    const auto *const pixels = reinterpret_cast<const uchar *>(&handed + 1);
    const QImage shared(pixels, size.width(), size.height(), size.width() * pixelBytes,
                        QImage::Format_RGB888);
    QImage picture = shared.convertToFormat(QImage::Format_RGB32);
    if (picture.isNull())
        throw std::bad_alloc();
    const size_t profileBytes = std::min<size_t>(handed.profileBytes, mostProfileBytes);
    if (profileBytes > 0)
        picture.setColorSpace(
            QColorSpace::fromIccProfile(QByteArray(handed.profile, int(profileBytes))));
    return picture;
}

// Planes of 16 bits, copies of them for the tiles and the whole, and red, green and blue.
ProcessLimits limitsFor(const QByteArray &bytes)
{
    constexpr qint64 atAll = qint64(256) << 20;
    constexpr qint64 ofAPixel = 32;
    constexpr int seconds = 30; // ten times what 48 megapixels take
    return {seconds, atAll + ofAPixel * pixelsOf(claimedHeifSize(bytes))};
}

// Name, version and flags, width, height.
constexpr int boxOfSize = 16;

QSize sizeInBox(const QByteArray &box)
{
    constexpr quint32 most = 1 << 30;
    if (box.size() < boxOfSize)
        return QSize(0, 0);
    const auto width = qFromBigEndian<quint32>(box.constData() + 8);
    const auto height = qFromBigEndian<quint32>(box.constData() + 12);
    return {int(std::min(width, most)), int(std::min(height, most))};
}

bool isBrandOfPictures(const QByteArray &brand)
{
    for (const char *const known :
         {"heic", "heix", "heim", "heis", "hevc", "hevx", "mif1", "msf1", "avif", "avis"}) {
        if (brand == known)
            return true;
    }
    return false;
}

} // namespace

// The names of formats that the file follows stand in its first box, four bytes each: the main one,
// a version, and the others.
bool isHeif(const QByteArray &start)
{
    constexpr int firstBrand = 8;
    constexpr int version = 12;
    if (start.size() < version || start.mid(4, 4) != "ftyp")
        return false;
    const quint32 boxBytes = qFromBigEndian<quint32>(start.constData());
    const int end = int(std::min<quint32>(boxBytes, quint32(start.size())));
    for (int i = firstBrand; i + 4 <= end; i += 4) {
        if (i != version && isBrandOfPictures(start.mid(i, 4)))
            return true;
    }
    return false;
}

QSize claimedHeifSize(const QByteArray &bytes)
{
    QSize largest(0, 0);
    for (int at = bytes.indexOf("ispe"); at >= 0; at = bytes.indexOf("ispe", at + 1)) {
        const QSize size = sizeInBox(bytes.mid(at, boxOfSize));
        if (pixelsOf(size) > pixelsOf(largest))
            largest = size;
    }
    return largest;
}

QImage decodedHeif(const QByteArray &bytes, int longestEdge, const CancelToken &cancel)
{
    const CommonMemory memory(roomFor(longestEdge));
    auto *const handed = static_cast<HandedPicture *>(memory.data());
    const auto decode = [&] { handOver(handed, bytes, longestEdge); };
    if (runSeparately(limitsFor(bytes), cancel, decode) != SeparateEnd::Done)
        return QImage();
    return takenPicture(*handed, longestEdge);
}
