#include "ios/uuid_order.h"

#include "cameradb/ordered_insert.h"
#include "cameradb/prefetch.h"

#include <algorithm>

namespace {

const int prefixBytes = 8;

// Steps between the fetch of a uuid and its use.
const std::size_t stepsAhead = 8;

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
    m_uuids.reserve(static_cast<std::size_t>(expected));
}

std::vector<uuid_order::entry> uuid_order::sortedEntries() const
{
    std::vector<entry> entries;
    entries.reserve(m_uuids.size());
    for (std::size_t i = 0; i < m_uuids.size(); ++i) {
        // First the record, some steps later the bytes that it points to.
        if (i + 2 * stepsAhead < m_uuids.size()) {
            prefetch(m_uuids[i + 2 * stepsAhead]);
            prefetch(m_uuids[i + stepsAhead]->data_ptr());
        }
        entries.push_back(entry{prefixOf(*m_uuids[i]), m_uuids[i]});
    }
    std::sort(entries.begin(), entries.end());
    return entries;
}

void uuid_order::insertInto(QMap<QByteArray, bool> &set)
{
    const std::vector<entry> entries = sortedEntries();
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (i + 2 * stepsAhead < entries.size()) {
            prefetch(entries[i + 2 * stepsAhead].uuid);
            prefetch(entries[i + stepsAhead].uuid->data_ptr());
        }
        insertLast(set, *entries[i].uuid, true);
    }
}
