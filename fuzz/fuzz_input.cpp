#include "fuzz/fuzz_input.h"

#include <QtEndian>

QByteArray FuzzInput::take(int count)
{
    // A copy that ends where its allocation ends, so that reading beyond it is noticed.
    const QByteArray taken(m_rest.constData(), qMin(count, m_rest.size()));
    m_rest =
        QByteArray::fromRawData(m_rest.constData() + taken.size(), m_rest.size() - taken.size());
    return taken;
}

quint8 FuzzInput::byte()
{
    return static_cast<quint8>(take(1).leftJustified(1, '\0').at(0));
}

quint16 FuzzInput::u16()
{
    return qFromLittleEndian<quint16>(take(2).leftJustified(2, '\0').constData());
}

quint32 FuzzInput::u32()
{
    return qFromLittleEndian<quint32>(take(4).leftJustified(4, '\0').constData());
}

quint64 FuzzInput::u64()
{
    return qFromLittleEndian<quint64>(take(8).leftJustified(8, '\0').constData());
}

QByteArray FuzzInput::piece()
{
    return take(u16());
}

QByteArray FuzzInput::rest()
{
    return take(m_rest.size());
}
