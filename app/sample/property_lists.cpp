#include "sample/property_lists.h"

#include "sample/sample_error.h"

#include <plist/plist.h>

#include <memory>

namespace sample {

namespace {

struct PlistFree {
    void operator()(void *plist) const { plist_free(plist); }
};
using Plist = std::unique_ptr<void, PlistFree>;

using Bytes = std::unique_ptr<char, void (*)(char *)>;

QByteArray taken(const Bytes &bytes, uint32_t size)
{
    if (!bytes)
        throw SampleError(QStringLiteral("cannot make a property list: out of memory"));
    return {bytes.get(), static_cast<int>(size)};
}

QByteArray toXml(const Plist &plist)
{
    char *bytes = nullptr;
    uint32_t size = 0;
    plist_to_xml(plist.get(), &bytes, &size);
    return taken({bytes, plist_to_xml_free}, size);
}

QByteArray toBinary(const Plist &plist)
{
    char *bytes = nullptr;
    uint32_t size = 0;
    plist_to_bin(plist.get(), &bytes, &size);
    return taken({bytes, plist_to_bin_free}, size);
}

void put(const Plist &plist, const char *key, plist_t value)
{
    plist_dict_set_item(plist.get(), key, value);
}

} // namespace

QByteArray currentLibraryPlist(const QByteArray &uuid)
{
    const Plist plist(plist_new_dict());
    put(plist, "libraryUUID", plist_new_string(uuid.constData()));
    return toXml(plist);
}

QByteArray adjustmentsPlist(qint64 editedAt)
{
    const Plist plist(plist_new_dict());
    put(plist, "adjustmentBaseVersion", plist_new_uint(0));
    put(plist, "adjustmentTimestamp", plist_new_date(static_cast<int32_t>(editedAt), 0));
    put(plist, "adjustmentFormatIdentifier", plist_new_string("photolib.sample.black-and-white"));
    put(plist, "adjustmentFormatVersion", plist_new_string("1.0"));
    return toXml(plist);
}

QByteArray storeMetadata(int modelVersion)
{
    const Plist plist(plist_new_dict());
    put(plist, "NSStoreType", plist_new_string("SQLite"));
    put(plist, "NSPersistenceFrameworkVersion", plist_new_uint(851));
    put(plist, "NSStoreModelVersionHashesVersion", plist_new_uint(3));
    put(plist, "_NSAutoVacuumLevel", plist_new_string("2"));
    put(plist, "PLModelVersion", plist_new_uint(static_cast<uint64_t>(modelVersion)));
    return toBinary(plist);
}

} // namespace sample
