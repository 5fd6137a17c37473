#ifndef PHOTOLIB_CLI_COMMON_OPTIONS_H
#define PHOTOLIB_CLI_COMMON_OPTIONS_H

#include "engine/library_session.h"

#include <optional>

#include <string>

/// The options that every command takes. Paths are the bytes of the command line.
struct CommonOptions {
    bool verbose = false; ///< log progress and notices too
    bool quiet = false;   ///< log nothing and show no progress
    /// The device to work on, or "sample" for the built-in one; nothing when none was named.
    std::optional<std::string> device;
    std::string workFolder; ///< where the device's database is copied; empty for the default
    DeviceKind kind = DeviceKind::None; ///< of the device; None to look what is in its folder
    std::string plugin;                 ///< the plug-in to load; empty to search beside the program
};

#endif // PHOTOLIB_CLI_COMMON_OPTIONS_H
