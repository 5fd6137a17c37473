#ifndef PHOTOLIB_CLI_PARSE_RUN_H
#define PHOTOLIB_CLI_PARSE_RUN_H

#include <QtGlobal>

#include <functional>

class Plugin;
class photo_manager_int;

enum class ParseResult { Parsed, Failed, Interrupted };

/// Parses `library` on a thread of its own and returns when it has ended. Meanwhile Ctrl-C
/// (SIGINT) and SIGTERM cancel the parse, and a second one ends the process at once; those
/// that the process ignores stay ignored. Calls `tick` on the calling thread at the start,
/// about ten times a second, and at the end.
ParseResult parseLibrary(photo_manager_int &library, const Plugin &plugin,
                         const std::function<void()> &tick);

#endif // PHOTOLIB_CLI_PARSE_RUN_H
