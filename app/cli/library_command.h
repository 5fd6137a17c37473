#ifndef PHOTOLIB_CLI_LIBRARY_COMMAND_H
#define PHOTOLIB_CLI_LIBRARY_COMMAND_H

#include "cli/command.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

class LibrarySession;
class Output;

/// Adds the argument DEVICE to `command`. The result is filled while the command line is
/// parsed and stays empty when no device is named.
std::shared_ptr<std::optional<std::string>> addDeviceArgument(CLI::App &command);

/// Opens the library of `device`, has `write` write its result, and returns the exit code.
/// `write` finds out what may be wrong before it writes anything.
int runOnLibrary(const CommandContext &context, const std::optional<std::string> &device,
                 const std::function<void(LibrarySession &, Output &)> &write);

/// The same for work that may fail in part: `work` returns the exit code.
int workOnLibrary(const CommandContext &context, const std::optional<std::string> &device,
                  const std::function<int(LibrarySession &, Output &)> &work);

#endif // PHOTOLIB_CLI_LIBRARY_COMMAND_H
