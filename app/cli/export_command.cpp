#include "base/byte_count.h"
#include "base/error.h"
#include "base/folders.h"
#include "base/log_output.h"
#include "cli/exit_codes.h"
#include "cli/id_arguments.h"
#include "cli/interruptible_run.h"
#include "cli/interruptible_task.h"
#include "cli/library_command.h"
#include "cli/output.h"
#include "cli/progress_bar.h"
#include "engine/device_bounds.h"
#include "engine/export_folder.h"
#include "engine/export_items.h"
#include "engine/id_list.h"
#include "engine/library_session.h"
#include "engine/photo_ids.h"
#include "engine/photo_text.h"

#include <QElapsedTimer>

#include <CLI/CLI.hpp>

namespace {

struct ExportArguments {
    std::vector<std::string> positionals;
    std::shared_ptr<std::optional<std::string>> album;
    std::vector<std::string> ids; // taken out of the positionals, as is the folder
    std::string folder;
    bool verify = false;
};

// The last argument is the folder, the others are ids.
void splitArguments(ExportArguments &arguments)
{
    arguments.ids = arguments.positionals;
    arguments.folder = arguments.ids.back();
    arguments.ids.pop_back();
    requireIds(arguments.ids);
    if (arguments.folder.empty())
        throw CLI::ValidationError("DIR", "the name is empty");
    if (isNumber(arguments.folder))
        throw CLI::ValidationError(arguments.folder,
                                   "an id where the folder to copy to is missing; write ./" +
                                       arguments.folder + " for a folder of that name");
    if (*arguments.album && !arguments.ids.empty())
        throw CLI::ValidationError("--album", "takes the place of ids");
}

// Each photo once, however often it was named or is in the album.
QList<quint64> chosenIds(const ExportArguments &arguments, LibrarySession &session)
{
    if (arguments.ids.empty())
        return withoutDuplicates(chosenPhotoIds(session, *arguments.album));
    return knownPhotoIds(arguments.ids, session);
}

QVector<ExportItem> itemsFor(LibrarySession &session, const QList<quint64> &ids)
{
    QVector<ExportItem> items;
    items.reserve(ids.size());
    InterruptibleTask task(showsProgress(), QStringLiteral("Looking at the files"), ids.size());
    const auto lookAtAll = [&] {
        for (int i = 0; i < ids.size(); ++i) {
            task.setDone(i);
            items += exportItems(session, ids[i]);
        }
    };
    if (task.run(lookAtAll))
        throw Error(Error::Cancelled, "interrupted: nothing is copied yet");
    return items;
}

// How the export goes, on stderr.
class ExportReport
{
public:
    ExportReport(PhotoExport &photos, bool tellsAbsent)
        : m_photos(photos), m_tellsAbsent(tellsAbsent),
          m_bar(showsProgress(), QStringLiteral("Copying"))
    {
        m_clock.start();
    }

    void update()
    {
        for (const QByteArray &failure : m_photos.takeFailures())
            tell(failure);
        for (const QByteArray &name : m_photos.takeAbsent()) {
            if (m_tellsAbsent)
                tell(name + ": not on the device");
        }
        m_bar.show(m_photos.doneBytes(), m_photos.totalBytes(), amounts());
    }

private:
    void tell(const QByteArray &line)
    {
        m_bar.hide();
        writeErrorLine("photolib: " + line);
    }

    QString amounts() const
    {
        return QStringLiteral("%1 of %2 files, %3%4")
            .arg(QString::number(m_photos.counts().all()), QString::number(m_photos.size()),
                 byteCountsText(m_photos.doneBytes(), m_photos.totalBytes()), timeLeft());
    }

    // Empty while it is too early to tell.
    QString timeLeft() const
    {
        constexpr qint64 earliest = 1000; // milliseconds
        const auto done = static_cast<double>(m_photos.doneBytes());
        const auto read = static_cast<double>(m_photos.readBytes()); // only these take time
        const qint64 elapsed = m_clock.elapsed();
        if (elapsed < earliest || read <= 0)
            return QString();
        const double rest = qMax(0.0, static_cast<double>(m_photos.totalBytes()) - done);
        const double seconds = rest / read * static_cast<double>(elapsed) / 1000.0;
        constexpr double longest = 100 * 3600.0; // nobody waits for what takes longer
        return QStringLiteral(", %1 left").arg(durationText(qint64(qMin(seconds, longest))));
    }

