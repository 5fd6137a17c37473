#include "ios/bmp_header.h"

#include <QtEndian>

namespace {

// Writes numbers one behind the other, the lowest byte first.
class number_writer
{
public:
    explicit number_writer(unsigned char *out) : m_out(out) {}

    void put16(quint16 value)
    {
        qToLittleEndian(value, m_out);
        m_out += sizeof value;
    }

    void put32(quint32 value)
    {
        qToLittleEndian(value, m_out);
        m_out += sizeof value;
    }

private:
    unsigned char *m_out;
};

} // namespace

void bmp::writeHeaders(qint32 width, qint32 height, unsigned char *out)
{
    const quint32 informationBytes = 40;
    const quint32 imageBytes = static_cast<quint32>(rowBytes(width)) * static_cast<quint32>(height);
    number_writer header(out);
    header.put16(0x4d42); // "BM"
    header.put32(headerBytes + imageBytes);
    header.put32(0); // two reserved numbers
    header.put32(headerBytes);

    header.put32(informationBytes);
    header.put32(static_cast<quint32>(width));
    header.put32(static_cast<quint32>(height));
    header.put16(1);  // planes
    header.put16(24); // bits per pixel
    header.put32(0);  // not compressed
    header.put32(imageBytes);
    header.put32(0); // horizontal resolution: not known
    header.put32(0); // vertical resolution
    header.put32(0); // colours used: all
    header.put32(0); // important colours: all
}
