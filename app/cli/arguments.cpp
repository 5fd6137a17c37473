#include "cli/arguments.h"

#include "base/error.h"
#include "base/folders.h"
#include "base/log_output.h"
#include "base/suggestion.h"
#include "cli/command.h"
#include "cli/exit_codes.h"
#include "cli/help_text.h"
#include "cli/output.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <new>
#include <sstream>

namespace {

const char examples[] = R"(Examples:
  photolib -d /media/phone info       summarize the photo library of a mounted device
  photolib -d /media/phone photos     list its photos and videos
  photolib -d /media/phone export ~/Pictures/phone
                                      copy them all into a folder
  photolib -d ~/phone-copy show 42    show everything known about one photo
  photolib -d ~/phone-copy sheet -o sheet.png
                                      draw a contact sheet
  photolib photos                     list the built-in sample, to try things out

Exit codes: 0 done, 1 failed, 2 wrong usage, 130 interrupted.)";

void addCommonOptions(CLI::App &app, CommonOptions &options)
{
    app.add_option_function<std::string>(
           "-d,--device", [&options](const std::string &device) { options.device = device; },
           "Folder laid out as an iOS device's media root or a classic iPod's disk: a mounted "
           "device or a copy. \"sample\" is the built-in sample, which is also the default; write "
           "./sample for a folder of that name")
        ->check([](const std::string &name) { return name.empty() ? "the name is empty" : ""; })
        ->type_name("DEVICE")
        ->envname("PHOTOLIB_DEVICE");
    CLI::Option *const verbose = app.add_flag(
        "-v,--verbose", options.verbose,
        "Log progress and the plug-in's messages; for export, also list what is not on the device");
    app.add_flag("-q,--quiet", options.quiet, "Log nothing and show no progress")
        ->excludes(verbose);
    app.add_option("--work-dir", options.workFolder,
                   "Where the device's database is copied to while it is read. Default: in your "
                   "cache folder, one for each device")
        ->type_name("DIR");
    app.add_option_function<std::string>(
           "--kind",
           [&options](const std::string &kind) {
               options.kind = kind == "ios" ? DeviceKind::Ios : DeviceKind::Classic;
           },
           "What the device is: ios, with PhotoData/Photos.sqlite, or classic, with "
           "Photos/Photo Database. Default: whichever is there, ios if both are")
        ->check(CLI::IsMember({"ios", "classic"}))
        ->type_name("KIND");
    app.add_option("--plugin", options.plugin,
                   "The plug-in to load. Default: libphotolib.so next to the program, or in the "
                   "library folder that it was installed with")
        ->type_name("FILE")
        ->envname("PHOTOLIB_PLUGIN");
}

// An argument that stands for several has them as its option text, and may describe each in a line
// of its own, "NAME\tDESCRIPTION".
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

    std::string make_option(const CLI::Option *option, bool isPositional) const override
    {
        const std::string &description = option->get_description();
        if (description.find('\t') == std::string::npos)
            return CLI::Formatter::make_option(option, isPositional);
        std::istringstream lines(description);
        std::ostringstream result;
        std::string name;
        for (std::string text; std::getline(lines, name, '\t') && std::getline(lines, text);)
            CLI::detail::format_help(result, name, text, get_column_width());
        return result.str();
    }

    // A command takes the options of the program, too.
    std::string make_help(const CLI::App *app, std::string name,
                          CLI::AppFormatMode mode) const override
    {
        const CLI::App *const parent = app->get_parent();
        if (!parent || mode == CLI::AppFormatMode::Sub)
            return CLI::Formatter::make_help(app, name, mode);
        const auto isCommon = [parent](const CLI::Option *option) {
            return option->nonpositional() && option != parent->get_help_ptr() &&
                   option != parent->get_version_ptr();
        };
        return make_description(app) + make_usage(app, parent->get_name() + ' ' + name) +
               make_positionals(app) + make_groups(app, mode) +
               make_group("Common options", false, parent->get_options(isCommon)) + '\n' +
               make_footer(app);
    }
};

int print(const std::string &text)
{
    Output output;
    output.write(QByteArray::fromStdString(text));
    output.flush();
    return exitDone;
}

int printHelp(const CLI::App &app)
{
    const std::string help =
        app.get_formatter()->make_help(&app, app.get_name(), CLI::AppFormatMode::Normal);
    return print(wrappedHelp(help, terminalWidth()));
}

std::vector<std::string> commandNames(const CLI::App &app)
{
    std::vector<std::string> names;
    for (const CLI::App *command : app.get_subcommands({}))
        names.push_back(command->get_name());
    return names;
}

