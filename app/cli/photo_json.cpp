#include "cli/photo_json.h"

#include "cli/json_writer.h"
#include "cli/output.h"
#include "engine/asset_words.h"
#include "engine/library_date.h"

#include <cmath>

namespace {

// Of one photo or video, key by key.
class PhotoWriter
{
public:
    PhotoWriter(const Asset &photo, JsonWriter &json) : m_photo(photo), m_json(json) {}

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
        member("id").number(m_photo.id);
        member("kind").word(wordFor(m_photo.kind));
        member("uuid").text(m_photo.uuid);
        member("name").text(m_photo.fileName);
        member("path").text(m_photo.path());
        writeText("originalName", m_photo.originalName);
        writeText("title", m_photo.title);
        writeText("caption", m_photo.caption);
    }

    void writeDates()
    {
        writeDate("taken", m_photo.taken, m_photo.utcOffset);
        writeDate("modified", m_photo.modified);
        writeDate("added", m_photo.added);
        writeDate("trashed", m_photo.trashed);
    }

    void writePicture()
    {
        const bool isVideo = m_photo.kind == AssetKind::Video;
        member("width").number(m_photo.width);
        member("height").number(m_photo.height);
        member("orientation").number(m_photo.orientation);
        member("duration").number(isVideo ? m_photo.duration : std::nullopt);
        member("size").number(m_photo.size);
    }

    void writeState()
    {
        member("favorite").boolean(m_photo.favorite);
        member("hidden").boolean(m_photo.hidden);
        member("inTrash").boolean(m_photo.inTrash);
        member("edited").boolean(m_photo.edited);
    }

    void writeTypes()
    {
        member("types").startList();
        for (const AssetTypeWord &each : assetTypeWords()) {
            if (m_photo.types & each.type)
                m_json.word(each.word);
        }
        m_json.endList();
    }

    void writeBurst()
    {
        JsonWriter &json = member("burst");
        if (m_photo.burst.isNull())
            return json.null();
        json.startObject();
        member("uuid").text(m_photo.burst);
        member("picked").boolean(m_photo.burstPicked);
        json.endObject();
    }

    void writeLocation()
    {
        JsonWriter &json = member("location");
        const std::optional<Location> &place = m_photo.location;
        if (!place || !std::isfinite(place->latitude) || !std::isfinite(place->longitude))
            return json.null();
        json.startObject();
        member("latitude").number(std::optional(place->latitude));
        member("longitude").number(std::optional(place->longitude));
        json.endObject();
    }

    void writeConnections()
    {
        member("keywords").list(m_photo.keywords);
        member("people").list(m_photo.people);
        if (m_photo.source)
            member("source").word(wordFor(*m_photo.source));
        else
            member("source").null();
        member("albums").list(m_photo.albums);
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

    const Asset &m_photo;
    JsonWriter &m_json;
};

} // namespace

void writePhoto(const Asset &photo, JsonWriter &json)
{
    PhotoWriter(photo, json).write();
}

void writePhotosAsJson(const std::vector<const Asset *> &photos, Output &output)
{
    JsonWriter json;
    output.write("{\"photos\": [");
    for (const Asset *photo : photos) {
        output.write(photo == photos.front() ? "\n" : ",\n");
        writePhoto(*photo, json);
        output.write(json.taken());
    }
    output.write(photos.empty() ? "]}\n" : "\n]}\n");
}
