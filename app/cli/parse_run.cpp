#include "cli/parse_run.h"

#include "boundary/photo_manager_int.h"
#include "cli/interruptible_run.h"
#include "host/plugin.h"

ParseResult parseLibrary(photo_manager_int &library, const Plugin &plugin,
                         const std::function<void()> &tick)
{
    bool isParsed = false;
    // The cancel is repeated, since a parse forgets one that comes before it begins.
    const bool isInterrupted = runInterruptible([&] { isParsed = library.parseLib(); },
                                                [&] { plugin.cancelParse(); }, tick);
    if (isInterrupted)
        return ParseResult::Interrupted;
    return isParsed ? ParseResult::Parsed : ParseResult::Failed;
}
