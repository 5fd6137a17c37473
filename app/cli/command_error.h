#ifndef PHOTOLIB_CLI_COMMAND_ERROR_H
#define PHOTOLIB_CLI_COMMAND_ERROR_H

#include <QString>

#include <stdexcept>
#include <string>

/// A failure that ends the program: shown as the one line "photolib: THING: CAUSE" on
/// stderr, control characters escaped, with exit code 1.
class CommandError : public std::runtime_error
{
public:
    /// `thing` is the file, folder, device or argument at fault, in the user's own bytes;
    /// `cause` says in a few words what is wrong with it.
    CommandError(const std::string &thing, const std::string &cause)
        : std::runtime_error(thing + ": " + cause)
    {
    }

    /// `line` names both.
    explicit CommandError(const QString &line) : std::runtime_error(line.toStdString()) {}
};

#endif // PHOTOLIB_CLI_COMMAND_ERROR_H
