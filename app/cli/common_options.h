#ifndef PHOTOLIB_CLI_COMMON_OPTIONS_H
#define PHOTOLIB_CLI_COMMON_OPTIONS_H

#include "host/device_kind.h"

#include <string>

/// The options that every command takes. Paths are the bytes of the command line.
struct CommonOptions {
    bool verbose = false;   ///< log progress and notices too
    bool quiet = false;     ///< log nothing and show no progress
    std::string workFolder; ///< where the device's database is copied; empty for the default
    DeviceKind kind = DeviceKind::None; ///< of the device; None to look what is in its folder
    std::string plugin;                 ///< the plug-in to load; empty to search beside the program
};

#endif // PHOTOLIB_CLI_COMMON_OPTIONS_H
