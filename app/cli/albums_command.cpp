#include "cli/album_table.h"
#include "cli/library_command.h"
#include "engine/library_session.h"
#include "cli/output.h"

#include <CLI/CLI.hpp>

namespace {

void writeAlbums(LibrarySession &session, Output &output)
{
    writeAlbumTable(session.library(), output);
}

} // namespace

void addAlbumsCommand(CLI::App &app, CommandContext &context)
{
    CLI::App *const command = app.add_subcommand("albums", "List the albums");
    const auto device = addDeviceArgument(*command);
    command->footer("Examples:\n"
                    "  photolib albums /media/phone\n"
                    "  photolib photos /media/phone --album 12   what is in one of them");
    command->callback([&context, device] {
        context.run = [&context, device] { return runOnLibrary(context, *device, writeAlbums); };
    });
}
