#include "base/error.h"
#include "base/folders.h"
#include "base/log_output.h"
#include "base/printable.h"
#include "cli/exit_codes.h"
#include "cli/file_target.h"
#include "cli/filter_options.h"
#include "cli/library_command.h"
#include "cli/output.h"
#include "cli/progress_bar.h"
#include "cli/reported_work.h"
#include "cli/text_drawing.h"
#include "engine/album_choice.h"
#include "engine/asset_text.h"
#include "engine/library_session.h"
#include "engine/picture_format.h"
#include "engine/sheet_drawing.h"
#include "engine/worker_pool.h"

#include <QStringList>

#include <CLI/CLI.hpp>

namespace {

struct SheetArguments {
    std::vector<std::string> ids;
    std::unique_ptr<FilterOptions> filter;
    std::string target;
    std::string labels = "name";
    std::string format; ///< empty for what the name says
    SheetOptions options;
};

struct NamedLabel {
    const char *name;
    SheetLabel label;
};

constexpr NamedLabel sheetLabels[] = {
    {"name", SheetLabel::Name}, {"date", SheetLabel::Date}, {"id", SheetLabel::Id}};

SheetLabel sheetLabel(const std::string &name)
{
    for (const NamedLabel &each : sheetLabels) {
        if (name == each.name)
            return each.label;
    }
    throw CLI::ValidationError("--label", "'" + name + "' is neither name, date nor id");
}

// Those that "name,date" names, in that order.
QVector<SheetLabel> chosenLabels(const std::string &names)
{
    QVector<SheetLabel> labels;
    if (names == "none")
        return labels;
    for (const QByteArray &name : QByteArray::fromStdString(names).split(',')) {
        const SheetLabel label = sheetLabel(name.toStdString());
        if (labels.contains(label))
            throw CLI::ValidationError("--label", "'" + name.toStdString() + "' is named twice");
        labels.append(label);
    }
    return labels;
}

// Where the extension of the file `path` begins; its end when it has none.
int extensionStart(const QByteArray &path)
{
    const int dot = path.lastIndexOf('.');
    return dot > path.lastIndexOf('/') + 1 ? dot : path.size();
}

// The format that the name of the file `path` promises, or null.
const PictureFormat *formatOfName(const QByteArray &path)
{
    return formatOfExtension(path.mid(extensionStart(path) + 1));
}

// What the options and the name of the file ask for.
const PictureFormat &sheetFormat(const SheetArguments &arguments)
{
    const bool isJpeg =
        arguments.format.empty()
            ? formatOfName(QByteArray::fromStdString(arguments.target)) == &jpegFormat()
            : arguments.format == "jpeg";
    return isJpeg ? jpegFormat() : pngFormat();
}

// Programs that go by the name of the file could not show a picture of another format.
void requireNameOfSheet(const SheetArguments &arguments, const QByteArray &path)
{
    const bool hasExtension = extensionStart(path) < path.size();
    const PictureFormat *const promised = formatOfName(path);
    if (hasExtension && promised != &jpegFormat() && promised != &pngFormat())
        throw CLI::ValidationError(
            arguments.target, "a sheet is a JPEG or PNG picture; let the name end in .jpg or .png");
    const PictureFormat &format = sheetFormat(arguments);
    if (hasExtension && promised != &format)
        throw CLI::ValidationError(arguments.target, "with --format " + arguments.format +
                                                         ", let the name end in ." +
                                                         format.extension());
}

void checkArguments(const SheetArguments &arguments)
{
    const auto path = QByteArray::fromStdString(arguments.target);
    if (path.isEmpty())
        throw CLI::ValidationError("--output", "the name is empty");
    requireNameOfSheet(arguments, path);
    if (path == FileTarget::standardOutput && Output::isTerminal())
        throw CLI::ValidationError("--output", "a terminal cannot show pictures; redirect standard "
                                               "output, or name a file");
}

// "sheet.png", "sheet-2.png", ...
QByteArray pageName(const QByteArray &name, int page)
{
    if (page == 0)
        return name;
    const int stem = extensionStart(name);
    return name.left(stem) + '-' + QByteArray::number(page + 1) + name.mid(stem);
}

// What the pictures are, for the head of the page.
QString choiceText(const SheetArguments &arguments, const PhotoFilter &filter,
                   LibrarySession &session)
{
    if (filter.album) {
        const Album &album = chosenAlbum(session.catalog(), *filter.album, session.deviceName());
        return QStringLiteral("Album \u201c%1\u201d").arg(shownText(album.title));
    }
    return arguments.filter->isAnyGiven() || !arguments.ids.empty()
               ? QStringLiteral("Chosen photos and videos")
               : QStringLiteral("All photos and videos");
}

QString countText(int count)
{
    return count == 1 ? QStringLiteral("1 picture") : QStringLiteral("%1 pictures").arg(count);
}

FileTarget sheetTarget(const LibrarySession &session, const QByteArray &path)
{
    if (path == FileTarget::standardOutput)
        return FileTarget();
    if (path.endsWith('/') || isFolder(path))
        throw Error(path.toStdString(), "a folder, not a file to write");
    return FileTarget(session, parentFolder(path));
}

SheetRequest sheetRequest(const SheetArguments &arguments, const PhotoFilter &filter,
                          LibrarySession &session)
{
    SheetRequest request;
    for (const Asset *photo : interruptiblyChosenPhotos(session, filter))
        request.ids.append(static_cast<quint64>(photo->id));
    request.options = arguments.options;
    request.format = &sheetFormat(arguments);
    request.title = QString::fromUtf8(printable(QByteArray::fromStdString(session.deviceName())));
    request.subtitle =
        QStringLiteral("%1 \u00b7 %2")
            .arg(choiceText(arguments, filter, session), countText(request.ids.size()));
    return request;
}

// Writes the pages as they are drawn.
class SheetWriter : private SheetObserver
{
public:
    // Throws Error when the pages cannot be drawn, or there is no place for them.
    SheetWriter(LibrarySession &session, const QByteArray &path, const SheetRequest &request)
        : m_session(session), m_request(request), m_plan(request.options, request.ids.size()),
          m_path(path), m_target(sheetTarget(session, path)), m_work(showsProgress())
    {
        if (m_target.isStandardOutput() && m_plan.pages() > 1)
            throw Error("standard output", "takes one page, and the sheet has " +
                                               std::to_string(m_plan.pages()) +
                                               "; name a file, or an album");
        for (int page = 0; page < m_plan.pages(); ++page)
            m_target.requireReplaceable(pageName(m_path, page));
    }

