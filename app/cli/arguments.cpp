#include "cli/arguments.h"

#include "cli/command.h"
#include "base/error.h"
#include "cli/output.h"
#include "base/log_output.h"

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
  photolib thumb 42 ~/phone-copy -o thumb.png
                                      write its thumbnail
  photolib export /media/phone DIR    copy the photos and videos into a folder
  photolib export /media/IPOD DIR     the same for a classic iPod
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
    app.add_option_function<std::string>(
           "--kind",
           [&options](const std::string &kind) {
               options.kind = kind == "ios" ? DeviceKind::Ios : DeviceKind::Classic;
           },
           "What the device is: ios, with PhotoData/Photos.sqlite, or classic, with "
           "Photos/Photo Database. Default: what is there, ios if both are")
        ->check(CLI::IsMember({"ios", "classic"}))
        ->type_name("KIND");
    app.add_option("--plugin", options.plugin,
                   "The plug-in to load. Default: libphotolib.so beside the program or in its "
                   "library folder")
        ->type_name("FILE")
        ->envname("PHOTOLIB_PLUGIN");
}

// An argument that stands for several kinds has them as its option text.
class UsageFormatter : public CLI::Formatter
{
public:
    std::string make_option_usage(const CLI::Option *option) const override
    {
        const std::string &text = option->get_option_text();
        return text.empty() ? CLI::Formatter::make_option_usage(option) : text;
    }

    std::string make_option_opts(const CLI::Option *option) const override
    {
        const bool isList = option->get_positional() && !option->get_option_text().empty();
        return isList ? std::string() : CLI::Formatter::make_option_opts(option);
    }
};

void setUp(CLI::App &app, CommandContext &context)
{
    app.name("photolib");
    app.formatter(std::make_shared<UsageFormatter>()); // before the commands, which inherit it
    app.description(
        "Lists the photos, videos and albums in the library of an iOS device or classic iPod.");
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

bool isOptionName(const std::string &argument)
{
    return argument.compare(0, 1, "-") == 0;
}

// What is wrong with a command line without a command: CLI11 misses the command before it
// looks at what stands in its place.
std::string missingCommand(const std::vector<std::string> &unknown)
{
    if (unknown.empty())
        return "a command is missing";
    const bool isOption = isOptionName(unknown.front());
    return unknown.front() + (isOption ? ": no such option" : ": no such command");
}

// The part of `text` before the last `mark`; all of it without one.
std::string before(const std::string &text, const std::string &mark)
{
    return text.substr(0, text.rfind(mark));
}

std::string unexpected(const std::vector<std::string> &arguments)
{
    const bool isOption = isOptionName(arguments.front());
    return arguments.front() + (isOption ? ": no such option" : ": not expected here");
}

std::string wrongCount(const std::string &text)
{
    const std::string name = text.substr(0, text.find(": "));
    const bool isTooMany = text.find(": At Most ") != std::string::npos;
    return name + (isTooMany ? ": given more than once" : ": its value is missing");
}

// CLI11's own words in the form THING: CAUSE. It tells the parts of a message by the type of
// the error alone; what it has no type for stays as it is.
std::string reworded(const CLI::App &app, const CLI::ParseError &error)
{
    std::string text = error.what();
    const std::string excludes = " excludes ";
    switch (static_cast<CLI::ExitCodes>(error.get_exit_code())) {
    case CLI::ExitCodes::RequiredError:
        return before(text, " is required") + ": is missing";
    case CLI::ExitCodes::ExtrasError:
        return unexpected(app.remaining(true));
    case CLI::ExitCodes::ExcludesError:
        return before(text, excludes) + ": not together with " +
               text.substr(text.rfind(excludes) + excludes.size());
    case CLI::ExitCodes::ArgumentMismatch:
        return wrongCount(text);
    default:
        return text;
    }
}

std::string usageError(const CLI::App &app, const CLI::ParseError &error)
{
    const bool hasCommand = !app.get_subcommands().empty();
    const bool isMissing =
        !hasCommand && error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError);
    const std::string cause = isMissing ? missingCommand(app.remaining()) : reworded(app, error);
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
        throw Error(Error::WrongUsage, usageError(app, error));
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
    } catch (const Error &error) {
        return fail(exitCodeOf(error.kind()), error.what());
    } catch (const std::bad_alloc &) {
        return fail(exitFailed, "out of memory");
    } catch (const std::exception &error) {
        return fail(exitFailed, error.what());
    }
}
