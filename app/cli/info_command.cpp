#include "base/byte_count.h"
#include "base/printable.h"
#include "cli/library_command.h"
#include "cli/output.h"
#include "engine/classic_photos.h"
#include "engine/library_session.h"
#include "engine/photo_text.h"

#include <CLI/CLI.hpp>

#include <set>

namespace {

// From the oldest to the newest of several dates.
struct DateRange {
    QDateTime oldest;
    QDateTime newest;

    void add(const QDateTime &date)
    {
        if (!date.isValid())
            return;
        if (!oldest.isValid() || date < oldest)
            oldest = date;
        if (!newest.isValid() || date > newest)
            newest = date;
    }
};

// What the library of an iOS device holds, counted photo by photo.
struct Summary {
    int photos = 0;
    int videos = 0;
    int missing = 0;
    int unreadable = 0;
    int trashed = 0;
    qint64 bytes = 0;
    std::set<QString> bursts; // sorted: a device can choose names that make hashes slow
    DateRange modified;

    void add(const photoItem &item, FileState state);

private:
    void addFile(const photoItem &item);
};

void Summary::add(const photoItem &item, FileState state)
{
    ++(item.type == videoType ? videos : photos);
    if (state == FileState::There)
        addFile(item);
    else
        ++(state == FileState::Missing ? missing : unreadable);
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
    modified.add(item.modifyDate);
}

Summary summaryOf(LibrarySession &session)
{
    Summary summary;
    for (const quint64 id : session.library().photoIDs()) {
        photoItem item;
        const FileState state = session.photo(id, &item);
        summary.add(item, state);
    }
    return summary;
}

class LineWriter
{
public:
    explicit LineWriter(Output &output) : m_output(output) {}

    void write(const char *label, const QString &value)
    {
        m_output.writeLine(QStringLiteral("%1 %2").arg(QLatin1String(label), -13).arg(value));
    }

    void write(const char *label, int count) { write(label, QString::number(count)); }

    // No line when there is no date. `zone` stands behind the dates.
    void write(const char *label, const DateRange &range, const QString &zone)
    {
        if (range.oldest.isValid())
            write(label, QStringLiteral("%1 to %2%3")
                             .arg(dateText(range.oldest), dateText(range.newest), zone));
    }

private:
    Output &m_output;
};

void writeIosSummary(LibrarySession &session, LineWriter &lines)
{
    const Summary summary = summaryOf(session);
    lines.write("Kind:", QStringLiteral("iOS device (folder)"));
    lines.write("Library UUID:", nameText(session.library().getUUID()));
    lines.write("Photos:", summary.photos);
    lines.write("Videos:", summary.videos);
    lines.write("Missing:", QStringLiteral("%1 without a file on the device").arg(summary.missing));
    if (summary.unreadable > 0)
        lines.write("Unreadable:", summary.unreadable);
    lines.write("Bursts:", static_cast<int>(summary.bursts.size()));
    lines.write("In the trash:", summary.trashed);
    lines.write("Albums:", session.library().albumCnt());
    lines.write("Size:", byteCountText(summary.bytes));
    lines.write("Modified:", summary.modified, QStringLiteral(" (UTC)"));
}

void writeClassicSummary(LibrarySession &session, LineWriter &lines)
{
    int originals = 0;
    qint64 bytes = 0;
    DateRange taken;
    for (const quint64 id : session.library().photoIDs()) {
        const ClassicPhoto &photo = *classicPhoto(session, id);
        originals += hasOriginal(photo) ? 1 : 0;
        bytes += storedBytes(photo);
        photoItem item;
        session.library().getPhoto(id, &item);
        taken.add(takenDate(item));
    }
    lines.write("Kind:", QStringLiteral("classic iPod (folder)"));
    lines.write("Photos:", session.library().photoCnt());
    lines.write("Originals:", QStringLiteral("%1 in full resolution").arg(originals));
    lines.write("Albums:", session.library().albumCnt());
    lines.write("Stored:", byteCountText(bytes));
    lines.write("Taken:", taken, QString()); // by the iPod's clock
}

void writeSummary(LibrarySession &session, Output &output)
{
    LineWriter lines(output);
    lines.write("Device:",
                QString::fromUtf8(printable(QByteArray::fromStdString(session.deviceName()))));
    if (session.classicIpod())
        writeClassicSummary(session, lines);
    else
        writeIosSummary(session, lines);
}

} // namespace

void addInfoCommand(CLI::App &app, CommandContext &context)
{
    CLI::App *const command = app.add_subcommand("info", "Summarize the photo library");
    command->footer("Examples:\n"
                    "  photolib info\n"
                    "  photolib info -d /media/IPOD");
    command->callback(
        [&context] { context.run = [&context] { return runOnLibrary(context, writeSummary); }; });
}
