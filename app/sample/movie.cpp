#include "sample/movie.h"

#include <QtEndian>

namespace sample {

namespace {

constexpr qint64 secondsFrom1904To2001 = 3061152000LL;

/// Big-endian fields, one behind the other.
class Fields
{
public:
    Fields &u8(int value)
    {
        m_bytes.append(static_cast<char>(value));
        return *this;
    }
    Fields &u16(int value)
    {
        char buffer[2];
        qToBigEndian(static_cast<quint16>(value), buffer);
        m_bytes.append(buffer, 2);
        return *this;
    }
    Fields &u32(quint32 value)
    {
        char buffer[4];
        qToBigEndian(value, buffer);
        m_bytes.append(buffer, 4);
        return *this;
    }
    Fields &zeroes(int count)
    {
        m_bytes.append(count, '\0');
        return *this;
    }
    Fields &raw(const QByteArray &bytes)
    {
        m_bytes.append(bytes);
        return *this;
    }
    /// A 16.16 fixed-point number.
    Fields &fixed(int value) { return u32(static_cast<quint32>(value) << 16); }

    const QByteArray &bytes() const { return m_bytes; }

private:
    QByteArray m_bytes;
};

QByteArray atom(const char *type, const QByteArray &content)
{
    return Fields().u32(static_cast<quint32>(content.size() + 8)).raw(type).raw(content).bytes();
}

/// An atom that begins with a version byte, 0, and three bytes of flags.
QByteArray fullAtom(const char *type, quint32 flags, const QByteArray &content)
{
    return atom(type, Fields().u32(flags).bytes() + content);
}

QByteArray unitMatrix()
{
    return Fields().fixed(1).zeroes(12).fixed(1).zeroes(12).u32(0x40000000).bytes();
}

quint32 movieDate(const Movie &movie)
{
    return static_cast<quint32>(movie.createdAt + secondsFrom1904To2001);
}

QByteArray fileType()
{
    return atom("ftyp", Fields().raw("qt  ").u32(0x20050300).raw("qt  ").bytes());
}

QByteArray movieHeader(const Movie &movie)
{
    Fields fields;
    fields.u32(movieDate(movie)).u32(movieDate(movie)).u32(movieTimeScale).u32(movie.ticks);
    fields.fixed(1).u16(0x0100).zeroes(10).raw(unitMatrix()).zeroes(24); // rate, full volume
    fields.u32(2);                                                       // the next track's id
    return fullAtom("mvhd", 0, fields.bytes());
}

QByteArray trackHeader(const Movie &movie)
{
    const quint32 enabledInMovieAndPreview = 7;
    Fields fields;
    fields.u32(movieDate(movie)).u32(movieDate(movie)).u32(1).zeroes(4).u32(movie.ticks);
    fields.zeroes(16).raw(unitMatrix()).fixed(movie.size.width()).fixed(movie.size.height());
    return fullAtom("tkhd", enabledInMovieAndPreview, fields.bytes());
}

QByteArray mediaHeader(const Movie &movie)
{
    Fields fields;
    fields.u32(movieDate(movie)).u32(movieDate(movie)).u32(movieTimeScale).u32(movie.ticks);
    return fullAtom("mdhd", 0, fields.u16(0).u16(0).bytes());
}

QByteArray handler(const char *component, const char *type, const QByteArray &name)
{
    Fields fields;
    fields.raw(component).raw(type).zeroes(12).u8(name.size()).raw(name);
    return fullAtom("hdlr", 0, fields.bytes());
}

QByteArray videoHeader()
{
    const quint32 noLeanAhead = 1;
    const int ditherCopy = 0x40;
    return fullAtom("vmhd", noLeanAhead,
                    Fields().u16(ditherCopy).u16(0x8000).u16(0x8000).u16(0x8000).bytes());
}

QByteArray dataInformation()
{
    const quint32 inThisFile = 1;
    const QByteArray reference = fullAtom("alis", inThisFile, {});
    return atom("dinf", fullAtom("dref", 0, Fields().u32(1).raw(reference).bytes()));
}

QByteArray sampleDescription(const Movie &movie)
{
    const QByteArray compressor = "Photo - JPEG";
    Fields fields;
    fields.zeroes(6).u16(1).u16(0).u16(0).zeroes(4).u32(512).u32(512);
    fields.u16(movie.size.width()).u16(movie.size.height());
    fields.fixed(72).fixed(72).zeroes(4).u16(1);
    fields.u8(compressor.size()).raw(compressor).zeroes(31 - compressor.size());
    fields.u16(24).u16(0xffff); // bits of a pixel, no colour table
    return fullAtom("stsd", 0, Fields().u32(1).raw(atom("jpeg", fields.bytes())).bytes());
}

/// Equal times, but for the last frame, which takes the rest.
QByteArray timeToSample(const Movie &movie)
{
    const auto frames = static_cast<quint32>(movie.frames.size());
    const quint32 each = movie.ticks / frames;
    const quint32 last = movie.ticks - each * (frames - 1);
    Fields fields;
    if (frames == 1)
        fields.u32(1).u32(1).u32(last);
    else
        fields.u32(2).u32(frames - 1).u32(each).u32(1).u32(last);
    return fullAtom("stts", 0, fields.bytes());
}

QByteArray sampleSizes(const Movie &movie)
{
    Fields fields;
    fields.u32(0).u32(static_cast<quint32>(movie.frames.size()));
    for (const QByteArray &frame : movie.frames)
        fields.u32(static_cast<quint32>(frame.size()));
    return fullAtom("stsz", 0, fields.bytes());
}

/// All frames stand in one chunk, at `offset.`
QByteArray sampleTable(const Movie &movie, quint32 offset)
{
    const auto frames = static_cast<quint32>(movie.frames.size());
    const QByteArray chunkRuns = Fields().u32(1).u32(1).u32(frames).u32(1).bytes();
    return atom("stbl", sampleDescription(movie) + timeToSample(movie) +
                            fullAtom("stsc", 0, chunkRuns) + sampleSizes(movie) +
                            fullAtom("stco", 0, Fields().u32(1).u32(offset).bytes()));
}

QByteArray track(const Movie &movie, quint32 offset)
{
    const QByteArray information = videoHeader() + handler("dhlr", "alis", "Data Handler") +
                                   dataInformation() + sampleTable(movie, offset);
    return atom("trak", trackHeader(movie) +
                            atom("mdia", mediaHeader(movie) + handler("mhlr", "vide", "Video") +
                                             atom("minf", information)));
}

} // namespace

QByteArray quickTimeFile(const Movie &movie)
{
    const QByteArray type = fileType();
    const QByteArray data = atom("mdat", movie.frames.join());
    const auto firstFrame = static_cast<quint32>(type.size() + 8);
    return type + data + atom("moov", movieHeader(movie) + track(movie, firstFrame));
}

} // namespace sample