    // Throws Error also when it is interrupted.
    void write()
    {
        const int threads = WorkerPool::threadsOfComputer();
        // On the thread that Qt is to see as the main one.
        const TextDrawing text(m_plan.neededBytes(threads));
        const auto draw = [&](const CancelToken &cancel) {
            try {
                drawSheet(m_session, m_request, threads, *this, cancel);
            } catch (const Error &error) {
                if (error.kind() != Error::Cancelled)
                    throw;
            }
        };
        if (m_work.run(draw))
            throw Error(Error::Cancelled, "interrupted: " + doneText());
    }

    // A line for each page, or the page itself.
    void finish(bool isQuiet, Output &output) const
    {
        m_target.finish(output);
        if (isQuiet || m_target.isStandardOutput())
            return;
        for (const QString &line : m_written)
            output.writeLine(line);
    }

private:
    std::string doneText() const
    {
        const int pages = m_plan.pages();
        if (m_target.isStandardOutput())
            return "nothing was written";
        return "wrote " + std::to_string(m_written.size()) + " of " + std::to_string(pages) +
               (pages == 1 ? " page" : " pages");
    }

    void drawn(int done) override
    {
        const int all = m_plan.cells();
        m_work.show({QStringLiteral("Drawing the sheet"), done, all,
                     QStringLiteral("%1 of %2").arg(done).arg(all)});
    }

    void damaged(const QString &fault) override { m_work.tell(fault); }

    void lacksVideos(int count) override
    {
        const QString videos = count == 1 ? QStringLiteral("1 video has")
                                          : QStringLiteral("%1 videos have").arg(count);
        m_work.tell(videos + QStringLiteral(" no thumbnail on the device, and photolib makes none "
                                            "of videos"));
    }

    void pageDrawn(int page, int pictures,
                   const std::function<void(const ByteSink &sink)> &writeFile) override
    {
        const QByteArray path = pageName(m_path, page);
        m_target.write(path, writeFile);
        m_written.append(
            QStringLiteral("%1: %2").arg(QString::fromUtf8(printable(path)), countText(pictures)));
    }

