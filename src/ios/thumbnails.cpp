#include "host/device_files.h"
#include "host/exception_barrier.h"
#include "host/host_log.h"
#include "ios/bmp_header.h"
#include "ios/open_file.h"
#include "ios/photo_manager.h"
#include "ios/thread_buffer.h"
#include "ios/thumbnail_rows.h"
#include "ios/thumbnail_trailer.h"

#include <limits>

namespace {

struct thumbnail_file {
    const char *path;
    ThumbType type;
};

// The largest pictures first, then the formats of older systems.
const thumbnail_file thumbnailFiles[] = {
    {"/PhotoData/Thumbnails/332x332.ithmb", {223104, 336, 332, 332}},
    {"/PhotoData/Thumbnails/240x240.ithmb", {115200, 240, 240, 240}},
    {"/PhotoData/Thumbnails/166x166.ithmb", {55776, 168, 166, 166}},
    {"/PhotoData/Thumbnails/158x158.ithmb", {50560, 160, 158, 158}},
    {"/PhotoData/Thumbnails/120x120.ithmb", {28800, 120, 120, 120}},
    {"/PhotoData/Thumbnails/3319.ithmb", {50240, 160, 157, 157}},
    {"/PhotoData/Thumbnails/4031.ithmb", {28800, 120, 120, 120}},
    {"/PhotoData/Thumbnails/3309.ithmb", {8192, 64, 64, 64}},
};

// The ready pictures of one asset, in the order in which they are taken.
const char *const readyPictures[] = {"5005.JPG", "5003.JPG", "3507.JPG", "3505.JPG"};

// Ready pictures take some hundred kilobytes. Above this one is not read, or a file of holes would
// take the host's memory.
const qint64 mostReadyBytes = 67108864;

// No file system has paths that come near it.
const qint64 mostPathLetters = 4194304;

// What a byte array can hold, less some for its own administration.
const int mostBytes = std::numeric_limits<int>::max() - 1024;

// Of these cells there are records of four bytes a pixel as well, under the same file's name.
const ThumbType narrowCell = {28800, 120, 120, 120};
const ThumbType wideCell = {57600, 120, 120, 120};

bool isLayout(const ThumbType &type, const ThumbType &expected)
{
    return type.dataSize == expected.dataSize && type.rowPixels == expected.rowPixels &&
           type.height == expected.height && type.width == expected.width;
}

bool isWide(const ThumbType &type)
{
    return isLayout(type, wideCell);
}

int bytesOfPixel(const ThumbType &type)
{
    return isWide(type) ? 4 : 2;
}

// Where a picture lies in the middle of its frame, in stored pixels.
struct placement {
    placement(const ThumbType &type, qint64 width, qint64 height)
        : rowPixels(type.rowPixels), left((type.width - width) / 2),
          bottomRow(type.height - 1 - (type.height - height) / 2)
    {
    }

    // Of the first pixel of the output row `y`, the bottom one being 0.
    qint64 pixel(qint64 y) const { return (bottomRow - y) * rowPixels + left; }

