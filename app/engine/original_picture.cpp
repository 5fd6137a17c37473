#include "engine/original_picture.h"

#include "base/cancel_token.h"
#include "base/qt_messages.h"
#include "engine/heif_picture.h"
#include "engine/original_files.h"
#include "engine/picture_bytes.h"
#include "engine/png_picture.h"

#include <QColorSpace>
#include <QImageReader>

#include <algorithm>
#include <mutex>
#include <optional>

namespace {

constexpr qint64 mebi = 1 << 20;
constexpr qint64 mostFileBytes = 256 * mebi;
constexpr qint64 mostPixels = 128 * mebi;
// That is read in less than its size. Panoramas have 60 million pixels, cameras up to 200.
constexpr qint64 mostPixelsInOnePass = 512 * mebi;
// Each scan of a JPEG may go over all pixels.
constexpr qint64 mostScannedPixels = 1600 * mebi;
// Two of a larger one are not decoded at a time: each takes some hundreds of megabytes.
constexpr qint64 mostUsualPixels = 32 * mebi;

qint64 pixelsOf(const QSize &size)
{
    return qint64(size.width()) * size.height();
}

// Of a file that was read and is of no use.
FileError failure(const QString &text)
{
    return {FileError::Damaged, text};
}

FileError tooLarge(const QSize &size)
{
    return failure(QStringLiteral("the original of %1 x %2 pixels is too large")
                       .arg(size.width())
                       .arg(size.height()));
}

FileError damaged()
{
    return failure(QStringLiteral("a damaged original"));
}

// Which reader a file is for.
enum class Decoder { None, Jpeg, Png, Gif, Heif };

Decoder decoderFor(const QByteArray &start)
{
    if (start.startsWith("\xff\xd8\xff"))
        return Decoder::Jpeg;
    if (start.startsWith("\x89PNG\r\n\x1a\n"))
        return Decoder::Png;
    if (start.startsWith("GIF8"))
        return Decoder::Gif;
    return isHeif(start) ? Decoder::Heif : Decoder::None;
}

// A file of the device, read as far as it is wanted.
class OriginalFile
{
public:
    OriginalFile(DeviceFileSystem &files, const QByteArray &path, const CancelToken &cancel)
        : m_cancel(cancel), m_file(files.open(path, &m_error))
    {
    }

    // The beginning of the content; empty on failure.
    QByteArray start()
    {
        constexpr qint64 enough = 4096;
        if (m_file)
            readUpTo(enough);
        return m_bytes;
    }

    // All of it; empty on failure. Devices run out of handles: the file is closed.
    QByteArray content()
    {
        readUpTo(mostFileBytes + 1);
        m_file.reset();
        if (m_bytes.size() > mostFileBytes)
            fail(failure(QStringLiteral("the original of more than %1 MiB is too large")
                             .arg(mostFileBytes / mebi)));
        return m_bytes;
    }

    const FileError &error() const { return m_error; }

private:
    void fail(const FileError &error)
    {
        m_error = error;
        m_bytes.clear();
    }

    void readUpTo(qint64 most)
    {
        qint64 count = 1;
        while (count > 0 && m_bytes.size() < most) {
            if (m_cancel.isCancelled())
                return fail({FileError::Cancelled, QStringLiteral("interrupted")});
            count = readBlock(std::min(mebi, most - m_bytes.size()));
        }
        if (count < 0)
            fail(FileError(m_error));
    }

    qint64 readBlock(qint64 length)
    {
        const int before = m_bytes.size();
        m_bytes.resize(before + int(length));
        const qint64 count = m_file->read(before, m_bytes.data() + before, length, &m_error);
        m_bytes.resize(before + int(std::max<qint64>(count, 0)));
        return count;
    }

