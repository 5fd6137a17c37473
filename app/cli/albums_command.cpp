#include "cli/album_table.h"
#include "cli/library_command.h"
#include "cli/output.h"
#include "engine/library_session.h"

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
    command->footer("Examples:\n"
                    "  photolib albums -d /media/phone\n"
                    "  photolib photos -d /media/phone --album 12   what is in one of them");
    command->callback(
        [&context] { context.run = [&context] { return runOnLibrary(context, writeAlbums); }; });
}
