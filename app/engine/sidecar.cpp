#include "engine/sidecar.h"

#include "catalog/catalog.h"
#include "engine/album_tree.h"
#include "engine/asset_json.h"
#include "engine/json_writer.h"
#include "engine/library_date.h"
#include "engine/xmp_packet.h"

#include <cmath>
#include <set>
#include <vector>

namespace {

// A tag below others: {"Albums", "Trips", "Rome"}.
using TagPath = std::vector<QByteArray>;

// Programs take the letter between the names of a path for one wherever it stands.
QByteArray joined(const TagPath &path, char separator)
{
    QByteArray text;
    for (const QByteArray &name : path) {
        if (!text.isEmpty())
            text.append(separator);
        text.append(QByteArray(name).replace(separator, '-'));
    }
    return text;
}

// Degrees, minutes and a millionth of them, and one of the two letters: "43,39.000000N".
QByteArray angleText(double degrees, char positive, char negative)
{
    constexpr qint64 inMinute = 1000000;
    const qint64 millionths = std::llround(std::abs(degrees) * 60 * inMinute);
    const qint64 minutes = millionths / inMinute;
    const QByteArray fraction = QByteArray::number(millionths % inMinute).rightJustified(6, '0');
    return QByteArray::number(minutes / 60) + ',' + QByteArray::number(minutes % 60) + '.' +
           fraction + (degrees < 0 ? negative : positive);
}

bool isOnEarth(const Location &place)
{
    return std::abs(place.latitude) <= 90 && std::abs(place.longitude) <= 180;
}

// Of one photo or video, property by property.
class AssetXmp
{
public:
    AssetXmp(const Asset &asset, const Catalog &catalog) : m_asset(asset), m_catalog(catalog) {}

    QByteArray bytes()
    {
        setTexts();
        setTaken();
        setPlace();
        for (const QByteArray &keyword : m_asset.keywords)
            append({xmp_space::dublinCore, "subject"}, XmpPacket::Bag, keyword);
        for (const QByteArray &person : m_asset.people)
            append({xmp_space::iptcExtension, "PersonInImage"}, XmpPacket::Bag, person);
        setTags();
        return m_xmp.bytes();
    }

private:
    void setTexts()
    {
        if (!m_asset.title.isEmpty())
            m_xmp.setTextForAllLanguages({xmp_space::dublinCore, "title"}, m_asset.title);
        if (!m_asset.caption.isEmpty())
            m_xmp.setTextForAllLanguages({xmp_space::dublinCore, "description"}, m_asset.caption);
        set({xmp_space::media, "PreservedFileName"},
            m_asset.originalName.isEmpty() ? m_asset.fileName : m_asset.originalName);
        if (m_asset.favorite.value_or(false))
            set({xmp_space::xmp, "Rating"}, "5");
    }

    void setTaken()
    {
        const QByteArray taken = isoDateText(m_asset.taken, m_asset.utcOffset);
        set({xmp_space::exif, "DateTimeOriginal"}, taken);
        set({xmp_space::photoshop, "DateCreated"}, taken);
        set({xmp_space::xmp, "CreateDate"}, taken);
    }

    void setPlace()
    {
        const std::optional<Location> &place = m_asset.location;
        if (!place || !isOnEarth(*place))
            return;
        set({xmp_space::exif, "GPSVersionID"}, "2.0.0.0");
        set({xmp_space::exif, "GPSMapDatum"}, "WGS-84");
        set({xmp_space::exif, "GPSLatitude"}, angleText(place->latitude, 'N', 'S'));
        set({xmp_space::exif, "GPSLongitude"}, angleText(place->longitude, 'E', 'W'));
    }

    // No property is meant for the albums of a photo. As tags below one of their own, beside those
    // of the people, programs show them as a tree that photos can be chosen by. Such programs look
    // at these lists first, and only then at the keywords, which are there again for that reason.
    void setTags()
    {
        for (const TagPath &tag : tags()) {
            append({xmp_space::digikam, "TagsList"}, XmpPacket::Sequence, joined(tag, '/'));
            append({xmp_space::lightroom, "hierarchicalSubject"}, XmpPacket::Bag, joined(tag, '|'));
        }
    }

    std::vector<TagPath> tags() const
    {
        std::vector<TagPath> tags;
        for (const QByteArray &keyword : m_asset.keywords)
            tags.push_back({keyword});
        for (const QByteArray &person : m_asset.people)
            tags.push_back({"People", person});
        for (const qint64 id : m_asset.albums) {
            const Album *const album = m_catalog.album(id);
            if (album && !album->title.isEmpty())
                tags.push_back(tagOf(*album));
        }
        return tags;
    }

    TagPath tagOf(const Album &album) const
    {
        TagPath tag = {"Albums"};
        for (const Album *folder : foldersAround(album, m_catalog)) {
            if (!folder->title.isEmpty())
                tag.push_back(folder->title);
        }
        tag.push_back(album.title);
        return tag;
    }

    void set(const XmpProperty &property, const QByteArray &text)
    {
        if (!text.isEmpty())
            m_xmp.setText(property, text);
    }

    // What a list has is not added again: two albums may have the same path.
    void append(const XmpProperty &property, XmpPacket::ListKind kind, const QByteArray &text)
    {
        if (!text.isEmpty() && m_listed.emplace(property.name, text).second)
            m_xmp.append(property, kind, text);
    }

    const Asset &m_asset;
    const Catalog &m_catalog;
    XmpPacket m_xmp;
    std::set<std::pair<QByteArray, QByteArray>> m_listed; // names of lists with what is in them
};

} // namespace

QByteArray sidecarSuffix(SidecarFormat format)
{
    return format == SidecarFormat::Json ? ".json" : ".xmp";
}

QByteArray jsonSidecar(const Asset &asset)
{
    JsonWriter json;
    writeAsset(asset, json);
    return json.taken() + '\n';
}

QByteArray xmpSidecar(const Asset &asset, const Catalog &catalog)
{
    return AssetXmp(asset, catalog).bytes();
}
