#include "base/byte_count.h"
#include "base/error.h"
#include "base/folders.h"
#include "base/printable.h"
#include "cli/exit_codes.h"
#include "cli/export_preview.h"
#include "cli/file_target.h"
#include "cli/filter_options.h"
#include "cli/library_command.h"
#include "cli/output.h"
#include "cli/reported_work.h"
#include "engine/library_export.h"
#include "engine/library_session.h"
#include "engine/photo_text.h"

#include <QElapsedTimer>

#include <CLI/CLI.hpp>

#include <map>

namespace {

struct ExportArguments {
    std::vector<std::string> positionals;
    std::unique_ptr<FilterOptions> filter;
    std::vector<std::string> edited; // what stands behind --edited, with or without a meaning to it
    CLI::Option *editedOption = nullptr;
    ExportRequest request; // but for the filter
    std::string nameTemplate = NameTemplate::usual;
    std::vector<std::string> sidecars;
    std::string report;
    bool isDry = false;
    bool isJson = false;
};

// In other commands --edited has no word behind it, and leaves out what was not edited. Without one
// of its words it means that here, too, and what stands behind it is the next argument.
void takeEdited(ExportArguments &arguments)
{
    static const std::map<std::string, EditedChoice> choices = {
        {"both", EditedChoice::Both},
        {"original", EditedChoice::Original},
        {"edited", EditedChoice::Edited}};
    if (arguments.editedOption->count() == 0)
        return;
    const std::string word = arguments.edited.empty() ? std::string() : arguments.edited.front();
    const auto choice = choices.find(word);
    if (choice != choices.end()) {
        arguments.request.edited = choice->second;
        return;
    }
    arguments.filter->leaveOutUnedited();
    // An id goes before the folder, which is the last of them.
    const bool isId = word == "-" || idRange(word);
    if (!word.empty())
        arguments.positionals.insert(
            isId ? arguments.positionals.begin() : arguments.positionals.end(), word);
}

// The last argument is the folder, the others are ids.
void splitArguments(ExportArguments &arguments)
{
    std::vector<std::string> ids = arguments.positionals;
    if (ids.empty())
        throw CLI::RequiredError("DIR");
    const std::string folder = ids.back();
    ids.pop_back();
    arguments.filter->check(ids);
    if (folder.empty())
        throw CLI::ValidationError("DIR", "the name is empty");
    if (folder == "-" || idRange(folder))
        throw CLI::ValidationError("no folder to copy to was named; if " + folder +
                                   " is the folder, write ./" + folder);
    arguments.request.folder = QByteArray::fromStdString(folder);
}

void takeTemplate(ExportArguments &arguments)
{
    const QByteArray text = QByteArray::fromStdString(arguments.nameTemplate);
    try {
        const NameTemplate check(text);
    } catch (const Error &error) {
        throw CLI::ValidationError("--name", error.what());
    }
    arguments.request.nameTemplate = text;
}

void takeSidecars(ExportArguments &arguments)
{
    std::vector<SidecarFormat> &formats = arguments.request.sidecars;
    formats.clear();
    for (const std::string &word : arguments.sidecars) {
        const SidecarFormat format = word == "json" ? SidecarFormat::Json : SidecarFormat::Xmp;
        if (std::find(formats.begin(), formats.end(), format) == formats.end())
            formats.push_back(format);
    }
}

// How the export goes, on stderr.
class ExportProgressReport : public ExportObserver
{
public:
    ExportProgressReport(ReportedWork &work, const CommonOptions &options, QByteArray folder)
        : m_work(work), m_options(options), m_folder(std::move(folder))
    {
    }

    void waiting() override
    {
        if (!m_options.quiet)
            m_work.tell(QStringLiteral("waiting for another program that exports to %1")
                            .arg(QString::fromUtf8(printable(m_folder))));
    }

    void looked(int done, int total) override
    {
        m_work.show({QStringLiteral("Looking at the files"), done, total,
                     QStringLiteral("%1 of %2").arg(done).arg(total)});
    }

