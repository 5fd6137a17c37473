#include "base/byte_count.h"
#include "cli/library_command.h"
#include "cli/output.h"
#include "engine/album_tree.h"
#include "engine/asset_files.h"
#include "engine/asset_text.h"
#include "engine/classic_photos.h"
#include "engine/library_date.h"
#include "engine/library_session.h"
#include "engine/photo_ids.h"
#include "engine/photo_text.h"

#include <QVector>

#include <CLI/CLI.hpp>

namespace {

using Lines = QVector<QPair<QString, QString>>;

QString sizeText(quint64 bytes)
{
    return QStringLiteral("%1 (%2 bytes)").arg(byteCountText(qint64(bytes))).arg(bytes);
}

// What the library does not tell has no line.
class LineList
{
public:
    void add(const char *label, const QString &text)
    {
        if (!text.isEmpty())
            m_lines.append({QLatin1String(label), text});
    }

    void add(const char *label, const QByteArray &text) { add(label, shownText(text)); }

    void add(const char *label, const std::optional<qint64> &number)
    {
        if (number)
            add(label, QString::number(*number));
    }

    void addIf(const char *label, const std::optional<bool> &flag)
    {
        if (flag.value_or(false))
            add(label, QStringLiteral("yes"));
    }

    const Lines &lines() const { return m_lines; }

private:
    Lines m_lines;
};

QString dimensionsText(const Asset &asset)
{
    if (!asset.width || !asset.height)
        return QString();
    return QStringLiteral("%1 x %2").arg(*asset.width).arg(*asset.height);
}

QString burstText(const Asset &asset)
{
    if (asset.burst.isNull() || !asset.burstPicked)
        return shownText(asset.burst);
    return shownText(asset.burst) +
           (*asset.burstPicked ? QStringLiteral(", picked") : QStringLiteral(", not picked"));
}

QString locationText(const Asset &asset)
{
    constexpr int digits = 6; // a tenth of a metre
    if (!asset.location)
        return QString();
    return QStringLiteral("%1, %2")
        .arg(asset.location->latitude, 0, 'f', digits)
        .arg(asset.location->longitude, 0, 'f', digits);
}

QString trashText(const Asset &asset)
{
    const QString date = QString::fromLatin1(isoDateText(asset.trashed, std::nullopt));
    if (!asset.isTrashed())
        return QString();
    return date.isEmpty() ? QStringLiteral("yes") : QStringLiteral("since ") + date;
}

QString joined(const std::vector<QByteArray> &texts)
{
    QStringList shown;
    for (const QByteArray &text : texts)
        shown.append(shownText(text));
    return shown.join(QStringLiteral(", "));
}

void addIdentity(const Asset &asset, LineList &lines)
{
    lines.add("ID", QString::number(asset.id));
    lines.add("Name", asset.fileName);
    lines.add("Original", asset.originalName);
    lines.add("Title", asset.title);
    lines.add("Caption", asset.caption);
    lines.add("Kind",
              asset.kind == AssetKind::Video ? QStringLiteral("video") : QStringLiteral("photo"));
    lines.add("Types", typeTexts(asset.types).join(QStringLiteral(", ")));
    lines.add("UUID", asset.uuid);
    lines.add("Path", asset.path());
}

void addDates(const Asset &asset, LineList &lines)
{
    lines.add("Taken", isoDateText(asset.taken, asset.utcOffset));
    lines.add("Added", isoDateText(asset.added, std::nullopt));
    lines.add("Modified", isoDateText(asset.modified, std::nullopt));
    lines.add("Trash", trashText(asset));
}

void addPicture(const Asset &asset, LineList &lines)
{
    lines.add("Dimensions", dimensionsText(asset));
    lines.add("Orientation", asset.orientation);
    if (asset.duration)
        lines.add("Duration", QStringLiteral("%1 s").arg(*asset.duration));
}

// As the library tells, or else the device.
void addSize(LibrarySession &session, const Asset &asset, LineList &lines)
{
    FileInfo info;
    FileError error;
    if (asset.size && *asset.size >= 0)
        lines.add("Size", sizeText(quint64(*asset.size)));
    else if (session.files().info(asset.path(), &info, &error) && info.type == FileInfo::File)
        lines.add("Size", sizeText(quint64(info.size)));
}

void addDetails(const Asset &asset, const Catalog &catalog, LineList &lines)
{
    lines.addIf("Favorite", asset.favorite);
    lines.addIf("Hidden", asset.hidden);
    lines.addIf("Edited", asset.edited);
    lines.add("Burst", burstText(asset));
    if (asset.source)
        lines.add("Source", sourceText(*asset.source));
    lines.add("Place", locationText(asset));
    lines.add("People", joined(asset.people));
    lines.add("Keywords", joined(asset.keywords));
    const AlbumTree tree(catalog);
    for (const qint64 id : asset.albums) {
        if (const Album *const album = catalog.album(id))
            lines.add("Album", QStringLiteral("%1 (%2)").arg(shownText(tree.pathOf(*album)),
                                                             QString::number(id)));
    }
}

const char *roleLabel(AssetFileRole role)
{
    switch (role) {
    case AssetFileRole::Original:
        return "File";
    case AssetFileRole::LiveFilm:
        return "Live film";
    case AssetFileRole::Edited:
        return "Edited file";
    case AssetFileRole::EditedFilm:
        return "Edited film";
    case AssetFileRole::Recipe:
        return "Recipe";
    case AssetFileRole::Other:
        return "Other file";
    case AssetFileRole::Still:
        return "Still";
    case AssetFileRole::Thumbnail:
        return "Thumbnail";
    }
    return "";
}

QString fileText(LibrarySession &session, const AssetFile &file)
{
    FileInfo info;
    FileError error;
    const QString path = shownText(file.path);
    if (session.files().info(file.path, &info, &error))
        return QStringLiteral("%1, %2").arg(path, sizeText(quint64(info.size)));
    session.noteUnreadable(path, error);
    return QStringLiteral("%1, %2").arg(path, failureText(error));
}

void addFiles(LibrarySession &session, const Asset &asset, LineList &lines)
{
    const FileState state = session.fileState(asset);
    if (state != FileState::There)
        lines.add("File", state == FileState::Missing ? QStringLiteral("missing on the device")
                                                      : QStringLiteral("unreadable"));
    AssetFiles files(session.catalog(), session.listing());
    for (const auto &found : {files.of(asset), files.madeByDevice(asset)}) {
        for (const AssetFile &file : found)
            lines.add(roleLabel(file.role), fileText(session, file));
    }
    // That the original cannot be read is told by now.
    for (const auto &[path, error] : files.unlistedFolders()) {
        if (!asset.path().startsWith(path + '/'))
            session.noteUnreadable(shownText(path), error);
    }
}

Lines iosLines(LibrarySession &session, const Asset &asset)
{
    LineList lines;
    addIdentity(asset, lines);
    addDates(asset, lines);
    addPicture(asset, lines);
    addSize(session, asset, lines);
    addDetails(asset, session.catalog(), lines);
    addFiles(session, asset, lines);
    return lines.lines();
}

QString originalText(LibrarySession &session, const ClassicPhoto &photo)
{
    QByteArray path;
    FileInfo info;
    FileError error;
    const QString name = classicFileText(photo.originalName);
    if (name.isEmpty())
        return QStringLiteral("none");
    if (findOriginal(session, photo, &path, &info, &error))
        return QStringLiteral("%1, %2").arg(name, sizeText(quint64(info.size)));
    if (!error.isMissing())
        session.noteUnreadable(name, error);
    return QStringLiteral("%1, %2").arg(name, failureText(error));
}

QString variantText(const StoredPicture &variant)
{
    QString dimensions = variantDimensionsText(variant);
    if (dimensions.isEmpty())
        dimensions = QStringLiteral("unknown dimensions");
    return QStringLiteral("format %1, %2, %3 bytes in %4")
        .arg(QString::number(variant.formatId), dimensions, QString::number(variant.size),
             classicFileText(variant.fileName));
}

Lines classicLines(LibrarySession &session, quint64 id)
{
    photoItem item;
    session.library().getPhoto(id, &item);
    const ClassicPhoto &photo = *classicPhoto(session, id);
    Lines lines = {
        {QStringLiteral("ID"), QString::number(id)},
        {QStringLiteral("Taken"), isoTextWithoutZone(takenDate(item))},
        {QStringLiteral("Original"), originalText(session, photo)},
    };
    for (const StoredPicture &variant : photo.variants)
        lines.append({QStringLiteral("Stored"), variantText(variant)});
    return lines;
}

void writePhoto(LibrarySession &session, const std::string &idText, Output &output)
{
    const quint64 id = knownPhotoId(idText, session);
    const Asset *const asset = session.catalog().asset(static_cast<qint64>(id));
    const Lines lines =
        asset && !session.classicIpod() ? iosLines(session, *asset) : classicLines(session, id);
    for (const auto &line : lines) {
        const QString label = line.first + QLatin1Char(':');
        output.writeLine(QStringLiteral("%1 %2").arg(label, -12).arg(line.second));
    }
}

int runShow(const CommandContext &context, const std::string &id)
{
    return runOnLibrary(context, [&id](LibrarySession &session, Output &output) {
        writePhoto(session, id, output);
    });
}

} // namespace

void addShowCommand(CLI::App &app, CommandContext &context)
{
    CLI::App *const command =
        app.add_subcommand("show", "Show everything known about one photo or video");
    const auto id = std::make_shared<std::string>();
    command->add_option("ID", *id, "Its id; find it with photolib photos")
        ->required()
        ->check([](const std::string &text) { return isNumber(text) ? "" : "not a number"; })
        ->type_name("");
    command->footer("Examples:\n"
                    "  photolib show 42\n"
                    "  photolib show 42 -d ~/phone-copy");
    command->callback(
        [&context, id] { context.run = [&context, id] { return runShow(context, *id); }; });
}
