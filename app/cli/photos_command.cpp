#include "base/byte_count.h"
#include "cli/id_arguments.h"
#include "cli/library_command.h"
#include "cli/output.h"
#include "cli/text_table.h"
#include "engine/classic_photos.h"
#include "engine/library_session.h"
#include "engine/photo_ids.h"
#include "engine/photo_text.h"

#include <CLI/CLI.hpp>

namespace {

QStringList iosRow(LibrarySession &session, quint64 id)
{
    photoItem item;
    const FileState state = session.photo(id, &item);
    const QString size = state == FileState::There     ? byteCountText(qint64(item.fileSize))
                         : state == FileState::Missing ? QStringLiteral("missing")
                                                       : QStringLiteral("unreadable");
    // Only the modification date is read from the device.
    return {QString::number(id),  nameText(item.name),       kindText(item),     size,
            dimensionsText(item), dateText(item.modifyDate), nameText(item.path)};
}

QStringList classicRow(LibrarySession &session, quint64 id)
{
    photoItem item;
    session.library().getPhoto(id, &item);
    const ClassicPhoto &photo = *classicPhoto(session, id);
    const StoredPicture *const largest = largestVariant(photo);
    return {QString::number(id), dateText(takenDate(item)),
            largest ? variantDimensionsText(*largest) : QString(),
            byteCountText(storedBytes(photo)), classicFileText(photo.originalName)};
}

// The photos in a table, with what a device of their kind tells of them.
class PhotoTable
{
public:
    explicit PhotoTable(bool isClassic)
        : m_row(isClassic ? classicRow : iosRow),
          m_table(isClassic ? QStringList{"ID", "TAKEN", "DIMENSIONS", "STORED", "ORIGINAL"}
                            : QStringList{"ID", "NAME", "KIND", "SIZE", "DIMENSIONS",
                                          "MODIFIED (UTC)", "PATH"})
    {
        constexpr int idColumn = 0;
        constexpr int sizeColumn = 3;
        m_table.alignRight(idColumn);
        m_table.alignRight(sizeColumn);
    }

    void add(LibrarySession &session, quint64 id) { m_table.addRow(m_row(session, id)); }
    void write(Output &output) const { m_table.write(output); }

private:
    QStringList (*const m_row)(LibrarySession &session, quint64 id);
    TextTable m_table;
};

void writePhotos(LibrarySession &session, const QList<quint64> &ids, Output &output)
{
    if (ids.isEmpty()) {
        output.write("No photos or videos.\n");
        return;
    }
    PhotoTable table(session.classicIpod() != nullptr);
    for (const quint64 id : ids)
        table.add(session, id);
    table.write(output);
}

int runPhotos(const CommandContext &context, const std::optional<std::string> &album)
{
    return runOnLibrary(context, [&album](LibrarySession &session, Output &output) {
        writePhotos(session, chosenPhotoIds(session, album), output);
    });
}

} // namespace

void addPhotosCommand(CLI::App &app, CommandContext &context)
{
    CLI::App *const command = app.add_subcommand("photos", "List the photos and videos");
    const auto album = addAlbumOption(*command);
    command->footer("Examples:\n"
                    "  photolib photos\n"
                    "  photolib photos -d /media/phone --album 7");
    command->callback([&context, album] {
        context.run = [&context, album] { return runPhotos(context, *album); };
    });
}