    void copied(const ExportProgress &progress) override
    {
        if (!m_clock.isValid())
            m_clock.start();
        m_work.show({QStringLiteral("Copying"), progress.doneBytes, progress.totalBytes,
                     amounts(progress)});
    }

    void absent(const QString &label, const QString &cause) override
    {
        if (m_options.verbose)
            m_work.tell(label + QStringLiteral(": ") + cause);
    }

    void noted(const QString &line) override
    {
        if (!m_options.quiet)
            m_work.tell(line);
    }

    void failed(const ItemFailure &failure) override { m_work.failed(failure); }

private:
    QString amounts(const ExportProgress &progress) const
    {
        return QStringLiteral("%1 of %2 files, %3%4")
            .arg(QString::number(progress.doneFiles), QString::number(progress.files),
                 byteCountsText(progress.doneBytes, progress.totalBytes), speed(progress));
    }

    // The rate and the time that is left; empty while it is too early to tell.
    QString speed(const ExportProgress &progress) const
    {
        constexpr qint64 earliest = 1000; // milliseconds
        const qint64 elapsed = m_clock.elapsed();
        if (elapsed < earliest || progress.doneBytes <= 0)
            return QString();
        const double rate =
            static_cast<double>(progress.doneBytes) / static_cast<double>(elapsed) * 1000.0;
        const qint64 rest = qMax(qint64(0), progress.totalBytes - progress.doneBytes);
        constexpr double longest = 100 * 3600.0; // nobody waits for what takes longer
        const double seconds = qMin(static_cast<double>(rest) / rate, longest);
        return QStringLiteral(", %1/s, %2 left")
            .arg(byteCountText(static_cast<qint64>(rate)),
                 durationText(static_cast<qint64>(seconds)));
    }

    ReportedWork &m_work;
    const CommonOptions &m_options;
    const QByteArray m_folder;
    QElapsedTimer m_clock; // of the copying
};

// The file that tells what has become of each file, if one is asked for.
class ReportFile
{
public:
    ReportFile(const LibrarySession &session, const std::string &path)
        : m_path(QByteArray::fromStdString(path))
    {
        if (m_path.isEmpty())
            return;
        m_target = std::make_unique<FileTarget>(session, parentFolder(m_path));
        m_target->requireReplaceable(m_path);
    }

