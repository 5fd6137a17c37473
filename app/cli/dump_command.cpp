#include "base/printable.h"
#include "cli/library_command.h"
#include "cli/output.h"
#include "engine/library_session.h"
#include "engine/photo_text.h"

#include <QCryptographicHash>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>

namespace {

using Json = nlohmann::ordered_json; // the keys stay in the order in which they are set

// Always valid UTF-8: what a text can not express is replaced.
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

Json photoObject(LibrarySession &session, quint64 id)
{
    photoItem item;
    if (session.photo(id, &item) != FileState::There)
        return {{"id", id}, {"ok", false}};
    return {
        {"id", item.id},
        {"ok", true},
        {"uuid", item.uuid.toHex().toStdString()},
        {"name", utf8(item.name)},
        {"type", item.type},
        {"path", utf8(item.path)},
        {"thumbPath", utf8(item.thumbPath)},
        {"orientation", item.orientation},
        {"height", item.height},
        {"width", item.width},
        {"duration", item.duration},
        {"fileSize", item.fileSize},
        {"createDate", utf8(isoText(item.createDate))},
        {"modifyDate", utf8(isoText(item.modifyDate))},
        {"trashedDate", item.trashedDate},
        {"avalancheUUID", utf8(item.avalancheUUID)},
        {"sortToken", item.sortToken},
    };
}

void writeMember(Output &output, const char *name, const Json &value)
{
    output.write(jsonText(name) + ": " + jsonText(value) + ",\n");
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
    QByteArray bytes;
    const int result = session.library().getPhotoThumbnail(id, bytes);
    if (bytes.isEmpty())
        session.requireDevice();
    const QByteArray hash = QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
    return {
        {"id", id},
        {"result", result},
        {"bytes", bytes.size()},
        {"sha256", hash.toHex().toStdString()},
    };
}

using ObjectMaker = Json (*)(LibrarySession &, quint64);

// One object at a time, for a large library as one JSON value would take far more memory
// than the library itself.
void writeObjects(LibrarySession &session, const QList<quint64> &ids, ObjectMaker make,
                  Output &output)
{
    const char *separator = "\n";
    for (const quint64 id : ids) {
        output.write(separator + jsonText(make(session, id)));
        separator = ",\n";
    }
}

void writeLibrary(LibrarySession &session, Output &output)
{
    photo_manager_int &library = session.library();
    output.write("{\n");
    writeMember(output, "parsed", true);
    writeMember(output, "libraryUuid", utf8(library.getUUID()));
    writeMember(output, "photoCount", library.photoCnt());
    writeMember(output, "photoIds", idList(library.photoIDs()));
    writeMember(output, "albumCount", library.albumCnt());
    writeMember(output, "albumIds", idList(library.albumIDs()));
    output.write("\"photos\": [");
    writeObjects(session, library.photoIDs(), photoObject, output);
    output.write("\n],\n\"albums\": [");
    writeObjects(session, library.albumIDs(), albumObject, output);
    output.write("\n],\n\"thumbnails\": [");
    writeObjects(session, library.photoIDs(), thumbnailObject, output);
    output.write("\n]\n}\n");
}

} // namespace

void addDumpCommand(CLI::App &app, CommandContext &context)
{
    CLI::App *const command = app.add_subcommand("dump", "Print the whole library as JSON");
    command->footer("Examples:\n"
                    "  photolib dump > library.json\n"
                    "  photolib dump -d ~/phone-copy | jq '.albums[].name'");
    command->callback(
        [&context] { context.run = [&context] { return runOnLibrary(context, writeLibrary); }; });
}
