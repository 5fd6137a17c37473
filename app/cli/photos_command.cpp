#include "cli/library_command.h"
#include "cli/library_ids.h"
#include "cli/library_session.h"
#include "cli/output.h"
#include "cli/photo_text.h"
#include "cli/progress_bar.h"
#include "cli/text_table.h"

#include <CLI/CLI.hpp>

namespace {

QStringList row(LibrarySession &session, quint64 id)
{
    photoItem item;
    const bool isThere = session.photo(id, &item);
    const QString size = isThere ? byteCountText(qint64(item.fileSize)) : QStringLiteral("missing");
    // Only the modification date is read from the device.
    return {QString::number(id),  nameText(item.name),       kindText(item),     size,
            dimensionsText(item), dateText(item.modifyDate), nameText(item.path)};
}

void writePhotos(LibrarySession &session, const QList<quint64> &ids, Output &output)
{
    TextTable table({QStringLiteral("ID"), QStringLiteral("NAME"), QStringLiteral("KIND"),
                     QStringLiteral("SIZE"), QStringLiteral("DIMENSIONS"),
                     QStringLiteral("MODIFIED (UTC)"), QStringLiteral("PATH")});
    constexpr int idColumn = 0;
    constexpr int sizeColumn = 3;
    table.alignRight(idColumn);
    table.alignRight(sizeColumn);
    for (const quint64 id : ids)
        table.addRow(row(session, id));
    table.write(output);
}

int runPhotos(const CommandContext &context, const std::optional<std::string> &device,
              const std::optional<std::string> &album)
{
    return runOnLibrary(context, device, [&album](LibrarySession &session, Output &output) {
        writePhotos(session, chosenPhotoIds(session, album), output);
    });
}

} // namespace

void addPhotosCommand(CLI::App &app, CommandContext &context)
{
    CLI::App *const command = app.add_subcommand("photos", "List the photos and videos");
    const auto device = addDeviceArgument(*command);
    const auto album = addAlbumOption(*command);
    command->footer("Examples:\n"
                    "  photolib photos\n"
                    "  photolib photos /media/phone --album 7");
    command->callback([&context, device, album] {
        context.run = [&context, device, album] { return runPhotos(context, *device, *album); };
    });
}
