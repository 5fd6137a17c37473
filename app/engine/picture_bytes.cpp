#include "engine/picture_bytes.h"

#include "base/cancel_token.h"

#include <QBuffer>
#include <QtEndian>

#include <algorithm>

namespace {

// Bytes that a reader gets a few at a time, and none once that is cancelled: a whole pass over a
// large picture may be in some forty bytes.
class CancellableBytes : public QIODevice
{
public:
    CancellableBytes(const QByteArray &bytes, const CancelToken &cancel)
        : m_bytes(bytes), m_cancel(cancel)
    {
    }

    qint64 size() const override { return m_bytes.size(); }

protected:
    qint64 readData(char *data, qint64 most) override
    {
        constexpr qint64 aFew = 64;
        if (m_cancel.isCancelled())
            return -1;
        const qint64 count = qMin(qMin(most, aFew), m_bytes.size() - pos());
        std::copy_n(m_bytes.constData() + pos(), count, data);
        return count;
    }

    qint64 writeData(const char *, qint64) override { return -1; }

private:
    const QByteArray m_bytes;
    const CancelToken &m_cancel;
};

// A part of a JPEG file: two bytes that tell what it is, two for its length, which counts itself.
struct JpegSegment {
    static constexpr int headBytes = 4;

    uchar kind = 0;
    int end = -1; // in the file; -1 for no segment

    static JpegSegment at(const QByteArray &jpeg, int start)
    {
        if (start + headBytes > jpeg.size() || jpeg[start] != '\xff')
            return {};
        const int length = qFromBigEndian<quint16>(jpeg.constData() + start + 2);
        const int end = start + 2 + length;
        return length < 2 || end > jpeg.size() ? JpegSegment()
                                               : JpegSegment{uchar(jpeg[start + 1]), end};
    }

    // One of the kinds of frames; two others are among their numbers.
    bool isFrame() const
    {
        return kind >= 0xc0 && kind <= 0xcf && kind != 0xc4 && kind != 0xc8 && kind != 0xcc;
    }

    bool isSequentialFrame() const { return kind == 0xc0 || kind == 0xc1; }
    bool isScan() const { return kind == 0xda; }
};

// The byte at `offset`, or 0 beyond the end.
int byteAt(const QByteArray &bytes, int offset)
{
    return offset < bytes.size() ? uchar(bytes[offset]) : 0;
}

} // namespace

std::unique_ptr<QIODevice> openedBytes(const QByteArray &bytes, const CancelToken *cancel)
{
    std::unique_ptr<QIODevice> device;
    if (cancel) {
        device = std::make_unique<CancellableBytes>(bytes, *cancel);
    } else {
        auto buffer = std::make_unique<QBuffer>();
        buffer->setData(bytes);
        device = std::move(buffer);
    }
    device->open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    return device;
}

int mostScansIn(const QByteArray &jpeg)
{
    return jpeg.count("\xff\xda");
}

bool isReadInOnePass(const QByteArray &jpeg)
{
    constexpr int componentsOfFrame = 9; // from the start of the segment
    constexpr int componentsOfScan = 4;
    int components = 0;
    int at = 2;
    for (JpegSegment segment = JpegSegment::at(jpeg, at); segment.end >= 0;
         segment = JpegSegment::at(jpeg, at)) {
        if (segment.isFrame() && (!segment.isSequentialFrame() || components > 0))
            return false;
        if (segment.isFrame())
            components = byteAt(jpeg, at + componentsOfFrame);
        if (segment.isScan())
            return components > 0 && byteAt(jpeg, at + componentsOfScan) == components;
        at = segment.end;
    }
    return false;
}
