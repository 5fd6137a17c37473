#ifndef PHOTOLIB_TESTS_IOS_THUMBNAIL_FIXTURE_H
#define PHOTOLIB_TESTS_IOS_THUMBNAIL_FIXTURE_H

#include "ios/photo_manager.h"
#include "support/fake_host.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

inline bool operator==(const ThumbType &left, const ThumbType &right)
{
    return left.dataSize == right.dataSize && left.rowPixels == right.rowPixels &&
           left.height == right.height && left.width == right.width;
}

inline std::ostream &operator<<(std::ostream &out, const ThumbType &type)
{
    return out << '{' << type.dataSize << ", " << type.rowPixels << ", " << type.height << ", "
               << type.width << '}';
}

/// Packed thumbnail files, their records, and the images that must come of them.
namespace thumbnail {

/// A file that devices have, with what its records hold.
struct Format {
    std::string name; ///< of a test instance
    QByteArray path;
    ThumbType type;

    int recordSize() const { return type.dataSize + 28; }
};

inline std::ostream &operator<<(std::ostream &out, const Format &format)
{
    return out << format.name;
}

/// In the order in which they are tried.
inline const std::vector<Format> &formats()
{
    static const std::vector<Format> table = {
        {"F332x332", "/PhotoData/Thumbnails/332x332.ithmb", {223104, 336, 332, 332}},
        {"F240x240", "/PhotoData/Thumbnails/240x240.ithmb", {115200, 240, 240, 240}},
        {"F166x166", "/PhotoData/Thumbnails/166x166.ithmb", {55776, 168, 166, 166}},
        {"F158x158", "/PhotoData/Thumbnails/158x158.ithmb", {50560, 160, 158, 158}},
        {"F120x120", "/PhotoData/Thumbnails/120x120.ithmb", {28800, 120, 120, 120}},
        {"F3319", "/PhotoData/Thumbnails/3319.ithmb", {50240, 160, 157, 157}},
        {"F4031", "/PhotoData/Thumbnails/4031.ithmb", {28800, 120, 120, 120}},
        {"F3309", "/PhotoData/Thumbnails/3309.ithmb", {8192, 64, 64, 64}},
    };
    return table;
}

inline const Format &largest()
{
    return formats()[0];
}
inline const Format &middle()
{
    return formats()[4];
}
inline const Format &smallest()
{
    return formats()[7];
}

/// The picture that a trailer describes.
struct Extent {
    qint32 width;
    qint32 height;
};

inline void append32(QByteArray &bytes, quint32 value)
{
    for (int shift = 0; shift < 32; shift += 8)
        bytes.append(static_cast<char>((value >> shift) & 0xff));
}

inline void append16(QByteArray &bytes, quint32 value)
{
    bytes.append(static_cast<char>(value & 0xff));
    bytes.append(static_cast<char>((value >> 8) & 0xff));
}

/// Seven numbers, of which the others are there to be taken for the size by mistake.
inline QByteArray trailer(Extent extent)
{
    QByteArray bytes;
    for (const quint32 number : {7U, 9U, 11U, 13U})
        append32(bytes, number);
    append32(bytes, static_cast<quint32>(extent.width));
    append32(bytes, static_cast<quint32>(extent.height));
    append32(bytes, 5);
    return bytes;
}

/// Pixels of a whole frame, neighbours and rows different, all 16 bits in use.
inline QByteArray framePixels(const ThumbType &type, int seed = 0)
{
    QByteArray bytes;
    bytes.reserve(type.dataSize);
    for (int i = 0; i < type.dataSize / 2; ++i)
        append16(bytes, static_cast<quint32>(i + seed) * 40503U + 0x8001U);
    return bytes;
}

inline QByteArray record(const ThumbType &type, Extent extent, int seed = 0)
{
    return framePixels(type, seed) + trailer(extent);
}

/// Bytes of a row of the image: three a pixel, filled up to a multiple of four.
inline qint64 rowBytes(qint64 width)
{
    return (width * 3 + 3) / 4 * 4;
}

/// One row of the image out of `pixels`, from the pixel `first` on, without what fills it up.
inline QByteArray imageRow(const QByteArray &pixels, int first, int width)
{
    QByteArray row;
    row.reserve(width * 3);
    const auto *bytes = reinterpret_cast<const unsigned char *>(pixels.constData());
    for (int i = first; i < first + width; ++i) {
        const int value = bytes[2 * i] + 256 * bytes[2 * i + 1];
        row.append(static_cast<char>(value % 32 * 8));
        row.append(static_cast<char>(value / 32 % 32 * 8));
        row.append(static_cast<char>(value / 1024 % 32 * 8));
    }
    return row;
}

/// The rows of the image, the bottom one first, filled up with `padding`.
inline QByteArray imageRows(const QByteArray &pixels, const ThumbType &type, Extent extent,
                            char padding = '\0')
{
    QByteArray rows;
    const int left = (type.width - extent.width) / 2;
    const int bottom = (type.height - extent.height) / 2;
    for (int y = 0; y < extent.height; ++y) {
        const int stored = type.height - 1 - bottom - y;
        rows += imageRow(pixels, stored * type.rowPixels + left, extent.width);
        rows += QByteArray(static_cast<int>(rowBytes(extent.width)) - extent.width * 3, padding);
    }
    return rows;
}

/// The two headers, sizes taken modulo 2^32.
inline QByteArray imageHeaders(Extent extent)
{
    const auto imageSize = static_cast<quint32>(rowBytes(extent.width) * extent.height);
    QByteArray bytes("BM");
    append32(bytes, 54 + imageSize);
    append32(bytes, 0);
    append32(bytes, 54);
    append32(bytes, 40);
    append32(bytes, static_cast<quint32>(extent.width));
    append32(bytes, static_cast<quint32>(extent.height));
    append16(bytes, 1);
    append16(bytes, 24);
    append32(bytes, 0);
    append32(bytes, imageSize);
    for (int i = 0; i < 4; ++i)
        append32(bytes, 0);
    return bytes;
}

/// The whole image that comes of `record(type, extent, seed)`.
inline QByteArray image(const ThumbType &type, Extent extent, int seed = 0)
{
    return imageHeaders(extent) + imageRows(framePixels(type, seed), type, extent);
}

/// Compares long byte strings without printing them.
inline testing::AssertionResult sameBytes(const QByteArray &actual, const QByteArray &expected)
{
    if (actual == expected)
        return testing::AssertionSuccess();
    const auto difference =
        std::mismatch(actual.begin(), actual.end(), expected.begin(), expected.end());
    return testing::AssertionFailure()
           << actual.size() << " bytes instead of " << expected.size()
           << ", the first difference at " << difference.first - actual.begin();
}

} // namespace thumbnail

