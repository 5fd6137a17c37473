#include "classic/pixel_formats.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr PixelFormat formats[] = {
    {1005, 80, 80, PixelLayout::Rgb565},
    {1007, 480, 864, PixelLayout::Rgb565},
    {1009, 42, 30, PixelLayout::Rgb565},
    {1013, 220, 176, PixelLayout::Rgb565BigEndian, PixelRotation::CounterClockwise},
    {1015, 130, 88, PixelLayout::Rgb565},
    {1019, 720, 480, PixelLayout::InterlacedUyvy},
    {1020, 220, 176, PixelLayout::Rgb565BigEndian, PixelRotation::CounterClockwise},
    {1023, 176, 132, PixelLayout::Rgb565BigEndian},
    {1024, 320, 240, PixelLayout::Rgb565},
    {1032, 42, 37, PixelLayout::Rgb565},
    {1036, 50, 41, PixelLayout::Rgb565},
    {1066, 64, 64, PixelLayout::Rgb565},
    {1067, 720, 480, PixelLayout::PlanarYuv420, PixelRotation::None, 691200},
    {1079, 80, 80, PixelLayout::Rgb565},
    {1081, 640, 480, PixelLayout::Jpeg},
    {1083, 240, 320, PixelLayout::Rgb565},
    {1087, 384, 384, PixelLayout::Rgb565},
    {1092, 80, 80, PixelLayout::Rgb565},
    {1093, 512, 512, PixelLayout::Rgb565},
    {3004, 56, 55, PixelLayout::Rgb555, PixelRotation::None, 8192},
    {3008, 640, 480, PixelLayout::Rgb555},
    {3009, 160, 120, PixelLayout::Rgb555},
    {3011, 80, 79, PixelLayout::Rgb555},
};

} // namespace

qint32 PixelFormat::pixelBytes() const
{
    switch (layout) {
    case PixelLayout::PlanarYuv420:
        return width * height * 3 / 2;
    case PixelLayout::Jpeg:
        return 0;
    default:
        return width * height * 2;
    }
}

const PixelFormat *findPixelFormat(qint32 id)
{
    const auto found = std::find_if(std::begin(formats), std::end(formats),
                                    [id](const PixelFormat &format) { return format.id == id; });
    return found == std::end(formats) ? nullptr : found;
}