    qint64 rowPixels;
    qint64 left;
    qint64 bottomRow;
};

// The picture's size comes from the device and may be anything.
bool liesInPixels(const ThumbType &type, qint64 width, qint64 height)
{
    if (width <= 0 || height <= 0)
        return width >= 0; // nothing is read
    const placement place(type, width, height);
    const qint64 pixels = type.dataSize / bytesOfPixel(type);
    return place.pixel(height - 1) >= 0 && place.pixel(0) <= pixels - width;
}

// Of the rows of a BMP image. A picture of no or negative height has none, although its
// headers tell of their size.
qint64 imageBytes(qint64 width, qint64 height)
{
    return width > 0 && height > 0 ? bmp::rowBytes(width) * height : 0;
}

// What fills the rows up to a multiple of 4 bytes. The rest is about to be written.
void clearRowEnds(unsigned char *rows, qint64 width, qint64 height)
{
    const qint64 rowBytes = bmp::rowBytes(width);
    const qint64 pixelBytes = width * 3;
    for (qint64 y = 0; pixelBytes < rowBytes && y < height; ++y) {
        for (qint64 i = pixelBytes; i < rowBytes; ++i)
            rows[y * rowBytes + i] = 0;
    }
}

// In 32 bits, beyond which it wraps: a record further on is not found, another one is.
quint32 recordOffset(const ThumbType &type, qint32 index)
{
    const quint32 recordBytes = static_cast<quint32>(type.dataSize + trailerBytes);
    return recordBytes * static_cast<quint32>(index);
}

bool seekToRecord(VFile *file, const ThumbType &type, qint32 index)
{
    const quint32 offset = recordOffset(type, index);
    if (vFileSeek(file, offset, 0) == static_cast<qint64>(offset))
        return true;
    Log("PHOTOLIB", 2, "Can seek to offset %lld while getting ithmb",
        static_cast<long long>(offset));
    return false;
}

bool readRecord(VFile *file, const ThumbType &type, PhotoThumb *thumb)
{
    // Kept for the thread's next request: a host may ask for every thumbnail of a library, and
    // a record is too large to be allocated each time.
    thumb->data = threadBuffer(static_cast<std::size_t>(type.dataSize));
    if (vFileRead(file, static_cast<char *>(thumb->data), type.dataSize) != type.dataSize) {
        Log("PHOTOLIB", 2, "Can not read ithmb data");
        return false;
    }
    if (vFileRead(file, reinterpret_cast<char *>(thumb->info), trailerBytes) != trailerBytes) {
        Log("PHOTOLIB", 2, "Can not read ithmb info");
        return false;
    }
    return true;
}

bool readRecordAt(VFile *file, const ThumbType &type, qint32 index, PhotoThumb *thumb)
{
    return seekToRecord(file, type, index) && readRecord(file, type, thumb);
}

// What the trailer of the asset's record tells if there are four bytes a pixel. Without a log
// line: there may be no such record.
trailer_claim wideClaim(VFile *file, const Camera_Data &asset)
{
    const qint64 offset = qint64(recordOffset(wideCell, asset.thumbnailIndex)) + wideCell.dataSize;
    // Cleared, as in getPhotoThumbnail.
    unsigned char info[trailerBytes] = {};
    if (vFileSeek(file, offset, 0) != offset ||
        vFileRead(file, reinterpret_cast<char *>(info), trailerBytes) != trailerBytes)
        return ForeignTrailer;
    return trailerClaim(info, wideCell, asset.uuid);
}

// Whether a name can be put for every marker of the directory: the names come from the device, and
// Qt does not see it when the text outgrows what it can hold.
bool isPathShort(const Camera_Data &asset)
{
    const qint64 places = asset.directory.count(QLatin1Char('%')) + qint64(1);
    return asset.directory.size() + places * asset.fileName.size() <= mostPathLetters;
}

bool readWhole(VFile *file, QByteArray &out)
{
    vFileSeek(file, 0, 2);
    const qint64 size = vFileTell(file);
    if (size < 0 || size > mostReadyBytes)
        return false;
    return withoutThrowing(false, [&] {
        // Cleared: a read that gives less than it says must not hand out stale memory.
        QByteArray content(static_cast<int>(size), '\0');
        vFileSeek(file, 0, 0);
        if (vFileRead(file, content.data(), content.size()) != content.size())
            return false;
        out = content;
        return true;
    });
}

} // namespace

int photo_manager::getPhotoThumbnail(const quint64 &id, QByteArray &out)
{
    const Camera_Data *asset = m_pCameraDB ? m_pCameraDB->assets.value(id) : nullptr;
    if (!asset)
        return 0;
    return withoutThrowing(-1, [&] {
        if (checkV2Thumbnail(asset, out))
            return 0;
        // Cleared: a read that gives less than it says must not decide a picture's size by
        // stale memory.
        PhotoThumb thumb = PhotoThumb();
        ThumbType type = ThumbType();
        return readThumbnail(*asset, &thumb, &type) && appendImage(&thumb, &type, out) ? 0 : -1;
    });
}

// The host reads source files itself, by `photoItem::path`.
int photo_manager::getSourcePhoto(const quint64 &, QByteArray &)
{
    return 0;
}

