#ifndef PHOTOLIB_SAMPLE_RANDOM_H
#define PHOTOLIB_SAMPLE_RANDOM_H

#include <QByteArray>
#include <QtGlobal>

namespace sample {

/// Scrambles 64 bits (the finaliser of the splitmix64 generator).
constexpr quint64 scramble(quint64 x)
{
    x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9ULL;
    x = (x ^ (x >> 27)) * 0x94d049bb133111ebULL;
    return x ^ (x >> 31);
}

/// Random numbers that depend on a seed, a purpose and an index only, so that an asset comes
/// out the same whatever is made before it. The standard library's distributions are not
/// used: their results differ between implementations.
class Random
{
public:
    explicit Random(quint64 seed) : m_state(seed) {}
    Random(quint64 seed, quint64 purpose, quint64 index)
        : m_state(scramble(seed + 0x9e3779b97f4a7c15ULL) ^ scramble(purpose << 40 | index))
    {
    }

    quint64 next()
    {
        m_state += 0x9e3779b97f4a7c15ULL;
        return scramble(m_state);
    }

    /// 0 to `limit` - 1; `limit` is at least 1.
    int below(int limit) { return static_cast<int>(next() % static_cast<quint64>(limit)); }

    /// `low` to `high`, both included.
    int between(int low, int high) { return low + below(high - low + 1); }

    bool oneIn(int n) { return below(n) == 0; }

    /// 16 bytes with the marks of a random uuid.
    QByteArray uuid()
    {
        QByteArray bytes(16, '\0');
        for (int i = 0; i < bytes.size(); ++i)
            bytes[i] = static_cast<char>(next() >> 56);
        bytes[6] = static_cast<char>((bytes.at(6) & 0x0f) | 0x40);
        bytes[8] = static_cast<char>((bytes.at(8) & 0x3f) | 0x80);
        return bytes;
    }

private:
    quint64 m_state;
};

/// The upper-case 8-4-4-4-12 form of a 16-byte uuid.
inline QByteArray uuidText(const QByteArray &uuid)
{
    QByteArray text = uuid.toHex().toUpper();
    for (const int at : {8, 13, 18, 23})
        text.insert(at, '-');
    return text;
}

} // namespace sample

#endif // PHOTOLIB_SAMPLE_RANDOM_H
