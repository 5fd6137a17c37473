#ifndef PHOTOLIB_CLI_HELP_TEXT_H
#define PHOTOLIB_CLI_HELP_TEXT_H

#include <string>

/// The columns of the terminal that standard output is, or what the environment variable COLUMNS
/// says of one that does not tell; 80 when it is none.
int terminalWidth();

/// `help` with its lines broken at blanks to fit into `width` columns; what follows a break begins
/// where the description in that line does. Words that are longer stay whole.
std::string wrappedHelp(const std::string &help, int width);

#endif // PHOTOLIB_CLI_HELP_TEXT_H