bool photo_manager::checkV2Thumbnail(const Camera_Data *asset, QByteArray &out)
{
    if (!m_pVDev || !isPathShort(*asset))
        return false;
    QByteArray path = QString::fromLatin1("/PhotoData/Thumbnails/V2/%1/%2/")
                          .arg(asset->directory)
                          .arg(asset->fileName)
                          .toUtf8();
    const int folderBytes = path.size();
    for (const char *name : readyPictures) {
        path.resize(folderBytes);
        path += name;
        const open_file file(vFileOpen(m_pVDev, path.constData(), 0));
        if (file.get() && readWhole(file.get(), out))
            return true;
    }
    return false;
}

VFile *photo_manager::decideThmbFile(ThumbType *type)
{
    for (const thumbnail_file &candidate : thumbnailFiles) {
        VFile *const file = m_pVDev ? vFileOpen(m_pVDev, candidate.path, 0) : nullptr;
        if (!file)
            continue;
        *type = candidate.type;
        return file;
    }
    return nullptr;
}

bool photo_manager::readThumbnail(const Camera_Data &asset, PhotoThumb *thumb, ThumbType *type)
{
    const qint32 index = asset.thumbnailIndex;
    if (index < 0) {
        Log("PHOTOLIB", 1, "This is a newly added photo?");
        return false;
    }
    if (!m_pThmbFile)
        m_pThmbFile = decideThmbFile(&m_thmbType);
    if (!m_pThmbFile) {
        Log("PHOTOLIB", 2, "Can not decide teh iThmb file");
        return false;
    }
    *type = m_thmbType;
    if (!readRecordAt(m_pThmbFile, *type, index, thumb))
        return false;
    // Older systems did not write whose picture a record holds.
    return !m_pCameraDB->hasAssetTable || findOwnRecord(asset, thumb, type);
}

// Phones keep two bytes a pixel, computers four, and only the place of the trailers tells which.
bool photo_manager::findOwnRecord(const Camera_Data &asset, PhotoThumb *thumb, ThumbType *type)
{
    const qint32 index = asset.thumbnailIndex;
    trailer_claim claim = trailerClaim(thumb->info, *type, asset.uuid);
    if (claim != OwnTrailer && isLayout(*type, narrowCell) &&
        wideClaim(m_pThmbFile, asset) > claim) {
        *type = wideCell;
        if (!readRecordAt(m_pThmbFile, *type, index, thumb))
            return false;
        claim = trailerClaim(thumb->info, *type, asset.uuid);
    }
    if (claim == OwnTrailer)
        m_thmbType = *type;
    if (claim == ForeignTrailer)
        Log("PHOTOLIB", 2, "Can not read ithmb info");
    return claim != ForeignTrailer;
}

bool photo_manager::appendImage(PhotoThumb *thumb, ThumbType *type, QByteArray &out)
{
    const qint32 width = pictureWidth(thumb->info);
    const qint32 height = pictureHeight(thumb->info);
    const qint64 rowsStart = qint64(out.size()) + bmp::headerBytes;
    if (!liesInPixels(*type, width, height) || imageBytes(width, height) > mostBytes - rowsStart) {
        Log("PHOTOLIB", 2, "Can not read ithmb info");
        return false;
    }
    out.resize(static_cast<int>(rowsStart + imageBytes(width, height)));
    unsigned char *const rows = reinterpret_cast<unsigned char *>(out.data()) + rowsStart;
    bmp::writeHeaders(width, height, rows - bmp::headerBytes);
    clearRowEnds(rows, width, height);
    convertThmb2BMP(thumb, type, rows);
    return true;
}

void photo_manager::convertThmb2BMP(PhotoThumb *thumb, ThumbType *type, unsigned char *out)
{
    picture_rows picture;
    picture.width = pictureWidth(thumb->info);
    picture.height = pictureHeight(thumb->info);
    if (picture.width <= 0 || picture.height <= 0)
        return;
    const placement place(*type, picture.width, picture.height);
    const qint64 pixelBytes = bytesOfPixel(*type);
    picture.bottomRow =
        static_cast<const unsigned char *>(thumb->data) + pixelBytes * place.pixel(0);
    picture.rowBytes = pixelBytes * place.rowPixels;
    picture.out = out;
    picture.outRowBytes = bmp::rowBytes(picture.width);
    (isWide(*type) ? convertBgraRows : fastestRowsConverter())(picture);
}
