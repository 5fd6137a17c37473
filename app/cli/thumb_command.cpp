#include "base/error.h"
#include "base/file_names.h"
#include "base/folders.h"
#include "base/printable.h"
#include "cli/exit_codes.h"
#include "cli/file_target.h"
#include "cli/filter_options.h"
#include "cli/library_command.h"
#include "cli/output.h"
#include "cli/progress_bar.h"
#include "cli/reported_work.h"
#include "engine/item_work.h"
#include "engine/library_session.h"
#include "engine/photo_ids.h"
#include "engine/picture_format.h"
#include "engine/wanted_thumbnail.h"

#include <CLI/CLI.hpp>

namespace {

struct ThumbArguments {
    std::vector<std::string> ids;
    std::unique_ptr<FilterOptions> filter;
    std::string target;             ///< of --output
    std::optional<std::string> all; ///< what follows --all, which may be nothing
    std::string format;             ///< empty for what the name says, or the plug-in gives
    int size = 0;                   ///< the longer edge in pixels; 0 for as stored

    bool hasAllFolder() const { return all && !all->empty(); }
    bool choosesMany() const { return all || filter->isAnyGiven(); }
};

// Before -o, --all stands for itself, and what follows it is an id.
void separateAllFromIds(ThumbArguments &arguments)
{
    if (!arguments.hasAllFolder() || arguments.target.empty())
        return;
    if (*arguments.all != "-" && !idRange(*arguments.all))
        throw CLI::ValidationError("--all", "takes no folder beside -o");
    arguments.ids.insert(arguments.ids.begin(), *arguments.all);
    arguments.all->clear();
}

void checkArguments(ThumbArguments &arguments)
{
    separateAllFromIds(arguments);
    arguments.filter->check(arguments.ids);
    if (arguments.all)
        arguments.filter->addTrash();
    if (arguments.hasAllFolder() && !arguments.ids.empty())
        throw CLI::ValidationError("--all", "cannot be combined with ids");
    if (!arguments.choosesMany() && arguments.ids.empty())
        throw CLI::ValidationError("name the ids, or use --all DIR for all photos and videos");
    if (arguments.all && !arguments.hasAllFolder() && arguments.target.empty())
        throw CLI::ValidationError("--all", "name the folder to write to");
    if (!arguments.hasAllFolder() && arguments.target.empty())
        throw CLI::ValidationError("name the file or folder to write to with -o");
    if (arguments.target == FileTarget::standardOutput && Output::isTerminal())
        throw CLI::ValidationError("--output", "a terminal cannot show pictures; redirect "
                                               "standard output, or name a file");
}

// What is to be written.
struct ThumbChoice {
    QList<quint64> ids;
    QSet<quint64> unlisted; ///< among many: the plug-in does not have these, nor their thumbnails
};

// Where the thumbnails go: to files of their own names in a folder, or to one file.
struct ThumbPlace {
    QByteArray path;       ///< as the user named it
    bool isFolder = false; ///< may not exist yet

    QByteArray folder() const { return isFolder ? path : parentFolder(path); }
    bool isStandardOutput() const { return !isFolder && path == FileTarget::standardOutput; }
};

// The format that the name of the file `path` promises, or null.
const PictureFormat *promisedFormat(const QByteArray &path)
{
    const QByteArray name = path.mid(path.lastIndexOf('/') + 1);
    return formatOfExtension(name.mid(nameStem(name).size() + 1));
}

// The same, if pictures are converted to it.
const PictureFormat *convertibleFormat(const QByteArray &path)
{
    const PictureFormat *const promised = promisedFormat(path);
    return promised == &jpegFormat() || promised == &pngFormat() ? promised : nullptr;
}

// How many thumbnails there will be is not known to a person who asks for those of an album, say.
ThumbPlace placeFor(const ThumbArguments &arguments, int thumbnails)
{
    if (arguments.hasAllFolder())
        return {QByteArray::fromStdString(*arguments.all), true};
    const auto path = QByteArray::fromStdString(arguments.target);
    if (path == FileTarget::standardOutput && thumbnails == 0)
        throw Error("standard output", "no photo or video was chosen");
    if (path == FileTarget::standardOutput && thumbnails > 1)
        throw Error(Error::WrongUsage, "standard output takes one thumbnail; name a folder for " +
                                           std::to_string(thumbnails));
    const bool isForMany = thumbnails > 1 || (arguments.choosesMany() && !promisedFormat(path));
    const bool isOutput = path == FileTarget::standardOutput;
    return {path, !isOutput && (isForMany || path.endsWith('/') || isFolder(path))};
}

FileTarget thumbTarget(const LibrarySession &session, const ThumbPlace &place)
{
    return place.isStandardOutput() ? FileTarget() : FileTarget(session, place.folder());
}

// Programs that go by the name of the file `path` could not show a picture of another format.
void requireNameFor(const PictureFormat &given, const QByteArray &path)
{
    const PictureFormat *const promised = promisedFormat(path);
    if (promised && promised != &given)
        throw Error(path.toStdString(),
                    std::string("the thumbnail is a ") + given.name + " picture");
}

// "42-IMG_0041.jpg"
QByteArray ownName(quint64 id, const PictureFile &picture)
{
    const QByteArray stem =
        picture.name.isEmpty() ? QByteArray() : '-' + nameStem(safeFileName(picture.name));
    return QByteArray::number(id) + stem + '.' + picture.format->extension();
}

// Writes thumbnails one by one, and counts them.
class ThumbWriter
{
public:
    // Throws Error when the place cannot be used.
    ThumbWriter(LibrarySession &session, const ThumbPlace &place, const ThumbnailRequest &request)
        : m_session(session), m_place(place), m_request(request),
          m_target(thumbTarget(session, place)), m_work(showsProgress())
    {
    }