    PhotoExport &m_photos;
    const bool m_tellsAbsent;
    ProgressBar m_bar;
    QElapsedTimer m_clock;
};

// Whether it was interrupted.
bool runReported(PhotoExport &photos, bool tellsAbsent)
{
    ExportReport report(photos, tellsAbsent);
    try {
        return runInterruptible([&photos] { photos.run(); }, [&photos] { photos.cancel(); },
                                [&report] { report.update(); });
    } catch (const Error &error) {
        throw Error(Error::Failed, error.what() + ("; " + photos.counts().text().toStdString()));
    }
}

int exportPhotos(const ExportArguments &arguments, const CommonOptions &options,
                 LibrarySession &session, Output &output)
{
    const QVector<ExportItem> items = itemsFor(session, chosenIds(arguments, session));
    const auto path = QByteArray::fromStdString(arguments.folder);
    const std::unique_ptr<EnsuredFolder> ensured = session.folderOutside(path);
    refuseDeviceAsTarget(path);
    ExportFolder folder(path);
    PhotoExport photos(session.files(), folder, items,
                       arguments.verify ? ExportComparison::Content
                                        : ExportComparison::SizeAndTime);
    const bool isInterrupted = runReported(photos, options.verbose);
    const ExportCounts counts = photos.counts();
    if (isInterrupted)
        throw Error(Error::Cancelled, "interrupted: " + counts.text().toStdString());
    ensured->keep();
    if (!options.quiet)
        output.writeLine(counts.text());
    return counts.failed == 0 ? 0 : exitFailed;
}

int runExport(const CommandContext &context, const ExportArguments &arguments)
{
    const auto work = [&](LibrarySession &session, Output &output) {
        return exportPhotos(arguments, context.options, session, output);
    };
    requireNamedDevice(context);
    return workOnLibrary(context, work);
}

void addArguments(CLI::App &command, ExportArguments &arguments)
{
    command
        .add_option("DIR", arguments.positionals,
                    "[ID...] DIR: the ids of what to copy, all without them; and the folder to "
                    "copy to, created if necessary")
        ->required()
        ->option_text("[ID...] DIR");
    arguments.album = addAlbumOption(command);
    command.add_flag("--verify", arguments.verify,
                     "Compare the contents of files that are there already");
    command.footer("A name that is taken gets a number; a file that is there already is left as "
                   "it is, so that a second run copies only what is missing. Photos of which the "
                   "device has no file, since it is in iCloud, say, are counted, and listed with "
                   "-v.\n"
                   "\n"
                   "A copy has its original's time of change, and a file of the same name, size "
                   "and time is taken for the copy without reading it. On a disk that keeps times "
                   "only to the second, or to every other one as FAT does, that is exact enough. "
                   "Where the times differ, the contents decide; with --verify they always do.\n"
                   "\n"
                   "Of a photo of a classic iPod the full-resolution file is copied, if there is "
                   "one, and the largest of the stored pictures written: as BMP, or as JPEG where "
                   "it is stored so.\n"
                   "\n"
                   "Examples:\n"
                   "  photolib export ~/Pictures/phone -d /media/phone\n"
                   "  photolib export 42 43 /tmp/two -d /media/phone\n"
                   "  photolib export --album 7 /tmp/album -d /media/phone");
}

} // namespace

void addExportCommand(CLI::App &app, CommandContext &context)
{
    CLI::App *const command =
        app.add_subcommand("export", "Copy photos and videos off the device into a folder");
    const auto arguments = std::make_shared<ExportArguments>();
    addArguments(*command, *arguments);
    command->callback([&context, arguments] {
        splitArguments(*arguments);
        context.run = [&context, arguments] { return runExport(context, *arguments); };
    });
}