    LibrarySession &m_session;
    const SheetRequest &m_request;
    const SheetPlan m_plan;
    const QByteArray m_path;
    FileTarget m_target;
    ReportedWork m_work;
    QStringList m_written;
};

void writeSheet(const SheetArguments &arguments, const PhotoFilter &filter, bool isQuiet,
                LibrarySession &session, Output &output)
{
    const SheetRequest request = sheetRequest(arguments, filter, session);
    SheetWriter writer(session, QByteArray::fromStdString(arguments.target), request);
    writer.write();
    writer.finish(isQuiet, output);
}

int runSheet(const CommandContext &context, const SheetArguments &arguments)
{
    const PhotoFilter filter = arguments.filter->filter();
    const auto write = [&](LibrarySession &session, Output &output) {
        writeSheet(arguments, filter, context.options.quiet, session, output);
        if (session.parseFailure().empty())
            return exitDone;
        writeErrorLine("photolib: " + QByteArray::fromStdString(session.parseFailure()) +
                       "; the sheet has no thumbnails");
        return exitFailed;
    };
    return workOnLibrary(context, write);
}

void addLookOptions(CLI::App &command, SheetArguments &arguments)
{
    constexpr int most = 1000000;
    SheetOptions &options = arguments.options;
    command
        .add_option("--columns", options.columns,
                    "Pictures in a row; by default as many as make the page about square")
        ->check(CLI::Range(1, most).description(""))
        ->type_name("N");
    command
        .add_option("--size", options.boxSize,
                    "Side of the square that a picture is fitted into, in pixels, " +
                        std::to_string(SheetStyle::smallestBox) + " to " +
                        std::to_string(SheetStyle::largestBox))
        ->check(CLI::Range(SheetStyle::smallestBox, SheetStyle::largestBox).description(""))
        ->type_name("PIXELS")
        ->capture_default_str();
    command.add_option("--per-page", options.perPage, "Pictures on a page")
        ->check(CLI::Range(1, most).description(""))
        ->type_name("N")
        ->capture_default_str();
    command
        .add_option("--label", arguments.labels,
                    "What stands under a picture: some of name, date and id with commas between "
                    "them, a line each in that order, or none. The date is when it was taken")
        ->type_name("LABELS")
        ->capture_default_str();
}

} // namespace

void addSheetCommand(CLI::App &app, CommandContext &context)
{
    CLI::App *const command =
        app.add_subcommand("sheet", "Draw a contact sheet of the photos and videos");
    const auto arguments = std::make_shared<SheetArguments>();
    command->add_option("ID", arguments->ids, idsDescription)->option_text("[ID...]");
    command
        ->add_option("-o,--output", arguments->target,
                     "The file to write, or - for standard output: a JPEG picture where its name "
                     "ends in .jpg, and else a PNG picture. An existing file is replaced, and its "
                     "folder is created if necessary. Further pages go to sheet-2.png and so on")
        ->required()
        ->type_name("FILE");
    command
        ->add_option("--format", arguments->format,
                     "The format of the pages, jpeg or png. Default: what the name of FILE says")
        ->check(CLI::IsMember({"jpeg", "png"}))
        ->type_name("FORMAT");
    addLookOptions(*command, *arguments);
    arguments->filter = std::make_unique<FilterOptions>(*command, context.options);
    command->footer("What is in the trash is dimmed where it is shown. A picture is never shown "
                    "larger than twice its "
                    "size: the device's thumbnails have no more details.\n"
                    "\n"
                    "Where the device has no thumbnail of a photo, one is made of its own file or "
                    "its edited version, if that is a JPEG, PNG, GIF or HEIC picture. None is made "
                    "of videos.\n"
                    "\n"
                    "Examples:\n"
                    "  photolib sheet -o sheet.png\n"
                    "  photolib sheet -d /media/phone --album 7 -o album.jpg\n"
                    "  photolib sheet -d /media/phone --size 96 --label date,id -o dates.png\n"
                    "  photolib sheet -d /media/phone -o - | display");
    command->callback([&context, arguments] {
        arguments->options.labels = chosenLabels(arguments->labels);
        checkArguments(*arguments);
        arguments->filter->check(arguments->ids);
        context.run = [&context, arguments] { return runSheet(context, *arguments); };
    });
}