    // Whether it was interrupted.
    bool writeAll(const ThumbChoice &choice)
    {
        return m_work.run([&](const CancelToken &cancel) { writeEach(choice, cancel); });
    }

    int failed() const { return m_failed; }

    QString summary() const
    {
        if (m_target.isStandardOutput())
            return QStringLiteral("nothing was written");
        const QString things =
            m_written == 1 ? QStringLiteral("thumbnail") : QStringLiteral("thumbnails");
        const QString path = QString::fromUtf8(printable(m_place.path));
        const QString failures =
            m_failed == 0 ? QString() : QStringLiteral(", %1 failed").arg(m_failed);
        const QString without =
            m_without == 0 ? QString() : QStringLiteral(", %1 without thumbnail").arg(m_without);
        return QStringLiteral("wrote %1 %2 to %3%4%5")
            .arg(QString::number(m_written), things, path, without, failures);
    }

    // A line on what was written, or the thumbnail itself.
    void finish(bool isQuiet, Output &output) const
    {
        m_target.finish(output);
        if (!isQuiet && !m_target.isStandardOutput())
            output.writeLine(summary());
    }

private:
    void writeEach(const ThumbChoice &choice, const CancelToken &cancel)
    {
        const QList<quint64> &ids = choice.ids;
        m_failed = workOnEach(ids.size(), m_work, cancel, [&](int i) {
            m_work.show({QStringLiteral("Reading thumbnails"), i, ids.size(),
                         QStringLiteral("%1 of %2").arg(i).arg(ids.size())});
            const bool isUnlisted = choice.unlisted.contains(ids[i]);
            write(ids[i], isUnlisted, cancel);
        });
    }

    void write(quint64 id, bool isUnlisted, const CancelToken &cancel)
    {
        m_request.id = id;
        const PictureFile picture = wantedThumbnail(m_session, m_request, cancel);
        if (picture.format) {
            store(id, picture);
            ++m_written;
        } else if (isUnlisted) {
            ++m_without;
        } else if (!cancel.isCancelled()) {
            throw ItemFailure{picture.label, picture.failure.text};
        }
    }

    void store(quint64 id, const PictureFile &picture)
    {
        if (!m_place.isFolder)
            requireNameFor(*picture.format, m_place.path);
        m_target.write(m_place.isFolder ? m_place.path + '/' + ownName(id, picture) : m_place.path,
                       picture.bytes);
    }

