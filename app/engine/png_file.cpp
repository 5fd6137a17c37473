#include "engine/png_file.h"

#include "base/cancel_token.h"
#include "base/error.h"
#include "engine/worker_pool.h"

#include <QByteArray>
#include <QImage>
#include <QtEndian>

#include <zlib.h>

#include <algorithm>
#include <cstdlib>
#include <new>

// A PNG file has its rows as one stream of zlib's. Parts of it are compressed apart from each
// other, each up to a byte's end and with no reference to the one before, and put together.

namespace {

constexpr int pixelBytes = 3;
constexpr qint64 partBytes = 1 << 20; // a larger one gains hardly anything, and takes longer to end

// A row of pixels behind one of black, for the filters look to the left.
class Row
{
public:
    explicit Row(int width) : m_bytes((width + 1) * pixelBytes, '\0') {}

    void fill(const QImage &picture, int y)
    {
        const auto *const pixels = reinterpret_cast<const QRgb *>(picture.constScanLine(y));
        char *byte = m_bytes.data() + pixelBytes;
        const int width = picture.width();
        for (int x = 0; x < width; ++x) {
            *byte++ = char(qRed(pixels[x]));
            *byte++ = char(qGreen(pixels[x]));
            *byte++ = char(qBlue(pixels[x]));
        }
    }

    const uchar *bytes() const
    {
        return reinterpret_cast<const uchar *>(m_bytes.constData()) + pixelBytes;
    }
    int length() const { return m_bytes.size() - pixelBytes; }
    void swap(Row &other) { m_bytes.swap(other.m_bytes); }

private:
    QByteArray m_bytes;
};

// What a filter foretells of a byte from those before it, of which the difference is stored. In the
// order of their numbers in the file.
struct NoFilter {
    static int foretold(int, int, int) { return 0; }
};
struct LeftFilter {
    static int foretold(int left, int, int) { return left; }
};
struct UpFilter {
    static int foretold(int, int up, int) { return up; }
};
struct AverageFilter {
    static int foretold(int left, int up, int) { return (left + up) / 2; }
};
struct PaethFilter {
    static int foretold(int left, int up, int upperLeft)
    {
        const int byLeft = std::abs(up - upperLeft);
        const int byUp = std::abs(left - upperLeft);
        const int byUpperLeft = std::abs(left + up - 2 * upperLeft);
        const int nearest = byUp <= byUpperLeft ? up : upperLeft;
        return byLeft <= byUp && byLeft <= byUpperLeft ? left : nearest;
    }
};

template <class Filter>
void filterRow(const Row &row, const Row &above, uchar *out)
{
    const uchar *const bytes = row.bytes();
    const uchar *const up = above.bytes();
    const int length = row.length();
    for (int i = 0; i < length; ++i)
        out[i] =
            uchar(bytes[i] - Filter::foretold(bytes[i - pixelBytes], up[i], up[i - pixelBytes]));
}

constexpr void (*filters[])(const Row &, const Row &, uchar *) = {
    filterRow<NoFilter>, filterRow<LeftFilter>, filterRow<UpFilter>, filterRow<AverageFilter>,
    filterRow<PaethFilter>};

// Small differences compress well.
quint64 sizeOfDifferences(const uchar *bytes, int length)
{
    quint64 sum = 0;
    for (int i = 0; i < length; ++i)
        sum += uint(std::abs(int(static_cast<signed char>(bytes[i]))));
    return sum;
}

// Some rows of a picture as they are compressed: each with the filter that suits it, whose number
// comes first.
class FilteredRows
{
public:
    FilteredRows(const QImage &picture, int top, int count)
        : m_row(picture.width()), m_above(picture.width()), m_tried(m_row.length(), '\0')
    {
        m_bytes.reserve(count * (1 + m_row.length()));
        if (top > 0)
            m_above.fill(picture, top - 1);
        for (int y = top; y < top + count; ++y) {
            m_row.fill(picture, y);
            append();
            m_above.swap(m_row);
        }
    }

    const QByteArray &bytes() const { return m_bytes; }

private:
    void append()
    {
        quint64 least = ~quint64(0);
        const int start = m_bytes.size();
        m_bytes.resize(start + 1 + m_row.length());
        auto *const tried = reinterpret_cast<uchar *>(m_tried.data());
        for (size_t i = 0; i < sizeof filters / sizeof *filters; ++i) {
            filters[i](m_row, m_above, tried);
            const quint64 size = sizeOfDifferences(tried, m_row.length());
            if (size >= least)
                continue;
            least = size;
            m_bytes[start] = char(i);
            std::copy_n(m_tried.constData(), m_row.length(), m_bytes.data() + start + 1);
        }
    }

