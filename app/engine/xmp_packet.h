#ifndef PHOTOLIB_ENGINE_XMP_PACKET_H
#define PHOTOLIB_ENGINE_XMP_PACKET_H

#include <QByteArray>

#include <memory>
#include <mutex>

/// The name of a piece of XMP.
struct XmpProperty {
    const char *space; ///< the namespace, one that XmpPacket knows
    const char *name;
};

/// Namespaces that pictures use; XmpPacket knows all of them.
namespace xmp_space {
constexpr char digikam[] = "http://www.digikam.org/ns/1.0/";
constexpr char dublinCore[] = "http://purl.org/dc/elements/1.1/";
constexpr char exif[] = "http://ns.adobe.com/exif/1.0/";
constexpr char iptcExtension[] = "http://iptc.org/std/Iptc4xmpExt/2008-02-29/";
constexpr char lightroom[] = "http://ns.adobe.com/lightroom/1.0/";
constexpr char media[] = "http://ns.adobe.com/xap/1.0/mm/";
constexpr char photoshop[] = "http://ns.adobe.com/photoshop/1.0/";
constexpr char xmp[] = "http://ns.adobe.com/xap/1.0/";
} // namespace xmp_space

/// What is told of one picture in XMP.
///
/// One object exists at a time: another thread that makes one waits until the first is gone, and
/// the same thread must not make a second. Each operation throws Error when the library behind it
/// fails, and std::bad_alloc. Texts may be of any length and hold any bytes: what is not UTF-8, and
/// control characters other than tabs and line ends, most of which XML forbids, become U+FFFD.
class XmpPacket
{
public:
    enum ListKind {
        Bag,      ///< in no order
        Sequence, ///< in this order
    };

    XmpPacket();
    ~XmpPacket();

    XmpPacket(const XmpPacket &) = delete;
    XmpPacket &operator=(const XmpPacket &) = delete;

    void setText(const XmpProperty &property, const QByteArray &text);

    /// A text that stands for those in all languages.
    void setTextForAllLanguages(const XmpProperty &property, const QByteArray &text);

    /// Adds `text` to a list, which it begins where there is none.
    void append(const XmpProperty &property, ListKind kind, const QByteArray &text);

    /// The file's contents, in UTF-8. It tells nothing of when and with what it was made, so that
    /// the same properties, set in the same order, give the same bytes.
    QByteArray bytes() const;

private:
    class Handle;

    std::unique_lock<std::mutex> m_turn;
    std::unique_ptr<Handle> m_xmp;
};

#endif // PHOTOLIB_ENGINE_XMP_PACKET_H
