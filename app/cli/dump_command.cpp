#include "base/error.h"
#include "base/printable.h"
#include "cli/exit_codes.h"
#include "cli/interruptible_task.h"
#include "cli/library_command.h"
#include "cli/output.h"
#include "cli/progress_bar.h"
#include "engine/library_session.h"
#include "engine/photo_text.h"
#include "engine/plugin_view.h"

#include <QCryptographicHash>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>

namespace {

using Json = nlohmann::ordered_json; // the keys stay in the order in which they are set

// Always valid UTF-8: what a text cannot express is replaced.
std::string utf8(const QString &text)
{
    return text.toUtf8().toStdString();
}

// Everything unprintable stands within a text of the JSON, where it may be escaped.
QByteArray jsonText(const Json &value)
{
    const std::string text = value.dump();
    const auto isPlain = [](char c) { return c >= ' ' && c <= '~'; };
    if (std::all_of(text.begin(), text.end(), isPlain))
        return QByteArray::fromStdString(text);
    QString result;
    for (const QChar letter : QString::fromStdString(text)) {
        if (letter.isSurrogate() || isPrintable(letter.unicode()))
            result += letter;
        else
            result += QStringLiteral("\\u%1").arg(letter.unicode(), 4, 16, QLatin1Char('0'));
    }
    return result.toUtf8();
}

Json idList(const QList<quint64> &ids)
{
    Json list = Json::array();
    for (const quint64 id : ids)
        list.push_back(id);
    return list;
}

// Null where there is none.
Json dateValue(const QDateTime &date)
{
    return date.isValid() ? Json(utf8(isoText(date))) : Json();
}

Json photoObject(LibrarySession &session, quint64 id)
{
    const PluginPhoto photo = pluginPhoto(session, id);
    const photoItem &record = photo.record;
    Json object = {{"id", id}, {"ok", photo.isUsable}};
    if (photo.filled == PluginPhoto::Nothing)
        return object;
    const bool isWhole = photo.filled == PluginPhoto::Everything;
    object["uuid"] = record.uuid.toHex().toStdString();
    object["name"] = utf8(record.name);
    object["type"] = record.type;
    object["path"] = utf8(record.path);
    if (isWhole)
        object["thumbPath"] = utf8(record.thumbPath);
    object["orientation"] = record.orientation;
    object["height"] = record.height;
    object["width"] = record.width;
    object["duration"] = record.duration;
    if (!isWhole)
        return object;
    object["fileSize"] = record.fileSize;
    object["createDate"] = dateValue(photo.createDate);
    object["modifyDate"] = dateValue(photo.modifyDate);
    object["trashedDate"] = record.trashedDate;
    object["avalancheUUID"] = utf8(record.avalancheUUID);
    object["sortToken"] = record.sortToken;
    return object;
}

Json albumObject(LibrarySession &session, quint64 id)
{
    albumItem item;
    if (!session.library().getAlbum(id, &item))
        return {{"id", id}, {"ok", false}};
    return {
        {"id", item.id},           {"ok", true},        {"uuid", item.uuid.toHex().toStdString()},
        {"name", utf8(item.name)}, {"type", item.type}, {"photoIds", idList(item.photoIDs)},
    };
}

Json thumbnailObject(LibrarySession &session, quint64 id)
{
    const PluginThumbnail thumbnail = pluginThumbnail(session, id);
    const QByteArray hash = QCryptographicHash::hash(thumbnail.bytes, QCryptographicHash::Sha256);
    return {
        {"id", id},
        {"result", thumbnail.result},
        {"bytes", thumbnail.bytes.size()},
        {"sha256", hash.toHex().toStdString()},
    };
}

// A bar among the lines of the JSON would spoil both.
bool showsDumpProgress()
{
    return showsProgress() && !Output::isTerminal();
}

// Writes a library as one JSON value, piece by piece: as a whole in memory it would take far more
// than the library itself.
class LibraryDump
{
public:
    LibraryDump(LibrarySession &session, Output &output, bool hasThumbnails)
        : m_session(session), m_output(output), m_hasThumbnails(hasThumbnails),
          m_photoIds(session.library().photoIDs()), m_albumIds(session.library().albumIDs()),
          m_task(showsDumpProgress(), QStringLiteral("Reading the library"), steps())
    {
    }

    // Throws Error also when it is interrupted: then the last brace is missing.
    void write()
    {
        m_output.whileWaiting([this] { m_task.setDone(m_done); });
        const bool isInterrupted = m_task.run([this] { writeLibrary(); });
        m_output.whileWaiting(nullptr);
        if (isInterrupted)
            throw Error(Error::Cancelled, "interrupted: the JSON is not complete");
    }

private:
    using ObjectMaker = Json (*)(LibrarySession &, quint64);

    int steps() const { return m_photoIds.size() * (m_hasThumbnails ? 2 : 1) + m_albumIds.size(); }

    void writeLibrary()
    {
        photo_manager_int &library = m_session.library();
        m_output.write("{\n");
        writeMember("parsed", true);
        writeMember("libraryUuid", utf8(library.getUUID()));
        writeMember("photoCount", library.photoCnt());
        writeMember("photoIds", idList(m_photoIds));
        writeMember("albumCount", library.albumCnt());
        writeMember("albumIds", idList(m_albumIds));
        writeList("photos", m_photoIds, photoObject);
        m_output.write(",\n");
        writeList("albums", m_albumIds, albumObject);
        if (m_hasThumbnails) {
            m_output.write(",\n");
            writeList("thumbnails", m_photoIds, thumbnailObject);
        }
        m_output.write("\n}\n");
        m_output.flush(); // here, where a signal can still end it
    }

    void writeMember(const char *name, const Json &value)
    {
        m_output.write(jsonText(name) + ": " + jsonText(value) + ",\n");
    }

    void writeList(const char *name, const QList<quint64> &ids, ObjectMaker make)
    {
        m_output.write(jsonText(name) + ": [");
        const char *separator = "\n";
        for (const quint64 id : ids) {
            m_task.setDone(m_done);
            m_output.write(separator + jsonText(make(m_session, id)));
            separator = ",\n";
            ++m_done;
        }
        m_output.write("\n]");
    }

    LibrarySession &m_session;
    Output &m_output;
    const bool m_hasThumbnails;
    const QList<quint64> m_photoIds;
    const QList<quint64> m_albumIds;
    InterruptibleTask m_task;
    int m_done = 0;
};

int runDump(const CommandContext &context, bool hasThumbnails)
{
    return workOnLibrary(context, [hasThumbnails](LibrarySession &session, Output &output) {
        LibraryDump(session, output, hasThumbnails).write();
        return exitDone;
    });
}

} // namespace

void addDumpCommand(CLI::App &app, CommandContext &context)
{
    CLI::App *const command =
        app.add_subcommand("dump", "Print the library as JSON, as the plug-in gives it");
    const auto hasThumbnails = std::make_shared<bool>(false);
    command->add_flag("--thumbnails", *hasThumbnails,
                      "Also read every thumbnail, and print its size and hash");
    command->footer("For authors of hosts: texts, numbers and refusals are the plug-in's own. A "
                    "photo that it refuses has \"ok\": false and the fields that the plug-in did "
                    "fill. A date that the plug-in does not give is null.\n"
                    "\n"
                    "Examples:\n"
                    "  photolib dump > library.json\n"
                    "  photolib dump -d ~/phone-copy | jq '.albums[].name'");
    command->callback([&context, hasThumbnails] {
        context.run = [&context, hasThumbnails] { return runDump(context, *hasThumbnails); };
    });
}
