#include "ios/uuid_order.h"

#include "cameradb/ordered_insert.h"

#include <algorithm>

namespace {

const int prefixBytes = 8;

// Big-endian and padded with zeros, so that prefixes order as the bytes do; equal ones
// decide nothing.
quint64 prefixOf(const QByteArray &uuid)
{
    quint64 prefix = 0;
    for (int i = 0; i < prefixBytes; ++i) {
        const unsigned char byte = i < uuid.size() ? static_cast<unsigned char>(uuid.at(i)) : 0;
        prefix = prefix << 8 | byte;
    }
    return prefix;
}

void prefetch(const void *address)
{
#if defined(__GNUC__)
    __builtin_prefetch(address);
#else
    (void)address;
#endif
}

} // namespace

uuid_order::uuid_order(int expected)
{
    m_entries.reserve(static_cast<std::size_t>(expected));
}

void uuid_order::add(const QByteArray &uuid)
{
    m_entries.push_back(entry{prefixOf(uuid), uuid});
}

bool uuid_order::isLess(const entry &left, const entry &right)
{
    return left.prefix != right.prefix ? left.prefix < right.prefix : left.uuid < right.uuid;
}

void uuid_order::insertInto(QMap<QByteArray, bool> &set)
{
    std::sort(m_entries.begin(), m_entries.end(), isLess);
    // In this order the bytes lie all over the memory: they are fetched some steps ahead.
    const std::size_t ahead = 8;
    for (std::size_t i = 0; i < m_entries.size(); ++i) {
        if (i + ahead < m_entries.size())
            prefetch(m_entries[i + ahead].uuid.constData());
        insertLast(set, m_entries[i].uuid, true);
    }
}
