#include "thumbnail_files.h"

#include "ios/bmp_header.h"

#include <QtEndian>

#include <filesystem>
#include <fstream>
#include <random>

namespace {

const std::size_t trailerBytes = sizeof PhotoThumb().info;

} // namespace

std::size_t ThumbnailFormat::recordBytes() const
{
    return static_cast<std::size_t>(type.dataSize) + trailerBytes;
}

std::size_t ThumbnailFormat::imageBytes() const
{
    return static_cast<std::size_t>(bmp::rowBytes(type.width) * type.height);
}

std::size_t ThumbnailFormat::resultBytes() const
{
    return bmp::headerBytes + imageBytes();
}

const std::vector<ThumbnailFormat> &thumbnailFormats()
{
    static const std::vector<ThumbnailFormat> formats = {
        {"332x332.ithmb", {223104, 336, 332, 332}}, {"240x240.ithmb", {115200, 240, 240, 240}},
        {"166x166.ithmb", {55776, 168, 166, 166}},  {"158x158.ithmb", {50560, 160, 158, 158}},
        {"120x120.ithmb", {28800, 120, 120, 120}},  {"3319.ithmb", {50240, 160, 157, 157}},
        {"4031.ithmb", {28800, 120, 120, 120}},     {"3309.ithmb", {8192, 64, 64, 64}},
    };
    return formats;
}

std::vector<unsigned char> makeRecord(const ThumbnailFormat &format, unsigned seed)
{
    std::mt19937 noise(seed);
    std::vector<unsigned char> record(format.recordBytes());
    for (unsigned char &byte : record)
        byte = static_cast<unsigned char>(noise());
    unsigned char *const trailer = record.data() + format.type.dataSize;
    qToLittleEndian<qint32>(format.type.width, trailer + 16);
    qToLittleEndian<qint32>(format.type.height, trailer + 20);
    return record;
}

void writeThumbnails(const std::string &root, const ThumbnailFormat &format, int count)
{
    const std::string folder = root + "/PhotoData/Thumbnails/";
    std::filesystem::create_directories(folder);
    std::ofstream file(folder + format.file, std::ios::binary);
    for (int i = 0; i < count; ++i) {
        const std::vector<unsigned char> record = makeRecord(format, static_cast<unsigned>(i));
        file.write(reinterpret_cast<const char *>(record.data()),
                   static_cast<std::streamsize>(record.size()));
    }
}
