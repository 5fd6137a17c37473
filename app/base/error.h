#ifndef PHOTOLIB_BASE_ERROR_H
#define PHOTOLIB_BASE_ERROR_H

#include <QString>

#include <stdexcept>
#include <string>

/// A failure that a person is told of in one line, "THING: CAUSE", and that a caller tells from
/// others by its kind. The text is UTF-8 or a user's own bytes, and not safe to show.
class Error : public std::runtime_error
{
public:
    enum Kind {
        Failed,        ///< none of the following
        WrongUsage,    ///< what was asked for does not make sense
        Cancelled,     ///< by the caller's own wish
        NoLibrary,     ///< a device without a photo library
        Damaged,       ///< a photo library that cannot be read
        Locked,        ///< until a person unlocks the device
        NotTrusted,    ///< until a person tells the device to trust this computer
        NeedsPassword, ///< an encrypted backup, say
        Disconnected,  ///< the device is gone
    };

    /// `thing` is the file, folder, device or argument at fault, in the user's own bytes;
    /// `cause` says in a few words what is wrong with it.
    Error(const std::string &thing, const std::string &cause) : Error(Failed, thing + ": " + cause)
    {
    }

    /// `line` names both.
    explicit Error(const QString &line) : Error(Failed, line.toStdString()) {}

    /// The same of another kind.
    Error(Kind kind, const std::string &line) : std::runtime_error(line), m_kind(kind) {}

    Kind kind() const { return m_kind; }

private:
    Kind m_kind;
};

#endif // PHOTOLIB_BASE_ERROR_H
