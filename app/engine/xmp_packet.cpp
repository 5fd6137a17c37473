#include "engine/xmp_packet.h"

#include "base/error.h"
#include "base/valid_utf8.h"

#include <exempi/xmp.h>

#include <algorithm>
#include <string>
#include <type_traits>

namespace {

void check(bool isDone)
{
    if (!isDone)
        throw Error("XMP", "cannot be made (error " + std::to_string(xmp_get_error()) + ")");
}

struct NamedSpace {
    const char *space;
    const char *prefix;
};

// Those that the library may not know by itself.
constexpr NamedSpace furtherSpaces[] = {
    {xmp_space::digikam, "digiKam"},
    {xmp_space::iptcExtension, "Iptc4xmpExt"},
    {xmp_space::lightroom, "lr"},
};

// Of the library's state there is one in a process.
class Toolkit
{
public:
    Toolkit()
    {
        check(xmp_init());
        for (const NamedSpace &each : furtherSpaces)
            check(xmp_register_namespace(each.space, each.prefix, nullptr));
    }
    ~Toolkit() { xmp_terminate(); }

    Toolkit(const Toolkit &) = delete;
    Toolkit &operator=(const Toolkit &) = delete;

    // Also guards the number of the last error, of which there is one for all threads.
    std::mutex turns;
};

Toolkit &toolkit()
{
    static Toolkit toolkit;
    return toolkit;
}

struct FreeString {
    void operator()(XmpStringPtr string) const { xmp_string_free(string); }
};
using StringOwner = std::unique_ptr<std::remove_pointer_t<XmpStringPtr>, FreeString>;

// Bytes of the character at `at` of valid UTF-8 if it must not be written, otherwise 0. XML allows
// the control characters beyond ASCII, but terminals act on some of them.
int forbiddenLength(const QByteArray &valid, int at)
{
    const auto first = static_cast<uchar>(valid[at]);
    if (first < 0x20 || first == 0x7f)
        return first == '\t' || first == '\n' || first == '\r' ? 0 : 1;
    if (first == 0xc2)
        return static_cast<uchar>(valid[at + 1]) < 0xa0 ? 2 : 0;
    const bool isNone = first == 0xef && static_cast<uchar>(valid[at + 1]) == 0xbf &&
                        static_cast<uchar>(valid[at + 2]) >= 0xbe; // U+FFFE and U+FFFF
    return isNone ? 3 : 0;
}

QByteArray textForXml(const QByteArray &text)
{
    const QByteArray valid = validUtf8(text);
    QByteArray result;
    result.reserve(valid.size());
    for (int at = 0; at < valid.size();) {
        const int forbidden = forbiddenLength(valid, at);
        if (forbidden > 0)
            result.append("\xef\xbf\xbd");
        else
            result.append(valid[at]);
        at += std::max(forbidden, 1);
    }
    return result;
}

// The name and version of the library would make two files of the same photo differ.
QByteArray withoutToolkit(QByteArray xml)
{
    const QByteArray attribute = " x:xmptk=\"";
    const int start = xml.indexOf(attribute);
    if (start < 0 || start > xml.indexOf('>'))
        return xml;
    const int end = xml.indexOf('"', start + attribute.size());
    return xml.remove(start, end + 1 - start);
}

} // namespace

class XmpPacket::Handle
{
public:
    Handle() : m_xmp(xmp_new_empty()) { check(m_xmp != nullptr); }
    ~Handle() { xmp_free(m_xmp); }

    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;

    XmpPtr get() const { return m_xmp; }

private:
    const XmpPtr m_xmp;
};

XmpPacket::XmpPacket() : m_turn(toolkit().turns), m_xmp(new Handle) {}

XmpPacket::~XmpPacket() = default;

void XmpPacket::setText(const XmpProperty &property, const QByteArray &text)
{
    check(xmp_set_property(m_xmp->get(), property.space, property.name,
                           textForXml(text).constData(), 0));
}

void XmpPacket::setTextForAllLanguages(const XmpProperty &property, const QByteArray &text)
{
    check(xmp_set_localized_text(m_xmp->get(), property.space, property.name, "", "x-default",
                                 textForXml(text).constData(), 0));
}

void XmpPacket::append(const XmpProperty &property, ListKind kind, const QByteArray &text)
{
    const uint32_t listOptions = kind == Bag ? XMP_PROP_ARRAY_IS_UNORDERED
                                             : XMP_PROP_VALUE_IS_ARRAY | XMP_PROP_ARRAY_IS_ORDERED;
    check(xmp_append_array_item(m_xmp->get(), property.space, property.name, listOptions,
                                textForXml(text).constData(), 0));
}

QByteArray XmpPacket::bytes() const
{
    const StringOwner xml(xmp_string_new());
    check(xml != nullptr);
    check(xmp_serialize_and_format(m_xmp->get(), xml.get(), XMP_SERIAL_OMITPACKETWRAPPER, 0, "\n",
                                   " ", 0));
    return withoutToolkit(xmp_string_cstr(xml.get()));
}