/// A block of exactly so many bytes that ends where its allocation ends, `shift` bytes off
/// the alignment of allocations.
class TightBlock
{
public:
    explicit TightBlock(std::size_t size, std::size_t shift = 0, unsigned char fill = 0)
        : m_size(size), m_shift(shift), m_block(new unsigned char[size + shift])
    {
        std::memset(m_block.get(), fill, size + shift);
    }
    explicit TightBlock(const QByteArray &bytes, std::size_t shift = 0)
        : TightBlock(static_cast<std::size_t>(bytes.size()), shift)
    {
        std::memcpy(data(), bytes.constData(), m_size);
    }

    unsigned char *data() { return m_block.get() + m_shift; }
    QByteArray bytes()
    {
        return QByteArray(reinterpret_cast<const char *>(data()), static_cast<int>(m_size));
    }

private:
    std::size_t m_size;
    std::size_t m_shift;
    std::unique_ptr<unsigned char[]> m_block;
};

/// A manager of an open device over a model made by hand: one photo, whose thumbnail is the
/// first record.
class ThumbnailFixture : public testing::Test
{
protected:
    using Lines = std::vector<std::string>;
    using Log = std::vector<LogLine>;

    static constexpr quint64 Key = 41;

    ThumbnailFixture() : manager(std::make_unique<photo_manager>(&device))
    {
        manager->m_pCameraDB = new CameraDB();
        photo = addAsset(Key, 0);
        manager->m_pVDev = vDevOpen(VDevDevice, FakeHost::DeviceName);
        host.clearRecords();
    }

    Camera_Data *addAsset(quint64 key, int index)
    {
        auto *asset = new Camera_Data();
        asset->db = manager->m_pCameraDB;
        asset->pk = key;
        asset->directory = QStringLiteral("DCIM/100APPLE");
        asset->fileName = QStringLiteral("IMG_0001.JPG");
        asset->thumbnailIndex = index;
        manager->m_pCameraDB->assets[key] = asset;
        return asset;
    }

    /// Takes the device away from the manager.
    void closeDevice()
    {
        vDevClose(manager->m_pVDev);
        manager->m_pVDev = nullptr;
        host.clearRecords();
    }

    struct Answer {
        int result;
        QByteArray out;
    };

    /// Asks for a thumbnail into a buffer that holds `before`.
    Answer request(const QByteArray &before = QByteArray(), quint64 key = Key)
    {
        Answer answer = {-2, before};
        answer.result = manager->getPhotoThumbnail(key, answer.out);
        return answer;
    }

    /// A device path of the ready JPEG `name` of the photo.
    static QByteArray readyPath(const char *name)
    {
        return QByteArray("/PhotoData/Thumbnails/V2/DCIM/100APPLE/IMG_0001.JPG/") + name;
    }

    static std::string openLine(const QByteArray &path, const std::string &handle = "null")
    {
        return "vFileOpen(dev1, \"" + path.toStdString() + "\", 0) -> " + handle;
    }

    /// The vain search for a ready JPEG of the photo.
    static Lines readySearch()
    {
        return {openLine(readyPath("5005.JPG")), openLine(readyPath("5003.JPG")),
                openLine(readyPath("3507.JPG")), openLine(readyPath("3505.JPG"))};
    }

    FakeHost host;
    FakeIPod device;
    std::unique_ptr<photo_manager> manager;
    Camera_Data *photo = nullptr;
};

#endif // PHOTOLIB_TESTS_IOS_THUMBNAIL_FIXTURE_H
