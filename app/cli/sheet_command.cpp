#include "base/error.h"
#include "base/folders.h"
#include "base/printable.h"
#include "cli/exit_codes.h"
#include "cli/file_target.h"
#include "cli/id_arguments.h"
#include "cli/interruptible_task.h"
#include "cli/library_command.h"
#include "cli/output.h"
#include "cli/progress_bar.h"
#include "cli/text_drawing.h"
#include "engine/album_list.h"
#include "engine/library_session.h"
#include "engine/photo_ids.h"
#include "engine/picture_format.h"
#include "engine/sheet_cell.h"

#include <QStringList>

#include <CLI/CLI.hpp>

namespace {

constexpr int mostOnAPage = 400; // a page of so many takes some 80 MB

struct SheetArguments {
    std::shared_ptr<std::optional<std::string>> album;
    std::string target;
};

// Where the extension of the file `path` begins; its end when it has none.
int extensionStart(const QByteArray &path)
{
    const int dot = path.lastIndexOf('.');
    return dot > path.lastIndexOf('/') + 1 ? dot : path.size();
}

void checkArguments(const SheetArguments &arguments)
{
    const auto path = QByteArray::fromStdString(arguments.target);
    if (path.isEmpty())
        throw CLI::ValidationError("--output", "the name is empty");
    const QByteArray extension = path.mid(extensionStart(path)).toLower();
    if (!extension.isEmpty() && extension != ".png")
        throw CLI::ValidationError(arguments.target,
                                   "a sheet is a PNG picture; let the name end in .png");
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

QString albumText(LibrarySession &session, const std::optional<std::string> &album)
{
    if (!album)
        return QStringLiteral("All photos and videos");
    albumItem item;
    session.library().getAlbum(knownAlbumId(*album, session), &item);
    return QStringLiteral("Album \u201c%1\u201d").arg(albumNameText(item.name));
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

// Draws the pages and writes each before the next one is begun.
class SheetWriter
{
public:
    // Throws Error when there is no place for the pages.
    SheetWriter(LibrarySession &session, const QByteArray &path, const QList<quint64> &ids,
                const QString &album)
        : m_session(session), m_path(path), m_target(sheetTarget(session, path)), m_ids(ids),
          m_album(album), m_pages(qMax(1, (ids.size() + mostOnAPage - 1) / mostOnAPage)),
          m_task(showsProgress(), QStringLiteral("Drawing the sheet"), ids.size())
    {
        if (m_target.isStandardOutput() && m_pages > 1)
            throw Error("standard output", "takes one page, and the sheet has " +
                                               std::to_string(m_pages) +
                                               "; name a file, or an album");
        for (int page = 0; page < m_pages; ++page)
            m_target.requireReplaceable(pageName(m_path, page));
    }

    // Throws Error also when it is interrupted.
    void write()
    {
        const TextDrawing text(neededBytes()); // on the thread that Qt is to see as the main one
        if (m_task.run([this] { writePages(); }))
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
    // Of the largest page as an image and as a file, of a thread, its stack and thumbnails.
    qint64 neededBytes() const
    {
        constexpr qint64 bytesOfAPixel = 4;
        constexpr qint64 others = 24 << 20;
        const int count = qMin(mostOnAPage, m_ids.size());
        const QSize size = SheetLayout(count, SheetLayout::columnsFor(count)).size();
        return 2 * bytesOfAPixel * size.width() * size.height() + others;
    }

    std::string doneText() const
    {
        if (m_target.isStandardOutput())
            return "nothing was written";
        return "wrote " + std::to_string(m_written.size()) + " of " + std::to_string(m_pages) +
               (m_pages == 1 ? " page" : " pages");
    }

    void writePages()
    {
        for (int page = 0; page < m_pages; ++page) {
            const int first = page * mostOnAPage;
            const int count = qMin(mostOnAPage, m_ids.size() - first);
            const QByteArray path = pageName(m_path, page);
            m_target.write(path, pngFile(drawnPage(page, first, count)));
            m_written.append(
                QStringLiteral("%1: %2").arg(QString::fromUtf8(printable(path)), countText(count)));
        }
    }

    QImage drawnPage(int page, int first, int count)
    {
        const int columns = SheetLayout::columnsFor(qMin(mostOnAPage, m_ids.size()));
        SheetPage sheet(heading(page), SheetLayout(count, columns));
        for (int i = 0; i < count; ++i) {
            m_task.setDone(first + i);
            sheet.draw(i, cell(m_ids[first + i]));
        }
        if (count == 0)
            sheet.drawNotice(QStringLiteral("There is no photo or video."));
        return sheet.image();
    }

    SheetHeading heading(int page) const
    {
        SheetHeading heading;
        heading.title =
            QString::fromUtf8(printable(QByteArray::fromStdString(m_session.deviceName())));
        heading.subtitle = QStringLiteral("%1 \u00b7 %2").arg(m_album, countText(m_ids.size()));
        if (m_pages > 1)
            heading.subtitle += QStringLiteral(" \u00b7 page %1 of %2").arg(page + 1).arg(m_pages);
        return heading;
    }

    SheetCell cell(quint64 id)
    {
        QStringList faults;
        SheetCell cell = sheetCell(m_session, id, &faults);
        for (const QString &fault : faults)
            m_task.tell(fault);
        return cell;
    }

    LibrarySession &m_session;
    const QByteArray m_path;
    FileTarget m_target;
    const QList<quint64> m_ids;
    const QString m_album;
    const int m_pages;
    InterruptibleTask m_task;
    QStringList m_written;
};

void writeSheet(const SheetArguments &arguments, bool isQuiet, LibrarySession &session,
                Output &output)
{
    const QList<quint64> ids = chosenPhotoIds(session, *arguments.album);
    const QString album = albumText(session, *arguments.album);
    SheetWriter writer(session, QByteArray::fromStdString(arguments.target), ids, album);
    writer.write();
    writer.finish(isQuiet, output);
}

int runSheet(const CommandContext &context, const SheetArguments &arguments)
{
    const auto write = [&](LibrarySession &session, Output &output) {
        writeSheet(arguments, context.options.quiet, session, output);
        return exitDone;
    };
    return workOnLibrary(context, write);
}

} // namespace

void addSheetCommand(CLI::App &app, CommandContext &context)
{
    CLI::App *const command =
        app.add_subcommand("sheet", "Draw a contact sheet of the photos and videos");
    const auto arguments = std::make_shared<SheetArguments>();
    arguments->album = addAlbumOption(*command);
    command
        ->add_option("-o,--output", arguments->target,
                     "The PNG file to write, or - for standard output. An existing file is "
                     "replaced, and its folder is created if necessary. Pictures beyond the "
                     "first " +
                         std::to_string(mostOnAPage) + " go to sheet-2.png and so on")
        ->required()
        ->type_name("FILE");
    command->footer("What is in the trash is dimmed; whether a photo with a missing file is in the "
                    "trash is not known.\n"
                    "\n"
                    "Examples:\n"
                    "  photolib sheet -o sheet.png\n"
                    "  photolib sheet -d /media/phone --album 7 -o album.png\n"
                    "  photolib sheet -d /media/phone -o - | display");
    command->callback([&context, arguments] {
        checkArguments(*arguments);
        context.run = [&context, arguments] { return runSheet(context, *arguments); };
    });
}