    const CancelToken &m_cancel;
    FileError m_error;
    std::unique_ptr<DeviceFile> m_file;
    QByteArray m_bytes;
};

// What the reader of JPEG files says when it makes up a part of the picture. Of others it says
// that they are strange.
bool tellsLoss(const QString &message)
{
    return message.contains(QLatin1String("Premature end")) ||
           (message.contains(QLatin1String("Corrupt JPEG data")) &&
            !message.contains(QLatin1String("extraneous bytes")));
}

QSize sizeWithin(const QSize &size, int longestEdge)
{
    const QSize most(longestEdge, longestEdge);
    if (size.boundedTo(most) == size)
        return size;
    return size.scaled(most, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
}

// Decoding takes the memory of one large picture, whatever the number of threads.
class LargePictureTurn
{
public:
    explicit LargePictureTurn(qint64 pixels)
    {
        static std::mutex oneAtATime;
        if (pixels > mostUsualPixels)
            m_lock = std::unique_lock<std::mutex>(oneAtATime);
    }

private:
    std::unique_lock<std::mutex> m_lock;
};

class OriginalDecoding
{
public:
    OriginalDecoding(QByteArray bytes, Decoder decoder, int longestEdge, const CancelToken &cancel)
        : m_bytes(std::move(bytes)), m_decoder(decoder), m_longestEdge(longestEdge),
          m_cancel(cancel)
    {
    }

    OriginalPicture picture()
    {
        OriginalPicture picture;
        const QImage image = read();
        if (image.isNull())
            picture.cause = m_cause.value_or(damaged());
        else
            picture.image = scaledDown(inUsualColors(image), m_longestEdge);
        return picture;
    }

private:
    QImage read()
    {
        if (m_decoder == Decoder::Heif)
            return readHeif();
        return m_decoder == Decoder::Png ? readPng() : readByQt();
    }

    QImage readPng()
    {
        const QSize size = claimedPngSize(m_bytes);
        if (!requireSize(size, mostPixels))
            return QImage();
        const LargePictureTurn turn(pixelsOf(size));
        return decodedPng(m_bytes, m_cancel);
    }

    QImage readHeif()
    {
        const QSize size = claimedHeifSize(m_bytes);
        if (!requireSize(size, mostPixels))
            return QImage();
        const LargePictureTurn turn(pixelsOf(size));
        return decodedHeif(m_bytes, m_longestEdge, m_cancel);
    }

    QImage readByQt()
    {
        const std::unique_ptr<QIODevice> device = openedBytes(m_bytes, &m_cancel);
        const QtMessages messages;
        QImageReader reader(device.get(), m_decoder == Decoder::Jpeg ? "jpeg" : "gif");
        reader.setAutoDetectImageFormat(false);
        reader.setAutoTransform(true);
        const QSize size = reader.size();
        if (size.isEmpty() || !isReadable(size))
            return QImage();
        reader.setScaledSize(sizeWithin(size, m_longestEdge));
        const LargePictureTurn turn(pixelsOf(size));
        const QImage image = reader.read();
        return tellsLoss(messages.first()) ? QImage() : image;
    }

    bool isReadable(const QSize &size)
    {
        if (m_decoder != Decoder::Jpeg)
            return requireSize(size, mostPixels);
        const qint64 scans = std::max(1, mostScansIn(m_bytes));
        const bool isSmallAnyway = pixelsOf(size) <= mostPixels;
        const bool isInOnePass = !isSmallAnyway && isReadInOnePass(m_bytes);
        return requireSize(size, isInOnePass ? mostPixelsInOnePass : mostPixels) &&
               scans <= mostScansOfAny && pixelsOf(size) <= mostScannedPixels / scans;
    }

    bool requireSize(const QSize &size, qint64 most)
    {
        if (pixelsOf(size) > most)
            m_cause = tooLarge(size);
        return pixelsOf(size) <= most;
    }

    // Others would take the numbers of a picture in larger or smaller colours for the usual ones.
    static QImage inUsualColors(const QImage &image)
    {
        const QImage::Format format =
            image.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32;
        QImage usual = image.convertToFormat(format);
        const QColorSpace usualSpace(QColorSpace::SRgb);
        if (usual.colorSpace().isValid() && usual.colorSpace() != usualSpace)
            usual.convertToColorSpace(usualSpace);
        usual.setColorSpace(QColorSpace());
        return usual;
    }

    static constexpr qint64 mostScansOfAny = 100;

    const QByteArray m_bytes;
    const Decoder m_decoder;
    const int m_longestEdge;
    const CancelToken &m_cancel;
    std::optional<FileError> m_cause;
};

// Nothing where the file is not there, or no picture that is read here.
std::optional<OriginalPicture> pictureIn(OriginalFile &file, int longestEdge,
                                         const CancelToken &cancel)
{
    const Decoder decoder = decoderFor(file.start());
    const QByteArray bytes = decoder == Decoder::None ? QByteArray() : file.content();
    if (!bytes.isEmpty())
        return OriginalDecoding(bytes, decoder, longestEdge, cancel).picture();
    if (file.error().kind == FileError::None || file.error().isMissing())
        return std::nullopt;
    return OriginalPicture{QImage(), file.error()};
}

} // namespace

OriginalPicture originalPicture(DeviceFileSystem &files, const OriginalFiles &originals,
                                int longestEdge, const CancelToken &cancel)
{
    OriginalPicture none;
    if (originals.isVideo)
        none.cause = failure(QStringLiteral("photolib makes none of videos"));
    for (const QByteArray &path : originals.paths) {
        OriginalFile file(files, path, cancel);
        const std::optional<OriginalPicture> found = pictureIn(file, longestEdge, cancel);
        if (found && !found->image.isNull())
            return *found;
        if (found && none.cause.kind == FileError::None)
            none.cause = found->cause;
    }
    return none;
}

QImage scaledDown(const QImage &picture, int longestEdge)
{
    const QSize size = sizeWithin(picture.size(), longestEdge);
    if (size == picture.size())
        return picture;
    return picture.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}
