#include "cli/photo_table.h"

#include "base/byte_count.h"
#include "cli/help_text.h"
#include "cli/output.h"
#include "cli/text_table.h"
#include "engine/asset_text.h"
#include "engine/asset_words.h"
#include "engine/classic_photos.h"
#include "engine/library_date.h"
#include "engine/library_session.h"
#include "engine/photo_text.h"

#include <algorithm>
#include <cmath>

namespace {

QString yesText(std::optional<bool> value)
{
    return value.value_or(false) ? QStringLiteral("yes") : QString();
}

QString joined(const std::vector<QByteArray> &texts)
{
    QStringList list;
    for (const QByteArray &text : texts)
        list.append(shownText(text));
    return list.join(QStringLiteral(", "));
}

QString stateText(LibrarySession &session, const Asset &photo)
{
    switch (session.fileState(photo)) {
    case FileState::There:
        return QStringLiteral("there");
    case FileState::Missing:
        return QStringLiteral("missing");
    case FileState::Unreadable:
        break;
    }
    return QStringLiteral("unreadable");
}

// Instead of the size of a file that is not there, why it is not.
QString sizeText(LibrarySession &session, const Asset &photo)
{
    QString state = stateText(session, photo);
    if (state != QLatin1String("there"))
        return state;
    return photo.size ? byteCountText(*photo.size) : QString();
}

QString dimensionsText(const Asset &photo)
{
    if (photo.width.value_or(0) <= 0 || photo.height.value_or(0) <= 0)
        return QString();
    return QStringLiteral("%1 x %2").arg(*photo.width).arg(*photo.height);
}

QString playingTimeText(const Asset &photo)
{
    constexpr double longest = 1e9; // seconds; more is no playing time
    const double seconds = photo.duration.value_or(-1);
    const bool isPlayed = photo.kind == AssetKind::Video && seconds >= 0 && seconds < longest;
    return isPlayed ? durationText(std::llround(seconds)) : QString();
}

QString typesText(const Asset &photo)
{
    QStringList words;
    for (const AssetTypeWord &each : assetTypeWords()) {
        if (photo.types & each.type)
            words.append(QLatin1String(each.word));
    }
    return words.join(QStringLiteral(", "));
}

QString albumsText(const LibrarySession &session, const Asset &photo)
{
    std::vector<QByteArray> titles;
    for (const qint64 id : photo.albums) {
        if (const Album *const album = session.catalog().album(id))
            titles.push_back(album->title);
    }
    return joined(titles);
}

QString placeText(const Asset &photo)
{
    if (!photo.location)
        return QString();
    return QStringLiteral("%1, %2")
        .arg(photo.location->latitude, 0, 'f', 5)
        .arg(photo.location->longitude, 0, 'f', 5);
}

QString sourceText(const Asset &photo)
{
    return photo.source ? QString::fromLatin1(wordFor(*photo.source)) : QString();
}

enum class Form { Left, Right, Cuttable };

struct Column {
    const char *name;
    QString header;
    Form form;
    QString (*text)(LibrarySession &session, const Asset &photo);
};

const std::vector<Column> &allColumns()
{
    using Session = LibrarySession;
    static const std::vector<Column> columns = {
        {"id", "ID", Form::Right,
         [](Session &, const Asset &photo) { return QString::number(photo.id); }},
        {"name", "NAME", Form::Cuttable,
         [](Session &, const Asset &photo) { return shownText(photo.fileName); }},
        {"kind", "KIND", Form::Left,
         [](Session &, const Asset &photo) { return QString::fromLatin1(wordFor(photo.kind)); }},
        {"type", "TYPE", Form::Cuttable,
         [](Session &, const Asset &photo) { return typesText(photo); }},
        {"taken", "TAKEN", Form::Left,
         [](Session &, const Asset &photo) {
             return clockText(photo.taken, photo.utcOffset.value_or(0));
         }},
        {"size", "SIZE", Form::Right, sizeText},
        {"dimensions", "DIMENSIONS", Form::Left,
         [](Session &, const Asset &photo) { return dimensionsText(photo); }},
        {"duration", "DURATION", Form::Right,
         [](Session &, const Asset &photo) { return playingTimeText(photo); }},
        {"path", "PATH", Form::Cuttable,
         [](Session &, const Asset &photo) { return shownText(photo.path()); }},
        {"title", "TITLE", Form::Cuttable,
         [](Session &, const Asset &photo) { return shownText(photo.title); }},
        {"caption", "CAPTION", Form::Cuttable,
         [](Session &, const Asset &photo) { return shownText(photo.caption); }},
        {"original", "ORIGINAL", Form::Cuttable,
         [](Session &, const Asset &photo) { return shownText(photo.originalName); }},
        {"keywords", "KEYWORDS", Form::Cuttable,
         [](Session &, const Asset &photo) { return joined(photo.keywords); }},
        {"people", "PEOPLE", Form::Cuttable,
         [](Session &, const Asset &photo) { return joined(photo.people); }},
        {"albums", "ALBUMS", Form::Cuttable,
         [](Session &session, const Asset &photo) { return albumsText(session, photo); }},
        {"place", "PLACE", Form::Cuttable,
         [](Session &, const Asset &photo) { return placeText(photo); }},
        {"source", "SOURCE", Form::Left,
         [](Session &, const Asset &photo) { return sourceText(photo); }},
        {"favorite", "FAVORITE", Form::Left,
         [](Session &, const Asset &photo) { return yesText(photo.favorite); }},
        {"hidden", "HIDDEN", Form::Left,
         [](Session &, const Asset &photo) { return yesText(photo.hidden); }},
        {"trash", "TRASH", Form::Left,
         [](Session &, const Asset &photo) { return yesText(photo.inTrash); }},
        {"edited", "EDITED", Form::Left,
         [](Session &, const Asset &photo) { return yesText(photo.edited); }},
        {"burst", "BURST", Form::Cuttable,
         [](Session &, const Asset &photo) { return shownText(photo.burst); }},
        {"modified", "MODIFIED (UTC)", Form::Left,
         [](Session &, const Asset &photo) { return clockText(photo.modified); }},
        {"added", "ADDED (UTC)", Form::Left,
         [](Session &, const Asset &photo) { return clockText(photo.added); }},
        {"state", "STATE", Form::Left, stateText},
        {"uuid", "UUID", Form::Cuttable,
         [](Session &, const Asset &photo) { return shownText(photo.uuid); }},
    };
    return columns;
}

const ClassicPhoto &classicRecord(LibrarySession &session, const Asset &photo)
{
    return *classicPhoto(session, static_cast<quint64>(photo.id));
}

// What suits a classic iPod, which stores pictures rather than files.
const std::vector<Column> &classicColumns()
{
    static const std::vector<Column> columns = {
        allColumns()[0],
        allColumns()[4],
        {"", "DIMENSIONS", Form::Left,
         [](LibrarySession &session, const Asset &photo) {
             const StoredPicture *const largest = largestVariant(classicRecord(session, photo));
             return largest ? variantDimensionsText(*largest) : QString();
         }},
        {"", "STORED", Form::Right,
         [](LibrarySession &session, const Asset &photo) {
             return byteCountText(storedBytes(classicRecord(session, photo)));
         }},
        {"", "ORIGINAL", Form::Cuttable,
         [](LibrarySession &session, const Asset &photo) {
             return classicFileText(classicRecord(session, photo).originalName);
         }},
    };
    return columns;
}

std::vector<Column> namedColumns(const std::vector<std::string> &names)
{
    std::vector<Column> columns;
    for (const std::string &name : names) {
        const auto named =
            std::find_if(allColumns().begin(), allColumns().end(),
                         [&name](const Column &column) { return name == column.name; });
        columns.push_back(*named);
    }
    return columns;
}

std::vector<Column> usualColumns(const LibrarySession &session)
{
    constexpr int widthForPaths = 100; // narrower ones would show little more than the folder
    if (session.classicIpod())
        return classicColumns();
    std::vector<std::string> names = {"id", "name", "kind", "taken", "size", "dimensions"};
    if (!Output::isTerminal() || terminalWidth() >= widthForPaths)
        names.emplace_back("path");
    return namedColumns(names);
}

TextTable tableWith(const std::vector<Column> &columns)
{
    QStringList headers;
    for (const Column &column : columns)
        headers.append(column.header);
    TextTable table(headers);
    for (int i = 0; i < headers.size(); ++i) {
        if (columns[static_cast<std::size_t>(i)].form == Form::Right)
            table.alignRight(i);
        if (columns[static_cast<std::size_t>(i)].form == Form::Cuttable)
            table.allowCutting(i);
    }
    return table;
}

} // namespace

std::vector<std::string> photoColumnNames()
{
    std::vector<std::string> names;
    for (const Column &column : allColumns())
        names.emplace_back(column.name);
    return names;
}

void writePhotoTable(LibrarySession &session, const std::vector<const Asset *> &photos,
                     const std::vector<std::string> &columnNames, Output &output)
{
    const std::vector<Column> columns =
        columnNames.empty() ? usualColumns(session) : namedColumns(columnNames);
    TextTable table = tableWith(columns);
    for (const Asset *photo : photos) {
        QStringList cells;
        for (const Column &column : columns)
            cells.append(column.text(session, *photo));
        table.addRow(cells);
    }
    if (Output::isTerminal())
        table.fitInto(terminalWidth());
    table.write(output);
}
