#ifndef PHOTOLIB_CLI_COMMAND_H
#define PHOTOLIB_CLI_COMMAND_H

#include "cli/common_options.h"

#include <functional>

namespace CLI {
class App;
}

/// What the command line has chosen: filled while CLI11 parses it.
struct CommandContext {
    CommonOptions options; ///< complete once the whole command line is parsed

    /// The chosen command, set by its CLI11 callback and called after parsing. Returns the
    /// process's exit code; throws Error for a failure that ends in one line on
    /// stderr and exit code 1.
    std::function<int()> run;
};

// Each of these adds one subcommand to `app`, with its arguments, help and a callback
// that sets `context.run`. Both arguments must outlive the parsing and the run.
void addSampleCommand(CLI::App &app, CommandContext &context);
void addInfoCommand(CLI::App &app, CommandContext &context);
void addPhotosCommand(CLI::App &app, CommandContext &context);
void addAlbumsCommand(CLI::App &app, CommandContext &context);
void addShowCommand(CLI::App &app, CommandContext &context);
void addDumpCommand(CLI::App &app, CommandContext &context);
void addSheetCommand(CLI::App &app, CommandContext &context);
void addThumbCommand(CLI::App &app, CommandContext &context);
void addExportCommand(CLI::App &app, CommandContext &context);
void addVerifyCommand(CLI::App &app, CommandContext &context);
void addEditCommand(CLI::App &app, CommandContext &context);

#endif // PHOTOLIB_CLI_COMMAND_H
