#ifndef PHOTOLIB_FUZZ_FUZZ_INPUT_H
#define PHOTOLIB_FUZZ_FUZZ_INPUT_H

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>

/// The bytes of one input, taken from the front, piece by piece. Behind the end there are
/// zeros: every input means something.
class FuzzInput
{
public:
    FuzzInput(const std::uint8_t *data, std::size_t size)
        : m_rest(
              QByteArray::fromRawData(reinterpret_cast<const char *>(data), static_cast<int>(size)))
    {
    }

    bool isAtEnd() const { return m_rest.isEmpty(); }

    quint8 byte();
    /// The lowest byte first.
    quint16 u16();
    quint32 u32();
    quint64 u64();

    /// A length of 16 bits and as many bytes, or as many as there are.
    QByteArray piece();

    QByteArray rest();

private:
    QByteArray take(int count);

    QByteArray m_rest;
};

#endif // PHOTOLIB_FUZZ_FUZZ_INPUT_H