    LibrarySession &m_session;
    const ThumbPlace m_place;
    ThumbnailRequest m_request; // for one after the other
    FileTarget m_target;
    ReportedWork m_work;
    int m_written = 0;
    int m_without = 0;
    int m_failed = 0;
};

ThumbChoice chosenThumbnails(const ThumbArguments &arguments, LibrarySession &session,
                             const PhotoFilter &filter)
{
    const QSet<quint64> known = allPhotoIds(session.library());
    ThumbChoice choice;
    for (const Asset *photo : interruptiblyChosenPhotos(session, filter)) {
        const auto id = static_cast<quint64>(photo->id);
        choice.ids.append(id);
        if (arguments.choosesMany() && !known.contains(id))
            choice.unlisted.insert(id);
    }
    return choice;
}

// What the options and the name of the file ask for, without an id.
ThumbnailRequest thumbnailRequest(const ThumbArguments &arguments, const ThumbPlace &place)
{
    ThumbnailRequest request;
    request.longestEdge = arguments.size;
    if (!arguments.format.empty())
        request.format = arguments.format == "png" ? &pngFormat() : &jpegFormat();
    else if (!place.isFolder)
        request.format = convertibleFormat(place.path);
    return request;
}

int writeThumbnails(const ThumbArguments &arguments, const ThumbChoice &choice, bool isQuiet,
                    LibrarySession &session, Output &output)
{
    const ThumbPlace place = placeFor(arguments, choice.ids.size());
    ThumbWriter writer(session, place, thumbnailRequest(arguments, place));
    if (writer.writeAll(choice))
        throw Error(Error::Cancelled, "interrupted: " + writer.summary().toStdString());
    writer.finish(isQuiet, output);
    return writer.failed() == 0 ? exitDone : exitFailed;
}

int runThumb(const CommandContext &context, const ThumbArguments &arguments)
{
    requireNamedDevice(context);
    const PhotoFilter filter = arguments.filter->filter();
    const auto work = [&](LibrarySession &session, Output &output) {
        const ThumbChoice choice = chosenThumbnails(arguments, session, filter);
        return writeThumbnails(arguments, choice, context.options.quiet, session, output);
    };
    return workOnLibrary(context, work);
}

void addOptions(CLI::App &command, ThumbArguments &arguments)
{
    constexpr int smallestSize = 16;
    constexpr int largestSize = 4096;
    command
        .add_option("-o,--output", arguments.target,
                    "The file to write, or - for standard output; for several ids, or what the "
                    "options below choose, a folder. Folders are created if necessary")
        ->type_name("FILE|DIR");
    command
        .add_option_function<std::string>(
            "--all", [&arguments](const std::string &folder) { arguments.all = folder; },
            "Write the thumbnails of all photos and videos to this folder, also of what is in the "
            "trash. DIR may be left out beside -o")
        ->expected(0, 1)
        ->type_name("[DIR]");
    command
        .add_option("--format", arguments.format,
                    "Convert to this format. Default: what the name of FILE says, JPEG or PNG; "
                    "else as stored, JPEG or BMP; with --size, and for thumbnails that are made, "
                    "JPEG")
        ->check(CLI::IsMember({"jpeg", "png"}))
        ->type_name("FORMAT");
    command
        .add_option(
            "--size", arguments.size,
            "The longer edge has N pixels, 16 to 4096, or fewer where there is no picture as "
            "large. A photo's own file is used where the device's thumbnail is smaller. "
            "Default: as stored")
        ->check(CLI::Range(smallestSize, largestSize).description(""))
        ->type_name("N");
}

void addThumbFooter(CLI::App &command)
{
    command.footer("Where the device has no thumbnail, one is made of the photo's own file or its "
                   "edited version, if that is a JPEG, PNG, GIF or HEIC picture: of 512 pixels, or "
                   "of --size. None is made of videos.\n"
                   "\n"
                   "Existing files are replaced. In a folder, thumbnails are named "
                   "\"42-IMG_0041.jpg\", or \"42.bmp\" for a photo without a name.\n"
                   "\n"
                   "Examples:\n"
                   "  photolib thumb 42 -o thumb.png -d /media/phone\n"
                   "  photolib thumb 42 --size 1024 -o large.jpg -d /media/phone\n"
                   "  photolib thumb 42 -o - -d /media/phone | display\n"
                   "  photolib thumb 42 43 -o thumbs --format png -d /media/phone\n"
                   "  photolib thumb --all thumbs -d /media/phone\n"
                   "  photolib thumb --album 7 -o thumbs -d /media/phone");
}

} // namespace

void addThumbCommand(CLI::App &app, CommandContext &context)
{
    CLI::App *const command = app.add_subcommand("thumb", "Write thumbnails to files");
    const auto arguments = std::make_shared<ThumbArguments>();
    command->add_option("ID", arguments->ids, idsDescription)->option_text("[ID...]");
    addOptions(*command, *arguments);
    arguments->filter = std::make_unique<FilterOptions>(*command, context.options,
                                                        FilterOptions::AllOption::Command);
    addThumbFooter(*command);
    command->callback([&context, arguments] {
        checkArguments(*arguments);
        context.run = [&context, arguments] { return runThumb(context, *arguments); };
    });
}
