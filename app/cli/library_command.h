#ifndef PHOTOLIB_CLI_LIBRARY_COMMAND_H
#define PHOTOLIB_CLI_LIBRARY_COMMAND_H

#include "cli/command.h"

#include <functional>
#include <vector>

class LibrarySession;
class Output;
struct Asset;
struct PhotoFilter;

/// Opens the library of the device that the command line names, the built-in sample's when it
/// names none, has `write` write its result, and returns the exit code. `write` finds out what may
/// be wrong before it writes anything. Ctrl-C ends the opening and the writing. `write` is called
/// on another thread, and it must not wait for signals itself.
int runOnLibrary(const CommandContext &context,
                 const std::function<void(LibrarySession &, Output &)> &write);

/// The same for work that may fail in part, or that waits for signals itself: `work` is called on
/// this thread and returns the exit code.
int workOnLibrary(const CommandContext &context,
                  const std::function<int(LibrarySession &, Output &)> &work);

/// The photos and videos of `session` that `filter` asks for, as `chosenPhotos` gives them, for
/// work that waits for signals itself: Ctrl-C ends it, of which an Error of the kind Cancelled
/// tells.
std::vector<const Asset *> interruptiblyChosenPhotos(LibrarySession &session,
                                                     const PhotoFilter &filter);

/// Throws Error when no device is named: what is written to a person's files should be theirs.
void requireNamedDevice(const CommandContext &context);

#endif // PHOTOLIB_CLI_LIBRARY_COMMAND_H