void addHelpCommand(CLI::App &app, CommandContext &context)
{
    CLI::App *const command = app.add_subcommand("help", "Show the help of a command");
    const auto name = std::make_shared<std::string>();
    command->add_option("COMMAND", *name, "The command; without it, the program's own help")
        ->type_name("");
    command->callback([&app, &context, name] {
        const std::vector<std::string> names = commandNames(app);
        if (!name->empty() && std::find(names.begin(), names.end(), *name) == names.end())
            throw CLI::ValidationError(*name, "no such command" + suggestion(*name, names));
        const CLI::App *const shown = name->empty() ? &app : app.get_subcommand(*name);
        context.run = [shown] { return printHelp(*shown); };
    });
}

void setUp(CLI::App &app, CommandContext &context)
{
    app.name("photolib");
    app.formatter(std::make_shared<UsageFormatter>()); // before the commands, which inherit it
    app.description("Lists, shows and saves the photos, videos and albums of an iOS device or a "
                    "classic iPod.");
    app.footer(examples);
    app.set_version_flag("--version", "photolib " PHOTOLIB_VERSION);
    app.require_subcommand(1);
    app.fallthrough(); // common options may come after the command
    addCommonOptions(app, context.options);
    addInfoCommand(app, context);
    addPhotosCommand(app, context);
    addAlbumsCommand(app, context);
    addShowCommand(app, context);
    addSheetCommand(app, context);
    addThumbCommand(app, context);
    addExportCommand(app, context);
    addVerifyCommand(app, context);
    addEditCommand(app, context);
    addDumpCommand(app, context);
    addSampleCommand(app, context);
    addHelpCommand(app, context);
}

// The command that the arguments have come to; the program itself before one.
const CLI::App &currentApp(const CLI::App &app)
{
    const std::vector<const CLI::App *> commands =
        app.get_subcommands([](const CLI::App *command) { return command->parsed(); });
    return commands.empty() ? app : *commands.front();
}

std::vector<std::string> optionNames(const CLI::App &app)
{
    std::vector<std::string> names;
    for (const CLI::App *each = &app; each; each = each->get_parent()) {
        for (const CLI::Option *option : each->get_options()) {
            for (const std::string &name : option->get_lnames())
                names.push_back("--" + name);
        }
    }
    return names;
}

std::string unexpectedValue(const std::string &argument)
{
    const bool isDevice = isFolder(QByteArray::fromStdString(argument));
    return argument + ": unexpected argument" + (isDevice ? "; name the device with -d" : "");
}

// What is wrong with the first argument that nothing takes.
std::string unexpected(const CLI::App &app, const std::string &argument)
{
    const CLI::App &current = currentApp(app);
    if (argument == "--")
        return unexpectedValue(argument);
    if (argument.compare(0, 1, "-") == 0)
        return argument + ": no such option" + suggestion(argument, optionNames(current));
    if (&current == &app)
        return argument + ": no such command" + suggestion(argument, commandNames(app));
    return unexpectedValue(argument);
}

std::string usageError(const CLI::App &app, const CLI::ParseError &error)
{
    const CLI::App &current = currentApp(app);
    const std::vector<std::string> unknown = app.remaining(true);
    std::string cause = error.what();
    if (!unknown.empty())
        cause = unexpected(app, unknown.front());
    else if (&current == &app &&
             error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError))
        cause = "a command is missing";
    // The commands that `help` takes are listed in the program's own help.
    const bool isAboutProgram = &current == &app || current.get_name() == "help";
    const std::string command = isAboutProgram ? std::string() : current.get_name() + ' ';
    return cause + " (photolib " + command + "--help shows the usage)";
}

// 0 and a set `context.run`, or the exit code of a program that has no more to do.
int parse(CLI::App &app, int argc, char **argv)
{
    try {
        app.parse(argc, argv);
        return exitDone;
    } catch (const CLI::CallForHelp &) {
        return printHelp(currentApp(app));
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
    writeErrorLine(QByteArray("photolib: ") + line);
    return exitCode;
}

} // namespace

int runProgram(int argc, char **argv)
{
    try {
        return parseAndRun(argc, argv);
    } catch (const ReaderGone &) {
        return exitDone;
    } catch (const Error &error) {
        return fail(exitCodeOf(error.kind()), error.what());
    } catch (const std::bad_alloc &) {
        return fail(exitFailed, "out of memory");
    } catch (const std::exception &error) {
        return fail(exitFailed, error.what());
    }
}
