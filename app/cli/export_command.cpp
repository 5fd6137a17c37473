#include "base/byte_count.h"
#include "cli/exit_codes.h"
#include "cli/filter_options.h"
#include "cli/library_command.h"
#include "cli/output.h"
#include "cli/reported_work.h"
#include "engine/library_export.h"
#include "engine/library_session.h"
#include "engine/photo_text.h"

#include <QElapsedTimer>

#include <CLI/CLI.hpp>

namespace {

struct ExportArguments {
    std::vector<std::string> positionals;
    std::unique_ptr<FilterOptions> filter;
    std::string folder; // taken out of the positionals
    bool verify = false;
};

// The last argument is the folder, the others are ids.
void splitArguments(ExportArguments &arguments)
{
    std::vector<std::string> ids = arguments.positionals;
    arguments.folder = ids.back();
    ids.pop_back();
    arguments.filter->check(ids);
    if (arguments.folder.empty())
        throw CLI::ValidationError("DIR", "the name is empty");
    if (arguments.folder == "-" || idRange(arguments.folder))
        throw CLI::ValidationError("no folder to copy to was named; if " + arguments.folder +
                                   " is the folder, write ./" + arguments.folder);
}

// How the export goes, on stderr.
class ExportReport : public ExportObserver
{
public:
    ExportReport(ReportedWork &work, bool tellsAbsent) : m_work(work), m_tellsAbsent(tellsAbsent) {}

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

    void absent(const QString &label) override
    {
        if (m_tellsAbsent)
            m_work.tell(label + QStringLiteral(": not on the device"));
    }

    void failed(const ItemFailure &failure) override { m_work.failed(failure); }

private:
    QString amounts(const ExportProgress &progress) const
    {
        return QStringLiteral("%1 of %2 files, %3%4")
            .arg(QString::number(progress.doneFiles), QString::number(progress.files),
                 byteCountsText(progress.doneBytes, progress.totalBytes), timeLeft(progress));
    }

    // Empty while it is too early to tell.
    QString timeLeft(const ExportProgress &progress) const
    {
        constexpr qint64 earliest = 1000; // milliseconds
        const qint64 elapsed = m_clock.elapsed();
        if (elapsed < earliest || progress.readBytes <= 0)
            return QString();
        const auto rest =
            static_cast<double>(qMax(qint64(0), progress.totalBytes - progress.doneBytes));
        const double seconds =
            rest / static_cast<double>(progress.readBytes) * static_cast<double>(elapsed) / 1000.0;
        constexpr double longest = 100 * 3600.0; // nobody waits for what takes longer
        return QStringLiteral(", %1 left").arg(durationText(qint64(qMin(seconds, longest))));
    }

    ReportedWork &m_work;
    const bool m_tellsAbsent;
    QElapsedTimer m_clock; // of the copying
};

ExportRequest requestOf(const ExportArguments &arguments)
{
    ExportRequest request;
    request.filter = arguments.filter->filter();
    request.folder = QByteArray::fromStdString(arguments.folder);
    request.verify = arguments.verify;
    return request;
}

int exportTo(const ExportRequest &request, const CommonOptions &options, LibrarySession &session,
             Output &output)
{
    ExportResult result;
    ReportedWork work(showsProgress());
    ExportReport report(work, options.verbose);
    work.run([&](const CancelToken &cancel) {
        result = exportPhotos(session, request, report, cancel);
    });
    if (!options.quiet)
        output.writeLine(result.counts.text());
    return result.failures.isEmpty() ? exitDone : exitFailed;
}

int runExport(const CommandContext &context, const ExportArguments &arguments)
{
    requireNamedDevice(context);
    const ExportRequest request = requestOf(arguments);
    const auto work = [&](LibrarySession &session, Output &output) {
        return exportTo(request, context.options, session, output);
    };
    return workOnLibrary(context, work);
}

void addArguments(CLI::App &command, CommonOptions &common, ExportArguments &arguments)
{
    command
        .add_option("DIR", arguments.positionals,
                    std::string("ID\t") + idsDescription +
                        ". Default: all that the options below admit\n"
                        "DIR\tFolder to copy to, created if necessary")
        ->required()
        ->option_text("[ID...] DIR");
    arguments.filter = std::make_unique<FilterOptions>(command, common);
    command.add_flag("--verify", arguments.verify,
                     "Compare the contents of files that are already there");
    command.footer(
        "Without options, all photos and videos are copied but for what is in the trash and the "
        "copies in shared albums.\n"
        "\n"
        "A file whose name is taken gets a number; a file that is already there is left as it is, "
        "so a second run copies only what is missing. Photos that are only in iCloud are counted, "
        "and listed with -v.\n"
        "\n"
        "Copies keep their modification time, and a file of the same name, size and time counts as "
        "the copy, without being read. For that, times to the second, or to two seconds as on FAT, "
        "are exact enough. If the times differ, or with --verify, the contents are compared.\n"
        "\n"
        "For each photo of a classic iPod, the full-resolution file is copied, if there is one, "
        "and the largest stored picture is written: as BMP, or as JPEG if it is stored so.\n"
        "\n"
        "Examples:\n"
        "  photolib export ~/Pictures/phone -d /media/phone\n"
        "  photolib export 42 43 /tmp/two -d /media/phone\n"
        "  photolib export --album 7 /tmp/album -d /media/phone\n"
        "  photolib export --from 2019 --kind video /tmp/videos -d /media/phone");
}

} // namespace

void addExportCommand(CLI::App &app, CommandContext &context)
{
    CLI::App *const command =
        app.add_subcommand("export", "Copy photos and videos off the device into a folder");
    const auto arguments = std::make_shared<ExportArguments>();
    addArguments(*command, context.options, *arguments);
    command->callback([&context, arguments] {
        splitArguments(*arguments);
        context.run = [&context, arguments] { return runExport(context, *arguments); };
    });
}
