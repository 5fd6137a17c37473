#include "cli/library_command.h"
#include "cli/library_session.h"
#include "cli/output.h"
#include "cli/photo_text.h"
#include "cli/progress_bar.h"
#include "services/printable.h"

#include <QSet>

#include <CLI/CLI.hpp>

namespace {

// What the library holds, counted photo by photo.
struct Summary {
    int photos = 0;
    int videos = 0;
    int missing = 0;
    int trashed = 0;
    qint64 bytes = 0;
    QSet<QString> bursts;
    QDateTime oldest;
    QDateTime newest;

    void add(const photoItem &item, bool isThere);

private:
    void addFile(const photoItem &item);
};

void Summary::add(const photoItem &item, bool isThere)
{
    ++(item.type == videoType ? videos : photos);
    if (isThere)
        addFile(item);
    else
        ++missing;
}

void Summary::addFile(const photoItem &item)
{
    // A database may claim any size; the sum stays at the largest one then.
    if (__builtin_add_overflow(bytes, item.fileSize, &bytes))
        bytes = std::numeric_limits<qint64>::max();
    if (item.trashedDate != 0)
        ++trashed;
    if (isInBurst(item))
        bursts.insert(item.avalancheUUID);
    if (!oldest.isValid() || item.modifyDate < oldest)
        oldest = item.modifyDate;
    if (!newest.isValid() || item.modifyDate > newest)
        newest = item.modifyDate;
}

Summary summaryOf(LibrarySession &session)
{
    Summary summary;
    for (const quint64 id : session.library().photoIDs()) {
        photoItem item;
        const bool isThere = session.photo(id, &item);
        summary.add(item, isThere);
    }
    return summary;
}

void writeSummary(LibrarySession &session, Output &output)
{
    const Summary summary = summaryOf(session);
    const auto line = [&output](const char *label, const QString &value) {
        output.writeLine(QStringLiteral("%1 %2").arg(QLatin1String(label), -13).arg(value));
    };
    line("Device:", QString::fromUtf8(printable(QByteArray::fromStdString(session.deviceName()))));
    line("Kind:", QStringLiteral("iOS device (folder)"));
    line("Library UUID:", nameText(session.library().getUUID()));
    line("Photos:", QString::number(summary.photos));
    line("Videos:", QString::number(summary.videos));
    line("Missing:", QStringLiteral("%1 without a file on the device").arg(summary.missing));
    line("Bursts:", QString::number(summary.bursts.size()));
    line("In the trash:", QString::number(summary.trashed));
    line("Albums:", QString::number(session.library().albumCnt()));
    line("Size:", byteCountText(summary.bytes));
    if (summary.oldest.isValid())
        line("Modified:", QStringLiteral("%1 to %2 (UTC)")
                              .arg(dateText(summary.oldest), dateText(summary.newest)));
}

} // namespace

void addInfoCommand(CLI::App &app, CommandContext &context)
{
    CLI::App *const command = app.add_subcommand("info", "Sum up the photo library");
    const auto device = addDeviceArgument(*command);
    command->callback([&context, device] {
        context.run = [&context, device] { return runOnLibrary(context, *device, writeSummary); };
    });
}
