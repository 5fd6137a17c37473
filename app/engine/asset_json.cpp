#include "engine/asset_json.h"

#include "catalog/asset.h"
#include "engine/asset_words.h"
#include "engine/json_writer.h"
#include "engine/library_date.h"

#include <cmath>

namespace {

// Of one photo or video, key by key.
class AssetWriter
{
public:
    AssetWriter(const Asset &asset, JsonWriter &json) : m_asset(asset), m_json(json) {}

    void write()
    {
        m_json.startObject();
        writeNames();
        writeDates();
        writePicture();
        writeState();
        writeTypes();
        writeBurst();
        writeLocation();
        writeConnections();
        m_json.endObject();
    }

private:
    void writeNames()
    {
        member("id").number(m_asset.id);
        member("kind").word(wordFor(m_asset.kind));
        member("uuid").text(m_asset.uuid);
        member("name").text(m_asset.fileName);
        member("path").text(m_asset.path());
        writeText("originalName", m_asset.originalName);
        writeText("title", m_asset.title);
        writeText("caption", m_asset.caption);
    }

    void writeDates()
    {
        writeDate("taken", m_asset.taken, m_asset.utcOffset);
        writeDate("modified", m_asset.modified);
        writeDate("added", m_asset.added);
        writeDate("trashed", m_asset.trashed);
    }

    void writePicture()
    {
        const bool isVideo = m_asset.kind == AssetKind::Video;
        member("width").number(m_asset.width);
        member("height").number(m_asset.height);
        member("orientation").number(m_asset.orientation);
        member("duration").number(isVideo ? m_asset.duration : std::nullopt);
        member("size").number(m_asset.size);
    }

    void writeState()
    {
        member("favorite").boolean(m_asset.favorite);
        member("hidden").boolean(m_asset.hidden);
        member("inTrash").boolean(m_asset.inTrash);
        member("edited").boolean(m_asset.edited);
    }

    void writeTypes()
    {
        member("types").startList();
        for (const AssetTypeWord &each : assetTypeWords()) {
            if (m_asset.types & each.type)
                m_json.word(each.word);
        }
        m_json.endList();
    }

    void writeBurst()
    {
        JsonWriter &json = member("burst");
        if (m_asset.burst.isNull())
            return json.null();
        json.startObject();
        member("uuid").text(m_asset.burst);
        member("picked").boolean(m_asset.burstPicked);
        json.endObject();
    }

    void writeLocation()
    {
        JsonWriter &json = member("location");
        const std::optional<Location> &place = m_asset.location;
        if (!place || !std::isfinite(place->latitude) || !std::isfinite(place->longitude))
            return json.null();
        json.startObject();
        member("latitude").number(std::optional(place->latitude));
        member("longitude").number(std::optional(place->longitude));
        json.endObject();
    }

    void writeConnections()
    {
        member("keywords").list(m_asset.keywords);
        member("people").list(m_asset.people);
        if (m_asset.source)
            member("source").word(wordFor(*m_asset.source));
        else
            member("source").null();
        member("albums").list(m_asset.albums);
    }

    JsonWriter &member(const char *key)
    {
        m_json.key(key);
        return m_json;
    }

    // Libraries have empty texts where a person has written none.
    void writeText(const char *key, const QByteArray &text)
    {
        member(key).text(text.isEmpty() ? QByteArray() : text);
    }

    void writeDate(const char *key, LibraryDate date, std::optional<int> utcOffset = std::nullopt)
    {
        writeText(key, isoDateText(date, utcOffset));
    }

    const Asset &m_asset;
    JsonWriter &m_json;
};

} // namespace

void writeAsset(const Asset &asset, JsonWriter &json)
{
    AssetWriter(asset, json).write();
}
