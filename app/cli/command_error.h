#ifndef PHOTOLIB_CLI_COMMAND_ERROR_H
#define PHOTOLIB_CLI_COMMAND_ERROR_H

#include <QString>

#include <stdexcept>
#include <string>

/// A failure that ends the program: shown as the one line "photolib: THING: CAUSE" on
/// stderr, control characters escaped. The text is UTF-8 or a user's own bytes.
class CommandError : public std::runtime_error
{
public:
    static constexpr int failed = 1;
    static constexpr int wrongUsage = 2;
    static constexpr int interrupted = 130; ///< as shells count a program that Ctrl-C ended

    /// `thing` is the file, folder, device or argument at fault, in the user's own bytes;
    /// `cause` says in a few words what is wrong with it.
    CommandError(const std::string &thing, const std::string &cause)
        : CommandError(failed, thing + ": " + cause)
    {
    }

    /// `line` names both.
    explicit CommandError(const QString &line) : CommandError(failed, line.toStdString()) {}

    /// The same with another exit code; an empty `line` ends the program silently.
    CommandError(int exitCode, const std::string &line)
        : std::runtime_error(line), m_exitCode(exitCode)
    {
    }

    int exitCode() const { return m_exitCode; }

private:
    int m_exitCode;
};

#endif // PHOTOLIB_CLI_COMMAND_ERROR_H
