#include "cli/arguments.h"

#include "cli/command.h"
#include "cli/command_error.h"
#include "cli/output.h"
#include "services/log_output.h"

#include <CLI/CLI.hpp>

#include <new>

namespace {

const char examples[] = R"(Examples:
  photolib info                       sum up a sample device, made on first use
  photolib photos /media/phone        list what is on a mounted device
  photolib albums /media/phone        list its albums
  photolib show 42 ~/phone-copy       all about one photo
  photolib dump ~/phone-copy | jq .   the whole library as JSON
  photolib sheet -o sheet.png         a picture of them all, with their names
  photolib thumb 42 ~/phone-copy -o thumb.jpg
                                      write its thumbnail
  photolib export /media/phone DIR    copy the photos and videos into a folder
  photolib edit ~/phone-copy edits.txt
                                      try album edits, in memory only
  photolib sample /tmp/phone --assets 500
                                      write a sample device of one's own

Exit codes: 0 done, 1 failed, 2 wrong usage, 130 interrupted.)";

void addCommonOptions(CLI::App &app, CommonOptions &options)
{
    CLI::Option *const verbose =
        app.add_flag("-v,--verbose", options.verbose, "Log progress and notices, too");
    app.add_flag("-q,--quiet", options.quiet, "Log nothing and show no progress")
        ->excludes(verbose);
    app.add_option("--work-dir", options.workFolder,
                   "Where the device's database is copied to; Photos.sqlite in it is replaced. "
                   "Default: a folder for each device in the user's cache folder")
        ->type_name("DIR");
    app.add_option("--plugin", options.plugin,
                   "The plug-in to load. Default: libphotolib.so beside the program or in its "
                   "library folder")
        ->type_name("FILE")
        ->envname("PHOTOLIB_PLUGIN");
}

void setUp(CLI::App &app, CommandContext &context)
{
    app.name("photolib");
    app.description("Lists the photos, videos and albums in the library of a handheld device.");
    app.footer(examples);
    app.set_version_flag("--version", "photolib " PHOTOLIB_VERSION);
    app.require_subcommand(1);
    app.fallthrough(); // common options may come after the command
    addCommonOptions(app, context.options);
    addInfoCommand(app, context);
    addPhotosCommand(app, context);
    addAlbumsCommand(app, context);
    addShowCommand(app, context);
    addDumpCommand(app, context);
    addSheetCommand(app, context);
    addThumbCommand(app, context);
    addExportCommand(app, context);
    addEditCommand(app, context);
    addSampleCommand(app, context);
}

int print(const std::string &text)
{
    Output output;
    output.write(QByteArray::fromStdString(text));
    output.flush();
    return 0;
}

// What is wrong with a command line without a command: CLI11 misses the command before it
// looks at what stands in its place.
std::string missingCommand(const std::vector<std::string> &unknown)
{
    if (unknown.empty())
        return "a command is missing";
    const bool isOption = unknown.front().compare(0, 1, "-") == 0;
    return unknown.front() + (isOption ? ": no such option" : ": no such command");
}

std::string usageError(const CLI::App &app, const CLI::ParseError &error)
{
    const bool hasCommand = !app.get_subcommands().empty();
    const bool isMissing =
        !hasCommand && error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError);
    const std::string cause = isMissing ? missingCommand(app.remaining()) : error.what();
    return cause + " (photolib --help shows the usage)";
}

// 0 and a set `context.run`, or the exit code of a program that has no more to do.
int parse(CLI::App &app, int argc, char **argv)
{
    try {
        app.parse(argc, argv);
        return 0;
    } catch (const CLI::CallForHelp &) {
        return print(app.help());
    } catch (const CLI::CallForVersion &version) {
        return print(std::string(version.what()) + '\n');
    } catch (const CLI::ParseError &error) {
        throw CommandError(CommandError::wrongUsage, usageError(app, error));
    }
}

LogDetail detailFor(const CommonOptions &options)
{
    if (options.verbose)
        return LogDetail::Everything;
    return options.quiet ? LogDetail::Nothing : LogDetail::Failures;
}

int parseAndRun(int argc, char **argv)
{
    CLI::App app;
    CommandContext context;
    setUp(app, context);
    const int code = parse(app, argc, argv);
    if (!context.run)
        return code;
    setLogDetail(detailFor(context.options));
    return context.run();
}

int fail(int exitCode, const char *line)
{
    if (*line)
        writeErrorLine(QByteArray("photolib: ") + line);
    return exitCode;
}

} // namespace

int runProgram(int argc, char **argv)
{
    try {
        return parseAndRun(argc, argv);
    } catch (const CommandError &error) {
        return fail(error.exitCode(), error.what());
    } catch (const std::bad_alloc &) {
        return fail(CommandError::failed, "out of memory");
    } catch (const std::exception &error) {
        return fail(CommandError::failed, error.what());
    }
}
