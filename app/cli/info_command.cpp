#include "base/byte_count.h"
#include "base/printable.h"
#include "cli/library_command.h"
#include "cli/output.h"
#include "cli/year_chart.h"
#include "engine/asset_text.h"
#include "engine/classic_photos.h"
#include "engine/library_session.h"
#include "engine/library_summary.h"
#include "engine/photo_text.h"

#include <CLI/CLI.hpp>

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

class LineWriter
{
public:
    explicit LineWriter(Output &output) : m_output(output) {}

    void write(const char *label, const QString &value)
    {
        m_output.writeLine(QStringLiteral("%1 %2").arg(QLatin1String(label), -13).arg(value));
    }

    void writeIfAny(const char *label, const QString &value)
    {
        if (!value.isEmpty())
            write(label, value);
    }

    void write(const char *label, int count) { write(label, QString::number(count)); }

    // No line when there is no date. `zone` stands behind the dates.
    void write(const char *label, const DateRange &range, const QString &zone)
    {
        if (range.oldest.isValid())
            write(label, QStringLiteral("%1 to %2%3")
                             .arg(dateText(range.oldest), dateText(range.newest), zone));
    }

    Output &output() { return m_output; }

private:
    Output &m_output;
};

// "burst 12, Live Photo 3": those that there are.
template <typename Key>
QString countsText(const std::map<Key, int> &counts, QString (*word)(Key))
{
    QStringList texts;
    for (const auto &[key, count] : counts)
        texts.append(QStringLiteral("%1 %2").arg(word(key), QString::number(count)));
    return texts.join(QStringLiteral(", "));
}

void writeFiles(const LibrarySummary &summary, LineWriter &lines)
{
    const int away = summary.missing + summary.onlyInCloud;
    lines.write("Missing:", QStringLiteral("%1 without a file on the device").arg(away));
    lines.write("iCloud only:", QStringLiteral("%1 of the missing").arg(summary.onlyInCloud));
    if (summary.unreadable > 0)
        lines.write("Unreadable:", summary.unreadable);
}

void writeMarks(const LibrarySummary &summary, LineWriter &lines)
{
    lines.write("Bursts:", summary.bursts);
    lines.write("Favorites:", summary.favorites);
    lines.write("Edited:", summary.edited);
    lines.write("Hidden:", summary.hidden);
    lines.write("In the trash:", summary.trashed);
    if (summary.shared > 0)
        lines.write("Shared:", QStringLiteral("%1 copies in shared albums").arg(summary.shared));
}

void writeYears(const LibrarySummary &summary, Output &output)
{
    constexpr int barWidth = 50;
    const QStringList chart = yearChart(summary.years, barWidth);
    if (!chart.isEmpty())
        output.writeLine(QStringLiteral("\nTaken per year:"));
    for (const QString &line : chart)
        output.writeLine(QStringLiteral("  ") + line);
}

void writeIosSummary(LibrarySession &session, LineWriter &lines)
{
    const LibrarySummary summary = summaryOf(
        session.catalog(), [&session](const Asset &asset) { return session.fileState(asset); });
    lines.write("Kind:", QStringLiteral("iOS device (folder)"));
    lines.writeIfAny("Library UUID:", nameText(session.libraryUuid()));
    lines.write("Photos:", summary.photos);
    lines.write("Videos:", summary.videos);
    writeFiles(summary, lines);
    lines.writeIfAny("Types:", countsText(summary.types, typeText));
    lines.writeIfAny("Sources:", countsText(summary.sources, sourceText));
    writeMarks(summary, lines);
    lines.write("Albums:", summary.albums);
    lines.write("Folders:", summary.folders);
    lines.write("People:", summary.people);
    lines.write("Size:", byteCountText(summary.bytes));
    if (!summary.oldest.isEmpty())
        lines.write("Taken:", QStringLiteral("%1 to %2").arg(summary.oldest, summary.newest));
    if (summary.undated > 0)
        lines.write("Undated:", summary.undated);
    writeYears(summary, lines.output());
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
