#include "cli/album_lists.h"

#include "base/printable.h"
#include "cli/help_text.h"
#include "cli/output.h"
#include "cli/text_table.h"
#include "engine/album_tree.h"
#include "engine/asset_words.h"
#include "engine/json_writer.h"
#include "engine/library_date.h"

#include <algorithm>

namespace {

// Those of `ids` that a list of all photos has, the trash among them.
std::vector<qint64> listed(const Catalog &catalog, std::vector<qint64> ids)
{
    const auto isLeftOut = [&catalog](qint64 id) {
        const Asset *const asset = catalog.asset(id);
        return !asset || asset->isShared();
    };
    ids.erase(std::remove_if(ids.begin(), ids.end(), isLeftOut), ids.end());
    return ids;
}

QString nameCell(const AlbumTree::Line &line)
{
    const QString indent(2 * line.depth, QLatin1Char(' '));
    return indent + QString::fromUtf8(printable(line.album->title));
}

// Most libraries do not store which photos a smart album has.
QString countCell(const Catalog &catalog, const AlbumTree &tree, const Album &album)
{
    if (album.kind == AlbumKind::Smart && album.assets.empty())
        return QString();
    return QString::number(listed(catalog, tree.assetsOf(album)).size());
}

} // namespace

void writeAlbum(const Catalog &catalog, const Album &album, JsonWriter &json)
{
    json.startObject();
    json.key("id");
    json.number(album.id);
    json.key("uuid");
    json.text(album.uuid);
    json.key("kind");
    json.word(wordFor(album.kind));
    json.key("title");
    json.text(album.title.isEmpty() ? QByteArray() : album.title);
    json.key("parent");
    json.number(album.parent);
    json.key("created");
    const QByteArray created = isoDateText(album.created, std::nullopt);
    json.text(created.isEmpty() ? QByteArray() : created);
    json.key("photos");
    json.list(listed(catalog, album.assets));
    json.endObject();
}

void writeAlbumsAsJson(const Catalog &catalog, Output &output)
{
    JsonWriter json;
    output.write("{\"albums\": [");
    for (const Album &album : catalog.albums) {
        output.write(&album == &catalog.albums.front() ? "\n" : ",\n");
        writeAlbum(catalog, album, json);
        output.write(json.taken());
    }
    output.write(catalog.albums.empty() ? "]}\n" : "\n]}\n");
}

void writeAlbumsAsTable(const Catalog &catalog, Output &output)
{
    constexpr int idColumn = 0;
    constexpr int nameColumn = 1;
    constexpr int countColumn = 3;
    TextTable table({QStringLiteral("ID"), QStringLiteral("NAME"), QStringLiteral("KIND"),
                     QStringLiteral("PHOTOS")});
    table.alignRight(idColumn);
    table.allowCutting(nameColumn);
    table.alignRight(countColumn);
    const AlbumTree tree(catalog);
    for (const AlbumTree::Line &line : tree.lines()) {
        const Album &album = *line.album;
        table.addRow({QString::number(album.id), nameCell(line),
                      QString::fromLatin1(wordFor(album.kind)), countCell(catalog, tree, album)});
    }
    if (Output::isTerminal())
        table.fitInto(terminalWidth());
    table.write(output);
}
