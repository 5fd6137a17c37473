#include "ios/sync_plist.h"

#include "ios/open_file.h"

#include <plist/plist.h>

#include <cstring>

namespace {

// A device's list has one container and a few hundred bytes. Far above that, but low
// enough for libplist, whose time grows with the square of a text's length and which frees
// nested containers by recursion: this many still fit the stack of any thread.
const int mostBytes = 256 * 1024;
const int mostContainers = 10000;

// What lies behind the first bytes too many is not read: no list of a device is so long.
QByteArray readAll(const open_file &file)
{
    QByteArray content;
    char piece[1024] = {}; // a read may give less than it says
    const int pieceSize = sizeof piece;
    int count = 0;
    do {
        count = vFileRead(file.get(), piece, pieceSize);
        // A count beyond the buffer is a file service's error; the bytes are not ours.
        if (count > 0 && count <= pieceSize)
            content.append(piece, count);
    } while (count > 0 && count <= pieceSize && content.size() <= mostBytes);
    return content;
}

bool isSafeToParse(const QByteArray &xml)
{
    return xml.size() <= mostBytes && xml.count("<array") + xml.count("<dict") <= mostContainers;
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

// Of a text with a zero byte in it, which no device writes, libplist makes an assertion that
// ends the host's process.
bool hasZeroByte(plist_t text)
{
    uint64_t length = 0;
    const char *const bytes = plist_get_string_ptr(text, &length);
    return bytes && std::strlen(bytes) != length;
}

QByteArray property_list::text(const char *key) const
{
    const plist_t item = m_root ? plist_dict_get_item(m_root, key) : nullptr;
    if (!item)
        return QByteArray();
    if (hasZeroByte(item))
        return QByteArray(plist_get_string_ptr(item, nullptr)); // what is before it
    // Not freed: the string belongs to libplist's allocator, which on some hosts is not
    // ours to call.
    char *value = nullptr;
    plist_get_string_val(item, &value);
    return QByteArray(value);
}

} // namespace

QByteArray readSyncPlist(VDev *device)
{
    const open_file file(vFileOpen(device, "/Photos/Sync/CurrentLibraryUUID.plist", 0));
    if (!file.get())
        return QByteArray();
    const QByteArray xml = readAll(file);
    return isSafeToParse(xml) ? property_list(xml).text("libraryUUID") : QByteArray();
}