    Row m_row;
    Row m_above;
    QByteArray m_tried;
    QByteArray m_bytes;
};

class Deflation
{
public:
    Deflation()
    {
        constexpr int level = 4; // 2 % larger than with the usual 6, in two thirds of the time
        constexpr int largestWindow = 15;
        constexpr int usualMemory = 8;
        if (deflateInit2(&m_stream, level, Z_DEFLATED, -largestWindow, usualMemory, Z_FILTERED) !=
            Z_OK)
            throw std::bad_alloc();
    }
    ~Deflation() { deflateEnd(&m_stream); }

    Deflation(const Deflation &) = delete;
    Deflation &operator=(const Deflation &) = delete;

    QByteArray compressed(QByteArray bytes, bool isLast)
    {
        constexpr int endOfPart = 16;
        QByteArray result;
        result.resize(int(deflateBound(&m_stream, uLong(bytes.size()))) + endOfPart);
        m_stream.next_in = reinterpret_cast<Bytef *>(bytes.data());
        m_stream.avail_in = uInt(bytes.size());
        m_stream.next_out = reinterpret_cast<Bytef *>(result.data());
        m_stream.avail_out = uInt(result.size());
        deflate(&m_stream, isLast ? Z_FINISH : Z_SYNC_FLUSH);
        result.resize(result.size() - int(m_stream.avail_out));
        return result;
    }

private:
    z_stream m_stream = {};
};

const Bytef *bytesOf(const QByteArray &bytes)
{
    return reinterpret_cast<const Bytef *>(bytes.constData());
}

struct Part {
    QByteArray compressed;
    uLong checksum = 0; // of what is compressed
    qint64 length = 0;
};

Part partOf(const QImage &picture, int top, int count, const CancelToken &cancel)
{
    Part part;
    if (cancel.isCancelled())
        return part;
    const FilteredRows rows(picture, top, count);
    part.checksum = adler32(1, bytesOf(rows.bytes()), uInt(rows.bytes().size()));
    part.length = rows.bytes().size();
    part.compressed = Deflation().compressed(rows.bytes(), top + count == picture.height());
    return part;
}

QByteArray bigEndian(quint32 number)
{
    QByteArray bytes(4, '\0');
    qToBigEndian(number, bytes.data());
    return bytes;
}

void writeChunk(const char *type, const QByteArray &content, const ByteSink &sink)
{
    const QByteArray named = type + content;
    const QByteArray whole = bigEndian(quint32(content.size())) + named +
                             bigEndian(quint32(crc32(0, bytesOf(named), uInt(named.size()))));
    sink(whole.constData(), whole.size());
}

QByteArray header(const QSize &size)
{
    constexpr char colorsOfThreeBytes[] = {8, 2, 0, 0, 0};
    return bigEndian(quint32(size.width())) + bigEndian(quint32(size.height())) +
           QByteArray(colorsOfThreeBytes, sizeof colorsOfThreeBytes);
}

void requireUncancelled(const CancelToken &cancel)
{
    if (cancel.isCancelled())
        throw Error(Error::Cancelled, "interrupted");
}

// The compressed rows, part by part.
class RowsInFile
{
public:
    RowsInFile(const ByteSink &sink, const CancelToken &cancel) : m_sink(sink), m_cancel(cancel)
    {
        writeChunk("IDAT", QByteArray("\x78\x9c", 2), sink); // how the stream is compressed
    }

    void write(const Part &part)
    {
        requireUncancelled(m_cancel);
        m_checksum = adler32_combine(m_checksum, part.checksum, z_off_t(part.length));
        writeChunk("IDAT", part.compressed, m_sink);
    }

    void finish() const { writeChunk("IDAT", bigEndian(quint32(m_checksum)), m_sink); }

private:
    const ByteSink &m_sink;
    const CancelToken &m_cancel;
    uLong m_checksum = 1;
};

void writeRows(const QImage &picture, WorkerPool &pool, const CancelToken &cancel,
               const ByteSink &sink)
{
    const int rowBytes = 1 + picture.width() * pixelBytes;
    const int rows = int(std::max<qint64>(1, partBytes / rowBytes));
    RowsInFile file(sink, cancel);
    OrderedWork<Part> parts(pool);
    for (int top = 0; top < picture.height(); top += rows) {
        if (parts.isFull())
            file.write(parts.takeFirst());
        const int count = std::min(rows, picture.height() - top);
        parts.add([&picture, top, count, &cancel] { return partOf(picture, top, count, cancel); });
    }
    while (!parts.isEmpty())
        file.write(parts.takeFirst());
    file.finish();
}

} // namespace

void writePng(const QImage &picture, WorkerPool &pool, const CancelToken &cancel,
              const ByteSink &sink)
{
    const QImage rgb = picture.convertToFormat(QImage::Format_RGB32);
    if (rgb.isNull())
        throw std::bad_alloc();
    requireUncancelled(cancel);
    sink("\x89PNG\r\n\x1a\n", 8);
    writeChunk("IHDR", header(rgb.size()), sink);
    writeRows(rgb, pool, cancel, sink);
    writeChunk("IEND", QByteArray(), sink);
}