    void write(const ExportResult &result)
    {
        if (!m_target)
            return;
        m_target->write(m_path, [&result](const ByteSink &sink) {
            for (const ReportedFile &file : result.files) {
                const QByteArray line = reportLine(file);
                sink(line.constData(), line.size());
            }
        });
    }

private:
    const QByteArray m_path;
    std::unique_ptr<FileTarget> m_target;
};

// What fails may be no file, but a folder that cannot be listed, say.
bool isReportComplete(const ExportResult &result)
{
    const auto failed =
        std::count_if(result.files.begin(), result.files.end(),
                      [](const ReportedFile &file) { return file.status == ReportedFile::Failed; });
    return failed == result.counts.failed;
}

QString summary(const ExportResult &result, const std::string &report)
{
    QString text = result.counts.text();
    if (result.counts.failed == 0)
        return text;
    const QString place = report.empty() || !isReportComplete(result)
                              ? QStringLiteral("the messages above")
                              : QString::fromUtf8(printable(QByteArray::fromStdString(report)));
    return QStringLiteral("%1 (see %2)").arg(text, place);
}

int exportTo(const ExportArguments &arguments, const CommonOptions &options,
             LibrarySession &session, Output &output)
{
    ExportResult result;
    ReportFile report(session, arguments.report);
    ReportedWork work(showsProgress());
    ExportProgressReport progress(work, options, arguments.request.folder);
    try {
        work.run([&](const CancelToken &cancel) {
            exportPhotos(session, arguments.request, progress, cancel, &result);
        });
    } catch (const Error &) {
        report.write(result);
        throw;
    }
    report.write(result);
    if (!options.quiet)
        output.writeLine(summary(result, arguments.report));
    return result.counts.failed == 0 ? exitDone : exitFailed;
}

int preview(const ExportArguments &arguments, const CommonOptions &options, LibrarySession &session,
            Output &output)
{
    ExportPlan plan;
    ReportedWork work(showsProgress());
    ExportProgressReport progress(work, options, arguments.request.folder);
    work.run([&](const CancelToken &cancel) {
        plan = exportPreview(session, arguments.request, progress, cancel);
    });
    if (arguments.isJson)
        writePreviewAsJson(plan, output);
    else
        writePreviewTable(plan, output);
    const bool hasFailure =
        !plan.unlisted.empty() ||
        std::any_of(plan.files.begin(), plan.files.end(),
                    [](const PlannedFile &file) { return file.action == PlannedFile::Fail; });
    return hasFailure ? exitFailed : exitDone;
}

int runExport(const CommandContext &context, ExportArguments &arguments)
{
    requireNamedDevice(context);
    arguments.request.filter = arguments.filter->filter();
    const auto work = arguments.isDry ? preview : exportTo;
    return workOnLibrary(context, [&](LibrarySession &session, Output &output) {
        return work(arguments, context.options, session, output);
    });
}

// An option whose value is one of a few words.
template <typename Value>
CLI::Option *addChoice(CLI::App &command, const std::string &name, Value &value,
                       const std::map<std::string, Value> &words, const std::string &description)
{
    std::string list;
    for (const auto &word : words)
        list.append(list.empty() ? "" : "|").append(word.first);
    return command
        .add_option_function<std::string>(
            name, [&value, words](const std::string &word) { value = words.at(word); }, description)
        ->check([words, list](const std::string &word) {
            return words.count(word) ? std::string() : word + ": not one of " + list;
        })
        ->type_name(list);
}

void addVersionOptions(CLI::App &command, ExportArguments &arguments)
{
    ExportRequest &request = arguments.request;
    arguments.editedOption =
        command
            .add_option("--edited", arguments.edited,
                        "Of edited photos and videos, copy the original, the edited version as "
                        "NAME_edited, or both. Default: both. Without a word, copy only those that "
                        "were edited")
            ->expected(0, 1)
            ->allow_extra_args(false)
            ->type_name("[both|edited|original]");
    addChoice<LiveChoice>(command, "--live", request.live,
                          {{"both", LiveChoice::Both}, {"still", LiveChoice::Still}},
                          "Of Live Photos, copy the picture and its film, or the picture alone. "
                          "Default: both");
    command.add_flag("--recipe", request.recipe,
                     "Also copy how photos were edited (AAE and plist files)");
    addChoice<StoredChoice>(command, "--stored", request.stored,
                            {{"largest", StoredChoice::Largest},
                             {"all", StoredChoice::All},
                             {"none", StoredChoice::None}},
                            "Of the pictures that a classic iPod stores for its screen, write the "
                            "largest, all or none. Default: the largest, where there is no "
                            "full-resolution file");
}

void addNameOptions(CLI::App &command, ExportArguments &arguments)
{
    command
        .add_option("--name", arguments.nameTemplate,
                    "Where each file goes below DIR; the fields in braces are listed at the end. "
                    "Default: " +
                        std::string(NameTemplate::usual))
        ->type_name("TEMPLATE");
    using Kind = RecordedAlbumFile::Kind;
    static const std::map<std::string, std::optional<Kind>> kinds = {{"link", Kind::Link},
                                                                     {"hardlink", Kind::HardLink},
                                                                     {"copy", Kind::Copy},
                                                                     {"none", std::nullopt}};
    addChoice<std::optional<Kind>>(command, "--albums", arguments.request.albums, kinds,
                                   "Make a folder for each album in DIR/Albums, with relative "
                                   "links to the files, hard links or copies. Default: none");
    command
        .add_option("--sidecar", arguments.sidecars,
                    "Write what the library tells of each photo or video into a file beside it: "
                    "as XMP for programs that show photos, or as JSON. Repeat it for both")
        ->check(CLI::IsMember({"json", "xmp"}))
        ->allow_extra_args(false)
        ->type_name("FORMAT");
}

void addRunOptions(CLI::App &command, ExportArguments &arguments)
{
    ExportRequest &request = arguments.request;
    addChoice<UpdateChoice>(
        command, "--update", request.update,
        {{"keep", UpdateChoice::Keep}, {"replace", UpdateChoice::Replace}},
        "Of what has changed on the device since it was copied, keep the old copy beside the new "
        "one, or replace it, unless you have changed it. Default: keep");
    command.add_flag("--only-new", request.onlyNew,
                     "Do not copy again what you have moved, deleted or changed in DIR");
    command.add_flag("--verify", request.verify,
                     "Read back from the disk what was written, and compare it");
    CLI::Option *const report =
        command
            .add_option("--report", arguments.report,
                        "Write a line of JSON to FILE for each file: what has become of it")
            ->type_name("FILE");
    CLI::Option *const dry = command.add_flag(
        "--dry-run", arguments.isDry, "Print what would be copied where, and write nothing");
    report->excludes(dry);
    command.add_flag("--json", arguments.isJson, "With --dry-run, print JSON")->needs(dry);
}

void addFooter(CLI::App &command)
{
    command.footer(
        "Without options, all photos and videos are copied but for what is in the trash and the "
        "copies in shared albums: originals, the films of Live Photos, and edited versions.\n"
        "\n"
        "A file whose name is taken gets a number, and nothing of yours is replaced. Copies have "
        "the time when the photo was taken. DIR/.photolib holds a record of what was copied: a "
        "second run reads only what is new or has changed on the device, and `photolib verify DIR` "
        "checks all copies against it.\n"
        "\n"
        "Photos that are only in iCloud are counted, and are no failure. The exit code is 1 when "
        "a file failed; the others are copied all the same.\n"
        "\n"
        "Fields for --name: taken, modified and added (with a format as of strftime(3), as in "
        "{taken:%Y-%m}), name, stem and ext (with its dot) of the file, originalName and "
        "originalStem of the file that came to the library, id, uuid, kind, album, folder (of the "
        "album), device. {album|other} stands for \"other\" where there is no album.\n"
        "\n"
        "Examples:\n"
        "  photolib export ~/Pictures/phone -d /media/phone\n"
        "  photolib export 42 43 /tmp/two -d /media/phone\n"
        "  photolib export --album 7 /tmp/album -d /media/phone\n"
        "  photolib export --from 2019 --kind video /tmp/videos -d /media/phone\n"
        "  photolib export --albums link --sidecar xmp ~/Pictures/phone -d /media/phone\n"
        "  photolib export --name '{album|none}/{name}' ~/Pictures/phone -d /media/phone");
}

void addArguments(CLI::App &command, CommonOptions &common, ExportArguments &arguments)
{
    command
        .add_option("DIR", arguments.positionals,
                    std::string("ID\t") + idsDescription +
                        ". Default: all that the options below admit\n"
                        "DIR\tFolder to copy to, created if necessary")
        ->option_text("[ID...] DIR");
    arguments.filter = std::make_unique<FilterOptions>(
        command, common, FilterOptions::AllOption::Filter, FilterOptions::EditedOption::Command);
    addVersionOptions(command, arguments);
    addNameOptions(command, arguments);
    addRunOptions(command, arguments);
    addFooter(command);
}

} // namespace

void addExportCommand(CLI::App &app, CommandContext &context)
{
    CLI::App *const command =
        app.add_subcommand("export", "Copy photos and videos off the device into a folder");
    const auto arguments = std::make_shared<ExportArguments>();
    addArguments(*command, context.options, *arguments);
    command->callback([&context, arguments] {
        takeEdited(*arguments);
        splitArguments(*arguments);
        takeTemplate(*arguments);
        takeSidecars(*arguments);
        context.run = [&context, arguments] { return runExport(context, *arguments); };
    });
}
