#include "cli/album_lists.h"
#include "cli/library_command.h"
#include "cli/output.h"
#include "engine/library_session.h"

#include <CLI/CLI.hpp>

namespace {

void writeAlbums(bool isJson, const LibrarySession &session, Output &output)
{
    if (isJson)
        writeAlbumsAsJson(session.catalog(), output);
    else
        writeAlbumsAsTable(session.catalog(), output);
}

int runAlbums(const CommandContext &context, bool isJson)
{
    return runOnLibrary(context, [isJson](LibrarySession &session, Output &output) {
        writeAlbums(isJson, session, output);
    });
}

} // namespace

void addAlbumsCommand(CLI::App &app, CommandContext &context)
{
    CLI::App *const command = app.add_subcommand("albums", "List the albums and folders");
    const auto isJson = std::make_shared<bool>(false);
    command->add_flag("--json", *isJson, "Print JSON, with the photos of each album");
    command->footer("What is in a folder is listed below it. PHOTOS counts what photos --all lists "
                    "of an album, or of all albums in a folder; which photos a smart album has is "
                    "not stored in the library.\n"
                    "\n"
                    "Examples:\n"
                    "  photolib albums -d /media/phone\n"
                    "  photolib photos -d /media/phone --album 12   what is in one of them");
    command->callback([&context, isJson] {
        context.run = [&context, isJson] { return runAlbums(context, *isJson); };
    });
}
