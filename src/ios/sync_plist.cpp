#include "ios/sync_plist.h"

#include "host/device_files.h"

#include <plist/plist.h>

namespace {

// libplist frees nested containers by recursion. The list that a device writes nests
// one deep; this many still fit any thread's stack.
const int mostContainers = 1000;

QByteArray readWholeFile(VFile *file)
{
    QByteArray content;
    char piece[1024];
    const int pieceSize = sizeof piece;
    int count = vFileRead(file, piece, pieceSize);
    // A count beyond the buffer is a file service's error; the bytes are not ours.
    while (count > 0 && count <= pieceSize) {
        content.append(piece, count);
        count = vFileRead(file, piece, pieceSize);
    }
    return content;
}

bool nestsTooDeep(const QByteArray &xml)
{
    return xml.count("<array") + xml.count("<dict") > mostContainers;
}

// Owns a parsed property list; null where the text is none.
class property_list
{
public:
    explicit property_list(const QByteArray &xml) : m_root(nullptr)
    {
        plist_from_xml(xml.constData(), static_cast<uint32_t>(xml.size()), &m_root);
    }
    ~property_list() { plist_free(m_root); }

    QByteArray text(const char *key) const;

private:
    Q_DISABLE_COPY(property_list)

    plist_t m_root;
};

QByteArray property_list::text(const char *key) const
{
    const plist_t item = m_root ? plist_dict_get_item(m_root, key) : nullptr;
    if (!item)
        return QByteArray();
    // Not freed: the string belongs to libplist's allocator, which on some hosts is not
    // ours to call.
    char *value = nullptr;
    plist_get_string_val(item, &value);
    return QByteArray(value);
}

} // namespace

QByteArray readSyncPlist(VDev *device)
{
    VFile *file = vFileOpen(device, "/Photos/Sync/CurrentLibraryUUID.plist", 0);
    if (!file)
        return QByteArray();
    const QByteArray xml = readWholeFile(file);
    vFileClose(file);
    if (nestsTooDeep(xml))
        return QByteArray();
    return property_list(xml).text("libraryUUID");
}
