#include "base/byte_count.h"
#include "cli/library_command.h"
#include "cli/output.h"
#include "engine/classic_photos.h"
#include "engine/library_session.h"
#include "engine/photo_ids.h"
#include "engine/photo_text.h"
#include "engine/type_codes.h"

#include <QVector>

#include <CLI/CLI.hpp>

namespace {

using Lines = QVector<QPair<QString, QString>>;

Lines knownWithoutFile(const photoItem &item)
{
    return {
        {QStringLiteral("ID"), QString::number(item.id)},
        {QStringLiteral("Name"), nameText(item.name)},
        {QStringLiteral("Kind"), kindText(item)},
        {QStringLiteral("UUID"), QString::fromLatin1(item.uuid.toHex())},
        {QStringLiteral("Path"), nameText(item.path)},
        {QStringLiteral("Dimensions"), dimensionsText(item)},
        {QStringLiteral("Orientation"), QString::number(item.orientation)},
    };
}

QString sizeText(quint64 bytes)
{
    return QStringLiteral("%1 (%2 bytes)").arg(byteCountText(qint64(bytes))).arg(bytes);
}

Lines knownWithFile(const photoItem &item)
{
    return {
        {QStringLiteral("Size"), sizeText(item.fileSize)},
        {QStringLiteral("Modified"), isoText(item.modifyDate)},
    };
}

Lines knownOfSome(const photoItem &item)
{
    Lines lines;
    if (item.type == videoType) {
        lines.append({QStringLiteral("Duration"), QStringLiteral("%1 s").arg(item.duration)});
        lines.append({QStringLiteral("Still"), nameText(item.thumbPath)});
    }
    if (isInBurst(item))
        lines.append({QStringLiteral("Burst"), nameText(item.avalancheUUID)});
    if (item.trashedDate != 0)
        lines.append({QStringLiteral("Trash"), QStringLiteral("yes")});
    return lines;
}

Lines iosLines(LibrarySession &session, quint64 id)
{
    photoItem item;
    const FileState state = session.photo(id, &item);
    if (state == FileState::There)
        return knownWithoutFile(item) + knownWithFile(item) + knownOfSome(item);
    const QString text = state == FileState::Missing ? QStringLiteral("missing on the device")
                                                     : QStringLiteral("unreadable");
    return knownWithoutFile(item) + Lines{{QStringLiteral("File"), text}};
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
    const Lines lines = session.classicIpod() ? classicLines(session, id) : iosLines(session, id);
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
