#ifndef PHOTOLIB_CLI_ARGUMENTS_H
#define PHOTOLIB_CLI_ARGUMENTS_H

/// Does what the command line asks for and returns the exit code: 0, 1 after a failure, 2
/// for wrong usage, 130 after Ctrl-C. What went wrong has been said on stderr.
int runProgram(int argc, char **argv);

#endif // PHOTOLIB_CLI_ARGUMENTS_H
