#include "cli/library_command.h"

#include "base/error.h"
#include "engine/library_session.h"
#include "cli/output.h"
#include "base/log_output.h"

#include <CLI/CLI.hpp>

std::shared_ptr<std::optional<std::string>> addDeviceArgument(CLI::App &command)
{
    auto device = std::make_shared<std::optional<std::string>>();
    command
        .add_option_function<std::string>(
            "DEVICE", [device](const std::string &name) { *device = name; },
            "Folder laid out as an iOS device's media root or a classic iPod's disk: a mounted\n"
            "device or a copy. "
            "Without it, a sample device is made and shown")
        ->type_name("");
    return device;
}

int runOnLibrary(const CommandContext &context, const std::optional<std::string> &device,
                 const std::function<void(LibrarySession &, Output &)> &write)
{
    return workOnLibrary(context, device, [&write](LibrarySession &session, Output &output) {
        write(session, output);
        return 0;
    });
}

int workOnLibrary(const CommandContext &context, const std::optional<std::string> &device,
                  const std::function<int(LibrarySession &, Output &)> &work)
{
    LibrarySession session(context.options, device);
    Output output([&session] { session.announce(); });
    const int exitCode = work(session, output);
    output.flush();
    session.keepCopies();
    const QString unreadable = session.unreadableText();
    if (unreadable.isEmpty())
        return exitCode;
    writeErrorLine("photolib: " + unreadable.toUtf8());
    return exitFailed;
}
