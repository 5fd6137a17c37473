#include "ios/uuid_order.h"

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

} // namespace

uuid_order::uuid_order(int expected)
{
    m_entries.reserve(static_cast<std::size_t>(expected));
}

void uuid_order::add(const QByteArray &uuid)
{
    m_entries.push_back(entry{prefixOf(uuid), &uuid});
}

bool uuid_order::isLess(const entry &left, const entry &right)
{
    return left.prefix != right.prefix ? left.prefix < right.prefix : *left.uuid < *right.uuid;
}

std::vector<const QByteArray *> uuid_order::sorted()
{
    std::sort(m_entries.begin(), m_entries.end(), isLess);
    std::vector<const QByteArray *> uuids;
    uuids.reserve(m_entries.size());
    for (const entry &each : m_entries)
        uuids.push_back(each.uuid);
    return uuids;
}
