#ifndef PHOTOLIB_CLI_EXIT_CODES_H
#define PHOTOLIB_CLI_EXIT_CODES_H

#include "base/error.h"

/// What the process exits with.
enum ExitCode {
    exitDone = 0,
    exitFailed = 1,
    exitWrongUsage = 2,
    exitInterrupted = 130 ///< as shells count a program that Ctrl-C ended
};

inline ExitCode exitCodeOf(Error::Kind kind)
{
    if (kind == Error::WrongUsage)
        return exitWrongUsage;
    return kind == Error::Cancelled ? exitInterrupted : exitFailed;
}

#endif // PHOTOLIB_CLI_EXIT_CODES_H
